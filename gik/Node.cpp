#include "gik/Node.h"

#include <cstring>
#include <tinyxml.h>
#include <unordered_set>
#include <vector>

#include "gik/Nesting.h"
#include "gik/Notification.h"
#include "gik/Runtime.h"
#include "gik/Shared.h"
#include "gik/Text.h"
#include "gik/Value.h"
#include "kit/ObjectList.h"
#include "kit/String.h"

namespace gik {

pNode::~pNode() {
    llk::ReleaseAndClear(mName);
    llk::ReleaseAndClear(mNameSpace);
    llk::ReleaseAndClear(mUnit);
    llk::ReleaseAndClear(mDisplayName);
    llk::ReleaseAndClear(mDescription);
    llk::ReleaseAndClear(mToolTip);
    llk::ReleaseAndClear(mRepresentation);
    llk::ReleaseAndClear(mPath);
    llk::ReleaseAndClear(mLoot);
    llk::ReleaseAndClear(mDependents);
    llk::ReleaseAndClear(mSelected);
    llk::ReleaseAndClear(mSelectedNames);
    llk::ReleaseAndClear(mInvalidatorNames);
}

namespace {

// Interned text for an optional element or attribute; null text stays null.
i4 Intern(cRuntime* aRuntime, const char* aText, llk::cString*& aSlot) {
    if (!aText) return kOk;
    llk::cString* s = aRuntime->CacheString(aText, true);
    if (!s) return kNoMemory;
    llk::ReleaseAndClear(aSlot);
    aSlot = s;
    return kOk;
}

i4 Own(const char* aText, llk::cString*& aSlot) {
    if (!aText) return kOk;
    llk::cString* s = NewOwnedText(aText);
    if (!s) return kNoMemory;
    llk::ReleaseAndClear(aSlot);
    aSlot = s;
    return kOk;
}

// The names of every aName child with text, prefixed and interned.
i4 NameList(cRuntime* aRuntime, const TiXmlElement* aElement, const char* aName,
            llk::cObjectList*& aList, bool& aAny) {
    aAny = false;
    for (const TiXmlElement* c = sText::Child(aElement, aName); c;
         c = c->NextSiblingElement(aName)) {
        aAny = true;
        const char* text = c->GetText();
        if (!text) continue;
        if (!aList) {
            aList = llk::Retained(llk::cObjectList::New(16, true));
            if (!aList) return kNoMemory;
        }
        llk::cString* name = aRuntime->InternPrefixed(text);
        if (!name || aList->Append(name) != llk::kOk) return kNoMemory;
    }
    return kOk;
}

} // namespace

i4 pNode::ParseValue(cRuntime* aRuntime, const TiXmlElement* aElement, const char* aName,
                     tValue& aValue, tValue::tLiteral aLiteral, bool* aFound) {
    return aValue.Parse(aRuntime, aElement, aName, aLiteral, aFound);
}

i4 pNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    // The record is part of the object; a node made by hand stops here.
    if (!aElement) return kOk;
    i4 status;

    // "pIsImplemented": a name, else constant true.
    if (const char* text = sText::ChildText(aElement, "pIsImplemented")) {
        if ((status = mIsImplemented.SetName(aRuntime, text)) != kOk) return status;
    } else {
        mIsImplemented.SetConstant(sShared::Flag(true));
    }

    const char* name = aElement->Attribute("Name");
    if (!name) name = aElement->Attribute("Comment");
    if (!name) return kUnacceptable;
    mName = llk::Retained(aRuntime->InternPrefixed(name));
    if (!mName) return kNoMemory;
    const char* space = aElement->Attribute("NameSpace");
    if ((status = Intern(aRuntime, space ? space : "Custom", mNameSpace)) != kOk) return status;

    if ((status = Own(sText::ChildText(aElement, "ToolTip"), mToolTip)) != kOk) return status;
    if ((status = Own(sText::ChildText(aElement, "Description"), mDescription)) != kOk)
        return status;
    if ((status = Intern(aRuntime, sText::ChildText(aElement, "DisplayName"), mDisplayName)) != kOk)
        return status;
    if ((status = Intern(aRuntime, sText::ChildText(aElement, "Unit"), mUnit)) != kOk)
        return status;
    if ((status = Intern(aRuntime, sText::ChildText(aElement, "Representation"),
                         mRepresentation)) != kOk)
        return status;

