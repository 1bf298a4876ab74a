#include "kit/ObjectMap.h"

#include <cstring>

#include "kit/Env.h"

namespace llk {

namespace {
template <class N> int CompareKeys(u8 a, const N* b) {
    return a < b->key ? -1 : (a > b->key ? 1 : 0);
}
} // namespace

cObjectMap::tKey cObjectMap::KeyOf(const char* aName) {
    return sEnv::Crc32(aName, aName ? strlen(aName) : 0);
}

i4 cObjectMap::Initialize(u4 aCapacity, float aFactor, bool aHashed) {
    mHashed = aHashed;
    mCapacity = aCapacity;
    mTree.SetFactor(aFactor);
    for (u4 i = 0; i < aCapacity; ++i) {
        auto* node = static_cast<tNode*>(sEnv::Malloc(sizeof(tNode), true));
        if (!node) return kNoMemory;
        node->spareNext = mSpare;
        mSpare = node;
        ++mSpareCount;
    }
    return kOk;
}

cObjectMap::~cObjectMap() {
    Clear();
    while (mSpare) {
        tNode* next = mSpare->spareNext;
        sEnv::Free(mSpare);
        mSpare = next;
    }
}

cObjectMap::tNode* cObjectMap::FindKey(tKey aKey) const {
    return mTree.Find([aKey](const tNode* n) { return CompareKeys(aKey, n); });
}

cObjectMap::tNode* cObjectMap::FindName(const char* aName) const {
    if (mHashed) return FindKey(KeyOf(aName));
    return mTree.Find(
        [aName](const tNode* n) { return -static_cast<cString*>(n->value)->Compare(aName); });
}

i4 cObjectMap::Add(tKey aKey, pObject* aObject) {
    tNode* node = mSpare;
    if (node) {
        mSpare = node->spareNext;
        --mSpareCount;
    } else {
        node = static_cast<tNode*>(sEnv::Malloc(sizeof(tNode), true));
        if (!node) return kNoMemory;
    }
    node->key = aKey;
    node->value = aObject->Retain();
    if (mHashed) {
        mTree.Insert(node, [aKey](const tNode* n) { return CompareKeys(aKey, n); });
    } else {
        const char* text = static_cast<cString*>(aObject)->Chars();
        mTree.Insert(node, [text](const tNode* n) {
            return -static_cast<cString*>(n->value)->Compare(text);
        });
    }
    return kOk;
}

i4 cObjectMap::Store(tKey aKey, pObject* aObject) {
    if (!aObject) return kNoMemory;
    if (!mHashed) return kBadArgument;
    if (tNode* node = FindKey(aKey)) {
        Assign(node->value, aObject);
        return kOk;
    }
    return Add(aKey, aObject);
}

i4 cObjectMap::Store(const char* aName, pObject* aObject) {
    if (!mHashed) return kBadArgument;
    return Store(KeyOf(aName), aObject);
}

i4 cObjectMap::Store(cString* aString) {
    if (!aString) return kNoMemory;
    if (mHashed) return Store(aString->Chars(), aString);
    if (tNode* node = FindName(aString->Chars())) {
        Assign(node->value, static_cast<pObject*>(aString));
        return kOk;
    }
    return Add(aString->Hash(), aString);
}

pObject* cObjectMap::Fetch(tKey aKey) const {
    if (!mHashed) return nullptr;
    tNode* node = FindKey(aKey);
    return node ? node->value : nullptr;
}

pObject* cObjectMap::Fetch(const char* aName) const {
    tNode* node = FindName(aName);
    return node ? node->value : nullptr;
}

bool cObjectMap::Contains(const pObject* aObject, tKey* aKey) const {
    for (tNode* n = mTree.head; n; n = n->nextOrder)
        if (n->value == aObject) {
            if (aKey) *aKey = n->key;
            return true;
        }
    return false;
}

cObjectMap::tNode* cObjectMap::NodeAt(u4 aIndex) {
    u4 count = mTree.count;
    if (aIndex >= count) return nullptr;
    tNode* node;
    if (aIndex == 0) {
        node = mTree.head;
    } else if (aIndex == count - 1) {
        node = mTree.tail;
    } else {
        // From the cursor or the nearer end, whichever is the shorter way.
        u4 from = 0;
        node = mTree.head;
        u4 best = aIndex;
        if (count - 1 - aIndex < best) {
            best = count - 1 - aIndex;
            node = mTree.tail;
            from = count - 1;
        }
        if (mCursor) {
            u4 distance = mCursorIndex > aIndex ? mCursorIndex - aIndex : aIndex - mCursorIndex;
            if (distance < best) {
                node = mCursor;
                from = mCursorIndex;
            }
        }
        for (; from < aIndex; ++from)
            node = node->nextOrder;
        for (; from > aIndex; --from)
            node = node->prevOrder;
    }
    mCursor = node;
    mCursorIndex = aIndex;
    return node;
}

pObject* cObjectMap::AtIndex(u4 aIndex, tKey* aKey) {
    tNode* node = NodeAt(aIndex);
    if (!node) return nullptr;
    if (aKey) *aKey = node->key;
    return node->value;
}

void cObjectMap::Drop(tNode* aNode, bool aRelease) {
    mCursor = nullptr;
    mCursorIndex = 0;
    if (mHashed) {
        mTree.Remove(aNode, [](const tNode* moved) {
            tKey key = moved->key;
            return [key](const tNode* n) { return CompareKeys(key, n); };
        });
    } else {
        mTree.Remove(aNode, [](const tNode* moved) {
            const char* text = static_cast<cString*>(moved->value)->Chars();
            return
                [text](const tNode* n) { return -static_cast<cString*>(n->value)->Compare(text); };
        });
    }
    pObject* value = aNode->value;
    aNode->value = nullptr;
    if (mCapacity != 0 && mSpareCount >= mCapacity) {
        sEnv::Free(aNode);
    } else {
        aNode->spareNext = mSpare;
        mSpare = aNode;
        ++mSpareCount;
    }
    if (aRelease && value) value->Release();
}

bool cObjectMap::Remove(tKey aKey, bool aRelease) {
    tNode* node = mHashed ? FindKey(aKey) : nullptr;
    if (!node) return false;
    Drop(node, aRelease);
    return true;
}

bool cObjectMap::Remove(const char* aName, bool aRelease) {
    tNode* node = FindName(aName);
    if (!node) return false;
    Drop(node, aRelease);
    return true;
}

bool cObjectMap::Remove(const pObject* aObject, bool aRelease) {
    bool removed = false;
    for (tNode* n = mTree.head; n;) {
        tNode* next = n->nextOrder;
        if (n->value == aObject) {
            Drop(n, aRelease);
            removed = true;
        }
        n = next;
    }
    return removed;
}

void cObjectMap::Clear() {
    tNode* n = mTree.head;
    mTree.Reset();
    mCursor = nullptr;
    mCursorIndex = 0;
    while (n) {
        tNode* next = n->nextOrder;
        pObject* value = n->value;
        n->value = nullptr;
        if (mCapacity != 0 && mSpareCount >= mCapacity) {
            sEnv::Free(n);
        } else {
            n->spareNext = mSpare;
            mSpare = n;
            ++mSpareCount;
        }
        if (value) value->Release();
        n = next;
    }
}

} // namespace llk
