#include "gik/Value.h"

#include <cmath>
#include <cstring>

namespace gik {

cValue* cValue::NewText(llk::cString* aText) {
    if (!aText) return nullptr;
    cValue* v = New();
    if (v && !v->SetText(aText)) return nullptr;
    return v;
}

cValue* cValue::NewText(const char* aText) {
    if (!aText) return nullptr;
    cValue* v = New();
    if (v && !v->SetText(aText)) return nullptr;
    return v;
}

cValue* cValue::NewCopy(const cValue& aOther) {
    cValue* v = New();
    if (v && !v->Assign(aOther)) return nullptr;
    return v;
}

cValue::~cValue() {
    llk::ReleaseAndClear(mText);
}

bool cValue::Put(const tScalar& aScalar) {
    if (mFrozen) return false;
    llk::ReleaseAndClear(mText);
    mScalar = aScalar;
    mScalar.text = nullptr;
    mDirty = true;
    return true;
}

bool cValue::SetText(llk::cString* aText) {
    if (mFrozen) return false;
    llk::Assign(mText, aText);
    mScalar = tScalar();
    mScalar.flavour = aText ? kFlavourText : kFlavourSigned;
    mDirty = true;
    return true;
}

bool cValue::SetText(const char* aText) {
    if (mFrozen) return false;
    auto* text = new (std::nothrow) llk::cString();
    if (!text) return false;
    if (text->Initialize(aText ? aText : "", false) != llk::kOk) {
        delete text;
        return false;
    }
    bool done = SetText(text);
    text->Release();
    return done;
}

bool cValue::SetScalar(const tScalar& aScalar) {
    if (aScalar.number) return Put(aScalar);
    if (aScalar.flavour == kFlavourText && aScalar.text)
        return SetText(const_cast<llk::cString*>(aScalar.text));
    return Clear();
}

bool cValue::Assign(const cValue& aOther) {
    if (&aOther == this) return true;
    if (mFrozen) return false;
    if (aOther.mText) return SetText(aOther.mText);
    llk::ReleaseAndClear(mText);
    mScalar = aOther.mScalar;
    mDirty = true;
    return true;
}

bool cValue::Clear() {
    if (mFrozen) return false;
    llk::ReleaseAndClear(mText);
    mScalar = tScalar();
    mDirty = true;
    return true;
}

bool cValue::Get(const char*& aText) const {
    if (!mText) return false;
    aText = mText->Chars();
    return true;
}

tScalar cValue::Scalar() const {
    tScalar s = mScalar;
    s.text = mText;
    if (mText) s.flavour = kFlavourText;
    return s;
}

bool cValue::Equals(const cValue& aOther) const {
    if (mScalar.number && aOther.mScalar.number) {
        if (mScalar.flavour == kFlavourReal || aOther.mScalar.flavour == kFlavourReal)
            return std::fabs(Real() - aOther.Real()) < kRealTolerance;
        // Signed or unsigned, the same 64 bits.
        return mScalar.u == aOther.mScalar.u;
    }
    if (!mText || !aOther.mText) return false;
    return strcmp(mText->Chars(), aOther.mText->Chars()) == 0;
}

} // namespace gik
