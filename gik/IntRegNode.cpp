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
    // One-byte registers are not allowed.
    if (mLength != 2 && mLength != 4 && mLength != 8) return kBadNumber;
    const char* sign = sText::ChildText(aElement, "Sign");
    if (sText::Child(aElement, "Sign")) mSigned = !(sign && strcmp(sign, "Unsigned") == 0);
    return kOk;
}

i4 cIntRegNode::Bounds() {
    if (mMinimum && mMaximum) return kOk;
    auto* minimum = new (std::nothrow) cValue();
    auto* maximum = new (std::nothrow) cValue();
    if (!minimum || !maximum) {
        if (minimum) minimum->Release();
        if (maximum) maximum->Release();
        return kNoMemory;
    }
    if (mSigned) {
        i8 low = mLength == 2 ? -32768 : (mLength == 4 ? -2147483648ll : INT64_MIN);
        i8 high = mLength == 2 ? 32767 : (mLength == 4 ? 2147483647ll : INT64_MAX);
        minimum->SetSigned(low);
        maximum->SetSigned(high);
    } else {
        minimum->SetUnsigned(0);
        maximum->SetUnsigned(mLength == 2 ? 65535u : (mLength == 4 ? 4294967295u : UINT64_MAX));
    }
    llk::ReleaseAndClear(mMinimum);
    llk::ReleaseAndClear(mMaximum);
    mMinimum = minimum;
    mMaximum = maximum;
    return kOk;
}

i4 cIntRegNode::GetRange(cRuntime*, cValue& aMinimum, cValue& aMaximum, pNode*) {
    i4 status = Bounds();
    if (status != kOk) return status;
    aMinimum.Assign(*mMinimum);
    aMaximum.Assign(*mMaximum);
    return kOk;
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
    u4 length = mLength;
    i4 status = ReadRaw(aRuntime, length, raw);
    if (length == 2) {
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
    i4 status = Bounds();
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
    if ((status = WriteRaw(aRuntime, mLength, raw, aOriginator)) != kOk) return status;
    if (mLength == 2) {
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

i4 tBitField::Parse(const TiXmlElement* aElement, bool aLittleEndian) {
    auto read = [&](const char* aText, u4& aBit) -> i4 {
        i8 n = 0;
        if (!sText::ReadInteger(aText, n)) return kBadNumber;
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
        count = 1;
        return kOk;
    }
    const TiXmlElement* lsb = sText::Child(aElement, "LSB");
    const TiXmlElement* msb = sText::Child(aElement, "MSB");
    if (!lsb || !msb) return kUnacceptable;
    if ((status = read(lsb->GetText(), first)) != kOk) return status;
    if ((status = read(msb->GetText(), last)) != kOk) return status;
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
        aMinimum.SetSigned(-static_cast<i8>(1ull << (count - 1)));
        aMaximum.SetSigned(static_cast<i8>((1ull << (count - 1)) - 1));
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
    return mField.Parse(aElement, mLittleEndian);
}

i4 cMaskedIntRegNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode* aOriginator) {
    cValue whole;
    i4 status = cIntRegNode::GetValue(aRuntime, whole, aOriginator);
    if (status != kOk) return status;
    mField.Extract(whole.Uint(), aValue);
    return kOk;
}

i4 cMaskedIntRegNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    if (!aValue) return kNothing;
    cValue whole;
    i4 status = cIntRegNode::GetValue(aRuntime, whole, aOriginator);
    if (status != kOk) return status;
    cValue updated;
    updated.SetUnsigned(mField.Insert(whole.Uint(), *aValue));
    return cIntRegNode::SetValue(aRuntime, &updated, aOriginator);
}

i4 cMaskedIntRegNode::GetRange(cRuntime*, cValue& aMinimum, cValue& aMaximum, pNode*) {
    mField.Range(aMinimum, aMaximum);
    return kOk;
}

u4 cMaskedIntRegNode::ComputeAccess() {
    return OwnAccess() | 1u;
}

u4 cMaskedIntRegNode::Length(cRuntime*) {
    return mField.Length();
}

} // namespace gik
