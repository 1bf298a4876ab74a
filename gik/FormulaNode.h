// gik::pFormulaNode: what SwissKnife and Converter nodes share:
// named variables, each a reference read into a gik::cVariables before the
// compiled formula is evaluated, and the conversion of results to the node's
// type.
#pragma once

#include <vector>

#include "gik/Node.h"
#include "gik/Reading.h"
#include "gik/Scalar.h"

namespace gik {

class cEnumNode;
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

    // A "Constant" (a number) or an "Expression" (a formula) of the wide
    // reading.
    struct tPart {
        llk::cString* name = nullptr; // interned, not prefixed
        cValue* constant = nullptr;
        cFormula* formula = nullptr;
        ~tPart();
    };

protected:
    struct tVariable {
        llk::cString* name = nullptr; // interned, not prefixed
        tValue value;
        ~tVariable();
    };
    enum tBound : u1 { kCurrent, kMinimum, kMaximum };

    // Reads "Variable" then "pVariable" children, and in the wide reading
    // "Constant" and "Expression" children.
    i4 ParseVariables(cRuntime* aRuntime, const TiXmlElement* aElement);
    // Compiles the text of child aName through the process-wide table;
    // a formula that does not parse is logged and gives kNoMemory (2).
    i4 ParseFormula(const TiXmlElement* aElement, const char* aName, cFormula*& aFormula);
    // A reference's value as a formula takes it: in the wide reading an
    // enumeration gives the integer value of its entry.
    i4 ReadInput(cRuntime* aRuntime, const tValue& aInput, cValue& aValue);
    // A node's range as a formula takes it: in the wide reading that of an
    // enumeration spans the values of its implemented entries.
    i4 InputRange(cRuntime* aRuntime, pNode* aInput, cValue& aMinimum, cValue& aMaximum);
    // aNode as an enumeration whose entries count by number, or null.
    cEnumNode* NumberedEnumeration(pNode* aNode) const;
    // Reads every variable (its value, or a bound of its range) into the
    // variables, then the constants over them; a failure passes through, an
    // absent value is kNoValue. A float node takes every value as real.
    i4 ReadVariables(cRuntime* aRuntime, tBound aBound);
    // Sets a variable; a float node converts a value that is not real to
    // real, a text included (to 0.0).
    i4 SetVariable(const char* aName, cValue& aValue);
    // The result in the node's type: a real as its Sint in an integer node,
    // an integer as real in a float node.
    void Convert(const tScalar& aResult, cValue& aValue) const;
    // Evaluates the expressions over the variables, then aFormula into
    // aValue; kNoValue for "nothing".
    i4 Evaluate(const cFormula* aFormula, cValue& aValue);

    bool mIsFloat = false;
    tReading mReading; // the runtime's when the node was parsed
    std::vector<tVariable*> mVariables;
    std::vector<tPart*> mConstants;
    std::vector<tPart*> mExpressions;
    cVariables* mValues = nullptr;
};

} // namespace gik
