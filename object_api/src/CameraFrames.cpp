// A camera's frames: announced, queued, flushed and revoked through the
// capture engine, each with a FrameHandler that links it back to its observer.
#include <new>
#include <thread>

#include "CameraImpl.h"
#include "FrameImpl.h"
#include "LockGuards.h"
#include "Log.h"
#include "TavikCPP/MutexGuard.h"

namespace QRX::TvkAPI {

namespace {

const char kAnnounce[] = "QRX::TvkAPI::Camera::AnnounceFrame";
const char kQueue[] = "QRX::TvkAPI::Camera::QueueFrame";
const char kRevoke[] = "QRX::TvkAPI::Camera::RevokeFrame";
const char kRevokeAll[] = "QRX::TvkAPI::Camera::RevokeAllFrames";
const char kFlush[] = "QRX::TvkAPI::Camera::FlushQueue";

Frame::Impl& StateOf(const FrameHandler& rHandler) {
    return *FrameAccess::Impl(*rHandler.GetFrame());
}

// Cuts the link from the frame's record to its handler: a notification that
// comes later finds none.
void Unlink(Frame::Impl& rFrame) {
    SetHandlerOf(rFrame.m_Frame, nullptr);
    rFrame.m_bAlreadyAnnounced = false;
    rFrame.m_bAlreadyQueued = false;
}

// Takes a handler's write side, exclusive; revoke and flush come one at a
// time, so another exclusive writer is only ever passing.
void LockHandler(FrameHandler& rHandler, const char* aFunction) {
    while (!rHandler.EnterWriteLock(true)) {
        if (aFunction) LogFailure("Could not lock frame handler.", aFunction);
        std::this_thread::yield();
    }
}

} // namespace

TvkErrorType Camera::Impl::AppendFrameToVector(const FramePtr& pFrame) {
    IFrameObserverPtr observer;
    pFrame->GetObserver(observer);
    try {
        m_frameHandlers.Vector.reserve(m_frameHandlers.Vector.size() + 1);
        FrameHandlerPtr handler(new FrameHandler(pFrame, observer));
        SetHandlerOf(FrameAccess::Impl(*pFrame)->m_Frame, handler.AccessNative());
        m_frameHandlers.Vector.push_back(std::move(handler));
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    return TvkErrorSuccess;
}

TvkErrorType Camera::AnnounceFrame(const FramePtr& pFrame) {
    if (!pFrame) return TvkErrorBadParameter;
    Frame::Impl& frame = *FrameAccess::Impl(*pFrame);
    if (frame.m_bAlreadyAnnounced || frame.m_bAlreadyQueued) return TvkErrorInvalidCall;
    auto status = static_cast<TvkErrorType>(
        TvkFrameAnnounce(GetHandle(), &frame.m_Frame, sizeof(TvkFrame_t)));
    if (status != TvkErrorSuccess) return status;
    WriteLockGuard writing(m_pImpl->m_frameHandlersConditionHelper, m_pImpl->m_frameHandlers,
                           false);
    // The capture engine keeps the announcement.
    if (!writing) {
        LogFailure("Could not lock announced frame queue for appending frame.", kAnnounce);
        return TvkErrorResources;
    }
    status = m_pImpl->AppendFrameToVector(pFrame);
    if (status == TvkErrorSuccess)
        frame.m_bAlreadyAnnounced = true;
    else
        LogFailure("could not append frame to internal vector", kAnnounce);
    return status;
}

TvkErrorType Camera::QueueFrame(const FramePtr& pFrame) {
    if (!pFrame) return TvkErrorBadParameter;
    Frame::Impl& frame = *FrameAccess::Impl(*pFrame);
    MutexGuard queueing(m_pImpl->m_pQueueFrameMutex);
    if (!m_pImpl->m_bAllowQueueFrame) {
        LogFailure("Queuing of new frames is not possible while flushing and revoking the "
                   "currently queued frames.",
                   kQueue);
        return TvkErrorInvalidCall;
    }
    const auto status = static_cast<TvkErrorType>(
        TvkCaptureFrameQueue(GetHandle(), &frame.m_Frame, &FrameHandler::FrameDoneCallback));
    if (status != TvkErrorSuccess) return status;
    // A frame the camera knows already (queued again from its observer,
    // say) needs no handler.
    if (frame.m_bAlreadyQueued || frame.m_bAlreadyAnnounced) return TvkErrorSuccess;
    WriteLockGuard writing(m_pImpl->m_frameHandlersConditionHelper, m_pImpl->m_frameHandlers,
                           false);
    if (!writing) {
        LogFailure("Could not lock frame queue for appending frame.", kQueue);
        return TvkErrorResources;
    }
    m_pImpl->AppendFrameToVector(pFrame);
    frame.m_bAlreadyQueued = true;
    return TvkErrorSuccess;
}

TvkErrorType Camera::RevokeFrame(const FramePtr& pFrame) {
    if (!pFrame) return TvkErrorBadParameter;
    Frame::Impl& frame = *FrameAccess::Impl(*pFrame);
    const auto status = static_cast<TvkErrorType>(TvkFrameRevoke(GetHandle(), &frame.m_Frame));
    if (status != TvkErrorSuccess) {
        LogFailure("Could not revoke frames", kRevoke);
        return status;
    }
    WriteLockGuard writing(m_pImpl->m_frameHandlersConditionHelper, m_pImpl->m_frameHandlers, true);
    if (!writing) {
        LogFailure("Could not lock announced frame queue for removing frame.", kRevoke);
        return TvkErrorResources;
    }
    auto& handlers = m_pImpl->m_frameHandlers.Vector;
    for (auto handler = handlers.begin(); handler != handlers.end(); ++handler) {
        LockHandler(**handler, nullptr);
        const bool found = (*handler)->GetFrame() == pFrame;
        if (found) Unlink(frame);
        (*handler)->ExitWriteLock();
        if (!found) continue;
        FrameHandlerPtr released = std::move(*handler);
        handlers.erase(handler);
        // The gate stays held, exclusive, for good: every later entry on this
        // camera's frame list fails at once.
        writing.Keep();
        return TvkErrorSuccess;
    }
    return status;
}

TvkErrorType Camera::RevokeAllFrames() {
    const auto status = static_cast<TvkErrorType>(TvkFrameRevokeAll(GetHandle()));
    if (status != TvkErrorSuccess) return status;
    std::vector<FrameHandlerPtr> released;
    WriteLockGuard writing(m_pImpl->m_frameHandlersConditionHelper, m_pImpl->m_frameHandlers, true);
    if (!writing) {
        LogFailure("Could not lock frame handler list.", kRevokeAll);
        return status;
    }
    for (const FrameHandlerPtr& handler : m_pImpl->m_frameHandlers.Vector) {
        if (!handler->EnterWriteLock(true)) {
            LogFailure("Could not lock frame handler.", kRevokeAll);
            continue;
        }
        Unlink(StateOf(*handler));
        handler->ExitWriteLock();
    }
    // The handlers, and frames only they hold, go after the gate is left.
    released.swap(m_pImpl->m_frameHandlers.Vector);
    return TvkErrorSuccess;
}

TvkErrorType Camera::FlushQueue() {
    const auto status = static_cast<TvkErrorType>(TvkCaptureQueueFlush(GetHandle()));
    if (status != TvkErrorSuccess) {
        LogFailure("Could not flush frame queue", kFlush);
        return status;
    }
    std::vector<FrameHandlerPtr> released;
    WriteLockGuard writing(m_pImpl->m_frameHandlersConditionHelper, m_pImpl->m_frameHandlers, true);
    if (!writing) {
        LogFailure("Could not lock frame handler list.", kFlush);
        return status;
    }
    auto& handlers = m_pImpl->m_frameHandlers.Vector;
    for (auto handler = handlers.begin(); handler != handlers.end();) {
        LockHandler(**handler, kFlush);
        Frame::Impl& frame = StateOf(**handler);
        frame.m_bAlreadyQueued = false;
        // Only a frame queued without an announce leaves the list.
        const bool leaves = !frame.m_bAlreadyAnnounced;
        if (leaves) Unlink(frame);
        (*handler)->ExitWriteLock();
        if (leaves) {
            try {
                released.push_back(std::move(*handler));
            } catch (const std::bad_alloc&) {
                // Let go of it here, then.
            }
            handler = handlers.erase(handler);
        } else {
            ++handler;
        }
    }
    return TvkErrorSuccess;
}

} // namespace QRX::TvkAPI
