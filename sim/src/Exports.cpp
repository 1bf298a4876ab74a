// The GenTL entry points of TavikSim.cti.
#include <dlfcn.h>
#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include <cstring>
#include <sstream>

#include "Info.h"
#include "Producer.h"
#include "Stream.h"
#include "TavikSimControl.h"

using namespace sim;

namespace sim {
namespace {
// A consumer that exits with the transport layer still open may have threads
// waiting in our events while static destructors run: its state then stays.
struct tProducerKeeper {
    tProducer* producer = new tProducer;
    ~tProducerKeeper() {
        if (!producer->system) {
            delete producer;
            return;
        }
#if defined(__SANITIZE_ADDRESS__)
        __lsan_ignore_object(producer); // kept on purpose, not lost
#endif
    }
};
} // namespace

tProducer& Producer() {
    static tProducerKeeper keeper;
    return *keeper.producer;
}
} // namespace sim

namespace {

GC_ERROR Fail(GC_ERROR aStatus, const char* aText) {
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    p.lastError = aStatus;
    p.lastText = aText;
    return aStatus;
}

// Every entry but the library's own init: initialised, and no injected fault.
#define ENTER(name)                                                                                \
    if (!Producer().initialised) return Fail(GC_ERR_NOT_INITIALIZED, "library not initialised");   \
    if (GC_ERROR injected = Producer().faults.Check(name)) return Fail(injected, "injected fault")

#define CHECK(handle, kind)                                                                        \
    if (!Producer().handles.Is(handle, kind)) return Fail(GC_ERR_INVALID_HANDLE, "invalid handle")

GC_ERROR CopyText(const std::string& aText, char* aBuffer, size_t* aSize) {
    if (!aSize) return GC_ERR_INVALID_PARAMETER;
    if (!aBuffer) {
        *aSize = aText.size() + 1;
        return GC_ERR_SUCCESS;
    }
    if (*aSize < aText.size() + 1) return GC_ERR_BUFFER_TOO_SMALL;
    memcpy(aBuffer, aText.c_str(), aText.size() + 1);
    *aSize = aText.size() + 1;
    return GC_ERR_SUCCESS;
}

// Systems and interfaces answer count and index calls from the list the consumer
// saw at its last update, not from the live topology.
GC_ERROR UpdateListed(std::vector<std::string>& aListed, std::vector<std::string> aNow,
                      bool8_t* aChanged) {
    if (aChanged) *aChanged = aNow != aListed;
    aListed = std::move(aNow);
    return GC_ERR_SUCCESS;
}

GC_ERROR CountListed(const std::vector<std::string>& aListed, uint32_t* aCount) {
    if (!aCount) return GC_ERR_INVALID_PARAMETER;
    *aCount = static_cast<uint32_t>(aListed.size());
    return GC_ERR_SUCCESS;
}

GC_ERROR ListedId(const std::vector<std::string>& aListed, uint32_t aIndex, char* aBuffer,
                  size_t* aSize) {
    if (aIndex >= aListed.size()) return GC_ERR_INVALID_INDEX;
    return CopyText(aListed[aIndex], aBuffer, aSize);
}

// The path this module was loaded from, for TL_INFO_PATHNAME.
std::string ModulePath() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&ModulePath), &info) && info.dli_fname)
        return info.dli_fname;
    return "TavikSim.cti";
}

