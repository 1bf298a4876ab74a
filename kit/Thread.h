// An abstract thread: derived classes give Run a body and Stop a way to end it.
#pragma once

#include <pthread.h>

#include "kit/Object.h"

namespace llk {

class pThread : public pObject {
public:
    i4 Initialize() override;
    ~pThread() override;

    // Starts Run on a new thread; kOk and nothing done when already running.
    virtual i4 Start();
    // Asks Run to end; kNotImplemented unless a derived class can stop.
    virtual i4 Stop() { return kNotImplemented; }
    // Waits for the thread; 0 waits for ever. kOk or kTimedOut.
    virtual i4 Join(u4 aTimeoutMs);
    virtual i4 Run() { return 0; }

    i4 StopAndJoin(u4 aTimeoutMs);
    bool IsRunning() const;
    // Levels 0..6, 3 normal; best effort.
    i4 SetPriority(i4 aLevel);
    i4 GetPriority(i4& aLevel) const;
    u4 ThreadId() const { return mThreadId.load(); }
    u4 ExitCode() const { return mExitCode.load(); }
    // Lets the destructor stop waiting for a thread that never finishes.
    void SetAbandon() { mAbandon.store(true); }

    // The pThread running on the calling thread, or null.
    static pThread* Current();

private:
    static void* Entry(void* aSelf);

    std::atomic<bool> mFinished{false};
    std::atomic<bool> mAbandon{false};
    std::atomic<bool> mHasThread{false};
    pthread_t mThread{};
    std::atomic<u4> mThreadId{0};
    std::atomic<u4> mExitCode{0};
    i4 mPriority = 3;
};

} // namespace llk
