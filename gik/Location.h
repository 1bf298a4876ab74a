// gik::tLocation: where a register or a raw block lies in its port's space.
#pragma once

#include <vector>

#include "gik/Reference.h"

namespace gik {

// The strict reading: "Address"/"pAddress" (0 when absent; several of them
// were summed into one generated node before), plus an optional
// "Index"/"pIndex" times the "Offset" attribute of the index element.
//
// The wide reading sums every term in place, with 64-bit wrapping: each
// "Address" text (a sign, then decimal or "0x" hexadecimal digits), each
// "pAddress", and each "pIndex" (or "Index" literal) times its "Offset", its
// "pOffset" or else the register's length.
struct tLocation {
    tValue address;
    tValue index;
    u4 multiplier = 1;
    cValue* computed = nullptr; // the last computed address, reused by every transfer

    tLocation() = default;
    ~tLocation();
    tLocation(const tLocation&) = delete;
    tLocation& operator=(const tLocation&) = delete;

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement);
    // Makes the owner follow changes of the address, index and offset nodes.
    i4 Resolve(pNode* aOwner, cRuntime* aRuntime);
    void SetImplemented(bool aImplemented) const;
    bool HasNodes() const;
    // True when Compute needs the register's length (an index without an
    // offset of its own, in the wide reading).
    bool NeedsLength() const { return mNeedsLength; }
    // The address, also kept in computed; aLength is the register's length
    // when NeedsLength.
    i4 Compute(pNode* aOwner, cRuntime* aRuntime, u4 aLength, u8& aAddress);

private:
    // One "pAddress", "pIndex" or "Index" term of the wide reading.
    struct tTerm {
        tValue value;
        bool isIndex = false;
        tValue offset;          // "pOffset", or the "Offset" constant
        bool ownLength = false; // neither: the register's length
    };

    i4 ParseWide(cRuntime* aRuntime, const TiXmlElement* aElement);
    i4 ComputeWide(pNode* aOwner, cRuntime* aRuntime, u4 aLength, u8& aAddress);

    bool mWide = false;
    bool mNeedsLength = false;
    u8 mBase = 0;               // the sum of the "Address" texts
    std::vector<tTerm*> mTerms; // owned
};

} // namespace gik
