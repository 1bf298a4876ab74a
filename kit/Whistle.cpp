#include "kit/Whistle.h"

#include <cerrno>
#include <cmath>
#include <ctime>

#include "kit/Env.h"

namespace llk {

namespace {
enum : int { kWaiting = 0, kReleased = 1, kWasCancelled = 2 };

struct timespec DeadlineAfter(u4 aMilliseconds) {
    struct timespec t {};
    clock_gettime(CLOCK_MONOTONIC, &t);
    t.tv_sec += aMilliseconds / 1000;
    t.tv_nsec += static_cast<long>(aMilliseconds % 1000) * 1000000L;
    if (t.tv_nsec >= 1000000000L) {
        t.tv_sec += 1;
        t.tv_nsec -= 1000000000L;
    }
    return t;
}
} // namespace

// A waiter lives on the waiting thread's stack, so a wait never allocates.
struct cWhistle::tWaiter {
    tWaiter* next;
    int outcome;
};

i4 cWhistle::Initialize(cMutex* aMutex) {
    if (!aMutex) return kNoMemory;
    pthread_condattr_t attributes;
    if (pthread_condattr_init(&attributes) != 0) return kNoResources;
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    int error = pthread_cond_init(&mCondition, &attributes);
    pthread_condattr_destroy(&attributes);
    if (error != 0) return sEnv::StatusFromErrno(error);
    mMade = true;
    mMutex = Retained(aMutex);
    return kOk;
}

cWhistle::~cWhistle() {
    if (mMade) pthread_cond_destroy(&mCondition);
    ReleaseAndClear(mMutex);
}

i4 cWhistle::Wait() {
    return WaitUntil(nullptr);
}

i4 cWhistle::Wait(u4& aTimeoutMs) {
    double start = sEnv::GetElapsedTime();
    struct timespec deadline = DeadlineAfter(aTimeoutMs);
    i4 status = WaitUntil(&deadline);
    double elapsed = (sEnv::GetElapsedTime() - start) * 1000.0;
    if (elapsed >= aTimeoutMs)
        aTimeoutMs = 0;
    else
        aTimeoutMs -= static_cast<u4>(std::ceil(elapsed));
    return status;
}

// The waiter node is on this frame's stack and leaves the lists before the
// frame ends, which the compiler cannot see.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdangling-pointer"
i4 cWhistle::WaitUntil(const struct timespec* aDeadline) {
    tWaiter self{nullptr, kWaiting};
    if (mTail)
        mTail->next = &self;
    else
        mHead = &self;
    mTail = &self;

    int error = 0;
    while (self.outcome == kWaiting && error == 0) {
        error = aDeadline ? pthread_cond_timedwait(&mCondition, mMutex->Handle(), aDeadline)
                          : pthread_cond_wait(&mCondition, mMutex->Handle());
    }
    if (self.outcome == kReleased) return kOk;
    if (self.outcome == kWasCancelled) return kCancelled;

    // Still queued: unhook before the node leaves this stack frame.
    tWaiter* previous = nullptr;
    for (tWaiter* w = mHead; w; previous = w, w = w->next) {
        if (w != &self) continue;
        if (previous)
            previous->next = w->next;
        else
            mHead = w->next;
        if (mTail == w) mTail = previous;
        break;
    }
    return error == ETIMEDOUT ? kTimedOut : kBadArgument;
}
#pragma GCC diagnostic pop

i4 cWhistle::Free(bool aAll, int aOutcome) {
    if (!mHead) return kOk;
    do {
        tWaiter* w = mHead;
        mHead = w->next;
        w->outcome = aOutcome;
    } while (aAll && mHead);
    if (!mHead) mTail = nullptr;
    // Waiters share one condition; each tests its own node on waking.
    pthread_cond_broadcast(&mCondition);
    return kOk;
}

i4 cWhistle::Signal(bool aAll) {
    return Free(aAll, kReleased);
}
i4 cWhistle::Cancel(bool aAll) {
    return Free(aAll, kWasCancelled);
}

} // namespace llk
