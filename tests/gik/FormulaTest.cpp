// The formula engine: scanner, grammar with its precedence and
// associativity, every operator and function with the type rules, and
// evaluation of shared trees from several threads.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <string>
#include <thread>
#include <vector>

#include "gik/Expression.h"
#include "gik/Formula.h"
#include "gik/Runtime.h"
#include "gik/Scanner.h"
#include "gik/Shared.h"
#include "gik/Value.h"
#include "gik/Variables.h"
#include "kit/AutoreleasePool.h"

using namespace gik;

namespace {

std::string gEchoed;
void Capture(char aCharacter) {
    gEchoed += aCharacter;
}

class Formulas : public ::testing::Test {
protected:
    void SetUp() override {
        mVariables = llk::Retained(cVariables::New(4));
        cScanner::SetEcho(&Capture);
        gEchoed.clear();
    }
    void TearDown() override {
        llk::ReleaseAndClear(mVariables);
        cScanner::SetEcho(nullptr);
    }

    // Compiles and evaluates; false for a syntax error or "nothing".
    bool Eval(const char* aText, tScalar& aResult) {
        const char* error = nullptr;
        cFormula* f = cFormula::Compile(aText, &error);
        if (!f) {
            mError = error;
            return false;
        }
        mError.clear();
        bool has = f->Evaluate(mVariables, aResult);
        f->Release();
        return has;
    }
    i8 Int(const char* aText) {
        tScalar r;
        EXPECT_TRUE(Eval(aText, r)) << aText << " " << mError;
        EXPECT_NE(r.flavour, kFlavourReal) << aText;
        return r.AsSint();
    }
    double Real(const char* aText) {
        tScalar r;
        EXPECT_TRUE(Eval(aText, r)) << aText << " " << mError;
        EXPECT_EQ(r.flavour, kFlavourReal) << aText;
        return r.AsReal();
    }
    u4 Flavour(const char* aText) {
        tScalar r;
        EXPECT_TRUE(Eval(aText, r)) << aText << " " << mError;
        return r.flavour;
    }
    bool Nothing(const char* aText) {
        tScalar r;
        bool has = Eval(aText, r);
        return !has && mError.empty();
    }
    bool SyntaxError(const char* aText) {
        tScalar r;
        Eval(aText, r);
        return !mError.empty();
    }
    void Var(const char* aName, const tScalar& aValue) {
        ASSERT_EQ(mVariables->Set(aName, aValue), 0);
    }

    llk::uAutoreleasePool mPool;
    cVariables* mVariables = nullptr;
    std::string mError;
};

} // namespace

TEST_F(Formulas, PrecedenceOfTheLevels) {
    EXPECT_EQ(Int("1 + 2 * 3"), 7);
    EXPECT_EQ(Int("1 << 2 + 1"), 8);
    EXPECT_EQ(Int("(1 + 2) * 3"), 9);
    EXPECT_EQ(Int("7 - 2 - 1"), 4);    // left-associative
    EXPECT_EQ(Int("100 / 10 / 5"), 2); // left-associative
    EXPECT_EQ(Int("2 ** 3 ** 2"), 64); // "**" is left-associative too
    EXPECT_EQ(Int("-2 ** 2"), 4);      // and weaker than unary minus
    EXPECT_EQ(Int("2 * 3 ** 2"), 18);
    EXPECT_EQ(Int("1 | 2 ^ 3 & 6"), 1 | (2 ^ (3 & 6)));
    EXPECT_EQ(Int("1 = 1 & 3"), 1);   // "=" is tighter than "&"
    EXPECT_EQ(Int("2 < 3 = 1"), 1);   // relation tighter than equality
    EXPECT_EQ(Int("1 << 1 < 3"), 1);  // shift tighter than relation
    EXPECT_EQ(Int("1 || 0 && 0"), 1); // "&&" tighter than "||"
    EXPECT_EQ(Int("0 && 1 | 1"), 0);  // "|" tighter than "&&"
    EXPECT_EQ(Int("7 % 4 * 2"), 6);
    EXPECT_EQ(Int("~0"), -1);
    EXPECT_EQ(Int("- - 3"), 3);
    EXPECT_EQ(Int("+3"), 3);
}

