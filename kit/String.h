// Narrow-character text with borrowed storage and a cached hash.
#pragma once

#include "kit/Object.h"

namespace llk {

class cString : public pObject {
public:
    static cString* New(u4 aCapacity = 64) { return Make<cString>(aCapacity); }
    // aBorrow: point at aText (normally a literal) instead of copying it.
    static cString* New(const char* aText, bool aBorrow) { return Make<cString>(aText, aBorrow); }

    i4 Initialize() override { return Initialize(64u); }
    i4 Initialize(u4 aCapacity);
    i4 Initialize(const char* aText, bool aBorrow);
    ~cString() override;
    u4 ClassCode() const override { return 31; }
    const char* ClassName() const override { return "cString"; }

    // Same text and borrowed flag; not autoreleased: the caller owns it.
    cString* Copy() const;

    u4 Length() const { return mLength; }
    const char* Chars() const { return mChars ? mChars : ""; }
    u4 Capacity() const { return mCapacity; }
    bool IsBorrowed() const { return mBorrowed; }
    // CRC-32 of the text, cached; 0 for the empty text.
    u4 Hash() const;

    // Byte-wise unsigned: -1, 0 or 1.
    i4 Compare(const cString* aOther) const;
    i4 Compare(const char* aText) const;
    // -1 when aText is longer; otherwise strncmp against the head or tail.
    i4 CompareHead(const char* aText) const;
    i4 CompareTail(const char* aText) const;

    // Formats into the buffer within the capacity; leaves the length and the
    // hash alone (call Recount). False for an empty result.
    bool Format(const char* aFormat, ...) __attribute__((format(printf, 2, 3)));
    // From aPosition on; moves aPosition to the hit.
    bool FindFirstOccurence(u4& aPosition, char aChar) const;
    // Characters first..last inclusive, or null; the caller owns the result.
    cString* SubstringFromRange(const tRangeWord& aRange) const;

    bool Clear();
    bool SetCapacity(u4 aCapacity);
    bool Append(const char* aText);
    bool Prepend(const char* aText);
    bool Assign(const char* aText);
    // Sets the length from the terminator and drops the cached hash.
    bool Recount();

private:
    bool Own();

    bool mBorrowed = false;
    char* mChars = nullptr;
    u4 mLength = 0;
    u4 mCapacity = 0;
    mutable u4 mHash = 0;
};

} // namespace llk
