#include "FrameHandler.h"

#include "CallObserver.h"
#include "FrameImpl.h"
#include "Log.h"

namespace QRX::TvkAPI {

namespace {
const char kCallback[] = "QRX::TvkAPI::FrameHandler::FrameDoneCallback";
} // namespace

FrameHandler::FrameHandler(const FramePtr& pFrame, const IFrameObserverPtr& pFrameObserver)
    : m_pFrameObserver(pFrameObserver), m_pFrame(pFrame), m_pMutex(new Mutex()) {}

FrameHandler::~FrameHandler() = default;

bool FrameHandler::EnterWriteLock(bool bExclusive) {
    return m_ConditionHelper.EnterWriteLock(m_pMutex, bExclusive);
}
void FrameHandler::ExitWriteLock() {
    m_ConditionHelper.ExitWriteLock(m_pMutex);
}
bool FrameHandler::EnterReadLock() {
    return m_ConditionHelper.EnterReadLock(m_pMutex);
}
void FrameHandler::ExitReadLock() {
    m_ConditionHelper.ExitReadLock(m_pMutex);
}

void FrameHandler::FrameDoneCallback(const TvkHandle_t, TvkFrame_t* pFrame) {
    if (!pFrame) {
        LogFailure("Received callback for already freed frame.", kCallback);
        return;
    }
    // Null once the frame was revoked or flushed: its notification came late.
    auto* handler = static_cast<FrameHandler*>(HandlerOf(*pFrame));
    if (!handler) {
        LogFailure("No frame handler passed. Frame has been removed from the frame queue.",
                   kCallback);
        return;
    }
    if (!handler->EnterReadLock()) {
        LogFailure("Could not lock frame handler. Skipping frame.", kCallback);
        return;
    }
    // The observer is asked of the frame, so that one registered after the
    // announce is the one told. Nothing requeues the frame but the observer.
    IFrameObserverPtr observer;
    if (handler->m_pFrame->GetObserver(observer))
        CallObserver([&] { observer->FrameReceived(handler->m_pFrame); });
    handler->ExitReadLock();
}

} // namespace QRX::TvkAPI
