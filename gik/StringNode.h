// gik::cStringNode: a text view over its Value.
#pragma once

#include "gik/ValueNode.h"

namespace gik {

class cStringNode : public pValueNode {
public:
    static cStringNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cStringNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    u4 ClassCode() const override { return kTagString; }
    const char* ClassName() const override { return "cStringNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    i4 Resolve(cRuntime* aRuntime) override;
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
    i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) override;
};

} // namespace gik
