// System and interface actors on the simulator: the first scan, device
// lists, the news they send the Supervisor, and discovery settings.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

#include "Eventually.h"
#include "TavikSimControl.h"
#include "engine/Global.h"
#include "engine/Interface.h"
#include "engine/RequestIds.h"
#include "engine/System.h"
#include "kit/AutoreleasePool.h"
#include "kit/ObjectList.h"

using namespace tvk;
using test::Eventually;

namespace {

struct tNews {
    llk::u4 uid;
    std::string ident;
    llk::u4 what;
    llk::u4 data;
};

// Stands in for the Supervisor: records the news it is sent.
class cNewsActor : public pActor {
public:
    static cNewsActor* New(pProxy* aProxy, cAggregate* aAggregate) {
        return Make<cNewsActor>(aProxy, aAggregate);
    }
    bool OnMessage(llk::cMessage* aMessage) override {
        char ident[300] = {};
        llk::u4 size = sizeof(ident) - 1, what = 0, data = 0;
        aMessage->FetchBlock("duid", ident, size);
        bool available = false;
        if (aMessage->FetchBool("data", available)) data = available;
        aMessage->FetchUint("what", what);
        aMessage->FetchUint("data", data);
        std::lock_guard<std::mutex> hold(mLock);
        mNews.push_back({aMessage->GetUid(), ident, what, data});
        return true;
    }
    std::vector<tNews> News() {
        std::lock_guard<std::mutex> hold(mLock);
        return mNews;
    }
    bool Heard(llk::u4 aUid, const std::string& aIdent, llk::u4 aWhat, llk::u4 aData) {
        for (const tNews& news : News())
            if (news.uid == aUid && news.ident == aIdent && news.what == aWhat &&
                news.data == aData)
                return true;
        return false;
    }

private:
    std::mutex mLock;
    std::vector<tNews> mNews;
};

class cNewsProxy : public pProxy {
public:
    static cNewsProxy* New(cAggregate* aAggregate) { return Make<cNewsProxy>(aAggregate); }
    llk::i4 Initialize(cAggregate* aAggregate) {
        SetAggregate(aAggregate);
        mActor = llk::Retained(cNewsActor::New(this, aAggregate));
        return mActor ? StartActor(mActor) : llk::kNoMemory;
    }
    ~cNewsProxy() override {
        EndActor(mActor);
        llk::ReleaseAndClear(mActor);
    }
    llk::u4 ClassType() const override { return kTypeSupervisorProxy; }
    pActor* Actor() const override { return mActor; }
    cNewsActor* News() const { return mActor; }

private:
    cNewsActor* mActor = nullptr;
};

constexpr const char* kTopology = R"(<TavikSim tlType="%TL%">
  <Interface id="IF-A" name="Lab A" serial="SA">
    <Camera id="Cam-1" model="M1" serial="S1"/>
    <Camera id="Cam-2" model="M2" serial="S2" access="readonly"/>
  </Interface>
  <Interface id="IF-B" name="Lab B" serial="SB">
    <Camera id="Cam-3" model="M3" serial="S3" access="busy"/>
  </Interface>
</TavikSim>)";

class SystemTest : public ::testing::Test {
protected:
    void Start(const std::string& aProducer, const char* aTlType = "GEV") {
        std::string xml = kTopology;
        xml.replace(xml.find("%TL%"), 4, aTlType);
        mConfig = std::filesystem::temp_directory_path() /
                  ("tavik-system-" + std::to_string(getpid()) + ".xml");
        std::ofstream(mConfig) << xml;
        setenv("TAVIK_SIM_CONFIG", mConfig.c_str(), 1);
        mGlobal = llk::Retained(cGlobal::New(nullptr));
        mNews = llk::Retained(
            cNewsProxy::New(mSupervisorAggregate = llk::Retained(cAggregate::New(mGlobal))));
        ASSERT_EQ(mGlobal->Insert(mNews, nullptr), llk::kOk);
        mAggregate = llk::Retained(cAggregate::New(aProducer.c_str(), mGlobal));
        ASSERT_NE(mAggregate, nullptr);
        mSystem = llk::Retained(cSystemProxy::New(aProducer.c_str(), mAggregate));
        ASSERT_NE(mSystem, nullptr);
        ASSERT_EQ(mGlobal->Insert(mSystem, nullptr), llk::kOk);
        bool ready = false;
        ASSERT_TRUE(Eventually([&] { return mSystem->IsReady(ready) == llk::kOk && ready; }));
        void* module = dlopen(aProducer.c_str(), RTLD_NOW | RTLD_NOLOAD);
        mControl = reinterpret_cast<TavikSimControl_t>(dlsym(module, "TavikSimControl"));
        dlclose(module);
    }
    void TearDown() override {
        if (mGlobal) {
            // Systems end first, then what is left, as at shutdown.
            mGlobal->Remove(mSystem);
            llk::ReleaseAndClear(mSystem);
            mGlobal->RemoveAll();
            mPool.Sink();
        }
        llk::ReleaseAndClear(mNews);
        llk::ReleaseAndClear(mAggregate);
        llk::ReleaseAndClear(mSupervisorAggregate);
        llk::ReleaseAndClear(mGlobal);
        unsetenv("TAVIK_SIM_CONFIG");
        if (!mConfig.empty()) std::filesystem::remove(mConfig);
    }

