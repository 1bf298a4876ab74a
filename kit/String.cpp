#include "kit/String.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "kit/Env.h"

namespace llk {

i4 cString::Initialize(u4 aCapacity) {
    mChars = static_cast<char*>(sEnv::Malloc(static_cast<size_t>(aCapacity) + 1, true));
    if (!mChars) return kNoMemory;
    mCapacity = aCapacity;
    return kOk;
}

i4 cString::Initialize(const char* aText, bool aBorrow) {
    if (!aText) aText = "";
    size_t length = strlen(aText);
    if (length > 0xFFFFFFFEu) return kBadArgument;
    mLength = mCapacity = static_cast<u4>(length);
    if (aBorrow) {
        mBorrowed = true;
        mChars = const_cast<char*>(aText);
        return kOk;
    }
    mChars = static_cast<char*>(sEnv::Malloc(length + 1, false));
    if (!mChars) return kNoMemory;
    memcpy(mChars, aText, length + 1);
    return kOk;
}

cString::~cString() {
    if (!mBorrowed) sEnv::Free(mChars);
}

cString* cString::Copy() const {
    auto* copy = new (std::nothrow) cString();
    if (!copy) return nullptr;
    if (copy->Initialize(Chars(), mBorrowed) != kOk) {
        delete copy;
        return nullptr;
    }
    return copy;
}

u4 cString::Hash() const {
    if (mHash != 0 || mLength == 0) return mHash;
    mHash = sEnv::Crc32(mChars, mLength);
    return mHash;
}

i4 cString::Compare(const cString* aOther) const {
    return Compare(aOther ? aOther->Chars() : "");
}

i4 cString::Compare(const char* aText) const {
    int c = strcmp(Chars(), aText ? aText : "");
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

i4 cString::CompareHead(const char* aText) const {
    size_t n = strlen(aText);
    if (n > mLength) return -1;
    return strncmp(aText, Chars(), n);
}

i4 cString::CompareTail(const char* aText) const {
    size_t n = strlen(aText);
    if (n > mLength) return -1;
    return strncmp(aText, Chars() + (mLength - n), n);
}

// Copy-on-write: a borrowed text is duplicated before the first change.
bool cString::Own() {
    if (!mBorrowed) return true;
    auto* copy = static_cast<char*>(sEnv::Malloc(static_cast<size_t>(mCapacity) + 1, true));
    if (!copy) return false;
    memcpy(copy, mChars, mLength + 1);
    mChars = copy;
    mBorrowed = false;
    return true;
}

bool cString::Format(const char* aFormat, ...) {
    if (!Own() || mCapacity == 0) return false;
    va_list args;
    va_start(args, aFormat);
    // At most capacity - 1 characters are kept.
    int n = vsnprintf(mChars, mCapacity, aFormat, args);
    va_end(args);
    return n > 0;
}

bool cString::FindFirstOccurence(u4& aPosition, char aChar) const {
    for (u4 i = aPosition; i < mLength; ++i)
        if (mChars[i] == aChar) {
            aPosition = i;
            return true;
        }
    return false;
}

cString* cString::SubstringFromRange(const tRangeWord& aRange) const {
    if (aRange.first >= mLength || aRange.last >= mLength || aRange.first > aRange.last)
        return nullptr;
    auto* sub = new (std::nothrow) cString();
    if (!sub) return nullptr;
    u4 length = aRange.last - aRange.first + 1;
    if (sub->Initialize(length) != kOk) {
        delete sub;
        return nullptr;
    }
    memcpy(sub->mChars, mChars + aRange.first, length);
    sub->mChars[length] = '\0';
    sub->mLength = length;
    return sub;
}

bool cString::Clear() {
    if (!Own()) return false;
    mLength = 0;
    if (mChars) mChars[0] = '\0';
    mHash = 0;
    return true;
}

bool cString::SetCapacity(u4 aCapacity) {
    if (aCapacity == mCapacity) return true;
    if (aCapacity < mLength || !Own()) return false;
    auto* grown = static_cast<char*>(sEnv::Resize(mChars, static_cast<size_t>(aCapacity) + 1,
                                                  static_cast<size_t>(mCapacity) + 1));
    if (!grown) return false;
    mChars = grown;
    mChars[mLength] = '\0';
    mCapacity = aCapacity;
    return true;
}

bool cString::Append(const char* aText) {
    if (!aText || !*aText) return true;
    if (!Own()) return false;
    size_t add = strlen(aText);
    u8 length = static_cast<u8>(mLength) + add;
    if (length > 0xFFFFFFFEu) return false;
    // Growth is exact, not geometric.
    if (length > mCapacity && !SetCapacity(static_cast<u4>(length))) return false;
    memcpy(mChars + mLength, aText, add + 1);
    mLength = static_cast<u4>(length);
    mHash = 0;
    return true;
}

bool cString::Prepend(const char* aText) {
    if (!aText || !*aText) return true;
    if (mLength == 0) return Append(aText);
    if (!Own()) return false;
    size_t add = strlen(aText);
    u8 length = static_cast<u8>(mLength) + add;
    if (length > 0xFFFFFFFEu) return false;
    if (length > mCapacity && !SetCapacity(static_cast<u4>(length))) return false;
    memmove(mChars + add, mChars, mLength + 1);
    memcpy(mChars, aText, add);
    mLength = static_cast<u4>(length);
    mHash = 0;
    return true;
}

bool cString::Assign(const char* aText) {
    if (!aText || !*aText) {
        if (mBorrowed) {
            // The empty text needs no copy of the old one.
            mChars = const_cast<char*>("");
            mLength = 0;
            mHash = 0;
            return true;
        }
        mLength = 0;
        if (mChars) mChars[0] = '\0';
        mHash = 0;
        return true;
    }
    if (!Own()) return false;
    size_t length = strlen(aText);
    if (length > 0xFFFFFFFEu) return false;
    if (length > mCapacity && !SetCapacity(static_cast<u4>(length))) return false;
    memcpy(mChars, aText, length + 1);
    mLength = static_cast<u4>(length);
    mHash = 0;
    return true;
}

bool cString::Recount() {
    mLength = mChars ? static_cast<u4>(strnlen(mChars, static_cast<size_t>(mCapacity) + 1)) : 0;
    mHash = 0;
    return true;
}

} // namespace llk
