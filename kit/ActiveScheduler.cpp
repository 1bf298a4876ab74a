#include "kit/ActiveScheduler.h"

#include "kit/AutoreleasePool.h"
#include "kit/ObjectList.h"
#include "kit/ObjectMap.h"
#include "kit/ObjectQueue.h"
#include "kit/Spin.h"
#include "kit/Thread.h"
#include "kit/Whistle.h"

namespace llk {

// One pending event.
class cActiveMinute : public pObject {
public:
    tActiveCode code{};
    pObject* data = nullptr;
};

// What the scheduler knows of one attached object.
class cActiveRecord : public pObject {
public:
    static cActiveRecord* New(pActiveObject* aObject, u1 aPriority) {
        return Make<cActiveRecord>(aObject, aPriority);
    }
    i4 Initialize(pActiveObject* aObject, u1 aPriority) {
        priority = aPriority;
        object = Retained(aObject);
        queue = Retained(cObjectQueue::New(16));
        return queue ? kOk : kNoMemory;
    }
    ~cActiveRecord() override {
        if (queue) {
            // Events that never ran still hold their data.
            while (auto* minute = static_cast<cActiveMinute*>(queue->Pop(false))) {
                ReleaseAndClear(minute->data);
                minute->Release();
            }
            queue->Release();
        }
        ReleaseAndClear(object);
    }

    u1 priority = 0;
    bool detachRequested = false;
    bool killed = false;
    bool ready = false; // stands in the ready queue
    pActiveObject* object = nullptr;
    cObjectQueue* queue = nullptr;
    cActiveRunner* runner = nullptr;
};

class cActiveRunner : public pThread {
public:
    static cActiveRunner* New(cActiveScheduler* aScheduler) {
        return Make<cActiveRunner>(aScheduler);
    }
    i4 Initialize(cActiveScheduler* aScheduler) {
        mScheduler = aScheduler;
        return pThread::Initialize();
    }
    i4 Run() override {
        mScheduler->RunnerLoop(this);
        return 0;
    }
    i4 Stop() override {
        stop.store(true);
        return kOk;
    }

