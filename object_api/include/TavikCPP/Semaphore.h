// A counting semaphore.
#pragma once

#include <cstdint>
#include <semaphore.h>

#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT Semaphore : public virtual ReferenceCounted {
public:
    // Throws std::bad_alloc when the semaphore cannot be made.
    Semaphore(int32_t nInit, int32_t nMax);
    ~Semaphore() override;
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    // Waits without limit for a count and takes it.
    void Acquire();
    // Adds one, unless the count stands at its maximum already.
    void Release();

private:
    sem_t m_handle;
    int32_t m_nMax;
};

} // namespace QRX::TvkAPI
