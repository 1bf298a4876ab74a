#include "kit/Thread.h"

#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "kit/AutoreleasePool.h"
#include "kit/Env.h"

namespace llk {

namespace {
thread_local pThread* tCurrentThread = nullptr;

// Kit levels to nice values of the calling thread; other values pass through.
int NiceOfLevel(i4 aLevel) {
    static const int kNice[] = {15, 2, 1, 0, -1, -2, -15};
    return aLevel >= 0 && aLevel <= 6 ? kNice[aLevel] : aLevel;
}
} // namespace

i4 pThread::Initialize() {
    return kOk;
}

pThread::~pThread() {
    if (!mHasThread.load()) return;
    // A thread that was never stopped blocks here, in steps of 250 ms.
    while (!mFinished.load() && !mAbandon.load())
        sEnv::Snooze(250);
    if (mFinished.load())
        pthread_join(mThread, nullptr);
    else
        pthread_detach(mThread);
}

pThread* pThread::Current() {
    return tCurrentThread;
}

void* pThread::Entry(void* aSelf) {
    auto* self = static_cast<pThread*>(aSelf);
    tCurrentThread = self;
    self->mThreadId.store(static_cast<u4>(syscall(SYS_gettid)));
    if (self->mPriority != 3) self->SetPriority(self->mPriority);
    i4 code;
    {
        uAutoreleasePool pool;
        code = self->Run();
    }
    self->mExitCode.store(static_cast<u4>(code));
    tCurrentThread = nullptr;
    self->mFinished.store(true);
    return nullptr;
}

i4 pThread::Start() {
    if (mHasThread.load()) {
        if (!mFinished.load()) return kOk;
        pthread_join(mThread, nullptr);
        mHasThread.store(false);
    }
    mFinished.store(false);
    mAbandon.store(false);
    int error = pthread_create(&mThread, nullptr, &pThread::Entry, this);
    if (error != 0) return sEnv::StatusFromErrno(error);
    mHasThread.store(true);
    return kOk;
}

i4 pThread::Join(u4 aTimeoutMs) {
    if (!mHasThread.load()) return kOk;
    if (pthread_equal(mThread, pthread_self())) return kNotAllowed;
    double deadline = sEnv::GetElapsedTime() + aTimeoutMs / 1000.0;
    // Short sleeps first so that a quick exit is seen quickly.
    u4 nap = 1;
    while (!mFinished.load()) {
        if (aTimeoutMs != 0 && sEnv::GetElapsedTime() >= deadline) return kTimedOut;
        sEnv::Snooze(nap);
        if (nap < 10) ++nap;
    }
    return kOk;
}

i4 pThread::StopAndJoin(u4 aTimeoutMs) {
    i4 status = Stop();
    if (status != kOk) return status;
    return Join(aTimeoutMs);
}

bool pThread::IsRunning() const {
    return mHasThread.load() && !mFinished.load();
}

i4 pThread::SetPriority(i4 aLevel) {
    mPriority = aLevel;
    u4 tid = mThreadId.load();
    if (!IsRunning() || tid == 0) return kOk;
    // Best effort: a refused change is ignored.
    (void)setpriority(PRIO_PROCESS, static_cast<id_t>(tid), NiceOfLevel(aLevel));
    return kOk;
}

i4 pThread::GetPriority(i4& aLevel) const {
    aLevel = mPriority >= 0 && mPriority <= 6 ? mPriority : 3;
    return kOk;
}

} // namespace llk