    std::atomic<bool> stop{false};

private:
    cActiveScheduler* mScheduler = nullptr;
};

namespace {
cObjectMap::tKey KeyOf(const pActiveObject* aObject) {
    return reinterpret_cast<uintptr_t>(aObject);
}

// Events of the record that match a code (and data, when given).
struct tMatch {
    const tActiveCode* code;
    pObject* data;
    static bool Test(pObject* aMinute, void* aSelf) {
        auto* self = static_cast<tMatch*>(aSelf);
        auto* minute = static_cast<cActiveMinute*>(aMinute);
        return minute->code.aUid == self->code->aUid && minute->code.aTag == self->code->aTag &&
               (!self->data || minute->data == self->data);
    }
};
} // namespace

i4 cActiveScheduler::Initialize(const tSetup& aSetup, tHook aHook, void* aContext) {
    mSetup = aSetup;
    if (mSetup.concurrencyMin == 0) mSetup.concurrencyMin = 1;
    if (mSetup.concurrencyMax == 0) mSetup.concurrencyMax = 1;
    mHook = aHook;
    mHookContext = aContext;
    mLock = Retained(cMutex::New());
    if (!mLock) return kNoMemory;
    mWake = Retained(cWhistle::New(mLock));
    mProgress = Retained(cWhistle::New(mLock));
    mExit = Retained(cWhistle::New(mLock));
    mRecords = Retained(cObjectMap::New(8, 0.0f, true));
    mIdle = Retained(cObjectList::New(mSetup.concurrencyMax, true));
    mBusy = Retained(cObjectList::New(mSetup.concurrencyMax, true));
    mRetired = Retained(cObjectList::New(mSetup.concurrencyMax, true));
    mReady = Retained(cObjectQueue::New(16));
    mMinutes = Retained(cObjectList::New(8, true));
    if (!mWake || !mProgress || !mExit || !mRecords || !mIdle || !mBusy || !mRetired || !mReady ||
        !mMinutes)
        return kNoMemory;
    mAlive = true;
    return kOk;
}

cActiveScheduler::~cActiveScheduler() {
    if (mLock) {
        mLock->Lock();
        mAlive = false;
        for (cObjectList* list : {mBusy, mIdle, mRetired}) {
            for (u4 i = 0; list && i < list->Count(); ++i)
                static_cast<cActiveRunner*>(list->AtIndex(i))->Stop();
        }
        if (mWake) mWake->Signal(true);
        // Join every runner; one busy in user code is waited for.
        for (cObjectList* list : {mBusy, mIdle, mRetired}) {
            for (u4 i = 0; list && i < list->Count();) {
                auto* runner = Retained(static_cast<cActiveRunner*>(list->AtIndex(i)));
                mLock->Unlock();
                i4 status = runner->Join(50);
                mLock->Lock();
                runner->Release();
                if (status == kTimedOut) {
                    u4 timeout = 50;
                    mExit->Wait(timeout);
                    continue;
                }
                ++i;
            }
        }
        if (mRecords) mRecords->Clear();
        mLock->Unlock();
    }
    ReleaseAndClear(mReady);
    ReleaseAndClear(mRecords);
    ReleaseAndClear(mIdle);
    ReleaseAndClear(mBusy);
    ReleaseAndClear(mRetired);
    ReleaseAndClear(mMinutes);
    ReleaseAndClear(mWake);
    ReleaseAndClear(mProgress);
    ReleaseAndClear(mExit);
    ReleaseAndClear(mLock);
}

void cActiveScheduler::GetSetup(tSetup& aSetup) {
    uLock hold(mLock);
    aSetup = mSetup;
}

void cActiveScheduler::SetSetup(const tSetup& aSetup) {
    uLock hold(mLock);
    mSetup = aSetup;
    if (mSetup.concurrencyMin == 0) mSetup.concurrencyMin = 1;
}

void cActiveScheduler::GetStats(tStats& aStats) {
    uLock hold(mLock);
    aStats = {mPeakBusy, mPeakIdle, mBusy->Count(), mIdle->Count(), mRecords->Count()};
}

cActiveRecord* cActiveScheduler::Find(pActiveObject* aObject) {
    return static_cast<cActiveRecord*>(mRecords->Fetch(KeyOf(aObject)));
}

bool cActiveScheduler::IsAttached(pActiveObject* aObject) {
    uLock hold(mLock);
    return Find(aObject) != nullptr;
}

i4 cActiveScheduler::Attach(pActiveObject* aObject, u1 aPriority) {
    if (!aObject) return kNoMemory;
    uLock hold(mLock);
    if (!mAlive) return kRefused;
    if (Find(aObject)) return kDuplicate;
    cActiveRecord* record = cActiveRecord::New(aObject, aPriority);
    if (!record) return kNoMemory;
    return mRecords->Store(KeyOf(aObject), record);
}

void cActiveScheduler::AddRunner() {
    cActiveRunner* runner = cActiveRunner::New(this);
    if (!runner || mIdle->Append(runner, false) != kOk) return;
    if (runner->Start() != kOk) {
        mIdle->Remove(runner);
        return;
    }
    if (mIdle->Count() > mPeakIdle) mPeakIdle = mIdle->Count();
}

i4 cActiveScheduler::Schedule(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData,
                              u1 aPriority) {
    uLock hold(mLock);
    if (!mAlive) return kRefused;
    cActiveRecord* record = Find(aObject);
    if (!record) return kNotFound;
    if (record->killed) return kRefused;

    // Minutes are reused; a few are kept between events.
    auto* minute = static_cast<cActiveMinute*>(mMinutes->RemoveFirst());
    if (!minute && !(minute = new (std::nothrow) cActiveMinute())) return kNoMemory;
    minute->code = aCode;
    minute->data = Retained(aData);
    i4 status = record->queue->Push(minute, aPriority);
    minute->Release(); // the queue holds it now, or it dies here
    if (status != kOk) return status;
    if (record->runner || record->ready) return kOk;

    status = mReady->Push(record, record->priority);
    if (status != kOk) {
        record->queue->Remove(minute, aPriority);
        return status;
    }
    record->ready = true;
    if (mIdle->Count() == 0 && mBusy->Count() < mSetup.concurrencyMax) AddRunner();
    mScheduled.fetch_add(1, std::memory_order_release);
    if (mSleepers.load(std::memory_order_acquire) != 0) mWake->Signal(false);
    return kOk;
}

void cActiveScheduler::MoveRunner(cActiveRunner* aRunner, cObjectList* aFrom, cObjectList* aTo) {
    aTo->Append(aRunner, true);
    aFrom->Remove(aRunner);
}

// A turn: the record's events, up to the stride, with the lock held except
// around each OnExecute. True when work remains.
bool cActiveScheduler::Turn(cActiveRunner* aRunner, cActiveRecord* aRecord) {
    uAutoreleasePool pool;
    bool empty = false;
    u4 count = 0;
    while (!aRunner->stop.load() && !aRecord->detachRequested) {
        auto* minute = static_cast<cActiveMinute*>(aRecord->queue->Pop(false));
        if (!minute) {
            empty = true;
            break;
        }
        mLock->Unlock();
        aRecord->object->OnExecute(minute->code, minute->data);
        mLock->Lock();
        ReleaseAndClear(minute->data);
        minute->code = {};
        if (mMinutes->Count() < 8) mMinutes->Append(minute, true);
        minute->Release();
        // What the event autoreleased dies with the event.
        pool.Sink();
        if (mSetup.stride != 0 && ++count >= mSetup.stride) break;
    }
    return !aRecord->killed && !empty;
}

void cActiveScheduler::RunnerLoop(cActiveRunner* aRunner) {
    uAutoreleasePool pool;
    aRunner->SetPriority(static_cast<i4>(mSetup.priority));
    if (mHook) mHook(1, mHookContext);
    mLock->Lock();
    while (!aRunner->stop.load()) {
        auto* record = static_cast<cActiveRecord*>(mReady->Pop(true));
        if (record) {
            record->ready = false;
            MoveRunner(aRunner, mIdle, mBusy);
            if (mBusy->Count() > mPeakBusy) mPeakBusy = mBusy->Count();
            record->runner = aRunner;
            record->Retain();
            if (Turn(aRunner, record) && !record->ready) {
                if (mReady->Push(record, record->priority) == kOk) record->ready = true;
            }
            record->runner = nullptr;
            record->detachRequested = false;
            record->Release();
            mProgress->Signal(true);
            MoveRunner(aRunner, mBusy, mIdle);
            if (mIdle->Count() > mPeakIdle) mPeakIdle = mIdle->Count();
        } else {
            // Spin a moment for new work before parking.
            u4 seen = mScheduled.load(std::memory_order_acquire);
            mLock->Unlock();
            bool woke = SpinUntil([&] {
                return mScheduled.load(std::memory_order_acquire) != seen || aRunner->stop.load();
            });
            mLock->Lock();
            if (!woke && mReady->Count() == 0 && !aRunner->stop.load()) {
                u4 timeout = mSetup.timeout;
                mSleepers.fetch_add(1);
                i4 status = mWake->Wait(timeout);
                mSleepers.fetch_sub(1);
                if (status == kTimedOut && !aRunner->stop.load() &&
                    mSetup.concurrencyMin < mBusy->Count() + mIdle->Count()) {
                    MoveRunner(aRunner, mIdle, mRetired);
                    aRunner->stop.store(true);
                }
                aRunner->SetPriority(static_cast<i4>(mSetup.priority));
            }
        }
        if (!aRunner->stop.load()) {
            // Reap retired runners: a thread never joins itself.
            while (auto* retired = static_cast<cActiveRunner*>(mRetired->First())) {
                retired->Retain();
                mRetired->Remove(retired);
                retired->Stop();
                mLock->Unlock();
                retired->Join(0);
                mLock->Lock();
                retired->Release();
            }
        }
        mLock->Unlock();
        pool.Sink();
        mLock->Lock();
        if (aRunner->stop.load()) {
            mExit->Signal(true);
            break;
        }
    }
    mLock->Unlock();
    if (mHook) mHook(0, mHookContext);
}

void cActiveScheduler::WaitForRunner(cActiveRecord* aRecord) {
    while (aRecord->runner) {
        u4 timeout = 100;
        mProgress->Wait(timeout);
    }
}

i4 cActiveScheduler::Detach(pActiveObject* aObject, bool aWait) {
    uLock hold(mLock);
    cActiveRecord* record = Find(aObject);
    if (!record) return kNotFound;
    record->Retain();
    mRecords->Remove(KeyOf(aObject), true);
    if (record->ready && mReady->Remove(record) == kOk) {
        record->ready = false; // its pending events die with it
    } else if (record->runner) {
        record->detachRequested = true;
        if (aWait) WaitForRunner(record);
    }
    record->Release();
    return kOk;
}

i4 cActiveScheduler::Kill(pActiveObject* aObject, bool aWait) {
    uLock hold(mLock);
    cActiveRecord* record = Find(aObject);
    if (!record) return kNotFound;
    if (record->ready && mReady->Remove(record) == kOk) {
        record->ready = false;
    } else if (record->runner) {
        record->killed = true;
        record->detachRequested = true;
        if (aWait) WaitForRunner(record);
    }
    return kOk;
}

void cActiveScheduler::DetachAll() {
    uLock hold(mLock);
    while (auto* record = static_cast<cActiveRecord*>(mReady->Pop(false))) {
        record->ready = false;
        record->Release();
    }
    cObjectMap::tKey key = 0;
    while (auto* record = static_cast<cActiveRecord*>(mRecords->AtIndex(0, &key))) {
        record->Retain();
        mRecords->Remove(key, true);
        if (record->runner) {
            record->detachRequested = true;
            WaitForRunner(record);
        }
        record->Release();
    }
}

bool cActiveScheduler::IsScheduled(pActiveObject* aObject) {
    uLock hold(mLock);
    cActiveRecord* record = Find(aObject);
    return record && record->ready;
}

bool cActiveScheduler::IsRunning(pActiveObject* aObject) {
    uLock hold(mLock);
    cActiveRecord* record = Find(aObject);
    return record && record->runner;
}

i4 cActiveScheduler::Cancel(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData) {
    uLock hold(mLock);
    cActiveRecord* record = Find(aObject);
    if (!record) return kNotFound;
    // The filter hands each matching minute's data back before it goes.
    struct tCancel {
        tMatch match;
        static bool Test(pObject* aMinute, void* aSelf) {
            auto* self = static_cast<tCancel*>(aSelf);
            if (!tMatch::Test(aMinute, &self->match)) return false;
            ReleaseAndClear(static_cast<cActiveMinute*>(aMinute)->data);
            return true;
        }
    } cancel{{&aCode, aData}};
    record->queue->Filter(&tCancel::Test, &cancel);
    return kOk;
}

bool cActiveScheduler::IsPending(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData) {
    return PendingAt(aObject, aCode, aData, -1);
}

bool cActiveScheduler::IsPending(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData,
                                 u1 aLevel) {
    return PendingAt(aObject, aCode, aData, static_cast<int>(aLevel));
}

// aLevel below 0 visits every level.
bool cActiveScheduler::PendingAt(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData,
                                 int aLevel) {
    uLock hold(mLock);
    cActiveRecord* record = Find(aObject);
    if (!record) return false;
    struct tFound {
        tMatch match;
        bool found = false;
        static bool Visit(pObject* aMinute, void* aSelf) {
            auto* self = static_cast<tFound*>(aSelf);
            self->found = tMatch::Test(aMinute, &self->match);
            return !self->found;
        }
    } found{{&aCode, aData}};
    if (aLevel < 0)
        record->queue->Visit(&tFound::Visit, &found);
    else
        record->queue->Visit(static_cast<u1>(aLevel), &tFound::Visit, &found);
    return found.found;
}

} // namespace llk
