#include "gik/Location.h"

#include <cstring>
#include <new>
#include <tinyxml.h>

#include "gik/Node.h"
#include "gik/Runtime.h"
#include "gik/Text.h"
#include "gik/Value.h"

namespace gik {

tLocation::~tLocation() {
    llk::ReleaseAndClear(computed);
    for (tTerm* term : mTerms)
        delete term;
}

i4 tLocation::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    computed = new (std::nothrow) cValue();
    if (!computed) return kNoMemory;
    if (!aElement) return kOk;
    if (aRuntime->Reading().Has(tReading::kAddressSums)) return ParseWide(aRuntime, aElement);
    bool found = false;
    i4 status = address.Parse(aRuntime, aElement, "Address", tValue::kInteger, &found);
    if (status != kOk) return status;
    if (!found) {
        cValue zero;
        zero.SetSigned(0);
        if ((status = address.SetConstantCopy(zero)) != kOk) return status;
    }
    if ((status = index.Parse(aRuntime, aElement, "Index", tValue::kInteger, &found)) != kOk)
        return status;
    if (found) {
        const TiXmlElement* element = sText::Child(aElement, "pIndex");
        if (!element) element = sText::Child(aElement, "Index");
        if (const char* offset = element->Attribute("Offset")) {
            i8 v = 0;
            if (!sText::ReadInteger(offset, v) || v < 0 || v > 0xFFFFFFFFll) return kBadNumber;
            multiplier = static_cast<u4>(v);
        }
    }
    return kOk;
}

i4 tLocation::ParseWide(cRuntime* aRuntime, const TiXmlElement* aElement) {
    mWide = true;
    for (const TiXmlElement* c = aElement->FirstChildElement(); c; c = c->NextSiblingElement()) {
        const char* kind = c->Value();
        if (strcmp(kind, "Address") == 0) {
            u8 term = 0;
            if (!sText::ReadAddress(c->GetText(), term)) return kBadNumber;
            mBase += term;
            continue;
        }
        bool literal = strcmp(kind, "Index") == 0;
        bool isIndex = literal || strcmp(kind, "pIndex") == 0;
        if (!isIndex && strcmp(kind, "pAddress") != 0) continue;
        auto* term = new (std::nothrow) tTerm();
        if (!term) return kNoMemory;
        try {
            mTerms.push_back(term);
        } catch (...) {
            delete term;
            return kNoMemory;
        }
        term->isIndex = isIndex;
        i4 status;
        if (literal) {
            u8 at = 0;
            if (!sText::ReadAddress(c->GetText(), at)) return kBadNumber;
            cValue constant;
            constant.SetUnsigned(at);
            status = term->value.SetConstantCopy(constant);
        } else {
            status = term->value.SetName(aRuntime, c->GetText());
        }
        if (status != kOk) return status;
        if (!isIndex) continue;
        if (const char* name = c->Attribute("pOffset")) {
            status = term->offset.SetName(aRuntime, name);
        } else if (const char* text = c->Attribute("Offset")) {
            u8 offset = 0;
            if (!sText::ReadAddress(text, offset)) return kBadNumber;
            cValue constant;
            constant.SetUnsigned(offset);
            status = term->offset.SetConstantCopy(constant);
        } else {
            term->ownLength = true;
            mNeedsLength = true;
        }
        if (status != kOk) return status;
    }
    return kOk;
}

i4 tLocation::Resolve(pNode* aOwner, cRuntime* aRuntime) {
    i4 status = address.Resolve(aOwner, aRuntime, true);
    if (status == kOk) status = index.Resolve(aOwner, aRuntime, true);
    for (tTerm* term : mTerms) {
        if (status == kOk) status = term->value.Resolve(aOwner, aRuntime, true);
        if (status == kOk) status = term->offset.Resolve(aOwner, aRuntime, true);
    }
    return status;
}

void tLocation::SetImplemented(bool aImplemented) const {
    if (pNode* n = address.Node()) n->SetImplemented(aImplemented);
    if (pNode* n = index.Node()) n->SetImplemented(aImplemented);
    for (tTerm* term : mTerms) {
        if (pNode* n = term->value.Node()) n->SetImplemented(aImplemented);
        if (pNode* n = term->offset.Node()) n->SetImplemented(aImplemented);
    }
}

bool tLocation::HasNodes() const {
    if (address.Node() || index.Node()) return true;
    for (tTerm* term : mTerms)
        if (term->value.Node()) return true;
    return false;
}

i4 tLocation::Compute(pNode* aOwner, cRuntime* aRuntime, u4 aLength, u8& aAddress) {
    if (mWide) return ComputeWide(aOwner, aRuntime, aLength, aAddress);
    cValue a, i;
    i4 status = address.Get(aOwner, aRuntime, a);
    if (status != kOk) return status;
    if ((status = index.Get(aOwner, aRuntime, i)) != kOk) return status;
    aAddress = a.Uint() + i.Uint() * static_cast<u8>(multiplier);
    if (computed) computed->SetUnsigned(aAddress);
    return kOk;
}

i4 tLocation::ComputeWide(pNode* aOwner, cRuntime* aRuntime, u4 aLength, u8& aAddress) {
    u8 sum = mBase;
    for (tTerm* term : mTerms) {
        cValue value;
        i4 status = term->value.Get(aOwner, aRuntime, value);
        if (status != kOk) return status;
        u8 factor = 1;
        if (term->ownLength) {
            factor = aLength;
        } else if (term->isIndex) {
            cValue offset;
            if ((status = term->offset.Get(aOwner, aRuntime, offset)) != kOk) return status;
            factor = offset.Bits();
        }
        sum += value.Bits() * factor;
    }
    aAddress = sum;
    if (computed) computed->SetUnsigned(aAddress);
    return kOk;
}

} // namespace gik
