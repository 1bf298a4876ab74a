// Per-thread stack of pools that hold deferred releases.
#pragma once

#include "kit/Object.h"

namespace llk {

class uAutoreleasePool {
public:
    uAutoreleasePool();
    ~uAutoreleasePool();
    uAutoreleasePool(const uAutoreleasePool&) = delete;
    uAutoreleasePool& operator=(const uAutoreleasePool&) = delete;

    // Releases every held object, newest block first; the pool stays usable.
    void Sink();
    u4 Count() const;

    // The calling thread's top pool, or null.
    static uAutoreleasePool* Top();

private:
    friend class pObject;
    struct tBlock;
    static constexpr u4 kBlockSize = 64;

    bool Add(pObject* aObject);

    tBlock* mHead = nullptr;
    uAutoreleasePool* mPrevious = nullptr;
};

} // namespace llk
