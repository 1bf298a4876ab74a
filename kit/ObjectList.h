// A doubly linked list of object references that keeps freed nodes for reuse,
// so a warmed-up list does not touch the heap.
#pragma once

#include "kit/Object.h"

namespace llk {

class cObjectList : public pObject {
public:
    // Negative when a goes before b.
    using tCompare = i4 (*)(pObject* a, pObject* b);
    using tFilter = bool (*)(pObject* aObject, void* aContext);

    // aCapacity spare nodes; aRetain: hold references (else plain pointers).
    static cObjectList* New(u4 aCapacity = 16, bool aRetain = true) {
        return Make<cObjectList>(aCapacity, aRetain);
    }
    i4 Initialize() override { return Initialize(16u, true); }
    i4 Initialize(u4 aCapacity, bool aRetain);
    ~cObjectList() override;
    u4 ClassCode() const override { return 23; }
    const char* ClassName() const override { return "cObjectList"; }

    u4 Count() const { return mCount; }
    bool Contains(pObject* aObject) const;
    // Null past the end; the caller does not own the result.
    pObject* AtIndex(u4 aIndex);
    pObject* First() const;
    // The first element, its reference handed to the caller, or null.
    pObject* RemoveFirst();

    // A null object is kOk and does nothing. kNoCapacity when no spare node is
    // left and aGrow is false.
    i4 Append(pObject* aObject, bool aGrow = true);
    i4 Prepend(pObject* aObject, bool aGrow = true);
    // kOutOfRange when aIndex is not below the count.
    i4 InsertBefore(pObject* aObject, u4 aIndex, bool aGrow = true);
    // Before the first element that compares after it; equals keep arrival order.
    i4 InsertSorted(pObject* aObject, tCompare aCompare, bool aGrow = true);

    // First match from the head; kNotFound when absent.
    i4 Remove(pObject* aObject);
    i4 Remove(u4 aIndex);
    // Removes every element for which aFilter is true.
    void Remove(tFilter aFilter, void* aContext);
    void Clear();

    u4 GetCapacity() const { return mCount + mSpareCount; }
    i4 SetCapacity(u4 aCapacity);

private:
    struct tNode;
    tNode* TakeNode(bool aGrow, i4& aStatus);
    tNode* NodeAt(u4 aIndex);
    void Link(tNode* aNode, tNode* aBefore);
    void Unlink(tNode* aNode, u4 aIndex);
    void Dispose(tNode* aNode);
    i4 AddSpare(u4 aCount);

    tNode* mHead = nullptr;
    tNode* mTail = nullptr;
    u4 mCount = 0;
    tNode* mSpare = nullptr;
    u4 mSpareCount = 0;
    tNode* mCursor = nullptr;
    u4 mCursorIndex = 0;
    bool mRetain = true;
};

} // namespace llk