TEST_F(Formulas, Conditionals) {
    EXPECT_EQ(Int("1 ? 2 : 3"), 2);
    EXPECT_EQ(Int("0 ? 2 : 3"), 3);
    EXPECT_EQ(Int("0 ? 1 : 0 ? 2 : 3"), 3); // the else branch nests
    EXPECT_EQ(Int("1 ? 0 ? 4 : 5 : 6"), 5); // and so does the then branch
    EXPECT_EQ(Int("1 || 0 ? 7 : 8"), 7);    // the condition is a logical-or
    EXPECT_EQ(Int("0 ? 1 : 2 + 3"), 5);
    // Only the chosen branch is evaluated.
    EXPECT_EQ(Int("1 ? 4 : 1 / 0"), 4);
    EXPECT_TRUE(Nothing("(1 / 0) ? 1 : 2"));
    tScalar half = tScalar::Real(0.5);
    Var("A", half);
    EXPECT_EQ(Int("A ? 1 : 2"), 1);
    EXPECT_TRUE(SyntaxError("1 ? 2"));
    EXPECT_TRUE(SyntaxError("1 : 2"));
    EXPECT_TRUE(SyntaxError("1 ? 2 : 3 : 4"));
    EXPECT_TRUE(SyntaxError("(1 ? 2) : 3"));
}

