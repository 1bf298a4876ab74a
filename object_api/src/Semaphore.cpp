#include "TavikCPP/Semaphore.h"

#include <cerrno>
#include <new>

#include "Log.h"

namespace QRX::TvkAPI {

Semaphore::Semaphore(int32_t nInit, int32_t nMax) : m_nMax(nMax) {
    if (nInit < 0 || nMax < 1 || nInit > nMax ||
        sem_init(&m_handle, 0, static_cast<unsigned>(nInit)) != 0) {
        LogFailure("Could not create semaphore.", "QRX::TvkAPI::Semaphore::Semaphore");
        throw std::bad_alloc();
    }
}

Semaphore::~Semaphore() {
    sem_destroy(&m_handle);
}

void Semaphore::Acquire() {
    while (sem_wait(&m_handle) != 0 && errno == EINTR) {
    }
}

void Semaphore::Release() {
    int value = 0;
    sem_getvalue(&m_handle, &value);
    if (value < m_nMax) sem_post(&m_handle);
}

} // namespace QRX::TvkAPI
