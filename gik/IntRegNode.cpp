#include "gik/IntRegNode.h"

#include <cstring>
#include <tinyxml.h>

#include "gik/Runtime.h"
#include "gik/Text.h"
#include "gik/Value.h"

namespace gik {

cIntRegNode::~cIntRegNode() {
    llk::ReleaseAndClear(mMinimum);
    llk::ReleaseAndClear(mMaximum);
}

i4 cIntRegNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = pRegisterNode::Parse(aRuntime, aElement);
    if (status != kOk || !aElement) return status;
    // One-byte registers are not allowed; the wide reading takes 1 to 8
    // bytes, and checks a "pLength" at each transfer.
    if (aRuntime->Reading().Has(tReading::kRegisterLengths)) {
        if (!HasLengthNode() && (mLength < 1 || mLength > 8)) return kBadNumber;
    } else if (mLength != 2 && mLength != 4 && mLength != 8) {
        return kBadNumber;
    }
    const char* sign = sText::ChildText(aElement, "Sign");
    if (sText::Child(aElement, "Sign")) mSigned = !(sign && strcmp(sign, "Unsigned") == 0);
    return kOk;
}

i4 cIntRegNode::Bounds(u4 aLength) {
    if (mMinimum && mMaximum && mBoundsLength == aLength) return kOk;
    if (!mMinimum) mMinimum = new (std::nothrow) cValue();
    if (!mMaximum) mMaximum = new (std::nothrow) cValue();
    if (!mMinimum || !mMaximum) return kNoMemory;
    u4 bits = 8 * aLength;
    if (mSigned) {
        mMinimum->SetSigned(bits >= 64 ? INT64_MIN : -(i8(1) << (bits - 1)));
        mMaximum->SetSigned(bits >= 64 ? INT64_MAX : (i8(1) << (bits - 1)) - 1);
    } else {
        mMinimum->SetUnsigned(0);
        mMaximum->SetUnsigned(bits >= 64 ? UINT64_MAX : (u8(1) << bits) - 1);
    }
    mBoundsLength = aLength;
    return kOk;
}

i4 cIntRegNode::GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum, pNode*) {
    u4 length = 0;
    i4 status = ValueLength(aRuntime, length);
    if (status == kOk) status = Bounds(length);
    if (status != kOk) return status;
    aMinimum.Assign(*mMinimum);
    aMaximum.Assign(*mMaximum);
    return kOk;
}

i4 cIntRegNode::ValueLength(cRuntime* aRuntime, u4& aLength) {
    i4 status = CurrentLength(aRuntime, aLength);
    if (status == kOk && HasLengthNode() && (aLength < 1 || aLength > 8)) return kBadNumber;
    return status;
}

bool cIntRegNode::TransfersEight(cRuntime* aRuntime, u4 aLength) const {
    return aLength == 2 && !aRuntime->Reading().Has(tReading::kRegisterLengths);
}

i4 cIntRegNode::ReadRaw(cRuntime* aRuntime, u4 aLength, u8& aRaw) {
    u1 bytes[8] = {};
    u4 done = 0;
    i4 status = Fetch(aRuntime, aLength, bytes, done);
    if (status != kOk) return status;
    aRaw = Decode(bytes, aLength);
    return kOk;
}

i4 cIntRegNode::WriteRaw(cRuntime* aRuntime, u4 aLength, u8 aRaw, pNode* aOriginator) {
    u1 bytes[8] = {};
    Encode(aRaw, bytes, aLength);
    u4 done = 0;
    return StoreFrom(aRuntime, aLength, bytes, done, aOriginator);
}

