// gik::cFloatRegNode: an IEEE 754 single (4 bytes) or double
// (8 bytes).
#pragma once

#include "gik/RegisterNode.h"

namespace gik {

class cFloatRegNode : public pRegisterNode {
public:
    static cFloatRegNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cFloatRegNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    u4 ClassCode() const override { return kTagFloatReg; }
    const char* ClassName() const override { return "cFloatRegNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
    i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) override;
    // The largest double either way, whatever the length.
    i4 GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum,
                pNode* aOriginator) override;

private:
    // The length of a transfer: 4 or 8, also from a "pLength".
    i4 ValueLength(cRuntime* aRuntime, u4& aLength);
};

} // namespace gik
