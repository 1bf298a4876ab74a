// Listing cameras and interfaces through the flat functions, on the
// simulator: the list protocols, the device map, several producers at once,
// plug and unplug, faults and bad input.
#include <atomic>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Eventually.h"
#include "FlatFixture.h"
#include "TavikSimControl.h"

namespace {

constexpr const char* kLab = R"(<TavikSim>
  <Interface id="IF-A" name="Lab A" serial="SA">
    <Camera id="Cam-1" model="M1" serial="S1"/>
    <Camera id="Cam-2" model="M2" serial="S2" access="readonly"/>
  </Interface>
  <Interface id="IF-B" name="Lab B" serial="SB">
    <Camera id="Cam-3" model="M3" serial="S3" access="noaccess"/>
  </Interface>
</TavikSim>)";

class DiscoveryCallsTest : public test::cFlatFixture {
protected:
    void Start(const std::string& aXml) {
        SearchSimulator();
        ConfigureSimulator(aXml);
        ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
    }
    // One call, so that a fault meets the list it is meant for.
    static std::vector<TvkCameraInfo_t> Cameras() {
        std::vector<TvkCameraInfo_t> cameras(16);
        uint32_t count = 0;
        EXPECT_EQ(TvkCamerasList(cameras.data(), 16, &count, sizeof(TvkCameraInfo_t)),
                  TvkErrorSuccess);
        cameras.resize(count);
        return cameras;
    }
    static std::vector<std::string> CameraIds() {
        std::vector<std::string> ids;
        for (const TvkCameraInfo_t& camera : Cameras())
            ids.push_back(camera.idString);
        return ids;
    }
    // The control entry point of a loaded simulator module.
    static TavikSimControl_t Control(const std::string& aModule = TAVIK_SIM_PRODUCER) {
        void* module = dlopen(aModule.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (!module) return nullptr;
        auto control = reinterpret_cast<TavikSimControl_t>(dlsym(module, "TavikSimControl"));
        dlclose(module);
        return control;
    }
    // A copy of a simulator module under another name, with its own topology.
    std::string CopySimulator(const std::string& aFrom, const std::string& aDir,
                              const std::string& aName, const std::string& aXml) {
        const std::filesystem::path dir = mDir / aDir;
        std::filesystem::create_directories(dir);
        std::filesystem::copy_file(aFrom, dir / (aName + ".cti"));
        if (!aXml.empty()) std::ofstream(dir / (aName + ".xml")) << aXml;
        return (dir / (aName + ".cti")).string();
    }
};

TEST_F(DiscoveryCallsTest, CamerasListCountsCopiesAndSaysWhenTheListIsShort) {
    Start(kLab);
    uint32_t count = 99;
    EXPECT_EQ(TvkCamerasList(nullptr, 0, &count, sizeof(TvkCameraInfo_t)), TvkErrorSuccess);
    EXPECT_EQ(count, 3u);

    TvkCameraInfo_t cameras[3] = {};
    cameras[2].idString = "untouched";
    EXPECT_EQ(TvkCamerasList(cameras, 2, &count, sizeof(TvkCameraInfo_t)), TvkErrorMoreData);
    EXPECT_EQ(count, 3u);
    EXPECT_STREQ(cameras[2].idString, "untouched");

    ASSERT_EQ(TvkCamerasList(cameras, 3, &count, sizeof(TvkCameraInfo_t)), TvkErrorSuccess);
    EXPECT_STREQ(cameras[0].idString, "Cam-1");
    EXPECT_STREQ(cameras[0].model, "M1");
    EXPECT_STREQ(cameras[0].serialNumber, "S1");
    EXPECT_STREQ(cameras[0].interfaceID, "IF-A");
    EXPECT_EQ(cameras[0].permittedAccess,
              TvkAccessModeFull | TvkAccessModeRead | TvkAccessModeConfig | TvkAccessModeLite);
    EXPECT_EQ(cameras[1].permittedAccess, uint32_t{TvkAccessModeRead});
    EXPECT_STREQ(cameras[2].idString, "Cam-3");
    EXPECT_STREQ(cameras[2].interfaceID, "IF-B");
    EXPECT_EQ(cameras[2].permittedAccess, uint32_t{TvkAccessModeNone});

    EXPECT_EQ(TvkCamerasList(cameras, 3, nullptr, sizeof(TvkCameraInfo_t)), TvkErrorBadParameter);
    EXPECT_EQ(TvkCamerasList(cameras, 3, &count, sizeof(TvkCameraInfo_t) - 1), TvkErrorStructSize);
}

TEST_F(DiscoveryCallsTest, ACameraOnSeveralInterfacesKeepsTheFirstThatGivesAccess) {
    Start(R"(<TavikSim>
      <Interface id="IF-A"><Camera id="Twin" access="busy"/><Camera id="Dup" serial="first"/></Interface>
      <Interface id="IF-B"><Camera id="Twin"/><Camera id="Dup" serial="second"/></Interface>
    </TavikSim>)");
    const std::vector<TvkCameraInfo_t> cameras = Cameras();
    ASSERT_EQ(cameras.size(), 2u);
    // The map keeps its first order.
    EXPECT_STREQ(cameras[0].idString, "Twin");
    EXPECT_STREQ(cameras[0].interfaceID, "IF-B");
    EXPECT_STREQ(cameras[1].idString, "Dup");
    EXPECT_STREQ(cameras[1].serialNumber, "first");
}

TEST_F(DiscoveryCallsTest, CameraInfoQueryFindsKnownIdentifiersOnly) {
    TvkCameraInfo_t info{};
    EXPECT_EQ(TvkCameraInfoQuery("Cam-1", &info, sizeof(info)), TvkErrorApiNotStarted);
    Start(kLab);
    ASSERT_EQ(TvkCameraInfoQuery("Cam-2", &info, sizeof(info)), TvkErrorSuccess);
    EXPECT_STREQ(info.idString, "Cam-2");
    EXPECT_STREQ(info.serialNumber, "S2");
    EXPECT_EQ(info.permittedAccess, uint32_t{TvkAccessModeRead});

    const std::string endless(100000, 'x');
    for (const char* id : {"Cam-9", "", "cam-1", endless.c_str()})
        EXPECT_EQ(TvkCameraInfoQuery(id, &info, sizeof(info)), TvkErrorNotFound) << id;
    EXPECT_EQ(TvkCameraInfoQuery(nullptr, &info, sizeof(info)), TvkErrorBadParameter);
    EXPECT_EQ(TvkCameraInfoQuery("Cam-1", nullptr, sizeof(info)), TvkErrorBadParameter);
    EXPECT_EQ(TvkCameraInfoQuery("Cam-1", &info, sizeof(info) + 1), TvkErrorStructSize);
}

TEST_F(DiscoveryCallsTest, InterfacesListCopiesAsManyAsAskedWithTheCallersStride) {
    Start(kLab);
    uint32_t count = 0;
    ASSERT_EQ(TvkInterfacesList(nullptr, 0, &count, sizeof(TvkInterfaceInfo_t)), TvkErrorSuccess);
    EXPECT_EQ(count, 2u);

    TvkInterfaceInfo_t interfaces[2] = {};
    ASSERT_EQ(TvkInterfacesList(interfaces, 2, &count, sizeof(TvkInterfaceInfo_t)),
              TvkErrorSuccess);
    EXPECT_EQ(count, 2u);
    EXPECT_STREQ(interfaces[0].idString, "IF-A");
    EXPECT_STREQ(interfaces[0].name, "Lab A");
    EXPECT_STREQ(interfaces[0].serialNumber, "SA");
    EXPECT_EQ(interfaces[0].interfaceType, uint32_t{TvkInterfaceEthernet});
    EXPECT_EQ(interfaces[0].permittedAccess, 1u);
    EXPECT_STREQ(interfaces[1].idString, "IF-B");

    // A short list is no error here.
    TvkInterfaceInfo_t one[1] = {};
    EXPECT_EQ(TvkInterfacesList(one, 1, &count, sizeof(TvkInterfaceInfo_t)), TvkErrorSuccess);
    EXPECT_EQ(count, 1u);
    // A length of 0 counts them all, with nowhere to put them.
    TvkInterfaceInfo_t none{};
    EXPECT_EQ(TvkInterfacesList(&none, 0, &count, sizeof(TvkInterfaceInfo_t)), TvkErrorSuccess);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(none.idString, nullptr);
    // A wider record of the caller's: the stride is its size.
    struct tWide {
        TvkInterfaceInfo_t info;
        uint64_t guard;
    } wide[2] = {{{}, 7}, {{}, 7}};
    ASSERT_EQ(TvkInterfacesList(&wide[0].info, 2, &count, sizeof(tWide)), TvkErrorSuccess);
    EXPECT_STREQ(wide[1].info.idString, "IF-B");
    EXPECT_EQ(wide[0].guard, 7u);
    EXPECT_EQ(TvkInterfacesList(interfaces, 2, nullptr, sizeof(TvkInterfaceInfo_t)),
              TvkErrorBadParameter);
}

TEST_F(DiscoveryCallsTest, InterfacesOpenByIdentifierAndCloseOnce) {
    Start(kLab);
    TvkHandle_t handle = nullptr;
    EXPECT_EQ(TvkInterfaceOpen("IF-Z", &handle), TvkErrorNotFound);
    EXPECT_EQ(TvkInterfaceOpen(nullptr, &handle), TvkErrorNotFound);
    EXPECT_EQ(TvkInterfaceOpen("IF-A", nullptr), TvkErrorBadParameter);
    ASSERT_EQ(TvkInterfaceOpen("IF-A", &handle), TvkErrorSuccess);
    const auto value = reinterpret_cast<uintptr_t>(handle);
    EXPECT_GE(value, 100u);
    EXPECT_LE(value, 10000u);
    TvkHandle_t again = nullptr;
    ASSERT_EQ(TvkInterfaceOpen("IF-A", &again), TvkErrorSuccess);
    EXPECT_EQ(again, handle);

    EXPECT_EQ(TvkInterfaceClose(handle), TvkErrorSuccess);
    EXPECT_EQ(TvkInterfaceClose(handle), TvkErrorOther);
    EXPECT_EQ(TvkInterfaceClose(TVK_SYSTEM_HANDLE), TvkErrorBadHandle);
    EXPECT_EQ(TvkInterfaceClose(reinterpret_cast<TvkHandle_t>(uintptr_t{0xDEADBEEF12})),
              TvkErrorBadHandle);
    TvkShutdown();
    EXPECT_EQ(TvkInterfaceClose(handle), TvkErrorApiNotStarted);
}

TEST_F(DiscoveryCallsTest, UnpluggedCamerasLeaveTheListAndComeBack) {
    Start(kLab);
    TavikSimControl_t control = Control();
    ASSERT_NE(control, nullptr);
    ASSERT_EQ(control("unplug Cam-2"), 0);
    EXPECT_EQ(CameraIds(), (std::vector<std::string>{"Cam-1", "Cam-3"}));
    TvkCameraInfo_t info{};
    EXPECT_EQ(TvkCameraInfoQuery("Cam-2", &info, sizeof(info)), TvkErrorNotFound);
    ASSERT_EQ(control("plug Cam-2"), 0);
    EXPECT_EQ(CameraIds(), (std::vector<std::string>{"Cam-1", "Cam-2", "Cam-3"}));
}

TEST_F(DiscoveryCallsTest, TwoProducersEachListTheirOwnCameras) {
    const std::string a = CopySimulator(TAVIK_SIM_PRODUCER, "a", "LabA", R"(<TavikSim>
      <Interface id="IF-A"><Camera id="A-1"/><Camera id="A-2"/></Interface></TavikSim>)");
    const std::string b = CopySimulator(TAVIK_SIM_PRODUCER, "b", "LabB", R"(<TavikSim>
      <Interface id="IF-B"><Camera id="B-1"/></Interface></TavikSim>)");
    setenv("GENICAM_GENTL64_PATH", ((mDir / "a").string() + ";" + (mDir / "b").string()).c_str(),
           1);
    ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
    EXPECT_EQ(CameraIds(), (std::vector<std::string>{"A-1", "A-2", "B-1"}));
    uint32_t count = 0;
    EXPECT_EQ(TvkInterfacesList(nullptr, 0, &count, sizeof(TvkInterfaceInfo_t)), TvkErrorSuccess);
    EXPECT_EQ(count, 2u);

    // Each copy is steered on its own.
    ASSERT_NE(Control(b), nullptr);
    ASSERT_EQ(Control(b)("unplug B-1"), 0);
    EXPECT_EQ(CameraIds(), (std::vector<std::string>{"A-1", "A-2"}));
    TvkShutdown();
    // Shutdown unloads both.
    EXPECT_EQ(Control(a), nullptr);
    EXPECT_EQ(Control(b), nullptr);
}

TEST_F(DiscoveryCallsTest, ProducersWithoutTheExtensionsAreListedAndFollowed) {
    const std::string standard = CopySimulator(
        std::string(TAVIK_SIM_VARIANTS) + "/TavikSimStandard.cti", "standard", "Standard", kLab);
    setenv("GENICAM_GENTL64_PATH", (mDir / "standard").c_str(), 1);
    ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
    EXPECT_EQ(CameraIds(), (std::vector<std::string>{"Cam-1", "Cam-2", "Cam-3"}));
    ASSERT_EQ(Control(standard)("unplug Cam-1"), 0);
    EXPECT_EQ(CameraIds(), (std::vector<std::string>{"Cam-2", "Cam-3"}));
}

// Each producer call of discovery failing in turn: the interface or camera
// it serves drops out, the rest is listed, and shutdown completes.
TEST_F(DiscoveryCallsTest, FailingProducerCallsCostOnlyWhatTheyServe) {
    Start(kLab);
    TavikSimControl_t control = Control();
    ASSERT_NE(control, nullptr);
    // The first interface is skipped.
    ASSERT_EQ(control("fail IFUpdateDeviceList -1010 1"), 0);
    EXPECT_EQ(CameraIds(), std::vector<std::string>{"Cam-3"});
    ASSERT_EQ(control("fail IFGetNumDevices -1010 1"), 0);
    EXPECT_EQ(CameraIds(), std::vector<std::string>{"Cam-3"});
    ASSERT_EQ(control("fail IFGetDeviceID -1010 1"), 0);
    EXPECT_EQ(CameraIds(), (std::vector<std::string>{"Cam-2", "Cam-3"}));
    ASSERT_EQ(control("fail IFGetDeviceInfo -1006 1"), 0);
    EXPECT_EQ(CameraIds(), (std::vector<std::string>{"Cam-2", "Cam-3"}));
    ASSERT_EQ(control("fail IFGetDeviceInfo -1007 0"), 0);
    TvkCameraInfo_t info{};
    EXPECT_EQ(TvkCameraInfoQuery("Cam-1", &info, sizeof(info)), TvkErrorNotFound);
    EXPECT_TRUE(Cameras().empty());
    ASSERT_EQ(control("clear"), 0);
    EXPECT_EQ(Cameras().size(), 3u);

    // A slow producer is waited for.
    ASSERT_EQ(control("delay IFUpdateDeviceList 100"), 0);
    EXPECT_EQ(Cameras().size(), 3u);
    ASSERT_EQ(control("clear"), 0);
    ASSERT_EQ(control("fail IFGetInfo -1010 1"), 0);
    TvkInterfaceInfo_t interfaces[2] = {};
    uint32_t count = 0;
    ASSERT_EQ(TvkInterfacesList(interfaces, 2, &count, sizeof(TvkInterfaceInfo_t)),
              TvkErrorSuccess);
    EXPECT_EQ(count, 2u);
}

TEST_F(DiscoveryCallsTest, FaultsAtStartupLeaveOutWhatFailed) {
    // The first interface cannot be opened, interface events are refused,
    // and the interface list is slow.
    std::string xml = kLab;
    xml.replace(xml.rfind("</TavikSim>"), 11,
                R"(<Fault call="TLOpenInterface" status="-1010" count="1"/>
                   <Fault call="GCRegisterEvent" status="-1003"/>
                   <Fault call="TLUpdateInterfaceList" delay="50"/></TavikSim>)");
    Start(xml);
    EXPECT_EQ(CameraIds(), (std::vector<std::string>{"Cam-3"}));
    uint32_t count = 0;
    EXPECT_EQ(TvkInterfacesList(nullptr, 0, &count, sizeof(TvkInterfaceInfo_t)), TvkErrorSuccess);
    EXPECT_EQ(count, 1u);
}

TEST_F(DiscoveryCallsTest, CallsRacingWithShutdownFinishCleanly) {
    SearchSimulator();
    ConfigureSimulator(kLab);
    std::atomic<bool> stop{false};
    std::atomic<int> unexpected{0};
    std::vector<std::thread> callers;
    for (int t = 0; t < 3; ++t)
        callers.emplace_back([&, t] {
            while (!stop.load()) {
                TvkCameraInfo_t cameras[4];
                TvkInterfaceInfo_t interfaces[4];
                uint32_t count = 0;
                TvkError_t status =
                    t == 0   ? TvkCamerasList(cameras, 4, &count, sizeof(TvkCameraInfo_t))
                    : t == 1 ? TvkInterfacesList(interfaces, 4, &count, sizeof(TvkInterfaceInfo_t))
                             : TvkCameraInfoQuery("Cam-3", cameras, sizeof(TvkCameraInfo_t));
                // Gone while being asked: refused or not found, never worse.
                if (status != TvkErrorSuccess && status != TvkErrorApiNotStarted &&
                    status != TvkErrorNotFound && status != TvkErrorOther)
                    ++unexpected;
            }
        });
    for (int round = 0; round < 10; ++round) {
        ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
        EXPECT_EQ(CameraIds().size(), 3u);
        TvkShutdown();
    }
    stop = true;
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(unexpected, 0);
}

TEST_F(DiscoveryCallsTest, OpenInterfacesServeTheirFeatures) {
    Start(kLab);
    TvkHandle_t interface = nullptr;
    ASSERT_EQ(TvkInterfaceOpen("IF-A", &interface), TvkErrorSuccess);
    char text[64] = {};
    uint32_t size = 0;
    ASSERT_EQ(TvkFeatureStringGet(interface, "InterfaceID", text, sizeof(text), &size),
              TvkErrorSuccess);
    EXPECT_STREQ(text, "IF-A");
    ASSERT_EQ(TvkFeatureCommandRun(interface, "DeviceUpdateList"), TvkErrorSuccess);
    EXPECT_EQ(TvkFeatureIntSet(interface, "DeviceSelector", 1), TvkErrorSuccess);
    ASSERT_EQ(TvkFeatureStringGet(interface, "DeviceID", text, sizeof(text), &size),
              TvkErrorSuccess);
    EXPECT_STREQ(text, "Cam-2");
    uint32_t count = 0;
    EXPECT_EQ(TvkFeaturesList(interface, nullptr, 0, &count, sizeof(TvkFeatureInfo_t)),
              TvkErrorSuccess);
    EXPECT_GT(count, 5u);

    // Closed, the interface answers no feature call; opened again, it does.
    ASSERT_EQ(TvkInterfaceClose(interface), TvkErrorSuccess);
    EXPECT_EQ(TvkFeatureStringGet(interface, "InterfaceID", text, sizeof(text), &size),
              TvkErrorOther);
    ASSERT_EQ(TvkInterfaceOpen("IF-A", &interface), TvkErrorSuccess);
    EXPECT_EQ(TvkFeatureStringGet(interface, "InterfaceID", text, sizeof(text), &size),
              TvkErrorSuccess);
}

// Invalidations seen by a callback; it reads what the system says at once.
struct tNews {
    std::mutex lock;
    std::vector<std::string> seen;
    bool Saw(const std::string& aWhat) {
        std::lock_guard<std::mutex> hold(lock);
        for (const std::string& s : seen)
            if (s == aWhat) return true;
        return false;
    }
};
void ReadDiscovery(const TvkHandle_t aHandle, const char* aName, void* aNews) {
    if (strcmp(aName, "DiscoveryCameraEvent") != 0) return;
    const char* event = nullptr;
    char ident[128] = {};
    uint32_t size = 0;
    TvkFeatureEnumGet(aHandle, "DiscoveryCameraEvent", &event);
    TvkFeatureStringGet(aHandle, "DiscoveryCameraIdent", ident, sizeof(ident), &size);
    auto* news = static_cast<tNews*>(aNews);
    std::lock_guard<std::mutex> hold(news->lock);
    news->seen.push_back(std::string(ident) + " " + (event ? event : "?"));
}

TEST_F(DiscoveryCallsTest, PlugAndUnplugAreAnnouncedOnTheSystemWithinASecond) {
    Start(kLab);
    tNews news;
    ASSERT_EQ(TvkFeatureInvalidationRegister(TVK_SYSTEM_HANDLE, "DiscoveryCameraEvent",
                                             &ReadDiscovery, &news),
              TvkErrorSuccess);
    TavikSimControl_t control = Control();
    ASSERT_EQ(control("unplug Cam-2"), 0);
    EXPECT_TRUE(test::Eventually([&] { return news.Saw("Cam-2 Missing"); }, 1.0));
    ASSERT_EQ(control("plug Cam-2"), 0);
    EXPECT_TRUE(test::Eventually([&] { return news.Saw("Cam-2 Detected"); }, 1.0));
    EXPECT_EQ(CameraIds(), (std::vector<std::string>{"Cam-1", "Cam-2", "Cam-3"}));
}

TEST_F(DiscoveryCallsTest, SystemDiscoverySettingsReachEveryInterface) {
    Start(kLab);
    TvkHandle_t interface = nullptr;
    ASSERT_EQ(TvkInterfaceOpen("IF-B", &interface), TvkErrorSuccess);
    ASSERT_EQ(TvkFeatureIntSet(TVK_SYSTEM_HANDLE, "GeVDiscoveryAllDuration", 10), TvkErrorSuccess);
    ASSERT_EQ(TvkFeatureCommandRun(TVK_SYSTEM_HANDLE, "GeVDiscoveryAllAuto"), TvkErrorSuccess);
    const char* mode = nullptr;
    ASSERT_EQ(TvkFeatureEnumGet(interface, "DiscoveryMode", &mode), TvkErrorSuccess);
    EXPECT_STREQ(mode, "Auto");
    int64_t duration = 0;
    ASSERT_EQ(TvkFeatureIntGet(interface, "DiscoveryDuration", &duration), TvkErrorSuccess);
    EXPECT_EQ(duration, 10);
    // The interface not open has its register set all the same.
    ASSERT_EQ(TvkInterfaceOpen("IF-A", &interface), TvkErrorSuccess);
    ASSERT_EQ(TvkFeatureEnumGet(interface, "DiscoveryMode", &mode), TvkErrorSuccess);
    EXPECT_STREQ(mode, "Auto");
}

} // namespace
