// A condition bound to a cMutex: waiters are freed in order of arrival by a
// signal, or all at once, and a cancel frees them with kCancelled. A signal
// with nobody waiting is not remembered.
#pragma once

#include <pthread.h>

#include "kit/Mutex.h"

namespace llk {

class cWhistle : public pObject {
public:
    static cWhistle* New(cMutex* aMutex) { return Make<cWhistle>(aMutex); }

    i4 Initialize(cMutex* aMutex);
    ~cWhistle() override;
    u4 ClassCode() const override { return 6; }
    const char* ClassName() const override { return "cWhistle"; }

    // All with the whistle's mutex held by the caller.
    // kOk after a signal, kCancelled after a cancel, kBadArgument on failure.
    i4 Wait();
    // As Wait, plus kTimedOut; the time left is written back to aTimeoutMs.
    i4 Wait(u4& aTimeoutMs);
    i4 Signal(bool aAll);
    i4 Cancel(bool aAll);
    cMutex* Mutex() const { return mMutex; }

private:
    struct tWaiter;
    i4 WaitUntil(const struct timespec* aDeadline);
    i4 Free(bool aAll, int aOutcome);

    cMutex* mMutex = nullptr;
    pthread_cond_t mCondition;
    bool mMade = false;
    tWaiter* mHead = nullptr; // oldest waiter still waiting
    tWaiter* mTail = nullptr;
};

} // namespace llk
