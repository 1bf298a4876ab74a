// Waits, generously, for a condition that another thread makes true: tests
// never depend on a tight absolute time.
#pragma once

#include "kit/Env.h"

namespace test {

template <class F> bool Eventually(F aCondition, double aSeconds = 10.0) {
    const double end = llk::sEnv::GetElapsedTime() + aSeconds;
    while (!aCondition()) {
        if (llk::sEnv::GetElapsedTime() > end) return false;
        llk::sEnv::Snooze(1);
    }
    return true;
}

} // namespace test
