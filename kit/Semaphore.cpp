#include "kit/Semaphore.h"

namespace llk {

i4 cSemaphore::Initialize(bool aState) {
    mMutex = Retained(cMutex::New());
    if (!mMutex) return kNoMemory;
    mWhistle = Retained(cWhistle::New(mMutex));
    if (!mWhistle) return kNoMemory;
    mState = aState;
    return kOk;
}

cSemaphore::~cSemaphore() {
    ReleaseAndClear(mWhistle);
    ReleaseAndClear(mMutex);
}

i4 cSemaphore::Wait(bool aValue, u4& aTimeoutMs) {
    uLock hold(mMutex);
    i4 status = kOk;
    while (aTimeoutMs != 0 && mState != aValue) {
        status = mWhistle->Wait(aTimeoutMs);
        if (status != kOk) break;
    }
    return status;
}

i4 cSemaphore::Wait(bool aValue) {
    uLock hold(mMutex);
    while (mState != aValue) {
        i4 status = mWhistle->Wait();
        if (status != kOk) return status;
    }
    return kOk;
}

void cSemaphore::Signal(bool aValue) {
    uLock hold(mMutex);
    mState = aValue;
    mWhistle->Signal(true);
}

void cSemaphore::Cancel() {
    uLock hold(mMutex);
    mWhistle->Cancel(true);
}

bool cSemaphore::State() {
    uLock hold(mMutex);
    return mState;
}

} // namespace llk
