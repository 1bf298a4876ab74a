// A camera's acquisitions in one call: one image, several, or a continuous
// stream to an observer.
#include <string>

#include "AcquireImageHelper.h"
#include "CameraImpl.h"
#include "FrameImpl.h"
#include "Log.h"
#include "TavikCPP/MutexGuard.h"

namespace QRX::TvkAPI {

namespace {
const char kSingle[] = "QRX::TvkAPI::Camera::AcquireSingleImage";
const char kMultiple[] = "QRX::TvkAPI::Camera::AcquireMultipleImages";
const char kStart[] = "QRX::TvkAPI::Camera::StartContinuousImageAcquisition";
const char kStop[] = "QRX::TvkAPI::Camera::StopContinuousImageAcquisition";

TvkErrorType WaitFor(Camera& rCamera, const FramePtr& pFrame, uint32_t aTimeout) {
    return static_cast<TvkErrorType>(
        TvkCaptureFrameWait(rCamera.GetHandle(), &FrameAccess::Impl(*pFrame)->m_Frame, aTimeout));
}
} // namespace

TvkErrorType Camera::AcquireSingleImage(FramePtr& pFrame, uint32_t timeout) {
    int64_t payload = 0;
    TvkErrorType status = GetFeatureValueInt(*this, "PayloadSize", payload);
    if (status != TvkErrorSuccess) {
        LogFailure("Could not get payload size", kSingle);
        return status;
    }
    AcquireImageHelper helper(*this);
    status = helper.Prepare(pFrame, payload);
    if (status != TvkErrorSuccess) {
        LogFailure("preparing image acquisition failed", kSingle);
    } else {
        status = WaitFor(*this, pFrame, timeout);
        if (status != TvkErrorSuccess) LogFailure("Could not acquire single image.", kSingle);
    }
    const TvkErrorType tornDown = helper.TearDown();
    if (tornDown != TvkErrorSuccess) {
        LogFailure("tear down capture logic failed.", kSingle);
        if (status == TvkErrorSuccess) status = tornDown;
    }
    return status;
}

TvkErrorType Camera::AcquireMultipleImages(FramePtr* pFrames, uint32_t size, uint32_t nTimeout,
                                           uint32_t* pNumFramesCompleted) {
    if (!pFrames || size == 0) return TvkErrorBadParameter;
    if (pNumFramesCompleted) *pNumFramesCompleted = 0;
    int64_t payload = 0;
    TvkErrorType status = GetFeatureValueInt(*this, "PayloadSize", payload);
    if (status != TvkErrorSuccess) {
        LogFailure("Could not get feature PayloadSize", kMultiple);
        return status;
    }
    AcquireImageHelper helper(*this);
    uint32_t queued = 0;
    status = helper.Prepare(pFrames, size, payload, queued);
    if (status != TvkErrorSuccess) {
        LogFailure("Could not start capture", kMultiple);
        return status;
    }
    TvkErrorType waited = TvkErrorSuccess;
    for (uint32_t i = 0; i < queued; ++i) {
        waited = WaitFor(*this, pFrames[i], nTimeout);
        if (waited != TvkErrorSuccess) {
            // The count printed is one less than the frames filled (and wraps
            // for the first frame): this text is kept as it always was.
            LogFailure("Could only successfully fill " + std::to_string(i - 1) + " of " +
                           std::to_string(size) + " frames. Will stop acquisition now.",
                       kMultiple);
            break;
        }
        if (pNumFramesCompleted) ++*pNumFramesCompleted;
    }
    const TvkErrorType tornDown = helper.TearDown();
    return waited != TvkErrorSuccess ? waited : tornDown;
}

TvkErrorType Camera::StartContinuousImageAcquisition(int32_t bufferCount,
                                                     const IFrameObserverPtr& pObserver) {
    int64_t payload = 0;
    TvkErrorType status = GetFeatureValueInt(*this, "PayloadSize", payload);
    if (status != TvkErrorSuccess) {
        LogFailure("Could not get feature PayloadSize", kStart);
        return status;
    }
    // The frames live on in their handlers; a revoke lets them go.
    std::vector<FramePtr> frames;
    status = AcquireImageHelper::AnnounceFrames(*this, frames, static_cast<uint32_t>(bufferCount),
                                                payload, pObserver);
    if (frames.empty()) return status;
    status = StartCapture();
    if (status != TvkErrorSuccess) {
        RevokeAllFrames();
        LogFailure("Could not start capturing", kStart);
        return status;
    }
    TvkErrorType firstFailure = TvkErrorSuccess;
    size_t queued = 0;
    for (const FramePtr& frame : frames) {
        const TvkErrorType queuing = QueueFrame(frame);
        if (queuing == TvkErrorSuccess) {
            ++queued;
        } else {
            LogFailure("Could not queue frame", kStart);
            if (firstFailure == TvkErrorSuccess) firstFailure = queuing;
        }
    }
    if (queued == 0) {
        EndCapture();
        RevokeAllFrames();
        LogFailure("Could not queue frames", kStart);
        return firstFailure;
    }
    status = RunFeatureCommand(*this, "AcquisitionStart");
    if (status == TvkErrorSuccess) return TvkErrorSuccess;
    EndCapture();
    FlushQueue();
    RevokeAllFrames();
    LogFailure("Could not start acquisition", kStart);
    return status;
}

TvkErrorType Camera::StopContinuousImageAcquisition() {
    // From here on, an observer that queues its frame again is refused.
    MutexGuard queueing(m_pImpl->m_pQueueFrameMutex);
    m_pImpl->m_bAllowQueueFrame = false;
    queueing.Release();
    if (RunFeatureCommand(*this, "AcquisitionStop") != TvkErrorSuccess)
        LogFailure("Could not run feature AcquisitionStop", kStop);
    TvkErrorType status = EndCapture();
    if (status != TvkErrorSuccess) {
        LogFailure("Could not stop capture, unable to revoke frames", kStop);
    } else {
        if (FlushQueue() != TvkErrorSuccess) LogFailure("Could not flush queue", kStop);
        status = RevokeAllFrames();
        if (status != TvkErrorSuccess) LogFailure("Could not revoke frames", kStop);
    }
    queueing.Protect(m_pImpl->m_pQueueFrameMutex);
    m_pImpl->m_bAllowQueueFrame = true;
    return status;
}

} // namespace QRX::TvkAPI
