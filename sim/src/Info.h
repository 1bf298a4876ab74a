// Answers of the info calls: a typed value written into the caller's buffer,
// or its size when the buffer is null.
#pragma once

#include <cstring>
#include <string>

#include "TavikGenTLVendor.h"

namespace sim {

using namespace GenICam::Client;

inline GC_ERROR Reply(INFO_DATATYPE aType, const void* aValue, size_t aSize,
                      INFO_DATATYPE* aTypeOut, void* aBuffer, size_t* aSizeIo) {
    if (aTypeOut) *aTypeOut = aType;
    if (!aSizeIo) return GC_ERR_INVALID_PARAMETER;
    if (!aBuffer) {
        *aSizeIo = aSize;
        return GC_ERR_SUCCESS;
    }
    if (*aSizeIo < aSize) return GC_ERR_BUFFER_TOO_SMALL;
    memcpy(aBuffer, aValue, aSize);
    *aSizeIo = aSize;
    return GC_ERR_SUCCESS;
}

inline GC_ERROR ReplyText(const std::string& aText, INFO_DATATYPE* aType, void* aBuffer,
                          size_t* aSize) {
    return Reply(INFO_DATATYPE_STRING, aText.c_str(), aText.size() + 1, aType, aBuffer, aSize);
}

template <class T>
GC_ERROR ReplyValue(INFO_DATATYPE aKind, T aValue, INFO_DATATYPE* aType, void* aBuffer,
                    size_t* aSize) {
    return Reply(aKind, &aValue, sizeof(aValue), aType, aBuffer, aSize);
}

} // namespace sim
