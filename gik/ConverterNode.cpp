#include "gik/ConverterNode.h"

#include <cmath>

#include "gik/Formula.h"
#include "gik/Nesting.h"
#include "gik/Notification.h"
#include "gik/Runtime.h"
#include "gik/Value.h"
#include "gik/Variables.h"

namespace gik {

cConverterNode::~cConverterNode() {
    llk::ReleaseAndClear(mFormulaFrom);
    llk::ReleaseAndClear(mFormulaTo);
    llk::ReleaseAndClear(mResult);
    llk::ReleaseAndClear(mLastInput);
    llk::ReleaseAndClear(mMinimum);
    llk::ReleaseAndClear(mMaximum);
}

i4 cConverterNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = pNode::Parse(aRuntime, aElement);
    if (status != kOk) return status;
    mResult = new (std::nothrow) cValue();
    mLastInput = new (std::nothrow) cValue();
    mMinimum = new (std::nothrow) cValue();
    mMaximum = new (std::nothrow) cValue();
    if (!mResult || !mLastInput || !mMinimum || !mMaximum) return kNoMemory;
    if (!aElement) return kOk;
    if ((status = ParseVariables(aRuntime, aElement)) != kOk) return status;
    if ((status = ParseValue(aRuntime, aElement, "Value", mValue,
                             mIsFloat ? tValue::kReal : tValue::kInteger)) != kOk)
        return status;
    if ((status = ParseFormula(aElement, "FormulaTo", mFormulaTo)) != kOk) return status;
    return ParseFormula(aElement, "FormulaFrom", mFormulaFrom);
}

i4 cConverterNode::Resolve(cRuntime* aRuntime) {
    // The base and the variables, then the value.
    i4 status = pFormulaNode::Resolve(aRuntime);
    if (status == kOk) status = mValue.Resolve(this, aRuntime, true);
    return status;
}

i4 cConverterNode::From(cRuntime* aRuntime, const cValue& aTo, cValue& aResult) {
    i4 status = ReadVariables(aRuntime, kCurrent);
    if (status != kOk) return status;
    cValue to;
    to.Assign(aTo);
    if ((status = SetVariable("TO", to)) != kOk) return status;
    return Evaluate(mFormulaFrom, aResult);
}

i4 cConverterNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode*) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    if (mHasResult && !IsNoCache(aRuntime) && aRuntime->IsCacheEnabled())
        return aValue.Assign(*mResult) ? kOk : kFailed;
    mHasResult = false;
    if (!mValues) return kNoValue;
    uNest nest;
    if (!nest) return kTooDeep;
    cValue target;
    i4 status = ReadInput(aRuntime, mValue, target);
    if (status != kOk) return status;
    if ((status = From(aRuntime, target, *mResult)) != kOk) return status;
    mHasResult = true;
    return aValue.Assign(*mResult) ? kOk : kFailed;
}

i4 cConverterNode::GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum, pNode*) {
    if (!mHasRange) {
        if (!mValues) return kNoValue;
        uNest nest;
        if (!nest) return kTooDeep;
        cValue low, high;
        i4 status;
        if (pNode* target = mValue.Node()) {
            status = InputRange(aRuntime, target, low, high);
        } else {
            status = mValue.Get(this, aRuntime, low);
            high.Assign(low);
        }
        if (status == kOk) status = From(aRuntime, low, *mMinimum);
        if (status == kOk) status = From(aRuntime, high, *mMaximum);
        if (status != kOk) return status;
        bool reversed =
            mIsFloat ? mMinimum->Real() > mMaximum->Real() : mMinimum->Sint() > mMaximum->Sint();
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

i4 cConverterNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    if (!aValue) return kNothing;
    if (!mValues) return kNoValue;
    uNest nest;
    if (!nest) return kTooDeep;
    cValue input;
    if (mIsFloat)
        input.SetReal(aValue->Real());
    else
        input.SetSigned(aValue->Sint());
    i4 status;
    if (!aOriginator) {
        cValue minimum, maximum;
        if ((status = GetRange(aRuntime, minimum, maximum, nullptr)) != kOk) return status;
        if (mIsFloat) {
            double v = input.Real();
            if (!(v >= minimum.Real() && v <= maximum.Real())) {
                if (std::fabs(v - minimum.Real()) < cValue::kRealTolerance)
                    input.SetReal(minimum.Real());
                else if (std::fabs(v - maximum.Real()) < cValue::kRealTolerance)
                    input.SetReal(maximum.Real());
                else
                    return kRejected;
            }
        } else if (input.Sint() < minimum.Sint() || input.Sint() > maximum.Sint()) {
            return kRejected;
        }
    }
    if ((status = ReadVariables(aRuntime, kCurrent)) != kOk) return status;
    if ((status = mValues->Set("FROM", input)) != kOk) return status;
    cValue converted;
    if ((status = Evaluate(mFormulaTo, converted)) != kOk) return status;
    if ((status = mValue.Set(this, aRuntime, &converted, this)) != kOk) return status;
    mLastInput->Assign(input);
    mResult->Assign(input);
    mHasResult = true;
    Notify(aRuntime, &input, aOriginator);
    if (IsWriteAround(aRuntime)) mHasResult = false;
    return kOk;
}

void cConverterNode::OnInvalidate(cRuntime*, cNotification* aNotification) {
    if (aNotification && aNotification->Type() == cNotification::kValueChanged) {
        mHasResult = false;
        mHasRange = false;
        mLastInput->Clear();
    }
}

} // namespace gik