    cInterfaceProxy* Interface(const char* aIdentifier) {
        auto* proxy = static_cast<cInterfaceProxy*>(
            mGlobal->Search(kTypeInterfaceProxy, aIdentifier, nullptr));
        return proxy ? static_cast<cInterfaceProxy*>(proxy->Autorelease()) : nullptr;
    }

    llk::uAutoreleasePool mPool;
    std::filesystem::path mConfig;
    cGlobal* mGlobal = nullptr;
    cAggregate* mSupervisorAggregate = nullptr;
    cAggregate* mAggregate = nullptr;
    cNewsProxy* mNews = nullptr;
    cSystemProxy* mSystem = nullptr;
    TavikSimControl_t mControl = nullptr;
};

TEST_F(SystemTest, FirstScanMakesAnInterfaceForEachAndSaysSo) {
    Start(TAVIK_SIM_PRODUCER);
    llk::cObjectList* interfaces = llk::cObjectList::New(4, true);
    mGlobal->Enumerate(kTypeInterfaceProxy, mSystem, interfaces);
    ASSERT_EQ(interfaces->Count(), 2u);
    EXPECT_TRUE(Eventually([&] {
        return mNews->News()->Heard(message::kInterfaceChanged, "IF-A", 0, 1) &&
               mNews->News()->Heard(message::kInterfaceChanged, "IF-B", 0, 1);
    }));

    tInterfaceInfo info{};
    ASSERT_EQ(Interface("IF-B")->QueryInfo(info), llk::kOk);
    EXPECT_STREQ(info.idString, "IF-B");
    EXPECT_STREQ(info.name, "Lab B");
    EXPECT_STREQ(info.serialNumber, "SB");
    EXPECT_EQ(info.interfaceType, TvkInterfaceEthernet);
    EXPECT_EQ(info.permittedAccess, 1u);
}

TEST_F(SystemTest, DeviceListsDescribeEachCameraAndItsAccess) {
    Start(TAVIK_SIM_PRODUCER);
    cInterfaceProxy* a = Interface("IF-A");
    ASSERT_EQ(a->DeviceListRenew(), llk::kOk);
    llk::u4 count = 0;
    ASSERT_EQ(a->DeviceListCount(count), llk::kOk);
    ASSERT_EQ(count, 2u);
    tDeviceInfo devices[3] = {};
    llk::u4 filled = 3;
    ASSERT_EQ(a->DeviceListQuery(0, devices, filled), llk::kOk);
    ASSERT_EQ(filled, 2u);
    EXPECT_STREQ(devices[0].idString, "Cam-1");
    EXPECT_STREQ(devices[0].model, "M1");
    EXPECT_STREQ(devices[0].serialNumber, "S1");
    EXPECT_STREQ(devices[0].interfaceID, "IF-A");
    // Read-write on GigE Vision: full, read, configuration and lite.
    EXPECT_EQ(devices[0].permittedAccess, 15u);
    EXPECT_EQ(devices[1].permittedAccess, 2u);
    filled = 1;
    EXPECT_EQ(a->DeviceListQuery(2, devices, filled), llk::kOutOfRange);
    EXPECT_EQ(filled, 0u);

    tDeviceInfo found{};
    ASSERT_EQ(Interface("IF-B")->DeviceFind("Cam-3", found), llk::kOk);
    EXPECT_EQ(found.permittedAccess, 0u); // busy
    EXPECT_EQ(Interface("IF-B")->DeviceFind("Cam-1", found), gc::GC_ERR_INVALID_ID);

    // Texts are interned: the same identifier is the same text.
    tDeviceInfo again{};
    ASSERT_EQ(a->DeviceFind("Cam-1", again), llk::kOk);
    EXPECT_EQ(again.idString, devices[0].idString);

    // Opening is only a switch; closing what is not open is refused.
    EXPECT_EQ(a->Close(), llk::kDuplicate);
    EXPECT_EQ(a->Open(), llk::kOk);
    EXPECT_EQ(a->Open(), llk::kOk);
    EXPECT_EQ(a->Close(), llk::kOk);
    EXPECT_EQ(a->Close(), llk::kDuplicate);
}

// Device changes reach the Supervisor through either listener kind; a lost
// interface reports its cameras missing.
void PlugAndUnplug(cNewsActor* aNews, TavikSimControl_t aControl) {
    ASSERT_NE(aControl, nullptr);
    ASSERT_EQ(aControl("unplug Cam-2"), 0);
    EXPECT_TRUE(Eventually([&] {
        return aNews->Heard(message::kDeviceChanged, "Cam-2", gc::IFCHANGE_DEVICE_PRESENCE, 0);
    }));
    ASSERT_EQ(aControl("plug Cam-2"), 0);
    EXPECT_TRUE(Eventually([&] {
        return aNews->Heard(message::kDeviceChanged, "Cam-2", gc::IFCHANGE_DEVICE_PRESENCE,
                            gc::IFCHANGE_DATA_PRESENT | gc::IFCHANGE_DATA_REACHABLE);
    }));
}

