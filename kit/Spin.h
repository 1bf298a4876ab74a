// Bounded busy-waiting. Waking a parked thread costs tens of microseconds on
// virtual machines, so hot hand-offs spin briefly first; the bound keeps an
// idle library from burning a core.
#pragma once

#include "kit/Env.h"

namespace llk {

// Microseconds a hand-off spins before it parks.
constexpr u4 kSpinMicros = 60;

inline void CpuRelax() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

// Spins until aDone() holds or aMicros pass; true when it held.
template <class F> bool SpinUntil(F aDone, u4 aMicros = kSpinMicros) {
    if (aDone()) return true;
    const double end = sEnv::GetElapsedTime() + aMicros * 1e-6;
    for (u4 i = 1;; ++i) {
        CpuRelax();
        if (aDone()) return true;
        // The clock is read once in a while only.
        if ((i & 63) == 0 && sEnv::GetElapsedTime() >= end) return false;
    }
}

} // namespace llk
