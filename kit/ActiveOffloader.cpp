#include "kit/ActiveOffloader.h"

#include "kit/AutoreleasePool.h"
#include "kit/ObjectQueue.h"
#include "kit/Thread.h"
#include "kit/Whistle.h"

namespace llk {

namespace {
// The offloader whose job this thread is running, if any.
thread_local const cActiveOffloader* tRunning = nullptr;
} // namespace

// One job.
class cActiveOffloader::cShore : public pObject {
public:
    ~cShore() override {
        ReleaseAndClear(object);
        ReleaseAndClear(function);
    }
    bool HasCode() const { return code.aUid != 0 || code.aTag != 0; }

    tActiveCode code{};
    pActiveObject* object = nullptr;
    cFunction* function = nullptr;
    u1 priority = 0;
};

class cActiveOffloader::cPeon : public pThread {
public:
    static cPeon* New(cActiveOffloader* aOwner) { return Make<cPeon>(aOwner); }
    i4 Initialize(cActiveOffloader* aOwner) {
        mOwner = aOwner;
        return pThread::Initialize();
    }
    i4 Run() override {
        mOwner->PeonLoop();
        return 0;
    }

private:
    cActiveOffloader* mOwner = nullptr;
};

i4 cActiveOffloader::Initialize(const tSetup& aSetup, cActiveScheduler* aScheduler,
                                pDelegate* aDelegate) {
    (void)aSetup;
    if (!aScheduler) return kNoMemory;
    mScheduler = Retained(aScheduler);
    mDelegate = aDelegate;
    mMutex = Retained(cMutex::New());
    if (!mMutex) return kNoMemory;
    mWork = Retained(cWhistle::New(mMutex));
    mDone = Retained(cWhistle::New(mMutex));
    mJobs = Retained(cObjectQueue::New(16));
    mPeon = Retained(cPeon::New(this));
    if (!mWork || !mDone || !mJobs || !mPeon) return kNoMemory;
    return mPeon->Start();
}

cActiveOffloader::~cActiveOffloader() {
    Close();
    ReleaseAndClear(mPeon);
    ReleaseAndClear(mJobs);
    ReleaseAndClear(mWork);
    ReleaseAndClear(mDone);
    ReleaseAndClear(mMutex);
    ReleaseAndClear(mScheduler);
}

void cActiveOffloader::Close() {
    if (!mMutex) return;
    {
        uLock hold(mMutex);
        if (mClosing.exchange(true)) return;
        mWork->Signal(true);
    }
    if (mPeon) mPeon->Join(0);
    uLock hold(mMutex);
    if (mJobs) mJobs->Empty();
}

void cActiveOffloader::PeonLoop() {
    uAutoreleasePool pool;
    tRunning = this;
    mMutex->Lock();
    while (!mClosing.load()) {
        auto* job = static_cast<cShore*>(mJobs->Pop(false));
        if (!job) {
            mWork->Wait();
            continue;
        }
        mCurrent = job;
        mMutex->Unlock();
        job->function->Run(nullptr);
        if (!job->HasCode()) {
            if (mDelegate) mDelegate->OnOffloaderDidExecute(job->function, false);
        } else {
            mScheduler->Schedule(job->object, job->code, job->function, job->priority);
            if (mDelegate) mDelegate->OnOffloaderDidExecute(job->function, true);
        }
        mMutex->Lock();
        mCurrent = nullptr;
        mDone->Signal(true);
        job->Release();
        mMutex->Unlock();
        pool.Sink();
        mMutex->Lock();
    }
    mMutex->Unlock();
}

i4 cActiveOffloader::Submit(pActiveObject* aObject, cFunction* aFunction, u1 aPriority) {
    return Submit(aObject, aFunction, MakeActiveCode(0, 0, 0), aPriority);
}

i4 cActiveOffloader::Submit(pActiveObject* aObject, cFunction* aFunction, const tActiveCode& aCode,
                            u1 aPriority) {
    if (!aFunction) return kNoMemory;
    uLock hold(mMutex);
    if (mClosing.load()) return kRefused;
    auto* job = new (std::nothrow) cShore();
    if (!job) return kNoMemory;
    job->code = aCode;
    job->object = Retained(aObject);
    job->function = Retained(aFunction);
    job->priority = aPriority;
    i4 status = mJobs->Push(job, aPriority);
    job->Release();
    if (status == kOk) mWork->Signal(true);
    return status;
}

template <class Match>
i4 cActiveOffloader::CancelWhere(pActiveObject* aObject, Match aMatch, bool aWait) {
    uLock hold(mMutex);
    if (mClosing.load()) return kRefused;
    struct tWalk {
        cActiveOffloader* self;
        pActiveObject* object;
        Match* match;
        static bool Test(pObject* aJob, void* aWalk) {
            auto* walk = static_cast<tWalk*>(aWalk);
            auto* job = static_cast<cShore*>(aJob);
            if (job->object != walk->object || !(*walk->match)(job->function)) return false;
            cActiveOffloader* self = walk->self;
            // A job with a code still reports, its function not run.
            if (!job->HasCode()) {
                if (self->mDelegate) self->mDelegate->OnOffloaderDidCancel(job->function, false);
            } else {
                self->mScheduler->Schedule(job->object, job->code, job->function, job->priority);
                if (self->mDelegate) self->mDelegate->OnOffloaderDidCancel(job->function, true);
            }
            return true;
        }
    } walk{this, aObject, &aMatch};
    mJobs->Filter(&tWalk::Test, &walk);
    // A job that cancels its own object's work (an object ending from a call
    // its own job made) cannot wait for itself.
    if (aWait && tRunning != this && mCurrent && mCurrent->object == aObject &&
        aMatch(mCurrent->function)) {
        // The peon needs the lock to finish, so its done signal can't be missed.
        mDone->Wait();
    }
    return kOk;
}

i4 cActiveOffloader::Cancel(pActiveObject* aObject, cFunction* aFunction, bool aWait) {
    return CancelWhere(
        aObject, [aFunction](cFunction* f) { return !aFunction || f == aFunction; }, aWait);
}

i4 cActiveOffloader::Cancel(pActiveObject* aObject, tFilter aFilter, void* aContext, bool aWait) {
    return CancelWhere(
        aObject, [aFilter, aContext](cFunction* f) { return aFilter(f, aContext); }, aWait);
}

} // namespace llk
