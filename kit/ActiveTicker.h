// Timers: a metronome thread that calls a tick operation for keys at their
// periods, and a ticker that turns ticks into events on active objects.
#pragma once

#include "kit/ActiveScheduler.h"
#include "kit/Thread.h"

namespace llk {

class cObjectList;
class cObjectMap;
class cObjectPile;
class cWhistle;

class pMetronome : public pThread {
public:
    i4 Initialize() override;
    ~pMetronome() override;

    // kExists for a known key.
    i4 Add(pObject* aKey, u4 aPeriod, bool aRepeat);
    // kNotFound for an unknown key, in all of these.
    i4 SetPeriod(pObject* aKey, u4 aPeriod);
    i4 SetPeriod(pObject* aKey, u4 aPeriod, bool aRepeat);
    // Elapsed time and the finished mark start over.
    i4 Restart(pObject* aKey);
    i4 Remove(pObject* aKey);

    i4 Stop() override;
    i4 Run() override;

protected:
    virtual i4 Open() { return kOk; }
    // Called without the metronome's lock for each due key.
    virtual void Tick(pObject* aKey) = 0;
    virtual i4 Close(i4 aStatus) { return aStatus; }

private:
    class cTick;
    cTick* Find(pObject* aKey);

    cObjectMap* mTicks = nullptr;
    cMutex* mMutex = nullptr;
    cWhistle* mWhistle = nullptr;
    cObjectList* mDue = nullptr;
    std::atomic<bool> mStop{false};
};

class cActiveTicker : public pObject {
public:
    // Starts its metronome thread at once.
    static cActiveTicker* New(cActiveScheduler* aScheduler) {
        return Make<cActiveTicker>(aScheduler);
    }
    i4 Initialize(cActiveScheduler* aScheduler);
    ~cActiveTicker() override;
    u4 ClassCode() const override { return 47; }
    const char* ClassName() const override { return "cActiveTicker"; }

    // kDuplicate when the object has a tick with this uid.
    i4 Start(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData, u4 aInterval,
             bool aRepeat);
    // A uid of 0 ceases all the object's ticks.
    i4 Cease(pActiveObject* aObject, const tActiveCode& aCode);
    // A non-zero interval sets a new period; the count restarts from 0.
    i4 Reset(pActiveObject* aObject, const tActiveCode& aCode, u4 aInterval);

private:
    class cMetronome;
    class cTick;
    void Fire(pObject* aTick);
    void Drop(cObjectMap* aInner, pObject* aTick, u8 aUid);

    cMutex* mMutex = nullptr;
    cObjectMap* mObjects = nullptr; // object to (uid to tick)
    cObjectPile* mLive = nullptr;
    cActiveScheduler* mScheduler = nullptr;
    cMetronome* mMetronome = nullptr;
};

} // namespace llk
