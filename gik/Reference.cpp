#include "gik/Reference.h"

#include <cstring>
#include <string>
#include <tinyxml.h>

#include "gik/Nesting.h"
#include "gik/Node.h"
#include "gik/Runtime.h"
#include "gik/Text.h"
#include "gik/Value.h"
#include "kit/String.h"

namespace gik {

thread_local u4 uNest::sDepth = 0;
thread_local u4 uNest::sSteps = 0;

void tValue::Clear() {
    mNode = nullptr;
    llk::ReleaseAndClear(mName);
    llk::ReleaseAndClear(mConstant);
}

i4 tValue::SetName(cRuntime* aRuntime, const char* aName) {
    llk::cString* name = aRuntime ? aRuntime->InternPrefixed(aName ? aName : "") : nullptr;
    if (!name) return kNoMemory;
    Clear();
    mName = llk::Retained(name);
    return kOk;
}

void tValue::SetConstant(cValue* aValue) {
    Clear();
    mConstant = llk::Retained(aValue);
}

i4 tValue::SetConstantCopy(const cValue& aValue) {
    auto* copy = new (std::nothrow) cValue();
    if (!copy) return kNoMemory;
    if (!copy->Assign(aValue)) {
        copy->Release();
        return kNoMemory;
    }
    Clear();
    mConstant = copy;
    return kOk;
}

void tValue::SetNode(pNode* aNode) {
    Clear();
    mNode = aNode;
}

i4 tValue::Parse(cRuntime* aRuntime, const TiXmlElement* aElement, const char* aName,
                 tLiteral aLiteral, bool* aFound) {
    if (aFound) *aFound = false;
    if (!aElement) return kOk;
    std::string named = std::string("p") + aName;
    if (const TiXmlElement* child = sText::Child(aElement, named.c_str())) {
        if (aFound) *aFound = true;
        return SetName(aRuntime, child->GetText());
    }
    const TiXmlElement* child = sText::Child(aElement, aName);
    if (!child) return kOk;
    if (aFound) *aFound = true;
    const char* text = child->GetText();
    cValue literal;
    switch (aLiteral) {
    case kInteger: {
        i8 v = 0;
        if (!sText::ReadInteger(text, v)) return kBadNumber;
        literal.SetSigned(v);
        break;
    }
    case kReal: {
        double v = 0.0;
        if (!sText::ReadReal(text, v)) return kBadNumber;
        literal.SetReal(v);
        break;
    }
    case kText:
        if (!literal.SetText(text ? text : "")) return kNoMemory;
        break;
    }
    return SetConstantCopy(literal);
}

i4 tValue::Resolve(pNode* aOwner, cRuntime* aRuntime, bool aLink) {
    if (!mName) return kOk;
    pNode* node = aRuntime->SeekNode(mName->Chars(), false);
    if (!node) return kDangling;
    llk::ReleaseAndClear(mName);
    mNode = node;
    if (aLink && aOwner) return aOwner->LinkTo(aRuntime, node);
    return kOk;
}

i4 tValue::Get(pNode* aOwner, cRuntime* aRuntime, cValue& aValue) const {
    if (mConstant) return aValue.Assign(*mConstant) ? kOk : kFailed;
    if (mNode) {
        uNest nest;
        if (!nest) return kTooDeep;
        return mNode->GetValue(aRuntime, aValue, aOwner);
    }
    aValue.Clear();
    return mName ? kDangling : kOk;
}

i4 tValue::Set(pNode* aOwner, cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    (void)aOwner;
    if (mConstant) {
        if (!aValue) return kNothing;
        return mConstant->Assign(*aValue) ? kOk : kFailed;
    }
    if (mNode) {
        uNest nest;
        if (!nest) return kTooDeep;
        return mNode->SetValue(aRuntime, aValue, aOriginator);
    }
    return kNothing;
}

} // namespace gik
