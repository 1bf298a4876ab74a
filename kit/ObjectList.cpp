#include "kit/ObjectList.h"

#include "kit/Env.h"

namespace llk {

struct cObjectList::tNode {
    pObject* object;
    tNode* prev;
    tNode* next;
};

i4 cObjectList::Initialize(u4 aCapacity, bool aRetain) {
    mRetain = aRetain;
    return AddSpare(aCapacity);
}

cObjectList::~cObjectList() {
    Clear();
    while (mSpare) {
        tNode* next = mSpare->next;
        sEnv::Free(mSpare);
        mSpare = next;
    }
}

i4 cObjectList::AddSpare(u4 aCount) {
    for (u4 i = 0; i < aCount; ++i) {
        auto* node = static_cast<tNode*>(sEnv::Malloc(sizeof(tNode), true));
        if (!node) return kNoMemory;
        node->next = mSpare;
        mSpare = node;
        ++mSpareCount;
    }
    return kOk;
}

cObjectList::tNode* cObjectList::TakeNode(bool aGrow, i4& aStatus) {
    aStatus = kOk;
    if (mSpare) {
        tNode* node = mSpare;
        mSpare = node->next;
        --mSpareCount;
        return node;
    }
    if (!aGrow) {
        aStatus = kNoCapacity;
        return nullptr;
    }
    auto* node = static_cast<tNode*>(sEnv::Malloc(sizeof(tNode), true));
    if (!node) aStatus = kNoMemory;
    return node;
}

void cObjectList::Dispose(tNode* aNode) {
    pObject* object = aNode->object;
    aNode->object = nullptr;
    aNode->prev = nullptr;
    aNode->next = mSpare;
    mSpare = aNode;
    ++mSpareCount;
    if (mRetain && object) object->Release();
}

// Links aNode in front of aBefore (null: at the tail).
void cObjectList::Link(tNode* aNode, tNode* aBefore) {
    aNode->next = aBefore;
    aNode->prev = aBefore ? aBefore->prev : mTail;
    if (aNode->prev)
        aNode->prev->next = aNode;
    else
        mHead = aNode;
    if (aBefore)
        aBefore->prev = aNode;
    else
        mTail = aNode;
    ++mCount;
    // Anything after the new node moved up by one place.
    if (mCursor && aBefore) {
        mCursor = nullptr;
        mCursorIndex = 0;
    }
}

void cObjectList::Unlink(tNode* aNode, u4 aIndex) {
    if (mCursor == aNode) {
        if (aNode->next) {
            mCursor = aNode->next;
        } else {
            mCursor = aNode->prev;
            if (mCursor) --mCursorIndex;
        }
    } else if (mCursor && mCursorIndex > aIndex) {
        --mCursorIndex;
    }
    if (aNode->prev)
        aNode->prev->next = aNode->next;
    else
        mHead = aNode->next;
    if (aNode->next)
        aNode->next->prev = aNode->prev;
    else
        mTail = aNode->prev;
    --mCount;
    if (mCount == 0) {
        mCursor = nullptr;
        mCursorIndex = 0;
    }
}

cObjectList::tNode* cObjectList::NodeAt(u4 aIndex) {
    if (aIndex >= mCount) return nullptr;
    tNode* node;
    if (aIndex == 0) {
        node = mHead;
    } else if (aIndex == mCount - 1) {
        node = mTail;
    } else {
        // Start from whichever of head, cursor and tail is nearest.
        u4 from = 0;
        node = mHead;
        u4 best = aIndex;
        if (mCount - 1 - aIndex < best) {
            best = mCount - 1 - aIndex;
            node = mTail;
            from = mCount - 1;
        }
        if (mCursor) {
            u4 distance = mCursorIndex > aIndex ? mCursorIndex - aIndex : aIndex - mCursorIndex;
            if (distance < best) {
                node = mCursor;
                from = mCursorIndex;
            }
        }
        while (from < aIndex) {
            node = node->next;
            ++from;
        }
        while (from > aIndex) {
            node = node->prev;
            --from;
        }
    }
    mCursor = node;
    mCursorIndex = aIndex;
    return node;
}

bool cObjectList::Contains(pObject* aObject) const {
    for (tNode* n = mHead; n; n = n->next)
        if (n->object == aObject) return true;
    return false;
}

pObject* cObjectList::AtIndex(u4 aIndex) {
    tNode* node = NodeAt(aIndex);
    return node ? node->object : nullptr;
}

pObject* cObjectList::First() const {
    return mHead ? mHead->object : nullptr;
}

pObject* cObjectList::RemoveFirst() {
    if (!mHead) return nullptr;
    tNode* node = mHead;
    pObject* object = node->object;
    Unlink(node, 0);
    node->object = nullptr; // the reference goes to the caller
    Dispose(node);
    return object;
}

i4 cObjectList::Append(pObject* aObject, bool aGrow) {
    if (!aObject) return kOk;
    i4 status;
    tNode* node = TakeNode(aGrow, status);
    if (!node) return status;
    node->object = mRetain ? aObject->Retain() : aObject;
    Link(node, nullptr);
    return kOk;
}

i4 cObjectList::Prepend(pObject* aObject, bool aGrow) {
    if (!aObject) return kOk;
    i4 status;
    tNode* node = TakeNode(aGrow, status);
    if (!node) return status;
    node->object = mRetain ? aObject->Retain() : aObject;
    Link(node, mHead);
    return kOk;
}

i4 cObjectList::InsertBefore(pObject* aObject, u4 aIndex, bool aGrow) {
    if (aIndex >= mCount) return kOutOfRange;
    if (!aObject) return kOk;
    tNode* before = NodeAt(aIndex);
    i4 status;
    tNode* node = TakeNode(aGrow, status);
    if (!node) return status;
    node->object = mRetain ? aObject->Retain() : aObject;
    Link(node, before);
    return kOk;
}

i4 cObjectList::InsertSorted(pObject* aObject, tCompare aCompare, bool aGrow) {
    if (!aObject) return kOk;
    if (!mHead) return Append(aObject, aGrow);
    if (aCompare(aObject, mHead->object) < 0) return Prepend(aObject, aGrow);
    if (aCompare(aObject, mTail->object) > 0) return Append(aObject, aGrow);
    for (tNode* n = mHead->next; n; n = n->next) {
        if (aCompare(aObject, n->object) < 0) {
            i4 status;
            tNode* node = TakeNode(aGrow, status);
            if (!node) return status;
            node->object = mRetain ? aObject->Retain() : aObject;
            Link(node, n);
            return kOk;
        }
    }
    // Equal to the tail: nothing is inserted. Callers avoid such ties.
    return kOk;
}

i4 cObjectList::Remove(pObject* aObject) {
    if (!aObject) return kOk;
    u4 index = 0;
    for (tNode* n = mHead; n; n = n->next, ++index)
        if (n->object == aObject) {
            Unlink(n, index);
            Dispose(n);
            return kOk;
        }
    return kNotFound;
}

i4 cObjectList::Remove(u4 aIndex) {
    tNode* node = NodeAt(aIndex);
    if (!node) return kNotFound;
    Unlink(node, aIndex);
    Dispose(node);
    return kOk;
}

void cObjectList::Remove(tFilter aFilter, void* aContext) {
    u4 index = 0;
    for (tNode* n = mHead; n;) {
        tNode* next = n->next;
        if (aFilter(n->object, aContext)) {
            Unlink(n, index);
            Dispose(n);
        } else {
            ++index;
        }
        n = next;
    }
}

void cObjectList::Clear() {
    while (mHead) {
        tNode* node = mHead;
        Unlink(node, 0);
        Dispose(node);
    }
}

i4 cObjectList::SetCapacity(u4 aCapacity) {
    if (aCapacity < mCount) aCapacity = mCount;
    u4 current = GetCapacity();
    if (aCapacity > current) return AddSpare(aCapacity - current);
    for (u4 drop = current - aCapacity; drop > 0 && mSpare; --drop) {
        tNode* node = mSpare;
        mSpare = node->next;
        --mSpareCount;
        sEnv::Free(node);
    }
    return kOk;
}

} // namespace llk
