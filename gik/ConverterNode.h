// gik::cConverterNode: "Converter" and "IntConverter", a value
// read through FormulaFrom (the target's value as TO) and written through
// FormulaTo (the new value as FROM). The inversion is only what FormulaTo
// says: no numeric search, and "Slope" is not read.
#pragma once

#include "gik/FormulaNode.h"
#include "gik/ValueNode.h"

namespace gik {

class cConverterNode : public pValueTarget<pFormulaNode> {
public:
    static cConverterNode* New(cRuntime* aRuntime, const TiXmlElement* aElement, bool aIsFloat) {
        return Make<cConverterNode>(aRuntime, aElement, aIsFloat);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement, bool aIsFloat) {
        mIsFloat = aIsFloat;
        return Parse(aRuntime, aElement);
    }
    ~cConverterNode() override;
    u4 ClassCode() const override { return kTagConverter; }
    const char* ClassName() const override { return "cConverterNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    i4 Resolve(cRuntime* aRuntime) override;
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
    i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) override;
    // The target's bounds through FormulaFrom, exchanged when reversed.
    i4 GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum,
                pNode* aOriginator) override;
    void OnInvalidate(cRuntime* aRuntime, cNotification* aNotification) override;

private:
    // FormulaFrom over the variables with TO set to aTo.
    i4 From(cRuntime* aRuntime, const cValue& aTo, cValue& aResult);

    cFormula* mFormulaFrom = nullptr;
    cFormula* mFormulaTo = nullptr;
    cValue* mResult = nullptr;
    cValue* mLastInput = nullptr;
    cValue* mMinimum = nullptr;
    cValue* mMaximum = nullptr;
    bool mHasResult = false;
    bool mHasRange = false;
};

} // namespace gik
