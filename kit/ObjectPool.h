// Pools of reusable objects: a FIFO with an optional limit, and pools named
// by tag.
#pragma once

#include "kit/ObjectList.h"
#include "kit/ObjectMap.h"

namespace llk {

class cObjectPool : public pObject {
public:
    // aLimit 0: unlimited, and then no spare nodes are made either.
    static cObjectPool* New(u4 aInitial = 16, u4 aLimit = 0) {
        return Make<cObjectPool>(aInitial, aLimit);
    }
    i4 Initialize() override { return Initialize(16u, 0u); }
    i4 Initialize(u4 aInitial, u4 aLimit);
    ~cObjectPool() override;
    u4 ClassCode() const override { return 27; }
    const char* ClassName() const override { return "cObjectPool"; }

    // kNoCapacity at the limit, and the object is not retained.
    i4 Push(pObject* aObject);
    // The oldest object, autoreleased, or null.
    pObject* Pop();
    i4 Remove(pObject* aObject) { return mList->Remove(aObject); }
    u4 Count() const { return mList->Count(); }
    u4 Limit() const { return mLimit; }
    // A lower limit drops objects from the head.
    void SetLimit(u4 aLimit);

private:
    cObjectList* mList = nullptr;
    u4 mLimit = 0;
};

class cTaggedPool : public pObject {
public:
    static cTaggedPool* New() { return Make<cTaggedPool>(); }
    i4 Initialize() override;
    ~cTaggedPool() override;
    u4 ClassCode() const override { return 51; }
    const char* ClassName() const override { return "cTaggedPool"; }

    i4 Push(const char* aTag, pObject* aObject);
    // Autoreleased, or null for an unknown tag or an empty pool.
    pObject* Pop(const char* aTag);
    i4 SetLimit(const char* aTag, u4 aLimit);
    u4 Count(const char* aTag) const;
    i4 Remove(const char* aTag, pObject* aObject);

private:
    cObjectPool* PoolOf(const char* aTag);
    cObjectMap* mPools = nullptr;
};

} // namespace llk
