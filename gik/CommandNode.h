// gik::cCommandNode: executing writes CommandValue to Value; the
// command is complete when the two differ again.
#pragma once

#include "gik/ValueNode.h"

namespace gik {

class cCommandNode : public pValueNode {
public:
    static cCommandNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cCommandNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    u4 ClassCode() const override { return kTagCommand; }
    const char* ClassName() const override { return "cCommandNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    i4 Resolve(cRuntime* aRuntime) override;
    // aValue is not used: a set is an execution.
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;

    i4 Execute(cRuntime* aRuntime) { return SetValue(aRuntime, nullptr, nullptr); }
    // aDone: the register no longer holds CommandValue.
    i4 Completed(cRuntime* aRuntime, bool& aDone);

private:
    tValue mCommandValue;
};

} // namespace gik
