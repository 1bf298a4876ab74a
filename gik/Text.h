// Small text helpers of the kernel: numbers from document text, trimming,
// and access to tinyxml elements.
#pragma once

#include <cstddef>

#include "gik/Status.h"

class TiXmlElement;

namespace gik {

class sText {
public:
    // A number as a scanner reads it: leading white space, then "0x" or "0X"
    // and hexadecimal digits (64 bits; more is unreadable), or an optional
    // sign and decimal digits (saturating at the 64-bit limits). What follows
    // the number is ignored. False when no number is there.
    static bool ReadInteger(const char* aText, i8& aValue);
    // A whole text as a 64-bit address term, white space around it
    // allowed: an optional sign, then "0x" or "0X" and at most 16
    // hexadecimal digits, or decimal digits of at most 64 bits. A negative
    // term is its two's complement. False for anything else.
    static bool ReadAddress(const char* aText, u8& aValue);
    // A real in the C locale (or a hexadecimal integer); false when none.
    static bool ReadReal(const char* aText, double& aValue);

    // The text of aElement's first child element called aName, or null.
    static const char* ChildText(const TiXmlElement* aElement, const char* aName);
    // The first child element called aName, or null.
    static const TiXmlElement* Child(const TiXmlElement* aElement, const char* aName);
    // The text of aElement itself: its first text child, or null.
    static const char* Text(const TiXmlElement* aElement);

    static bool IsSpace(char c) {
        return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
    }
};

// While one lives, the child lookups of sText on its element are answered
// from one pass over the element's children, not by a walk each: node
// classes look up some twenty optional children by name. Lookups on other
// elements walk as before. One per thread at a time is in force (the
// innermost).
class uChildIndex {
public:
    explicit uChildIndex(const TiXmlElement* aElement);
    ~uChildIndex();
    uChildIndex(const uChildIndex&) = delete;
    uChildIndex& operator=(const uChildIndex&) = delete;

    // True when aElement is indexed; aChild is then its first child called
    // aName, or null.
    static bool Find(const TiXmlElement* aElement, const char* aName, const TiXmlElement*& aChild);

private:
    struct tEntry {
        u8 key; // the length and the first bytes of the name
        const char* name;
        const TiXmlElement* element;
    };
    static constexpr u4 kEntries = 48;
    static u8 Key(const char* aName);

    static thread_local uChildIndex* sCurrent;
    uChildIndex* mOuter;
    const TiXmlElement* mElement;
    u4 mCount = 0;
    bool mComplete = true; // false when the element has more children than fit
    tEntry mEntries[kEntries];
};

} // namespace gik

namespace llk {
class cString;
}

namespace gik {

// A new text owned by the caller (count 1, not autoreleased), or null.
llk::cString* NewOwnedText(const char* aText);

} // namespace gik
