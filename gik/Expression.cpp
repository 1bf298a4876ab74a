#include "gik/Expression.h"

#include <cmath>
#include <new>
#include <type_traits>

#include "gik/Value.h"
#include "gik/Variables.h"
#include "kit/Env.h"

namespace gik {

namespace {

// Compile-time CRC-32 (no final inversion), for function names.
constexpr u4 Crc(const char* aText) {
    u4 crc = 0xFFFFFFFFu;
    for (; *aText; ++aText) {
        crc ^= static_cast<u1>(*aText);
        for (int k = 0; k < 8; ++k)
            crc = (crc & 1u) ? (crc >> 1) ^ 0xEDB88320u : crc >> 1;
    }
    return crc;
}

constexpr u4 kNEG = Crc("NEG");
constexpr u4 kABS = Crc("ABS");
constexpr u4 kSGN = Crc("SGN");
constexpr u4 kCEIL = Crc("CEIL");
constexpr u4 kFLOOR = Crc("FLOOR");
constexpr u4 kTRUNC = Crc("TRUNC");
constexpr u4 kROUND = Crc("ROUND");
constexpr u4 kSQRT = Crc("SQRT");
constexpr u4 kLN = Crc("LN");
constexpr u4 kLG = Crc("LG");
constexpr u4 kEXP = Crc("EXP");
constexpr u4 kSIN = Crc("SIN");
constexpr u4 kCOS = Crc("COS");
constexpr u4 kTAN = Crc("TAN");
constexpr u4 kASIN = Crc("ASIN");
constexpr u4 kACOS = Crc("ACOS");
constexpr u4 kATAN = Crc("ATAN");

// Something to compute with: a number. Nothing and texts give nothing.
inline bool Computes(const tScalar& a) {
    return a.number;
}

// Bool and byte operands behave as unsigned in every operator, so that
// comparisons combine: (A=0)&&(B=1) computes.
inline u4 Promote(u4 aFlavour) {
    return (aFlavour == kFlavourBool || aFlavour == kFlavourByte) ? kFlavourUnsigned : aFlavour;
}

inline u4 ResultType(const tScalar& a, const tScalar& b) {
    u4 x = Promote(a.flavour), y = Promote(b.flavour);
    if (x == kFlavourReal || y == kFlavourReal) return kFlavourReal;
    if (x == kFlavourSigned || y == kFlavourSigned) return kFlavourSigned;
    return kFlavourUnsigned;
}

inline i8 Wrap(u8 aBits) {
    return static_cast<i8>(aBits);
}

inline bool RealResult(double aValue, tScalar& aResult) {
    if (!std::isfinite(aValue)) return false;
    aResult = tScalar::Real(aValue);
    return true;
}

// The four orderings read alike on every numeric type.
template <class T> bool Order(u4 aOp, T a, T b, tScalar& aOut) {
    const bool result = aOp == kOpGt   ? a > b
                        : aOp == kOpLe ? a <= b
                        : aOp == kOpGe ? a >= b
                                       : a < b;
    aOut = tScalar::Bool(result);
    return true;
}

template <class T> tScalar Integer(T aValue) {
    if constexpr (std::is_signed_v<T>)
        return tScalar::Signed(aValue);
    else
        return tScalar::Unsigned(aValue);
}

// Signed and unsigned results share one body. Sums, differences and products
// wrap through the unsigned form, so overflow stays defined.
template <class T>
bool IntegerBinary(u4 aOp, T a, T b, const tScalar& aRight, tScalar& aOut, bool aAnyExponent) {
    const u8 ua = static_cast<u8>(a), ub = static_cast<u8>(b);
    switch (aOp) {
    case kOpAdd:
        aOut = Integer(static_cast<T>(ua + ub));
        return true;
    case kOpSub:
        aOut = Integer(static_cast<T>(ua - ub));
        return true;
    case kOpMul:
        aOut = Integer(static_cast<T>(ua * ub));
        return true;
    case kOpDiv:
        if (b == 0) return false;
        // The smallest signed number divided by -1 wraps to itself.
        if constexpr (std::is_signed_v<T>)
            if (b == -1) {
                aOut = Integer(Wrap(0 - ua));
                return true;
            }
        aOut = Integer(static_cast<T>(a / b));
        return true;
    case kOpMod:
        if (b == 0) return false;
        if constexpr (std::is_signed_v<T>)
            if (b == -1) {
                aOut = Integer(T{0});
                return true;
            }
        aOut = Integer(static_cast<T>(a % b));
        return true;
    case kOpPow: {
        double e = aRight.AsReal();
        if (!(e > 0.0) && !aAnyExponent) return false;
        double p = std::pow(static_cast<double>(a), e);
        if (!std::isfinite(p)) return false;
        if constexpr (std::is_signed_v<T>)
            aOut = Integer(RealToSint(p));
        else
            aOut = Integer(RealToUint(p));
        return true;
    }
    case kOpBitAnd:
        aOut = Integer(static_cast<T>(a & b));
        return true;
    case kOpBitOr:
        aOut = Integer(static_cast<T>(a | b));
        return true;
    case kOpBitXor:
        aOut = Integer(static_cast<T>(a ^ b));
        return true;
    case kOpGt:
    case kOpLe:
    case kOpGe:
    case kOpLt:
        return Order(aOp, a, b, aOut);
    case kOpEq:
        aOut = tScalar::Bool(a == b);
        return true;
    case kOpNe:
        aOut = tScalar::Bool(a != b);
        return true;
    default:
        return false;
    }
}

// ">>" on a signed number: arithmetic, and defined for any count.
inline i8 ShiftRight(i8 aValue, u8 aCount) {
    if (aCount >= 64) return aValue < 0 ? -1 : 0;
    return aValue >> aCount;
}
inline i8 ShiftLeft(i8 aValue, u8 aCount) {
    if (aCount >= 64) return 0;
    return Wrap(static_cast<u8>(aValue) << aCount);
}

} // namespace

bool sEvaluator::Binary(u4 aOp, const tScalar& aL, const tScalar& aR, tScalar& aOut,
                        const tReading& aReading) {
    const bool anyExponent = aReading.Has(tReading::kPowers);
    if (!Computes(aL) || !Computes(aR)) return false;

    if (aOp == kOpShl || aOp == kOpShr) {
        if (aR.AsSint() < 0) return false;
        u8 n = aR.AsUint();
        switch (Promote(aL.flavour)) {
        case kFlavourUnsigned: {
            u8 v = aL.u;
            aOut = tScalar::Unsigned(n >= 64 ? 0 : (aOp == kOpShl ? v << n : v >> n));
            return true;
        }
        case kFlavourSigned: {
            i8 v = aL.s;
            aOut = tScalar::Signed(aOp == kOpShl ? ShiftLeft(v, n) : ShiftRight(v, n));
            return true;
        }
        default: { // real: shifted as a signed number, kept real
            i8 v = aL.AsSint();
            return RealResult(
                static_cast<double>(aOp == kOpShl ? ShiftLeft(v, n) : ShiftRight(v, n)), aOut);
        }
        }
    }
    if (aOp == kOpAndAnd) {
        aOut = tScalar::Bool(aL.AsBool() && aR.AsBool());
        return true;
    }
    if (aOp == kOpOrOr) {
        aOut = tScalar::Bool(aL.AsBool() || aR.AsBool());
        return true;
    }

    u4 type = ResultType(aL, aR);
    if (type == kFlavourReal) {
        double a = aL.AsReal(), b = aR.AsReal();
        switch (aOp) {
        case kOpAdd:
            return RealResult(a + b, aOut);
        case kOpSub:
            return RealResult(a - b, aOut);
        case kOpMul:
            return RealResult(a * b, aOut);
        case kOpDiv:
            if (b == 0.0) return false;
            return RealResult(a / b, aOut);
        case kOpMod:
            if (b == 0.0) return false;
            return RealResult(std::fmod(a, b), aOut);
        case kOpPow: {
            if (!(b > 0.0) && !anyExponent) return false;
            return RealResult(std::pow(a, b), aOut);
        }
        case kOpBitAnd:
            aOut = tScalar::Signed(aL.AsSint() & aR.AsSint());
            return true;
        case kOpBitOr:
            aOut = tScalar::Signed(aL.AsSint() | aR.AsSint());
            return true;
        case kOpBitXor:
            aOut = tScalar::Signed(aL.AsSint() ^ aR.AsSint());
            return true;
        case kOpGt:
        case kOpLe:
        case kOpGe:
        case kOpLt:
            return Order(aOp, a, b, aOut);
        case kOpEq:
            aOut = tScalar::Bool(std::fabs(a - b) < 1e-6);
            return true;
        case kOpNe:
            aOut = tScalar::Bool(!(std::fabs(a - b) < 1e-6));
            return true;
        default:
            return false;
        }
    }
    if (type == kFlavourSigned)
        return IntegerBinary<i8>(aOp, aL.AsSint(), aR.AsSint(), aR, aOut, anyExponent);
    return IntegerBinary<u8>(aOp, aL.AsUint(), aR.AsUint(), aR, aOut, anyExponent);
}

// Unary operators do not promote: "-" and "~" of a bool are its logical
// not, as "~" of a real is.
bool sEvaluator::Unary(u4 aOp, const tScalar& aA, tScalar& aOut) {
    if (!Computes(aA)) return false;
    if (aA.flavour == kFlavourBool || (aOp != kOpMinus && aA.flavour == kFlavourReal)) {
        aOut = tScalar::Bool(!aA.AsBool());
        return true;
    }
    if (aA.flavour == kFlavourReal) return RealResult(-aA.r, aOut);
    u8 v = static_cast<u8>(aA.AsSint());
    aOut = tScalar::Signed(Wrap(aOp == kOpMinus ? 0 - v : ~v));
    return true;
}

bool sEvaluator::Function(u4 aHash, u4 aCount, const tScalar* aArgs, tScalar& aOut) {
    if (aHash == kROUND) {
        if (aCount != 2 || !Computes(aArgs[0]) || !Computes(aArgs[1])) return false;
        const tScalar& v = aArgs[0];
        if (v.flavour != kFlavourReal) {
            aOut = v;
            return true;
        }
        double p = static_cast<double>(RealToUint(std::pow(10.0, aArgs[1].AsReal())));
        double whole = 0.0;
        double fraction = std::modf(v.r, &whole);
        return RealResult(std::round(fraction * p) / p + whole, aOut);
    }
    if (aCount != 1 || !Computes(aArgs[0])) return false;
    const tScalar& a = aArgs[0];
    bool real = a.flavour == kFlavourReal;
    switch (aHash) {
    case kNEG:
        return Unary(kOpMinus, a, aOut);
    case kABS: {
        if (real) return RealResult(std::fabs(a.r), aOut);
        i8 s = a.AsSint();
        aOut = tScalar::Signed(s < 0 ? Wrap(0 - static_cast<u8>(s)) : s);
        return true;
    }
    case kSGN:
        if (real) {
            aOut = tScalar::Real(a.r > 0.0 ? 1.0 : (a.r < 0.0 ? -1.0 : 0.0));
            return true;
        }
        if (a.flavour == kFlavourSigned) {
            aOut = tScalar::Signed(a.s > 0 ? 1 : (a.s < 0 ? -1 : 0));
            return true;
        }
        aOut = tScalar::Unsigned(1);
        return true;
    case kCEIL:
    case kFLOOR:
    case kTRUNC:
        if (!real) {
            aOut = a;
            return true;
        }
        return RealResult(aHash == kCEIL    ? std::ceil(a.r)
                          : aHash == kFLOOR ? std::floor(a.r)
                                            : std::trunc(a.r),
                          aOut);
    case kSQRT: {
        double x = a.AsReal();
        if (x < 0.0) return false;
        return RealResult(std::sqrt(x), aOut);
    }
    case kLN:
        return RealResult(std::log(a.AsReal()), aOut);
    case kLG:
        return RealResult(std::log10(a.AsReal()), aOut);
    case kEXP:
        return RealResult(std::exp(a.AsReal()), aOut);
    case kSIN:
        return RealResult(std::sin(a.AsReal()), aOut);
    case kCOS:
        return RealResult(std::cos(a.AsReal()), aOut);
    case kTAN:
        return RealResult(std::tan(a.AsReal()), aOut);
    case kASIN:
        return RealResult(std::asin(a.AsReal()), aOut);
    case kACOS:
        return RealResult(std::acos(a.AsReal()), aOut);
    case kATAN:
        return RealResult(std::atan(a.AsReal()), aOut);
    default:
        return false; // an unknown name compiles and has no value
    }
}

namespace {

struct tFrame {
    const pExpression* expression;
    u4 stage;
};

// Nothing: neither a number nor a text.
inline tScalar Nothing() {
    tScalar s;
    s.flavour = 6;
    return s;
}
inline bool IsNothing(const tScalar& s) {
    return !s.number && !(s.flavour == kFlavourText && s.text);
}

} // namespace

bool sEvaluator::Run(const pExpression* aRoot, const cVariables* aVariables, tScalar& aResult,
                     const tReading& aReading) {
    if (!aRoot) return false;
    constexpr u4 kInline = 48;
    tFrame inlineFrames[kInline];
    tScalar inlineValues[kInline + 1];
    tFrame* frames = inlineFrames;
    tScalar* values = inlineValues;
    // A frame per level at most; a pending value per level plus the result.
    u4 height = aRoot->mHeight;
    tFrame* heapFrames = nullptr;
    tScalar* heapValues = nullptr;
    if (height > kInline) {
        heapFrames = new (std::nothrow) tFrame[height];
        heapValues = new (std::nothrow) tScalar[static_cast<size_t>(height) + 1];
        if (!heapFrames || !heapValues) {
            delete[] heapFrames;
            delete[] heapValues;
            return false;
        }
        frames = heapFrames;
        values = heapValues;
    }

    u4 nf = 0, nv = 0;
    frames[nf++] = {aRoot, 0};
    while (nf > 0) {
        tFrame& f = frames[nf - 1];
        const pExpression* e = f.expression;
        switch (e->mTag) {
        case pExpression::kValue:
            values[nv++] = static_cast<const cValueExpression*>(e)->mValue;
            --nf;
            break;
        case pExpression::kIdent: {
            auto* ident = static_cast<const cIdentExpression*>(e);
            if (ident->mIsConstant) {
                values[nv++] = ident->mConstant;
            } else {
                const tScalar* v =
                    aVariables ? aVariables->Find(ident->mHash, ident->Name()) : nullptr;
                values[nv++] = v ? *v : Nothing();
            }
            --nf;
            break;
        }
        case pExpression::kUnaOp: {
            auto* una = static_cast<const cUnaOpExpression*>(e);
            if (f.stage == 0) {
                f.stage = 1;
                frames[nf++] = {una->mOperand, 0};
            } else {
                tScalar r;
                if (!Unary(una->mOperation, values[nv - 1], r)) r = Nothing();
                values[nv - 1] = r;
                --nf;
            }
            break;
        }
        case pExpression::kBinOp: {
            auto* bin = static_cast<const cBinOpExpression*>(e);
            if (f.stage == 0) {
                f.stage = 1;
                frames[nf++] = {bin->mLeft, 0};
            } else if (f.stage == 1) {
                // Both sides are always evaluated: no short-circuit.
                f.stage = 2;
                frames[nf++] = {bin->mRight, 0};
            } else {
                tScalar r;
                if (!Binary(bin->mOperation, values[nv - 2], values[nv - 1], r, aReading))
                    r = Nothing();
                --nv;
                values[nv - 1] = r;
                --nf;
            }
            break;
        }
        case pExpression::kFunct: {
            auto* fn = static_cast<const cFunctExpression*>(e);
            if (f.stage < fn->mCount) {
                const pExpression* argument = fn->mArguments[f.stage];
                ++f.stage;
                frames[nf++] = {argument, 0};
            } else {
                tScalar r;
                if (!Function(fn->mHash, fn->mCount, &values[nv - fn->mCount], r)) r = Nothing();
                nv -= fn->mCount;
                values[nv++] = r;
                --nf;
            }
            break;
        }
        case pExpression::kCondi: {
            auto* c = static_cast<const cCondiExpression*>(e);
            if (f.stage == 0) {
                f.stage = 1;
                frames[nf++] = {c->mCondition, 0};
            } else if (f.stage == 1) {
                tScalar condition = values[--nv];
                if (IsNothing(condition)) {
                    values[nv++] = Nothing();
                    --nf;
                } else {
                    f.stage = 2;
                    // Only the chosen branch is evaluated.
                    frames[nf++] = {condition.AsBool() ? c->mThen : c->mElse, 0};
                }
            } else {
                --nf;
            }
            break;
        }
        default:
            values[nv++] = Nothing();
            --nf;
            break;
        }
    }
    bool has = nv == 1 && !IsNothing(values[0]);
    if (has) aResult = values[0];
    delete[] heapFrames;
    delete[] heapValues;
    return has;
}

bool pExpression::Evaluate(const cVariables* aVariables, tScalar& aResult,
                           const tReading& aReading) const {
    return sEvaluator::Run(this, aVariables, aResult, aReading);
}

cValue* pExpression::Evaluate(const cVariables* aVariables) const {
    tScalar r;
    if (!sEvaluator::Run(this, aVariables, r)) return nullptr;
    cValue* v = cValue::New();
    if (!v || !v->SetScalar(r)) return nullptr;
    return v;
}

cIdentExpression::~cIdentExpression() {
    llk::sEnv::Free(mName);
}

} // namespace gik
