#include "engine/Helper.h"

#include <algorithm>

#include "engine/Global.h"
#include "engine/Listener.h"
#include "engine/Producer.h"
#include "kit/XMLBundle.h"

namespace tvk {

void cHelperDelegate::OnOffloaderDidExecute(llk::cFunction* aFunction, bool aScheduled) {
    // A scheduled function comes back through the actor's offloaded event.
    if (aScheduled || !aFunction || !mGlobal) return;
    aFunction->Clear();
    mGlobal->Discard("cFunction", aFunction);
}

void cHelperDelegate::OnOffloaderDidCancel(llk::cFunction* aFunction, bool aScheduled) {
    OnOffloaderDidExecute(aFunction, aScheduled);
}

void cHelper::Clamp(llk::cActiveScheduler::tSetup& aSetup) {
    if (aSetup.concurrencyMin > aSetup.concurrencyMax)
        std::swap(aSetup.concurrencyMin, aSetup.concurrencyMax);
    aSetup.concurrencyMin = std::max(aSetup.concurrencyMin, 1u);
    aSetup.concurrencyMax = std::min(aSetup.concurrencyMax, 32u);
    aSetup.stride = std::clamp(aSetup.stride, 5u, 32u);
    aSetup.timeout = std::clamp(aSetup.timeout, 10u, 200u);
}

llk::i4 cHelper::Initialize(cProducer* aProducer, cGlobal* aGlobal) {
    mProducer = aProducer;
    llk::cActiveScheduler::tSetup setup{1, 6, 5, 150, 3};
    llk::cXMLBundle* settings = aGlobal ? aGlobal->Settings() : nullptr;
    if (aProducer && settings) {
        settings->FetchUint("Settings/Scheduler/Concurrency/Min", setup.concurrencyMin);
        settings->FetchUint("Settings/Scheduler/Concurrency/Max", setup.concurrencyMax);
        settings->FetchUint("Settings/Scheduler/Stride", setup.stride);
        settings->FetchUint("Settings/Scheduler/Timeout", setup.timeout);
        settings->FetchBool("Settings/Producer/Union", mUseUnion);
    }
    Clamp(setup);
    mMutex = llk::Retained(llk::cMutex::New());
    mScheduler = llk::Retained(llk::cActiveScheduler::New(setup));
    mDelegate = llk::Retained(cHelperDelegate::New(aGlobal));
    if (!mMutex || !mScheduler || !mDelegate) return llk::kNoMemory;
    if (!aProducer) return llk::kOk;
    // One thread for all events where the producer offers a union.
    if (aProducer->HasUnion() && mUseUnion)
        mListener = llk::Retained(cUnionListener::New(mScheduler, aProducer));
    else
        mListener = llk::Retained(cEventListener::New(mScheduler, aProducer));
    return mListener ? llk::kOk : llk::kNoMemory;
}

cHelper::~cHelper() {
    // Listeners, timers and offloaded work stop before the scheduler they feed.
    llk::ReleaseAndClear(mListener);
    llk::ReleaseAndClear(mTicker);
    llk::ReleaseAndClear(mOffloader);
    llk::ReleaseAndClear(mScheduler);
    llk::ReleaseAndClear(mDelegate);
    llk::ReleaseAndClear(mMutex);
}

llk::u4 cHelper::ClassType() const {
    return kTypeHelper;
}

void cHelper::GetStats(tStats& aStats) {
    mScheduler->GetStats(aStats);
}

void cHelper::GetSetup(tSetup& aSetup) {
    llk::cActiveScheduler::tSetup setup{};
    mScheduler->GetSetup(setup);
    aSetup = {setup.concurrencyMin, setup.concurrencyMax, setup.stride};
}

void cHelper::SetSetup(const tSetup& aSetup) {
    mScheduler->SetSetup({aSetup.concurrencyMin, aSetup.concurrencyMax, aSetup.stride, 150, 3});
}

// Both are read under the mutex too: another thread may be making them. Once
// made they live as long as the helper.
llk::cActiveTicker* cHelper::Ticker(bool aMake) {
    llk::uLock hold(mMutex);
    if (!mTicker && aMake) mTicker = llk::Retained(llk::cActiveTicker::New(mScheduler));
    return mTicker;
}

llk::cActiveOffloader* cHelper::Offloader(bool aMake) {
    llk::uLock hold(mMutex);
    if (!mOffloader && aMake)
        mOffloader = llk::Retained(llk::cActiveOffloader::New({3}, mScheduler, mDelegate));
    return mOffloader;
}

llk::i4 cHelper::Attach(llk::pActiveObject* aActor, llk::u1 aPriority) {
    return mScheduler->Attach(aActor, aPriority);
}

llk::i4 cHelper::Detach(llk::pActiveObject* aActor) {
    if (!mScheduler->IsAttached(aActor)) return llk::kNotFound;
    if (llk::cActiveTicker* ticker = Ticker(false))
        ticker->Cease(aActor, llk::MakeActiveCode(0, 0, 0));
    EventForget(aActor, 0);
    if (llk::cActiveOffloader* offloader = Offloader(false))
        offloader->Cancel(aActor, nullptr, true);
    return mScheduler->Detach(aActor, true);
}

llk::i4 cHelper::Kill(llk::pActiveObject* aActor, bool aCancel) {
    (void)aCancel; // offloaded work is always cancelled
    llk::i4 status = mScheduler->Kill(aActor, true);
    if (llk::cActiveOffloader* offloader = Offloader(false))
        offloader->Cancel(aActor, nullptr, true);
    return status;
}

// Events come through a producer's listener; a helper without one refuses.
llk::i4 cHelper::EventListen(llk::pActiveObject* aActor, llk::u4 aUid, void* aEvent) {
    return mListener ? mListener->Start(aActor, aUid, aEvent) : llk::kNotAllowed;
}

llk::i4 cHelper::EventForget(llk::pActiveObject* aActor, llk::u4 aUid) {
    return mListener ? mListener->Cease(aActor, aUid) : llk::kNotAllowed;
}

llk::i4 cHelper::TimerStart(llk::pActiveObject* aActor, llk::u4 aUid, llk::u4 aContext,
                            llk::u4 aInterval, bool aRepeat) {
    llk::cActiveTicker* ticker = Ticker(true);
    if (!ticker) return llk::kNoMemory;
    return ticker->Start(aActor, llk::MakeActiveCode(aUid, kKindTimer, aContext), nullptr,
                         aInterval, aRepeat);
}

llk::i4 cHelper::TimerCease(llk::pActiveObject* aActor, llk::u4 aUid) {
    llk::cActiveTicker* ticker = Ticker(false);
    if (!ticker) return llk::kNotFound;
    return ticker->Cease(aActor, llk::MakeActiveCode(aUid, kKindTimer, 0));
}

llk::i4 cHelper::TimerReset(llk::pActiveObject* aActor, llk::u4 aUid, llk::u4 aInterval) {
    llk::cActiveTicker* ticker = Ticker(false);
    if (!ticker) return llk::kNotFound;
    return ticker->Reset(aActor, llk::MakeActiveCode(aUid, kKindTimer, 0), aInterval);
}

llk::i4 cHelper::AsyncCall(llk::pActiveObject* aActor, llk::u4 aUid, llk::u4 aDelay,
                           llk::u1 aPriority) {
    if (aDelay != 0) return llk::kNotImplemented;
    return mScheduler->Schedule(aActor, llk::MakeActiveCode(aUid, kKindAsync, 0), nullptr,
                                aPriority);
}

llk::i4 cHelper::FlashSend(llk::pActiveObject* aActor, llk::u4 aUid, llk::u4 aArgument,
                           llk::u1 aPriority) {
    return mScheduler->Schedule(aActor, llk::MakeActiveCode(aUid, kKindFlash, aArgument), nullptr,
                                aPriority);
}

llk::i4 cHelper::Offload(llk::pActiveObject* aActor, llk::cFunction* aFunction, llk::u1 aPriority) {
    llk::cActiveOffloader* offloader = Offloader(true);
    return offloader ? offloader->Submit(aActor, aFunction, aPriority) : llk::kNoMemory;
}

llk::i4 cHelper::Offload(llk::pActiveObject* aActor, llk::u4 aUid, llk::cFunction* aFunction,
                         llk::u1 aPriority) {
    llk::cActiveOffloader* offloader = Offloader(true);
    if (!offloader) return llk::kNoMemory;
    return offloader->Submit(aActor, aFunction, llk::MakeActiveCode(aUid, kKindOffloaded, 0),
                             aPriority);
}

llk::i4 cHelper::Discard(llk::pActiveObject* aActor, llk::cFunction* aFunction) {
    llk::cActiveOffloader* offloader = Offloader(false);
    return offloader ? offloader->Cancel(aActor, aFunction, false) : llk::kOk;
}

llk::i4 cHelper::Discard(llk::pActiveObject* aActor, llk::cActiveOffloader::tFilter aFilter,
                         void* aContext) {
    llk::cActiveOffloader* offloader = Offloader(false);
    return offloader ? offloader->Cancel(aActor, aFilter, aContext, false) : llk::kOk;
}

// Event data blocks belong to the listener that filled them.
void cHelper::Recycle(llk::pObject* aData) {
    (void)aData;
}

} // namespace tvk
