#include "gik/SwissKnifeNode.h"

#include "gik/Formula.h"
#include "gik/Nesting.h"
#include "gik/Notification.h"
#include "gik/Runtime.h"
#include "gik/Value.h"

namespace gik {

cSwissKnifeNode::~cSwissKnifeNode() {
    llk::ReleaseAndClear(mFormula);
    llk::ReleaseAndClear(mResult);
    llk::ReleaseAndClear(mMinimum);
    llk::ReleaseAndClear(mMaximum);
}

i4 cSwissKnifeNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = pNode::Parse(aRuntime, aElement);
    if (status != kOk) return status;
    mResult = new (std::nothrow) cValue();
    mMinimum = new (std::nothrow) cValue();
    mMaximum = new (std::nothrow) cValue();
    if (!mResult || !mMinimum || !mMaximum) return kNoMemory;
    if (!aElement) return kOk;
    if ((status = ParseVariables(aRuntime, aElement)) != kOk) return status;
    return ParseFormula(aElement, "Formula", mFormula);
}

i4 cSwissKnifeNode::SetValue(cRuntime*, const cValue*, pNode*) {
    return kNotProvided;
}

i4 cSwissKnifeNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode*) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    if (mHasResult && !IsNoCache(aRuntime) && aRuntime->IsCacheEnabled())
        return aValue.Assign(*mResult) ? kOk : kFailed;
    mHasResult = false;
    if (!mValues) return kNoValue;
    i4 status = ReadVariables(aRuntime, kCurrent);
    if (status != kOk) return status;
    if ((status = Evaluate(mFormula, *mResult)) != kOk) return status;
    mHasResult = true;
    return aValue.Assign(*mResult) ? kOk : kFailed;
}

i4 cSwissKnifeNode::GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum, pNode*) {
    if (!mHasRange) {
        if (!mValues) return kNoValue;
        i4 status = ReadVariables(aRuntime, kMinimum);
        if (status == kOk) status = Evaluate(mFormula, *mMinimum);
        if (status == kOk) status = ReadVariables(aRuntime, kMaximum);
        if (status == kOk) status = Evaluate(mFormula, *mMaximum);
        if (status != kOk) return status;
        bool reversed = mIsFloat ? mMinimum->Real() > mMaximum->Real()
                                 : (mMinimum->Flavour() == kFlavourUnsigned &&
                                            mMaximum->Flavour() == kFlavourUnsigned
                                        ? mMinimum->Uint() > mMaximum->Uint()
                                        : mMinimum->Sint() > mMaximum->Sint());
        if (reversed) {
            cValue swap;
            swap.Assign(*mMinimum);
            mMinimum->Assign(*mMaximum);
            mMaximum->Assign(swap);
        }
        mHasRange = true;
    }
    aMinimum.Assign(*mMinimum);
    aMaximum.Assign(*mMaximum);
    return kOk;
}

u4 cSwissKnifeNode::ComputeAccess() {
    return OwnAccess() & 1u;
}

void cSwissKnifeNode::OnInvalidate(cRuntime*, cNotification* aNotification) {
    if (aNotification && aNotification->Type() == cNotification::kValueChanged) {
        mHasResult = false;
        mHasRange = false;
    }
}

} // namespace gik
