// A tagged 64-bit number and a raw pointer, in object form, so that they can
// travel in containers, dictionaries and events.
#pragma once

#include "kit/Object.h"

namespace llk {

class cNumber64 : public pObject {
public:
    enum tType : u4 { kInt8 = 0, kUInt8 = 1, kInt64 = 2, kUInt64 = 3, kDouble = 4 };

    static cNumber64* New() { return Make<cNumber64>(); }
    static cNumber64* NewInt8(i1 aValue) {
        return Made([&](cNumber64* n) { n->SetInt8(aValue); });
    }
    static cNumber64* NewUInt8(u1 aValue) {
        return Made([&](cNumber64* n) { n->SetUInt8(aValue); });
    }
    static cNumber64* NewInt64(i8 aValue) {
        return Made([&](cNumber64* n) { n->SetInt64(aValue); });
    }
    static cNumber64* NewUInt64(u8 aValue) {
        return Made([&](cNumber64* n) { n->SetUInt64(aValue); });
    }
    static cNumber64* NewDouble(double aValue) {
        return Made([&](cNumber64* n) { n->SetDouble(aValue); });
    }

    u4 ClassCode() const override { return 21; }
    const char* ClassName() const override { return "cNumber64"; }

    u4 Type() const { return mType; }
    void SetInt8(i1 aValue) { Set(kInt8, static_cast<u8>(static_cast<i8>(aValue))); }
    void SetUInt8(u1 aValue) { Set(kUInt8, aValue); }
    void SetInt64(i8 aValue) { Set(kInt64, static_cast<u8>(aValue)); }
    void SetUInt64(u8 aValue) { Set(kUInt64, aValue); }
    void SetDouble(double aValue);

    // Checked reads: false, output untouched, unless the type is exactly this.
    bool GetInt8(i1& aValue) const;
    bool GetUInt8(u1& aValue) const;
    bool GetInt64(i8& aValue) const;
    bool GetUInt64(u8& aValue) const;
    bool GetDouble(double& aValue) const;
    // Unchecked reads.
    u1 Value8() const { return static_cast<u1>(mValue); }
    u8 Value64() const { return mValue; }
    double ValueDouble() const;

    // Same type and value; the caller owns the copy.
    cNumber64* Copy() const;

private:
    template <class F> static cNumber64* Made(F aSet) {
        cNumber64* n = New();
        if (n) aSet(n);
        return n;
    }
    void Set(u4 aType, u8 aValue) {
        mType = aType;
        mValue = aValue;
    }

    u4 mType = kUInt64;
    u8 mValue = 0;
};

class cPointer : public pObject {
public:
    static cPointer* New(void* aValue) { return Make<cPointer>(aValue); }
    i4 Initialize(void* aValue) {
        mValue = aValue;
        return kOk;
    }
    u4 ClassCode() const override { return 41; }
    const char* ClassName() const override { return "cPointer"; }

    void* Value() const { return mValue; }
    void SetValue(void* aValue) { mValue = aValue; }
    // The caller owns the copy.
    cPointer* Copy() const;

private:
    void* mValue = nullptr;
};

} // namespace llk
