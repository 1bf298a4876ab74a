// gik::cStringRegNode: a zero-terminated text in a register of
// any length.
#pragma once

#include "gik/RegisterNode.h"

namespace gik {

class cStringRegNode : public pRegisterNode {
public:
    static cStringRegNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cStringRegNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    u4 ClassCode() const override { return kTagStringReg; }
    const char* ClassName() const override { return "cStringRegNode"; }

    // The text up to the first zero byte of the whole register.
    i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) override;
    // A text only (105); its length plus the terminator must fit (9); exactly
    // that many bytes are written, the rest of the register is untouched.
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
};

} // namespace gik
