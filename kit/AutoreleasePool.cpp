#include "kit/AutoreleasePool.h"

#include <cinttypes>

#include "kit/Env.h"

namespace llk {

struct uAutoreleasePool::tBlock {
    pObject* objects[kBlockSize];
    u4 count;
    tBlock* older;
};

namespace {
thread_local uAutoreleasePool* tTopPool = nullptr;
}

uAutoreleasePool::uAutoreleasePool() : mPrevious(tTopPool) {
    tTopPool = this;
}

uAutoreleasePool::~uAutoreleasePool() {
    Sink();
    if (tTopPool != this) {
        sEnv::PrintError("0x%" PRIxPTR " Autorelease pool deleted without being the top!",
                         reinterpret_cast<uintptr_t>(this));
        return;
    }
    tTopPool = mPrevious;
}

uAutoreleasePool* uAutoreleasePool::Top() {
    return tTopPool;
}

bool uAutoreleasePool::Add(pObject* aObject) {
    if (!mHead || mHead->count == kBlockSize) {
        auto* block = static_cast<tBlock*>(sEnv::Malloc(sizeof(tBlock), false));
        if (!block) return false;
        block->count = 0;
        block->older = mHead;
        mHead = block;
    }
    mHead->objects[mHead->count++] = aObject;
    return true;
}

void uAutoreleasePool::Sink() {
    // A release may autorelease into this very pool; detach the chain first
    // and loop until nothing is left.
    while (mHead) {
        tBlock* block = mHead;
        mHead = nullptr;
        while (block) {
            for (u4 i = 0; i < block->count; ++i)
                block->objects[i]->Release();
            tBlock* older = block->older;
            sEnv::Free(block);
            block = older;
        }
    }
}

u4 uAutoreleasePool::Count() const {
    u4 count = 0;
    for (tBlock* block = mHead; block; block = block->older)
        count += block->count;
    return count;
}

} // namespace llk
