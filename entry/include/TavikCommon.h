/* Tavik: types shared by every public header (status codes, handles). */
#ifndef TAVIK_COMMON_H
#define TAVIK_COMMON_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define TVK_EXPORT __attribute__((visibility("default")))
#else
#define TVK_EXPORT
#endif

/* Every flat function returns one of these. */
typedef int32_t TvkError_t;

typedef enum TvkErrorType {
    TvkErrorSuccess = 0,
    TvkErrorInternalFault = -1,
    TvkErrorApiNotStarted = -2,
    TvkErrorNotFound = -3,
    TvkErrorBadHandle = -4,
    TvkErrorDeviceNotOpen = -5,
    TvkErrorInvalidAccess = -6,
    TvkErrorBadParameter = -7,
    TvkErrorStructSize = -8,
    TvkErrorMoreData = -9,
    TvkErrorWrongType = -10,
    TvkErrorInvalidValue = -11,
    TvkErrorTimeout = -12,
    TvkErrorOther = -13,
    TvkErrorResources = -14,
    TvkErrorInvalidCall = -15,
    TvkErrorNoTL = -16,
    TvkErrorNotImplemented = -17,
    TvkErrorNotSupported = -18,
    TvkErrorIncomplete = -19
} TvkErrorType;

typedef void* TvkHandle_t;
typedef uint8_t TvkBool_t;

#ifdef __cplusplus
}
#endif

#endif /* TAVIK_COMMON_H */
