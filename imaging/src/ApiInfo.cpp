// Version, build description and status texts of the image library.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "TavikImageTransform.h"

namespace {

struct tRow {
    TvkError_t code;
    const char* text;
};

// The public statuses the image functions return.
constexpr tRow kTexts[] = {
    {TvkErrorSuccess, "No error"},
    {TvkErrorInternalFault, "Unexpected fault in TavikImageTransform"},
    {TvkErrorBadParameter, "One of the parameters was invalid (usually an illegal pointer)"},
    {TvkErrorStructSize, "The given struct size is not valid for this version of the API"},
    {TvkErrorMoreData, "More data was returned in a string/list than space was provided"},
    {TvkErrorResources, "Resources not available (e.g memory)"},
    {TvkErrorNotImplemented, "API feature is not implemented"},
    {TvkErrorNotSupported, "API feature is not supported"},
};

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

TVK_EXPORT TvkError_t TvkGetErrorInfo(TvkError_t errorCode, char* pText, uint32_t maxLength) {
    if (!pText || maxLength == 0) return TvkErrorBadParameter;
    std::string text;
    for (const tRow& row : kTexts)
        if (row.code == errorCode) text = row.text;
    if (text.empty()) {
        char buffer[256];
        const char* system =
            strerror_r(errorCode < 0 ? -errorCode : errorCode, buffer, sizeof(buffer));
        text = system ? system : "";
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
            text.pop_back();
    }
    snprintf(pText, maxLength, "%s", text.c_str());
    return text.size() + 1 > maxLength ? TvkErrorMoreData : TvkErrorSuccess;
}

} // extern "C"
