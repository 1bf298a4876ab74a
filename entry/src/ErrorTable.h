// Public statuses: normalisation of internal ones and their texts.
#pragma once

#include "TavikC.h"
#include "kit/Types.h"

// Internal statuses (kit, feature kernel, GenTL) to the public table.
TvkError_t TvkAPINormalizeError(TvkError_t aCode);

// The text lookup behind TvkGetErrorInfo.
class TvkResultLUTWrap {
public:
    enum tFind : llk::i4 { kFound = 0, kNotFound = 1, kTruncated = 2 };
    // Copies at most min(aSize, length + 1) bytes of the status's text.
    static tFind find(TvkError_t aCode, char* aBuffer, size_t aSize);
};