TEST_F(Formulas, Numbers) {
    EXPECT_EQ(Int("0x10 + 0x20"), 48);
    EXPECT_EQ(Flavour("0x10 + 0x20"), kFlavourSigned);
    EXPECT_EQ(Int("0xFFFFFFFF"), 4294967295ll);
    EXPECT_EQ(Int("0x123456789"), 4294967295ll); // read as 32 bits: saturates
    EXPECT_EQ(Int("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(Int("99999999999999999999"), INT64_MAX);
    EXPECT_DOUBLE_EQ(Real("1.5"), 1.5);
    EXPECT_DOUBLE_EQ(Real("1.5e3"), 1500.0);
    EXPECT_EQ(Int("7425e4"), 74250000); // an integer with an exponent stays integral
    EXPECT_EQ(Flavour("7425e4"), kFlavourSigned);
    EXPECT_EQ(Int("2E-1"), 0);
    EXPECT_EQ(Int("1e400"), INT64_MAX);
    EXPECT_TRUE(Nothing("1.0e400 + 0"));
    // "0X" is no hexadecimal prefix: 0 then the name X10.
    EXPECT_TRUE(SyntaxError("0X10"));
    // A leading "." is no number: the "." is echoed and dropped.
    EXPECT_EQ(Int(".5"), 5);
    EXPECT_EQ(gEchoed, ".");
}

TEST_F(Formulas, EscapedOperatorsAndCdata) {
    EXPECT_EQ(Int("6 &amp; 3"), 2);
    EXPECT_EQ(Int("1 &amp;&amp; 1"), 1);
    EXPECT_EQ(Int("2 &gt;= 1"), 1);
    EXPECT_EQ(Int("2 &lt;= 1"), 0);
    EXPECT_EQ(Int("2 &lt;&gt; 1"), 1);
    EXPECT_EQ(Int("1 &lt;&lt; 4"), 16);
    EXPECT_EQ(Int("16 &gt;&gt; 2"), 4);
    EXPECT_EQ(Int("<![CDATA[ 1 + 1 ]]>"), 2);
    EXPECT_TRUE(SyntaxError("<![CDATA[ 1 + 1"));
    EXPECT_TRUE(SyntaxError("1 + 1 ]]>"));
    EXPECT_TRUE(SyntaxError("<![CDATA[ 1 ]]> + 1"));
}

TEST_F(Formulas, UnknownCharactersAreEchoedAndIgnored) {
    EXPECT_EQ(Int("!1"), 1);
    EXPECT_EQ(gEchoed, "!");
    gEchoed.clear();
    // There is no "!=": it reads as "=".
    EXPECT_EQ(Int("2 != 2"), 1);
    EXPECT_EQ(Int("1\r+\r1"), 2); // a carriage return is no white space
    EXPECT_EQ(gEchoed, "!\r\r");
}

TEST_F(Formulas, SyntaxErrors) {
    EXPECT_TRUE(SyntaxError(""));
    EXPECT_TRUE(SyntaxError("1 +"));
    EXPECT_TRUE(SyntaxError("(1"));
    EXPECT_TRUE(SyntaxError("1)"));
    EXPECT_TRUE(SyntaxError("1 2"));
    EXPECT_TRUE(SyntaxError("A B"));
    EXPECT_TRUE(SyntaxError("()"));
    EXPECT_TRUE(SyntaxError("F()"));
    EXPECT_TRUE(SyntaxError("F(1, 2, 3)"));
    EXPECT_TRUE(SyntaxError("(1, 2)"));
    EXPECT_TRUE(SyntaxError("* 2"));
    EXPECT_EQ(mError, "syntax error");
}

TEST_F(Formulas, StackLimitIsMemoryExhausted) {
    std::string deep(20000, '(');
    deep += "1";
    deep += std::string(20000, ')');
    EXPECT_TRUE(SyntaxError(deep.c_str()));
    EXPECT_EQ(mError, "memory exhausted");
    std::string minus(20000, '-');
    minus += "1";
    EXPECT_TRUE(SyntaxError(minus.c_str()));
    EXPECT_EQ(mError, "memory exhausted");
}

TEST_F(Formulas, LongChainsEvaluateWithoutRecursion) {
    // Left-associative chains never fill the parser's stack, so their trees
    // can be very deep; evaluation keeps its own stack.
    std::string chain = "1";
    for (int i = 0; i < 200000; ++i)
        chain += "+1";
    EXPECT_EQ(Int(chain.c_str()), 200001);
    std::string nested;
    for (int i = 0; i < 4000; ++i)
        nested += "(";
    nested += "2";
    for (int i = 0; i < 4000; ++i)
        nested += ")";
    EXPECT_EQ(Int(nested.c_str()), 2);
    std::string conditionals;
    for (int i = 0; i < 3000; ++i)
        conditionals += "0 ? 1 : ";
    conditionals += "9";
    EXPECT_EQ(Int(conditionals.c_str()), 9);
}

TEST_F(Formulas, ArithmeticAndItsNothings) {
    EXPECT_TRUE(Nothing("1 / 0"));
    EXPECT_TRUE(Nothing("1 % 0"));
    EXPECT_TRUE(Nothing("1.0 / 0"));
    EXPECT_TRUE(Nothing("1.5 % 0.0"));
    EXPECT_TRUE(Nothing("2 ** 0"));
    EXPECT_TRUE(Nothing("2 ** -1"));
    EXPECT_TRUE(Nothing("10 ** 400"));
    EXPECT_TRUE(Nothing("1 << -1"));
    EXPECT_TRUE(Nothing("Unknown + 1"));
    EXPECT_EQ(Int("7 / 2"), 3);
    EXPECT_EQ(Int("-7 / 2"), -3);
    EXPECT_EQ(Int("-7 % 3"), -1);
    EXPECT_DOUBLE_EQ(Real("7.5 % 2"), 1.5);
    EXPECT_DOUBLE_EQ(Real("2 ** 0.5"), std::sqrt(2.0));
    EXPECT_EQ(Int("2 ** 62"), 4611686018427387904ll);
    EXPECT_EQ(Int("2 ** 64"), INT64_MAX); // truncated to 64 bits, saturating
    // The smallest integer by -1 wraps instead of trapping.
    EXPECT_EQ(Int("(-9223372036854775807 - 1) / -1"), INT64_MIN);
    EXPECT_EQ(Int("(-9223372036854775807 - 1) % -1"), 0);
    EXPECT_EQ(Int("9223372036854775807 + 1"), INT64_MIN); // wrapping
    EXPECT_EQ(Int("1 << 64"), 0);
    EXPECT_EQ(Int("-8 >> 1"), -4); // arithmetic for signed
    EXPECT_EQ(Int("-1 >> 100"), -1);
    EXPECT_DOUBLE_EQ(Real("-8.5 >> 1"), -4.0);
}

TEST_F(Formulas, TypeRules) {
    Var("U", tScalar::Unsigned(5));
    Var("S", tScalar::Signed(-3));
    Var("B", tScalar::Bool(true));
    Var("Y", tScalar::Byte(200));
    Var("R", tScalar::Real(2.5));
    EXPECT_EQ(Flavour("U + U"), kFlavourUnsigned);
    EXPECT_EQ(Flavour("U + S"), kFlavourSigned);
    EXPECT_EQ(Flavour("U + R"), kFlavourReal);
    EXPECT_EQ(Flavour("U < S"), kFlavourBool);
    // Bool and byte operands behave as unsigned in every operator.
    EXPECT_EQ(Flavour("B + B"), kFlavourUnsigned);
    EXPECT_EQ(Flavour("B * Y"), kFlavourUnsigned);
    EXPECT_EQ(Int("Y + Y"), 400);
    EXPECT_EQ(Int("(U = 5) && (S = -3)"), 1);
    // No short cut: both sides are evaluated, and a side with no value
    // leaves the whole without one, whatever the other side says.
    EXPECT_TRUE(Nothing("0 && 1 / 0"));
    EXPECT_TRUE(Nothing("1 || 1 / 0"));
    EXPECT_TRUE(Nothing("(1 / 0) && 0"));
    EXPECT_TRUE(Nothing("0 && Unset"));
    EXPECT_TRUE(Nothing("1 || Unset"));
    EXPECT_EQ(Int("(U = 5) + (S = -3)"), 2);
    EXPECT_EQ(Flavour("B << 2"), kFlavourUnsigned);
    EXPECT_EQ(Int("B << 2"), 4);
    // Shifts take the left operand's type; ">>" of unsigned is logical.
    EXPECT_EQ(Flavour("U << 1"), kFlavourUnsigned);
    EXPECT_TRUE(Nothing("U << S")); // a negative count
    Var("Big", tScalar::Unsigned(0x8000000000000000ull));
    EXPECT_EQ(static_cast<u8>(Int("Big >> 63")), 1u);
    // Mixed signed and unsigned compute as signed.
    EXPECT_EQ(Int("U - 10"), -5);
    EXPECT_EQ(static_cast<u8>(Int("U - U - 1")), UINT64_MAX); // unsigned wraps
    // "&" on reals converts the operands.
    EXPECT_EQ(Int("R & 3"), 2);
    // Comparisons: integers exact, reals within 1e-6.
    EXPECT_EQ(Int("1.0 = 1.0000001"), 1);
    EXPECT_EQ(Int("1.0 = 1.00001"), 0);
    EXPECT_EQ(Int("1 = 1"), 1);
    EXPECT_EQ(Int("1.0 <> 1.0000001"), 0);
    // Unary operators keep their own rules: "-" and "~" of a bool are its
    // logical not, of a byte the signed negation and inverse.
    EXPECT_EQ(Int("-(1=1)"), 0);
    EXPECT_EQ(Int("~(1=1)"), 0);
    EXPECT_EQ(Int("-(1=2)"), 1);
    EXPECT_EQ(Int("~(1=2)"), 1);
    EXPECT_EQ(Int("-B"), 0);
    EXPECT_EQ(Flavour("-B"), kFlavourBool);
    EXPECT_EQ(Flavour("~B"), kFlavourBool);
    EXPECT_EQ(Int("-(B=0) + 5"), 6);
    EXPECT_EQ(Int("-Y"), -200);
    EXPECT_EQ(Int("~Y"), -201);
    EXPECT_EQ(Flavour("-Y"), kFlavourSigned);
    EXPECT_EQ(Int("~R"), 0); // "~" of a real is a logical not
    EXPECT_EQ(Flavour("~R"), kFlavourBool);
    EXPECT_DOUBLE_EQ(Real("-R"), -2.5);
}

TEST_F(Formulas, TextOperandsGiveNothing) {
    llk::cString* text = llk::cString::New("abc", false);
    tScalar t;
    t.flavour = kFlavourText;
    t.text = text;
    Var("T", t);
    EXPECT_TRUE(Nothing("T + 1"));
    EXPECT_TRUE(Nothing("-T"));
    EXPECT_TRUE(Nothing("ABS(T)"));
    // A text alone is a value; as a condition it reads false.
    tScalar r;
    EXPECT_TRUE(Eval("T", r));
    EXPECT_EQ(r.flavour, kFlavourText);
    EXPECT_EQ(Int("T ? 1 : 2"), 2);
}

TEST_F(Formulas, ConstantsAndVariables) {
    EXPECT_DOUBLE_EQ(Real("PI"), 3.141592653589793);
    EXPECT_DOUBLE_EQ(Real("E"), 2.718281828459045);
    Var("PI", tScalar::Signed(3)); // the constant wins
    EXPECT_DOUBLE_EQ(Real("PI"), 3.141592653589793);
    Var("Width", tScalar::Signed(640));
    EXPECT_EQ(Int("Width / 2"), 320);
    EXPECT_TRUE(Nothing("width / 2")); // names are exact
    mVariables->Unset("Width");
    EXPECT_TRUE(Nothing("Width / 2"));
}

TEST_F(Formulas, Functions) {
    EXPECT_EQ(Int("NEG(5)"), -5);
    EXPECT_DOUBLE_EQ(Real("NEG(2.5)"), -2.5);
    Var("B", tScalar::Bool(true));
    EXPECT_EQ(Flavour("NEG(B)"), kFlavourBool);
    EXPECT_EQ(Int("NEG(B)"), 0);
    EXPECT_EQ(Int("ABS(-5)"), 5);
    EXPECT_DOUBLE_EQ(Real("ABS(-2.5)"), 2.5);
    EXPECT_EQ(Int("SGN(-5)"), -1);
    EXPECT_EQ(Int("SGN(0)"), 0);
    EXPECT_DOUBLE_EQ(Real("SGN(-0.5)"), -1.0);
    Var("U", tScalar::Unsigned(0));
    EXPECT_EQ(Flavour("SGN(U)"), kFlavourUnsigned);
    EXPECT_EQ(Int("SGN(U)"), 1);
    EXPECT_DOUBLE_EQ(Real("CEIL(1.2)"), 2.0);
    EXPECT_DOUBLE_EQ(Real("FLOOR(-1.2)"), -2.0);
    EXPECT_DOUBLE_EQ(Real("TRUNC(-1.7)"), -1.0);
    EXPECT_EQ(Int("CEIL(7)"), 7); // integers as they stand
    EXPECT_DOUBLE_EQ(Real("ROUND(2.345, 2)"), 2.35);
    EXPECT_DOUBLE_EQ(Real("ROUND(-2.5, 0)"), -3.0); // halves away from zero
    EXPECT_EQ(Int("ROUND(7, 2)"), 7);
    EXPECT_TRUE(Nothing("ROUND(2.5)"));
    EXPECT_TRUE(Nothing("ROUND(2.5, -1)")); // 10 ** -1 as unsigned is 0
    EXPECT_DOUBLE_EQ(Real("SQRT(16)"), 4.0);
    EXPECT_TRUE(Nothing("SQRT(-1)"));
    EXPECT_DOUBLE_EQ(Real("LN(E)"), 1.0);
    EXPECT_DOUBLE_EQ(Real("LG(1000)"), 3.0);
    EXPECT_TRUE(Nothing("LN(0)"));
    EXPECT_DOUBLE_EQ(Real("EXP(0)"), 1.0);
    EXPECT_DOUBLE_EQ(Real("SIN(0)"), 0.0);
    EXPECT_DOUBLE_EQ(Real("COS(0)"), 1.0);
    EXPECT_DOUBLE_EQ(Real("TAN(0)"), 0.0);
    EXPECT_DOUBLE_EQ(Real("ASIN(1)"), std::asin(1.0));
    EXPECT_DOUBLE_EQ(Real("ACOS(1)"), 0.0);
    EXPECT_DOUBLE_EQ(Real("ATAN(1)"), std::atan(1.0));
    EXPECT_TRUE(Nothing("ASIN(2)"));
    EXPECT_TRUE(Nothing("EXP(1000)"));
    // Names are matched exactly; an unknown one compiles and has no value.
    EXPECT_TRUE(Nothing("sin(0)"));
    EXPECT_TRUE(Nothing("FOO(1)"));
    EXPECT_TRUE(Nothing("SQRT(1, 2)"));
}

TEST_F(Formulas, TreeClassesAndTags) {
    const char* error = nullptr;
    cFormula* f = cFormula::Compile("A ? -B : ABS(1 + 2)", &error);
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->Root()->ClassType(), 0x10000006u); // conditional
    EXPECT_EQ(f->NodeCount(), 8u);
    EXPECT_EQ(f->Root()->Height(), 4u);
    Var("A", tScalar::Signed(0));
    cValue* v = f->Root()->Evaluate(mVariables);
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->Sint(), 3);
    Var("A", tScalar::Signed(1));
    EXPECT_EQ(f->Root()->Evaluate(mVariables), nullptr); // B is unset
    f->Release();
}

