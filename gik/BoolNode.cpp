#include "gik/BoolNode.h"

#include "gik/Value.h"

namespace gik {

i4 cBoolNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = pNode::Parse(aRuntime, aElement);
    if (status != kOk || !aElement) return status;
    bool found = false;
    cValue literal;
    if ((status = ParseValue(aRuntime, aElement, "OnValue", mOnValue, tValue::kInteger, &found)) !=
        kOk)
        return status;
    if (!found) {
        literal.SetSigned(1);
        if ((status = mOnValue.SetConstantCopy(literal)) != kOk) return status;
    }
    if ((status = ParseValue(aRuntime, aElement, "OffValue", mOffValue, tValue::kInteger,
                             &found)) != kOk)
        return status;
    if (!found) {
        literal.SetSigned(0);
        if ((status = mOffValue.SetConstantCopy(literal)) != kOk) return status;
    }
    if ((status = ParseValue(aRuntime, aElement, "Value", mValue, tValue::kInteger, &found)) != kOk)
        return status;
    if (!found) {
        literal.SetBool(false);
        if ((status = mValue.SetConstantCopy(literal)) != kOk) return status;
    }
    return kOk;
}

i4 cBoolNode::Resolve(cRuntime* aRuntime) {
    i4 status = pNode::Resolve(aRuntime);
    if (status == kOk) status = mOnValue.Resolve(this, aRuntime, true);
    if (status == kOk) status = mOffValue.Resolve(this, aRuntime, true);
    if (status == kOk) status = mValue.Resolve(this, aRuntime, true);
    return status;
}

i4 cBoolNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode*) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    cValue value, on, off;
    i4 status = mValue.Get(this, aRuntime, value);
    if (status == kOk) status = mOnValue.Get(this, aRuntime, on);
    if (status == kOk) status = mOffValue.Get(this, aRuntime, off);
    if (status != kOk) return status;
    // Any number but OnValue reads as false; OffValue plays no part.
    return aValue.SetBool(value.Equals(on)) ? kOk : kFailed;
}

i4 cBoolNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    if (!aValue) return kNothing;
    cValue chosen;
    i4 status = (aValue->Bool() ? mOnValue : mOffValue).Get(this, aRuntime, chosen);
    if (status != kOk) return status;
    if ((status = mValue.Set(this, aRuntime, &chosen, this)) != kOk) return status;
    Notify(aRuntime, &chosen, aOriginator);
    return kOk;
}

} // namespace gik
