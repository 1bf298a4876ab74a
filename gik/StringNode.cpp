#include "gik/StringNode.h"

#include "gik/Value.h"

namespace gik {

i4 cStringNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = pNode::Parse(aRuntime, aElement);
    if (status != kOk || !aElement) return status;
    // A literal is stored as text.
    return ParseValue(aRuntime, aElement, "Value", mValue, tValue::kText);
}

i4 cStringNode::Resolve(cRuntime* aRuntime) {
    i4 status = pNode::Resolve(aRuntime);
    if (status == kOk) status = mValue.Resolve(this, aRuntime, true);
    return status;
}

i4 cStringNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode*) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    return mValue.Get(this, aRuntime, aValue);
}

i4 cStringNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    if (!aValue) return kNothing;
    i4 status = mValue.Set(this, aRuntime, aValue, this);
    if (status != kOk) return status;
    Notify(aRuntime, aValue, aOriginator);
    return kOk;
}

} // namespace gik
