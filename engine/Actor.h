// The state-owning half of an engine object: an active object that runs on
// its aggregate's scheduler and answers its proxy's requests one at a time.
#pragma once

#include "engine/Aggregate.h"
#include "engine/Features.h"
#include "kit/ObjectWorks.h"

namespace llk {
class cObjectList;
class cObjectMap;
class cObjectQueue;
} // namespace llk

namespace tvk {

class pProxy;

// Async uids of the actor's own pumps.
constexpr llk::u4 kRequestPump = 0;
constexpr llk::u4 kMessagePump = 1;
// The outcome a request keeps when it is refused rather than answered.
constexpr llk::i4 kRequestRefused = llk::kRefused;
// Offloaded uid of an invalidation callback that reports back.
constexpr llk::u4 kInvalidationDone = 0;
// Timer uids from here on poll features: the uid less this is the interval.
constexpr llk::u4 kPollTimer = 0xF0000000;
// The thread tag a user's invalidation callback runs with.
constexpr llk::u4 kTagFeatureCallback = 0xf00d0001;

struct tFAccessICBMCtx;

class pActor : public llk::pActiveObject, public cFeatures::pDelegate {
public:
    llk::i4 Initialize(pProxy* aProxy, cAggregate* aAggregate);
    ~pActor() override;

    // Dispatches by kind; actors override the hooks below.
    void OnExecute(const llk::tActiveCode& aCode, llk::pObject* aData) final;
    // Ends what the actor started; subclasses call it first.
    virtual void Dismiss();
    // The handle that invalidation callbacks are given: the proxy's.
    virtual llk::u4 Handle() const;
    // The actor's features, or null when it has none.
    virtual cFeatures* Features() const { return nullptr; }
    virtual void OnEventFired(llk::u4 aUid, const void* aData, llk::u4 aLength);
    virtual void OnTimerFired(llk::u4 aUid, llk::u4 aContext);
    virtual void OnAsyncFired(llk::u4 aUid);
    virtual void OnFlashFired(llk::u4 aUid, llk::u4 aArgument);
    virtual void OnOffloaded(llk::u4 aUid, llk::cFunction* aFunction);
    // True when finished; false defers the request until the next drain.
    // The base answers the feature requests (uid 10).
    virtual bool OnRequest(llk::cRequest* aRequest);
    virtual bool OnMessage(llk::cMessage* aMessage);
    // Hands the callbacks registered on aName to the offloader. With
    // aNotify, features stay unwritable until they have run.
    void OnFeatureInvalidated(llk::cString* aName, bool aNotify) override;
    // False while an invalidation callback that reports back is in flight.
    bool IsFeaturesWritable() const { return mPendingInvalidation == nullptr; }

    cHelper* Helper() const { return mAggregate->Helper(); }
    cProducer* Producer() const { return mAggregate->Producer(); }
    cGlobal* Global() const { return mAggregate->Global(); }
    cAggregate* Aggregate() const { return mAggregate; }
    pProxy* Proxy() const { return mProxy; }

    // Blocks until answered; aTimeoutMs 0 waits for ever. A timed-out
    // request is taken back, or waited for when already in service.
    llk::i4 SendRequest(llk::cRequest* aRequest, llk::u4 aTimeoutMs, llk::u1 aPriority);
    llk::i4 PostMessage(llk::cMessage* aMessage, llk::u1 aPriority);
    void RequestsDrain();
    void MessagesDrain();
    // Answers every waiting request with the refused outcome.
    void RequestsReject();
    void RequestsDisable(bool aDisable);

private:
    void RequestPump();
    void MessagePump();

    // The feature half: answers uid 10; false defers a write.
    bool OnFeatureRequest(llk::cRequest* aRequest, cFeatures* aFeatures);
    llk::i4 EnrollCallback(cFeatures* aFeatures, const tFAccessICBMCtx& aContext);
    llk::i4 DropCallback(const tFAccessICBMCtx& aContext);
    void DropAllCallbacks();
    void StartPolling(cFeatures* aFeatures);
    void StopPolling();
    void OnPoll(llk::u4 aInterval);
    void OnInvalidationDone(llk::cFunction* aFunction);

    llk::cMutex* mMutex = nullptr;
    llk::cObjectWorks* mWorks = nullptr;
    llk::cObjectQueue* mDeferredRequests = nullptr;
    llk::cObjectQueue* mMessages = nullptr;
    llk::cObjectQueue* mDeferredMessages = nullptr;
    bool mRequestPumpScheduled = false;
    bool mRequestPumpRunning = false;
    bool mMessagePumpScheduled = false;
    bool mMessagePumpRunning = false;
    cAggregate* mAggregate = nullptr; // not owned
    pProxy* mProxy = nullptr;         // not owned
    // Registered cFCallback records, from the first registration to the last
    // unregistration.
    llk::cObjectList* mCallbacks = nullptr;
    // Polling interval in milliseconds to the names of the features it polls.
    llk::cObjectMap* mPollTimers = nullptr;
    llk::cFunction* mPendingInvalidation = nullptr; // not owned
};

} // namespace tvk
