// The bridge from the library's frame-done callback to the observer of the
// frame. One handler stands for each frame the camera knows, and keeps the
// frame alive while it does.
#pragma once

#include "TavikCPP/ConditionHelper.h"
#include "TavikCPP/Frame.h"
#include "TavikCPP/IFrameObserver.h"

namespace QRX::TvkAPI {

class FrameHandler : public virtual ReferenceCounted {
public:
    FrameHandler(const FramePtr& pFrame, const IFrameObserverPtr& pFrameObserver);
    ~FrameHandler() override;
    FrameHandler(const FrameHandler&) = delete;
    FrameHandler& operator=(const FrameHandler&) = delete;

    const FramePtr& GetFrame() const { return m_pFrame; }

    // A delivery holds the read side; revoke and flush take the write side,
    // exclusive, and so wait for a delivery in progress.
    bool EnterWriteLock(bool bExclusive);
    void ExitWriteLock();
    bool EnterReadLock();
    void ExitReadLock();

    // Passed with every queued frame.
    static void FrameDoneCallback(const TvkHandle_t handle, TvkFrame_t* pFrame);

private:
    // The observer when the handler was made; delivery asks the frame.
    IFrameObserverPtr m_pFrameObserver;
    FramePtr m_pFrame;
    ConditionHelper m_ConditionHelper;
    MutexPtr m_pMutex;
};

using FrameHandlerPtr = NetPointer<FrameHandler>;

} // namespace QRX::TvkAPI
