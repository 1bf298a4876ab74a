// A recursive lock.
#pragma once

#include <pthread.h>

#include "kit/Object.h"

namespace llk {

class cMutex : public pObject {
public:
    static cMutex* New() { return Make<cMutex>(); }

    i4 Initialize() override;
    ~cMutex() override;
    u4 ClassCode() const override { return 14; }
    const char* ClassName() const override { return "cMutex"; }

    // Waits for ever; 0, or 1 when the wait fails.
    i4 Lock();
    // kOk, kTimedOut or kFailed.
    i4 Lock(u4 aTimeoutMs);
    void Unlock();
    bool IsHeld() const { return mHeld.load(std::memory_order_relaxed) > 0; }
    pthread_mutex_t* Handle() { return &mLock; }

private:
    pthread_mutex_t mLock;
    bool mMade;
    std::atomic<u4> mHeld;
};

// Holds a cMutex for a scope.
class uLock {
public:
    explicit uLock(cMutex* aMutex) : mMutex(aMutex) {
        if (mMutex) mMutex->Lock();
    }
    ~uLock() {
        if (mMutex) mMutex->Unlock();
    }
    uLock(const uLock&) = delete;
    uLock& operator=(const uLock&) = delete;

private:
    cMutex* mMutex;
};

} // namespace llk
