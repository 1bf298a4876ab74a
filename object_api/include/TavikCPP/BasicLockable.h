// Objects that carry their own lock, and the two containers built on them.
#pragma once

#include <map>
#include <vector>

#include "TavikCPP/Mutex.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT BasicLockable : public virtual ReferenceCounted {
public:
    // Makes a lock of its own.
    BasicLockable();
    // Shares a given lock.
    explicit BasicLockable(const MutexPtr& pMutex);
    ~BasicLockable() override;

    MutexPtr GetMutex() const;

private:
    MutexPtr m_pMutex;
};

template <class T> class LockableVector : public virtual BasicLockable {
public:
    std::vector<T> Vector;
};

template <class K, class T> class LockableMap : public virtual BasicLockable {
public:
    std::map<K, T> Map;
};

} // namespace QRX::TvkAPI
