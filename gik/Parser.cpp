// The formula grammar, loosest to tightest:
//   start        CDATA_OPEN conditional CDATA_CLOSE | conditional
//   conditional  logical-or "?" conditional ":" conditional | logical-or
//   logical-or   "||"      logical-and  "&&"     bit-or  "|"
//   bit-xor      "^"       bit-and      "&" "&amp;"      equality "=" "<>"
//   relation     "<" ">" "<=" ">="      shift  "<<" ">>"
//   additive     "+" "-"   multiplicative "*" "/" "%"
//   power        power "**" unary
//   unary        "+" unary | "-" unary | "~" unary | primary
//   primary      NUMBER | NAME | NAME "(" c ")" | NAME "(" c "," c ")" | "(" c ")"
// Binary levels are left-associative; the conditional nests to the right.
#include <cstring>
#include <new>

#include "gik/Formula.h"
#include "gik/Scanner.h"
#include "gik/Variables.h"
#include "kit/Env.h"

namespace gik {

class sParser {
public:
    static const char* Parse(cFormula* aFormula);

private:
    enum tKind : u1 { kBinary, kUnary, kQuestion, kColon, kParen, kCall };
    struct tOp {
        tKind kind;
        u1 precedence;
        u4 operation; // binary or unary operation number
        u4 hash;      // kCall: name hash
        u4 arguments; // kCall: arguments completed so far
    };

    explicit sParser(cFormula* aFormula) : mFormula(aFormula) {}
    const char* Run();

    template <class T> T* Make() {
        T* node = new (std::nothrow) T();
        if (!node) return nullptr;
        node->mTag = node->ClassCode();
        mFormula->mFootprint += sizeof(T);
        try {
            mFormula->mNodes.push_back(node);
        } catch (...) {
            node->Release();
            return nullptr;
        }
        return node;
    }
    bool Push(pExpression* aNode);
    bool PushOp(const tOp& aOp);
    bool Full() const { return mOps.size() + mOperands.size() >= cFormula::kStackLimit; }
    // Reduces the operator on top; false on a malformed stack or no memory.
    bool Reduce();
    // Reduces binary and unary operators tighter than aPrecedence (or as
    // tight, for a left-associative one).
    bool ReduceTighter(u1 aPrecedence, bool aLeft);
    // Reduces every operator and finished conditional down to the nearest
    // group or open "?".
    bool ReduceGroup();

    static bool Binary(int aToken, u4& aOperation, u1& aPrecedence);

