#include "ErrorTable.h"

namespace {

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
