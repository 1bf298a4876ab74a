#include "gik/NumberNodes.h"

#include <cfloat>
#include <cmath>
#include <cstring>
#include <tinyxml.h>

#include "gik/Nesting.h"
#include "gik/Runtime.h"
#include "gik/Text.h"
#include "gik/Value.h"

namespace gik {

pNumberNode::~pNumberNode() {
    delete mIndexed;
    for (tValue* copy : mCopies)
        delete copy;
}

i4 pNumberNode::ParseNumber(cRuntime* aRuntime, const TiXmlElement* aElement, bool aReal) {
    mReal = aReal;
    i4 status = pNode::Parse(aRuntime, aElement);
    if (status != kOk || !aElement) return status;
    tValue::tLiteral literal = aReal ? tValue::kReal : tValue::kInteger;
    if (sText::Child(aElement, "pIndex") && aRuntime->Reading().Has(tReading::kIndexedValues)) {
        if (!(mIndexed = new (std::nothrow) tIndexedValue())) return kNoMemory;
        if ((status = mIndexed->Parse(aRuntime, aElement, literal)) != kOk) return status;
        // The bounds, when given, stand for every entry; when not, each
        // entry's own (its target's, or the type's limits).
        if ((status = ParseValue(aRuntime, aElement, "Max", mMax, literal)) != kOk) return status;
        if ((status = ParseValue(aRuntime, aElement, "Min", mMin, literal)) != kOk) return status;
        return ParseValue(aRuntime, aElement, "Inc", mInc, literal);
    }
    if (aRuntime->Reading().Has(tReading::kValueCopies)) {
        bool valueSeen = false;
        for (const TiXmlElement* c = aElement->FirstChildElement(); c;
             c = c->NextSiblingElement()) {
            if (strcmp(c->Value(), "pValue") == 0) valueSeen = true;
            if (strcmp(c->Value(), "pValueCopy") != 0) continue;
            auto* copy = new (std::nothrow) tValue();
            if (!copy) return kNoMemory;
            try {
                mCopies.push_back(copy);
            } catch (...) {
                delete copy;
                return kNoMemory;
            }
            if ((status = copy->SetName(aRuntime, c->GetText())) != kOk) return status;
            if (!valueSeen) ++mCopiesBefore;
        }
    }
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
    if (status == kOk && mIndexed) status = mIndexed->Resolve(this, aRuntime);
    // The copies are written, never read: their changes are not this node's.
    for (tValue* copy : mCopies)
        if (status == kOk) status = copy->Resolve(this, aRuntime, false);
    return status;
}

void pNumberNode::SetImplemented(bool aImplemented) {
    PropagateImplemented([&] {
        if (mIndexed) mIndexed->SetImplemented(aImplemented);
        for (tValue* copy : mCopies)
            if (pNode* n = copy->Node()) n->SetImplemented(aImplemented);
    });
    pValueNode::SetImplemented(aImplemented);
}

i4 pNumberNode::Write(cRuntime* aRuntime, const cValue* aValue) {
    tValue* chosen = nullptr;
    i4 status = Chosen(aRuntime, chosen);
    for (size_t i = 0; status == kOk && i <= mCopies.size(); ++i) {
        tValue* target =
            i < mCopiesBefore ? mCopies[i] : (i == mCopiesBefore ? chosen : mCopies[i - 1]);
        status = target->Set(this, aRuntime, aValue, this);
    }
    return status;
}

i4 pNumberNode::Chosen(cRuntime* aRuntime, tValue*& aValue) {
    aValue = &mValue;
    return mIndexed ? mIndexed->Select(this, aRuntime, aValue) : kOk;
}

i4 pNumberNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode*) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    tValue* value = nullptr;
    i4 status = Chosen(aRuntime, value);
    return status == kOk ? value->Get(this, aRuntime, aValue) : status;
}

i4 pNumberNode::GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum, pNode*) {
    i4 status = OwnRange(aRuntime, aMinimum, aMaximum);
    // The largest range that fits every copy as well.
    for (tValue* copy : mCopies) {
        pNode* node = copy->Node();
        if (status != kOk || !node) continue;
        cValue low, high;
        uNest nest;
        if (!nest) return kTooDeep;
        if ((status = node->GetRange(aRuntime, low, high, this)) != kOk) break;
        bool raise = mReal ? low.Real() > aMinimum.Real() : low.Sint() > aMinimum.Sint();
        bool lower = mReal ? high.Real() < aMaximum.Real() : high.Sint() < aMaximum.Sint();
        if (!low.IsAbsent() && (aMinimum.IsAbsent() || raise)) aMinimum.Assign(low);
        if (!high.IsAbsent() && (aMaximum.IsAbsent() || lower)) aMaximum.Assign(high);
    }
    return status;
}

i4 pNumberNode::OwnRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum) {
    tValue* value = nullptr;
    i4 status = Chosen(aRuntime, value);
    if (status != kOk) return status;
    if (mIndexed && !value->IsNamed()) {
        // A literal entry: the bounds given, else the type's limits.
        auto bound = [&](tValue& aBound, bool aUpper, cValue& aOut) -> i4 {
            if (!aBound.IsEmpty()) return aBound.Get(this, aRuntime, aOut);
            if (mReal)
                aOut.SetReal(aUpper ? DBL_MAX : -DBL_MAX);
            else
                aOut.SetSigned(aUpper ? INT64_MAX : INT64_MIN);
            return kOk;
        };
        status = bound(mMin, false, aMinimum);
        return status == kOk ? bound(mMax, true, aMaximum) : status;
    }
    if (value->IsNamed()) {
        pNode* target = value->Node();
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
    if ((status = Write(aRuntime, aValue)) != kOk) return status;
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
    if ((status = Write(aRuntime, written)) != kOk) return status;
    Notify(aRuntime, written, aOriginator);
    return kOk;
}

} // namespace gik
