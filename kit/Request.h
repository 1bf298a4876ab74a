// The units of work that travel between proxies and actors: a request with
// an outcome, a message (a dictionary with a uid and a tag), and a deferred
// function call.
#pragma once

#include "kit/Dictionary.h"
#include "kit/Semaphore.h"

namespace llk {

class cRequest : public pObject {
public:
    static cRequest* New() { return Make<cRequest>(); }
    static cRequest* New(u4 aUid, u4 aTag) {
        cRequest* request = New();
        if (request) request->SetUidAndTag(aUid, aTag);
        return request;
    }
    ~cRequest() override { ReleaseAndClear(mObject); }
    u4 ClassCode() const override { return 52; }
    const char* ClassName() const override { return "cRequest"; }

    void Clear();
    void SetUidAndTag(u4 aUid, u4 aTag) {
        mUid = aUid;
        mTag = aTag;
    }
    // A new target; the outcome starts over.
    void Retarget(u4 aUid, u4 aTag) {
        SetUidAndTag(aUid, aTag);
        mOutcome = 0;
    }
    void SetUid(u4 aUid) { mUid = aUid; }
    u4 GetUid() const { return mUid; }
    u4 GetTag() const { return mTag; }
    i4 GetOutcome() const { return mOutcome; }
    void SetOutcome(i4 aOutcome) { mOutcome = aOutcome; }
    void* GetPointer() const { return mPointer; }
    void SetPointer(void* aPointer) { mPointer = aPointer; }
    pObject* GetObject() const { return mObject; }
    void SetObject(pObject* aObject) { Assign(mObject, aObject); }
    void CopyFrom(const cRequest& aOther);

private:
    u4 mUid = 0;
    u4 mTag = 0;
    i4 mOutcome = 0;
    void* mPointer = nullptr;
    pObject* mObject = nullptr;
};

class cMessage : public cDictionary {
public:
    static cMessage* New(u4 aCapacity = 8, float aFactor = 0.0f) {
        return Make<cMessage>(aCapacity, aFactor);
    }
    static cMessage* New(u4 aUid, u4 aTag, u4 aCapacity, float aFactor) {
        cMessage* message = New(aCapacity, aFactor);
        if (message) {
            message->mUid = aUid;
            message->mTag = aTag;
        }
        return message;
    }
    u4 ClassCode() const override { return 16; }
    const char* ClassName() const override { return "cMessage"; }

    void Clear() {
        mUid = mTag = 0;
        cDictionary::Clear();
    }
    void SetUid(u4 aUid) { mUid = aUid; }
    u4 GetUid() const { return mUid; }
    void SetTag(u4 aTag) { mTag = aTag; }
    u4 GetTag() const { return mTag; }

private:
    u4 mUid = 0;
    u4 mTag = 0;
};

class cFunction : public pObject {
public:
    using tCall = pObject* (*)(pObject* aContext, pObject* aArgument);

    static cFunction* New(bool aWaitable, tCall aCall = nullptr, pObject* aContext = nullptr,
                          pObject* aDefault = nullptr) {
        return Make<cFunction>(aWaitable, aCall, aContext, aDefault);
    }
    i4 Initialize(bool aWaitable, tCall aCall, pObject* aContext, pObject* aDefault);
    ~cFunction() override;
    u4 ClassCode() const override { return 45; }
    const char* ClassName() const override { return "cFunction"; }

    tCall Function() const { return mCall; }
    pObject* Context() const { return mContext; }
    pObject* Default() const { return mDefault; }
    pObject* Result() const { return mResult; }
    bool IsDone() const { return mDone.load(std::memory_order_acquire); }
    bool IsWaitable() const { return mSemaphore != nullptr; }

    void Reset(tCall aCall, pObject* aContext, pObject* aDefault);
    void Clear() { Reset(nullptr, nullptr, nullptr); }
    // Calls with aArgument, or the default when it is null. Run again only
    // after Reset or Clear: the result slot is overwritten, not released.
    pObject* Run(pObject* aArgument);
    // kNotAllowed unless waitable; 0 waits for ever.
    i4 Wait(u4 aTimeoutMs);

private:
    tCall mCall = nullptr;
    pObject* mContext = nullptr;
    pObject* mDefault = nullptr;
    pObject* mResult = nullptr;
    cSemaphore* mSemaphore = nullptr;
    std::atomic<bool> mDone{false};
};

} // namespace llk
