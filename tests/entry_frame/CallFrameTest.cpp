#include <gtest/gtest.h>

#include "ErrorTable.h"
#include "ResultTable.h"
#include "TavikC.h"
#include "kit/Env.h"

namespace {

// Sets a callback's thread tag for one scope.
class uTagged {
public:
    explicit uTagged(llk::u4 aTag) { llk::sEnv::SetThreadTag(aTag); }
    ~uTagged() { llk::sEnv::SetThreadTag(0); }
};

TEST(CallFrameTest, EitherCallbackTagRefusesEveryTaggedCall) {
    for (llk::u4 tag : {0xf00d0001u, 0xf00d0002u}) {
        uTagged inCallback(tag);
        TvkHandle_t camera = reinterpret_cast<TvkHandle_t>(100);
        TvkFrame_t frame{};
        TvkHandle_t opened = nullptr;
        EXPECT_EQ(TvkStartup(), TvkErrorInvalidCall);
        EXPECT_EQ(TvkFeatureIntSet(camera, "Gain", 1), TvkErrorInvalidCall);
        EXPECT_EQ(TvkFeatureCommandRun(camera, "AcquisitionStart"), TvkErrorInvalidCall);
        EXPECT_EQ(TvkCaptureStart(camera), TvkErrorInvalidCall);
        EXPECT_EQ(TvkFrameAnnounce(camera, &frame, sizeof(frame)), TvkErrorInvalidCall);
        EXPECT_EQ(TvkCameraOpen("x", TvkAccessModeFull, &opened), TvkErrorInvalidCall);
        // The tag test comes before the parameter checks.
        EXPECT_EQ(TvkFeatureIntSet(camera, nullptr, 1), TvkErrorInvalidCall);
        // Getters, queueing and waiting stay allowed (and meet the gate).
        int64_t value = 0;
        EXPECT_EQ(TvkFeatureIntGet(camera, "Gain", &value), TvkErrorApiNotStarted);
        EXPECT_EQ(TvkCaptureFrameQueue(camera, &frame, nullptr), TvkErrorApiNotStarted);
        EXPECT_EQ(TvkCaptureQueueFlush(camera), TvkErrorApiNotStarted);
        TvkShutdown(); // does nothing here
    }
    EXPECT_EQ(TvkStartup(), TvkErrorNoTL);
}

TEST(CallFrameTest, NormalisationMapsEveryInternalFamily) {
    struct tCase {
        TvkError_t in, out;
    } cases[] = {
        {0, 0},        {-5, -5},      {-1000, -1000}, {-1001, -13}, {-1002, -1},  {-1003, -1},
        {-1004, -6},   {-1005, -6},   {-1006, -4},    {-1007, -3},  {-1008, -13}, {-1009, -7},
        {-1010, -13},  {-1011, -12},  {-1012, -13},   {-1013, -9},  {-1014, -6},  {-10000, -13},
        {-10001, -13}, {-99999, -13}, {1, -13},       {2, -14},     {3, -14},     {4, -1},
        {5, -3},       {6, -12},      {7, -13},       {8, -1},      {9, -11},     {10, -11},
        {11, -13},     {12, -1},      {13, -13},      {14, -13},    {15, -11},    {16, -13},
        {17, -13},     {18, -9},      {19, -13},      {100, -13},   {104, -13},   {105, -10},
        {106, -6},     {107, -6},     {108, -6},      {109, -13},
    };
    for (const tCase& c : cases)
        EXPECT_EQ(TvkAPINormalizeError(c.in), c.out) << c.in;
}

TEST(CallFrameTest, TextLookupReportsTruncationAndMisses) {
    char text[32];
    EXPECT_EQ(TvkResultLUTWrap::find(TvkErrorSuccess, text, sizeof(text)),
              TvkResultLUTWrap::kFound);
    EXPECT_EQ(TvkResultLUTWrap::find(TvkErrorSuccess, text, 3), TvkResultLUTWrap::kTruncated);
    EXPECT_STREQ(text, "No");
    EXPECT_EQ(TvkResultLUTWrap::find(-19, text, sizeof(text)), TvkResultLUTWrap::kNotFound);
    EXPECT_STREQ(text, "return code not found");
}

} // namespace
