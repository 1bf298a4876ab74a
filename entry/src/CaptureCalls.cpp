// Announcing frames and running acquisition on an open camera.
#include "CallFrame.h"

namespace {

// Capture calls take an open camera only.
TvkError_t OnCamera(TvkHandle_t aHandle) {
    return WithProxy(aHandle, TvkErrorDeviceNotOpen,
                     [](tvk::pProxy*) { return TvkErrorNotImplemented; });
}

TvkError_t CameraOnly(const char* aFunction, TvkHandle_t aHandle, llk::u4 aTag) {
    uCallTrace trace(aFunction);
    trace.InHandle("cameraHandle", aHandle);
    return RunGated(trace, aTag, TvkErrorSuccess, [&] { return OnCamera(aHandle); });
}

} // namespace

extern "C" {

TVK_EXPORT TvkError_t TvkFrameAnnounce(const TvkHandle_t cameraHandle, const TvkFrame_t* pFrame,
                                       uint32_t sizeofFrame) {
    uCallTrace trace("TvkFrameAnnounce");
    trace.InHandle("cameraHandle", cameraHandle)
        .InPointer("pFrame", pFrame)
        .InU32("sizeofFrame", sizeofFrame);
    return RunGated(trace, kTagCapture,
                    FirstFailure({Require(pFrame), Require(sizeofFrame != 0),
                                  RequireSize(sizeofFrame, sizeof(TvkFrame_t))}),
                    [&] { return OnCamera(cameraHandle); });
}

TVK_EXPORT TvkError_t TvkFrameRevoke(const TvkHandle_t cameraHandle, const TvkFrame_t* pFrame) {
    uCallTrace trace("TvkFrameRevoke");
    trace.InHandle("cameraHandle", cameraHandle).InPointer("pFrame", pFrame);
    return RunGated(trace, kTagCapture, Require(pFrame), [&] { return OnCamera(cameraHandle); });
}

TVK_EXPORT TvkError_t TvkFrameRevokeAll(const TvkHandle_t cameraHandle) {
    return CameraOnly("TvkFrameRevokeAll", cameraHandle, kTagCapture);
}

TVK_EXPORT TvkError_t TvkCaptureStart(const TvkHandle_t cameraHandle) {
    return CameraOnly("TvkCaptureStart", cameraHandle, kTagCapture);
}

TVK_EXPORT TvkError_t TvkCaptureEnd(const TvkHandle_t cameraHandle) {
    return CameraOnly("TvkCaptureEnd", cameraHandle, kTagCapture);
}

TVK_EXPORT TvkError_t TvkCaptureFrameQueue(const TvkHandle_t cameraHandle, const TvkFrame_t* pFrame,
                                           TvkFrameCallback callback) {
    uCallTrace trace("TvkCaptureFrameQueue");
    trace.InHandle("cameraHandle", cameraHandle)
        .InPointer("pFrame", pFrame)
        .InPointer("callback", reinterpret_cast<const void*>(callback));
    return RunGated(trace, 0, Require(pFrame), [&] { return OnCamera(cameraHandle); });
}

TVK_EXPORT TvkError_t TvkCaptureFrameWait(const TvkHandle_t cameraHandle, const TvkFrame_t* pFrame,
                                          uint32_t timeout) {
    uCallTrace trace("TvkCaptureFrameWait");
    trace.InHandle("cameraHandle", cameraHandle)
        .InPointer("pFrame", pFrame)
        .InU32("timeout", timeout);
    return RunGated(trace, 0, Require(pFrame), [&] { return OnCamera(cameraHandle); });
}

TVK_EXPORT TvkError_t TvkCaptureQueueFlush(const TvkHandle_t cameraHandle) {
    return CameraOnly("TvkCaptureQueueFlush", cameraHandle, 0);
}

} // extern "C"