TEST_F(Formulas, SharedTreesEvaluateOnManyThreadsAtOnce) {
    cRuntime* runtime = cRuntime::New(false); // attaches the shared table
    ASSERT_NE(runtime, nullptr);
    const char* error = nullptr;
    cFormula* f =
        sShared::Formula("X < 0 ? ABS(X) * 2 : ROUND(X / 3.0, 2) + SQRT(X) + (X % 7)", &error);
    ASSERT_NE(f, nullptr);
    cFormula* again =
        sShared::Formula("X < 0 ? ABS(X) * 2 : ROUND(X / 3.0, 2) + SQRT(X) + (X % 7)", &error);
    EXPECT_EQ(f, again);
    again->Release();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            llk::uAutoreleasePool pool;
            cVariables* variables = cVariables::New(1);
            for (int i = 0; i < 20000; ++i) {
                i8 x = (i * 7 + t) % 200 - 100;
                variables->Set("X", tScalar::Signed(x));
                tScalar r;
                if (!f->Evaluate(variables, r)) {
                    ++wrong;
                    continue;
                }
                double expected = x < 0 ? static_cast<double>(-x * 2)
                                        : std::round(x / 3.0 * 100.0) / 100.0 +
                                              std::sqrt(static_cast<double>(x)) +
                                              static_cast<double>(x % 7);
                if (std::fabs(r.AsReal() - expected) > 1e-9) ++wrong;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);
    f->Release();
}

