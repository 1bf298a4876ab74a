#include "gik/Scanner.h"

#include <atomic>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace gik {

namespace {

void EchoToStdout(char aCharacter) {
    fputc(static_cast<unsigned char>(aCharacter), stdout);
}

std::atomic<cScanner::tEcho> gEcho{&EchoToStdout};

inline bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
inline bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
inline bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

struct tOperator {
    const char* text;
    int kind;
};

// In the order of the scanner's rules: of two matches of one length the
// earlier wins.
const tOperator kOperators[] = {
    {"**", kTokPow},         {"&amp;", kTokBitAnd2},
    {">=", kTokGE},          {"&gt;=", kTokGE},
    {"<=", kTokLE},          {"&lt;=", kTokLE},
    {"<>", kTokNE},          {"&lt;&gt;", kTokNE},
    {"&&", kTokAndAnd},      {"&amp;&amp;", kTokAndAnd},
    {"||", kTokOrOr},        {"<<", kTokShl},
    {"&lt;&lt;", kTokShl},   {">>", kTokShr},
    {"&gt;&gt;", kTokShr},   {"<![CDATA[", kTokCdataOpen},
    {"]]>", kTokCdataClose},
};

const char kSingles[] = "%&()*+,-/:<=>?^|~";

// Digits from aAt; returns the end.
const char* Digits(const char* aAt, const char* aEnd) {
    while (aAt < aEnd && IsDigit(*aAt))
        ++aAt;
    return aAt;
}

// An exponent ("e" or "E", optional sign, digits) at aAt, or aAt itself.
const char* Exponent(const char* aAt, const char* aEnd) {
    if (aAt >= aEnd || (*aAt != 'e' && *aAt != 'E')) return aAt;
    const char* p = aAt + 1;
    if (p < aEnd && (*p == '+' || *p == '-')) ++p;
    const char* q = Digits(p, aEnd);
    return q > p ? q : aAt;
}

double ReadReal(const char* aStart, const char* aEnd) {
    double value = 0.0;
    auto result = std::from_chars(aStart, aEnd, value, std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range) {
        // As atof: an overflow is infinite, an underflow zero.
        const char* e = aStart;
        while (e < aEnd && *e != 'e' && *e != 'E')
            ++e;
        bool negativeExponent = e + 1 < aEnd && e[1] == '-';
        return negativeExponent ? 0.0 : HUGE_VAL;
    }
    return value;
}

} // namespace

void cScanner::SetEcho(tEcho aEcho) {
    gEcho.store(aEcho, std::memory_order_relaxed);
}

tToken cScanner::Next() {
    for (;;) {
        tToken t;
        while (mAt < mEnd && (*mAt == ' ' || *mAt == '\t' || *mAt == '\n'))
            ++mAt;
        if (mAt >= mEnd) {
            t.start = mAt;
            return t;
        }
        const char* p = mAt;
        t.start = p;
        char c = *p;

        if (IsLetter(c)) {
            const char* q = p + 1;
            while (q < mEnd && (IsLetter(*q) || IsDigit(*q)))
                ++q;
            t.kind = kTokName;
            t.length = static_cast<size_t>(q - p);
            mAt = q;
            return t;
        }

        if (IsDigit(c)) {
            // Hexadecimal: "0x" and at least one hexadecimal digit.
            size_t hexLength = 0;
            if (c == '0' && p + 2 < mEnd && p[1] == 'x' && IsHexDigit(p[2])) {
                const char* q = p + 2;
                while (q < mEnd && IsHexDigit(*q))
                    ++q;
                hexLength = static_cast<size_t>(q - p);
            }
            const char* decimalEnd = Digits(p, mEnd);
            size_t decimalLength = static_cast<size_t>(decimalEnd - p);
            // Real: digits "." digits, with an optional exponent.
            size_t realLength = 0;
            if (decimalEnd < mEnd && *decimalEnd == '.') {
                const char* fraction = Digits(decimalEnd + 1, mEnd);
                if (fraction > decimalEnd + 1)
                    realLength = static_cast<size_t>(Exponent(fraction, mEnd) - p);
            }
            // Integer with an exponent.
            const char* intExponentEnd = Exponent(decimalEnd, mEnd);
            size_t intExponentLength =
                intExponentEnd > decimalEnd ? static_cast<size_t>(intExponentEnd - p) : 0;

            size_t best = decimalLength;
            int rule = 1; // 0 hex, 1 decimal, 2 real, 3 integer with exponent
            if (hexLength > best) {
                best = hexLength;
                rule = 0;
            }
            if (realLength > best) {
                best = realLength;
                rule = 2;
            }
            if (intExponentLength > best) {
                best = intExponentLength;
                rule = 3;
            }
            t.kind = kTokNumber;
            t.length = best;
            const char* end = p + best;
            switch (rule) {
            case 0: {
                // Read as "0x%x": 32 bits; a longer number saturates.
                u8 v = 0;
                for (const char* q = p + 2; q < end; ++q) {
                    u4 d = IsDigit(*q) ? static_cast<u4>(*q - '0')
                                       : static_cast<u4>((*q | 0x20) - 'a' + 10);
                    v = v * 16 + d;
                    if (v > 0xFFFFFFFFull) v = 0x100000000ull;
                }
                t.number = tScalar::Signed(static_cast<i8>(v > 0xFFFFFFFFull ? 0xFFFFFFFFull : v));
                break;
            }
            case 1: {
                // Read as a signed 64-bit decimal; an overflow saturates.
                u8 v = 0;
                bool over = false;
                for (const char* q = p; q < end; ++q) {
                    u8 d = static_cast<u8>(*q - '0');
                    if (v > (static_cast<u8>(INT64_MAX) - d) / 10) {
                        over = true;
                        break;
                    }
                    v = v * 10 + d;
                }
                t.number = tScalar::Signed(over ? INT64_MAX : static_cast<i8>(v));
                break;
            }
            case 2:
                t.number = tScalar::Real(ReadReal(p, end));
                break;
            default:
                t.number = tScalar::Signed(RealToSint(ReadReal(p, end)));
                break;
            }
            mAt = end;
            return t;
        }

        // Operators: the longest, and of equals the first in the table.
        size_t bestLength = 0;
        int bestKind = 0;
        size_t left = static_cast<size_t>(mEnd - p);
        for (const tOperator& op : kOperators) {
            size_t n = strlen(op.text);
            if (n > bestLength && n <= left && memcmp(p, op.text, n) == 0) {
                bestLength = n;
                bestKind = op.kind;
            }
        }
        if (bestLength == 0 && c != '\0' && strchr(kSingles, c)) {
            bestLength = 1;
            bestKind = static_cast<unsigned char>(c);
        }
        if (bestLength > 0) {
            t.kind = bestKind;
            t.length = bestLength;
            mAt = p + bestLength;
            return t;
        }

        // Anything else is echoed and otherwise ignored.
        if (tEcho echo = gEcho.load(std::memory_order_relaxed)) echo(c);
        ++mAt;
    }
}

} // namespace gik
