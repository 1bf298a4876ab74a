// The texts of the public statuses. Both the flat library and the image
// library export TvkGetErrorInfo; this one source is compiled into each, so
// an application reads the same texts whichever it was linked with first.
#pragma once

#include <cstddef>

#include "TavikCommon.h"

class TvkResultLUTWrap {
public:
    enum tFind : int32_t { kFound = 0, kNotFound = 1, kTruncated = 2 };
    // Copies at most min(aSize, length + 1) bytes of the status's text; a
    // status not in the table gives "return code not found".
    static tFind find(TvkError_t aCode, char* aBuffer, size_t aSize);
};
