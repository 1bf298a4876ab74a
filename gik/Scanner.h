// The formula scanner: longest match wins, of equals the earlier
// rule. Blank, tab and newline are white space; any character no rule takes
// is handed to the echo sink (standard output by default) and skipped.
#pragma once

#include <cstddef>

#include "gik/Scalar.h"

namespace gik {

enum tTokenKind : int {
    kTokEnd = 0,
    kTokNumber = 256,
    kTokName,
    kTokPow,        // "**"
    kTokBitAnd2,    // "&amp;"
    kTokGE,         // ">=" "&gt;="
    kTokLE,         // "<=" "&lt;="
    kTokNE,         // "<>" "&lt;&gt;"
    kTokAndAnd,     // "&&" "&amp;&amp;"
    kTokOrOr,       // "||"
    kTokShl,        // "<<" "&lt;&lt;"
    kTokShr,        // ">>" "&gt;&gt;"
    kTokCdataOpen,  // "<![CDATA["
    kTokCdataClose, // "]]>"
    // Single characters % & ( ) * + , - / : < = > ? ^ | ~ are their own code.
};

struct tToken {
    int kind = kTokEnd;
    const char* start = nullptr;
    size_t length = 0;
    tScalar number; // kTokNumber
};

class cScanner {
public:
    using tEcho = void (*)(char aCharacter);

    cScanner(const char* aText, size_t aLength) : mText(aText), mEnd(aText + aLength), mAt(aText) {}

    // The next token; kTokEnd at the end of the text.
    tToken Next();

    // Where unknown characters go: standard output unless set (null: nowhere).
    static void SetEcho(tEcho aEcho);

private:
    const char* mText;
    const char* mEnd;
    const char* mAt;
};

} // namespace gik
