#include "kit/ObjectPile.h"

#include "kit/Env.h"

namespace llk {

i4 cObjectPile::Initialize(u4 aCapacity) {
    mMap = Retained(cObjectMap::New(aCapacity, 0.0f, true));
    return mMap ? kOk : kNoMemory;
}

i4 cObjectPile::Store(pObject* aObject) {
    if (!aObject) return kNoMemory;
    if (Contains(aObject)) return kOk;
    return mMap->Store(KeyOf(aObject), aObject);
}

i4 cObjectPile::Remove(pObject* aObject, bool aRelease) {
    return mMap->Remove(KeyOf(aObject), aRelease) ? kOk : kNotFound;
}

i4 cObjectGrid::Initialize(u4 aOuterCapacity, u4 aInnerCapacity) {
    mInnerCapacity = aInnerCapacity;
    mOuter = Retained(cObjectMap::New(aOuterCapacity, 0.0f, true));
    return mOuter ? kOk : kNoMemory;
}

i4 cObjectGrid::Store(tKey aOuter, tKey aInner, pObject* aObject) {
    if (!aObject) return kNoMemory;
    cObjectMap* inner = Inner(aOuter);
    if (!inner) {
        inner = cObjectMap::New(mInnerCapacity, 0.0f, true);
        if (!inner) return kNoMemory;
        i4 status = mOuter->Store(aOuter, inner);
        if (status != kOk) return status;
    }
    i4 status = inner->Store(aInner, aObject);
    if (status != kOk && inner->Count() == 0) mOuter->Remove(aOuter, true);
    return status;
}

pObject* cObjectGrid::Fetch(tKey aOuter, tKey aInner) const {
    cObjectMap* inner = Inner(aOuter);
    return inner ? inner->Fetch(aInner) : nullptr;
}

u4 cObjectGrid::Count(const char* aOuter) const {
    cObjectMap* inner = Inner(cObjectMap::KeyOf(aOuter));
    return inner ? inner->Count() : 0;
}

u4 cObjectGrid::Count() const {
    u4 total = 0;
    for (u4 i = 0; auto* inner = static_cast<cObjectMap*>(mOuter->AtIndex(i)); ++i)
        total += inner->Count();
    return total;
}

bool cObjectGrid::Remove(tKey aOuter, tKey aInner, bool aRelease) {
    cObjectMap* inner = Inner(aOuter);
    if (!inner || !inner->Remove(aInner, aRelease)) return false;
    if (inner->Count() == 0) mOuter->Remove(aOuter, true);
    return true;
}

pObject* cObjectGrid::AtIndex(const char* aOuter, u4 aIndex, tKey* aInner) {
    cObjectMap* inner = Inner(cObjectMap::KeyOf(aOuter));
    return inner ? inner->AtIndex(aIndex, aInner) : nullptr;
}

pObject* cObjectGrid::AtIndex(u4 aIndex, tKey* aOuter, tKey* aInner) {
    tKey outer = 0;
    for (u4 i = 0; auto* inner = static_cast<cObjectMap*>(mOuter->AtIndex(i, &outer)); ++i) {
        if (aIndex < inner->Count()) {
            if (aOuter) *aOuter = outer;
            return inner->AtIndex(aIndex, aInner);
        }
        aIndex -= inner->Count();
    }
    return nullptr;
}

void cObjectGrid::Clear() {
    for (u4 i = 0; auto* inner = static_cast<cObjectMap*>(mOuter->AtIndex(i)); ++i)
        inner->Clear();
    mOuter->Clear();
}

i4 cObjectTuple::Initialize(u4 aSize) {
    mSlots = static_cast<pObject**>(sEnv::Malloc(sizeof(pObject*) * (aSize ? aSize : 1), true));
    if (!mSlots) return kNoMemory;
    mSize = aSize;
    return kOk;
}

cObjectTuple::~cObjectTuple() {
    for (u4 i = 0; mSlots && i < mSize; ++i)
        if (mSlots[i]) mSlots[i]->Release();
    sEnv::Free(mSlots);
}

i4 cObjectTuple::Assign(u4 aIndex, pObject* aObject) {
    if (aIndex >= mSize) return kOutOfRange;
    llk::Assign(mSlots[aIndex], aObject);
    return kOk;
}

u4 cObjectTuple::Count() const {
    u4 count = 0;
    for (u4 i = 0; i < mSize; ++i)
        if (mSlots[i]) ++count;
    return count;
}

} // namespace llk
