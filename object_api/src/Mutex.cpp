#include "TavikCPP/Mutex.h"

#include <new>

#include "Log.h"

namespace QRX::TvkAPI {

namespace {

bool MakeRecursive(pthread_mutex_t& rHandle) {
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0) return false;
    const bool made = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                      pthread_mutex_init(&rHandle, &attributes) == 0;
    pthread_mutexattr_destroy(&attributes);
    return made;
}

} // namespace

Mutex::Mutex(bool bInitLock) {
    if (!MakeRecursive(m_handle)) {
        LogFailure("Could not create mutex.", "QRX::TvkAPI::Mutex::Mutex");
        throw std::bad_alloc();
    }
    if (bInitLock) Lock();
}

Mutex::~Mutex() {
    pthread_mutex_destroy(&m_handle);
}

void Mutex::Lock() {
    pthread_mutex_lock(&m_handle);
}

void Mutex::Unlock() {
    pthread_mutex_unlock(&m_handle);
}

} // namespace QRX::TvkAPI
