#include "kit/Object.h"

#include <cinttypes>

#include "kit/AutoreleasePool.h"
#include "kit/Env.h"
#include "kit/String.h"

namespace llk {

void* pObject::operator new(size_t aSize) {
    void* memory = sEnv::Malloc(aSize, true);
    if (!memory) throw std::bad_alloc();
    return memory;
}

void* pObject::operator new(size_t aSize, const std::nothrow_t&) noexcept {
    return sEnv::Malloc(aSize, true);
}

void pObject::operator delete(void* aPtr) noexcept {
    sEnv::Free(aPtr, 0);
}

pObject* pObject::Retain() {
    mRetainCount.fetch_add(1, std::memory_order_relaxed);
    return this;
}

void pObject::Release() {
    // The decision is one atomic step: either the count drops by one, or this
    // caller holds the last reference and destroys. The count never reads 0.
    u4 count = mRetainCount.load(std::memory_order_acquire);
    while (count > 1) {
        if (mRetainCount.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel,
                                               std::memory_order_acquire))
            return;
    }
    delete this;
}

pObject* pObject::Autorelease() {
    uAutoreleasePool* pool = uAutoreleasePool::Top();
    if (!pool) {
        sEnv::PrintError("Object autoreleased without a pool!");
        // A kit object without a pool is a programming error: stop here.
        abort();
    }
    if (!pool->Add(this))
        sEnv::PrintError("0x%" PRIxPTR " Autorelease pool couldn't allocate, object leak!",
                         reinterpret_cast<uintptr_t>(pool));
    return this;
}

cString* pObject::Description() const {
    cString* text = cString::New(64);
    if (text) text->Format("<%s: 0x%lX>", ClassName(), reinterpret_cast<unsigned long>(this));
    return text;
}

} // namespace llk
