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

} // namespace gik

namespace llk {
class cString;
}

namespace gik {

// A new text owned by the caller (count 1, not autoreleased), or null.
llk::cString* NewOwnedText(const char* aText);

} // namespace gik
