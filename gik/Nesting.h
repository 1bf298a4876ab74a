// A bound on how deep, and how much, one thread follows references from node
// to node. Every step from one node into another (a value read or write
// through a reference, a forwarded question) holds a uNest. Past kMaxDepth
// levels, or past kMaxSteps steps within one outermost call, the step fails
// instead of going on: reference cycles, absurd chains and graphs whose
// shared branches would be walked exponentially often cost a failed call,
// never the stack and never a hang.
#pragma once

#include "gik/Status.h"

namespace gik {

class uNest {
public:
    static constexpr u4 kMaxDepth = 128;
    static constexpr u4 kMaxSteps = 200000;

    uNest() {
        if (sDepth++ == 0) sSteps = 0;
        mOk = sDepth <= kMaxDepth && ++sSteps <= kMaxSteps;
    }
    ~uNest() { --sDepth; }
    uNest(const uNest&) = delete;
    uNest& operator=(const uNest&) = delete;
    explicit operator bool() const { return mOk; }

    static u4 Depth() { return sDepth; }

private:
    static thread_local u4 sDepth;
    static thread_local u4 sSteps;
    bool mOk;
};

} // namespace gik
