// gik::cValue: the one value that travels through the graph: a
// bool, byte, signed, unsigned, real or text, with total conversions.
//
// The number is held in place rather than in a separate object, so that a
// value reassigned on every read allocates nothing. A value can also live on
// the stack (as a caller's out-parameter) as long as nobody retains it.
#pragma once

#include "gik/Object.h"
#include "gik/Scalar.h"
#include "kit/String.h"

namespace gik {

class cValue : public pObject {
public:
    static constexpr double kRealTolerance = 1.11e-16;
    static constexpr u4 kClassTag = 0x10000002;

    // A fresh value: flavour signed, no number.
    static cValue* New() { return Make<cValue>(); }
    static cValue* NewBool(bool aValue) { return Made(tScalar::Bool(aValue)); }
    static cValue* NewByte(u1 aValue) { return Made(tScalar::Byte(aValue)); }
    static cValue* NewSigned(i8 aValue) { return Made(tScalar::Signed(aValue)); }
    static cValue* NewUnsigned(u8 aValue) { return Made(tScalar::Unsigned(aValue)); }
    static cValue* NewReal(double aValue) { return Made(tScalar::Real(aValue)); }
    // Null aText gives nothing.
    static cValue* NewText(llk::cString* aText);
    static cValue* NewText(const char* aText);
    static cValue* NewCopy(const cValue& aOther);

    cValue() = default;
    ~cValue() override;
    u4 ClassCode() const override { return kClassTag; }
    const char* ClassName() const override { return "cValue"; }

    u4 Flavour() const { return mScalar.flavour; }
    bool HasNumber() const { return mScalar.number; }
    bool HasText() const { return mText != nullptr; }
    // Neither a number nor a text: "no value".
    bool IsAbsent() const { return !mScalar.number && !mText; }
    bool IsDirty() const { return mDirty; }
    void SetDirty(bool aDirty) { mDirty = aDirty; }
    bool IsFrozen() const { return mFrozen; }
    void Freeze(bool aFrozen) { mFrozen = aFrozen; }

    // Assignments replace the holder in place; false when frozen.
    bool SetBool(bool aValue) { return Put(tScalar::Bool(aValue)); }
    bool SetByte(u1 aValue) { return Put(tScalar::Byte(aValue)); }
    bool SetSigned(i8 aValue) { return Put(tScalar::Signed(aValue)); }
    bool SetUnsigned(u8 aValue) { return Put(tScalar::Unsigned(aValue)); }
    bool SetReal(double aValue) { return Put(tScalar::Real(aValue)); }
    // The text is retained, not copied; texts in values are never changed.
    bool SetText(llk::cString* aText);
    // A new text object with a copy of aText.
    bool SetText(const char* aText);
    // Any number flavour; a text scalar sets the text it points at.
    bool SetScalar(const tScalar& aScalar);
    bool Assign(const cValue& aOther);
    // Back to "no value".
    bool Clear();

    bool Bool() const { return mScalar.AsBool(); }
    u1 Byte() const { return mScalar.AsByte(); }
    i8 Sint() const { return mScalar.AsSint(); }
    u8 Uint() const { return mScalar.AsUint(); }
    double Real() const { return mScalar.AsReal(); }
    u8 Bits() const { return mScalar.AsBits(); }
    llk::cString* String() const { return mText; }
    // True with the characters when a text is there.
    bool Get(const char*& aText) const;
    // The number as a scalar; a text value gives a text scalar.
    tScalar Scalar() const;

    // Equality: numbers with numbers (real within 1.11e-16,
    // otherwise the same 64 bits); texts with texts, exactly.
    bool Equals(const cValue& aOther) const;

private:
    static cValue* Made(const tScalar& aScalar) {
        cValue* v = New();
        if (v) v->Put(aScalar);
        return v;
    }
    bool Put(const tScalar& aScalar);

    tScalar mScalar;
    llk::cString* mText = nullptr;
    bool mDirty = false;
    bool mFrozen = false;
};

} // namespace gik
