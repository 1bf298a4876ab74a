#include "Faults.h"

#include <chrono>
#include <thread>

namespace sim {

void Faults::Fail(const std::string& aCall, int32_t aStatus, uint32_t aCount) {
    std::lock_guard<std::mutex> hold(mLock);
    tFault& fault = mFaults[aCall];
    fault.status = aStatus;
    fault.count = aCount;
    mAny.store(true);
}

void Faults::Delay(const std::string& aCall, uint32_t aMs) {
    std::lock_guard<std::mutex> hold(mLock);
    mFaults[aCall].delayMs = aMs;
    mAny.store(true);
}

void Faults::Clear() {
    std::lock_guard<std::mutex> hold(mLock);
    mFaults.clear();
    mAny.store(false);
}

int32_t Faults::Check(const char* aCall) {
    // The common case, nothing injected, takes no lock.
    if (!mAny.load(std::memory_order_relaxed)) return 0;
    uint32_t delay = 0;
    int32_t status = 0;
    {
        std::lock_guard<std::mutex> hold(mLock);
        auto it = mFaults.find(aCall);
        if (it == mFaults.end()) return 0;
        tFault& fault = it->second;
        delay = fault.delayMs;
        if (fault.status != 0) {
            status = fault.status;
            if (fault.count != 0 && --fault.count == 0) fault.status = 0;
        }
    }
    if (delay) std::this_thread::sleep_for(std::chrono::milliseconds(delay));
    return status;
}

} // namespace sim
