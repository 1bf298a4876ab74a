#include "kit/ObjectWorks.h"

#include "kit/ObjectList.h"
#include "kit/ObjectQueue.h"
#include "kit/Spin.h"

namespace llk {

i4 cObjectWorks::Initialize(u4 aCapacity, cMutex* aMutex) {
    mMutex = Retained(aMutex ? aMutex : cMutex::New());
    if (!mMutex) return kNoMemory;
    mWork = Retained(cWhistle::New(mMutex));
    mDone = Retained(cWhistle::New(mMutex));
    mWaiting = Retained(cObjectQueue::New(0));
    mActive = Retained(cObjectList::New(aCapacity, true));
    mFinished = Retained(cObjectList::New(aCapacity, true));
    return mWork && mDone && mWaiting && mActive && mFinished ? kOk : kNoMemory;
}

cObjectWorks::~cObjectWorks() {
    ReleaseAndClear(mWaiting);
    ReleaseAndClear(mActive);
    ReleaseAndClear(mFinished);
    ReleaseAndClear(mWork);
    ReleaseAndClear(mDone);
    ReleaseAndClear(mMutex);
}

i4 cObjectWorks::Submit(pObject* aObject, u1 aPriority) {
    uLock hold(mMutex);
    if (!mEnabled) return kRefused;
    i4 status = mWaiting->Push(aObject, aPriority);
    if (status == kOk) mWork->Signal(true);
    return status;
}

i4 cObjectWorks::AcceptLocked(pObject*& aObject) {
    u1 level = 0;
    pObject* object = mWaiting->Peek(&level);
    if (!object) return kEmpty;
    i4 status = mActive->Append(object, true);
    if (status != kOk) return status;
    mWaiting->Pop(level, true);
    aObject = object;
    return kOk;
}

i4 cObjectWorks::Accept(pObject*& aObject) {
    uLock hold(mMutex);
    return AcceptLocked(aObject);
}

i4 cObjectWorks::Accept(pObject*& aObject, u4 aTimeoutMs) {
    uLock hold(mMutex);
    const bool timed = aTimeoutMs != 0;
    i4 status;
    while ((status = AcceptLocked(aObject)) == kEmpty) {
        if (timed && aTimeoutMs == 0) return kEmpty;
        i4 wait = timed ? mWork->Wait(aTimeoutMs) : mWork->Wait();
        if (wait != kOk) return wait == kTimedOut ? kEmpty : wait;
    }
    return status;
}

i4 cObjectWorks::Accept(pObject*& aObject, tFilter aFilter, void* aContext) {
    uLock hold(mMutex);
    struct tFirst {
        tFilter filter;
        void* context;
        pObject* hit = nullptr;
        static bool Visit(pObject* aObject, void* aSelf) {
            auto* self = static_cast<tFirst*>(aSelf);
            if (!self->filter(aObject, self->context)) return true;
            self->hit = aObject;
            return false;
        }
    } first{aFilter, aContext};
    mWaiting->Visit(&tFirst::Visit, &first);
    if (!first.hit) return kEmpty;
    i4 status = mActive->Append(first.hit, true);
    if (status != kOk) return status;
    first.hit->Retain()->Autorelease();
    mWaiting->Remove(first.hit);
    aObject = first.hit;
    return kOk;
}

i4 cObjectWorks::ReturnLocked(pObject* aObject) {
    if (!mActive->Contains(aObject)) return kNotFound;
    i4 status = mFinished->Append(aObject, true);
    if (status != kOk) return status;
    mActive->Remove(aObject);
    mReturned.fetch_add(1, std::memory_order_release);
    mDone->Signal(true);
    return kOk;
}

i4 cObjectWorks::Return(pObject* aObject) {
    uLock hold(mMutex);
    return ReturnLocked(aObject);
}

i4 cObjectWorks::ReturnAndAccept(pObject* aReturned, pObject*& aObject) {
    uLock hold(mMutex);
    i4 status = ReturnLocked(aReturned);
    return status != kOk ? status : AcceptLocked(aObject);
}

i4 cObjectWorks::Drop(pObject* aObject) {
    uLock hold(mMutex);
    return mActive->Remove(aObject);
}

// With the mutex held: waits until aObject is finished and takes it out.
i4 cObjectWorks::WaitFinished(pObject* aObject, u4 aTimeoutMs) {
    const bool timed = aTimeoutMs != 0;
    for (;;) {
        if (mFinished->Remove(aObject) == kOk) return kOk;
        if (timed && aTimeoutMs == 0) return kTimedOut;
        // The server usually answers within microseconds: spin first.
        u4 seen = mReturned.load(std::memory_order_acquire);
        mMutex->Unlock();
        bool moved = SpinUntil([&] { return mReturned.load(std::memory_order_acquire) != seen; });
        mMutex->Lock();
        if (moved) continue;
        if (mFinished->Contains(aObject)) continue;
        i4 status = timed ? mDone->Wait(aTimeoutMs) : mDone->Wait();
        if (status != kOk) return status;
    }
}

i4 cObjectWorks::Expect(pObject* aObject, u4 aTimeoutMs) {
    uLock hold(mMutex);
    if (!mActive->Contains(aObject) && !mFinished->Contains(aObject) &&
        !mWaiting->Contains(aObject))
        return kNotFound;
    return WaitFinished(aObject, aTimeoutMs);
}

i4 cObjectWorks::Cancel(pObject* aObject, u4 aTimeoutMs) {
    uLock hold(mMutex);
    if (mWaiting->Remove(aObject) == kOk) return kOk;
    if (!mActive->Contains(aObject) && !mFinished->Contains(aObject)) return kNotFound;
    return WaitFinished(aObject, aTimeoutMs);
}

void cObjectWorks::RejectAll() {
    uLock hold(mMutex);
    while (pObject* object = mActive->First()) {
        mFinished->Append(object, true);
        mActive->Remove(object);
    }
    while (pObject* object = mWaiting->Pop(false)) {
        mFinished->Append(object, true);
        object->Release();
    }
    mReturned.fetch_add(1, std::memory_order_release);
    mDone->Signal(true);
}

void cObjectWorks::Disable(bool aDisable) {
    uLock hold(mMutex);
    mEnabled = !aDisable;
}

u4 cObjectWorks::Count() {
    uLock hold(mMutex);
    return mWaiting->Count();
}

} // namespace llk
