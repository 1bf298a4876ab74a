#include "ResultTable.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace {

struct tRow {
    TvkError_t code;
    const char* text;
};

// Sorted by code, so a lookup is a binary search.
constexpr tRow kTexts[] = {
    {TvkErrorNotSupported, "API feature is not supported"},
    {TvkErrorNotImplemented, "API feature is not implemented"},
    {TvkErrorNoTL, "No transport layers were found"},
    {TvkErrorInvalidCall, "Call is invalid in the current context (e.g callback)"},
    {TvkErrorResources, "Resources not available (e.g memory)"},
    {TvkErrorOther, "Other error"},
    {TvkErrorTimeout, "Timeout during wait"},
    {TvkErrorInvalidValue,
     "The value was not valid; either out of bounds or not an increment of the minimum"},
    {TvkErrorWrongType, "The feature type for this access function was wrong"},
    {TvkErrorMoreData, "More data was returned in a string/list than space was provided"},
    {TvkErrorStructSize, "The given struct size is not valid for this version of the API"},
    {TvkErrorBadParameter, "One of the parameters was invalid (usually an illegal pointer)"},
    {TvkErrorInvalidAccess, "Operation is invalid with the current access mode"},
    {TvkErrorDeviceNotOpen, "Device was not opened for usage"},
    {TvkErrorBadHandle, "The given handle is not valid"},
    {TvkErrorNotFound, "The designated instance (camera, feature etc.) cannot be found"},
    {TvkErrorApiNotStarted, "TvkStartup() was not called before the current command"},
    {TvkErrorInternalFault, "Unexpected fault in TavikC or driver"},
    {TvkErrorSuccess, "No error"},
};
static_assert(std::is_sorted(std::begin(kTexts), std::end(kTexts),
                             [](const tRow& a, const tRow& b) { return a.code < b.code; }));

constexpr char kNotFoundText[] = "return code not found";

// The system's text for an error number, without a trailing line break; empty
// when the system has none.
void SystemText(int aErrno, char* aBuffer, size_t aSize) {
    char scratch[256];
    // The GNU strerror_r may return a static text rather than fill scratch.
    const char* text = strerror_r(aErrno, scratch, sizeof(scratch));
    if (!text || strncmp(text, "Unknown error", 13) == 0) text = "";
    snprintf(aBuffer, aSize, "%s", text);
    size_t length = strlen(aBuffer);
    while (length > 0 && (aBuffer[length - 1] == '\n' || aBuffer[length - 1] == '\r'))
        aBuffer[--length] = '\0';
}

} // namespace

TvkResultLUTWrap::tFind TvkResultLUTWrap::find(TvkError_t aCode, char* aBuffer, size_t aSize) {
    const tRow* row = std::lower_bound(std::begin(kTexts), std::end(kTexts), aCode,
                                       [](const tRow& r, TvkError_t c) { return r.code < c; });
    const bool found = row != std::end(kTexts) && row->code == aCode;
    const char* text = found ? row->text : kNotFoundText;
    const size_t needed = strlen(text) + 1;
    const size_t copied = std::min(aSize, needed);
    if (aBuffer && copied) {
        memcpy(aBuffer, text, copied);
        aBuffer[copied - 1] = '\0';
    }
    if (!found) return kNotFound;
    return copied < needed ? kTruncated : kFound;
}

extern "C" TVK_EXPORT TvkError_t TvkGetErrorInfo(TvkError_t nErrCode, char* pszInfoString,
                                                 uint32_t nMaxStrLen) {
    if (!pszInfoString || nMaxStrLen == 0) return TvkErrorBadParameter;
    switch (TvkResultLUTWrap::find(nErrCode, pszInfoString, nMaxStrLen)) {
    case TvkResultLUTWrap::kFound:
        return TvkErrorSuccess;
    case TvkResultLUTWrap::kTruncated:
        return TvkErrorMoreData;
    case TvkResultLUTWrap::kNotFound:
        break;
    }
    // Codes outside the table may be system error numbers.
    if (nErrCode > 0 && nErrCode < 4096) {
        char text[256];
        SystemText(nErrCode, text, sizeof(text));
        if (text[0]) {
            snprintf(pszInfoString, nMaxStrLen, "%s", text);
            return strlen(text) + 1 > nMaxStrLen ? TvkErrorMoreData : TvkErrorSuccess;
        }
    }
    // The lookup left "return code not found" in the buffer.
    return nMaxStrLen < sizeof(kNotFoundText) ? TvkErrorMoreData : TvkErrorSuccess;
}
