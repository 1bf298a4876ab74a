#include "gik/XmlDepth.h"

#include <algorithm>
#include <cstring>
#include <tinyxml.h>

#include "gik/Text.h"

namespace gik {

namespace {

inline char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

inline bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// tinyxml's letters: the ASCII ones, and every byte from 0x7F up.
inline bool IsLetter(char c) {
    return (Lower(c) >= 'a' && Lower(c) <= 'z') || static_cast<u1>(c) >= 0x7F;
}

inline bool IsNameChar(char c) {
    return IsLetter(c) || IsDigit(c) || c == '_' || c == '-' || c == '.' || c == ':';
}

inline bool IsQuote(char c) {
    return c == '"' || c == '\'';
}

// One reading of a text in one character mode.
class cReading {
public:
    enum tMode { kUndecided, kBytes, kUtf8 };

    cReading(const char* aEnd, tMode aMode, u4 aLimit) : mEnd(aEnd), mMode(aMode), mLimit(aLimit) {}

    // The deepest nesting from aAt, a place at the top.
    u4 Deepest(const char* aAt) const {
        const char* p = aAt;
        u4 depth = 0, deepest = 0;
        while ((p = Text(p)) < mEnd) {
            const char* open = p;
            if (Starts(open, "<?xml", true)) {
                p = Declaration(open + 5);
                if (depth == 0 && mMode == kUndecided) {
                    // The first declaration at the top decides the mode. The
                    // two read ASCII alike, so a text without other bytes is
                    // read once.
                    u4 bytes = cReading(mEnd, kBytes, mLimit).Deepest(p);
                    u4 utf8 = IsAscii(p) ? bytes : cReading(mEnd, kUtf8, mLimit).Deepest(p);
                    return std::max({deepest, bytes, utf8});
                }
            } else if (Starts(open, "<!--")) {
                p = Past(open + 4, "-->");
            } else if (Starts(open, "<![CDATA[")) {
                p = Past(open + 9, "]]>");
            } else if (Starts(open, "</")) {
                if (depth > 0) --depth;
                p = Past(open + 2, ">");
            } else if (open + 1 < mEnd && (IsLetter(open[1]) || open[1] == '_')) {
                if (++depth > deepest && (deepest = depth) > mLimit) return deepest;
                bool empty = false;
                p = Tag(open + 2, empty);
                if (empty) --depth;
            } else {
                p = Past(open + 1, ">"); // tinyxml's "unknown" node, "<!" and "<?" among them
            }
        }
        return deepest;
    }

private:
    // True when no byte from aAt to the end is above 0x7F.
    bool IsAscii(const char* aAt) const {
        u1 any = 0;
        for (; aAt < mEnd; ++aAt)
            any |= static_cast<u1>(*aAt);
        return any < 0x80;
    }

    bool Starts(const char* aAt, const char* aPrefix, bool aNoCase = false) const {
        size_t n = strlen(aPrefix);
        if (static_cast<size_t>(mEnd - aAt) < n) return false;
        for (size_t i = 0; i < n; ++i)
            if ((aNoCase ? Lower(aAt[i]) : aAt[i]) != aPrefix[i]) return false;
        return true;
    }

    // Past the first aClose at or after aAt, or the end.
    const char* Past(const char* aAt, const char* aClose) const {
        size_t n = strlen(aClose);
        for (; static_cast<size_t>(mEnd - aAt) >= n; ++aAt)
            if (memcmp(aAt, aClose, n) == 0) return aAt + n;
        return mEnd;
    }

    // Past one character of text or of a quoted value.
    const char* Char(const char* aAt) const {
        if (*aAt == '&') return Reference(aAt);
        if (mMode != kUtf8) return aAt + 1;
        auto length = static_cast<size_t>(TiXmlBase::utf8ByteTable[static_cast<u1>(*aAt)]);
        return aAt + std::min(std::max<size_t>(length, 1), static_cast<size_t>(mEnd - aAt));
    }

    // Past a character reference at "&": "&#x", or "&#", runs to the next
    // ";" when everything back from there to the "x" or the "#" is a digit.
    // Anything else is one character (named entities hold no markup).
    const char* Reference(const char* aAt) const {
        if (mEnd - aAt < 3 || aAt[1] != '#') return aAt + 1;
        bool hex = aAt[2] == 'x';
        const char* from = aAt + (hex ? 3 : 2);
        if (from >= mEnd) return aAt + 1;
        auto* semicolon =
            static_cast<const char*>(memchr(from, ';', static_cast<size_t>(mEnd - from)));
        if (!semicolon) return aAt + 1;
        for (const char* q = semicolon - 1; *q != (hex ? 'x' : '#'); --q)
            if (!(hex ? IsHexDigit(*q) : IsDigit(*q))) return aAt + 1;
        return semicolon + 1;
    }