TEST_F(SystemTest, DeviceChangesReachTheSupervisorThroughTheUnion) {
    Start(TAVIK_SIM_PRODUCER);
    ASSERT_TRUE(mAggregate->Producer()->HasUnion());
    PlugAndUnplug(mNews->News(), mControl);
}

TEST_F(SystemTest, DeviceChangesReachTheSupervisorThroughEventThreads) {
    Start(std::string(TAVIK_SIM_VARIANTS) + "/TavikSimStandard.cti");
    ASSERT_FALSE(mAggregate->Producer()->HasUnion());
    PlugAndUnplug(mNews->News(), mControl);
}

TEST_F(SystemTest, AnEndingInterfaceReportsItsDevicesMissing) {
    Start(TAVIK_SIM_PRODUCER);
    cInterfaceProxy* a = Interface("IF-A");
    ASSERT_EQ(a->DeviceListRenew(), llk::kOk);
    ASSERT_EQ(mGlobal->Remove(a), llk::kOk);
    mPool.Sink();
    EXPECT_TRUE(Eventually([&] {
        return mNews->News()->Heard(message::kDeviceChanged, "Cam-1", gc::IFCHANGE_DEVICE_PRESENCE,
                                    0) &&
               mNews->News()->Heard(message::kDeviceChanged, "Cam-2", gc::IFCHANGE_DEVICE_PRESENCE,
                                    0);
    }));
}

TEST_F(SystemTest, DiscoverySettingsAreKeptAndDoNothingOffGigE) {
    Start(TAVIK_SIM_PRODUCER, "USB3");
    ASSERT_EQ(mAggregate->Type(), kInterfaceUsb);
    EXPECT_EQ(mSystem->SetDiscoveryDuration(20), llk::kOk);
    llk::u8 duration = 0;
    EXPECT_EQ(mSystem->GetDiscoveryDuration(duration), llk::kOk);
    EXPECT_EQ(duration, 20u);
    EXPECT_EQ(mSystem->SetDiscoveryMode(kDiscoveryOnce), llk::kOk);
    tDiscoveryMode mode = kDiscoveryOff;
    EXPECT_EQ(mSystem->GetDiscoveryMode(mode), llk::kOk);
    EXPECT_EQ(mode, kDiscoveryOnce);
    EXPECT_EQ(Interface("IF-A")->SetDiscoveryMode(kDiscoveryAuto), llk::kOk);
    EXPECT_EQ(cInterfaceActor::ConvertStatus(gc::DEVICE_ACCESS_STATUS_READWRITE, kInterfaceUsb),
              11u);
    EXPECT_EQ(cInterfaceActor::ConvertStatus(gc::DEVICE_ACCESS_STATUS_CONFIG_QRX, kInterfaceUsb),
              4u);
    EXPECT_EQ(
        cInterfaceActor::ConvertStatus(gc::DEVICE_ACCESS_STATUS_OPEN_READWRITE, kInterfaceEthernet),
        0u);
}

TEST_F(SystemTest, GigEDiscoverySettingsReachEveryInterfaceAndForceIPIsOneWrite) {
    Start(TAVIK_SIM_PRODUCER);
    EXPECT_EQ(mSystem->SetDiscoveryDuration(5), llk::kOk);
    EXPECT_EQ(mSystem->SetDiscoveryMode(kDiscoveryAuto), llk::kOk);
    for (const char* id : {"IF-A", "IF-B"}) {
        tDiscoveryMode mode = kDiscoveryOff;
        llk::u8 duration = 0;
        EXPECT_EQ(Interface(id)->GetDiscoveryMode(mode), llk::kOk);
        EXPECT_EQ(mode, kDiscoveryAuto);
        EXPECT_EQ(Interface(id)->GetDiscoveryDuration(duration), llk::kOk);
        EXPECT_EQ(duration, 5u);
    }

    const tCommandForceIP command{0x0011223344556677, 0xC0A80164, 0xFFFFFF00, 0xC0A80101};
    ASSERT_EQ(mSystem->SendForceIP(command), llk::kOk);
    cProducer* producer = mAggregate->Producer();
    llk::u1 written[24] = {};
    size_t size = sizeof(written);
    ASSERT_TRUE(producer->PortRead(producer->System(), kRegForceIPMAC, written, &size, nullptr));
    llk::u8 mac = 0;
    llk::u4 ip = 0, send = 0;
    memcpy(&mac, written, 8);
    memcpy(&ip, written + 8, 4);
    memcpy(&send, written + 20, 4);
    EXPECT_EQ(mac, command.mac);
    EXPECT_EQ(ip, command.ip);
    EXPECT_EQ(send, 1u);
}

} // namespace
