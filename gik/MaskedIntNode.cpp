#include "gik/MaskedIntNode.h"

#include <cstring>
#include <tinyxml.h>

#include "gik/Nesting.h"
#include "gik/Notification.h"
#include "gik/Runtime.h"
#include "gik/Text.h"
#include "gik/Value.h"

namespace gik {

cMaskedIntNode::~cMaskedIntNode() {
    llk::ReleaseAndClear(mCache);
}

i4 cMaskedIntNode::Initialize(cRuntime* aRuntime, const TiXmlElement* aElement,
                              cIntRegNode* aHolder) {
    if (!aHolder) return kNothing;
    mHolder = aHolder;
    i4 status = pNode::Parse(aRuntime, aElement);
    if (status != kOk || !aElement) return status;
    if (sText::Child(aElement, "Sign")) {
        const char* sign = sText::ChildText(aElement, "Sign");
        mField.isSigned = !(sign && strcmp(sign, "Unsigned") == 0);
    }
    status = mField.Parse(aElement, aHolder->IsLittleEndian(),
                          aRuntime->Reading().Has(tReading::kRegisterFields));
    return status == kOk ? aHolder->PlaceEntry(mField) : status;
}

i4 cMaskedIntNode::Resolve(cRuntime* aRuntime) {
    i4 status = pNode::Resolve(aRuntime);
    return status == kOk ? LinkTo(aRuntime, mHolder) : status;
}

bool cMaskedIntNode::IsNoCache(cRuntime* aRuntime) {
    if (pNode::IsNoCache(aRuntime)) return true;
    uNest nest;
    return nest && mHolder->IsNoCache(aRuntime);
}

bool cMaskedIntNode::IsWriteAround(cRuntime* aRuntime) {
    if (pNode::IsWriteAround(aRuntime)) return true;
    uNest nest;
    return nest && mHolder->IsWriteAround(aRuntime);
}

bool cMaskedIntNode::IsWriteable(cRuntime* aRuntime) {
    if (!pNode::IsWriteable(aRuntime)) return false;
    uNest nest;
    return nest && mHolder->IsWriteable(aRuntime);
}

void cMaskedIntNode::SetImplemented(bool aImplemented) {
    PropagateImplemented([&] { mHolder->SetImplemented(aImplemented); });
    SetImplementedBase(aImplemented);
}

i4 cMaskedIntNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode*) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    if (mCached && mCache && !IsNoCache(aRuntime) && aRuntime->IsCacheEnabled())
        return aValue.Assign(*mCache) ? kOk : kFailed;
    cValue whole;
    tBitField field;
    i4 status;
    {
        uNest nest;
        if (!nest) return kTooDeep;
        status = mHolder->PlaceField(aRuntime, mField, field);
        if (status == kOk) status = mHolder->GetValue(aRuntime, whole, this);
    }
    if (status != kOk) return status;
    if (!mCache && !(mCache = new (std::nothrow) cValue())) return kNoMemory;
    field.Extract(whole.Uint(), *mCache);
    mCached = true;
    return aValue.Assign(*mCache) ? kOk : kFailed;
}

i4 cMaskedIntNode::GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum, pNode*) {
    tBitField field;
    uNest nest;
    if (!nest) return kTooDeep;
    i4 status = mHolder->PlaceField(aRuntime, mField, field);
    if (status == kOk) field.Range(aMinimum, aMaximum);
    return status;
}

i4 cMaskedIntNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    if (!aValue) return kNothing;
    uNest nest;
    if (!nest) return kTooDeep;
    tBitField field;
    i4 status = mHolder->PlaceField(aRuntime, mField, field);
    if (status != kOk) return status;
    if (!field.oneBit && !aOriginator) {
        // The entry's range applies unless another node calls.
        cValue minimum, maximum;
        field.Range(minimum, maximum);
        if (field.isSigned) {
            i8 v = aValue->Sint();
            if (v < minimum.Sint() || v > maximum.Sint()) return kRejected;
        } else {
            u8 v = aValue->Uint();
            if (aValue->Flavour() == kFlavourSigned && aValue->Sint() < 0) return kRejected;
            if (v > maximum.Uint()) return kRejected;
        }
    }
    cValue whole;
    if ((status = mHolder->GetValue(aRuntime, whole, this)) != kOk) return status;
    cValue updated;
    updated.SetUnsigned(field.Insert(whole.Uint(), *aValue));
    // Through the holder, as the originator: no echo back to this entry.
    if ((status = mHolder->SetValue(aRuntime, &updated, this)) != kOk) return status;
    if (!mCache && !(mCache = new (std::nothrow) cValue())) return kNoMemory;
    field.Extract(field.Insert(0, *aValue), *mCache);
    mCached = true;
    Notify(aRuntime, aValue, aOriginator);
    if (IsWriteAround(aRuntime)) mCached = false;
    return kOk;
}

void cMaskedIntNode::OnInvalidate(cRuntime*, cNotification* aNotification) {
    if (aNotification && aNotification->Type() == cNotification::kValueChanged) mCached = false;
}

} // namespace gik
