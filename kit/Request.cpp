#include "kit/Request.h"

namespace llk {

void cRequest::Clear() {
    mUid = mTag = 0;
    mOutcome = 0;
    mPointer = nullptr;
    ReleaseAndClear(mObject);
}

void cRequest::CopyFrom(const cRequest& aOther) {
    mUid = aOther.mUid;
    mTag = aOther.mTag;
    mOutcome = aOther.mOutcome;
    mPointer = aOther.mPointer;
    Assign(mObject, aOther.mObject);
}

i4 cFunction::Initialize(bool aWaitable, tCall aCall, pObject* aContext, pObject* aDefault) {
    if (aWaitable) {
        mSemaphore = Retained(cSemaphore::New(false));
        if (!mSemaphore) return kNoMemory;
    }
    Reset(aCall, aContext, aDefault);
    return kOk;
}

cFunction::~cFunction() {
    ReleaseAndClear(mContext);
    ReleaseAndClear(mDefault);
    ReleaseAndClear(mResult);
    ReleaseAndClear(mSemaphore);
}

void cFunction::Reset(tCall aCall, pObject* aContext, pObject* aDefault) {
    ReleaseAndClear(mResult);
    Assign(mContext, aContext);
    Assign(mDefault, aDefault);
    if (mSemaphore) mSemaphore->Signal(false);
    mDone.store(false, std::memory_order_release);
    mCall = aCall;
}

pObject* cFunction::Run(pObject* aArgument) {
    if (mCall) mResult = Retained(mCall(mContext, aArgument ? aArgument : mDefault));
    mDone.store(true, std::memory_order_release);
    if (mSemaphore) mSemaphore->Signal(true);
    return mResult;
}

i4 cFunction::Wait(u4 aTimeoutMs) {
    if (!mSemaphore) return kNotAllowed;
    if (aTimeoutMs == 0) return mSemaphore->Wait(true);
    return mSemaphore->Wait(true, aTimeoutMs);
}

} // namespace llk