i4 cIntRegNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode*) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    if (mCached && mCache && !IsNoCache(aRuntime) && aRuntime->IsCacheEnabled())
        return aValue.Assign(*mCache) ? kOk : kFailed;
    u8 raw = 0;
    u4 length = 0;
    i4 status = ValueLength(aRuntime, length);
    if (status != kOk) return status;
    status = ReadRaw(aRuntime, length, raw);
    if (TransfersEight(aRuntime, length)) {
        // Required as it stands: a 2-byte register goes on into the 8-byte
        // branch, which reads eight bytes at the same address and overwrites
        // the value; its status is the one reported.
        length = 8;
        status = ReadRaw(aRuntime, length, raw);
    }
    if (status != kOk) return status; // the old cache stays
    cValue* cache = CacheObject();
    if (!cache) return kNoMemory;
    bool set;
    if (mSigned) {
        i8 v = static_cast<i8>(raw);
        if (length < 8) {
            u4 bits = 8 * length;
            if ((raw >> (bits - 1)) & 1u) v = static_cast<i8>(raw | (~0ull << bits));
        }
        set = cache->SetSigned(v);
    } else {
        set = cache->SetUnsigned(raw);
    }
    if (!set) return kFailed;
    mCached = true;
    return aValue.Assign(*cache) ? kOk : kFailed;
}

i4 cIntRegNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    if (!aValue) return kNothing;
    u4 length = 0;
    i4 status = ValueLength(aRuntime, length);
    if (status == kOk) status = Bounds(length);
    if (status != kOk) return status;
    u8 raw;
    if (mSigned) {
        i8 v = aValue->Sint();
        if (v < mMinimum->Sint() || v > mMaximum->Sint()) return kRejected;
        raw = static_cast<u8>(v);
    } else {
        u8 v = aValue->Uint();
        if (v > mMaximum->Uint()) return kRejected;
        raw = v;
    }
    // The store notifies the dependents and broadcasts the address.
    if ((status = WriteRaw(aRuntime, length, raw, aOriginator)) != kOk) return status;
    if (TransfersEight(aRuntime, length)) {
        // Required as it stands: on into the range check (the same bounds)
        // and the 8-byte store.
        if ((status = WriteRaw(aRuntime, 8, raw, aOriginator)) != kOk) return status;
    }
    // Write-through: the cache holds what was written, not read back.
    cValue* cache = CacheObject();
    if (!cache) return kNoMemory;
    if (mSigned)
        cache->SetSigned(static_cast<i8>(raw));
    else
        cache->SetUnsigned(raw);
    mCached = true;
    if (IsWriteAround(aRuntime)) DropCache();
    return kOk;
}

i4 tBitField::Parse(const TiXmlElement* aElement, bool aLittleEndian, bool aWide) {
    wide = aWide;
    littleEndian = aLittleEndian;
    auto read = [&](const char* aText, u4& aBit) -> i4 {
        i8 n = 0;
        if (!sText::ReadInteger(aText, n)) return kBadNumber;
        if (aWide) {
            if (n < 0 || n >= 64) return kBadNumber;
            aBit = static_cast<u4>(n);
            return kOk;
        }
        if (!aLittleEndian) n = 31 - n;
        if (n < 0 || n >= 32) return kBadNumber;
        aBit = static_cast<u4>(n);
        return kOk;
    };
    i4 status;
    if (const TiXmlElement* bit = sText::Child(aElement, "Bit")) {
        oneBit = true;
        if ((status = read(bit->GetText(), first)) != kOk) return status;
        last = first;
        lsb = msb = first;
        count = 1;
        return kOk;
    }
    const TiXmlElement* lsbElement = sText::Child(aElement, "LSB");
    const TiXmlElement* msbElement = sText::Child(aElement, "MSB");
    if (!lsbElement || !msbElement) return kUnacceptable;
    if ((status = read(lsbElement->GetText(), first)) != kOk) return status;
    if ((status = read(msbElement->GetText(), last)) != kOk) return status;
    lsb = first;
    msb = last;
    if (aWide) return kOk;
    if (last < first) return kBadNumber;
    count = last - first + 1;
    return kOk;
}

i4 tBitField::Place(u4 aLength) {
    u4 frame = 8 * aLength;
    if (lsb >= frame || msb >= frame) return kBadNumber;
    first = littleEndian ? lsb : frame - 1 - lsb;
    last = littleEndian ? msb : frame - 1 - msb;
    if (last < first) return kBadNumber;
    count = last - first + 1;
    return kOk;
}

