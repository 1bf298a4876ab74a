#include "kit/ObjectHeap.h"

#include "kit/Env.h"

namespace llk {

i4 cObjectHeap::Initialize(u4 aCapacity, const tRangeWord* aRange) {
    if (aRange) mRange = *aRange;
    mMap = Retained(cObjectMap::New(aCapacity, 0.0f, true));
    return mMap ? kOk : kNoMemory;
}

cObjectHeap::~cObjectHeap() {
    ReleaseAndClear(mMap);
}

i4 cObjectHeap::Store(pObject* aObject, u4* aId) {
    if (!aObject) return kNoMemory;
    u4 id;
    do {
        id = sEnv::Random(mRange.first, mRange.last);
    } while (mMap->Contains(cObjectMap::tKey{id}));
    i4 status = mMap->Store(cObjectMap::tKey{id}, aObject);
    if (status == kOk && aId) *aId = id;
    return status;
}

bool cObjectHeap::Contains(const pObject* aObject, u4* aId) const {
    cObjectMap::tKey key = 0;
    if (!mMap->Contains(aObject, &key)) return false;
    if (aId) *aId = static_cast<u4>(key);
    return true;
}

pObject* cObjectHeap::AtIndex(u4 aIndex, u4* aId) {
    cObjectMap::tKey key = 0;
    pObject* object = mMap->AtIndex(aIndex, &key);
    if (object && aId) *aId = static_cast<u4>(key);
    return object;
}

cObjectList* cObjectHeap::Snapshot() {
    cObjectList* list = cObjectList::New(Count(), true);
    if (!list) return nullptr;
    for (u4 i = 0; pObject* object = mMap->AtIndex(i, nullptr); ++i)
        list->Append(object, true);
    return list;
}

} // namespace llk