    // Access: the imposed mode, narrowed by the mode. Another text is not
    // acceptable, but in the wide reading it narrows nothing.
    bool otherTexts = aRuntime->Reading().Has(tReading::kAccessTexts);
    u4 access = 3;
    if (const TiXmlElement* imposed = sText::Child(aElement, "ImposedAccessMode")) {
        const char* t = imposed->GetText();
        if (t && strcmp(t, "RW") == 0)
            access = 3;
        else if (t && strcmp(t, "RO") == 0)
            access = 1;
        else if (t && strcmp(t, "WO") == 0)
            access = 2;
        else if (!otherTexts)
            return kUnacceptable;
    }
    if (const TiXmlElement* mode = sText::Child(aElement, "AccessMode")) {
        const char* t = mode->GetText();
        if (t && strcmp(t, "RO") == 0)
            access &= ~2u;
        else if (t && strcmp(t, "WO") == 0)
            access &= ~1u;
        else if (!(t && strcmp(t, "RW") == 0) && !otherTexts)
            return kUnacceptable;
    }
    mFlags = (mFlags & ~3u) | access;

    if (const TiXmlElement* visibility = sText::Child(aElement, "Visibility")) {
        const char* t = visibility->GetText();
        mVisibility = kVisibilityUnknown;
        if (t) {
            if (strcmp(t, "Beginner") == 0)
                mVisibility = kVisibilityBeginner;
            else if (strcmp(t, "Expert") == 0)
                mVisibility = kVisibilityExpert;
            else if (strcmp(t, "Guru") == 0)
                mVisibility = kVisibilityGuru;
            else if (strcmp(t, "Invisible") == 0)
                mVisibility = kVisibilityInvisible;
        }
    } else {
        mVisibility = kVisibilityBeginner;
    }

    if (const char* text = sText::ChildText(aElement, "pIsAvailable")) {
        if ((status = mIsAvailable.SetName(aRuntime, text)) != kOk) return status;
    } else {
        mIsAvailable.SetConstant(sShared::Flag(true));
    }
    if (const char* text = sText::ChildText(aElement, "pIsLocked")) {
        if ((status = mIsLocked.SetName(aRuntime, text)) != kOk) return status;
    } else {
        mIsLocked.SetConstant(sShared::Flag(false));
    }
    mLatch = false;

    if (const char* t = sText::ChildText(aElement, "Cachable")) {
        if (strcmp(t, "NoCache") == 0)
            mFlags |= kFlagNoCache;
        else if (strcmp(t, "WriteAround") == 0)
            mFlags |= kFlagWriteAround;
    }
    if (const char* t = sText::ChildText(aElement, "Streamable"))
        if (strcmp(t, "Yes") == 0) mFlags |= kFlagStreamable;

    if (const TiXmlElement* polling = sText::Child(aElement, "PollingTime")) {
        i8 v = 0;
        if (!sText::ReadInteger(polling->GetText(), v)) return kBadNumber;
        mPollingTime = static_cast<u8>(v);
    }

    bool any = false;
    if ((status = NameList(aRuntime, aElement, "pSelected", mSelectedNames, any)) != kOk)
        return status;
    if ((status = NameList(aRuntime, aElement, "pInvalidator", mInvalidatorNames, any)) != kOk)
        return status;
    // The element existing at all is what counts, resolved or not.
    if (any) mFlags |= kFlagInvalidators;
    return kOk;
}

