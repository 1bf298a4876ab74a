// A reader and writer gate over a container, with an exclusive mode: while an
// exclusive writer holds the gate, every other entry fails at once instead of
// waiting. The mutex passed in guards the gate's own fields and must be the
// same for every call on one gate; it is not held between Enter and Exit.
#pragma once

#include <cstdint>

#include "TavikCPP/Condition.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT ConditionHelper {
public:
    ConditionHelper();
    ~ConditionHelper();
    ConditionHelper(const ConditionHelper&) = delete;
    ConditionHelper& operator=(const ConditionHelper&) = delete;

    bool EnterReadLock(BasicLockable& rLockable);
    bool EnterReadLock(const MutexPtr& pMutex);
    void ExitReadLock(BasicLockable& rLockable);
    void ExitReadLock(const MutexPtr& pMutex);
    bool EnterWriteLock(BasicLockable& rLockable, bool bExclusive = false);
    bool EnterWriteLock(const MutexPtr& pMutex, bool bExclusive = false);
    void ExitWriteLock(BasicLockable& rLockable);
    void ExitWriteLock(const MutexPtr& pMutex);

private:
    Condition m_ReadCondition;
    Condition m_WriteCondition;
    bool m_bIsWriting = false;
    bool m_bExclusive = false;
    int32_t m_nReaders = 0;
};

} // namespace QRX::TvkAPI
