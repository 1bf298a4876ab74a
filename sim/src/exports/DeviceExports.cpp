// The device module and the ports.
#include "Entry.h"
#include "Stream.h"

using namespace sim;

namespace {

// The port a handle is: a camera's remote port, or a module's own.
Port* PortOf(void* aHandle) {
    switch (Producer().handles.KindOf(aHandle).value_or(tKind::kEvent)) {
    case tKind::kPort:
        return static_cast<RemotePort*>(aHandle);
    case tKind::kSystem:
        return &static_cast<System*>(aHandle)->Module();
    case tKind::kInterface:
        return &static_cast<Interface*>(aHandle)->Module();
    case tKind::kDevice:
        return &static_cast<Device*>(aHandle)->Module();
    case tKind::kStream:
        return &static_cast<Stream*>(aHandle)->Module();
    default:
        return nullptr;
    }
}

} // namespace

#define PORT(handle)                                                                               \
    Port* port = PortOf(handle);                                                                   \
    if (!port) return Fail(GC_ERR_INVALID_HANDLE, "not a port")

extern "C" {

#ifndef TAVIK_SIM_MISSING_REQUIRED
GC_API DevGetPort(DEV_HANDLE hDevice, PORT_HANDLE* phRemoteDevice) {
    ENTER("DevGetPort");
    CHECK(hDevice, tKind::kDevice);
    if (!phRemoteDevice) return GC_ERR_INVALID_PARAMETER;
    *phRemoteDevice = &static_cast<Device*>(hDevice)->Remote();
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
    Handles& handles = Producer().handles;
    handles.Remove(device->GetStream());
    handles.Remove(&device->Remote());
    handles.Remove(device);
    device->Close();
    return GC_ERR_SUCCESS;
}

GC_API GCReadPort(PORT_HANDLE hPort, uint64_t iAddress, void* pBuffer, size_t* piSize) {
    ENTER("GCReadPort");
    PORT(hPort);
    return port->Read(iAddress, pBuffer, piSize);
}

GC_API GCWritePort(PORT_HANDLE hPort, uint64_t iAddress, const void* pBuffer, size_t* piSize) {
    ENTER("GCWritePort");
    PORT(hPort);
    return port->Write(iAddress, pBuffer, piSize);
}

GC_API GCReadPortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries,
                         size_t* piNumEntries) {
    ENTER("GCReadPortStacked");
    PORT(hPort);
    return port->Stacked(pEntries, piNumEntries, false);
}

GC_API GCWritePortStacked(PORT_HANDLE hPort, PORT_REGISTER_STACK_ENTRY* pEntries,
                          size_t* piNumEntries) {
    ENTER("GCWritePortStacked");
    PORT(hPort);
    return port->Stacked(pEntries, piNumEntries, true);
}

GC_API GCGetPortURL(PORT_HANDLE hPort, char* sURL, size_t* piSize) {
    ENTER("GCGetPortURL");
    PORT(hPort);
    return CopyText(port->Url(), sURL, piSize);
}

GC_API GCGetNumPortURLs(PORT_HANDLE hPort, uint32_t* piNumURLs) {
    ENTER("GCGetNumPortURLs");
    PORT(hPort);
    if (!piNumURLs) return GC_ERR_INVALID_PARAMETER;
    *piNumURLs = 1;
    return GC_ERR_SUCCESS;
}

GC_API GCGetPortURLInfo(PORT_HANDLE hPort, uint32_t iURLIndex, URL_INFO_CMD iInfoCmd,
                        INFO_DATATYPE* piType, void* pBuffer, size_t* piSize) {
    ENTER("GCGetPortURLInfo");
    PORT(hPort);
    return port->UrlInfo(iURLIndex, iInfoCmd, piType, pBuffer, piSize);
}

GC_API GCGetPortInfo(PORT_HANDLE hPort, PORT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                     void* pBuffer, size_t* piSize) {
    ENTER("GCGetPortInfo");
    PORT(hPort);
    return port->Info(iInfoCmd, piType, pBuffer, piSize);
}

} // extern "C"
