#include "kit/ActiveTicker.h"

#include "kit/AutoreleasePool.h"
#include "kit/Env.h"
#include "kit/ObjectList.h"
#include "kit/ObjectPile.h"
#include "kit/Whistle.h"

namespace llk {

namespace {
cObjectMap::tKey KeyOf(const void* aPointer) {
    return reinterpret_cast<uintptr_t>(aPointer);
}
u4 NowMs() {
    return static_cast<u4>(static_cast<u8>(sEnv::GetElapsedTime() * 1000.0));
}
} // namespace

class pMetronome::cTick : public pObject {
public:
    pObject* key = nullptr; // not owned: the owner removes its key first
    u4 period = 0;
    u4 elapsed = 0;
    bool repeat = false;
    bool finished = false;
    bool skip = false;
};

i4 pMetronome::Initialize() {
    i4 status = pThread::Initialize();
    if (status != kOk) return status;
    mTicks = Retained(cObjectMap::New(16, 0.0f, true));
    mMutex = Retained(cMutex::New());
    mWhistle = mMutex ? Retained(cWhistle::New(mMutex)) : nullptr;
    mDue = Retained(cObjectList::New(5, true));
    return mTicks && mWhistle && mDue ? kOk : kNoMemory;
}

pMetronome::~pMetronome() {
    ReleaseAndClear(mTicks);
    ReleaseAndClear(mDue);
    ReleaseAndClear(mWhistle);
    ReleaseAndClear(mMutex);
}

pMetronome::cTick* pMetronome::Find(pObject* aKey) {
    return static_cast<cTick*>(mTicks->Fetch(KeyOf(aKey)));
}

i4 pMetronome::Add(pObject* aKey, u4 aPeriod, bool aRepeat) {
    uLock hold(mMutex);
    if (Find(aKey)) return kExists;
    auto* tick = new (std::nothrow) cTick();
    if (!tick) return kNoMemory;
    tick->key = aKey;
    tick->period = aPeriod;
    tick->repeat = aRepeat;
    i4 status = mTicks->Store(KeyOf(aKey), tick);
    tick->Release();
    if (status == kOk) mWhistle->Signal(true);
    return status;
}

i4 pMetronome::SetPeriod(pObject* aKey, u4 aPeriod) {
    uLock hold(mMutex);
    cTick* tick = Find(aKey);
    if (!tick) return kNotFound;
    tick->period = aPeriod;
    mWhistle->Signal(true);
    return kOk;
}

i4 pMetronome::SetPeriod(pObject* aKey, u4 aPeriod, bool aRepeat) {
    uLock hold(mMutex);
    cTick* tick = Find(aKey);
    if (!tick) return kNotFound;
    tick->period = aPeriod;
    tick->repeat = aRepeat;
    mWhistle->Signal(true);
    return kOk;
}

i4 pMetronome::Restart(pObject* aKey) {
    uLock hold(mMutex);
    cTick* tick = Find(aKey);
    if (!tick) return kNotFound;
    tick->elapsed = 0;
    tick->finished = false;
    mWhistle->Signal(true);
    return kOk;
}

i4 pMetronome::Remove(pObject* aKey) {
    uLock hold(mMutex);
    if (!mTicks->Remove(KeyOf(aKey), true)) return kNotFound;
    mWhistle->Signal(true);
    return kOk;
}

i4 pMetronome::Stop() {
    uLock hold(mMutex);
    mStop.store(true);
    mWhistle->Signal(true);
    return kOk;
}

i4 pMetronome::Run() {
    uAutoreleasePool pool;
    SetPriority(5);
    i4 status = Open();
    if (status != kOk) return Close(status);
    mMutex->Lock();
    u4 spent = 0;
    while (!mStop.load()) {
        if (mTicks->Count() == 0) {
            mWhistle->Wait();
            continue;
        }
        u4 wait = 0xFFFFFFFFu;
        for (u4 i = 0; auto* tick = static_cast<cTick*>(mTicks->AtIndex(i)); ++i) {
            tick->skip = false;
            if (!tick->finished) {
                u4 left = tick->period > tick->elapsed ? tick->period - tick->elapsed : 0;
                if (left < wait) wait = left;
            }
        }
        u4 slept = 0;
        if (wait == 0xFFFFFFFFu) {
            // Only finished ticks: nothing to time until one is re-armed.
            mWhistle->Wait();
        } else if (wait > spent) {
            u4 left = wait - spent;
            mWhistle->Wait(left);
            slept = wait - left; // the last pass's time counts as slept
        }
        if (mStop.load()) break;
        u4 start = NowMs();
        for (u4 i = 0; auto* tick = static_cast<cTick*>(mTicks->AtIndex(i)); ++i) {
            if (tick->finished || tick->skip) continue;
            tick->elapsed += slept;
            // Due when past its period or within 10 ms of it.
            if (tick->elapsed > tick->period || tick->period - tick->elapsed < 10) {
                if (tick->repeat)
                    tick->elapsed = 0;
                else
                    tick->finished = true;
                mDue->Append(tick, true);
            }
        }
        if (mDue->Count() != 0) {
            mMutex->Unlock();
            for (u4 i = 0; i < mDue->Count(); ++i)
                Tick(static_cast<cTick*>(mDue->AtIndex(i))->key);
            mMutex->Lock();
            mDue->Clear();
            mMutex->Unlock();
            pool.Sink();
            mMutex->Lock();
        }
        spent = NowMs() - start;
    }
    mMutex->Unlock();
    return Close(kOk);
}

// One registered tick of the ticker: the event to schedule and on whom.
class cActiveTicker::cTick : public pObject {
public:
    ~cTick() override {
        ReleaseAndClear(object);
        ReleaseAndClear(data);
    }
    tActiveCode code{};
    pActiveObject* object = nullptr;
    pObject* data = nullptr;
};

class cActiveTicker::cMetronome : public pMetronome {
public:
    static cMetronome* New(cActiveTicker* aTicker) { return Make<cMetronome>(aTicker); }
    i4 Initialize(cActiveTicker* aTicker) {
        mTicker = aTicker;
        return pMetronome::Initialize();
    }

protected:
    void Tick(pObject* aKey) override { mTicker->Fire(aKey); }

private:
    cActiveTicker* mTicker = nullptr;
};

i4 cActiveTicker::Initialize(cActiveScheduler* aScheduler) {
    if (!aScheduler) return kNoMemory;
    mScheduler = Retained(aScheduler);
    mMutex = Retained(cMutex::New());
    mObjects = Retained(cObjectMap::New(8, 0.0f, true));
    mLive = Retained(cObjectPile::New(32));
    mMetronome = Retained(cMetronome::New(this));
    if (!mMutex || !mObjects || !mLive || !mMetronome) return kNoMemory;
    return mMetronome->Start();
}

cActiveTicker::~cActiveTicker() {
    if (mMetronome) {
        mMetronome->StopAndJoin(0);
        ReleaseAndClear(mMetronome);
    }
    ReleaseAndClear(mObjects);
    ReleaseAndClear(mLive);
    ReleaseAndClear(mMutex);
    ReleaseAndClear(mScheduler);
}

// On the metronome's thread: a tick removed meanwhile does not fire.
void cActiveTicker::Fire(pObject* aTick) {
    cTick* tick;
    {
        uLock hold(mMutex);
        if (!mLive->Contains(aTick)) return;
        tick = Retained(static_cast<cTick*>(aTick));
    }
    mScheduler->Schedule(tick->object, tick->code, tick->data, 0);
    tick->Release();
}

i4 cActiveTicker::Start(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData,
                        u4 aInterval, bool aRepeat) {
    if (!aObject) return kNoMemory;
    uLock hold(mMutex);
    auto* inner = static_cast<cObjectMap*>(mObjects->Fetch(KeyOf(aObject)));
    bool madeInner = false;
    if (!inner) {
        inner = cObjectMap::New(4, 0.0f, true);
        if (!inner || mObjects->Store(KeyOf(aObject), inner) != kOk) return kNoMemory;
        madeInner = true;
    }
    if (inner->Contains(cObjectMap::tKey{aCode.aUid})) return kDuplicate;
    auto* tick = new (std::nothrow) cTick();
    i4 status = tick ? kOk : kNoMemory;
    if (tick) {
        tick->code = aCode;
        tick->object = Retained(aObject);
        tick->data = Retained(aData);
        status = inner->Store(cObjectMap::tKey{aCode.aUid}, tick);
        if (status == kOk) {
            status = mLive->Store(tick);
            if (status == kOk) {
                status = mMetronome->Add(tick, aInterval, aRepeat);
                if (status != kOk) mLive->Remove(tick);
            }
            if (status != kOk) inner->Remove(cObjectMap::tKey{aCode.aUid});
        }
        tick->Release();
    }
    if (status != kOk && madeInner) mObjects->Remove(KeyOf(aObject));
    return status;
}

// With the lock held: forgets one tick everywhere.
void cActiveTicker::Drop(cObjectMap* aInner, pObject* aTick, u8 aUid) {
    mMetronome->Remove(aTick);
    mLive->Remove(aTick);
    aInner->Remove(aUid);
}

i4 cActiveTicker::Cease(pActiveObject* aObject, const tActiveCode& aCode) {
    uLock hold(mMutex);
    auto* inner = static_cast<cObjectMap*>(mObjects->Fetch(KeyOf(aObject)));
    if (!inner) return kNotFound;
    if (aCode.aUid != 0) {
        pObject* tick = inner->Fetch(cObjectMap::tKey{aCode.aUid});
        if (!tick) return kDuplicate;
        Drop(inner, tick, aCode.aUid);
    } else {
        cObjectMap::tKey uid = 0;
        while (pObject* tick = inner->AtIndex(0, &uid))
            Drop(inner, tick, uid);
    }
    if (inner->Count() == 0) mObjects->Remove(KeyOf(aObject));
    return kOk;
}

i4 cActiveTicker::Reset(pActiveObject* aObject, const tActiveCode& aCode, u4 aInterval) {
    uLock hold(mMutex);
    auto* inner = static_cast<cObjectMap*>(mObjects->Fetch(KeyOf(aObject)));
    pObject* tick = inner ? inner->Fetch(cObjectMap::tKey{aCode.aUid}) : nullptr;
    if (!tick) return kNotFound;
    if (aInterval != 0) mMetronome->SetPeriod(tick, aInterval);
    return mMetronome->Restart(tick);
}

} // namespace llk