void tBitField::Extract(u8 aWhole, cValue& aValue) const {
    if (oneBit) {
        aValue.SetBool(((aWhole >> first) & 1u) != 0);
        return;
    }
    u8 bits = (aWhole >> first) & Mask();
    if (!isSigned) {
        aValue.SetUnsigned(bits);
        return;
    }
    if (wide) {
        // From the field's own top bit.
        if (count < 64 && ((bits >> (count - 1)) & 1u)) bits |= ~Mask();
        aValue.SetSigned(static_cast<i8>(bits));
        return;
    }
    // Sign-extended by whole bytes, not by the field's width.
    i8 v;
    switch (Length()) {
    case 1:
        v = static_cast<i1>(static_cast<u1>(bits));
        break;
    case 2:
        v = static_cast<i2>(static_cast<u2>(bits));
        break;
    case 4:
        v = static_cast<i4>(static_cast<u4>(bits));
        break;
    default:
        v = static_cast<i8>(bits);
        break;
    }
    aValue.SetSigned(v);
}

u8 tBitField::Insert(u8 aWhole, const cValue& aValue) const {
    u8 field;
    if (oneBit)
        field = aValue.Bool() ? 1 : 0;
    else
        field = aValue.Flavour() == kFlavourSigned || aValue.Flavour() == kFlavourReal
                    ? static_cast<u8>(aValue.Sint())
                    : aValue.Uint();
    u8 mask = Mask() << first;
    return (aWhole & ~mask) | ((field << first) & mask);
}

void tBitField::Range(cValue& aMinimum, cValue& aMaximum) const {
    if (oneBit) {
        aMinimum.SetUnsigned(0);
        aMaximum.SetUnsigned(1);
    } else if (isSigned) {
        aMinimum.SetSigned(count >= 64 ? INT64_MIN : -static_cast<i8>(1ull << (count - 1)));
        aMaximum.SetSigned(count >= 64 ? INT64_MAX : static_cast<i8>((1ull << (count - 1)) - 1));
    } else {
        aMinimum.SetUnsigned(0);
        aMaximum.SetUnsigned(Mask());
    }
}

i4 cMaskedIntRegNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = cIntRegNode::Parse(aRuntime, aElement);
    if (status != kOk || !aElement) return status;
    // The sign belongs to the field; the register is read unsigned.
    mField.isSigned = mSigned;
    mSigned = false;
    status =
        mField.Parse(aElement, mLittleEndian, aRuntime->Reading().Has(tReading::kRegisterFields));
    return status == kOk ? PlaceEntry(mField) : status;
}

i4 cIntRegNode::PlaceEntry(tBitField& aField) const {
    return aField.wide && !HasLengthNode() ? aField.Place(mLength) : kOk;
}

i4 cIntRegNode::PlaceField(cRuntime* aRuntime, const tBitField& aField, tBitField& aPlaced) {
    aPlaced = aField;
    if (!aField.wide || !HasLengthNode()) return kOk;
    u4 length = 0;
    i4 status = ValueLength(aRuntime, length);
    return status == kOk ? aPlaced.Place(length) : status;
}

i4 cMaskedIntRegNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) {
    tBitField field;
    i4 status = PlaceField(aRuntime, mField, field);
    if (status != kOk) return status;
    cValue whole;
    if ((status = cIntRegNode::GetValue(aRuntime, whole, aOriginator)) != kOk) return status;
    field.Extract(whole.Uint(), aValue);
    return kOk;
}

i4 cMaskedIntRegNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    if (!aValue) return kNothing;
    tBitField field;
    i4 status = PlaceField(aRuntime, mField, field);
    if (status != kOk) return status;
    cValue whole;
    if ((status = cIntRegNode::GetValue(aRuntime, whole, aOriginator)) != kOk) return status;
    cValue updated;
    updated.SetUnsigned(field.Insert(whole.Uint(), *aValue));
    return cIntRegNode::SetValue(aRuntime, &updated, aOriginator);
}

i4 cMaskedIntRegNode::GetRange(cRuntime* aRuntime, cValue& aMinimum, cValue& aMaximum, pNode*) {
    tBitField field;
    i4 status = PlaceField(aRuntime, mField, field);
    if (status == kOk) field.Range(aMinimum, aMaximum);
    return status;
}

u4 cMaskedIntRegNode::ComputeAccess() {
    return OwnAccess() | 1u;
}

u4 cMaskedIntRegNode::Length(cRuntime*) {
    return mField.Length();
}

} // namespace gik
