// Holds one Mutex for a scope, or until Release; one guard may protect again.
#pragma once

#include "TavikCPP/BasicLockable.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT MutexGuard {
public:
    MutexGuard();
    explicit MutexGuard(const MutexPtr& pMutex);
    explicit MutexGuard(const BasicLockablePtr& pLockable);
    explicit MutexGuard(BasicLockable& rLockable);
    ~MutexGuard();
    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;

    // Takes the lock; a lock held by this guard already stays as it is,
    // another one held by it is released first.
    void Protect(const MutexPtr& pMutex);
    void Protect(const BasicLockablePtr& pLockable);
    void Protect(BasicLockable& rLockable);
    // False when nothing was held.
    bool Release();

private:
    void Hold(const MutexPtr& pMutex, const char* pFunction);

    MutexPtr m_pMutex;
};

} // namespace QRX::TvkAPI
