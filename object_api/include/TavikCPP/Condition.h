// A condition made of a semaphore: waiters pass a wake-up on to the next.
#pragma once

#include <cstdint>

#include "TavikCPP/BasicLockable.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT Condition {
public:
    // Throws std::bad_alloc when its semaphore cannot be made.
    Condition();
    ~Condition();
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    // The caller holds the mutex once; it is let go while waiting and held
    // again on return.
    void Wait(BasicLockable& rLockable);
    void Wait(const MutexPtr& pMutex);
    // Wakes one waiter, or all that wait now. The caller holds the mutex.
    void Signal(bool bSingle);

private:
    uint32_t m_nReleasedCount = 0;
    uint32_t m_nWaiterCount = 0;
    bool m_bSemaphoreFree = true;
    SemaphorePtr m_pSemaphore;
};

} // namespace QRX::TvkAPI
