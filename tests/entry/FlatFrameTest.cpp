// The frame of the flat functions, through the public header of libTavikC.so.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "FlatFixture.h"
#include "TavikC.h"

namespace {

using FlatFrameTest = test::cFlatFixture;

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

TEST_F(FlatFrameTest, StartupLoadsTheProducersAndShutdownUnloadsThem) {
    SearchSimulator();
    ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
    EXPECT_TRUE(SimulatorLoaded());
    EXPECT_EQ(TvkStartup(), TvkErrorSuccess);
    int64_t value = 0;
    EXPECT_NE(TvkFeatureIntGet(TVK_SYSTEM_HANDLE, "Width", &value), TvkErrorApiNotStarted);
    TvkShutdown();
    EXPECT_FALSE(SimulatorLoaded());
    EXPECT_EQ(TvkFeatureIntGet(TVK_SYSTEM_HANDLE, "Width", &value), TvkErrorApiNotStarted);
    // Start and stop repeat within one load.
    ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
    EXPECT_TRUE(SimulatorLoaded());
}

TEST_F(FlatFrameTest, ProducersThatDoNotLoadCostOnlyThemselves) {
    std::ofstream("garbage.cti") << "not a shared library";
    std::filesystem::copy_file(TAVIK_SIM_VARIANTS "/TavikSimNoOpen.cti", "noopen.cti");
    EXPECT_EQ(TvkStartup(), TvkErrorNoTL);
    EXPECT_FALSE(SimulatorLoaded());
    // One good producer beside them is enough.
    SearchSimulator();
    EXPECT_EQ(TvkStartup(), TvkErrorSuccess);
}

TEST_F(FlatFrameTest, ExitWithoutShutdownNeitherHangsNorCrashes) {
    SearchSimulator();
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (TvkStartup() != TvkErrorSuccess) _exit(3);
        std::exit(0);
    }
    int status = 0;
    pid_t done = 0;
    for (int i = 0; i < 600 && done == 0; ++i) {
        done = waitpid(child, &status, WNOHANG);
        if (done == 0) usleep(50 * 1000);
    }
    if (done == 0) {
        kill(child, SIGKILL);
        waitpid(child, &status, 0);
        FAIL() << "the process hung at exit";
    }
    ASSERT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0);
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
