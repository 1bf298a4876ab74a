#include "gik/EnumNode.h"

#include <cstring>
#include <tinyxml.h>

#include "gik/Nesting.h"
#include "gik/Runtime.h"
#include "gik/Shared.h"
#include "gik/Text.h"
#include "gik/Value.h"
#include "kit/ObjectList.h"
#include "kit/String.h"

namespace gik {

cEnumNode::tEntry::~tEntry() {
    llk::ReleaseAndClear(name);
    llk::ReleaseAndClear(description);
    llk::ReleaseAndClear(displayName);
    llk::ReleaseAndClear(toolTip);
    llk::ReleaseAndClear(nameSpace);
}

cEnumNode::~cEnumNode() {
    for (tEntry* e : mEntries)
        delete e;
    llk::ReleaseAndClear(mRange);
}

namespace {

i4 Named(cRuntime* aRuntime, const TiXmlElement* aElement, const char* aChild, bool aDefault,
         tValue& aValue) {
    if (const char* text = sText::ChildText(aElement, aChild))
        return aValue.SetName(aRuntime, text);
    aValue.SetConstant(sShared::Flag(aDefault));
    return kOk;
}

} // namespace

i4 cEnumNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = pNode::Parse(aRuntime, aElement);
    if (status != kOk || !aElement) return status;
    if ((status = ParseValue(aRuntime, aElement, "Value", mValue, tValue::kInteger)) != kOk)
        return status;
    for (const TiXmlElement* e = aElement->FirstChildElement("EnumEntry"); e;
         e = e->NextSiblingElement("EnumEntry")) {
        uChildIndex children(e);
        auto* entry = new (std::nothrow) tEntry();
        if (!entry) return kNoMemory;
        try {
            mEntries.push_back(entry);
        } catch (...) {
            delete entry;
            return kNoMemory;
        }
        const char* name = e->Attribute("Name");
        llk::cString* interned = aRuntime->CacheString(name ? name : "", false);
        entry->name = new (std::nothrow) cValue();
        if (!interned || !entry->name || !entry->name->SetText(interned)) return kNoMemory;
        if ((status = Named(aRuntime, e, "pIsAvailable", true, entry->available)) != kOk)
            return status;
        if ((status = Named(aRuntime, e, "pIsImplemented", true, entry->implemented)) != kOk)
            return status;
        bool found = false;
        if ((status = entry->value.Parse(aRuntime, e, "Value", tValue::kInteger, &found)) != kOk)
            return status;
        if (!found) {
            cValue zero;
            zero.SetSigned(0);
            if ((status = entry->value.SetConstantCopy(zero)) != kOk) return status;
        }
        if (const char* t = sText::ChildText(e, "Description")) {
            if (!(entry->description = NewOwnedText(t))) return kNoMemory;
        }
        if (const char* t = sText::ChildText(e, "DisplayName")) {
            if (!(entry->displayName = aRuntime->CacheString(t, true))) return kNoMemory;
        }
        if (const char* t = sText::ChildText(e, "ToolTip")) {
            if (!(entry->toolTip = NewOwnedText(t))) return kNoMemory;
        }
        const char* space = e->Attribute("NameSpace");
        if (!(entry->nameSpace = aRuntime->CacheString(space ? space : "Custom", true)))
            return kNoMemory;
        if (const TiXmlElement* v = sText::Child(e, "Visibility")) {
            const char* t = v->GetText();
            entry->visibility = kVisibilityUnknown;
            if (t && strcmp(t, "Beginner") == 0) entry->visibility = kVisibilityBeginner;
            if (t && strcmp(t, "Expert") == 0) entry->visibility = kVisibilityExpert;
            if (t && strcmp(t, "Guru") == 0) entry->visibility = kVisibilityGuru;
            if (t && strcmp(t, "Invisible") == 0) entry->visibility = kVisibilityInvisible;
        }
    }
    return kOk;
}

i4 cEnumNode::Resolve(cRuntime* aRuntime) {
    i4 status = pNode::Resolve(aRuntime);
    if (status == kOk) status = mValue.Resolve(this, aRuntime, true);
    for (tEntry* e : mEntries) {
        if (status != kOk) break;
        status = e->value.Resolve(this, aRuntime, true);
        if (status == kOk) status = e->available.Resolve(this, aRuntime, true);
        if (status != kOk) break;
        // As the node's own: naming nothing makes the entry unimplemented.
        if (llk::cString* name = e->implemented.PendingName()) {
            if (pNode* node = aRuntime->SeekNode(name->Chars(), false)) {
                e->implemented.SetNode(node);
            } else {
                e->implemented.SetConstant(sShared::Flag(false));
            }
        }
    }
    return status;
}

void cEnumNode::SetImplemented(bool aImplemented) {
    pValueNode::SetImplemented(aImplemented);
}

bool cEnumNode::EntryFlag(cRuntime* aRuntime, const tValue& aFlag) {
    cValue v;
    if (aFlag.Get(this, aRuntime, v) != kOk || v.IsAbsent()) return false;
    return v.Bool();
}

bool cEnumNode::IsImplemented(cRuntime* aRuntime) {
    if (!pNode::IsImplemented(aRuntime)) return false;
    uNest nest;
    if (!nest) return false;
    if (pNode* target = mValue.Node())
        if (!target->IsImplemented(aRuntime)) return false;
    for (tEntry* e : mEntries)
        if (EntryFlag(aRuntime, e->implemented)) return true;
    return false;
}

