// 256 priority levels of FIFO queues of object references; 255 is served first.
#pragma once

#include "kit/Object.h"

namespace llk {

class cObjectQueue : public pObject {
public:
    using tPredicate = bool (*)(pObject* aObject, void* aContext);

    static cObjectQueue* New(u4 aSpare = 16) { return Make<cObjectQueue>(aSpare); }
    i4 Initialize() override { return Initialize(16u); }
    i4 Initialize(u4 aSpare);
    ~cObjectQueue() override;
    u4 ClassCode() const override { return 28; }
    const char* ClassName() const override { return "cObjectQueue"; }

    // Retains; a null object is kNoMemory.
    i4 Push(pObject* aObject, u1 aPriority);
    // The oldest entry of the highest non-empty level, or null. With
    // aAutorelease the reference goes to the pool, else to the caller.
    pObject* Pop(bool aAutorelease);
    pObject* Pop(u1 aLevel, bool aAutorelease);
    pObject* Peek(u1 aLevel) const;
    // Head of the highest non-empty level; writes that level when given.
    pObject* Peek(u1* aLevel) const;
    bool Contains(const pObject* aObject) const;
    u4 Count() const { return mCount; }
    // First match in that level, or in any level from 0 up.
    i4 Remove(const pObject* aObject, u1 aLevel);
    i4 Remove(const pObject* aObject);
    // Removes every entry the predicate picks, levels 255 down to 0.
    void Filter(tPredicate aPredicate, void* aContext);
    // Visits until the visitor answers false.
    void Visit(tPredicate aVisitor, void* aContext) const;
    void Visit(u1 aLevel, tPredicate aVisitor, void* aContext) const;
    // Releases everything, level 0 first.
    void Empty();

private:
    struct tNode {
        pObject* object;
        tNode* next;
    };
    struct tLevel {
        u4 count;
        tNode* head;
        tNode* tail;
    };
    static constexpr u4 kSpareLimit = 64;

    void Recycle(tNode* aNode);
    pObject* TakeHead(tLevel& aLevel, bool aAutorelease);
    bool RemoveFrom(tLevel& aLevel, const pObject* aObject);

    tLevel mLevels[256] = {};
    u4 mCount = 0;
    u4 mSpareCount = 0;
    tNode* mSpare = nullptr;
};

} // namespace llk
