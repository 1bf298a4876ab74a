#include "TavikCPP/ConditionHelper.h"

namespace QRX::TvkAPI {

namespace {
// The gate's mutex for one call; no pointer copies on this path.
class Held {
public:
    explicit Held(Mutex& rMutex) : m_rMutex(rMutex) { m_rMutex.Lock(); }
    ~Held() { m_rMutex.Unlock(); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    Mutex& m_rMutex;
};
} // namespace

ConditionHelper::ConditionHelper() = default;
ConditionHelper::~ConditionHelper() = default;

bool ConditionHelper::EnterReadLock(BasicLockable& rLockable) {
    return EnterReadLock(rLockable.GetMutex());
}

bool ConditionHelper::EnterReadLock(const MutexPtr& pMutex) {
    Held held(*pMutex);
    if (m_bExclusive) return false;
    // Readers wait for a writer to finish, as writers do.
    while (m_bIsWriting)
        m_WriteCondition.Wait(pMutex);
    ++m_nReaders;
    return true;
}

void ConditionHelper::ExitReadLock(BasicLockable& rLockable) {
    ExitReadLock(rLockable.GetMutex());
}

void ConditionHelper::ExitReadLock(const MutexPtr& pMutex) {
    Held held(*pMutex);
    if (m_nReaders > 0 && --m_nReaders == 0) m_ReadCondition.Signal(false);
}

bool ConditionHelper::EnterWriteLock(BasicLockable& rLockable, bool bExclusive) {
    return EnterWriteLock(rLockable.GetMutex(), bExclusive);
}

bool ConditionHelper::EnterWriteLock(const MutexPtr& pMutex, bool bExclusive) {
    Held held(*pMutex);
    if (m_bExclusive) return false;
    while (m_bIsWriting)
        m_WriteCondition.Wait(pMutex);
    m_bIsWriting = true;
    m_bExclusive = bExclusive;
    while (m_nReaders > 0)
        m_ReadCondition.Wait(pMutex);
    return true;
}

void ConditionHelper::ExitWriteLock(BasicLockable& rLockable) {
    ExitWriteLock(rLockable.GetMutex());
}

void ConditionHelper::ExitWriteLock(const MutexPtr& pMutex) {
    Held held(*pMutex);
    m_bIsWriting = false;
    m_bExclusive = false;
    m_WriteCondition.Signal(false);
}

} // namespace QRX::TvkAPI
