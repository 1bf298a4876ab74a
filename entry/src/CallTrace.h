// The trace lines of a flat call: "called", one line per input, "returned",
// and one line per output when the status is not negative. Nothing is
// formatted when no trace file is set.
#pragma once

#include "TavikC.h"
#include "kit/Types.h"

class uCallTrace {
public:
    explicit uCallTrace(const char* aFunction);

    uCallTrace& InHandle(const char* aParam, const void* aHandle);
    uCallTrace& InU32(const char* aParam, uint32_t aValue);
    uCallTrace& InU64(const char* aParam, uint64_t aValue);
    uCallTrace& InI64(const char* aParam, int64_t aValue);
    uCallTrace& InDouble(const char* aParam, double aValue);
    uCallTrace& InBool(const char* aParam, bool aValue);
    uCallTrace& InString(const char* aParam, const char* aText);
    uCallTrace& InPointer(const char* aParam, const void* aPointer);

    // The "returned" line; remembers the status for the output lines.
    TvkError_t Returned(TvkError_t aStatus);

    void OutU32(const char* aParam, const uint32_t* aValue);
    void OutI64(const char* aParam, const int64_t* aValue);
    void OutDouble(const char* aParam, const double* aValue);
    void OutBool(const char* aParam, const TvkBool_t* aValue);
    void OutHandle(const char* aParam, const TvkHandle_t* aValue);
    void OutString(const char* aParam, const char* const* aValue);
    void OutPointer(const char* aParam, const void* aPointer);

private:
    bool Active() const { return mOn; }
    void Line(const char* aFormat, ...) __attribute__((format(printf, 2, 3)));

    const char* mFunction;
    bool mOn;
    bool mOutputs = false;
};