    // Past the bytes that are one character each and not aStop: every byte
    // but "&" in the byte mode, and ASCII ones in UTF-8.
    const char* Plain(const char* aAt, char aStop) const {
        if (mMode == kUtf8) {
            while (aAt < mEnd && *aAt != aStop && *aAt != '&' && static_cast<u1>(*aAt) < 0x80)
                ++aAt;
        } else {
            while (aAt < mEnd && *aAt != aStop && *aAt != '&')
                ++aAt;
        }
        return aAt;
    }

    // To the next "<" through text, or the end.
    const char* Text(const char* aAt) const {
        while ((aAt = Plain(aAt, '<')) < mEnd && *aAt != '<')
            aAt = Char(aAt);
        return aAt;
    }

    // Past the closing quote of a value whose first character is at aAt.
    const char* Quoted(const char* aAt, char aQuote) const {
        while ((aAt = Plain(aAt, aQuote)) < mEnd && *aAt != aQuote)
            aAt = Char(aAt);
        return aAt < mEnd ? aAt + 1 : mEnd;
    }

    // tinyxml's white space, with the three UTF-8 byte order marks it
    // skips as such in UTF-8 mode.
    const char* Space(const char* aAt) const {
        while (aAt < mEnd) {
            if (mMode == kUtf8 && (Starts(aAt, "\xEF\xBB\xBF") || Starts(aAt, "\xEF\xBF\xBE") ||
                                   Starts(aAt, "\xEF\xBF\xBF")))
                aAt += 3;
            else if (sText::IsSpace(*aAt))
                ++aAt;
            else
                break;
        }
        return aAt;
    }

    // Past a start tag whose name began before aAt; "/>" makes it empty.
    const char* Tag(const char* aAt, bool& aEmpty) const {
        while (aAt < mEnd && *aAt != '>') {
            char c = *aAt;
            if (c != '"' && c != '\'' && c != '/') {
                ++aAt;
            } else if (IsQuote(*aAt)) {
                aAt = Quoted(aAt + 1, *aAt);
            } else if (*aAt == '/' && aAt + 1 < mEnd && aAt[1] == '>') {
                aEmpty = true;
                return aAt + 2;
            } else {
                ++aAt;
            }
        }
        return aAt < mEnd ? aAt + 1 : mEnd;
    }

    // Past a declaration after "<?xml": only the values of "version",
    // "encoding" and "standalone" are read as values, quoted or not; any
    // other word is stepped over up to white space or ">".
    const char* Declaration(const char* aAt) const {
        while (aAt < mEnd) {
            if (*aAt == '>') return aAt + 1;
            aAt = Space(aAt);
            if (Starts(aAt, "version", true) || Starts(aAt, "encoding", true) ||
                Starts(aAt, "standalone", true)) {
                while (aAt < mEnd && IsNameChar(*aAt))
                    ++aAt;
                aAt = Space(aAt);
                if (aAt >= mEnd || *aAt != '=') return aAt; // tinyxml stops here
                aAt = Space(aAt + 1);
                if (aAt < mEnd && IsQuote(*aAt)) {
                    aAt = Quoted(aAt + 1, *aAt);
                } else {
                    while (aAt < mEnd && !sText::IsSpace(*aAt) && *aAt != '/' && *aAt != '>') {
                        if (IsQuote(*aAt)) return aAt; // tinyxml stops here
                        ++aAt;
                    }
                }
            } else {
                while (aAt < mEnd && *aAt != '>' && !sText::IsSpace(*aAt))
                    ++aAt;
            }
        }
        return mEnd;
    }

    const char* mEnd;
    tMode mMode;
    u4 mLimit;
};

} // namespace

u4 sXmlDepth::Measure(const char* aText, size_t aLength, u4 aLimit) {
    if (!aText) return 0;
    const char* end = aText + aLength;
    // A byte order mark decides UTF-8 before anything else.
    bool mark = aLength >= 3 && memcmp(aText, "\xEF\xBB\xBF", 3) == 0;
    return cReading(end, mark ? cReading::kUtf8 : cReading::kUndecided, aLimit).Deepest(aText);
}

} // namespace gik
