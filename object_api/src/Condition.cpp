#include "TavikCPP/Condition.h"

#include "TavikCPP/Semaphore.h"

namespace QRX::TvkAPI {

Condition::Condition() : m_pSemaphore(new Semaphore(0, 1)) {}

Condition::~Condition() = default;

void Condition::Wait(BasicLockable& rLockable) {
    Wait(rLockable.GetMutex());
}

void Condition::Wait(const MutexPtr& pMutex) {
    ++m_nWaiterCount;
    pMutex->Unlock();
    m_pSemaphore->Acquire();
    pMutex->Lock();
    if (m_nWaiterCount > 0) --m_nWaiterCount;
    if (m_nReleasedCount > 0) --m_nReleasedCount;
    // The semaphore holds one wake-up at a time: pass it on to the next
    // waiter while there are wake-ups left.
    if (m_nWaiterCount > 0 && m_nReleasedCount > 0) {
        m_pSemaphore->Release();
        m_bSemaphoreFree = false;
    } else {
        m_bSemaphoreFree = true;
    }
    if (m_nReleasedCount > m_nWaiterCount) m_nReleasedCount = m_nWaiterCount;
}

void Condition::Signal(bool bSingle) {
    if (m_nWaiterCount <= m_nReleasedCount) return;
    if (bSingle)
        ++m_nReleasedCount;
    else
        m_nReleasedCount = m_nWaiterCount;
    if (m_bSemaphoreFree) {
        m_pSemaphore->Release();
        m_bSemaphoreFree = false;
    }
}

} // namespace QRX::TvkAPI
