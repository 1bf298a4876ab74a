// The interface module.
#include "Entry.h"

using namespace sim;

extern "C" {

GC_API IFClose(IF_HANDLE hIface) {
    ENTER("IFClose");
    CHECK(hIface, tKind::kInterface);
    auto* interface = static_cast<Interface*>(hIface);
    Producer().handles.Remove(interface);
    interface->Close();
    return GC_ERR_SUCCESS;
}

GC_API IFGetInfo(IF_HANDLE hIface, INTERFACE_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                 void* pBuffer, size_t* piSize) {
    ENTER("IFGetInfo");
    CHECK(hIface, tKind::kInterface);
    return static_cast<Interface*>(hIface)->Info(iInfoCmd, piType, pBuffer, piSize);
}

GC_API IFUpdateDeviceList(IF_HANDLE hIface, bool8_t* pbChanged, uint64_t iTimeout) {
    (void)iTimeout;
    ENTER("IFUpdateDeviceList");
    CHECK(hIface, tKind::kInterface);
    static_cast<Interface*>(hIface)->UpdateListed(pbChanged);
    return GC_ERR_SUCCESS;
}

GC_API IFGetNumDevices(IF_HANDLE hIface, uint32_t* piNumDevices) {
    ENTER("IFGetNumDevices");
    CHECK(hIface, tKind::kInterface);
    return static_cast<Interface*>(hIface)->listed.Count(piNumDevices);
}

GC_API IFGetDeviceID(IF_HANDLE hIface, uint32_t iIndex, char* sIDeviceID, size_t* piSize) {
    ENTER("IFGetDeviceID");
    CHECK(hIface, tKind::kInterface);
    std::string id;
    GC_ERROR status = static_cast<Interface*>(hIface)->listed.At(iIndex, id);
    return status != GC_ERR_SUCCESS ? status : CopyText(id, sIDeviceID, piSize);
}

GC_API IFGetDeviceInfo(IF_HANDLE hIface, const char* sDeviceID, DEVICE_INFO_CMD iInfoCmd,
                       INFO_DATATYPE* piType, void* pBuffer, size_t* piSize) {
    ENTER("IFGetDeviceInfo");
    CHECK(hIface, tKind::kInterface);
    if (!sDeviceID) return GC_ERR_INVALID_PARAMETER;
    Device* device = static_cast<Interface*>(hIface)->Find(sDeviceID);
    if (!device || !device->Plugged()) return Fail(GC_ERR_INVALID_ID, "unknown device");
    return device->Info(iInfoCmd, piType, pBuffer, piSize);
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
    Handles& handles = Producer().handles;
    handles.Add(&device->Remote(), tKind::kPort);
    handles.Add(device, tKind::kDevice);
    *phDevice = device;
    return GC_ERR_SUCCESS;
}

GC_API IFGetParentTL(IF_HANDLE hIface, TL_HANDLE* phSystem) {
    ENTER("IFGetParentTL");
    CHECK(hIface, tKind::kInterface);
    if (!phSystem) return GC_ERR_INVALID_PARAMETER;
    *phSystem = static_cast<Interface*>(hIface)->Parent();
    return GC_ERR_SUCCESS;
}

} // extern "C"
