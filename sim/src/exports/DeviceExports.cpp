// The device module and the ports.
#include "Entry.h"
#include "Info.h"
#include "Stream.h"

using namespace sim;

namespace {

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
    if (!stream->TryOpen()) return GC_ERR_RESOURCE_IN_USE;
    Producer().handles.Add(stream, tKind::kStream);
    *phDataStream = stream;
    return GC_ERR_SUCCESS;
}

GC_API DevGetInfo(DEV_HANDLE hDevice, DEVICE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                  void* pBuffer, size_t* piSize) {
    ENTER("DevGetInfo");
    CHECK(hDevice, tKind::kDevice);
    return static_cast<Device*>(hDevice)->Info(iInfoCmd, piType, pBuffer, piSize);
}

GC_API DevGetParentIF(DEV_HANDLE hDevice, IF_HANDLE* phIface) {
    ENTER("DevGetParentIF");
    CHECK(hDevice, tKind::kDevice);
    if (!phIface) return GC_ERR_INVALID_PARAMETER;
    *phIface = static_cast<Device*>(hDevice)->Parent();
    return GC_ERR_SUCCESS;
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

} // extern "C"
