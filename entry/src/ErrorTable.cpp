#include "ErrorTable.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "kit/Env.h"

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

TvkError_t NormalizeGenTL(TvkError_t aCode) {
    switch (aCode) {
    case -1002: // GC_ERR_NOT_INITIALIZED
    case -1003: // GC_ERR_NOT_IMPLEMENTED
        return TvkErrorInternalFault;
    case -1004: // GC_ERR_RESOURCE_IN_USE
    case -1005: // GC_ERR_ACCESS_DENIED
    case -1014: // GC_ERR_NOT_AVAILABLE
        return TvkErrorInvalidAccess;
    case -1006:
        return TvkErrorBadHandle; // GC_ERR_INVALID_HANDLE
    case -1007:
        return TvkErrorNotFound; // GC_ERR_INVALID_ID
    case -1009:
        return TvkErrorBadParameter; // GC_ERR_INVALID_PARAMETER
    case -1011:
        return TvkErrorTimeout; // GC_ERR_TIMEOUT
    case -1013:
        return TvkErrorMoreData; // GC_ERR_INVALID_BUFFER
    default:
        return TvkErrorOther;
    }
}

TvkError_t NormalizeInternal(TvkError_t aCode) {
    switch (aCode) {
    case 2:
    case 3:
        return TvkErrorResources;
    case 4:
    case 8:
    case 12:
        return TvkErrorInternalFault;
    case 5:
        return TvkErrorNotFound;
    case 6:
        return TvkErrorTimeout;
    case 9:
    case 10:
    case 15:
        return TvkErrorInvalidValue;
    case 18:
        return TvkErrorMoreData;
    case 105:
        return TvkErrorWrongType;
    case 106:
    case 107:
    case 108:
        return TvkErrorInvalidAccess;
    default:
        return TvkErrorOther;
    }
}

} // namespace

TvkError_t TvkAPINormalizeError(TvkError_t aCode) {
    if (aCode == 0) return 0;
    if (aCode < 0) return aCode > -1001 ? aCode : NormalizeGenTL(aCode);
    return NormalizeInternal(aCode);
}

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
        llk::sEnv::ErrnoText(nErrCode, text, sizeof(text));
        if (text[0] && strncmp(text, "Unknown error", 13) != 0) {
            size_t needed = strlen(text) + 1;
            snprintf(pszInfoString, nMaxStrLen, "%s", text);
            return needed > nMaxStrLen ? TvkErrorMoreData : TvkErrorSuccess;
        }
    }
    // The lookup left "return code not found" in the buffer.
    return nMaxStrLen < sizeof(kNotFoundText) ? TvkErrorMoreData : TvkErrorSuccess;
}
