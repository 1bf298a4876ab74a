// gik::pFormulaNode: what SwissKnife and Converter nodes share:
// named variables, each a reference read into a gik::cVariables before the
// compiled formula is evaluated, and the conversion of results to the node's
// type.
#pragma once

#include <vector>

#include "gik/Node.h"
#include "gik/Scalar.h"

namespace gik {

class cFormula;
class cVariables;

class pFormulaNode : public pNode {
public:
    ~pFormulaNode() override;
    const char* ClassName() const override { return "pFormulaNode"; }

    i4 Resolve(cRuntime* aRuntime) override;
    bool IsNoCache(cRuntime* aRuntime) override;
    void SetImplemented(bool aImplemented) override;
    // The own time, or else the smallest non-zero time of the variables.
    u8 PollingTime() override;

    // True for "SwissKnife" and "Converter", false for the Int... forms.
    bool IsFloat() const { return mIsFloat; }
    u4 VariableCount() const { return static_cast<u4>(mVariables.size()); }

protected:
    struct tVariable {
        llk::cString* name = nullptr; // interned, not prefixed
        tValue value;
        ~tVariable();
    };
    enum tBound : u1 { kCurrent, kMinimum, kMaximum };

    // Reads "Variable" then "pVariable" children.
    i4 ParseVariables(cRuntime* aRuntime, const TiXmlElement* aElement);
    // Compiles the text of child aName through the process-wide table;
    // a formula that does not parse is logged and gives kNoMemory (2).
    i4 ParseFormula(const TiXmlElement* aElement, const char* aName, cFormula*& aFormula);
    // Reads every variable (its value, or a bound of its range) into the
    // variables; a failure passes through, an absent value is kNoValue.
    i4 ReadVariables(cRuntime* aRuntime, tBound aBound);
    // The result in the node's type: a real as its Sint in an integer node,
    // an integer as real in a float node.
    void Convert(const tScalar& aResult, cValue& aValue) const;
    // Evaluates into aValue; kNoValue for "nothing".
    i4 Evaluate(const cFormula* aFormula, cValue& aValue) const;

    bool mIsFloat = false;
    std::vector<tVariable*> mVariables;
    cVariables* mValues = nullptr;
};

} // namespace gik
