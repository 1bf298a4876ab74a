// Object references by key: hashed maps key by number (a name by its CRC-32),
// unhashed maps are ordered sets of strings keyed by their own text.
// Entries can also be walked in order of first insertion.
#pragma once

#include "kit/SearchTree.h"
#include "kit/String.h"

namespace llk {

class cObjectMap : public pObject {
public:
    // Keys are pointer-wide, so maps keyed by object address stay exact.
    using tKey = u8;

    // aCapacity: spare nodes made at once and most kept later (0: no limit,
    // none made). aFactor: balance factor in [0, 1], 0 leaves insertion
    // unbalanced.
    static cObjectMap* New(u4 aCapacity = 16, float aFactor = 0.0f, bool aHashed = true) {
        return Make<cObjectMap>(aCapacity, aFactor, aHashed);
    }
    i4 Initialize() override { return Initialize(16u, 0.0f, true); }
    i4 Initialize(u4 aCapacity, float aFactor, bool aHashed);
    ~cObjectMap() override;
    u4 ClassCode() const override { return 25; }
    const char* ClassName() const override { return "cObjectMap"; }

    static tKey KeyOf(const char* aName);

    // An existing key keeps its place and swaps the value.
    i4 Store(tKey aKey, pObject* aObject);
    i4 Store(const char* aName, pObject* aObject);
    // In an unhashed map: the string is key and value.
    i4 Store(cString* aString);

    pObject* Fetch(tKey aKey) const;
    pObject* Fetch(const char* aName) const;
    bool Contains(tKey aKey) const { return Fetch(aKey) != nullptr; }
    bool Contains(const char* aName) const { return Fetch(aName) != nullptr; }
    // By value, walking the insertion order; writes the key of the hit.
    bool Contains(const pObject* aObject, tKey* aKey) const;
    // Entry aIndex in insertion order, or null.
    pObject* AtIndex(u4 aIndex, tKey* aKey = nullptr);

    // aRelease false hands the map's reference to the caller.
    bool Remove(tKey aKey, bool aRelease = true);
    bool Remove(const char* aName, bool aRelease = true);
    // Removes every entry that holds aObject.
    bool Remove(const pObject* aObject, bool aRelease);
    void Clear();
    u4 Count() const { return mTree.count; }
    bool IsHashed() const { return mHashed; }

private:
    struct tNode {
        tKey key;
        pObject* value;
        tNode* parent;
        tNode* left;
        tNode* right;
        tNode* prevOrder;
        tNode* nextOrder;
        tNode* sparePrev;
        tNode* spareNext;
    };

    tNode* FindKey(tKey aKey) const;
    tNode* FindName(const char* aName) const;
    i4 Add(tKey aKey, pObject* aObject);
    void Drop(tNode* aNode, bool aRelease);
    tNode* NodeAt(u4 aIndex);

    tSearchTree<tNode> mTree;
    bool mHashed = true;
    u4 mCapacity = 0;
    tNode* mSpare = nullptr;
    u4 mSpareCount = 0;
    tNode* mCursor = nullptr;
    u4 mCursorIndex = 0;
};

} // namespace llk
