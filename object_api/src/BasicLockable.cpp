#include "TavikCPP/BasicLockable.h"

namespace QRX::TvkAPI {

BasicLockable::BasicLockable() : m_pMutex(new QRX::TvkAPI::Mutex()) {}

BasicLockable::BasicLockable(const MutexPtr& pMutex) : m_pMutex(pMutex) {}

BasicLockable::~BasicLockable() = default;

MutexPtr BasicLockable::GetMutex() const {
    return m_pMutex;
}

} // namespace QRX::TvkAPI
