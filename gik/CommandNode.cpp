#include "gik/CommandNode.h"

#include "gik/Value.h"

namespace gik {

i4 cCommandNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = pNode::Parse(aRuntime, aElement);
    if (status != kOk || !aElement) return status;
    if ((status = ParseValue(aRuntime, aElement, "Value", mValue, tValue::kInteger)) != kOk)
        return status;
    return ParseValue(aRuntime, aElement, "CommandValue", mCommandValue, tValue::kInteger);
}

i4 cCommandNode::Resolve(cRuntime* aRuntime) {
    i4 status = pNode::Resolve(aRuntime);
    if (status == kOk) status = mValue.Resolve(this, aRuntime, true);
    if (status == kOk) status = mCommandValue.Resolve(this, aRuntime, true);
    return status;
}

i4 cCommandNode::SetValue(cRuntime* aRuntime, const cValue*, pNode* aOriginator) {
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    cValue command;
    i4 status = mCommandValue.Get(this, aRuntime, command);
    if (status != kOk) return status;
    if ((status = mValue.Set(this, aRuntime, &command, this)) != kOk) return status;
    Notify(aRuntime, &command, aOriginator);
    return kOk;
}

i4 cCommandNode::Completed(cRuntime* aRuntime, bool& aDone) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    cValue command, current;
    i4 status = mCommandValue.Get(this, aRuntime, command);
    if (status == kOk) status = mValue.Get(this, aRuntime, current);
    if (status != kOk) return status;
    if (current.IsAbsent()) return kNoValue;
    aDone = !current.Equals(command);
    return kOk;
}

} // namespace gik
