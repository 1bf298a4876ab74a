// TvkGetErrorInfo is exported by the flat library and by the image library.
// Whichever the application was linked with first provides it, so both must
// give the same texts.
#include <gtest/gtest.h>

#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <string>
#include <vector>

#include "TavikC.h"
#include "TavikImageTransform.h"

namespace {

using tGetErrorInfo = TvkError_t (*)(TvkError_t, char*, uint32_t);

// The file names of the loaded objects, in the order symbols are looked up.
std::vector<std::string> LoadedObjects() {
    std::vector<std::string> names;
    dl_iterate_phdr(
        [](dl_phdr_info* aInfo, size_t, void* aNames) {
            static_cast<std::vector<std::string>*>(aNames)->push_back(aInfo->dlpi_name);
            return 0;
        },
        &names);
    return names;
}

// The one library's own TvkGetErrorInfo, not the one the application binds to.
tGetErrorInfo OwnLookup(const char* aLibrary) {
    void* handle = dlopen(aLibrary, RTLD_NOW | RTLD_NOLOAD);
    if (!handle) return nullptr;
    auto lookup = reinterpret_cast<tGetErrorInfo>(dlsym(handle, "TvkGetErrorInfo"));
    dlclose(handle);
    return lookup;
}

std::string Text(tGetErrorInfo aLookup, TvkError_t aCode, TvkError_t* aStatus = nullptr) {
    char text[256];
    memset(text, 0, sizeof(text));
    TvkError_t status = aLookup(aCode, text, sizeof(text));
    if (aStatus) *aStatus = status;
    return text;
}

TEST(TAVIK_LINK_ORDER, TheApplicationReadsTheFlatLibrarysTexts) {
    // Both libraries are linked, in the order this program is named after.
    TvkVersionInfo_t version{};
    ASSERT_EQ(TvkVersionQuery(&version, sizeof(version)), TvkErrorSuccess);
    uint32_t imageVersion = 0;
    ASSERT_EQ(TvkGetVersion(&imageVersion), TvkErrorSuccess);
    std::string first;
    for (const std::string& name : LoadedObjects())
        if (name.find("libTavik") != std::string::npos && first.empty()) first = name;
    ASSERT_NE(first.find(TAVIK_FIRST_LIBRARY), std::string::npos) << first;

    const struct {
        TvkError_t code;
        const char* text;
    } rows[] = {
        {TvkErrorSuccess, "No error"},
        {TvkErrorInternalFault, "Unexpected fault in TavikC or driver"},
        {TvkErrorApiNotStarted, "TvkStartup() was not called before the current command"},
        {TvkErrorNotFound, "The designated instance (camera, feature etc.) cannot be found"},
        {TvkErrorBadHandle, "The given handle is not valid"},
        {TvkErrorDeviceNotOpen, "Device was not opened for usage"},
        {TvkErrorInvalidAccess, "Operation is invalid with the current access mode"},
        {TvkErrorBadParameter, "One of the parameters was invalid (usually an illegal pointer)"},
        {TvkErrorStructSize, "The given struct size is not valid for this version of the API"},
        {TvkErrorMoreData, "More data was returned in a string/list than space was provided"},
        {TvkErrorWrongType, "The feature type for this access function was wrong"},
        {TvkErrorInvalidValue,
         "The value was not valid; either out of bounds or not an increment of the minimum"},
        {TvkErrorTimeout, "Timeout during wait"},
        {TvkErrorOther, "Other error"},
        {TvkErrorResources, "Resources not available (e.g memory)"},
        {TvkErrorInvalidCall, "Call is invalid in the current context (e.g callback)"},
        {TvkErrorNoTL, "No transport layers were found"},
        {TvkErrorNotImplemented, "API feature is not implemented"},
        {TvkErrorNotSupported, "API feature is not supported"},
        {TvkErrorIncomplete, "return code not found"},
    };
    for (const auto& row : rows) {
        TvkError_t status = TvkErrorOther;
        EXPECT_EQ(Text(&TvkGetErrorInfo, row.code, &status), row.text) << row.code;
        EXPECT_EQ(status, TvkErrorSuccess) << row.code;
    }
}

TEST(TAVIK_LINK_ORDER, BothLibrariesGiveTheSameTextsForEveryCode) {
    tGetErrorInfo flat = OwnLookup(TAVIK_C_LIBRARY);
    tGetErrorInfo image = OwnLookup(TAVIK_IMAGE_LIBRARY);
    ASSERT_NE(flat, nullptr);
    ASSERT_NE(image, nullptr);
    ASSERT_NE(reinterpret_cast<void*>(flat), reinterpret_cast<void*>(image));
    // The public table, system error numbers and codes nobody knows.
    std::vector<TvkError_t> codes;
    for (TvkError_t code = -40; code <= 200; ++code)
        codes.push_back(code);
    for (TvkError_t code : {-1001, -10000, 4095, 4096, 0x7FFFFFFF, INT32_MIN})
        codes.push_back(code);
    for (TvkError_t code : codes) {
        TvkError_t flatStatus = 0, imageStatus = 0;
        EXPECT_EQ(Text(flat, code, &flatStatus), Text(image, code, &imageStatus)) << code;
        EXPECT_EQ(flatStatus, imageStatus) << code;
    }
    // Truncation and bad buffers alike.
    char small[5], other[5];
    EXPECT_EQ(flat(TvkErrorNoTL, small, sizeof(small)), TvkErrorMoreData);
    EXPECT_EQ(image(TvkErrorNoTL, other, sizeof(other)), TvkErrorMoreData);
    EXPECT_STREQ(small, other);
    EXPECT_EQ(image(TvkErrorNoTL, nullptr, 8), TvkErrorBadParameter);
    EXPECT_EQ(image(TvkErrorNoTL, small, 0), TvkErrorBadParameter);
}

} // namespace
