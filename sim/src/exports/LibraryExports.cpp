// The library's own calls and the transport layer (system module).
#include "Entry.h"
#include "Info.h"

using namespace sim;

namespace {

GC_ERROR TlInfo(TL_INFO_CMD aCommand, INFO_DATATYPE* aType, void* aBuffer, size_t* aSize) {
    std::string tlType;
    {
        tProducer& p = Producer();
        std::lock_guard<std::mutex> hold(p.lock);
        if (p.system) tlType = LayerType(p.system->Topology());
    }
    if (tlType.empty()) tlType = LayerType(LoadTopology());
    switch (aCommand) {
    case TL_INFO_ID:
        return ReplyText(kProducerId, aType, aBuffer, aSize);
    case TL_INFO_VENDOR:
        return ReplyText(kProducerVendor, aType, aBuffer, aSize);
    case TL_INFO_MODEL:
        return ReplyText(kProducerModel, aType, aBuffer, aSize);
    case TL_INFO_VERSION:
        return ReplyText(kProducerVersion, aType, aBuffer, aSize);
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

// Stops every camera's stream before the objects they fill go.
void CloseDevices(System& aSystem) {
    for (auto& interface : aSystem.Interfaces())
        for (auto& device : interface->Devices())
            device->Close();
}

} // namespace

extern "C" {

GC_API GCInitLib(void) {
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    if (p.initialised) return GC_ERR_RESOURCE_IN_USE;
    p.initialised = true;
    return GC_ERR_SUCCESS;
}

#ifndef TAVIK_SIM_STANDARD_ONLY
GC_API GCInitLibEx(uint32_t iFlags) {
    (void)iFlags;
    return GCInitLib();
}
#endif

#ifndef TAVIK_SIM_NO_CLOSELIB
GC_API GCCloseLib(void) {
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    if (!p.initialised) return GC_ERR_NOT_INITIALIZED;
    if (p.system) CloseDevices(*p.system);
    p.system.reset();
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
    CloseDevices(*p.system);
    p.handles.Clear();
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
    static_cast<System*>(hTL)->UpdateListed(pbChanged);
    return GC_ERR_SUCCESS;
}

GC_API TLGetNumInterfaces(TL_HANDLE hTL, uint32_t* piNumIfaces) {
    ENTER("TLGetNumInterfaces");
    CHECK(hTL, tKind::kSystem);
    return static_cast<System*>(hTL)->listed.Count(piNumIfaces);
}

GC_API TLGetInterfaceID(TL_HANDLE hTL, uint32_t iIndex, char* sID, size_t* piSize) {
    ENTER("TLGetInterfaceID");
    CHECK(hTL, tKind::kSystem);
    std::string id;
    GC_ERROR status = static_cast<System*>(hTL)->listed.At(iIndex, id);
    return status != GC_ERR_SUCCESS ? status : CopyText(id, sID, piSize);
}

GC_API TLGetInterfaceInfo(TL_HANDLE hTL, const char* sIfaceID, INTERFACE_INFO_CMD iInfoCmd,
                          INFO_DATATYPE* piType, void* pBuffer, size_t* piSize) {
    ENTER("TLGetInterfaceInfo");
    CHECK(hTL, tKind::kSystem);
    if (!sIfaceID) return GC_ERR_INVALID_PARAMETER;
    Interface* interface = static_cast<System*>(hTL)->Find(sIfaceID);
    if (!interface) return Fail(GC_ERR_INVALID_ID, "unknown interface");
    return interface->Info(iInfoCmd, piType, pBuffer, piSize);
}

GC_API TLOpenInterface(TL_HANDLE hTL, const char* sIfaceID, IF_HANDLE* phIface) {
    ENTER("TLOpenInterface");
    CHECK(hTL, tKind::kSystem);
    if (!sIfaceID || !phIface) return GC_ERR_INVALID_PARAMETER;
    Interface* interface = static_cast<System*>(hTL)->Find(sIfaceID);
    if (!interface) return Fail(GC_ERR_INVALID_ID, "unknown interface");
    if (!interface->TryOpen()) return GC_ERR_RESOURCE_IN_USE;
    Producer().handles.Add(interface, tKind::kInterface);
    *phIface = interface;
    return GC_ERR_SUCCESS;
}

} // extern "C"