i4 pNode::Resolve(cRuntime* aRuntime) {
    i4 status;
    // "pIsImplemented" naming nothing silently makes the node unimplemented.
    if (llk::cString* name = mIsImplemented.PendingName()) {
        if (pNode* node = aRuntime->SeekNode(name->Chars(), false)) {
            mIsImplemented.SetNode(node);
        } else {
            mIsImplemented.SetConstant(sShared::Flag(false));
        }
    }
    if ((status = mIsAvailable.Resolve(this, aRuntime, true)) != kOk) return status;
    if ((status = mIsLocked.Resolve(this, aRuntime, true)) != kOk) return status;

    if (mSelectedNames) {
        llk::ReleaseAndClear(mSelected);
        u4 count = mSelectedNames->Count();
        mSelected = llk::Retained(llk::cObjectList::New(count, false));
        if (!mSelected) return kNoMemory;
        for (u4 i = 0; i < count; ++i) {
            auto* name = static_cast<llk::cString*>(mSelectedNames->AtIndex(i));
            pNode* node = aRuntime->SeekNode(name->Chars(), false);
            if (!node) continue;
            if ((status = AddDependent(node)) != kOk) return status;
            if (!mSelected->Contains(node) && mSelected->Append(node) != llk::kOk) return kNoMemory;
        }
        llk::ReleaseAndClear(mSelectedNames);
    }
    if (mInvalidatorNames) {
        u4 count = mInvalidatorNames->Count();
        for (u4 i = 0; i < count; ++i) {
            auto* name = static_cast<llk::cString*>(mInvalidatorNames->AtIndex(i));
            pNode* node = aRuntime->SeekNode(name->Chars(), false);
            if (!node) continue;
            if ((status = node->AddDependent(this)) != kOk) return status;
        }
        llk::ReleaseAndClear(mInvalidatorNames);
    }
    return kOk;
}

bool pNode::IsNoCache(cRuntime*) {
    return (mFlags & kFlagNoCache) != 0;
}

bool pNode::IsWriteAround(cRuntime*) {
    return (mFlags & kFlagWriteAround) != 0;
}

pNode* pNode::Target(cRuntime*) {
    return this;
}

bool pNode::IsImplementedLatched(cRuntime*) {
    return mLatch;
}

bool pNode::IsImplemented(cRuntime* aRuntime) {
    cValue v;
    if (mIsImplemented.Get(this, aRuntime, v) != kOk || v.IsAbsent()) return false;
    return v.Bool();
}

void pNode::SetImplementedBase(bool aImplemented) {
    PropagateImplemented([&] {
        if (pNode* n = mIsImplemented.Node()) n->SetImplemented(aImplemented);
        if (pNode* n = mIsAvailable.Node()) n->SetImplemented(aImplemented);
        if (pNode* n = mIsLocked.Node()) n->SetImplemented(aImplemented);
    });
    mLatch = aImplemented;
}

void pNode::SetImplemented(bool aImplemented) {
    SetImplementedBase(aImplemented);
}

bool pNode::IsReadable(cRuntime* aRuntime) {
    return CanRead() && IsAvailable(aRuntime);
}

bool pNode::CanRead() {
    return (mFlags & kFlagReadable) != 0;
}

bool pNode::IsWriteable(cRuntime* aRuntime) {
    return CanWrite() && IsAvailable(aRuntime) && !IsLocked(aRuntime);
}

bool pNode::CanWrite() {
    return (mFlags & kFlagWriteable) != 0;
}

bool pNode::IsAvailable(cRuntime* aRuntime) {
    if (mLatch && !IsImplemented(aRuntime)) return false;
    cValue v;
    if (mIsAvailable.Get(this, aRuntime, v) != kOk || v.IsAbsent()) return false;
    return v.Bool();
}

bool pNode::IsLocked(cRuntime* aRuntime) {
    cValue v;
    if (mIsLocked.Get(this, aRuntime, v) != kOk || v.IsAbsent()) return false;
    return v.Bool();
}

bool pNode::IsStreamable(cRuntime*) {
    return (mFlags & kFlagStreamable) != 0;
}

bool pNode::HasInvalidators(cRuntime*) {
    return (mFlags & kFlagInvalidators) != 0;
}

llk::cString* pNode::Name(bool aDisplay) {
    return aDisplay ? mDisplayName : mName;
}

llk::cString* pNode::Help(bool aTooltip) {
    return aTooltip ? mToolTip : mDescription;
}

llk::cString* pNode::Unit() {
    return mUnit;
}

llk::cString* pNode::NameSpace() {
    return mNameSpace;
}

