// The notification walks of cRuntime. The poked list is both the
// visited set of a walk and its result; each node carries the generation of
// the poked list it was last put on, so "already there" costs nothing. The
// walk keeps its own stack, so a long chain of dependents cannot exhaust the
// C stack.
#include "gik/Notification.h"

#include <vector>

#include "gik/Node.h"
#include "gik/NodeTable.h"
#include "gik/Runtime.h"
#include "kit/ObjectList.h"

namespace gik {

i4 cNotification::Initialize(u4 aType, void* aOriginator, llk::pObject* aValue) {
    mType = aType;
    mOriginator = aOriginator;
    llk::Assign(mValue, aValue);
    return kOk;
}

cNotification::~cNotification() {
    llk::ReleaseAndClear(mValue);
}

bool cRuntime::IsPoked(const pNode* aNode) const {
    return aNode->mPokedMark == mPokeGeneration;
}

void cRuntime::AddPoked(pNode* aNode) {
    if (IsPoked(aNode)) return;
    aNode->mPokedMark = mPokeGeneration;
    mPoked->Append(aNode);
}

void cRuntime::ClearPoked() {
    if (mPoked) mPoked->Clear();
    if (++mPokeGeneration == 0) {
        // After a wrap, no node may look visited.
        for (u4 i = 0; i < NodeCount(); ++i)
            NodeAt(i)->mPokedMark = 0;
        mPokeGeneration = 1;
    }
}

void cRuntime::BeginWalk() {
    // A list emptied from outside also empties the visited set.
    if (mPoked && mPoked->Count() == 0) ClearPoked();
}

void cRuntime::Propagate(u4 aType, llk::pObject* aValue, pNode* aOriginator, pNode* aNode) {
    if (!aNode || !mPoked) return;
    llk::cObjectList* dependents = aNode->Dependents();
    if (!dependents) return; // no notification is made without a list
    BeginWalk();
    cNotification notification(aType, aOriginator, aValue);
    struct tLevel {
        llk::cObjectList* list;
        u4 index;
        pNode* excluded;
        pNode* source;
    };
    try {
        std::vector<tLevel> stack;
        stack.push_back({dependents, 0, aOriginator, aNode});
        while (!stack.empty()) {
            tLevel& level = stack.back();
            if (level.index >= level.list->Count()) {
                stack.pop_back();
                continue;
            }
            auto* d = static_cast<pNode*>(level.list->AtIndex(level.index++));
            if (!d || d == level.excluded || IsPoked(d)) continue;
            pNode* source = level.source;
            AddPoked(d);
            notification.SetSource(source);
            d->OnInvalidate(this, &notification);
            if (llk::cObjectList* next = d->Dependents()) stack.push_back({next, 0, source, d});
        }
    } catch (...) {
        // Out of memory for the walk's stack: what was reached is poked.
    }
}

void cRuntime::Invalidate(u4 aType, void* aOriginator, pNode* aNode) {
    (void)aType;
    (void)aOriginator;
    if (!aNode || !mPoked) return;
    BeginWalk();
    // A full invalidation: type 1, no originator, the node itself first.
    cNotification notification(cNotification::kValueChanged, nullptr, nullptr);
    notification.SetSource(aNode);
    aNode->OnInvalidate(this, &notification);
    AddPoked(aNode);
    Propagate(cNotification::kValueChanged, nullptr, nullptr, aNode);
}

void cRuntime::Broadcast(u4 aMask, u4 aType, llk::pObject* aValue, pNode* aSender) {
    if (!mNodes) return;
    cNotification notification(aType, aSender, aValue);
    notification.SetSource(aSender);
    u4 count = mNodes->Count();
    for (u4 i = 0; i < count; ++i) {
        pNode* node = mNodes->At(i);
        if (!node || node == aSender) continue;
        if (aMask != 0 && (aMask & node->ClassType()) == 0) continue;
        node->OnBroadcast(this, &notification);
    }
}

llk::cObjectList* cRuntime::Poked() {
    if (!mPoked) return nullptr;
    // Only features stay; the others leave the visited set with the list.
    for (u4 i = mPoked->Count(); i-- > 0;) {
        auto* node = static_cast<pNode*>(mPoked->AtIndex(i));
        if (node && !node->mListed) {
            node->mPokedMark = 0;
            mPoked->Remove(i);
        }
    }
    return mPoked;
}

} // namespace gik
