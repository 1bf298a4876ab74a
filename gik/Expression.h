// Compiled formula trees: gik::pExpression and its six classes.
//
// A tree is built once per formula text and then shared by every node of
// every runtime that uses that text, from any thread: evaluation writes
// nothing into the tree. It is iterative, over a stack sized by
// the tree's height, so no formula can exhaust the C stack, however deep.
// The nodes of a tree are owned by its gik::cFormula; children are plain
// pointers.
#pragma once

#include "gik/Object.h"
#include "gik/Reading.h"
#include "gik/Scalar.h"

namespace gik {

class cValue;
class cVariables;

// Binary operation numbers.
enum tBinOp : u4 {
    kOpAdd = 0,
    kOpSub = 1,
    kOpMul = 2,
    kOpDiv = 3,
    kOpPow = 5,
    kOpBitAnd = 6,
    kOpBitOr = 7,
    kOpBitXor = 8,
    kOpShl = 9,
    kOpShr = 10,
    kOpGt = 11,
    kOpLe = 12,
    kOpGe = 13,
    kOpLt = 14,
    kOpEq = 15,
    kOpNe = 16,
    kOpAndAnd = 17,
    kOpOrOr = 18,
    kOpMod = 19,
};

// Unary operation numbers.
enum tUnaOp : u4 { kOpNot = 0, kOpMinus = 1 };

class pExpression : public pObject {
public:
    static constexpr u4 kUnaOp = 0x10000003;
    static constexpr u4 kBinOp = 0x10000004;
    static constexpr u4 kFunct = 0x10000005;
    static constexpr u4 kCondi = 0x10000006;
    static constexpr u4 kIdent = 0x10000007;
    static constexpr u4 kValue = 0x10000008;

    i4 Initialize() override { return kNotProvided; }
    const char* ClassName() const override { return "pExpression"; }

    // The value of this tree over aVariables: a new autoreleased value, or
    // null for "nothing".
    cValue* Evaluate(const cVariables* aVariables) const;
    // The same without allocation; false for "nothing". aReading chooses
    // the rules of the operators that differ between the readings.
    bool Evaluate(const cVariables* aVariables, tScalar& aResult,
                  const tReading& aReading = tReading::Strict()) const;

    u4 ClassType() const { return ClassCode(); }
    // Levels of this tree: 1 for a leaf.
    u4 Height() const { return mHeight; }

protected:
    friend class sParser;
    friend class sEvaluator;
    u4 mTag = 0;
    u4 mHeight = 1;
};

class cUnaOpExpression : public pExpression {
public:
    i4 Initialize() override { return kOk; }
    u4 ClassCode() const override { return kUnaOp; }
    const char* ClassName() const override { return "cUnaOpExpression"; }
    u4 Operation() const { return mOperation; }
    const pExpression* Operand() const { return mOperand; }

private:
    friend class sParser;
    friend class sEvaluator;
    u4 mOperation = kOpMinus;
    const pExpression* mOperand = nullptr;
};

class cBinOpExpression : public pExpression {
public:
    i4 Initialize() override { return kOk; }
    u4 ClassCode() const override { return kBinOp; }
    const char* ClassName() const override { return "cBinOpExpression"; }
    u4 Operation() const { return mOperation; }
    const pExpression* Left() const { return mLeft; }
    const pExpression* Right() const { return mRight; }

private:
    friend class sParser;
    friend class sEvaluator;
    u4 mOperation = kOpAdd;
    const pExpression* mLeft = nullptr;
    const pExpression* mRight = nullptr;
};

class cFunctExpression : public pExpression {
public:
    static constexpr u4 kMaxArguments = 2;
    i4 Initialize() override { return kOk; }
    u4 ClassCode() const override { return kFunct; }
    const char* ClassName() const override { return "cFunctExpression"; }
    u4 NameHash() const { return mHash; }
    u4 ArgumentCount() const { return mCount; }
    const pExpression* Argument(u4 aIndex) const {
        return aIndex < mCount ? mArguments[aIndex] : nullptr;
    }

private:
    friend class sParser;
    friend class sEvaluator;
    u4 mHash = 0;
    u4 mCount = 0;
    const pExpression* mArguments[kMaxArguments] = {nullptr, nullptr};
    // No scratch results: the tree is shared between threads.
};

class cCondiExpression : public pExpression {
public:
    i4 Initialize() override { return kOk; }
    u4 ClassCode() const override { return kCondi; }
    const char* ClassName() const override { return "cCondiExpression"; }

private:
    friend class sParser;
    friend class sEvaluator;
    const pExpression* mCondition = nullptr;
    const pExpression* mThen = nullptr;
    const pExpression* mElse = nullptr;
};

class cIdentExpression : public pExpression {
public:
    i4 Initialize() override { return kOk; }
    ~cIdentExpression() override;
    u4 ClassCode() const override { return kIdent; }
    const char* ClassName() const override { return "cIdentExpression"; }
    u4 NameHash() const { return mHash; }
    const char* Name() const { return mName ? mName : ""; }

private:
    friend class sParser;
    friend class sEvaluator;
    u4 mHash = 0;
    char* mName = nullptr;
    bool mIsConstant = false; // "PI" or "E"
    tScalar mConstant;
};

class cValueExpression : public pExpression {
public:
    i4 Initialize() override { return kOk; }
    u4 ClassCode() const override { return kValue; }
    const char* ClassName() const override { return "cValueExpression"; }
    const tScalar& Value() const { return mValue; }

private:
    friend class sParser;
    friend class sEvaluator;
    tScalar mValue;
};

// The iterative evaluator behind pExpression::Evaluate.
class sEvaluator {
public:
    static bool Run(const pExpression* aRoot, const cVariables* aVariables, tScalar& aResult,
                    const tReading& aReading = tReading::Strict());

    // The operations, also used by the tests of the type rules.
    static bool Binary(u4 aOperation, const tScalar& aLeft, const tScalar& aRight, tScalar& aResult,
                       const tReading& aReading = tReading::Strict());
    static bool Unary(u4 aOperation, const tScalar& aOperand, tScalar& aResult);
    static bool Function(u4 aHash, u4 aCount, const tScalar* aArguments, tScalar& aResult);
};

} // namespace gik
