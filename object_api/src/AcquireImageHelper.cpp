#include "AcquireImageHelper.h"

#include <string>

#include "Log.h"
#include "TavikCPP/Feature.h"
#include "TavikCPP/Frame.h"

namespace QRX::TvkAPI {

namespace {
const char kSetup[] = "QRX::TvkAPI::AcquireImageHelper::SetupFrame";
const char kAnnounce[] = "QRX::TvkAPI::AcquireImageHelper::AnnounceFrames";
const char kPrepare[] = "QRX::TvkAPI::AcquireImageHelper::Prepare";
const char kTearDown[] = "QRX::TvkAPI::AcquireImageHelper::TearDown";

// Finds a feature by name and uses it; each failure says which step failed.
template <class Use>
TvkErrorType WithFeature(Camera& rCamera, const char* aName, const char* aFunction,
                         const char* aUseFailure, Use aUse) {
    if (!aName) {
        LogFailure("feature name is NULL", aFunction);
        return TvkErrorBadParameter;
    }
    FeaturePtr feature;
    TvkErrorType status = rCamera.GetFeatureByName(aName, feature);
    if (status != TvkErrorSuccess) {
        LogFailure(std::string("Could not get feature by name for ") + aName, aFunction);
        return status;
    }
    status = aUse(*feature);
    if (status != TvkErrorSuccess) LogFailure(aUseFailure + std::string(aName), aFunction);
    return status;
}

TvkErrorType KeepFirst(TvkErrorType aFirst, TvkErrorType aNext) {
    return aFirst != TvkErrorSuccess ? aFirst : aNext;
}
} // namespace

TvkErrorType GetFeatureValueInt(Camera& cam, const char* name, int64_t& val) {
    return WithFeature(cam, name, "QRX::TvkAPI::GetFeatureValueInt",
                       "Could not get value of feature ",
                       [&](Feature& rFeature) { return rFeature.GetValue(val); });
}

TvkErrorType RunFeatureCommand(Camera& cam, const char* name) {
    return WithFeature(cam, name, "QRX::TvkAPI::RunFeatureCommand",
                       "Could not run feature command ",
                       [](Feature& rFeature) { return rFeature.RunCommand(); });
}

AcquireImageHelper::AcquireImageHelper(Camera& Cam) : m_Camera(Cam) {}

AcquireImageHelper::~AcquireImageHelper() {
    TearDown();
}

tear_down_tasks AcquireImageHelper::GetTask() {
    return m_Tasks[--m_nTasks];
}

TvkErrorType AcquireImageHelper::SetupFrame(FramePtr& pFrame, int64_t PayloadSize) {
    if (PayloadSize <= 0) {
        LogFailure("payload size has to be larger than 0", kSetup);
        return TvkErrorBadParameter;
    }
    if (pFrame) {
        uint32_t size = 0;
        const TvkErrorType status = pFrame->GetBufferSize(size);
        if (status != TvkErrorSuccess) {
            LogFailure("Could not get frame buffer size", kSetup);
            return status;
        }
        if (size >= PayloadSize) return TvkErrorSuccess;
    }
    try {
        pFrame.Reset(new Frame(PayloadSize));
    } catch (...) {
        pFrame.Reset();
    }
    if (!pFrame) {
        LogFailure("error allocating frame", kSetup);
        return TvkErrorResources;
    }
    return TvkErrorSuccess;
}

TvkErrorType AcquireImageHelper::AnnounceFrames(Camera& Cam, FramePtr* pFrames,
                                                uint32_t nFrameCount, int64_t nPayloadSize,
                                                uint32_t& nFramesAnnounced) {
    nFramesAnnounced = 0;
    TvkErrorType first = TvkErrorSuccess;
    for (uint32_t i = 0; i < nFrameCount; ++i) {
        TvkErrorType status = SetupFrame(pFrames[i], nPayloadSize);
        if (status == TvkErrorSuccess) {
            status = Cam.AnnounceFrame(pFrames[i]);
            if (status == TvkErrorSuccess)
                ++nFramesAnnounced;
            else
                LogFailure("Could only successfully announce " + std::to_string(nFramesAnnounced) +
                               " of " + std::to_string(nFrameCount) +
                               " frames. Will continue with queuing those.",
                           kAnnounce);
        }
        first = KeepFirst(first, status);
    }
    return first;
}

TvkErrorType AcquireImageHelper::AnnounceFrames(Camera& Cam, std::vector<FramePtr>& Frames,
                                                uint32_t nBufferCount, int64_t nPayloadSize,
                                                const IFrameObserverPtr& Observer) {
    try {
        Frames.reserve(nBufferCount);
    } catch (...) {
        LogFailure("could not allocate frames", kAnnounce);
        return TvkErrorResources;
    }
    TvkErrorType first = TvkErrorSuccess;
    for (uint32_t i = 0; i < nBufferCount; ++i) {
        FramePtr frame;
        TvkErrorType status = SetupFrame(frame, nPayloadSize);
        if (!frame) {
            LogFailure("could not allocate frame", kAnnounce);
        } else if ((status = frame->RegisterObserver(Observer)) != TvkErrorSuccess) {
            LogFailure("could not register frame observer", kAnnounce);
        } else if ((status = Cam.AnnounceFrame(frame)) == TvkErrorSuccess) {
            Frames.push_back(frame);
        } else {
            LogFailure("could not announce frame", kAnnounce);
        }
        first = KeepFirst(first, status);
    }
    return first;
}

TvkErrorType AcquireImageHelper::Prepare(FramePtr& pFrame, int64_t PayloadSize) {
    auto fail = [](TvkErrorType aStatus, const char* aMessage) {
        LogFailure(aMessage, kPrepare);
        return aStatus;
    };
    TvkErrorType status = SetupFrame(pFrame, PayloadSize);
    if (status != TvkErrorSuccess) return fail(status, "Could not create frame");
    status = m_Camera.AnnounceFrame(pFrame);
    if (status != TvkErrorSuccess) return fail(status, "Could not Announce frame");
    Push(tear_down_revoke);
    status = m_Camera.StartCapture();
    if (status != TvkErrorSuccess) return fail(status, "Could not Start Capture");
    Push(tear_down_end_capture);
    status = m_Camera.QueueFrame(pFrame);
    if (status != TvkErrorSuccess) return fail(status, "Could not queue frame");
    // A queued frame is flushed before the capture's end is undone.
    Pop();
    Push(tear_down_flush);
    Push(tear_down_end_capture);
    status = RunFeatureCommand(m_Camera, "AcquisitionStart");
    if (status != TvkErrorSuccess) return fail(status, "Could not run command AcquisitionStart");
    Push(tear_down_stop_acquisition);
    return TvkErrorSuccess;
}

TvkErrorType AcquireImageHelper::Prepare(FramePtr* pFrames, uint32_t nFrameCount,
                                         int64_t nPayloadSize, uint32_t& nFramesQueued) {
    if (!pFrames || nFrameCount == 0) return TvkErrorBadParameter;
    nFramesQueued = 0;
    uint32_t announced = 0;
    TvkErrorType status = AnnounceFrames(m_Camera, pFrames, nFrameCount, nPayloadSize, announced);
    if (announced == 0) return status;
    Push(tear_down_revoke);
    status = m_Camera.StartCapture();
    if (status != TvkErrorSuccess) {
        LogFailure("Could not Start Capture", kPrepare);
        return status;
    }
    Push(tear_down_end_capture);
    // The announced frames are taken to be the first ones of the array.
    for (uint32_t i = 0; i < announced; ++i) {
        status = m_Camera.QueueFrame(pFrames[i]);
        if (status != TvkErrorSuccess) {
            LogFailure("Could only successfully queue " + std::to_string(nFramesQueued) + " of " +
                           std::to_string(nFrameCount) +
                           " frames. Will continue with filling those.",
                       kPrepare);
            break;
        }
        ++nFramesQueued;
    }
    if (nFramesQueued == 0) return status;
    if (m_nTasks > 0) Pop();
    Push(tear_down_flush);
    Push(tear_down_end_capture);
    status = RunFeatureCommand(m_Camera, "AcquisitionStart");
    if (status != TvkErrorSuccess) {
        LogFailure("Could not run command AcquisitionStart", kPrepare);
        return status;
    }
    Push(tear_down_stop_acquisition);
    return TvkErrorSuccess;
}

TvkErrorType AcquireImageHelper::TearDown() {
    TvkErrorType first = TvkErrorSuccess;
    while (m_nTasks > 0) {
        TvkErrorType status = TvkErrorSuccess;
        const char* failure = nullptr;
        switch (GetTask()) {
        case tear_down_stop_acquisition:
            status = RunFeatureCommand(m_Camera, "AcquisitionStop");
            failure = "Could not run command AquireStop";
            break;
        case tear_down_end_capture:
            status = m_Camera.EndCapture();
            failure = "Could Not run EndCapture";
            break;
        case tear_down_flush:
            status = m_Camera.FlushQueue();
            failure = "Could not run Flush Queue command";
            break;
        case tear_down_revoke:
            status = m_Camera.RevokeAllFrames();
            failure = "Could Not Run Revoke Frames command";
            break;
        }
        if (status != TvkErrorSuccess) LogFailure(failure, kTearDown);
        first = KeepFirst(first, status);
    }
    return first;
}

} // namespace QRX::TvkAPI
