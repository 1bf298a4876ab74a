// gik::cFormula: one compiled formula text and its tree. Texts are
// compiled by an operator-precedence parser with explicit stacks, so that no
// input can recurse: its stack limit of 10000 entries stands in for the
// table-driven parser's ("memory exhausted"), any other violation of the
// grammar is a "syntax error".
//
// Compiled formulas are shared through the process-wide table of
// gik::sShared and must never change after compilation.
#pragma once

#include <vector>

#include "gik/Expression.h"

namespace gik {

class cFormula : public pObject {
public:
    static constexpr size_t kStackLimit = 10000;

    // A new formula, owned by the caller (not autoreleased), or null with
    // aError set to "syntax error" or "memory exhausted".
    static cFormula* Compile(const char* aText, const char** aError);

    ~cFormula() override;
    u4 ClassCode() const override { return 0x1000000a; }
    const char* ClassName() const override { return "cFormula"; }

    const char* Text() const { return mText ? mText : ""; }
    const pExpression* Root() const { return mRoot; }
    u4 NodeCount() const { return static_cast<u4>(mNodes.size()); }
    // About the bytes the formula holds: its text and its tree.
    size_t Footprint() const { return mFootprint + mNodes.capacity() * sizeof(pExpression*); }
    // False for "nothing". Safe from any number of threads at once.
    bool Evaluate(const cVariables* aVariables, tScalar& aResult,
                  const tReading& aReading = tReading::Strict()) const {
        return sEvaluator::Run(mRoot, aVariables, aResult, aReading);
    }

private:
    friend class sParser;
    cFormula() = default;

    char* mText = nullptr;
    const pExpression* mRoot = nullptr;
    std::vector<pExpression*> mNodes; // every node of the tree, owned
    size_t mFootprint = 0;
};

} // namespace gik
