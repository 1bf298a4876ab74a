// Objects stored under random unique ids from a range.
#pragma once

#include "kit/ObjectList.h"
#include "kit/ObjectMap.h"

namespace llk {

class cObjectHeap : public pObject {
public:
    // aRange null: ids from 1 to 0xFFFFFFFF.
    static cObjectHeap* New(u4 aCapacity = 16, const tRangeWord* aRange = nullptr) {
        return Make<cObjectHeap>(aCapacity, aRange);
    }
    i4 Initialize() override { return Initialize(16u, nullptr); }
    i4 Initialize(u4 aCapacity, const tRangeWord* aRange);
    ~cObjectHeap() override;
    u4 ClassCode() const override { return 43; }
    const char* ClassName() const override { return "cObjectHeap"; }

    // Draws ids until one is unused; writes it to aId. The range must not be full.
    i4 Store(pObject* aObject, u4* aId);
    pObject* Fetch(u4 aId) const { return mMap->Fetch(static_cast<cObjectMap::tKey>(aId)); }
    bool Contains(u4 aId) const { return Fetch(aId) != nullptr; }
    bool Contains(const pObject* aObject, u4* aId) const;
    bool Remove(u4 aId, bool aRelease = true) {
        return mMap->Remove(cObjectMap::tKey{aId}, aRelease);
    }
    bool Remove(const pObject* aObject, bool aRelease = true) {
        return mMap->Remove(aObject, aRelease);
    }
    pObject* AtIndex(u4 aIndex, u4* aId);
    u4 Count() const { return mMap->Count(); }
    void Clear() { mMap->Clear(); }
    // A new list of every stored object.
    cObjectList* Snapshot();

private:
    tRangeWord mRange{1, 0xFFFFFFFFu};
    cObjectMap* mMap = nullptr;
};

} // namespace llk
