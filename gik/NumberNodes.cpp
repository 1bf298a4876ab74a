#include "gik/NumberNodes.h"

#include <cfloat>
#include <cmath>

#include "gik/Nesting.h"
#include "gik/Value.h"

namespace gik {

i4 pNumberNode::ParseNumber(cRuntime* aRuntime, const TiXmlElement* aElement, bool aReal) {
    i4 status = pNode::Parse(aRuntime, aElement);
    if (status != kOk || !aElement) return status;
    tValue::tLiteral literal = aReal ? tValue::kReal : tValue::kInteger;
    bool found = false;
    if ((status = ParseValue(aRuntime, aElement, "Value", mValue, literal, &found)) != kOk)
        return status;
    if (!found) {
        cValue zero;
        if (aReal)
            zero.SetReal(0.0);
        else
            zero.SetSigned(0);
        if ((status = mValue.SetConstantCopy(zero)) != kOk) return status;
    }
    bool hasMax = false, hasMin = false;
    if ((status = ParseValue(aRuntime, aElement, "Max", mMax, literal, &hasMax)) != kOk)
        return status;
    if ((status = ParseValue(aRuntime, aElement, "Min", mMin, literal, &hasMin)) != kOk)
        return status;
    if ((status = ParseValue(aRuntime, aElement, "Inc", mInc, literal, nullptr)) != kOk)
        return status;
    // Without bounds, a value given by name takes its range from the target.
    if (!mValue.IsNamed()) {
        cValue bound;
        if (!hasMax) {
            if (aReal)
                bound.SetReal(DBL_MAX);
            else
                bound.SetSigned(INT64_MAX);
            if ((status = mMax.SetConstantCopy(bound)) != kOk) return status;
        }
        if (!hasMin) {
            if (aReal)
                bound.SetReal(-DBL_MAX);
            else
                bound.SetSigned(INT64_MIN);
            if ((status = mMin.SetConstantCopy(bound)) != kOk) return status;
        }
    }
    return kOk;
}

i4 cIntegerNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    return ParseNumber(aRuntime, aElement, false);
}

i4 pNumberNode::Resolve(cRuntime* aRuntime) {
    i4 status = pNode::Resolve(aRuntime);
    if (status == kOk) status = mMin.Resolve(this, aRuntime, true);
    if (status == kOk) status = mMax.Resolve(this, aRuntime, true);
    if (status == kOk) status = mValue.Resolve(this, aRuntime, true);
    if (status == kOk) status = mInc.Resolve(this, aRuntime, true);
    return status;
}

i4 pNumberNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode*) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    return mValue.Get(this, aRuntime, aValue);
}

i4 pNumberNode::GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum, pNode*) {
    i4 status;
    if (mValue.IsNamed()) {
        pNode* target = mValue.Node();
        if (mMin.IsEmpty() && mMax.IsEmpty()) {
            if (!target) return kDangling;
            uNest nest;
            if (!nest) return kTooDeep;
            return target->GetRange(aRuntime, aMinimum, aMaximum, this);
        }
        cValue other;
        if (mMin.IsEmpty()) {
            if (!target) return kDangling;
            uNest nest;
            if (!nest) return kTooDeep;
            if ((status = target->GetRange(aRuntime, aMinimum, other, this)) != kOk) return status;
        } else if ((status = mMin.Get(this, aRuntime, aMinimum)) != kOk) {
            return status;
        }
        if (mMax.IsEmpty()) {
            if (!target) return kDangling;
            uNest nest;
            if (!nest) return kTooDeep;
            if ((status = target->GetRange(aRuntime, other, aMaximum, this)) != kOk) return status;
        } else if ((status = mMax.Get(this, aRuntime, aMaximum)) != kOk) {
            return status;
        }
        return kOk;
    }
    if ((status = mMin.Get(this, aRuntime, aMinimum)) != kOk) return status;
    return mMax.Get(this, aRuntime, aMaximum);
}

i4 pNumberNode::GetIncrement(cRuntime* aRuntime, cValue& aIncrement, pNode*) {
    return mInc.Get(this, aRuntime, aIncrement);
}

i4 cIntegerNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    if (!aValue) return kNothing;
    // A real is truncated here, before the checks.
    i8 value = aValue->Sint();
    cValue minimum, maximum, increment;
    i4 status = GetRange(aRuntime, minimum, maximum, this);
    if (status != kOk) return status;
    if ((status = GetIncrement(aRuntime, increment, this)) != kOk) return status;
    // An absent bound sets no limit.
    if (!minimum.IsAbsent() && value < minimum.Sint()) return kRejected;
    if (!maximum.IsAbsent() && value > maximum.Sint()) return kRejected;
    if (!increment.IsAbsent()) {
        i8 step = increment.Sint();
        // A step of 0 would divide by zero: it constrains nothing.
        if (step != 0 && step != -1) {
            i8 base = minimum.IsAbsent() ? 0 : minimum.Sint();
            i8 offset = static_cast<i8>(static_cast<u8>(value) - static_cast<u8>(base));
            if (offset % step != 0) return kRejected;
        }
    }
    // The input object itself goes on, not the converted number.
    if ((status = mValue.Set(this, aRuntime, aValue, this)) != kOk) return status;
    Notify(aRuntime, aValue, aOriginator);
    return kOk;
}

i4 cFloatNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    return ParseNumber(aRuntime, aElement, true);
}

i4 cFloatNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    if (!aValue) return kNothing;
    cValue minimum, maximum;
    i4 status = GetRange(aRuntime, minimum, maximum, this);
    if (status != kOk) return status;
    double value = aValue->Real();
    const cValue* written = aValue;
    cValue bound;
    bool belowMin = !minimum.IsAbsent() && !(value >= minimum.Real());
    bool aboveMax = !maximum.IsAbsent() && !(value <= maximum.Real());
    if (belowMin || aboveMax) {
        // Just outside by no more than the tolerance: the bound itself.
        if (!minimum.IsAbsent() && std::fabs(value - minimum.Real()) < cValue::kRealTolerance) {
            bound.SetReal(minimum.Real());
        } else if (!maximum.IsAbsent() &&
                   std::fabs(value - maximum.Real()) < cValue::kRealTolerance) {
            bound.SetReal(maximum.Real());
        } else {
            return kRejected;
        }
        written = &bound;
    }
    // No increment test at all.
    if ((status = mValue.Set(this, aRuntime, written, this)) != kOk) return status;
    Notify(aRuntime, written, aOriginator);
    return kOk;
}

} // namespace gik
