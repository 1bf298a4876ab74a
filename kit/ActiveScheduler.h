// The main loop: runs the events of attached objects on a small pool of
// threads that grows on demand and shrinks when idle, never running one
// object on two threads at once.
#pragma once

#include "kit/ActiveObject.h"
#include "kit/Mutex.h"

namespace llk {

class cActiveRecord;
class cActiveRunner;
class cObjectList;
class cObjectMap;
class cObjectQueue;
class cWhistle;

class cActiveScheduler : public pObject {
public:
    struct tSetup {
        u4 concurrencyMin; // runners kept when idle; 0 is stored as 1
        u4 concurrencyMax; // most runners
        u4 stride;         // most events of one object per turn; 0: no limit
        u4 timeout;        // idle wait of a runner, milliseconds
        u4 priority;       // thread priority level of the runners
    };
    struct tStats {
        u4 peakBusy;
        u4 peakIdle;
        u4 busy;
        u4 idle;
        u4 objects;
    };
    // Called with 1 on each runner's thread as it starts and 0 as it ends.
    using tHook = void (*)(u4 aStarting, void* aContext);

    static cActiveScheduler* New(const tSetup& aSetup, tHook aHook = nullptr,
                                 void* aContext = nullptr) {
        return Make<cActiveScheduler>(aSetup, aHook, aContext);
    }
    i4 Initialize(const tSetup& aSetup, tHook aHook, void* aContext);
    ~cActiveScheduler() override;
    u4 ClassCode() const override { return 46; }
    const char* ClassName() const override { return "cActiveScheduler"; }

    void GetSetup(tSetup& aSetup);
    void SetSetup(const tSetup& aSetup);
    void GetStats(tStats& aStats);

    bool IsAttached(pActiveObject* aObject);
    // aPriority ranks the object among objects.
    i4 Attach(pActiveObject* aObject, u1 aPriority);
    // aPriority ranks the event within its object.
    i4 Schedule(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData, u1 aPriority);
    // Pending events still run; the object is gone from the map at once.
    i4 Detach(pActiveObject* aObject, bool aWait);
    // Stops an object's turns; it stays attached until Detach.
    i4 Kill(pActiveObject* aObject, bool aWait);
    void DetachAll();
    bool IsScheduled(pActiveObject* aObject);
    bool IsRunning(pActiveObject* aObject);
    // Removes pending events with the code's uid and tag (and aData, when given).
    i4 Cancel(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData);
    bool IsPending(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData);
    bool IsPending(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData, u1 aLevel);

private:
    friend class cActiveRunner;
    cActiveRecord* Find(pActiveObject* aObject);
    void AddRunner();
    void RunnerLoop(cActiveRunner* aRunner);
    bool Turn(cActiveRunner* aRunner, cActiveRecord* aRecord);
    void WaitForRunner(cActiveRecord* aRecord);
    void MoveRunner(cActiveRunner* aRunner, cObjectList* aFrom, cObjectList* aTo);
    bool PendingAt(pActiveObject* aObject, const tActiveCode& aCode, pObject* aData, int aLevel);

    bool mAlive = false;
    tSetup mSetup{};
    u4 mPeakBusy = 0;
    u4 mPeakIdle = 0;
    cMutex* mLock = nullptr;
    cWhistle* mWake = nullptr;
    cWhistle* mProgress = nullptr;
    cWhistle* mExit = nullptr;
    cObjectMap* mRecords = nullptr;
    cObjectList* mIdle = nullptr;
    cObjectList* mBusy = nullptr;
    cObjectList* mRetired = nullptr;
    cObjectQueue* mReady = nullptr;
    cObjectList* mMinutes = nullptr; // spare minutes, at most 8
    tHook mHook = nullptr;
    void* mHookContext = nullptr;
    // Bumped for each event scheduled, so idle runners can spin on it
    // without the lock before they park.
    std::atomic<u4> mScheduled{0};
    std::atomic<u4> mSleepers{0};
};

} // namespace llk