    cFormula* mFormula;
    std::vector<tOp> mOps;
    std::vector<pExpression*> mOperands;
    bool mOutOfMemory = false;
};

namespace {
constexpr const char* kSyntaxError = "syntax error";
constexpr const char* kExhausted = "memory exhausted";
constexpr u1 kUnaryPrecedence = 12;
} // namespace

bool sParser::Binary(int aToken, u4& aOp, u1& aPrec) {
    switch (aToken) {
    case kTokOrOr:
        aOp = kOpOrOr;
        aPrec = 1;
        return true;
    case kTokAndAnd:
        aOp = kOpAndAnd;
        aPrec = 2;
        return true;
    case '|':
        aOp = kOpBitOr;
        aPrec = 3;
        return true;
    case '^':
        aOp = kOpBitXor;
        aPrec = 4;
        return true;
    case '&':
    case kTokBitAnd2:
        aOp = kOpBitAnd;
        aPrec = 5;
        return true;
    case '=':
        aOp = kOpEq;
        aPrec = 6;
        return true;
    case kTokNE:
        aOp = kOpNe;
        aPrec = 6;
        return true;
    case '<':
        aOp = kOpLt;
        aPrec = 7;
        return true;
    case '>':
        aOp = kOpGt;
        aPrec = 7;
        return true;
    case kTokLE:
        aOp = kOpLe;
        aPrec = 7;
        return true;
    case kTokGE:
        aOp = kOpGe;
        aPrec = 7;
        return true;
    case kTokShl:
        aOp = kOpShl;
        aPrec = 8;
        return true;
    case kTokShr:
        aOp = kOpShr;
        aPrec = 8;
        return true;
    case '+':
        aOp = kOpAdd;
        aPrec = 9;
        return true;
    case '-':
        aOp = kOpSub;
        aPrec = 9;
        return true;
    case '*':
        aOp = kOpMul;
        aPrec = 10;
        return true;
    case '/':
        aOp = kOpDiv;
        aPrec = 10;
        return true;
    case '%':
        aOp = kOpMod;
        aPrec = 10;
        return true;
    case kTokPow:
        aOp = kOpPow;
        aPrec = 11;
        return true;
    default:
        return false;
    }
}

bool sParser::Push(pExpression* aNode) {
    if (!aNode) {
        mOutOfMemory = true;
        return false;
    }
    try {
        mOperands.push_back(aNode);
    } catch (...) {
        mOutOfMemory = true;
        return false;
    }
    return true;
}

bool sParser::PushOp(const tOp& aOp) {
    try {
        mOps.push_back(aOp);
    } catch (...) {
        mOutOfMemory = true;
        return false;
    }
    return true;
}

bool sParser::Reduce() {
    tOp op = mOps.back();
    mOps.pop_back();
    switch (op.kind) {
    case kBinary: {
        if (mOperands.size() < 2) return false;
        auto* node = Make<cBinOpExpression>();
        if (!node) return mOutOfMemory = true, false;
        node->mOperation = op.operation;
        node->mRight = mOperands.back();
        mOperands.pop_back();
        node->mLeft = mOperands.back();
        u4 h = node->mLeft->Height() > node->mRight->Height() ? node->mLeft->Height()
                                                              : node->mRight->Height();
        node->mHeight = h + 1;
        mOperands.back() = node;
        return true;
    }
    case kUnary: {
        if (mOperands.empty()) return false;
        auto* node = Make<cUnaOpExpression>();
        if (!node) return mOutOfMemory = true, false;
        node->mOperation = op.operation;
        node->mOperand = mOperands.back();
        node->mHeight = node->mOperand->Height() + 1;
        mOperands.back() = node;
        return true;
    }
    case kColon: {
        if (mOperands.size() < 3) return false;
        auto* node = Make<cCondiExpression>();
        if (!node) return mOutOfMemory = true, false;
        node->mElse = mOperands.back();
        mOperands.pop_back();
        node->mThen = mOperands.back();
        mOperands.pop_back();
        node->mCondition = mOperands.back();
        u4 h = node->mCondition->Height();
        if (node->mThen->Height() > h) h = node->mThen->Height();
        if (node->mElse->Height() > h) h = node->mElse->Height();
        node->mHeight = h + 1;
        mOperands.back() = node;
        return true;
    }
    default:
        return false;
    }
}

bool sParser::ReduceTighter(u1 aPrecedence, bool aLeft) {
    while (!mOps.empty()) {
        const tOp& top = mOps.back();
        if (top.kind != kBinary && top.kind != kUnary) break;
        if (top.precedence < aPrecedence || (top.precedence == aPrecedence && !aLeft)) break;
        if (!Reduce()) return false;
    }
    return true;
}

bool sParser::ReduceGroup() {
    while (!mOps.empty()) {
        tKind kind = mOps.back().kind;
        if (kind == kParen || kind == kCall || kind == kQuestion) break;
        if (!Reduce()) return false;
    }
    return true;
}

const char* sParser::Run() {
    const char* text = mFormula->Text();
    cScanner scanner(text, strlen(text));
    tToken token = scanner.Next();
    bool cdata = false;
    if (token.kind == kTokCdataOpen) {
        cdata = true;
        token = scanner.Next();
    }
    bool operand = true; // an operand is expected
    for (;;) {
        // Each pass takes "token"; a "continue" keeps a token read ahead.
        if (Full()) return kExhausted;
        if (operand) {
            switch (token.kind) {
            case kTokNumber: {
                auto* node = Make<cValueExpression>();
                if (node) node->mValue = token.number;
                if (!Push(node)) return kExhausted;
                operand = false;
                break;
            }
            case kTokName: {
                tToken next = scanner.Next();
                if (next.kind == '(') {
                    u4 hash = llk::sEnv::Crc32(token.start, token.length);
                    if (!PushOp({kCall, 0, 0, hash, 0})) return kExhausted;
                } else {
                    auto* node = Make<cIdentExpression>();
                    if (node) {
                        node->mName = static_cast<char*>(llk::sEnv::Malloc(token.length + 1, true));
                        if (!node->mName) {
                            node = nullptr;
                        } else {
                            memcpy(node->mName, token.start, token.length);
                            node->mHash = llk::sEnv::Crc32(token.start, token.length);
                            if (strcmp(node->mName, "PI") == 0) {
                                node->mIsConstant = true;
                                node->mConstant = tScalar::Real(3.141592653589793);
                            } else if (strcmp(node->mName, "E") == 0) {
                                node->mIsConstant = true;
                                node->mConstant = tScalar::Real(2.718281828459045);
                            }
                        }
                    }
                    if (!Push(node)) return kExhausted;
                    operand = false;
                    token = next;
                    continue;
                }
                break;
            }
            case '(':
                if (!PushOp({kParen, 0, 0, 0, 0})) return kExhausted;
                break;
            case '-':
                if (!PushOp({kUnary, kUnaryPrecedence, kOpMinus, 0, 0})) return kExhausted;
                break;
            case '~':
                if (!PushOp({kUnary, kUnaryPrecedence, kOpNot, 0, 0})) return kExhausted;
                break;
            case '+':
                break; // "+" unary makes no node
            default:
                return kSyntaxError;
            }
        } else {
            u4 operation = 0;
            u1 precedence = 0;
            if (Binary(token.kind, operation, precedence)) {
                if (!ReduceTighter(precedence, true))
                    return mOutOfMemory ? kExhausted : kSyntaxError;
                if (!PushOp({kBinary, precedence, operation, 0, 0})) return kExhausted;
                operand = true;
            } else {
                switch (token.kind) {
                case '?':
                    if (!ReduceTighter(1, true)) return mOutOfMemory ? kExhausted : kSyntaxError;
                    if (!PushOp({kQuestion, 0, 0, 0, 0})) return kExhausted;
                    operand = true;
                    break;
                case ':':
                    // Close finished conditionals until the matching "?".
                    for (;;) {
                        if (!ReduceTighter(1, true))
                            return mOutOfMemory ? kExhausted : kSyntaxError;
                        if (mOps.empty()) return kSyntaxError;
                        tOp& top = mOps.back();
                        if (top.kind == kQuestion) {
                            top.kind = kColon;
                            break;
                        }
                        if (top.kind != kColon) return kSyntaxError;
                        if (!Reduce()) return mOutOfMemory ? kExhausted : kSyntaxError;
                    }
                    operand = true;
                    break;
                case ')': {
                    if (!ReduceGroup()) return mOutOfMemory ? kExhausted : kSyntaxError;
                    if (mOps.empty()) return kSyntaxError;
                    tOp top = mOps.back();
                    if (top.kind == kParen) {
                        mOps.pop_back();
                    } else if (top.kind == kCall) {
                        mOps.pop_back();
                        u4 count = top.arguments + 1;
                        if (mOperands.size() < count) return kSyntaxError;
                        auto* node = Make<cFunctExpression>();
                        if (!node) return kExhausted;
                        node->mHash = top.hash;
                        node->mCount = count;
                        u4 h = 0;
                        for (u4 i = 0; i < count; ++i) {
                            const pExpression* a = mOperands[mOperands.size() - count + i];
                            node->mArguments[i] = a;
                            if (a->Height() > h) h = a->Height();
                        }
                        node->mHeight = h + 1;
                        mOperands.resize(mOperands.size() - count);
                        if (!Push(node)) return kExhausted;
                    } else {
                        return kSyntaxError; // an open "?"
                    }
                    break;
                }
                case ',': {
                    if (!ReduceGroup()) return mOutOfMemory ? kExhausted : kSyntaxError;
                    if (mOps.empty() || mOps.back().kind != kCall) return kSyntaxError;
                    if (mOps.back().arguments >= cFunctExpression::kMaxArguments - 1)
                        return kSyntaxError;
                    ++mOps.back().arguments;
                    operand = true;
                    break;
                }
                case kTokCdataClose:
                    if (!cdata) return kSyntaxError;
                    token = scanner.Next();
                    if (token.kind != kTokEnd) return kSyntaxError;
                    cdata = false;
                    continue;
                case kTokEnd: {
                    if (cdata) return kSyntaxError;
                    while (!mOps.empty()) {
                        tKind kind = mOps.back().kind;
                        if (kind == kParen || kind == kCall || kind == kQuestion)
                            return kSyntaxError;
                        if (!Reduce()) return mOutOfMemory ? kExhausted : kSyntaxError;
                    }
                    if (mOperands.size() != 1) return kSyntaxError;
                    mFormula->mRoot = mOperands.back();
                    return nullptr;
                }
                default:
                    return kSyntaxError;
                }
            }
        }
        token = scanner.Next();
    }
}

const char* sParser::Parse(cFormula* aFormula) {
    sParser parser(aFormula);
    const char* error = nullptr;
    try {
        error = parser.Run();
    } catch (...) {
        error = kExhausted;
    }
    return error;
}

cFormula* cFormula::Compile(const char* aText, const char** aError) {
    const char* error = kExhausted;
    cFormula* formula = new (std::nothrow) cFormula();
    if (formula) {
        size_t length = strlen(aText ? aText : "");
        formula->mText = static_cast<char*>(llk::sEnv::Malloc(length + 1, false));
        formula->mFootprint = sizeof(cFormula) + length + 1;
        if (formula->mText) {
            memcpy(formula->mText, aText ? aText : "", length + 1);
            error = sParser::Parse(formula);
        }
        if (error) {
            formula->Release();
            formula = nullptr;
        }
    }
    if (aError) *aError = error;
    return formula;
}

cFormula::~cFormula() {
    // Flat: the tree's nodes hold no references, so nothing recurses.
    for (pExpression* node : mNodes)
        node->Release();
    llk::sEnv::Free(mText);
}

} // namespace gik
