#include "kit/Junction.h"

namespace llk {

i4 cJunction::Initialize() {
    mMutex = Retained(cMutex::New());
    if (!mMutex) return kNoMemory;
    mWhistle = Retained(cWhistle::New(mMutex));
    if (!mWhistle) return kNoMemory;
    mOpen = true;
    return kOk;
}

cJunction::~cJunction() {
    ReleaseAndClear(mWhistle);
    ReleaseAndClear(mMutex);
}

i4 cJunction::Enter(u4 aTimeoutMs) {
    uLock hold(mMutex);
    if (!mOpen && aTimeoutMs == 0) return kRefused;
    i4 status = kOk;
    while (!mOpen && aTimeoutMs != 0) {
        status = mWhistle->Wait(aTimeoutMs);
        if (status != kOk) break;
    }
    if (!mOpen) return status == kOk ? kTimedOut : status;
    ++mUsers;
    return kOk;
}

void cJunction::Leave() {
    uLock hold(mMutex);
    if (mUsers > 0) --mUsers;
    if (mUsers == 0) mWhistle->Signal(true);
}

void cJunction::Latch(bool aOpen) {
    uLock hold(mMutex);
    mOpen = aOpen;
    if (aOpen) mWhistle->Signal(true);
}

void cJunction::CloseAndLeave() {
    uLock hold(mMutex);
    mOpen = false;
    if (mUsers > 0) --mUsers;
    if (mUsers == 0) mWhistle->Signal(true);
}

i4 cJunction::CloseAndWait(u4 aTimeoutMs) {
    uLock hold(mMutex);
    mOpen = false;
    return WaitForUsers(aTimeoutMs);
}

i4 cJunction::Wait(u4 aTimeoutMs) {
    uLock hold(mMutex);
    return WaitForUsers(aTimeoutMs);
}

// With the mutex held: waits while users remain and the gate is closed.
// A timeout of 0 waits for ever.
i4 cJunction::WaitForUsers(u4 aTimeoutMs) {
    const bool timed = aTimeoutMs != 0;
    while (mUsers > 0 && !mOpen) {
        if (timed && aTimeoutMs == 0) return kTimedOut;
        i4 status = timed ? mWhistle->Wait(aTimeoutMs) : mWhistle->Wait();
        if (status != kOk) return status;
    }
    return kOk;
}

u4 cJunction::Users() {
    uLock hold(mMutex);
    return mUsers;
}

bool cJunction::IsOpen() {
    uLock hold(mMutex);
    return mOpen;
}

} // namespace llk
