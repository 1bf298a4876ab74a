#include "kit/Mutex.h"

#include <cerrno>
#include <ctime>

#include "kit/Env.h"

namespace llk {

i4 cMutex::Initialize() {
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0) return kNoResources;
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    int error = pthread_mutex_init(&mLock, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (error != 0) return sEnv::StatusFromErrno(error);
    mMade = true;
    return kOk;
}

cMutex::~cMutex() {
    if (mMade) pthread_mutex_destroy(&mLock);
}

i4 cMutex::Lock() {
    if (pthread_mutex_lock(&mLock) != 0) return 1;
    mHeld.fetch_add(1, std::memory_order_relaxed);
    return 0;
}

i4 cMutex::Lock(u4 aTimeoutMs) {
    // Polls against a monotonic deadline: timed locks are rare, and the
    // clock-based lock call is invisible to the thread sanitizer.
    const double deadline = sEnv::GetElapsedTime() + aTimeoutMs / 1000.0;
    u4 nap = 50;
    for (;;) {
        int error = pthread_mutex_trylock(&mLock);
        if (error == 0) break;
        if (error != EBUSY) return kFailed;
        if (sEnv::GetElapsedTime() >= deadline) return kTimedOut;
        struct timespec pause {
            0, static_cast<long>(nap) * 1000L
        };
        nanosleep(&pause, nullptr);
        if (nap < 1000) nap *= 2;
    }
    mHeld.fetch_add(1, std::memory_order_relaxed);
    return kOk;
}

void cMutex::Unlock() {
    mHeld.fetch_sub(1, std::memory_order_relaxed);
    pthread_mutex_unlock(&mLock);
}

} // namespace llk
