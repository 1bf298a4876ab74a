// The two-step text getters: a null buffer asks the length, a second call fills.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include <TavikC.h>

namespace QRX::TvkAPI {

// Copies aText into a caller's buffer of aLength bytes, or tells its length
// (also when the buffer is too small). With aTerminate the buffer must hold
// one byte more, for the NUL.
inline TvkErrorType CopyText(const std::string& aText, char* aBuffer, uint32_t& aLength,
                             bool aTerminate) {
    const auto length = static_cast<uint32_t>(aText.size());
    if (aBuffer) {
        if (length > aLength) {
            aLength = length;
            return TvkErrorMoreData;
        }
        std::memcpy(aBuffer, aText.data(), length);
        if (aTerminate) aBuffer[length] = '\0';
    }
    aLength = length;
    return TvkErrorSuccess;
}

// Copies a stored text into the caller's string.
inline TvkErrorType AssignText(std::string& rOut, const std::string& aText) {
    try {
        rOut = aText;
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    return TvkErrorSuccess;
}

// Fills rText through a two-step getter aGet(char*, uint32_t&). With aCut the
// text ends at its first NUL: some getters report a maximum length only.
template <class Get> TvkErrorType ReadText(std::string& rText, Get aGet, bool aCut = false) {
    uint32_t length = 0;
    TvkErrorType status = aGet(nullptr, length);
    if (status != TvkErrorSuccess) return status;
    if (length == 0) {
        rText.clear();
        return TvkErrorSuccess;
    }
    try {
        std::vector<char> buffer(static_cast<size_t>(length) + 1, '\0');
        length += 1;
        status = aGet(buffer.data(), length);
        if (status != TvkErrorSuccess) return status;
        rText.assign(buffer.data(), std::min<size_t>(length, buffer.size()));
        if (aCut) rText.resize(strnlen(rText.data(), rText.size()));
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    return TvkErrorSuccess;
}

// Copies the values of a map out into an array, two steps.
template <class Map, class Item>
TvkErrorType CopyOut(const Map& rMap, Item* pArray, uint32_t& rSize) {
    const auto count = static_cast<uint32_t>(rMap.size());
    if (pArray) {
        if (rSize < count) {
            rSize = count;
            return TvkErrorMoreData;
        }
        for (const auto& entry : rMap)
            *pArray++ = entry.second;
    }
    rSize = count;
    return TvkErrorSuccess;
}

// Fills a vector through a two-step list call aGet(Item*, uint32_t&): count,
// make room, fill; again while the list grew in between.
template <class Item, class Get> TvkErrorType FillVector(std::vector<Item>& rList, Get aGet) {
    try {
        for (;;) {
            uint32_t size = 0;
            TvkErrorType status = aGet(nullptr, size);
            if (status != TvkErrorSuccess) return status;
            rList.resize(size);
            status = aGet(rList.data(), size);
            if (status == TvkErrorMoreData) continue;
            if (status == TvkErrorSuccess) rList.resize(size);
            return status;
        }
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
}

} // namespace QRX::TvkAPI
