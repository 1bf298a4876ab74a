// Listing and opening cameras and interfaces.
#include "CallFrame.h"

extern "C" {

TVK_EXPORT TvkError_t TvkCamerasList(TvkCameraInfo_t* pCameraInfo, uint32_t listLength,
                                     uint32_t* pNumFound, uint32_t sizeofCameraInfo) {
    uCallTrace trace("TvkCamerasList");
    trace.InPointer("pCameraInfo", pCameraInfo)
        .InU32("listLength", listLength)
        .InU32("sizeofCameraInfo", sizeofCameraInfo);
    TvkError_t status = RunGated(
        trace, 0,
        FirstFailure({Require(pNumFound), RequireSize(sizeofCameraInfo, sizeof(TvkCameraInfo_t))}),
        [&] { return TvkErrorNotImplemented; });
    trace.OutU32("pNumFound", pNumFound);
    return status;
}

TVK_EXPORT TvkError_t TvkCameraInfoQuery(const char* idString, TvkCameraInfo_t* pInfo,
                                         uint32_t sizeofCameraInfo) {
    uCallTrace trace("TvkCameraInfoQuery");
    trace.InString("idString", idString).InU32("sizeofCameraInfo", sizeofCameraInfo);
    TvkError_t status = RunGated(
        trace, 0,
        FirstFailure({Require(idString), RequireSize(sizeofCameraInfo, sizeof(TvkCameraInfo_t))}),
        [&] { return TvkErrorNotImplemented; });
    trace.OutPointer("pInfo", pInfo);
    return status;
}

TVK_EXPORT TvkError_t TvkCameraOpen(const char* idString, TvkAccessMode_t accessMode,
                                    TvkHandle_t* pCameraHandle) {
    uCallTrace trace("TvkCameraOpen");
    trace.InString("idString", idString).InU32("accessMode", accessMode);
    TvkError_t status =
        RunGated(trace, kTagCapture, FirstFailure({Require(idString), Require(pCameraHandle)}),
                 [&] { return TvkErrorNotImplemented; });
    trace.OutHandle("pCameraHandle", pCameraHandle);
    return status;
}

TVK_EXPORT TvkError_t TvkCameraClose(const TvkHandle_t cameraHandle) {
    uCallTrace trace("TvkCameraClose");
    trace.InHandle("cameraHandle", cameraHandle);
    return RunGated(trace, kTagCapture, TvkErrorSuccess, [&] {
        return WithProxy(cameraHandle, TvkErrorDeviceNotOpen,
                         [](tvk::pProxy*) { return TvkErrorNotImplemented; });
    });
}

TVK_EXPORT TvkError_t TvkInterfacesList(TvkInterfaceInfo_t* pInterfaceInfo, uint32_t listLength,
                                        uint32_t* pNumFound, uint32_t sizeofInterfaceInfo) {
    uCallTrace trace("TvkInterfacesList");
    trace.InPointer("pInterfaceInfo", pInterfaceInfo)
        .InU32("listLength", listLength)
        .InU32("sizeofInterfaceInfo", sizeofInterfaceInfo);
    TvkError_t status =
        RunGated(trace, 0, Require(pNumFound), [&] { return TvkErrorNotImplemented; });
    trace.OutU32("pNumFound", pNumFound);
    return status;
}

TVK_EXPORT TvkError_t TvkInterfaceOpen(const char* idString, TvkHandle_t* pInterfaceHandle) {
    uCallTrace trace("TvkInterfaceOpen");
    trace.InString("idString", idString);
    TvkError_t status =
        RunGated(trace, 0, Require(pInterfaceHandle), [&] { return TvkErrorNotImplemented; });
    trace.OutHandle("pInterfaceHandle", pInterfaceHandle);
    return status;
}

TVK_EXPORT TvkError_t TvkInterfaceClose(const TvkHandle_t interfaceHandle) {
    uCallTrace trace("TvkInterfaceClose");
    trace.InHandle("interfaceHandle", interfaceHandle);
    return RunGated(trace, 0, TvkErrorSuccess, [&] {
        return WithProxy(interfaceHandle, TvkErrorBadHandle,
                         [](tvk::pProxy*) { return TvkErrorNotImplemented; });
    });
}

} // extern "C"