i4 cEnumNode::Find(cRuntime* aRuntime, const cValue& aValue, bool aAvailable, u4& aIndex) {
    uNest nest;
    if (!nest) return kTooDeep;
    const char* text = nullptr;
    bool byName = aValue.Get(text);
    for (u4 i = 0; i < mEntries.size(); ++i) {
        tEntry* e = mEntries[i];
        if (byName) {
            const char* name = nullptr;
            if (!e->name->Get(name) || strcmp(name, text) != 0) continue;
        } else {
            cValue number;
            if (e->value.Get(this, aRuntime, number) != kOk || number.IsAbsent()) continue;
            if (!number.Equals(aValue)) continue;
        }
        aIndex = i;
        if (!EntryFlag(aRuntime, e->implemented)) return kRejected;
        if (aAvailable && !EntryFlag(aRuntime, e->available)) return kRejected;
        return kOk;
    }
    return kRejected;
}

i4 cEnumNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    if (!aValue) return kNothing;
    u4 index = 0;
    if (Find(aRuntime, *aValue, true, index) != kOk) return kRejected;
    cValue number;
    i4 status = mEntries[index]->value.Get(this, aRuntime, number);
    if (status != kOk) return status;
    if ((status = mValue.Set(this, aRuntime, &number, this)) != kOk) return status;
    Notify(aRuntime, &number, aOriginator);
    return kOk;
}

i4 cEnumNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode*) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    cValue number;
    i4 status = mValue.Get(this, aRuntime, number);
    if (status != kOk) return status;
    if (number.IsAbsent()) return kUnmappedEnum;
    u4 index = 0;
    if (Find(aRuntime, number, false, index) != kOk) return kUnmappedEnum;
    return aValue.Assign(*mEntries[index]->name) ? kOk : kFailed;
}

i4 cEnumNode::GetIntValue(cRuntime* aRuntime, cValue& aValue) {
    cValue name;
    i4 status = GetValue(aRuntime, name, nullptr);
    i8 number = 0;
    if (status == kOk) status = GetValueAsInteger(aRuntime, name, number);
    if (status == kOk) aValue.SetSigned(number);
    return status;
}

i4 cEnumNode::GetNumberRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum) {
    bool any = false;
    i8 low = 0, high = 0;
    for (tEntry* e : mEntries) {
        cValue number;
        if (!EntryFlag(aRuntime, e->implemented) || e->value.Get(this, aRuntime, number) != kOk ||
            number.IsAbsent())
            continue;
        i8 n = number.Sint();
        low = any && low < n ? low : n;
        high = any && high > n ? high : n;
        any = true;
    }
    if (!any) return kNoValue;
    aMinimum.SetSigned(low);
    aMaximum.SetSigned(high);
    return kOk;
}

i4 cEnumNode::GetRange(cRuntime* aRuntime, llk::cObjectList*& aList, pNode*) {
    if (!mRange) {
        llk::cObjectList* list =
            llk::cObjectList::New(mEntries.empty() ? 1 : static_cast<u4>(mEntries.size()), true);
        if (!list) return kNoMemory;
        for (tEntry* e : mEntries)
            if (EntryFlag(aRuntime, e->implemented) && list->Append(e->name) != llk::kOk)
                return kNoMemory;
        mRange = llk::Retained(list);
    }
    aList = mRange;
    return kOk;
}

i4 cEnumNode::IsValueAvailable(cRuntime* aRuntime, const cValue& aValue, bool& aAvailable) {
    u4 index = 0;
    if (Find(aRuntime, aValue, false, index) != kOk) return kRejected;
    aAvailable = EntryFlag(aRuntime, mEntries[index]->available);
    return kOk;
}

i4 cEnumNode::GetValueAsInteger(cRuntime* aRuntime, const cValue& aValue, i8& aInteger) {
    u4 index = 0;
    if (Find(aRuntime, aValue, false, index) != kOk) return kRejected;
    cValue number;
    i4 status = mEntries[index]->value.Get(this, aRuntime, number);
    if (status != kOk) return status;
    aInteger = number.Sint();
    return kOk;
}

i4 cEnumNode::GetValueAsString(cRuntime* aRuntime, const cValue& aValue, llk::cString*& aText) {
    u4 index = 0;
    if (Find(aRuntime, aValue, false, index) != kOk) return kRejected;
    aText = mEntries[index]->name->String();
    return kOk;
}

i4 cEnumNode::GetValueNames(cRuntime* aRuntime, const cValue& aValue, llk::cString*& aName,
                            llk::cString*& aDescription, llk::cString*& aDisplayName) {
    u4 index = 0;
    if (Find(aRuntime, aValue, false, index) != kOk) return kRejected;
    tEntry* e = mEntries[index];
    aName = e->name->String();
    aDescription = e->description;
    aDisplayName = e->displayName ? e->displayName : aName;
    return kOk;
}

i4 cEnumNode::GetValueInfo(cRuntime* aRuntime, const cValue& aValue, tVisibility& aVisibility,
                           llk::cString*& aToolTip, llk::cString*& aNameSpace) {
    u4 index = 0;
    if (Find(aRuntime, aValue, false, index) != kOk) return kRejected;
    tEntry* e = mEntries[index];
    aVisibility = e->visibility;
    aToolTip = e->toolTip;
    aNameSpace = e->nameSpace;
    return kOk;
}

} // namespace gik
