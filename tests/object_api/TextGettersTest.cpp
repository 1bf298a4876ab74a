// The two-step getters: a null buffer asks the length, a second call fills;
// too small a buffer gives TvkErrorMoreData. Camera and interface texts end
// with a NUL, feature and entry texts do not.
#include <cstring>

#include "ObjectFixture.h"

namespace {

using namespace QRX::TvkAPI;

constexpr char kUntouched = '#';

TEST(TextGettersTest, CameraTextsAskTheLengthThenFillWithATerminatingNul) {
    Camera camera("Cam-7", "Bench", "Model X", nullptr, "SimGEV-0", TvkInterfaceEthernet);
    uint32_t length = 0;
    ASSERT_EQ(camera.GetID(nullptr, length), TvkErrorSuccess);
    EXPECT_EQ(length, 5u);

    char buffer[8];
    std::memset(buffer, kUntouched, sizeof(buffer));
    length = 4;
    EXPECT_EQ(camera.GetID(buffer, length), TvkErrorMoreData);
    EXPECT_EQ(buffer[0], kUntouched);
    EXPECT_EQ(length, 5u); // what it needs

    // A length equal to the text's: the NUL lands one byte past it.
    length = 5;
    ASSERT_EQ(camera.GetID(buffer, length), TvkErrorSuccess);
    EXPECT_EQ(length, 5u);
    EXPECT_STREQ(buffer, "Cam-7");
    EXPECT_EQ(buffer[6], kUntouched);

    std::string text = "stale";
    EXPECT_EQ(camera.GetSerialNumber(text), TvkErrorSuccess);
    EXPECT_EQ(text, "");
    EXPECT_EQ(camera.GetModel(text), TvkErrorSuccess);
    EXPECT_EQ(text, "Model X");
    EXPECT_EQ(camera.GetName(text), TvkErrorSuccess);
    EXPECT_EQ(text, "Bench");
    EXPECT_EQ(camera.GetInterfaceID(text), TvkErrorSuccess);
    EXPECT_EQ(text, "SimGEV-0");
    TvkInterfaceType type = TvkInterfaceUnknown;
    EXPECT_EQ(camera.GetInterfaceType(type), TvkErrorSuccess);
    EXPECT_EQ(type, TvkInterfaceEthernet);
}

TEST(TextGettersTest, InterfaceTextsComeFromItsRecord) {
    TvkInterfaceInfo_t info{"SimUSB3-0", TvkInterfaceUsb, "USB host", nullptr, TvkAccessModeFull};
    Interface iface(&info);
    char buffer[16];
    std::memset(buffer, kUntouched, sizeof(buffer));
    uint32_t length = sizeof(buffer);
    ASSERT_EQ(iface.GetName(buffer, length), TvkErrorSuccess);
    EXPECT_EQ(length, 8u);
    EXPECT_STREQ(buffer, "USB host");
    length = 0;
    EXPECT_EQ(iface.GetID(buffer, length), TvkErrorMoreData);
    std::string text = "stale";
    EXPECT_EQ(iface.GetSerialNumber(text), TvkErrorSuccess);
    EXPECT_EQ(text, "");
    EXPECT_EQ(iface.GetID(text), TvkErrorSuccess);
    EXPECT_EQ(text, "SimUSB3-0");
    TvkInterfaceType type = TvkInterfaceUnknown;
    TvkAccessModeType access = TvkAccessModeNone;
    EXPECT_EQ(iface.GetType(type), TvkErrorSuccess);
    EXPECT_EQ(type, TvkInterfaceUsb);
    EXPECT_EQ(iface.GetPermittedAccess(access), TvkErrorSuccess);
    EXPECT_EQ(access, TvkAccessModeFull);

    Interface empty(nullptr);
    EXPECT_EQ(empty.GetID(text), TvkErrorSuccess);
    EXPECT_EQ(text, "");
}

TEST(TextGettersTest, FeatureTextsAreCopiedWithoutANul) {
    TvkFeatureInfo info{};
    info.name = "ExposureTime";
    info.featureDataType = TvkFeatureDataFloat;
    info.unit = "us";
    info.category = nullptr;
    info.visibility = TvkFeatureVisibilityExpert;
    info.pollingTime = 250;
    info.isStreamable = 1;
    Feature feature(&info, nullptr);

    char buffer[16];
    std::memset(buffer, kUntouched, sizeof(buffer));
    uint32_t length = 0;
    ASSERT_EQ(feature.GetName(nullptr, length), TvkErrorSuccess);
    EXPECT_EQ(length, 12u);
    ASSERT_EQ(feature.GetName(buffer, length), TvkErrorSuccess);
    EXPECT_EQ(std::string(buffer, 12), "ExposureTime");
    EXPECT_EQ(buffer[12], kUntouched);
    length = 1;
    EXPECT_EQ(feature.GetUnit(buffer, length), TvkErrorMoreData);

    std::string text;
    EXPECT_EQ(feature.GetUnit(text), TvkErrorSuccess);
    EXPECT_EQ(text, "us");
    EXPECT_EQ(feature.GetCategory(text), TvkErrorSuccess);
    EXPECT_EQ(text, "");
    uint32_t polling = 0;
    EXPECT_EQ(feature.GetPollingTime(polling), TvkErrorSuccess);
    EXPECT_EQ(polling, 250u);
    TvkFeatureVisibilityType visibility = TvkFeatureVisibilityUnknown;
    EXPECT_EQ(feature.GetVisibility(visibility), TvkErrorSuccess);
    EXPECT_EQ(visibility, TvkFeatureVisibilityExpert);
    bool streamable = false;
    EXPECT_EQ(feature.IsStreamable(streamable), TvkErrorSuccess);
    EXPECT_TRUE(streamable);
}

TEST(TextGettersTest, EnumEntriesKeepTheirTextsAndValues) {
    EnumEntry entry("Continuous", "Continuous mode", nullptr, "Runs on", "Standard",
                    TvkFeatureVisibilityBeginner, 2);
    EnumEntry copy;
    copy = entry;
    char buffer[16];
    std::memset(buffer, kUntouched, sizeof(buffer));
    uint32_t size = sizeof(buffer);
    ASSERT_EQ(copy.GetName(buffer, size), TvkErrorSuccess);
    EXPECT_EQ(size, 10u);
    EXPECT_EQ(buffer[10], kUntouched);
    size = 3;
    EXPECT_EQ(copy.GetDisplayName(buffer, size), TvkErrorMoreData);
    std::string text = "stale";
    EXPECT_EQ(copy.GetDescription(text), TvkErrorSuccess);
    EXPECT_EQ(text, "");
    EXPECT_EQ(copy.GetSFNCNamespace(text), TvkErrorSuccess);
    EXPECT_EQ(text, "Standard");
    int64_t value = 0;
    TvkFeatureVisibilityType visibility = TvkFeatureVisibilityUnknown;
    EXPECT_EQ(copy.GetValue(value), TvkErrorSuccess);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(copy.GetVisibility(visibility), TvkErrorSuccess);
    EXPECT_EQ(visibility, TvkFeatureVisibilityBeginner);
}

} // namespace
