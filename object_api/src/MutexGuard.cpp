#include "TavikCPP/MutexGuard.h"

#include "Log.h"

namespace QRX::TvkAPI {

namespace {
const char kConstructor[] = "QRX::TvkAPI::MutexGuard::MutexGuard";
const char kProtect[] = "QRX::TvkAPI::MutexGuard::Protect";

MutexPtr MutexOf(const BasicLockablePtr& pLockable) {
    return pLockable ? pLockable->GetMutex() : MutexPtr();
}
} // namespace

MutexGuard::MutexGuard() = default;
MutexGuard::MutexGuard(const MutexPtr& pMutex) {
    Hold(pMutex, kConstructor);
}
MutexGuard::MutexGuard(const BasicLockablePtr& pLockable) {
    Hold(MutexOf(pLockable), kConstructor);
}
MutexGuard::MutexGuard(BasicLockable& rLockable) {
    Hold(rLockable.GetMutex(), kConstructor);
}
MutexGuard::~MutexGuard() {
    Release();
}

void MutexGuard::Protect(const MutexPtr& pMutex) {
    Hold(pMutex, kProtect);
}
void MutexGuard::Protect(const BasicLockablePtr& pLockable) {
    Hold(MutexOf(pLockable), kProtect);
}
void MutexGuard::Protect(BasicLockable& rLockable) {
    Hold(rLockable.GetMutex(), kProtect);
}

bool MutexGuard::Release() {
    if (!m_pMutex) return false;
    m_pMutex->Unlock();
    m_pMutex.Reset();
    return true;
}

void MutexGuard::Hold(const MutexPtr& pMutex, const char* pFunction) {
    if (pMutex && pMutex == m_pMutex) return;
    Release();
    if (!pMutex) {
        LogFailure("No mutex passed.", pFunction);
        return;
    }
    pMutex->Lock();
    m_pMutex = pMutex;
}

} // namespace QRX::TvkAPI
