// Failures and delays injected into chosen entry points.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace sim {

class Faults {
public:
    // A failure for the next aCount calls (0: every call).
    void Fail(const std::string& aCall, int32_t aStatus, uint32_t aCount);
    void Delay(const std::string& aCall, uint32_t aMs);
    void Clear();
    // Waits out a delay; returns the status to fail with, or 0.
    int32_t Check(const char* aCall);

private:
    struct tFault {
        int32_t status = 0;
        uint32_t count = 0;
        uint32_t delayMs = 0;
    };
    std::atomic<bool> mAny{false};
    std::mutex mLock;
    std::map<std::string, tFault> mFaults;
};

} // namespace sim
