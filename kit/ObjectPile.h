// A set of objects keyed by their address.
#pragma once

#include "kit/ObjectMap.h"

namespace llk {

class cObjectPile : public pObject {
public:
    static cObjectPile* New(u4 aCapacity = 16) { return Make<cObjectPile>(aCapacity); }
    i4 Initialize() override { return Initialize(16u); }
    i4 Initialize(u4 aCapacity);
    ~cObjectPile() override { ReleaseAndClear(mMap); }
    u4 ClassCode() const override { return 26; }
    const char* ClassName() const override { return "cObjectPile"; }

    // kOk also when already present.
    i4 Store(pObject* aObject);
    // kOk or kNotFound.
    i4 Remove(pObject* aObject, bool aRelease = true);
    bool Contains(const pObject* aObject) const { return mMap->Contains(KeyOf(aObject)); }
    pObject* AtIndex(u4 aIndex) { return mMap->AtIndex(aIndex); }
    u4 Count() const { return mMap->Count(); }
    void Clear() { mMap->Clear(); }

private:
    static cObjectMap::tKey KeyOf(const pObject* aObject) {
        return reinterpret_cast<uintptr_t>(aObject);
    }
    cObjectMap* mMap = nullptr;
};

// Object references under two keys: an outer and an inner one, each a name
// (by its CRC-32) or a number.
class cObjectGrid : public pObject {
public:
    using tKey = cObjectMap::tKey;

    static cObjectGrid* New(u4 aOuterCapacity = 8, u4 aInnerCapacity = 8) {
        return Make<cObjectGrid>(aOuterCapacity, aInnerCapacity);
    }
    i4 Initialize() override { return Initialize(8u, 8u); }
    i4 Initialize(u4 aOuterCapacity, u4 aInnerCapacity);
    ~cObjectGrid() override { ReleaseAndClear(mOuter); }
    u4 ClassCode() const override { return 53; }
    const char* ClassName() const override { return "cObjectGrid"; }

    i4 Store(tKey aOuter, tKey aInner, pObject* aObject);
    i4 Store(const char* aOuter, tKey aInner, pObject* aObject) {
        return Store(cObjectMap::KeyOf(aOuter), aInner, aObject);
    }
    i4 Store(const char* aOuter, const char* aInner, pObject* aObject) {
        return Store(cObjectMap::KeyOf(aOuter), cObjectMap::KeyOf(aInner), aObject);
    }
    pObject* Fetch(tKey aOuter, tKey aInner) const;
    pObject* Fetch(const char* aOuter, tKey aInner) const {
        return Fetch(cObjectMap::KeyOf(aOuter), aInner);
    }
    bool Contains(tKey aOuter, tKey aInner) const { return Fetch(aOuter, aInner) != nullptr; }
    u4 Count(const char* aOuter) const;
    // Every entry of every inner map.
    u4 Count() const;
    // Removes the inner map too when it becomes empty.
    bool Remove(tKey aOuter, tKey aInner, bool aRelease = true);
    bool Remove(const char* aOuter, tKey aInner, bool aRelease = true) {
        return Remove(cObjectMap::KeyOf(aOuter), aInner, aRelease);
    }
    pObject* AtIndex(const char* aOuter, u4 aIndex, tKey* aInner);
    // Walks the inner maps in insertion order.
    pObject* AtIndex(u4 aIndex, tKey* aOuter, tKey* aInner);
    void Clear();

private:
    cObjectMap* Inner(tKey aOuter) const { return static_cast<cObjectMap*>(mOuter->Fetch(aOuter)); }
    cObjectMap* mOuter = nullptr;
    u4 mInnerCapacity = 8;
};

// A fixed row of object slots.
class cObjectTuple : public pObject {
public:
    static cObjectTuple* New(u4 aSize) { return Make<cObjectTuple>(aSize); }
    i4 Initialize(u4 aSize);
    ~cObjectTuple() override;
    u4 ClassCode() const override { return 40; }
    const char* ClassName() const override { return "cObjectTuple"; }

    // kOutOfRange past the end; null empties the slot.
    i4 Assign(u4 aIndex, pObject* aObject);
    pObject* AtIndex(u4 aIndex) const { return aIndex < mSize ? mSlots[aIndex] : nullptr; }
    // Occupied slots.
    u4 Count() const;
    u4 Size() const { return mSize; }

private:
    pObject** mSlots = nullptr;
    u4 mSize = 0;
};

} // namespace llk