TEST_F(Formulas, CompilingFromManyThreadsCompilesOnce) {
    cRuntime* runtime = cRuntime::New(false);
    ASSERT_NE(runtime, nullptr);
    llk::u8 before = sShared::CompileCount();
    std::vector<std::thread> threads;
    std::atomic<const cFormula*> seen{nullptr};
    std::atomic<int> different{0};
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                cFormula* f = sShared::Formula("(A + B) * 0x1234 - C / 7", nullptr);
                const cFormula* expected = nullptr;
                if (!seen.compare_exchange_strong(expected, f) && expected != f) ++different;
                f->Release();
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(different.load(), 0);
    EXPECT_EQ(sShared::CompileCount() - before, 1u);
}

TEST_F(Formulas, TheTableShedsUnusedFormulasWhileOthersAreInUse) {
    llk::uAutoreleasePool pool;
    ASSERT_NE(cRuntime::New(false), nullptr); // attaches the shared table
    std::string sum;
    for (int i = 0; i < 1000; ++i)
        sum += " + X";
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            llk::uAutoreleasePool pool;
            cVariables* variables = cVariables::New(1);
            variables->Set("X", tScalar::Signed(1));
            for (int i = 0; i < 150; ++i) {
                // One text every thread holds while the others fill the table.
                cFormula* shared = sShared::Formula("X * 3 - 1", nullptr);
                cFormula* own =
                    sShared::Formula((std::to_string(t * 1000 + i) + sum).c_str(), nullptr);
                tScalar a, b;
                if (!shared || !own || !shared->Evaluate(variables, a) || a.AsSint() != 2 ||
                    !own->Evaluate(variables, b) || b.AsSint() != t * 1000 + i + 1000)
                    ++wrong;
                if (own) own->Release();
                if (shared) shared->Release();
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_LE(sShared::FormulaBytes(), 3 * sShared::kFormulaBudget);
}
