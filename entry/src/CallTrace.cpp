#include "CallTrace.h"

#include <cinttypes>
#include <cstdarg>
#include <cstdio>

#include "Module.h"
#include "kit/LogFile.h"

#define TVK_PTR "0x%016" PRIXPTR
#define TVK_IN "  %s: Input Parameter %s = "
#define TVK_OUT "  %s: Output Parameter %s = "

namespace {
uintptr_t Address(const void* aPointer) {
    return reinterpret_cast<uintptr_t>(aPointer);
}

// A string prints as its first three bytes; a null string as "???".
void FirstThree(const char* aText, char aOut[3]) {
    for (int i = 0; i < 3; ++i)
        aOut[i] = '?';
    if (!aText) return;
    for (int i = 0; i < 3 && aText[i]; ++i)
        aOut[i] = aText[i];
}
} // namespace

uCallTrace::uCallTrace(const char* aFunction)
    : mFunction(aFunction), mOn(gLocalData.logFile != nullptr) {
    if (mOn) Line("%s called", mFunction);
}

void uCallTrace::Line(const char* aFormat, ...) {
    llk::cLogFile* log = gLocalData.logFile;
    if (!log) return;
    char text[1024];
    va_list args;
    va_start(args, aFormat);
    vsnprintf(text, sizeof(text), aFormat, args);
    va_end(args);
    log->LogMessage("%s", text);
}

uCallTrace& uCallTrace::InHandle(const char* aParam, const void* aHandle) {
    if (Active()) Line(TVK_IN "Handle " TVK_PTR, mFunction, aParam, Address(aHandle));
    return *this;
}
uCallTrace& uCallTrace::InU32(const char* aParam, uint32_t aValue) {
    if (Active()) Line(TVK_IN "UInt32 %u (0x%08X)", mFunction, aParam, aValue, aValue);
    return *this;
}
uCallTrace& uCallTrace::InU64(const char* aParam, uint64_t aValue) {
    if (Active())
        Line(TVK_IN "UInt64 %" PRIu64 " (0x%08" PRIX64 ")", mFunction, aParam, aValue, aValue);
    return *this;
}
uCallTrace& uCallTrace::InI64(const char* aParam, int64_t aValue) {
    if (Active())
        Line(TVK_IN "Int64 %" PRId64 " (0x%08" PRIX64 ")", mFunction, aParam, aValue,
             static_cast<uint64_t>(aValue));
    return *this;
}
uCallTrace& uCallTrace::InDouble(const char* aParam, double aValue) {
    if (Active()) Line(TVK_IN "Double %lg ", mFunction, aParam, aValue);
    return *this;
}
uCallTrace& uCallTrace::InBool(const char* aParam, bool aValue) {
    if (Active()) Line(TVK_IN "Bool %d", mFunction, aParam, aValue ? 1 : 0);
    return *this;
}
uCallTrace& uCallTrace::InString(const char* aParam, const char* aText) {
    if (Active()) {
        char c[3];
        FirstThree(aText, c);
        Line(TVK_IN "Pointer " TVK_PTR " to Char (%c%c%c...)", mFunction, aParam, Address(aText),
             c[0], c[1], c[2]);
    }
    return *this;
}
uCallTrace& uCallTrace::InPointer(const char* aParam, const void* aPointer) {
    if (Active()) Line(TVK_IN "Pointer " TVK_PTR, mFunction, aParam, Address(aPointer));
    return *this;
}

TvkError_t uCallTrace::Returned(TvkError_t aStatus) {
    if (Active())
        Line("  %s returned Int32 %d (0x%08X)", mFunction, aStatus, static_cast<uint32_t>(aStatus));
    mOutputs = Active() && aStatus >= 0;
    return aStatus;
}

void uCallTrace::OutU32(const char* aParam, const uint32_t* aValue) {
    if (!mOutputs) return;
    uint32_t v = aValue ? *aValue : 0;
    Line(TVK_OUT "Pointer " TVK_PTR " to UInt32 %u (0x%08X)", mFunction, aParam, Address(aValue), v,
         v);
}
void uCallTrace::OutI64(const char* aParam, const int64_t* aValue) {
    if (!mOutputs) return;
    int64_t v = aValue ? *aValue : 0;
    Line(TVK_OUT "Pointer " TVK_PTR " to Int64 %" PRId64 " (0x%08" PRIX64 ")", mFunction, aParam,
         Address(aValue), v, static_cast<uint64_t>(v));
}
void uCallTrace::OutDouble(const char* aParam, const double* aValue) {
    if (!mOutputs) return;
    Line(TVK_OUT "Pointer " TVK_PTR " to Double %lg ", mFunction, aParam, Address(aValue),
         aValue ? *aValue : 0.0);
}
void uCallTrace::OutBool(const char* aParam, const TvkBool_t* aValue) {
    if (!mOutputs) return;
    Line(TVK_OUT "Pointer " TVK_PTR " to Bool %d", mFunction, aParam, Address(aValue),
         aValue ? *aValue : 0);
}
void uCallTrace::OutHandle(const char* aParam, const TvkHandle_t* aValue) {
    if (!mOutputs) return;
    Line(TVK_OUT "Pointer " TVK_PTR " to Handle " TVK_PTR, mFunction, aParam, Address(aValue),
         Address(aValue ? *aValue : nullptr));
}
void uCallTrace::OutString(const char* aParam, const char* const* aValue) {
    if (!mOutputs) return;
    if (!aValue) {
        Line(TVK_OUT "Pointer " TVK_PTR " to Char* ", mFunction, aParam, Address(nullptr));
        return;
    }
    char c[3];
    FirstThree(*aValue, c);
    Line(TVK_OUT "Pointer " TVK_PTR " to Pointer " TVK_PTR " to Char (%c%c%c...)", mFunction,
         aParam, Address(aValue), Address(*aValue), c[0], c[1], c[2]);
}
void uCallTrace::OutPointer(const char* aParam, const void* aPointer) {
    if (mOutputs) Line(TVK_OUT "Pointer " TVK_PTR, mFunction, aParam, Address(aPointer));
}