llk::cString* pNode::Representation() {
    return mRepresentation;
}

pNode::tVisibility pNode::Visibility() {
    return mVisibility;
}

u8 pNode::PollingTime() {
    return mPollingTime;
}

void pNode::Invalidate(cRuntime* aRuntime) {
    aRuntime->Invalidate(cNotification::kValueChanged, nullptr, this);
}

i4 pNode::SetValue(cRuntime*, const cValue*, pNode*) {
    return kNotProvided;
}

i4 pNode::GetValue(cRuntime*, cValue&, pNode*) {
    return kNotProvided;
}

i4 pNode::GetRange(cRuntime*, cValue&, cValue&, pNode*) {
    return kNotProvided;
}

i4 pNode::GetIncrement(cRuntime*, cValue&, pNode*) {
    return kNoProperty;
}

namespace {

// Depth first over the lists aNext gives, without recursion: a node not yet
// seen is added (unless hidden), then what it reaches is walked before its
// next sibling.
template <class Next> i4 Walk(pNode* aFrom, llk::cObjectList* aList, Next aNext) {
    if (!aList) return kNothing;
    try {
        std::unordered_set<pNode*> seen;
        for (u4 i = 0; i < aList->Count(); ++i)
            seen.insert(static_cast<pNode*>(aList->AtIndex(i)));
        struct tLevel {
            llk::cObjectList* list;
            u4 index;
        };
        std::vector<tLevel> stack;
        if (llk::cObjectList* first = aNext(aFrom)) stack.push_back({first, 0});
        while (!stack.empty()) {
            tLevel& level = stack.back();
            if (level.index >= level.list->Count()) {
                stack.pop_back();
                continue;
            }
            auto* d = static_cast<pNode*>(level.list->AtIndex(level.index++));
            if (!d || !seen.insert(d).second) continue;
            if (!d->IsHidden() && aList->Append(d) != llk::kOk) return kNoMemory;
            if (llk::cObjectList* next = aNext(d)) stack.push_back({next, 0});
        }
    } catch (...) {
        return kNoMemory;
    }
    return kOk;
}

} // namespace

i4 pNode::Affected(cRuntime*, llk::cObjectList* aList) {
    return Walk(this, aList, [](pNode* n) { return n->Dependents(); });
}

i4 pNode::Selected(cRuntime*, llk::cObjectList* aList) {
    return Walk(this, aList, [](pNode* n) { return n->SelectedNodes(); });
}

u4 pNode::ComputeAccess() {
    return OwnAccess();
}

i4 pNode::LinkTo(cRuntime*, pNode* aTarget) {
    if (!aTarget) return kNothing;
    return aTarget->AddDependent(this);
}

void pNode::OnInvalidate(cRuntime*, cNotification*) {}

void pNode::OnBroadcast(cRuntime*, cNotification*) {}

void pNode::MergeAccess(u4 aBits) {
    mFlags |= aBits & 3u;
}

const char* pNode::NameText() const {
    return mName ? mName->Chars() : "";
}

void pNode::Rename(llk::cString* aName) {
    llk::Assign(mName, aName);
}

void pNode::SetPath(llk::cString* aPath) {
    llk::Assign(mPath, aPath);
}

void pNode::SetLoot(llk::pObject* aObject) {
    llk::Assign(mLoot, aObject);
}

i4 pNode::AddDependent(pNode* aNode) {
    if (!aNode) return kNothing;
    if (!mDependents) {
        // Plain pointers: the node table keeps every node alive.
        mDependents = llk::Retained(llk::cObjectList::New(16, false));
        if (!mDependents) return kNoMemory;
    }
    if (mDependents->Contains(aNode)) return kOk;
    return mDependents->Append(aNode) == llk::kOk ? kOk : kNoMemory;
}

void pNode::SetNoCache(bool aNoCache, bool aWriteAround) {
    if (aNoCache) mFlags |= kFlagNoCache;
    if (aWriteAround) mFlags |= kFlagWriteAround;
}

void pNode::Notify(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    aRuntime->Propagate(cNotification::kValueChanged, const_cast<cValue*>(aValue), aOriginator,
                        this);
}

} // namespace gik
