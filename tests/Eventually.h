// Waits, generously, for a condition that another thread makes true: tests
// never depend on a tight absolute time.
#pragma once

#include <chrono>
#include <thread>

namespace test {

template <class F> bool Eventually(F aCondition, double aSeconds = 10.0) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(aSeconds);
    while (!aCondition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace test
