// The threads an aggregate's actors run on: a scheduler, and on first use a
// ticker and an offloader; with a producer, also its event listener.
#pragma once

#include "kit/ActiveOffloader.h"
#include "kit/ActiveScheduler.h"
#include "kit/ActiveTicker.h"
#include "kit/Request.h"

namespace tvk {

class cGlobal;
class cProducer;
class pListener;

// Event kinds an actor's OnExecute receives.
constexpr llk::u4 kKindTimer = 10;
constexpr llk::u4 kKindEvent = 11;
constexpr llk::u4 kKindAsync = 12;
constexpr llk::u4 kKindFlash = 13;
constexpr llk::u4 kKindOffloaded = 14;

// Gives finished offloaded functions back to the global's pool.
class cHelperDelegate : public llk::pObject, public llk::cActiveOffloader::pDelegate {
public:
    static cHelperDelegate* New(cGlobal* aGlobal) { return Make<cHelperDelegate>(aGlobal); }
    llk::i4 Initialize(cGlobal* aGlobal) {
        mGlobal = aGlobal;
        return llk::kOk;
    }
    void OnOffloaderDidExecute(llk::cFunction* aFunction, bool aScheduled) override;
    void OnOffloaderDidCancel(llk::cFunction* aFunction, bool aScheduled) override;

private:
    cGlobal* mGlobal = nullptr;
};

class cHelper : public llk::pObject {
public:
    struct tSetup {
        llk::u4 concurrencyMin;
        llk::u4 concurrencyMax;
        llk::u4 stride;
    };
    using tStats = llk::cActiveScheduler::tStats;

    // With a producer the scheduler setup is read from the settings.
    static cHelper* New(cProducer* aProducer, cGlobal* aGlobal) {
        return Make<cHelper>(aProducer, aGlobal);
    }
    llk::i4 Initialize(cProducer* aProducer, cGlobal* aGlobal);
    ~cHelper() override;
    llk::u4 ClassType() const;

    // Clamps a scheduler setup: min <= max (swapped), min >= 1, max <= 32,
    // stride 5..32, timeout 10..200.
    static void Clamp(llk::cActiveScheduler::tSetup& aSetup);

    void GetStats(tStats& aStats);
    void GetSetup(tSetup& aSetup);
    void SetSetup(const tSetup& aSetup);

    llk::i4 Attach(llk::pActiveObject* aActor, llk::u1 aPriority);
    // Ceases the actor's timers, listeners and offloads, then detaches it.
    llk::i4 Detach(llk::pActiveObject* aActor);
    // Stops the actor's turns and waits for the one running, then cancels
    // its offloaded work.
    llk::i4 Kill(llk::pActiveObject* aActor, bool aCancel);

    llk::i4 EventListen(llk::pActiveObject* aActor, llk::u4 aUid, void* aEvent);
    llk::i4 EventForget(llk::pActiveObject* aActor, llk::u4 aUid);
    llk::i4 TimerStart(llk::pActiveObject* aActor, llk::u4 aUid, llk::u4 aContext,
                       llk::u4 aInterval, bool aRepeat);
    llk::i4 TimerCease(llk::pActiveObject* aActor, llk::u4 aUid);
    llk::i4 TimerReset(llk::pActiveObject* aActor, llk::u4 aUid, llk::u4 aInterval);
    // A non-zero delay is refused with kNotImplemented.
    llk::i4 AsyncCall(llk::pActiveObject* aActor, llk::u4 aUid, llk::u4 aDelay, llk::u1 aPriority);
    llk::i4 FlashSend(llk::pActiveObject* aActor, llk::u4 aUid, llk::u4 aArgument,
                      llk::u1 aPriority);
    llk::i4 Offload(llk::pActiveObject* aActor, llk::cFunction* aFunction, llk::u1 aPriority);
    llk::i4 Offload(llk::pActiveObject* aActor, llk::u4 aUid, llk::cFunction* aFunction,
                    llk::u1 aPriority);
    llk::i4 Discard(llk::pActiveObject* aActor, llk::cFunction* aFunction);
    llk::i4 Discard(llk::pActiveObject* aActor, llk::cActiveOffloader::tFilter aFilter,
                    void* aContext);
    // Gives an event's data block back to the listener.
    void Recycle(llk::pObject* aData);

    llk::cActiveScheduler* Scheduler() const { return mScheduler; }
    cProducer* Producer() const { return mProducer; }
    // Whether a producer that offers one gets the union listener.
    bool UseUnion() const { return mUseUnion; }

private:
    // The ticker and the offloader, made first when aMake is set; null when
    // not made (or when making failed).
    llk::cActiveTicker* Ticker(bool aMake);
    llk::cActiveOffloader* Offloader(bool aMake);

    cProducer* mProducer = nullptr; // not owned: the aggregate outlives the helper
    bool mUseUnion = true;
    pListener* mListener = nullptr;
    cHelperDelegate* mDelegate = nullptr;
    llk::cMutex* mMutex = nullptr;
    llk::cActiveScheduler* mScheduler = nullptr;
    llk::cActiveTicker* mTicker = nullptr;
    llk::cActiveOffloader* mOffloader = nullptr;
};

} // namespace tvk
