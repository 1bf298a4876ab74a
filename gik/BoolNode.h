// gik::cBoolNode: true when Value equals OnValue.
#pragma once

#include "gik/ValueNode.h"

namespace gik {

class cBoolNode : public pValueNode {
public:
    static cBoolNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cBoolNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    u4 ClassCode() const override { return kTagBoolean; }
    const char* ClassName() const override { return "cBoolNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    i4 Resolve(cRuntime* aRuntime) override;
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
    i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) override;

private:
    tValue mOnValue;
    tValue mOffValue;
};

} // namespace gik
