// gik::cIntRegNode and gik::cMaskedIntRegNode: integers of 2, 4
// or 8 bytes, signed or not, in either byte order; and bit fields of them,
// numbered in a 32-bit frame.
#pragma once

#include "gik/RegisterNode.h"

namespace gik {

struct tBitField;

class cIntRegNode : public pRegisterNode {
public:
    static cIntRegNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cIntRegNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    ~cIntRegNode() override;
    u4 ClassCode() const override { return kTagIntReg; }
    const char* ClassName() const override { return "cIntRegNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
    i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) override;
    // The limits of the length and sign, built on first use.
    i4 GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum,
                pNode* aOriginator) override;

    bool IsSigned() const { return mSigned; }
    // Places a struct entry's field: at once for a fixed length, at each
    // transfer over a "pLength".
    i4 PlaceEntry(tBitField& aField) const;
    // aField as it lies in the register now: a wide field over a
    // "pLength" is placed for the current length.
    i4 PlaceField(cRuntime* aRuntime, const tBitField& aField, tBitField& aPlaced);
    // A struct's shared storage reads its whole register unsigned.
    void ForceUnsigned() { mSigned = false; }

protected:
    // The length of a value transfer: a "pLength" must give 1 to 8 bytes.
    i4 ValueLength(cRuntime* aRuntime, u4& aLength);
    // Reads aLength bytes at the computed address into aRaw.
    i4 ReadRaw(cRuntime* aRuntime, u4 aLength, u8& aRaw);
    i4 WriteRaw(cRuntime* aRuntime, u4 aLength, u8 aRaw, pNode* aOriginator);
    // The limits of aLength bytes, kept until the length changes.
    i4 Bounds(u4 aLength);
    // The strict reading's 2-byte quirk: such a register transfers 8 bytes
    // after its own 2.
    bool TransfersEight(cRuntime* aRuntime, u4 aLength) const;

    bool mSigned = false;
    cValue* mMinimum = nullptr;
    cValue* mMaximum = nullptr;
    u4 mBoundsLength = 0;
};

// The bit layout of a field, shared with cMaskedIntNode. The strict reading
// numbers the bits in a 32-bit frame, mirrored as 31 - n when big endian,
// and extends a signed field by whole bytes. The wide reading numbers them
// in the register's own frame of 8 x length bits (mirrored as 8 x length -
// 1 - n when big endian), and extends a signed field from its own top bit.
struct tBitField {
    bool oneBit = false;
    u4 first = 0;
    u4 last = 0;
    u4 count = 0;
    bool isSigned = false;
    // The wide reading keeps the numbers as written until Place.
    bool wide = false;
    bool littleEndian = false;
    u4 lsb = 0;
    u4 msb = 0;

    // "Bit", or "LSB" and "MSB": kUnacceptable when a number is missing,
    // kBadNumber when one is unreadable or not in the frame. A wide field
    // is placed later, by Place.
    i4 Parse(const TiXmlElement* aElement, bool aLittleEndian, bool aWide);
    // The wide reading: first, last and count in a register of aLength
    // bytes; kBadNumber when the field does not lie inside it.
    i4 Place(u4 aLength);
    u8 Mask() const { return count >= 64 ? ~0ull : ((1ull << count) - 1); }
    // The field of a whole register: a bool in one-bit mode, otherwise the
    // bits, sign-extended when signed.
    void Extract(u8 aWhole, cValue& aValue) const;
    // aWhole with the field replaced by aValue.
    u8 Insert(u8 aWhole, const cValue& aValue) const;
    // 1 below 9 bits, otherwise the bytes the bits take.
    u4 Length() const { return count < 9 ? 1 : (count + 7) / 8; }
    void Range(cValue& aMinimum, cValue& aMaximum) const;
};

class cMaskedIntRegNode : public cIntRegNode {
public:
    static cMaskedIntRegNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cMaskedIntRegNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    u4 ClassCode() const override { return kTagMaskedIntReg; }
    const char* ClassName() const override { return "cMaskedIntRegNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    // A read-modify-write of the whole register; the field is not
    // range-checked here.
    i4 SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) override;
    i4 GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) override;
    // The field's limits.
    i4 GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum,
                pNode* aOriginator) override;
    // Always readable: a write reads first.
    u4 ComputeAccess() override;
    u4 Length(cRuntime* aRuntime) override;

    const tBitField& Field() const { return mField; }

private:
    tBitField mField;
};

} // namespace gik
