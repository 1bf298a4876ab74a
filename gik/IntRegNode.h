// gik::cIntRegNode and gik::cMaskedIntRegNode: integers of 2, 4
// or 8 bytes, signed or not, in either byte order; and bit fields of them,
// numbered in a 32-bit frame.
#pragma once

#include "gik/RegisterNode.h"

namespace gik {

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
    // A struct's shared storage reads its whole register unsigned.
    void ForceUnsigned() { mSigned = false; }

protected:
    // Reads aLength bytes at the computed address into aRaw.
    i4 ReadRaw(cRuntime* aRuntime, u4 aLength, u8& aRaw);
    i4 WriteRaw(cRuntime* aRuntime, u4 aLength, u8 aRaw, pNode* aOriginator);
    i4 Bounds();

    bool mSigned = false;
    cValue* mMinimum = nullptr;
    cValue* mMaximum = nullptr;
};

// The bit layout of a field in a 32-bit frame, shared with cMaskedIntNode.
struct tBitField {
    bool oneBit = false;
    u4 first = 0;
    u4 last = 0;
    u4 count = 0;
    bool isSigned = false;

    // "Bit", or "LSB" and "MSB", mirrored as 31 - n in a big-endian
    // register: kUnacceptable when a number is missing, kBadNumber when one
    // is unreadable or not in the frame.
    i4 Parse(const TiXmlElement* aElement, bool aLittleEndian);
    u8 Mask() const { return count >= 64 ? ~0ull : ((1ull << count) - 1); }
    // The field of a whole register: a bool in one-bit mode, otherwise the
    // bits, sign-extended by whole bytes when signed.
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
