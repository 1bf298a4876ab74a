// Process services of the kit: memory, environment, time, thread tags,
// tracing to standard output, checksums, random numbers and number texts.
#pragma once

#include <cstdarg>

#include "kit/Types.h"

namespace llk {

class sEnv {
public:
    static void* Malloc(size_t aSize, bool aZero);
    // Null aPtr: a zeroed allocation. aOldSize non-zero and aSize >= aOldSize:
    // the bytes from aOldSize on are zeroed. Null on failure, aPtr kept.
    static void* Resize(void* aPtr, size_t aSize, size_t aOldSize);
    // Ignores null; clears aWipe bytes first when non-zero.
    static void Free(void* aPtr, size_t aWipe = 0);
    static void Zero(void* aPtr, size_t aSize);
    static void Copy(void* aDest, const void* aSource, size_t aSize);

    // A heap string the caller frees, or null when unset or empty.
    static char* GetEnvVariable(const char* aName);
    // Path of the module holding aAddress; the caller frees; null on failure.
    static char* GetLibPath(const void* aAddress);
    // The temporary directory with a trailing "/"; the caller frees.
    static char* GetTempPath();
    static bool FileExists(const char* aPath);
    static void Snooze(u4 aMilliseconds);
    // Monotonic seconds since an arbitrary start.
    static double GetElapsedTime();

    static void SetThreadTag(u4 aTag);
    static u4 GetThreadTag();
    static void SetThreadWord(u4 aWord);
    static u4 GetThreadWord();

    // Stamped lines to standard output, serialised by one lock.
    static void PrintTrace(const char* aFormat, ...) __attribute__((format(printf, 1, 2)));
    static void PrintError(const char* aFormat, ...) __attribute__((format(printf, 1, 2)));
    static void PrintWarning(const char* aFormat, ...) __attribute__((format(printf, 1, 2)));
    static void PrintDebug(const char* aFormat, ...) __attribute__((format(printf, 1, 2)));
    static void Print(const char* aFormat, ...) __attribute__((format(printf, 1, 2)));
    static void PrintTagged(const char* aTag, const char* aFormat, va_list aArgs);

    // Table-driven CRC-32 (reflected 0xEDB88320, start 0xFFFFFFFF, no final
    // inversion); null or empty input gives 0xFFFFFFFF.
    static u4 Crc32(const void* aBytes, size_t aLength);
    static u4 Crc32(const char* aText);
    // 16-bit one's-complement sum, folded and inverted.
    static u2 InternetChecksum(const void* aWords, size_t aByteCount);

    // Seed 0 seeds from the clock.
    static void SeedRandom(u4 aSeed);
    // A number in [aLow, aHigh].
    static u4 Random(u4 aLow, u4 aHigh);

    // Levels 0-2 idle, 3 normal, 4-5 high, 6 realtime; best effort.
    static void SetProcessPriority(i4 aLevel);

    // Digits, signs, one point and at most one exponent letter.
    static bool IsFloatText(const char* aText);
    // Digits and at most one sign; the empty text passes.
    static bool IsIntegerText(const char* aText);

    // True only when exactly one number was read; "0x" prefixes hexadecimal.
    static bool ReadNumber(const char* aText, u4& aValue);
    static bool ReadNumber(const char* aText, u8& aValue);
    static bool ReadNumber(const char* aText, i4& aValue);
    static bool ReadNumber(const char* aText, i8& aValue);
    static bool ReadNumber(const char* aText, float& aValue);
    static bool ReadNumber(const char* aText, double& aValue);
    // Decimal text into aBuffer; false when it does not fit.
    static bool WriteNumber(char* aBuffer, size_t aSize, u4 aValue);
    static bool WriteNumber(char* aBuffer, size_t aSize, i4 aValue);
    static bool WriteNumber(char* aBuffer, size_t aSize, u8 aValue);
    static bool WriteNumber(char* aBuffer, size_t aSize, i8 aValue);
    static bool WriteNumber(char* aBuffer, size_t aSize, float aValue);
    static bool WriteNumber(char* aBuffer, size_t aSize, double aValue);

    // An errno value as a kit status.
    static i4 StatusFromErrno(int aErrno);
    // The system's text for an errno value, without a trailing line break.
    static void ErrnoText(int aErrno, char* aBuffer, size_t aSize);
};

// Single bits of a 32-bit word.
class sBits {
public:
    // Only the low bit of aData counts.
    static void Set(u4& aValue, u4 aData, u4 aPosition) {
        if (aPosition >= 32) return;
        aValue = (aValue & ~(1u << aPosition)) | ((aData & 1u) << aPosition);
    }
    static bool Presents(u4 aValue, u4 aPosition) {
        return aPosition < 32 && ((aValue >> aPosition) & 1u) != 0;
    }
};

// Byte order between host and network, and the machine's adapters.
class sNet {
public:
    static void SwapToHost(u4& aValue);
    static void SwapToNet(u4& aValue);
    // The hardware address of the adapter that holds aIPv4 (host order):
    // kNotFound for no match, kBadArgument when the system call fails.
    static i4 GetAdapterMAC(u4 aIPv4, uMAC& aMAC);
    // The host-order IPv4 address and mask of the adapter with that MAC.
    static i4 GetAdapterIP(const uMAC& aMAC, u4& aIPv4, u4& aMask);
};

// Calls an enter function at once and an exit function at scope end.
class uScopeEnclosure {
public:
    using tFunction = void (*)(void* aContext);
    uScopeEnclosure(tFunction aEnter, tFunction aExit, void* aContext)
        : mExit(aExit), mContext(aContext) {
        if (aEnter) aEnter(aContext);
    }
    ~uScopeEnclosure() {
        if (mExit) mExit(mContext);
    }
    uScopeEnclosure(const uScopeEnclosure&) = delete;
    uScopeEnclosure& operator=(const uScopeEnclosure&) = delete;

private:
    tFunction mExit;
    void* mContext;
};

} // namespace llk
