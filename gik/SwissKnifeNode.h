// gik::cSwissKnifeNode: "SwissKnife" and "IntSwissKnife", a
// read-only value computed by a formula over variables.
#pragma once

#include "gik/FormulaNode.h"

namespace gik {

class cSwissKnifeNode : public pFormulaNode {
public:
    static cSwissKnifeNode* New(cRuntime* aRuntime, const TiXmlElement* aElement, bool aIsFloat) {
        return Make<cSwissKnifeNode>(aRuntime, aElement, aIsFloat);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement, bool aIsFloat) {
        mIsFloat = aIsFloat;
        return Parse(aRuntime, aElement);
    }
    ~cSwissKnifeNode() override;
    u4 ClassCode() const override { return kTagSwissKnife; }
    const char* ClassName() const override { return "cSwissKnifeNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    // A knife is read-only: 8.
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
    i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) override;
    // The formula over the variables' minimums and over their maximums,
    // exchanged when reversed; kept until invalidated.
    i4 GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum,
                pNode* aOriginator) override;
    // Never writeable.
    u4 ComputeAccess() override;
    void OnInvalidate(cRuntime* aRuntime, cNotification* aNotification) override;

    const cFormula* Formula() const { return mFormula; }

private:
    cFormula* mFormula = nullptr;
    cValue* mResult = nullptr;
    cValue* mMinimum = nullptr;
    cValue* mMaximum = nullptr;
    bool mHasResult = false;
    bool mHasRange = false;
};

} // namespace gik
