// The feature calls through the public header, on the system (handle 1)
// with the camera simulator loaded: values, buffers and lists, callbacks,
// and every kind of bad input.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "TavikC.h"

namespace {

// Waits, generously, for what another thread makes true.
template <class F> bool Eventually(F aCondition) {
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!aCondition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

const TvkHandle_t kSystem = TVK_SYSTEM_HANDLE;
constexpr uint32_t kInfoSize = sizeof(TvkFeatureInfo_t);

class FeatureCallsTest : public ::testing::Test {
protected:
    void SetUp() override {
        mOld = std::filesystem::current_path();
        mDir =
            std::filesystem::temp_directory_path() / ("tavik-features-" + std::to_string(getpid()));
        std::filesystem::create_directories(mDir);
        std::filesystem::current_path(mDir);
        setenv("GENICAM_GENTL64_PATH",
               std::filesystem::path(TAVIK_SIM_PRODUCER).parent_path().c_str(), 1);
        ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
    }
    void TearDown() override {
        TvkShutdown();
        std::filesystem::current_path(mOld);
        std::filesystem::remove_all(mDir);
    }
    std::filesystem::path mOld, mDir;
};

TEST_F(FeatureCallsTest, SystemFeaturesReadThroughTheWholePath) {
    TvkBool_t present = 0;
    EXPECT_EQ(TvkFeatureBoolGet(kSystem, "GeVTLIsPresent", &present), TvkErrorSuccess);
    EXPECT_EQ(present, 1);
    const char* selected = nullptr;
    EXPECT_EQ(TvkFeatureEnumGet(kSystem, "TLSchedulerSelector", &selected), TvkErrorSuccess);
    EXPECT_STREQ(selected, "GeV");
    int64_t value = 0;
    EXPECT_EQ(TvkFeatureIntGet(kSystem, "TLSchedulerConcurrencyMin", &value), TvkErrorSuccess);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(TvkFeatureIntSet(kSystem, "TLSchedulerConcurrencyMin", 5), TvkErrorSuccess);
    EXPECT_EQ(TvkFeatureIntGet(kSystem, "TLSchedulerConcurrencyMin", &value), TvkErrorSuccess);
    EXPECT_EQ(value, 1);
    double first = -1, second = -1;
    EXPECT_EQ(TvkFeatureFloatGet(kSystem, "Elapsed", &first), TvkErrorSuccess);
    EXPECT_TRUE(Eventually([&] {
        TvkFeatureFloatGet(kSystem, "Elapsed", &second);
        return second > first;
    }));
    int64_t min = 0, max = 0;
    EXPECT_EQ(TvkFeatureIntRangeQuery(kSystem, "TLSchedulerStride", &min, &max), TvkErrorSuccess);
    EXPECT_EQ(min, 1);
    EXPECT_EQ(max, 100);
    EXPECT_EQ(TvkFeatureIntRangeQuery(kSystem, "TLSchedulerStride", nullptr, &max),
              TvkErrorSuccess);
    // Without a stated increment any step will do.
    EXPECT_EQ(TvkFeatureIntIncrementQuery(kSystem, "TLSchedulerStride", &value), TvkErrorSuccess);
    EXPECT_EQ(value, 1);
    TvkBool_t readable = 0, writeable = 1;
    EXPECT_EQ(TvkFeatureAccessQuery(kSystem, "Elapsed", &readable, &writeable), TvkErrorSuccess);
    EXPECT_EQ(readable, 1);
    EXPECT_EQ(writeable, 0);
    EXPECT_EQ(TvkFeatureAccessQuery(kSystem, "Elapsed", nullptr, nullptr), TvkErrorSuccess);
    TvkBool_t done = 0;
    EXPECT_EQ(TvkFeatureCommandIsDone(kSystem, "GeVForceIPAddressSend", &done), TvkErrorSuccess);
    EXPECT_EQ(done, 1);
    // Discovery reaches the GigE Vision system.
    EXPECT_EQ(TvkFeatureCommandRun(kSystem, "GeVDiscoveryAllOnce"), TvkErrorSuccess);
    EXPECT_EQ(TvkFeatureIntSet(kSystem, "GeVForceIPAddressIP", 0), TvkErrorBadParameter);
    EXPECT_EQ(TvkFeatureCommandRun(kSystem, "GeVForceIPAddressSend"), TvkErrorBadParameter);
}

TEST_F(FeatureCallsTest, StringsEnumsAndRawBytesFollowTheirBufferRules) {
    uint32_t size = 0;
    EXPECT_EQ(TvkFeatureStringMaxlengthQuery(kSystem, "DiscoveryCameraIdent", &size),
              TvkErrorSuccess);
    EXPECT_EQ(size, 128u);
    uint32_t filled = 99;
    EXPECT_EQ(TvkFeatureStringGet(kSystem, "DiscoveryCameraIdent", nullptr, 0, &filled),
              TvkErrorSuccess);
    EXPECT_EQ(filled, 1u);
    char text[4] = {'x', 'x', 'x', 'x'};
    EXPECT_EQ(TvkFeatureStringGet(kSystem, "DiscoveryCameraIdent", text, 2, nullptr),
              TvkErrorSuccess);
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[1], 'x');

    uint32_t count = 0;
    EXPECT_EQ(TvkFeatureEnumRangeQuery(kSystem, "DiscoveryCameraEvent", nullptr, 0, &count),
              TvkErrorSuccess);
    EXPECT_EQ(count, 4u);
    const char* names[3] = {nullptr, nullptr, "untouched"};
    EXPECT_EQ(TvkFeatureEnumRangeQuery(kSystem, "DiscoveryCameraEvent", names, 2, &count),
              TvkErrorSuccess);
    EXPECT_EQ(count, 2u);
    EXPECT_STREQ(names[1], "Detected");
    EXPECT_STREQ(names[2], "untouched");
    EXPECT_EQ(TvkFeatureEnumRangeQuery(kSystem, "DiscoveryCameraEvent", names, 2, nullptr),
              TvkErrorSuccess);
    int64_t number = 0;
    EXPECT_EQ(TvkFeatureEnumAsInt(kSystem, "DiscoveryCameraEvent", "Unreachable", &number),
              TvkErrorSuccess);
    EXPECT_EQ(number, 3);
    const char* name = nullptr;
    EXPECT_EQ(TvkFeatureEnumAsString(kSystem, "DiscoveryCameraEvent", 2, &name), TvkErrorSuccess);
    EXPECT_STREQ(name, "Reachable");
    TvkBool_t available = 0;
    EXPECT_EQ(TvkFeatureEnumIsAvailable(kSystem, "TLSchedulerSelector", "Usb", &available),
              TvkErrorSuccess);
    EXPECT_EQ(available, 1);
    TvkFeatureEnumEntry_t entry{};
    EXPECT_EQ(TvkFeatureEnumEntryGet(kSystem, "DiscoveryInterfaceEvent", "Available", &entry,
                                     sizeof(entry)),
              TvkErrorSuccess);
    EXPECT_STREQ(entry.name, "Available");
    EXPECT_STREQ(entry.displayName, "Available");
    EXPECT_EQ(entry.intValue, 1);

    uint32_t length = 0;
    EXPECT_EQ(TvkFeatureRawLengthQuery(kSystem, "GeVDiscoveryAllDuration", &length),
              TvkErrorSuccess);
    EXPECT_EQ(length, 8u);
    char bytes[12];
    std::memset(bytes, 0x55, sizeof(bytes));
    EXPECT_EQ(TvkFeatureRawGet(kSystem, "TLSchedulerConcurrencyMax", bytes, sizeof(bytes), &filled),
              TvkErrorSuccess);
    EXPECT_EQ(filled, 4u);
    EXPECT_EQ(bytes[0], 6);
    EXPECT_EQ(bytes[4], 0x55);
    EXPECT_EQ(TvkFeatureRawGet(kSystem, "TLSchedulerConcurrencyMax", bytes, 1, &filled),
              TvkErrorSuccess);
    EXPECT_EQ(filled, 1u);
    EXPECT_EQ(TvkFeatureRawSet(kSystem, "Elapsed", bytes, 8), TvkErrorInvalidAccess);
}

TEST_F(FeatureCallsTest, ListsCountEverythingAndFillWhatFits) {
    uint32_t count = 0;
    EXPECT_EQ(TvkFeaturesList(kSystem, nullptr, 0, &count, kInfoSize), TvkErrorSuccess);
    EXPECT_EQ(count, 14u); // the visible ones
    std::vector<TvkFeatureInfo_t> list(count + 1);
    std::memset(list.data(), 0xAB, list.size() * kInfoSize);
    uint32_t found = 0;
    EXPECT_EQ(TvkFeaturesList(kSystem, list.data(), 2, &found, kInfoSize), TvkErrorSuccess);
    EXPECT_EQ(found, count);
    EXPECT_STREQ(list[0].name, "DiscoveryCameraEvent");
    EXPECT_EQ(reinterpret_cast<unsigned char*>(&list[2])[0], 0xAB);
    EXPECT_EQ(TvkFeaturesList(kSystem, list.data(), count, nullptr, kInfoSize), TvkErrorSuccess);
    for (uint32_t i = 0; i < count; ++i)
        EXPECT_NE(list[i].visibility, TvkFeatureVisibilityInvisible) << list[i].name;

    TvkFeatureInfo_t info{};
    EXPECT_EQ(TvkFeatureInfoQuery(kSystem, "Elapsed", &info, kInfoSize), TvkErrorSuccess);
    EXPECT_EQ(info.featureDataType, TvkFeatureDataFloat);
    EXPECT_EQ(info.featureFlags, TvkFeatureFlagsRead | TvkFeatureFlagsVolatile);
    EXPECT_STREQ(info.category, "/Info");
    EXPECT_STREQ(info.displayName, "Elapsed");
    EXPECT_STREQ(info.sfncNamespace, "Custom");
    // Invisible features are not listed but can be asked for by name.
    EXPECT_EQ(TvkFeatureInfoQuery(kSystem, "UsbTLIsPresent", &info, kInfoSize), TvkErrorSuccess);
    EXPECT_EQ(info.visibility, TvkFeatureVisibilityInvisible);
    EXPECT_EQ(TvkFeatureListSelected(kSystem, "TLSchedulerSelector", nullptr, 0, &count, kInfoSize),
              TvkErrorSuccess);
    EXPECT_EQ(count, 8u);
    EXPECT_EQ(
        TvkFeatureListSelected(kSystem, "TLSchedulerSelector", list.data(), 1, &count, kInfoSize),
        TvkErrorSuccess);
    EXPECT_EQ(count, 8u);
    EXPECT_STREQ(list[0].name, "TLSchedulerConcurrencyMin");
    EXPECT_EQ(TvkFeatureListAffected(kSystem, "TLSchedulerSelector", nullptr, 0, &count, kInfoSize),
              TvkErrorSuccess);
    EXPECT_EQ(count, 8u);
    EXPECT_EQ(TvkFeatureListAffected(kSystem, "Elapsed", nullptr, 0, &count, kInfoSize),
              TvkErrorSuccess);
    EXPECT_EQ(count, 0u);
}

TEST_F(FeatureCallsTest, TextsHandedOutLastUntilTheLibraryIsUnloaded) {
    TvkFeatureInfo_t info{};
    ASSERT_EQ(TvkFeatureInfoQuery(kSystem, "Elapsed", &info, kInfoSize), TvkErrorSuccess);
    const char* event = nullptr;
    ASSERT_EQ(TvkFeatureEnumGet(kSystem, "DiscoveryCameraEvent", &event), TvkErrorSuccess);
    const char* names[4] = {};
    uint32_t count = 4;
    ASSERT_EQ(TvkFeatureEnumRangeQuery(kSystem, "DiscoveryCameraEvent", names, 4, &count),
              TvkErrorSuccess);
    TvkFeatureEnumEntry_t entry{};
    ASSERT_EQ(TvkFeatureEnumEntryGet(kSystem, "TLSchedulerSelector", "Usb", &entry, sizeof(entry)),
              TvkErrorSuccess);
    TvkShutdown();
    EXPECT_STREQ(info.name, "Elapsed");
    EXPECT_STREQ(info.category, "/Info");
    EXPECT_STREQ(info.tooltip, "Seconds since the library started");
    EXPECT_STREQ(event, "Missing");
    EXPECT_STREQ(names[3], "Unreachable");
    EXPECT_STREQ(entry.name, "Usb");
    EXPECT_STREQ(entry.sfncNamespace, "Custom");
}

TEST_F(FeatureCallsTest, NullPointersAndWrongSizes) {
    int64_t i = 0;
    double d = 0;
    TvkBool_t b = 0;
    const char* s = nullptr;
    uint32_t u = 0;
    char buffer[8];
    TvkFeatureInfo_t info{};
    TvkFeatureEnumEntry_t entry{};
    const char* name = "Elapsed";
    auto callback = [](TvkHandle_t, const char*, void*) {};
    const TvkError_t bad = TvkErrorBadParameter;
    EXPECT_EQ(TvkFeaturesList(kSystem, nullptr, 0, nullptr, kInfoSize), bad);
    EXPECT_EQ(TvkFeaturesList(kSystem, &info, 1, &u, kInfoSize - 1), TvkErrorStructSize);
    EXPECT_EQ(TvkFeaturesList(kSystem, &info, 1, &u, 52), TvkErrorStructSize);
    EXPECT_EQ(TvkFeatureListAffected(kSystem, nullptr, &info, 1, &u, kInfoSize), bad);
    EXPECT_EQ(TvkFeatureListSelected(kSystem, name, nullptr, 0, nullptr, kInfoSize), bad);
    EXPECT_EQ(TvkFeatureListSelected(kSystem, name, &info, 1, &u, kInfoSize + 1),
              TvkErrorStructSize);
    EXPECT_EQ(TvkFeatureInfoQuery(kSystem, nullptr, &info, kInfoSize), bad);
    EXPECT_EQ(TvkFeatureInfoQuery(kSystem, name, nullptr, kInfoSize), bad);
    EXPECT_EQ(TvkFeatureInfoQuery(kSystem, name, &info, kInfoSize - 1), TvkErrorStructSize);
    EXPECT_EQ(TvkFeatureAccessQuery(kSystem, nullptr, &b, &b), bad);
    EXPECT_EQ(TvkFeatureIntGet(kSystem, name, nullptr), bad);
    EXPECT_EQ(TvkFeatureIntGet(kSystem, nullptr, &i), bad);
    EXPECT_EQ(TvkFeatureFloatGet(kSystem, name, nullptr), bad);
    EXPECT_EQ(TvkFeatureBoolGet(kSystem, name, nullptr), bad);
    EXPECT_EQ(TvkFeatureEnumGet(kSystem, name, nullptr), bad);
    EXPECT_EQ(TvkFeatureCommandIsDone(kSystem, name, nullptr), bad);
    EXPECT_EQ(TvkFeatureStringGet(kSystem, name, nullptr, 8, nullptr), bad);
    EXPECT_EQ(TvkFeatureRawGet(kSystem, name, nullptr, 8, &u), bad);
    EXPECT_EQ(TvkFeatureRawGet(kSystem, name, buffer, 8, nullptr), bad);
    EXPECT_EQ(TvkFeatureIntSet(kSystem, nullptr, 1), bad);
    EXPECT_EQ(TvkFeatureFloatSet(kSystem, nullptr, 1.0), bad);
    EXPECT_EQ(TvkFeatureBoolSet(kSystem, nullptr, 1), bad);
    EXPECT_EQ(TvkFeatureEnumSet(kSystem, name, nullptr), bad);
    EXPECT_EQ(TvkFeatureStringSet(kSystem, name, nullptr), bad);
    EXPECT_EQ(TvkFeatureRawSet(kSystem, nullptr, buffer, 8), bad);
    // A raw write without bytes has no check of its own, and fails below.
    EXPECT_EQ(TvkFeatureRawSet(kSystem, "GeVForceIPAddressMAC", nullptr, 8), bad);
    EXPECT_EQ(TvkFeatureCommandRun(kSystem, nullptr), bad);
    EXPECT_EQ(TvkFeatureIntRangeQuery(kSystem, name, nullptr, nullptr), bad);
    EXPECT_EQ(TvkFeatureFloatRangeQuery(kSystem, name, nullptr, nullptr), bad);
    EXPECT_EQ(TvkFeatureEnumRangeQuery(kSystem, name, nullptr, 3, nullptr), bad);
    EXPECT_EQ(TvkFeatureIntIncrementQuery(kSystem, name, nullptr), bad);
    EXPECT_EQ(TvkFeatureEnumIsAvailable(kSystem, name, nullptr, &b), bad);
    EXPECT_EQ(TvkFeatureEnumIsAvailable(kSystem, name, "GeV", nullptr), bad);
    EXPECT_EQ(TvkFeatureEnumAsInt(kSystem, name, "GeV", nullptr), bad);
    EXPECT_EQ(TvkFeatureEnumAsString(kSystem, name, 0, nullptr), bad);
    EXPECT_EQ(TvkFeatureEnumEntryGet(kSystem, name, nullptr, &entry, sizeof(entry)), bad);
    EXPECT_EQ(TvkFeatureEnumEntryGet(kSystem, name, "GeV", &entry, sizeof(entry) - 1),
              TvkErrorStructSize);
    EXPECT_EQ(TvkFeatureEnumEntryGet(kSystem, name, "GeV", &entry, 32), TvkErrorStructSize);
    EXPECT_EQ(TvkFeatureStringMaxlengthQuery(kSystem, name, nullptr), bad);
    EXPECT_EQ(TvkFeatureRawLengthQuery(kSystem, name, nullptr), bad);
    EXPECT_EQ(TvkFeatureInvalidationRegister(kSystem, name, nullptr, nullptr), bad);
    EXPECT_EQ(TvkFeatureInvalidationUnregister(kSystem, name, nullptr), bad);
    // The callback calls require only the callback; a null name is not found.
    EXPECT_EQ(TvkFeatureInvalidationRegister(kSystem, nullptr, callback, nullptr),
              TvkErrorNotFound);
    (void)d;
    (void)s;
}

TEST_F(FeatureCallsTest, NamesThatAreNoFeatures) {
    std::string longName(1 << 20, 'E');
    int64_t i = 0;
    double d = 0;
    const char* s = nullptr;
    char text[8];
    uint32_t u = 0;
    TvkFeatureInfo_t info{};
    for (const char* name : {"Nope", "elapsed", "Info", "Root", "Scheduler", "RegElapsed",
                             "TLGeVPresent", "", longName.c_str()}) {
        SCOPED_TRACE(std::string(name).substr(0, 20));
        EXPECT_EQ(TvkFeatureIntGet(kSystem, name, &i), TvkErrorNotFound);
        EXPECT_EQ(TvkFeatureFloatGet(kSystem, name, &d), TvkErrorNotFound);
        EXPECT_EQ(TvkFeatureEnumGet(kSystem, name, &s), TvkErrorNotFound);
        EXPECT_EQ(TvkFeatureStringGet(kSystem, name, text, sizeof(text), &u), TvkErrorNotFound);
        EXPECT_EQ(TvkFeatureIntSet(kSystem, name, 1), TvkErrorNotFound);
        EXPECT_EQ(TvkFeatureCommandRun(kSystem, name), TvkErrorNotFound);
        EXPECT_EQ(TvkFeatureInfoQuery(kSystem, name, &info, kInfoSize), TvkErrorNotFound);
        EXPECT_EQ(TvkFeatureAccessQuery(kSystem, name, nullptr, nullptr), TvkErrorNotFound);
        EXPECT_EQ(TvkFeatureListAffected(kSystem, name, nullptr, 0, &u, kInfoSize),
                  TvkErrorNotFound);
        EXPECT_EQ(TvkFeatureRawLengthQuery(kSystem, name, &u), TvkErrorNotFound);
        EXPECT_EQ(TvkFeatureEnumEntryGet(kSystem, name, "GeV", nullptr, 0), TvkErrorBadParameter);
        EXPECT_EQ(TvkFeatureInvalidationRegister(
                      kSystem, name, [](TvkHandle_t, const char*, void*) {}, nullptr),
                  TvkErrorNotFound);
    }
}

TEST_F(FeatureCallsTest, NamesOfTheWrongType) {
    const TvkError_t wrong = TvkErrorWrongType;
    int64_t i = 0;
    double d = 0;
    TvkBool_t b = 0;
    const char* s = nullptr;
    char text[8];
    uint32_t u = 0;
    EXPECT_EQ(TvkFeatureIntGet(kSystem, "Elapsed", &i), wrong);
    EXPECT_EQ(TvkFeatureFloatGet(kSystem, "TLSchedulerStride", &d), wrong);
    EXPECT_EQ(TvkFeatureBoolGet(kSystem, "DiscoveryCameraEvent", &b), wrong);
    EXPECT_EQ(TvkFeatureEnumGet(kSystem, "DiscoveryCameraIdent", &s), wrong);
    EXPECT_EQ(TvkFeatureStringGet(kSystem, "DiscoveryCameraEvent", text, sizeof(text), &u), wrong);
    EXPECT_EQ(TvkFeatureCommandIsDone(kSystem, "Elapsed", &b), wrong);
    EXPECT_EQ(TvkFeatureIntSet(kSystem, "TLSchedulerSelector", 0), wrong);
    EXPECT_EQ(TvkFeatureFloatSet(kSystem, "TLSchedulerStride", 1.0), wrong);
    EXPECT_EQ(TvkFeatureBoolSet(kSystem, "TLSchedulerStride", 1), wrong);
    EXPECT_EQ(TvkFeatureEnumSet(kSystem, "TLSchedulerStride", "GeV"), wrong);
    EXPECT_EQ(TvkFeatureStringSet(kSystem, "TLSchedulerStride", "x"), wrong);
    EXPECT_EQ(TvkFeatureCommandRun(kSystem, "TLSchedulerStride"), wrong);
    EXPECT_EQ(TvkFeatureIntRangeQuery(kSystem, "Elapsed", &i, &i), wrong);
    EXPECT_EQ(TvkFeatureFloatRangeQuery(kSystem, "TLSchedulerStride", &d, &d), wrong);
    EXPECT_EQ(TvkFeatureEnumRangeQuery(kSystem, "TLSchedulerStride", nullptr, 0, &u), wrong);
    EXPECT_EQ(TvkFeatureIntIncrementQuery(kSystem, "TLSchedulerSelector", &i), wrong);
    EXPECT_EQ(TvkFeatureEnumAsInt(kSystem, "TLSchedulerStride", "GeV", &i), wrong);
    EXPECT_EQ(TvkFeatureStringMaxlengthQuery(kSystem, "TLSchedulerStride", &u), wrong);
    EXPECT_EQ(TvkFeatureRawLengthQuery(kSystem, "GeVDiscoveryAllOff", &u), TvkErrorSuccess);
}

TEST_F(FeatureCallsTest, ValuesAndEntriesThatAreRefused) {
    const TvkError_t refused = TvkErrorInvalidValue;
    EXPECT_EQ(TvkFeatureIntSet(kSystem, "TLSchedulerConcurrencyMin", 0), refused);
    EXPECT_EQ(TvkFeatureIntSet(kSystem, "TLSchedulerConcurrencyMin", 17), refused);
    EXPECT_EQ(TvkFeatureIntSet(kSystem, "TLSchedulerStride", INT64_MIN), refused);
    EXPECT_EQ(TvkFeatureEnumSet(kSystem, "TLSchedulerSelector", "Nope"), refused);
    EXPECT_EQ(TvkFeatureEnumSet(kSystem, "TLSchedulerSelector", ""), refused);
    // A transport that is not there cannot be selected.
    EXPECT_EQ(TvkFeatureEnumSet(kSystem, "TLSchedulerSelector", "FiW"), refused);
    int64_t number = 0;
    TvkBool_t available = 0;
    const char* name = nullptr;
    TvkFeatureEnumEntry_t entry{};
    EXPECT_EQ(TvkFeatureEnumAsInt(kSystem, "TLSchedulerSelector", "Nope", &number), refused);
    EXPECT_EQ(TvkFeatureEnumIsAvailable(kSystem, "TLSchedulerSelector", "Nope", &available),
              refused);
    EXPECT_EQ(TvkFeatureEnumAsString(kSystem, "TLSchedulerSelector", 7, &name), refused);
    EXPECT_EQ(TvkFeatureEnumEntryGet(kSystem, "TLSchedulerSelector", "Nope", &entry, sizeof(entry)),
              refused);
    // Read-only features refuse writes.
    const TvkError_t denied = TvkErrorInvalidAccess;
    EXPECT_EQ(TvkFeatureFloatSet(kSystem, "Elapsed", 1.0), denied);
    EXPECT_EQ(TvkFeatureIntSet(kSystem, "TLSchedulerStatBusy", 1), denied);
    EXPECT_EQ(TvkFeatureEnumSet(kSystem, "DiscoveryCameraEvent", "Detected"), denied);
    EXPECT_EQ(TvkFeatureStringSet(kSystem, "DiscoveryCameraIdent", "x"), denied);
    EXPECT_EQ(TvkFeatureBoolSet(kSystem, "GeVTLIsPresent", 0), denied);
}

TEST_F(FeatureCallsTest, HandlesThatWereNeverIssued) {
    int64_t value = 0;
    uint32_t count = 0;
    // Table handles lie between 100 and 10000.
    for (uintptr_t handle : {uintptr_t{0}, uintptr_t{2}, uintptr_t{99}, uintptr_t{10001},
                             uintptr_t{0x100000001}, ~uintptr_t{0}}) {
        auto h = reinterpret_cast<TvkHandle_t>(handle);
        EXPECT_EQ(TvkFeatureIntGet(h, "Elapsed", &value), TvkErrorBadHandle) << handle;
        EXPECT_EQ(TvkFeatureIntSet(h, "Elapsed", 1), TvkErrorBadHandle) << handle;
        EXPECT_EQ(TvkFeaturesList(h, nullptr, 0, &count, kInfoSize), TvkErrorBadHandle) << handle;
        EXPECT_EQ(
            TvkFeatureInvalidationUnregister(h, "Elapsed", [](TvkHandle_t, const char*, void*) {}),
            TvkErrorBadHandle);
    }
    // After shutdown no handle works, not even the system's.
    TvkShutdown();
    EXPECT_EQ(TvkFeatureIntGet(kSystem, "TLSchedulerStride", &value), TvkErrorApiNotStarted);
    ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
    EXPECT_EQ(TvkFeatureIntGet(kSystem, "TLSchedulerStride", &value), TvkErrorSuccess);
}

// What the callbacks saw, and what they could do.
struct tSeen {
    std::mutex mutex;
    std::vector<std::string> names;
    std::atomic<int> calls{0};
    std::atomic<TvkError_t> setInside{0};
    std::atomic<TvkError_t> getInside{-100};
    std::atomic<bool> allOnSystem{true};
};

void Watch(const TvkHandle_t aHandle, const char* aName, void* aSeen) {
    auto* seen = static_cast<tSeen*>(aSeen);
    int64_t value = 0;
    seen->getInside = TvkFeatureIntGet(aHandle, "TLSchedulerStride", &value);
    seen->setInside = TvkFeatureIntSet(aHandle, "TLSchedulerStride", value);
    if (aHandle != kSystem) seen->allOnSystem = false;
    std::lock_guard<std::mutex> hold(seen->mutex);
    seen->names.push_back(aName);
    ++seen->calls;
}

TEST_F(FeatureCallsTest, CallbacksRunWhereSettersAreRefused) {
    tSeen seen;
    ASSERT_EQ(TvkFeatureInvalidationRegister(kSystem, "TLSchedulerStride", &Watch, &seen),
              TvkErrorSuccess);
    ASSERT_EQ(TvkFeatureInvalidationRegister(kSystem, "TLSchedulerSelector", &Watch, &seen),
              TvkErrorSuccess);
    // One callback once on one name; only what was registered goes.
    EXPECT_EQ(TvkFeatureInvalidationRegister(kSystem, "TLSchedulerStride", &Watch, &seen),
              TvkErrorOther);
    EXPECT_EQ(TvkFeatureInvalidationUnregister(kSystem, "Elapsed", &Watch), TvkErrorOther);
    EXPECT_EQ(TvkFeatureInvalidationUnregister(kSystem, nullptr, &Watch), TvkErrorOther);

    // The selector selects the stride: both are told, the written one last.
    ASSERT_EQ(TvkFeatureEnumSet(kSystem, "TLSchedulerSelector", "GeV"), TvkErrorSuccess);
    ASSERT_TRUE(Eventually([&] { return seen.calls == 2; }));
    EXPECT_EQ(seen.getInside, TvkErrorSuccess);
    EXPECT_EQ(seen.setInside, TvkErrorInvalidCall);
    EXPECT_TRUE(seen.allOnSystem);
    {
        std::lock_guard<std::mutex> hold(seen.mutex);
        EXPECT_EQ(seen.names,
                  (std::vector<std::string>{"TLSchedulerStride", "TLSchedulerSelector"}));
    }
    EXPECT_EQ(TvkFeatureInvalidationUnregister(kSystem, "TLSchedulerStride", &Watch),
              TvkErrorSuccess);
    EXPECT_EQ(TvkFeatureInvalidationUnregister(kSystem, "TLSchedulerStride", &Watch),
              TvkErrorOther);
    EXPECT_EQ(TvkFeatureInvalidationUnregister(kSystem, "TLSchedulerSelector", &Watch),
              TvkErrorSuccess);
}

void Count(const TvkHandle_t, const char*, void* aCalls) {
    ++*static_cast<std::atomic<int>*>(aCalls);
}

TEST_F(FeatureCallsTest, PolledStatisticsReportWithoutAnyWrite) {
    std::atomic<int> calls{0};
    ASSERT_EQ(TvkFeatureInvalidationRegister(kSystem, "TLSchedulerStatBusy", &Count, &calls),
              TvkErrorSuccess);
    ASSERT_TRUE(Eventually([&] { return calls >= 2; }));
    EXPECT_EQ(TvkFeatureInvalidationUnregister(kSystem, "TLSchedulerStatBusy", &Count),
              TvkErrorSuccess);
}

TEST_F(FeatureCallsTest, ManyCallersAtOnceWithCallbacksAndAShutdownAfter) {
    std::atomic<int> calls{0};
    ASSERT_EQ(TvkFeatureInvalidationRegister(kSystem, "TLSchedulerConcurrencyMax", &Count, &calls),
              TvkErrorSuccess);
    std::atomic<int> wrong{0};
    std::vector<std::thread> callers;
    for (int t = 0; t < 4; ++t)
        callers.emplace_back([&, t] {
            for (int i = 0; i < 200; ++i) {
                int64_t value = 0;
                if (TvkFeatureIntGet(kSystem, "TLSchedulerConcurrencyMax", &value) !=
                        TvkErrorSuccess ||
                    value != 6)
                    ++wrong;
                if (t == 0 &&
                    TvkFeatureIntSet(kSystem, "TLSchedulerConcurrencyMax", 6) != TvkErrorSuccess)
                    ++wrong;
            }
        });
    for (auto& c : callers)
        c.join();
    EXPECT_EQ(wrong, 0);
    ASSERT_TRUE(Eventually([&] { return calls == 200; }));
    // Shutdown with a callback still registered ends it cleanly.
}

// Calls in from a polled callback until the door is closed.
struct tCaller {
    std::atomic<bool> entered{false};
    std::atomic<bool> go{false};
    std::atomic<TvkError_t> last{0};
};

void CallInUntilClosed(const TvkHandle_t aHandle, const char*, void* aCaller) {
    auto* caller = static_cast<tCaller*>(aCaller);
    if (caller->entered.exchange(true)) return;
    while (!caller->go) {
    }
    for (TvkError_t status = TvkErrorSuccess; status != TvkErrorApiNotStarted;) {
        int64_t value = 0;
        status = TvkFeatureIntGet(aHandle, "TLSchedulerStride", &value);
        caller->last = status;
    }
}

TEST_F(FeatureCallsTest, ShutdownWhileACallbackCallsIn) {
    tCaller caller;
    ASSERT_EQ(
        TvkFeatureInvalidationRegister(kSystem, "TLSchedulerStatIdle", &CallInUntilClosed, &caller),
        TvkErrorSuccess);
    ASSERT_TRUE(Eventually([&] { return caller.entered.load(); }));
    caller.go = true;
    TvkShutdown();
    EXPECT_EQ(caller.last, TvkErrorApiNotStarted);
}

} // namespace