GC_ERROR TlInfo(TL_INFO_CMD aCommand, INFO_DATATYPE* aType, void* aBuffer, size_t* aSize) {
    tProducer& p = Producer();
    std::string tlType = p.system ? p.system->Topology().tlType : LoadTopology().tlType;
    switch (aCommand) {
    case TL_INFO_ID:
        return ReplyText("TavikSim", aType, aBuffer, aSize);
    case TL_INFO_VENDOR:
        return ReplyText("Tavik", aType, aBuffer, aSize);
    case TL_INFO_MODEL:
        return ReplyText("TavikSim camera simulator", aType, aBuffer, aSize);
    case TL_INFO_VERSION:
        return ReplyText("1.0", aType, aBuffer, aSize);
    case TL_INFO_TLTYPE:
        return ReplyText(tlType, aType, aBuffer, aSize);
    case TL_INFO_NAME:
        return ReplyText("TavikSim.cti", aType, aBuffer, aSize);
    case TL_INFO_PATHNAME:
        return ReplyText(ModulePath(), aType, aBuffer, aSize);
    case TL_INFO_DISPLAYNAME:
        return ReplyText("Tavik camera simulator", aType, aBuffer, aSize);
    case TL_INFO_CHAR_ENCODING:
        return ReplyValue(INFO_DATATYPE_INT32, int32_t{0}, aType, aBuffer, aSize);
    case TL_INFO_GENTL_VER_MAJOR:
        return ReplyValue(INFO_DATATYPE_UINT32, uint32_t{1}, aType, aBuffer, aSize);
    case TL_INFO_GENTL_VER_MINOR:
        return ReplyValue(INFO_DATATYPE_UINT32, uint32_t{5}, aType, aBuffer, aSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

GC_ERROR InterfaceInfo(Interface* aInterface, INTERFACE_INFO_CMD aCommand, INFO_DATATYPE* aType,
                       void* aBuffer, size_t* aSize) {
    const tInterfaceConfig& c = aInterface->Config();
    switch (aCommand) {
    case INTERFACE_INFO_ID:
        return ReplyText(c.id, aType, aBuffer, aSize);
    case INTERFACE_INFO_DISPLAYNAME:
        return ReplyText(c.name, aType, aBuffer, aSize);
    case INTERFACE_INFO_TLTYPE:
        return ReplyText(c.type, aType, aBuffer, aSize);
    case INTERFACE_INFO_SERIAL_QRX:
        return ReplyText(c.serial, aType, aBuffer, aSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

GC_ERROR DeviceInfo(Device* aDevice, DEVICE_INFO_CMD aCommand, INFO_DATATYPE* aType, void* aBuffer,
                    size_t* aSize) {
    const tCameraConfig& c = aDevice->Config();
    switch (aCommand) {
    case DEVICE_INFO_ID:
        return ReplyText(c.id, aType, aBuffer, aSize);
    case DEVICE_INFO_VENDOR:
        return ReplyText(c.vendor, aType, aBuffer, aSize);
    case DEVICE_INFO_MODEL:
        return ReplyText(c.model, aType, aBuffer, aSize);
    case DEVICE_INFO_TLTYPE:
        return ReplyText(aDevice->Parent()->Config().type, aType, aBuffer, aSize);
    case DEVICE_INFO_DISPLAYNAME:
        return ReplyText(c.vendor + " " + c.model + " (" + c.serial + ")", aType, aBuffer, aSize);
    case DEVICE_INFO_ACCESS_STATUS:
        return ReplyValue(INFO_DATATYPE_INT32, aDevice->AccessStatus(), aType, aBuffer, aSize);
    case DEVICE_INFO_USER_DEFINED_NAME:
        return ReplyText("", aType, aBuffer, aSize);
    case DEVICE_INFO_SERIAL_NUMBER:
    case DEVICE_INFO_SERIAL_QRX:
        return ReplyText(c.serial, aType, aBuffer, aSize);
    case DEVICE_INFO_VERSION:
        return ReplyText(c.version, aType, aBuffer, aSize);
    case DEVICE_INFO_TIMESTAMP_FREQUENCY:
        return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{1000000000}, aType, aBuffer, aSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

// The event a source offers for a type, or null.
Event* EventOf(void* aSource, EVENT_TYPE aType) {
    tProducer& p = Producer();
    if (p.handles.Is(aSource, tKind::kStream) && aType == EVENT_NEW_BUFFER)
        return static_cast<Stream*>(aSource)->NewBuffers();
    if (p.handles.Is(aSource, tKind::kDevice)) {
        auto* device = static_cast<Device*>(aSource);
        if (aType == EVENT_REMOTE_DEVICE) return device->RemoteEvents();
        if (aType == EVENT_FEATURE_INVALIDATE) return device->Invalidations();
    }
    if (p.handles.Is(aSource, tKind::kSystem) && aType == EVENT_INTERFACE_LIST_CHANGED_QRX)
        return static_cast<System*>(aSource)->InterfaceListChanged();
    if (p.handles.Is(aSource, tKind::kInterface) && aType == EVENT_DEVICE_LIST_CHANGED_QRX)
        return static_cast<Interface*>(aSource)->DeviceListChanged();
    return nullptr;
}

bool IsEvent(void* aHandle) {
    return Producer().handles.Is(aHandle, tKind::kEvent);
}

// Entries one after another, up to the first failure; the count says how many.
GC_ERROR Stacked(Device* aDevice, PORT_REGISTER_STACK_ENTRY* aEntries, size_t* aCount,
                 bool aWrite) {
    if (!aEntries || !aCount) return GC_ERR_INVALID_PARAMETER;
    size_t done = 0;
    GC_ERROR status = GC_ERR_SUCCESS;
    for (; done < *aCount; ++done) {
        size_t size = aEntries[done].Size;
        status = aWrite ? aDevice->Write(aEntries[done].Address, aEntries[done].pBuffer, &size)
                        : aDevice->Read(aEntries[done].Address, aEntries[done].pBuffer, &size);
        if (status != GC_ERR_SUCCESS) break;
    }
    *aCount = done;
    return status;
}

} // namespace

extern "C" {

// ---- Library -----------------------------------------------------------------

GC_API GCInitLib(void) {
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    if (p.initialised) return GC_ERR_RESOURCE_IN_USE;
    p.initialised = true;
    return GC_ERR_SUCCESS;
}

#ifndef TAVIK_SIM_NO_CLOSELIB
GC_API GCCloseLib(void) {
    tProducer& p = Producer();
    if (!p.initialised) return GC_ERR_NOT_INITIALIZED;
    std::lock_guard<std::mutex> hold(p.lock);
    // Streams stop before the objects they fill go.
    if (p.system)
        for (auto& interface : p.system->Interfaces())
            for (auto& device : interface->Devices())
                device->Close();
    p.system.reset();
    p.ports.clear();
    p.registered.clear();
    p.madeEvents.clear();
    p.unions.clear();
    p.handles.Clear();
    p.faults.Clear();
    p.initialised = false;
    return GC_ERR_SUCCESS;
}
#endif

GC_API GCGetInfo(TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer, size_t* piSize) {
    ENTER("GCGetInfo");
    return TlInfo(iInfoCmd, piType, pBuffer, piSize);
}

GC_API GCGetLastError(GC_ERROR* piErrorCode, char* sErrText, size_t* piSize) {
    ENTER("GCGetLastError");
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    if (piErrorCode) *piErrorCode = p.lastError;
    return CopyText(p.lastText, sErrText, piSize);
}

// ---- Transport layer ---------------------------------------------------------

#ifndef TAVIK_SIM_NO_TLOPEN
GC_API TLOpen(TL_HANDLE* phTL) {
    ENTER("TLOpen");
    if (!phTL) return Fail(GC_ERR_INVALID_PARAMETER, "null handle pointer");
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    if (p.system) return GC_ERR_RESOURCE_IN_USE;
    tTopology topology = LoadTopology();
    for (const tFaultConfig& fault : topology.faults) {
        if (fault.status) p.faults.Fail(fault.call, fault.status, fault.count);
        if (fault.delayMs) p.faults.Delay(fault.call, fault.delayMs);
    }
    p.system = std::make_unique<System>(topology);
    p.handles.Add(p.system.get(), tKind::kSystem);
    *phTL = p.system.get();
    return GC_ERR_SUCCESS;
}
#endif

GC_API TLClose(TL_HANDLE hTL) {
    ENTER("TLClose");
    CHECK(hTL, tKind::kSystem);
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    for (auto& interface : p.system->Interfaces())
        for (auto& device : interface->Devices())
            device->Close();
    p.handles.Clear();
    p.ports.clear();
    p.registered.clear();
    p.system.reset();
    return GC_ERR_SUCCESS;
}

GC_API TLGetInfo(TL_HANDLE hTL, TL_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                 size_t* piSize) {
    ENTER("TLGetInfo");
    CHECK(hTL, tKind::kSystem);
    return TlInfo(iInfoCmd, piType, pBuffer, piSize);
}

GC_API TLUpdateInterfaceList(TL_HANDLE hTL, bool8_t* pbChanged, uint64_t iTimeout) {
    (void)iTimeout;
    ENTER("TLUpdateInterfaceList");
    CHECK(hTL, tKind::kSystem);
    System* system = static_cast<System*>(hTL);
    std::vector<std::string> now;
    for (auto& interface : system->Interfaces())
        now.push_back(interface->Config().id);
    return UpdateListed(system->listed, std::move(now), pbChanged);
}

GC_API TLGetNumInterfaces(TL_HANDLE hTL, uint32_t* piNumIfaces) {
    ENTER("TLGetNumInterfaces");
    CHECK(hTL, tKind::kSystem);
    return CountListed(static_cast<System*>(hTL)->listed, piNumIfaces);
}

GC_API TLGetInterfaceID(TL_HANDLE hTL, uint32_t iIndex, char* sID, size_t* piSize) {
    ENTER("TLGetInterfaceID");
    CHECK(hTL, tKind::kSystem);
    return ListedId(static_cast<System*>(hTL)->listed, iIndex, sID, piSize);
}

GC_API TLGetInterfaceInfo(TL_HANDLE hTL, const char* sIfaceID, INTERFACE_INFO_CMD iInfoCmd,
                          INFO_DATATYPE* piType, void* pBuffer, size_t* piSize) {
    ENTER("TLGetInterfaceInfo");
    CHECK(hTL, tKind::kSystem);
    if (!sIfaceID) return GC_ERR_INVALID_PARAMETER;
    Interface* interface = static_cast<System*>(hTL)->Find(sIfaceID);
    if (!interface) return Fail(GC_ERR_INVALID_ID, "unknown interface");
    return InterfaceInfo(interface, iInfoCmd, piType, pBuffer, piSize);
}

GC_API TLOpenInterface(TL_HANDLE hTL, const char* sIfaceID, IF_HANDLE* phIface) {
    ENTER("TLOpenInterface");
    CHECK(hTL, tKind::kSystem);
    if (!sIfaceID || !phIface) return GC_ERR_INVALID_PARAMETER;
    Interface* interface = static_cast<System*>(hTL)->Find(sIfaceID);
    if (!interface) return Fail(GC_ERR_INVALID_ID, "unknown interface");
    if (interface->IsOpen()) return GC_ERR_RESOURCE_IN_USE;
    interface->SetOpen(true);
    Producer().handles.Add(interface, tKind::kInterface);
    *phIface = interface;
    return GC_ERR_SUCCESS;
}

// ---- Interfaces --------------------------------------------------------------

GC_API IFClose(IF_HANDLE hIface) {
    ENTER("IFClose");
    CHECK(hIface, tKind::kInterface);
    auto* interface = static_cast<Interface*>(hIface);
    interface->SetOpen(false);
    Producer().handles.Remove(interface);
    return GC_ERR_SUCCESS;
}

GC_API IFGetInfo(IF_HANDLE hIface, INTERFACE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                 void* pBuffer, size_t* piSize) {
    ENTER("IFGetInfo");
    CHECK(hIface, tKind::kInterface);
    return InterfaceInfo(static_cast<Interface*>(hIface), iInfoCmd, piType, pBuffer, piSize);
}

GC_API IFUpdateDeviceList(IF_HANDLE hIface, bool8_t* pbChanged, uint64_t iTimeout) {
    (void)iTimeout;
    ENTER("IFUpdateDeviceList");
    CHECK(hIface, tKind::kInterface);
    auto* interface = static_cast<Interface*>(hIface);
    std::vector<std::string> now;
    for (Device* device : interface->Visible())
        now.push_back(device->Config().id);
    return UpdateListed(interface->listed, std::move(now), pbChanged);
}

GC_API IFGetNumDevices(IF_HANDLE hIface, uint32_t* piNumDevices) {
    ENTER("IFGetNumDevices");
    CHECK(hIface, tKind::kInterface);
    return CountListed(static_cast<Interface*>(hIface)->listed, piNumDevices);
}

GC_API IFGetDeviceID(IF_HANDLE hIface, uint32_t iIndex, char* sIDeviceID, size_t* piSize) {
    ENTER("IFGetDeviceID");
    CHECK(hIface, tKind::kInterface);
    return ListedId(static_cast<Interface*>(hIface)->listed, iIndex, sIDeviceID, piSize);
}

GC_API IFGetDeviceInfo(IF_HANDLE hIface, const char* sDeviceID, DEVICE_INFO_CMD iInfoCmd,
                       INFO_DATATYPE* piType, void* pBuffer, size_t* piSize) {
    ENTER("IFGetDeviceInfo");
    CHECK(hIface, tKind::kInterface);
    if (!sDeviceID) return GC_ERR_INVALID_PARAMETER;
    Device* device = static_cast<Interface*>(hIface)->Find(sDeviceID);
    if (!device || !device->Plugged()) return Fail(GC_ERR_INVALID_ID, "unknown device");
    return DeviceInfo(device, iInfoCmd, piType, pBuffer, piSize);
}

GC_API IFOpenDevice(IF_HANDLE hIface, const char* sDeviceID, DEVICE_ACCESS_FLAGS iOpenFlags,
                    DEV_HANDLE* phDevice) {
    ENTER("IFOpenDevice");
    CHECK(hIface, tKind::kInterface);
    if (!sDeviceID || !phDevice) return GC_ERR_INVALID_PARAMETER;
    Device* device = static_cast<Interface*>(hIface)->Find(sDeviceID);
    if (!device || !device->Plugged()) return Fail(GC_ERR_INVALID_ID, "unknown device");
    int32_t access = device->Config().access;
    if (access == DEVICE_ACCESS_STATUS_NOACCESS || access == DEVICE_ACCESS_STATUS_BUSY)
        return Fail(GC_ERR_ACCESS_DENIED, "device not accessible");
    if (access == DEVICE_ACCESS_STATUS_READONLY && iOpenFlags != DEVICE_ACCESS_READONLY)
        return Fail(GC_ERR_ACCESS_DENIED, "device is read-only");
    if (!device->Open(iOpenFlags)) return Fail(GC_ERR_RESOURCE_IN_USE, "device already open");
    tProducer& p = Producer();
    {
        std::lock_guard<std::mutex> hold(p.lock);
        auto& port = p.ports[device];
        if (!port) port = std::make_unique<tPort>(tPort{device});
        p.handles.Add(port.get(), tKind::kPort);
    }
    p.handles.Add(device, tKind::kDevice);
    *phDevice = device;
    return GC_ERR_SUCCESS;
}

// ---- Devices -----------------------------------------------------------------

#ifndef TAVIK_SIM_MISSING_REQUIRED
GC_API DevGetPort(DEV_HANDLE hDevice, PORT_HANDLE* phRemoteDevice) {
    ENTER("DevGetPort");
    CHECK(hDevice, tKind::kDevice);
    if (!phRemoteDevice) return GC_ERR_INVALID_PARAMETER;
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    *phRemoteDevice = p.ports[static_cast<Device*>(hDevice)].get();
    return GC_ERR_SUCCESS;
}
#endif

GC_API DevGetNumDataStreams(DEV_HANDLE hDevice, uint32_t* piNumDataStreams) {
    ENTER("DevGetNumDataStreams");
    CHECK(hDevice, tKind::kDevice);
    if (!piNumDataStreams) return GC_ERR_INVALID_PARAMETER;
    *piNumDataStreams = 1;
    return GC_ERR_SUCCESS;
}

GC_API DevGetDataStreamID(DEV_HANDLE hDevice, uint32_t iIndex, char* sDataStreamID,
                          size_t* piSize) {
    ENTER("DevGetDataStreamID");
    CHECK(hDevice, tKind::kDevice);
    if (iIndex != 0) return GC_ERR_INVALID_INDEX;
    return CopyText(Stream::Id(), sDataStreamID, piSize);
}

GC_API DevOpenDataStream(DEV_HANDLE hDevice, const char* sDataStreamID, DS_HANDLE* phDataStream) {
    ENTER("DevOpenDataStream");
    CHECK(hDevice, tKind::kDevice);
    if (!sDataStreamID || !phDataStream) return GC_ERR_INVALID_PARAMETER;
    if (strcmp(sDataStreamID, Stream::Id()) != 0) return Fail(GC_ERR_INVALID_ID, "unknown stream");
    Stream* stream = static_cast<Device*>(hDevice)->GetStream();
    if (stream->IsOpen()) return GC_ERR_RESOURCE_IN_USE;
    stream->SetOpen(true);
    Producer().handles.Add(stream, tKind::kStream);
    *phDataStream = stream;
    return GC_ERR_SUCCESS;
}

GC_API DevGetInfo(DEV_HANDLE hDevice, DEVICE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                  void* pBuffer, size_t* piSize) {
    ENTER("DevGetInfo");
    CHECK(hDevice, tKind::kDevice);
    return DeviceInfo(static_cast<Device*>(hDevice), iInfoCmd, piType, pBuffer, piSize);
}

GC_API DevClose(DEV_HANDLE hDevice) {
    ENTER("DevClose");
    CHECK(hDevice, tKind::kDevice);
    auto* device = static_cast<Device*>(hDevice);
    tProducer& p = Producer();
    p.handles.Remove(device->GetStream());
    device->Close();
    std::lock_guard<std::mutex> hold(p.lock);
    p.handles.Remove(p.ports[device].get());
    p.handles.Remove(device);
    return GC_ERR_SUCCESS;
}

// ---- Ports -------------------------------------------------------------------

GC_API GCReadPort(PORT_HANDLE hPort, uint64_t iAddress, void* pBuffer, size_t* piSize) {
    ENTER("GCReadPort");
    CHECK(hPort, tKind::kPort);
    return static_cast<tPort*>(hPort)->device->Read(iAddress, pBuffer, piSize);
}

GC_API GCWritePort(PORT_HANDLE hPort, uint64_t iAddress, const void* pBuffer, size_t* piSize) {
    ENTER("GCWritePort");
    CHECK(hPort, tKind::kPort);
    return static_cast<tPort*>(hPort)->device->Write(iAddress, pBuffer, piSize);
}

GC_API GCReadPortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries,
                         size_t* piNumEntries) {
    ENTER("GCReadPortStacked");
    CHECK(hPort, tKind::kPort);
    return Stacked(static_cast<tPort*>(hPort)->device, pEntries, piNumEntries, false);
}

GC_API GCWritePortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries,
                          size_t* piNumEntries) {
    ENTER("GCWritePortStacked");
    CHECK(hPort, tKind::kPort);
    return Stacked(static_cast<tPort*>(hPort)->device, pEntries, piNumEntries, true);
}

GC_API GCGetPortURL(PORT_HANDLE hPort, char* sURL, size_t* piSize) {
    ENTER("GCGetPortURL");
    CHECK(hPort, tKind::kPort);
    return CopyText(static_cast<tPort*>(hPort)->device->Url(), sURL, piSize);
}

GC_API GCGetNumPortURLs(PORT_HANDLE hPort, uint32_t* piNumURLs) {
    ENTER("GCGetNumPortURLs");
    CHECK(hPort, tKind::kPort);
    if (!piNumURLs) return GC_ERR_INVALID_PARAMETER;
    *piNumURLs = 1;
    return GC_ERR_SUCCESS;
}

GC_API GCGetPortURLInfo(PORT_HANDLE hPort, uint32_t iURLIndex, URL_INFO_CMD iInfoCmd,
                        INFO_DATATYPE* piType, void* pBuffer, size_t* piSize) {
    ENTER("GCGetPortURLInfo");
    CHECK(hPort, tKind::kPort);
    if (iURLIndex != 0) return GC_ERR_INVALID_INDEX;
    Device* device = static_cast<tPort*>(hPort)->device;
    switch (iInfoCmd) {
    case URL_INFO_URL:
        return ReplyText(device->Url(), piType, pBuffer, piSize);
    case URL_INFO_SCHEMA_VER_MAJOR:
        return ReplyValue(INFO_DATATYPE_INT32, int32_t{1}, piType, pBuffer, piSize);
    case URL_INFO_SCHEMA_VER_MINOR:
        return ReplyValue(INFO_DATATYPE_INT32, int32_t{1}, piType, pBuffer, piSize);
    case URL_INFO_FILE_VER_MAJOR:
        return ReplyValue(INFO_DATATYPE_INT32, int32_t{1}, piType, pBuffer, piSize);
    case URL_INFO_FILE_VER_MINOR:
    case URL_INFO_FILE_VER_SUBMINOR:
        return ReplyValue(INFO_DATATYPE_INT32, int32_t{0}, piType, pBuffer, piSize);
    case URL_INFO_FILE_REGISTER_ADDRESS:
    case URL_INFO_DOCUMENT_ADDRESS_QRX:
        return ReplyValue(INFO_DATATYPE_UINT64, device->DocumentAddress(), piType, pBuffer, piSize);
    case URL_INFO_FILE_SIZE:
        return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{device->DocumentSize()}, piType, pBuffer,
                          piSize);
    case URL_INFO_DOCUMENT_SIZE_QRX:
        return ReplyValue(INFO_DATATYPE_UINT32, device->DocumentSize(), piType, pBuffer, piSize);
    case URL_INFO_DOCUMENT_ZIPPED_QRX:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{device->DocumentZipped()}, piType, pBuffer,
                          piSize);
    case URL_INFO_SCHEME:
        return ReplyValue(INFO_DATATYPE_INT32, int32_t{0}, piType, pBuffer, piSize);
    case URL_INFO_FILENAME:
        return ReplyText(device->DocumentZipped() ? "TavikSim.zip" : "TavikSim.xml", piType,
                         pBuffer, piSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

GC_API GCGetPortInfo(PORT_HANDLE hPort, PORT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                     void* pBuffer, size_t* piSize) {
    ENTER("GCGetPortInfo");
    CHECK(hPort, tKind::kPort);
    Device* device = static_cast<tPort*>(hPort)->device;
    switch (iInfoCmd) {
    case PORT_INFO_ID:
        return ReplyText(device->Config().id + "-Port", piType, pBuffer, piSize);
    case PORT_INFO_VENDOR:
        return ReplyText(device->Config().vendor, piType, pBuffer, piSize);
    case PORT_INFO_MODEL:
        return ReplyText(device->Config().model, piType, pBuffer, piSize);
    case PORT_INFO_TLTYPE:
        return ReplyText(device->Parent()->Config().type, piType, pBuffer, piSize);
    case PORT_INFO_MODULE:
        return ReplyText("Device", piType, pBuffer, piSize);
    case PORT_INFO_LITTLE_ENDIAN:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{1}, piType, pBuffer, piSize);
    case PORT_INFO_BIG_ENDIAN:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{0}, piType, pBuffer, piSize);
    case PORT_INFO_ACCESS_READ:
    case PORT_INFO_ACCESS_WRITE:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{1}, piType, pBuffer, piSize);
    case PORT_INFO_ACCESS_NA:
    case PORT_INFO_ACCESS_NI:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{0}, piType, pBuffer, piSize);
    case PORT_INFO_VERSION:
        return ReplyText("1.0", piType, pBuffer, piSize);
    case PORT_INFO_PORTNAME:
        return ReplyText("Device", piType, pBuffer, piSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

// ---- Events ------------------------------------------------------------------

GC_API GCRegisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID, EVENT_HANDLE* phEvent) {
    ENTER("GCRegisterEvent");
    if (!phEvent) return GC_ERR_INVALID_PARAMETER;
    Event* event = EventOf(hEventSrc, iEventID);
    if (!event) return Fail(GC_ERR_NOT_AVAILABLE, "no such event on this source");
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    if (!p.registered.insert(event).second) return GC_ERR_RESOURCE_IN_USE;
    p.handles.Add(event, tKind::kEvent);
    *phEvent = event;
    return GC_ERR_SUCCESS;
}

GC_API GCUnregisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID) {
    ENTER("GCUnregisterEvent");
    Event* event = EventOf(hEventSrc, iEventID);
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    if (!event || p.registered.erase(event) == 0) return GC_ERR_NOT_AVAILABLE;
    event->Kill();
    p.handles.Remove(event);
    return GC_ERR_SUCCESS;
}

GC_API EventGetData(EVENT_HANDLE hEvent, void* pBuffer, size_t* piSize, uint64_t iTimeout) {
    ENTER("EventGetData");
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    return static_cast<Event*>(hEvent)->Get(pBuffer, piSize, iTimeout);
}

GC_API EventGetDataInfo(EVENT_HANDLE hEvent, const void* pInBuffer, size_t iInSize,
                        EVENT_DATA_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pOutBuffer,
                        size_t* piOutSize) {
    ENTER("EventGetDataInfo");
    if (!IsEvent(hEvent) || !pInBuffer) return GC_ERR_INVALID_PARAMETER;
    auto* event = static_cast<Event*>(hEvent);
    const auto* in = static_cast<const uint8_t*>(pInBuffer);
    if (event->type == EVENT_NEW_BUFFER && iInSize >= sizeof(EVENT_NEW_BUFFER_DATA)) {
        EVENT_NEW_BUFFER_DATA data;
        memcpy(&data, in, sizeof(data));
        if (iInfoCmd == EVENT_DATA_ID)
            return ReplyValue(INFO_DATATYPE_PTR, data.BufferHandle, piType, pOutBuffer, piOutSize);
        if (iInfoCmd == EVENT_DATA_VALUE)
            return ReplyValue(INFO_DATATYPE_PTR, data.pUserPointer, piType, pOutBuffer, piOutSize);
    }
    // Other events carry a 32-bit id, a 32-bit value and then text.
    if (iInSize >= 8) {
        uint32_t id, value;
        memcpy(&id, in, 4);
        memcpy(&value, in + 4, 4);
        switch (iInfoCmd) {
        case EVENT_DATA_ID:
            return ReplyValue(INFO_DATATYPE_UINT32, id, piType, pOutBuffer, piOutSize);
        case EVENT_DATA_VALUE:
        case EVENT_DATA_WHAT_QRX:
            return ReplyValue(INFO_DATATYPE_UINT32, value, piType, pOutBuffer, piOutSize);
        case EVENT_DATA_NUMID:
            return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{id}, piType, pOutBuffer, piOutSize);
        case EVENT_DATA_DEVICE_ID_QRX:
            return ReplyText(
                std::string(reinterpret_cast<const char*>(in + 8),
                            strnlen(reinterpret_cast<const char*>(in + 8), iInSize - 8)),
                piType, pOutBuffer, piOutSize);
        case EVENT_DATA_DATA_QRX:
            return ReplyValue(INFO_DATATYPE_UINT32, uint32_t{0}, piType, pOutBuffer, piOutSize);
        default:
            break;
        }
    }
    return GC_ERR_NOT_IMPLEMENTED;
}

GC_API EventGetInfo(EVENT_HANDLE hEvent, EVENT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                    void* pBuffer, size_t* piSize) {
    ENTER("EventGetInfo");
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    auto* event = static_cast<Event*>(hEvent);
    switch (iInfoCmd) {
    case EVENT_EVENT_TYPE:
        return ReplyValue(INFO_DATATYPE_INT32, event->type, piType, pBuffer, piSize);
    case EVENT_NUM_IN_QUEUE:
        return ReplyValue(INFO_DATATYPE_SIZET, event->Queued(), piType, pBuffer, piSize);
    case EVENT_NUM_FIRED:
        return ReplyValue(INFO_DATATYPE_UINT64, event->Fired(), piType, pBuffer, piSize);
    case EVENT_SIZE_MAX:
        return ReplyValue(INFO_DATATYPE_SIZET, event->maxSize, piType, pBuffer, piSize);
    case EVENT_INFO_DATA_SIZE_MAX:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{256}, piType, pBuffer, piSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

GC_API EventFlush(EVENT_HANDLE hEvent) {
    ENTER("EventFlush");
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    static_cast<Event*>(hEvent)->Flush();
    return GC_ERR_SUCCESS;
}

GC_API EventKill(EVENT_HANDLE hEvent) {
    ENTER("EventKill");
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    static_cast<Event*>(hEvent)->Kill();
    return GC_ERR_SUCCESS;
}

// ---- Streams -----------------------------------------------------------------

#define STREAM(handle)                                                                             \
    CHECK(handle, tKind::kStream);                                                                 \
    Stream* stream = static_cast<Stream*>(handle)

GC_API DSAnnounceBuffer(DS_HANDLE hDataStream, void* pBuffer, size_t iSize, void* pPrivate,
                        BUFFER_HANDLE* phBuffer) {
    ENTER("DSAnnounceBuffer");
    STREAM(hDataStream);
    return stream->Announce(pBuffer, iSize, pPrivate, false, phBuffer);
}

GC_API DSAllocAndAnnounceBuffer(DS_HANDLE hDataStream, size_t iSize, void* pPrivate,
                                BUFFER_HANDLE* phBuffer) {
    ENTER("DSAllocAndAnnounceBuffer");
    STREAM(hDataStream);
    void* memory = iSize ? calloc(1, iSize) : nullptr;
    if (!memory) return GC_ERR_INVALID_PARAMETER;
    GC_ERROR status = stream->Announce(memory, iSize, pPrivate, true, phBuffer);
    if (status != GC_ERR_SUCCESS) free(memory);
    return status;
}

GC_API DSRevokeBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, void** pBuffer,
                      void** pPrivate) {
    ENTER("DSRevokeBuffer");
    STREAM(hDataStream);
    return stream->Revoke(hBuffer, pBuffer, pPrivate);
}

GC_API DSQueueBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer) {
    ENTER("DSQueueBuffer");
    STREAM(hDataStream);
    return stream->Queue(hBuffer);
}

GC_API DSFlushQueue(DS_HANDLE hDataStream, ACQ_QUEUE_TYPE iOperation) {
    ENTER("DSFlushQueue");
    STREAM(hDataStream);
    return stream->Flush(iOperation);
}

GC_API DSStartAcquisition(DS_HANDLE hDataStream, ACQ_START_FLAGS iStartFlags,
                          uint64_t iNumToAcquire) {
    (void)iStartFlags;
    ENTER("DSStartAcquisition");
    STREAM(hDataStream);
    return stream->Start(iNumToAcquire);
}

GC_API DSStopAcquisition(DS_HANDLE hDataStream, ACQ_STOP_FLAGS iStopFlags) {
    (void)iStopFlags;
    ENTER("DSStopAcquisition");
    STREAM(hDataStream);
    return stream->Stop();
}

GC_API DSGetInfo(DS_HANDLE hDataStream, STREAM_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                 void* pBuffer, size_t* piSize) {
    ENTER("DSGetInfo");
    STREAM(hDataStream);
    return stream->Info(iInfoCmd, piType, pBuffer, piSize);
}

GC_API DSGetBufferID(DS_HANDLE hDataStream, uint32_t iIndex, BUFFER_HANDLE* phBuffer) {
    ENTER("DSGetBufferID");
    STREAM(hDataStream);
    return stream->BufferAt(iIndex, phBuffer);
}

GC_API DSGetBufferInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, BUFFER_INFO_CMD iInfoCmd,
                       INFO_DATATYPE* piType, void* pBuffer, size_t* piSize) {
    ENTER("DSGetBufferInfo");
    STREAM(hDataStream);
    return stream->BufferInfo(hBuffer, iInfoCmd, piType, pBuffer, piSize);
}

#ifndef TAVIK_SIM_NO_CHUNKDATA
GC_API DSGetBufferChunkData(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer,
                            SINGLE_CHUNK_DATA* pChunkData, size_t* piNumChunks) {
    ENTER("DSGetBufferChunkData");
    STREAM(hDataStream);
    return stream->Chunks(hBuffer, pChunkData, piNumChunks);
}
#endif

GC_API DSClose(DS_HANDLE hDataStream) {
    ENTER("DSClose");
    STREAM(hDataStream);
    stream->Stop();
    stream->SetOpen(false);
    Producer().handles.Remove(stream);
    return GC_ERR_SUCCESS;
}

// ---- Vendor extensions -------------------------------------------------------

#ifndef TAVIK_SIM_STANDARD_ONLY
GC_API GCInitLibEx(uint32_t iFlags) {
    (void)iFlags;
    return GCInitLib();
}

GC_API DSAnnounceAndQueueBuffer(DS_HANDLE hDataStream, void* pBuffer, size_t iSize, void* pPrivate,
                                BUFFER_HANDLE* phBuffer) {
    ENTER("DSAnnounceAndQueueBuffer");
    STREAM(hDataStream);
    GC_ERROR status = stream->Announce(pBuffer, iSize, pPrivate, false, phBuffer);
    if (status != GC_ERR_SUCCESS) return status;
    status = stream->Queue(*phBuffer);
    if (status != GC_ERR_SUCCESS) stream->Revoke(*phBuffer, nullptr, nullptr);
    return status;
}

GC_API DSGetBufferInfoAndRevoke(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer,
                                S_BUFFER_INFO_BUNDLE* pBundle, void** pBuffer, void** pPrivate) {
    ENTER("DSGetBufferInfoAndRevoke");
    STREAM(hDataStream);
    if (!pBundle) return GC_ERR_INVALID_PARAMETER;
    GC_ERROR status = stream->Bundle(hBuffer, pBundle);
    return status != GC_ERR_SUCCESS ? status : stream->Revoke(hBuffer, pBuffer, pPrivate);
}

GC_API EventCreate(EVENT_TYPE iEventID, EVENT_HANDLE* phEvent) {
    ENTER("EventCreate");
    if (!phEvent) return GC_ERR_INVALID_PARAMETER;
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    auto event = std::make_unique<Event>(iEventID, nullptr, 1024);
    *phEvent = event.get();
    p.handles.Add(event.get(), tKind::kEvent);
    p.madeEvents.insert(std::move(event));
    return GC_ERR_SUCCESS;
}

GC_API EventDelete(EVENT_HANDLE hEvent) {
    ENTER("EventDelete");
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    for (auto it = p.madeEvents.begin(); it != p.madeEvents.end(); ++it)
        if (it->get() == hEvent) {
            p.handles.Remove(hEvent);
            p.madeEvents.erase(it);
            return GC_ERR_SUCCESS;
        }
    return GC_ERR_INVALID_HANDLE;
}

GC_API EventSetData(EVENT_HANDLE hEvent, const void* pBuffer, size_t iSize) {
    ENTER("EventSetData");
    if (!IsEvent(hEvent) || (!pBuffer && iSize)) return GC_ERR_INVALID_PARAMETER;
    static_cast<Event*>(hEvent)->Push(pBuffer, iSize);
    return GC_ERR_SUCCESS;
}

GC_API EventGetDataStacked(EVENT_HANDLE hEvent, void* pBuffer, size_t* piSize,
                           S_EVENT_DATA_STACK_ENTRY* pEntries, size_t* piNumEntries,
                           uint64_t iTimeout) {
    ENTER("EventGetDataStacked");
    if (!IsEvent(hEvent) || !pBuffer || !piSize || !pEntries || !piNumEntries)
        return GC_ERR_INVALID_PARAMETER;
    auto* event = static_cast<Event*>(hEvent);
    size_t used = 0, count = 0;
    GC_ERROR status = GC_ERR_SUCCESS;
    while (count < *piNumEntries) {
        size_t size = *piSize - used;
        status =
            event->Get(static_cast<uint8_t*>(pBuffer) + used, &size, count == 0 ? iTimeout : 0);
        if (status != GC_ERR_SUCCESS) break;
        pEntries[count++] = {hEvent, static_cast<uint32_t>(size)};
        used += size;
    }
    *piNumEntries = count;
    *piSize = used;
    return count ? GC_ERR_SUCCESS : status;
}

GC_API EventWait(EVENT_HANDLE hEvent, uint64_t iTimeout) {
    ENTER("EventWait");
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    return static_cast<Event*>(hEvent)->Wait(iTimeout);
}

#define UNION(handle)                                                                              \
    CHECK(handle, tKind::kUnion);                                                                  \
    Union* group = static_cast<Union*>(handle)

GC_API UnionCreate(UNION_HANDLE* phUnion) {
    ENTER("UnionCreate");
    if (!phUnion) return GC_ERR_INVALID_PARAMETER;
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    auto group = std::make_unique<Union>();
    *phUnion = group.get();
    p.handles.Add(group.get(), tKind::kUnion);
    p.unions.insert(std::move(group));
    return GC_ERR_SUCCESS;
}

GC_API UnionDelete(UNION_HANDLE hUnion) {
    ENTER("UnionDelete");
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    for (auto it = p.unions.begin(); it != p.unions.end(); ++it)
        if (it->get() == hUnion) {
            p.handles.Remove(hUnion);
            p.unions.erase(it);
            return GC_ERR_SUCCESS;
        }
    return GC_ERR_INVALID_HANDLE;
}

GC_API UnionLinkup(UNION_HANDLE hUnion, EVENT_HANDLE hEvent) {
    ENTER("UnionLinkup");
    UNION(hUnion);
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    return group->Link(static_cast<Event*>(hEvent));
}

GC_API UnionUnlink(UNION_HANDLE hUnion, EVENT_HANDLE hEvent) {
    ENTER("UnionUnlink");
    UNION(hUnion);
    return group->Unlink(static_cast<Event*>(hEvent));
}

GC_API UnionWait(UNION_HANDLE hUnion, EVENT_HANDLE* phEvent, uint64_t iTimeout) {
    ENTER("UnionWait");
    UNION(hUnion);
    Event* event = nullptr;
    GC_ERROR status = group->Wait(&event, iTimeout);
    if (status == GC_ERR_SUCCESS && phEvent) *phEvent = event;
    return status;
}

GC_API UnionGetData(UNION_HANDLE hUnion, EVENT_HANDLE* phEvent, void* pBuffer, size_t* piSize,
                    uint64_t iTimeout) {
    ENTER("UnionGetData");
    UNION(hUnion);
    Event* event = nullptr;
    GC_ERROR status = group->Wait(&event, iTimeout);
    if (status != GC_ERR_SUCCESS) return status;
    if (phEvent) *phEvent = event;
    return event->Get(pBuffer, piSize, 0);
}

GC_API UnionGetDataStacked(UNION_HANDLE hUnion, S_UNION_DATA_STACK_ENTRY* pEntries,
                           size_t* piNumEntries, uint64_t iTimeout) {
    ENTER("UnionGetDataStacked");
    UNION(hUnion);
    if (!pEntries || !piNumEntries || *piNumEntries == 0) return GC_ERR_INVALID_PARAMETER;
    Event* event = nullptr;
    GC_ERROR status = group->Wait(&event, iTimeout);
    if (status != GC_ERR_SUCCESS) return status;
    pEntries[0] = {event, nullptr};
    *piNumEntries = 1;
    return GC_ERR_SUCCESS;
}

GC_API UnionGetDataInfo(UNION_HANDLE hUnion, EVENT_HANDLE hEvent, const void* pInBuffer,
                        size_t iInSize, EVENT_DATA_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                        void* pOutBuffer, size_t* piOutSize) {
    ENTER("UnionGetDataInfo");
    UNION(hUnion);
    (void)group;
    return EventGetDataInfo(hEvent, pInBuffer, iInSize, iInfoCmd, piType, pOutBuffer, piOutSize);
}

GC_API UnionFlush(UNION_HANDLE hUnion) {
    ENTER("UnionFlush");
    UNION(hUnion);
    (void)group;
    return GC_ERR_SUCCESS;
}

GC_API UnionKill(UNION_HANDLE hUnion) {
    ENTER("UnionKill");
    UNION(hUnion);
    group->Kill();
    return GC_ERR_SUCCESS;
}
#endif

// ---- Control -------------------------------------------------------------------

__attribute__((visibility("default"))) int TavikSimControl(const char* command) {
    tProducer& p = Producer();
    if (!command) return -1;
    std::istringstream words(command);
    std::string verb, name;
    words >> verb;
    if (verb == "clear") {
        p.faults.Clear();
        return 0;
    }
    words >> name;
    if (verb == "fail") {
        int32_t status = 0;
        uint32_t count = 0;
        if (!(words >> status)) return -1;
        words >> count;
        p.faults.Fail(name, status, count);
        return 0;
    }
    if (verb == "delay") {
        uint32_t ms = 0;
        if (!(words >> ms)) return -1;
        p.faults.Delay(name, ms);
        return 0;
    }
    std::lock_guard<std::mutex> hold(p.lock);
    Device* device = p.system ? p.system->FindDevice(name) : nullptr;
    if (!device) return -1;
    if (verb == "plug" || verb == "unplug") {
        device->SetPlugged(verb == "plug");
        // Interface events carry the camera's id and what happened.
        std::vector<uint8_t> data(8 + name.size() + 1, 0);
        uint32_t id = EVENT_DEVICE_LIST_CHANGED_QRX;
        uint32_t what = verb == "plug" ? IFCHANGE_DEVICE_ARRIVED : IFCHANGE_DEVICE_LEFT;
        memcpy(data.data(), &id, 4);
        memcpy(data.data() + 4, &what, 4);
        memcpy(data.data() + 8, name.c_str(), name.size());
        device->Parent()->DeviceListChanged()->Push(data.data(), data.size());
        return 0;
    }
    if (verb == "document") {
        uint64_t address = 0;
        uint32_t size = 0;
        if (!(words >> std::hex >> address >> size)) return -1;
        device->ReportDocument(address, size);
        return 0;
    }
    if (verb == "incomplete") {
        uint32_t count = 0;
        words >> count;
        device->GetStream()->MakeIncomplete(count);
        return 0;
    }
    if (verb == "invalidate") {
        std::string feature;
        words >> feature;
        std::vector<uint8_t> data(8 + feature.size() + 1, 0);
        memcpy(data.data() + 8, feature.c_str(), feature.size());
        device->Invalidations()->Push(data.data(), data.size());
        return 0;
    }
    if (verb == "event") {
        uint32_t id = 0;
        words >> id;
        uint8_t data[16] = {};
        memcpy(data, &id, 4);
        device->RemoteEvents()->Push(data, sizeof(data));
        return 0;
    }
    return -1;
}

} // extern "C"
