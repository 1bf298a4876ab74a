// Version and build description of the image library; its status texts are
// the flat library's (ResultTable.cpp).
#include <algorithm>
#include <cstring>
#include <string>

#include "TavikImageTransform.h"

namespace {

constexpr uint32_t kVersion = (1u << 24) | (3u << 16); // 1.3.0

} // namespace

extern "C" {

TVK_EXPORT TvkError_t TvkGetVersion(uint32_t* pVersion) {
    if (!pVersion) return TvkErrorBadParameter;
    *pVersion = kVersion;
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkGetApiInfoString(uint32_t infoType, char* pName, uint32_t maxLength) {
    if (!pName) return TvkErrorBadParameter;
    std::string text;
    if (infoType == 0 || infoType == 2) text = "Release";
    if (infoType == 0 || infoType == 1) {
        if (!text.empty()) text += " ";
        text += "X86";
    }
    if (maxLength == 0) return TvkErrorSuccess;
    memset(pName, 0, std::min<size_t>(text.size() + 1, maxLength));
    // Never past the buffer, always terminated.
    memcpy(pName, text.c_str(), std::min<size_t>(text.size(), maxLength - 1));
    pName[std::min<size_t>(text.size(), maxLength - 1)] = '\0';
    return TvkErrorSuccess;
}

} // extern "C"
