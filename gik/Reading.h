// gik::tReading: how a runtime reads register description documents.
//
// The strict reading is the kernel's own smaller dialect of GenICam, and
// stays exactly as it is. The wide reading adds, rule by rule, what real
// cameras' documents use and GenICam defines. Each rule is one bit, and the
// code of each widening asks for its own bit beside the strict path.
#pragma once

#include "gik/Status.h"

namespace gik {

struct tReading {
    enum tRule : u4 {
        // IntReg and MaskedIntReg of 1 to 8 bytes, signed limits of their
        // own width, each transfer exactly the register's length (a 2-byte
        // register reads and writes 2 bytes, not 8 after them).
        kRegisterLengths = 1u << 0,
        // Bit fields (MaskedIntReg, StructEntry) numbered in the register's
        // own frame of 8 x length bits: from bit 0 at the least significant
        // end when little endian, from the most significant end when big
        // endian; a signed field extends from its own top bit.
        kRegisterFields = 1u << 1,
        // "pLength" wherever "Length" is accepted, read before each transfer;
        // a length over kMaxNodeLength, or negative, is kBadNumber.
        kLengthNodes = 1u << 2,
        // Every "Address" text (signed, decimal or "0x" hexadecimal), every
        // "pAddress" and every "pIndex" of a register summed in place with
        // 64-bit wrapping; each index times its "Offset", its "pOffset", or
        // else the register's length.
        kAddressSums = 1u << 3,
        // A register without "pPort" loads, and answers as a port that is
        // not attached.
        kPortlessRegisters = 1u << 4,
        // An "AccessMode" or "ImposedAccessMode" text other than "RO", "WO"
        // and "RW" narrows nothing.
        kAccessTexts = 1u << 5,
        // Integer and Float nodes with "pIndex": the "ValueIndexed" or
        // "pValueIndexed" entry whose Index matches, else "ValueDefault" or
        // "pValueDefault", stands for the value.
        kIndexedValues = 1u << 6,
        // "Constant" and "Expression" children of SwissKnife and Converter
        // nodes: named numbers and named sub-formulas for the main formula.
        kFormulaParts = 1u << 7,
        // A StringReg text exactly as long as its register is written whole,
        // without a terminator.
        kFullStrings = 1u << 8,
        // An enumeration read by a formula (a variable, a converter's value)
        // gives the integer value of its current entry.
        kEnumNumbers = 1u << 9,
        // "**" takes any exponent, as pow does (2 ** 0 is 1); a result that
        // is not finite still has no value.
        kPowers = 1u << 10,
        // Integer and Float nodes write their value to every "pValueCopy"
        // as well as to "pValue", in document order, and take the range
        // that fits them all.
        kValueCopies = 1u << 11,
    };
    static constexpr u4 kAllRules = (1u << 12) - 1;
    // The largest length a "pLength" may give.
    static constexpr u4 kMaxNodeLength = 64u << 10;

    u4 rules = 0;

    static constexpr tReading Strict() { return tReading{0}; }
    static constexpr tReading Wide() { return tReading{kAllRules}; }
    bool Has(tRule aRule) const { return (rules & aRule) != 0; }
    bool IsWide() const { return rules != 0; }
};

} // namespace gik
