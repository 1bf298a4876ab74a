#include "kit/ObjectPool.h"

#include <algorithm>

namespace llk {

i4 cObjectPool::Initialize(u4 aInitial, u4 aLimit) {
    mLimit = aLimit;
    mList = Retained(cObjectList::New(std::min(aInitial, aLimit), true));
    return mList ? kOk : kNoMemory;
}

cObjectPool::~cObjectPool() {
    ReleaseAndClear(mList);
}

i4 cObjectPool::Push(pObject* aObject) {
    if (mLimit != 0 && mList->Count() >= mLimit) return kNoCapacity;
    return mList->Append(aObject, true);
}

pObject* cObjectPool::Pop() {
    pObject* object = mList->RemoveFirst();
    return object ? object->Autorelease() : nullptr;
}

void cObjectPool::SetLimit(u4 aLimit) {
    mLimit = aLimit;
    if (aLimit == 0) return;
    while (mList->Count() > aLimit)
        mList->Remove(0u);
}

i4 cTaggedPool::Initialize() {
    mPools = Retained(cObjectMap::New(16, 0.0f, true));
    return mPools ? kOk : kNoMemory;
}

cTaggedPool::~cTaggedPool() {
    ReleaseAndClear(mPools);
}

cObjectPool* cTaggedPool::PoolOf(const char* aTag) {
    auto* pool = static_cast<cObjectPool*>(mPools->Fetch(aTag));
    if (pool) return pool;
    pool = cObjectPool::New(16, 0);
    if (!pool || mPools->Store(aTag, pool) != kOk) return nullptr;
    return pool;
}

i4 cTaggedPool::Push(const char* aTag, pObject* aObject) {
    cObjectPool* pool = PoolOf(aTag);
    return pool ? pool->Push(aObject) : kNoMemory;
}

pObject* cTaggedPool::Pop(const char* aTag) {
    auto* pool = static_cast<cObjectPool*>(mPools->Fetch(aTag));
    return pool ? pool->Pop() : nullptr;
}

i4 cTaggedPool::SetLimit(const char* aTag, u4 aLimit) {
    cObjectPool* pool = PoolOf(aTag);
    if (!pool) return kNoMemory;
    pool->SetLimit(aLimit);
    return kOk;
}

u4 cTaggedPool::Count(const char* aTag) const {
    auto* pool = static_cast<cObjectPool*>(mPools->Fetch(aTag));
    return pool ? pool->Count() : 0;
}

i4 cTaggedPool::Remove(const char* aTag, pObject* aObject) {
    auto* pool = static_cast<cObjectPool*>(mPools->Fetch(aTag));
    return pool ? pool->Remove(aObject) : kNotFound;
}

} // namespace llk
