// The frame of the flat functions, through the public header of libTavikC.so.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "TavikC.h"

namespace {

// Runs each test from an empty directory with no producer search path, so
// start-up finds no producer.
class FlatFrameTest : public ::testing::Test {
protected:
    void SetUp() override {
        mOld = std::filesystem::current_path();
        mDir = std::filesystem::temp_directory_path() / ("tavik-entry-" + std::to_string(getpid()));
        std::filesystem::create_directories(mDir);
        std::filesystem::current_path(mDir);
        unsetenv("GENICAM_GENTL64_PATH");
    }
    void TearDown() override {
        TvkShutdown();
        std::filesystem::current_path(mOld);
        std::filesystem::remove_all(mDir);
    }
    std::filesystem::path mOld, mDir;
};

TEST_F(FlatFrameTest, VersionQueryChecksSizeBeforePointer) {
    EXPECT_EQ(TvkVersionQuery(nullptr, sizeof(TvkVersionInfo_t) - 1), TvkErrorStructSize);
    EXPECT_EQ(TvkVersionQuery(nullptr, sizeof(TvkVersionInfo_t)), TvkErrorBadParameter);
    TvkVersionInfo_t version{};
    ASSERT_EQ(TvkVersionQuery(&version, sizeof(version)), TvkErrorSuccess);
    EXPECT_EQ(version.major, 1u);
    EXPECT_EQ(version.minor, 3u);
    EXPECT_EQ(version.patch, 0u);
}

TEST_F(FlatFrameTest, GatedCallsBeforeStartupAreRefused) {
    int64_t value = 0;
    EXPECT_EQ(TvkFeatureIntGet(TVK_SYSTEM_HANDLE, "Width", &value), TvkErrorApiNotStarted);
    EXPECT_EQ(TvkFeatureIntSet(TVK_SYSTEM_HANDLE, "Width", 1), TvkErrorApiNotStarted);
    uint32_t found = 0;
    EXPECT_EQ(TvkCamerasList(nullptr, 0, &found, sizeof(TvkCameraInfo_t)), TvkErrorApiNotStarted);
    EXPECT_EQ(TvkCaptureStart(reinterpret_cast<TvkHandle_t>(100)), TvkErrorApiNotStarted);
    EXPECT_EQ(TvkCameraClose(reinterpret_cast<TvkHandle_t>(100)), TvkErrorApiNotStarted);
    EXPECT_EQ(TvkInterfaceClose(reinterpret_cast<TvkHandle_t>(100)), TvkErrorApiNotStarted);
    EXPECT_EQ(TvkAncillaryDataClose(reinterpret_cast<TvkHandle_t>(100)), TvkErrorApiNotStarted);
    uint32_t done = 0;
    char bytes[4];
    EXPECT_EQ(TvkMemoryRead(TVK_SYSTEM_HANDLE, 0, 4, bytes, &done), TvkErrorApiNotStarted);
}

TEST_F(FlatFrameTest, ParameterChecksWinOverTheGate) {
    int64_t value = 0;
    EXPECT_EQ(TvkFeatureIntGet(TVK_SYSTEM_HANDLE, nullptr, &value), TvkErrorBadParameter);
    EXPECT_EQ(TvkFeatureIntGet(TVK_SYSTEM_HANDLE, "Width", nullptr), TvkErrorBadParameter);
    EXPECT_EQ(TvkFeaturesList(TVK_SYSTEM_HANDLE, nullptr, 0, nullptr, sizeof(TvkFeatureInfo_t)),
              TvkErrorBadParameter);
    TvkFeatureInfo_t info{};
    EXPECT_EQ(TvkFeatureInfoQuery(TVK_SYSTEM_HANDLE, "Width", &info, sizeof(info) - 1),
              TvkErrorStructSize);
    TvkFrame_t frame{};
    EXPECT_EQ(TvkFrameAnnounce(reinterpret_cast<TvkHandle_t>(100), &frame, 0),
              TvkErrorBadParameter);
    EXPECT_EQ(TvkFrameAnnounce(reinterpret_cast<TvkHandle_t>(100), &frame, sizeof(frame) - 1),
              TvkErrorStructSize);
    EXPECT_EQ(TvkCamerasList(nullptr, 0, nullptr, sizeof(TvkCameraInfo_t)), TvkErrorBadParameter);
    uint32_t found = 0;
    EXPECT_EQ(TvkCamerasList(nullptr, 0, &found, sizeof(TvkCameraInfo_t) + 1), TvkErrorStructSize);
    // A null name passes the check of the invalidation calls; only the callback is required.
    EXPECT_EQ(TvkFeatureInvalidationRegister(TVK_SYSTEM_HANDLE, "x", nullptr, nullptr),
              TvkErrorBadParameter);
    EXPECT_EQ(TvkFeatureInvalidationRegister(
                  TVK_SYSTEM_HANDLE, nullptr, [](TvkHandle_t, const char*, void*) {}, nullptr),
              TvkErrorApiNotStarted);
    EXPECT_EQ(TvkAncillaryDataOpen(&frame, nullptr), TvkErrorBadParameter);
}

TEST_F(FlatFrameTest, StartupWithoutProducersReportsNoTransportLayer) {
    EXPECT_EQ(TvkStartup(), TvkErrorNoTL);
    int64_t value = 0;
    EXPECT_EQ(TvkFeatureIntGet(TVK_SYSTEM_HANDLE, "Width", &value), TvkErrorApiNotStarted);
    // A failed start may be tried again, and shutdown without a start is harmless.
    EXPECT_EQ(TvkStartup(), TvkErrorNoTL);
    TvkShutdown();
    TvkShutdown();
}

TEST_F(FlatFrameTest, ErrorTextsAndTheirEdges) {
    char text[128];
    ASSERT_EQ(TvkGetErrorInfo(TvkErrorSuccess, text, sizeof(text)), TvkErrorSuccess);
    EXPECT_STREQ(text, "No error");
    ASSERT_EQ(TvkGetErrorInfo(TvkErrorApiNotStarted, text, sizeof(text)), TvkErrorSuccess);
    EXPECT_STREQ(text, "TvkStartup() was not called before the current command");
    ASSERT_EQ(TvkGetErrorInfo(TvkErrorNotSupported, text, sizeof(text)), TvkErrorSuccess);
    EXPECT_STREQ(text, "API feature is not supported");
    TvkGetErrorInfo(TvkErrorIncomplete, text, sizeof(text));
    EXPECT_STREQ(text, "return code not found");

    char small[6];
    memset(small, 'x', sizeof(small));
    EXPECT_EQ(TvkGetErrorInfo(TvkErrorOther, small, 5), TvkErrorMoreData);
    EXPECT_STREQ(small, "Othe");
    EXPECT_EQ(small[5], 'x'); // nothing past the given length
    EXPECT_EQ(TvkGetErrorInfo(TvkErrorOther, nullptr, 10), TvkErrorBadParameter);
    EXPECT_EQ(TvkGetErrorInfo(TvkErrorOther, text, 0), TvkErrorBadParameter);
}

TEST_F(FlatFrameTest, OnlyTheFlatFunctionsAreExported) {
    // The kit lives inside the library but none of it is visible.
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "_ZN3llk7pObject6RetainEv"), nullptr);
    EXPECT_NE(dlsym(RTLD_DEFAULT, "TvkStartup"), nullptr);
}

} // namespace
