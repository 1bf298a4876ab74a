#include "engine/Actor.h"

#include "engine/Global.h"
#include "engine/Proxy.h"
#include "engine/RequestIds.h"
#include "kit/Data.h"
#include "kit/ObjectList.h"
#include "kit/ObjectMap.h"
#include "kit/ObjectQueue.h"

namespace tvk {

llk::i4 pActor::Initialize(pProxy* aProxy, cAggregate* aAggregate) {
    if (!aAggregate) return llk::kNoMemory;
    mProxy = aProxy;
    mAggregate = aAggregate;
    mMutex = llk::Retained(llk::cMutex::New());
    if (!mMutex) return llk::kNoMemory;
    // The works shares the actor's lock, so a submit and the pump's flags
    // change together.
    mWorks = llk::Retained(llk::cObjectWorks::New(8, mMutex));
    mDeferredRequests = llk::Retained(llk::cObjectQueue::New(0));
    mMessages = llk::Retained(llk::cObjectQueue::New(8));
    mDeferredMessages = llk::Retained(llk::cObjectQueue::New(0));
    return mWorks && mDeferredRequests && mMessages && mDeferredMessages ? llk::kOk
                                                                         : llk::kNoMemory;
}

pActor::~pActor() {
    llk::ReleaseAndClear(mCallbacks);
    llk::ReleaseAndClear(mPollTimers);
    llk::ReleaseAndClear(mWorks);
    llk::ReleaseAndClear(mDeferredRequests);
    llk::ReleaseAndClear(mMessages);
    llk::ReleaseAndClear(mDeferredMessages);
    llk::ReleaseAndClear(mMutex);
}

void pActor::Dismiss() {
    DropAllCallbacks();
}

llk::u4 pActor::Handle() const {
    return mProxy ? mProxy->Handle() : 0;
}
void pActor::OnEventFired(llk::u4, const void*, llk::u4) {}
void pActor::OnTimerFired(llk::u4, llk::u4) {}
void pActor::OnAsyncFired(llk::u4) {}
void pActor::OnFlashFired(llk::u4, llk::u4) {}
void pActor::OnOffloaded(llk::u4, llk::cFunction*) {}
bool pActor::OnMessage(llk::cMessage*) {
    return true;
}

bool pActor::OnRequest(llk::cRequest* aRequest) {
    // Anything else, and features of an actor without any, keep the refused
    // outcome.
    cFeatures* features = Features();
    if (aRequest->GetUid() != request::kFeature || !features) return true;
    return OnFeatureRequest(aRequest, features);
}

void pActor::OnExecute(const llk::tActiveCode& aCode, llk::pObject* aData) {
    switch (aCode.aTag) {
    case kKindTimer:
        if (aCode.aUid >= kPollTimer)
            OnPoll(aCode.aCtx);
        else
            OnTimerFired(aCode.aUid, aCode.aCtx);
        break;
    case kKindEvent: {
        auto* data = static_cast<llk::cData*>(aData);
        OnEventFired(aCode.aUid, data ? data->Bytes() : nullptr, data ? data->GetLength() : 0);
        Helper()->Recycle(aData);
        break;
    }
    case kKindAsync:
        if (aCode.aUid == kRequestPump)
            RequestPump();
        else if (aCode.aUid == kMessagePump)
            MessagePump();
        else
            OnAsyncFired(aCode.aUid);
        break;
    case kKindFlash:
        OnFlashFired(aCode.aUid, aCode.aCtx);
        break;
    case kKindOffloaded: {
        auto* function = static_cast<llk::cFunction*>(aData);
        if (aCode.aUid == kInvalidationDone)
            OnInvalidationDone(function);
        else
            OnOffloaded(aCode.aUid, function);
        break;
    }
    default:
        break;
    }
}

llk::i4 pActor::SendRequest(llk::cRequest* aRequest, llk::u4 aTimeoutMs, llk::u1 aPriority) {
    aRequest->SetOutcome(kRequestRefused);
    {
        llk::uLock hold(mMutex);
        llk::i4 status = mWorks->Submit(aRequest, aPriority);
        if (status != llk::kOk) return status;
        if (!mRequestPumpScheduled && !mRequestPumpRunning) {
            if (Helper()->AsyncCall(this, kRequestPump, 0, 255) != llk::kOk) {
                // A detached or killed actor never runs its pump again.
                mWorks->Cancel(aRequest, 0);
                return kRequestRefused;
            }
            mRequestPumpScheduled = true;
        }
    }
    llk::i4 status = mWorks->Expect(aRequest, aTimeoutMs);
    if (aTimeoutMs != 0 && status == llk::kTimedOut) {
        // The caller's context lives on its stack: never leave a request
        // behind in service.
        mWorks->Cancel(aRequest, 0);
    }
    return status;
}

void pActor::RequestPump() {
    {
        llk::uLock hold(mMutex);
        mRequestPumpScheduled = false;
        mRequestPumpRunning = true;
    }
    for (;;) {
        llk::pObject* object = nullptr;
        {
            llk::uLock hold(mMutex);
            mRequestPumpRunning = mWorks->Accept(object) == llk::kOk;
            if (!mRequestPumpRunning) return;
        }
        auto* request = static_cast<llk::cRequest*>(object);
        if (OnRequest(request)) {
            mWorks->Return(request);
            continue;
        }
        llk::uLock hold(mMutex);
        if (mDeferredRequests->Push(request, 0) != llk::kOk) {
            request->SetOutcome(llk::kNoMemory);
            mWorks->Return(request);
        }
    }
}

void pActor::RequestsDrain() {
    for (;;) {
        llk::cRequest* request;
        {
            llk::uLock hold(mMutex);
            request = static_cast<llk::cRequest*>(
                mDeferredRequests->Peek(static_cast<llk::u1*>(nullptr)));
        }
        if (!request || !OnRequest(request)) return;
        llk::uLock hold(mMutex);
        request->Retain()->Autorelease();
        mDeferredRequests->Remove(request);
        mWorks->Return(request);
    }
}

void pActor::RequestsReject() {
    {
        llk::uLock hold(mMutex);
        while (llk::pObject* request = mDeferredRequests->Pop(true))
            mWorks->Return(request);
    }
    mWorks->RejectAll();
}

void pActor::RequestsDisable(bool aDisable) {
    mWorks->Disable(aDisable);
}

llk::i4 pActor::PostMessage(llk::cMessage* aMessage, llk::u1 aPriority) {
    llk::uLock hold(mMutex);
    llk::i4 status = mMessages->Push(aMessage, aPriority);
    if (status != llk::kOk) return status;
    if (!mMessagePumpScheduled && !mMessagePumpRunning &&
        Helper()->AsyncCall(this, kMessagePump, 0, 255) == llk::kOk)
        mMessagePumpScheduled = true;
    return llk::kOk;
}

// A finished message is cleared and pooled for the next post.
static void Recycle(cGlobal* aGlobal, llk::cMessage* aMessage) {
    aMessage->Clear();
    if (aGlobal) aGlobal->Discard("cMessage", aMessage);
}

void pActor::MessagePump() {
    {
        llk::uLock hold(mMutex);
        mMessagePumpScheduled = false;
        mMessagePumpRunning = true;
    }
    for (;;) {
        llk::cMessage* message;
        {
            llk::uLock hold(mMutex);
            message = static_cast<llk::cMessage*>(mMessages->Pop(true));
            mMessagePumpRunning = message != nullptr;
            if (!message) return;
        }
        if (OnMessage(message)) {
            Recycle(Global(), message);
            continue;
        }
        llk::uLock hold(mMutex);
        if (mDeferredMessages->Push(message, 0) != llk::kOk) Recycle(Global(), message);
    }
}

void pActor::MessagesDrain() {
    for (;;) {
        llk::cMessage* message;
        llk::u1 level = 0;
        {
            llk::uLock hold(mMutex);
            message = static_cast<llk::cMessage*>(mDeferredMessages->Peek(&level));
        }
        if (!message || !OnMessage(message)) return;
        llk::uLock hold(mMutex);
        message->Retain()->Autorelease();
        mDeferredMessages->Remove(message, level);
        Recycle(Global(), message);
    }
}

} // namespace tvk
