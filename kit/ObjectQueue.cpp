#include "kit/ObjectQueue.h"

#include "kit/Env.h"

namespace llk {

i4 cObjectQueue::Initialize(u4 aSpare) {
    for (u4 i = 0; i < aSpare; ++i) {
        auto* node = static_cast<tNode*>(sEnv::Malloc(sizeof(tNode), true));
        if (!node) return kNoMemory;
        node->next = mSpare;
        mSpare = node;
        ++mSpareCount;
    }
    return kOk;
}

cObjectQueue::~cObjectQueue() {
    Empty();
    while (mSpare) {
        tNode* next = mSpare->next;
        sEnv::Free(mSpare);
        mSpare = next;
    }
}

// Freed nodes are kept up to a bound, whatever number New was given.
void cObjectQueue::Recycle(tNode* aNode) {
    aNode->object = nullptr;
    if (mSpareCount < kSpareLimit) {
        aNode->next = mSpare;
        mSpare = aNode;
        ++mSpareCount;
    } else {
        sEnv::Free(aNode);
    }
}

i4 cObjectQueue::Push(pObject* aObject, u1 aPriority) {
    if (!aObject) return kNoMemory;
    tNode* node = mSpare;
    if (node) {
        mSpare = node->next;
        --mSpareCount;
    } else if (!(node = static_cast<tNode*>(sEnv::Malloc(sizeof(tNode), false)))) {
        return kNoMemory;
    }
    node->object = aObject->Retain();
    node->next = nullptr;
    tLevel& level = mLevels[aPriority];
    if (level.tail)
        level.tail->next = node;
    else
        level.head = node;
    level.tail = node;
    ++level.count;
    ++mCount;
    return kOk;
}

pObject* cObjectQueue::TakeHead(tLevel& aLevel, bool aAutorelease) {
    tNode* node = aLevel.head;
    if (!node) return nullptr;
    aLevel.head = node->next;
    if (!aLevel.head) aLevel.tail = nullptr;
    --aLevel.count;
    --mCount;
    pObject* object = node->object;
    Recycle(node);
    if (aAutorelease) object->Autorelease();
    return object;
}

pObject* cObjectQueue::Pop(bool aAutorelease) {
    if (mCount == 0) return nullptr;
    for (int level = 255; level >= 0; --level)
        if (mLevels[level].head) return TakeHead(mLevels[level], aAutorelease);
    return nullptr;
}

pObject* cObjectQueue::Pop(u1 aLevel, bool aAutorelease) {
    return TakeHead(mLevels[aLevel], aAutorelease);
}

pObject* cObjectQueue::Peek(u1 aLevel) const {
    return mLevels[aLevel].head ? mLevels[aLevel].head->object : nullptr;
}

pObject* cObjectQueue::Peek(u1* aLevel) const {
    if (mCount == 0) return nullptr;
    for (int level = 255; level >= 0; --level)
        if (mLevels[level].head) {
            if (aLevel) *aLevel = static_cast<u1>(level);
            return mLevels[level].head->object;
        }
    return nullptr;
}

bool cObjectQueue::Contains(const pObject* aObject) const {
    for (const tLevel& level : mLevels)
        for (tNode* n = level.head; n; n = n->next)
            if (n->object == aObject) return true;
    return false;
}

bool cObjectQueue::RemoveFrom(tLevel& aLevel, const pObject* aObject) {
    tNode* previous = nullptr;
    for (tNode* n = aLevel.head; n; previous = n, n = n->next) {
        if (n->object != aObject) continue;
        if (previous)
            previous->next = n->next;
        else
            aLevel.head = n->next;
        if (aLevel.tail == n) aLevel.tail = previous;
        --aLevel.count;
        --mCount;
        pObject* object = n->object;
        Recycle(n);
        object->Release();
        return true;
    }
    return false;
}

i4 cObjectQueue::Remove(const pObject* aObject, u1 aLevel) {
    return RemoveFrom(mLevels[aLevel], aObject) ? kOk : kNotFound;
}

i4 cObjectQueue::Remove(const pObject* aObject) {
    for (tLevel& level : mLevels)
        if (RemoveFrom(level, aObject)) return kOk;
    return kNotFound;
}

void cObjectQueue::Filter(tPredicate aPredicate, void* aContext) {
    for (int l = 255; l >= 0 && mCount; --l) {
        tLevel& level = mLevels[l];
        tNode* previous = nullptr;
        for (tNode* n = level.head; n;) {
            tNode* next = n->next;
            if (aPredicate(n->object, aContext)) {
                if (previous)
                    previous->next = next;
                else
                    level.head = next;
                if (level.tail == n) level.tail = previous;
                --level.count;
                --mCount;
                pObject* object = n->object;
                Recycle(n);
                object->Release();
            } else {
                previous = n;
            }
            n = next;
        }
    }
}

void cObjectQueue::Visit(tPredicate aVisitor, void* aContext) const {
    for (int l = 255; l >= 0; --l)
        for (tNode* n = mLevels[l].head; n; n = n->next)
            if (!aVisitor(n->object, aContext)) return;
}

void cObjectQueue::Visit(u1 aLevel, tPredicate aVisitor, void* aContext) const {
    for (tNode* n = mLevels[aLevel].head; n; n = n->next)
        if (!aVisitor(n->object, aContext)) return;
}

void cObjectQueue::Empty() {
    for (tLevel& level : mLevels)
        while (level.head)
            TakeHead(level, false)->Release();
}

} // namespace llk
