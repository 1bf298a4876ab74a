// Scoped sides of a ConditionHelper: entered on construction, left on
// destruction, so that a failure or an exception never leaves a gate held.
#pragma once

#include <mutex>

#include "TavikCPP/ConditionHelper.h"

namespace QRX::TvkAPI {

class ReadLockGuard {
public:
    ReadLockGuard(ConditionHelper& rGate, BasicLockable& rLockable)
        : ReadLockGuard(rGate, rLockable.GetMutex()) {}
    ReadLockGuard(ConditionHelper& rGate, const MutexPtr& pMutex)
        : m_rGate(rGate), m_pMutex(pMutex), m_bHeld(rGate.EnterReadLock(pMutex)) {}
    // Takes over a read side entered already.
    ReadLockGuard(ConditionHelper& rGate, const MutexPtr& pMutex, std::adopt_lock_t)
        : m_rGate(rGate), m_pMutex(pMutex), m_bHeld(true) {}
    ~ReadLockGuard() {
        if (m_bHeld) m_rGate.ExitReadLock(m_pMutex);
    }
    ReadLockGuard(const ReadLockGuard&) = delete;
    ReadLockGuard& operator=(const ReadLockGuard&) = delete;
    explicit operator bool() const { return m_bHeld; }

private:
    ConditionHelper& m_rGate;
    MutexPtr m_pMutex;
    bool m_bHeld;
};

class WriteLockGuard {
public:
    WriteLockGuard(ConditionHelper& rGate, BasicLockable& rLockable, bool bExclusive)
        : WriteLockGuard(rGate, rLockable.GetMutex(), bExclusive) {}
    WriteLockGuard(ConditionHelper& rGate, const MutexPtr& pMutex, bool bExclusive)
        : m_rGate(rGate), m_pMutex(pMutex), m_bHeld(rGate.EnterWriteLock(pMutex, bExclusive)) {}
    ~WriteLockGuard() {
        if (m_bHeld) m_rGate.ExitWriteLock(m_pMutex);
    }
    WriteLockGuard(const WriteLockGuard&) = delete;
    WriteLockGuard& operator=(const WriteLockGuard&) = delete;
    explicit operator bool() const { return m_bHeld; }
    // Leaves the gate held for good: an exclusive writer that never leaves
    // makes every later entry fail at once.
    void Keep() { m_bHeld = false; }

private:
    ConditionHelper& m_rGate;
    MutexPtr m_pMutex;
    bool m_bHeld;
};

} // namespace QRX::TvkAPI
