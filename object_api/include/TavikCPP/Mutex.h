// A lock that its owner may take again: each Lock needs its Unlock.
#pragma once

#include <pthread.h>

#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT Mutex : public virtual ReferenceCounted {
public:
    // Throws std::bad_alloc when the lock cannot be made; with bInitLock the
    // calling thread holds it at once.
    explicit Mutex(bool bInitLock = false);
    ~Mutex() override;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    // Waits without limit.
    void Lock();
    void Unlock();

private:
    pthread_mutex_t m_handle;
};

} // namespace QRX::TvkAPI
