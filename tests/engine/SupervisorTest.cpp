// The Supervisor driven directly: its transport probe and register switch
// over a double of the systems, and the discovery news of a double of a
// system actor republished as invalidations of its features.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "Eventually.h"
#include "engine/Global.h"
#include "engine/RequestIds.h"
#include "engine/Supervisor.h"
#include "kit/AutoreleasePool.h"

using namespace tvk;

namespace {

using test::Eventually;

// The systems as a test wants them: present kinds have the scheduler of one
// stand-in aggregate; forwarded calls are recorded and answered with aAnswer.
class cSystemsDouble : public pSystems {
public:
    static cSystemsDouble* New(cHelper* aHelper) { return Make<cSystemsDouble>(aHelper); }
    llk::i4 Initialize(cHelper* aHelper) {
        mHelper = aHelper;
        return llk::kOk;
    }
    cHelper* Helper(tInterface aKind) override {
        return mPresent & (1u << aKind) ? mHelper : nullptr;
    }
    llk::i4 SetDiscoveryMode(tInterface aKind, tDiscoveryMode aMode) override {
        mCalls.push_back("mode " + std::to_string(aKind) + " " + std::to_string(aMode));
        return mAnswer;
    }
    llk::i4 SetDiscoveryDuration(tInterface aKind, llk::u8 aDuration) override {
        mCalls.push_back("duration " + std::to_string(aKind) + " " + std::to_string(aDuration));
        return mAnswer;
    }
    llk::i4 SendForceIP(tInterface aKind, const tCommandForceIP& aCommand) override {
        char text[96];
        snprintf(text, sizeof(text), "force %u %llx %llx %llx %llx", aKind,
                 static_cast<unsigned long long>(aCommand.mac),
                 static_cast<unsigned long long>(aCommand.ip),
                 static_cast<unsigned long long>(aCommand.subnetMask),
                 static_cast<unsigned long long>(aCommand.gateway));
        mCalls.push_back(text);
        return mAnswer;
    }
    llk::u4 mPresent = 0; // bit per tInterface
    llk::i4 mAnswer = llk::kOk;
    std::vector<std::string> mCalls; // touched on the Supervisor's thread only
    cHelper* mHelper = nullptr;
};

// A system actor as the Supervisor sees one: it posts discovery news.
struct tNews {
    llk::u4 uid;
    const char* duid;
    llk::u4 what;
    llk::u4 data;
};

class cSystemDouble : public pActor {
public:
    static constexpr llk::u4 kPost = 99;
    static cSystemDouble* New(pProxy* aProxy, cAggregate* aAggregate, pProxy* aSupervisor) {
        return Make<cSystemDouble>(aProxy, aAggregate, aSupervisor);
    }
    llk::i4 Initialize(pProxy* aProxy, cAggregate* aAggregate, pProxy* aSupervisor) {
        mSupervisor = aSupervisor;
        return pActor::Initialize(aProxy, aAggregate);
    }
    bool OnRequest(llk::cRequest* aRequest) override {
        if (aRequest->GetUid() != kPost) return pActor::OnRequest(aRequest);
        for (auto* news = static_cast<const std::vector<tNews>*>(aRequest->GetPointer());
             const tNews& n : *news) {
            llk::cMessage* message = llk::cMessage::New(n.uid, 0, 4, 0.0f);
            message->StoreBlock("duid", n.duid, static_cast<llk::u4>(std::strlen(n.duid) + 1));
            if (n.uid == message::kInterfaceChanged) {
                message->StoreBool("data", n.data != 0);
            } else {
                message->StoreUint("what", n.what);
                message->StoreUint("data", n.data);
            }
            mSupervisor->PostMessage(message, 0);
        }
        aRequest->SetOutcome(llk::kOk);
        return true;
    }

private:
    pProxy* mSupervisor = nullptr;
};

class cSystemProxyDouble : public pProxy {
public:
    static cSystemProxyDouble* New(cAggregate* aAggregate, pProxy* aSupervisor) {
        return Make<cSystemProxyDouble>(aAggregate, aSupervisor);
    }
    llk::i4 Initialize(cAggregate* aAggregate, pProxy* aSupervisor) {
        SetAggregate(aAggregate);
        mActor = llk::Retained(cSystemDouble::New(this, aAggregate, aSupervisor));
        return mActor ? StartActor(mActor) : llk::kNoMemory;
    }
    ~cSystemProxyDouble() override {
        EndActor(mActor);
        llk::ReleaseAndClear(mActor);
    }
    llk::u4 ClassType() const override { return kTypeSystemProxy; }
    pActor* Actor() const override { return mActor; }
    llk::i4 Post(std::vector<tNews> aNews) {
        return SendRequest(cSystemDouble::kPost, 0, &aNews, 0);
    }

private:
    cSystemDouble* mActor = nullptr;
};

class SupervisorTest : public ::testing::Test {
protected:
    void SetUp() override {
        mGlobal = llk::Retained(cGlobal::New(nullptr));
        mAggregate = llk::Retained(cAggregate::New(mGlobal));
        mSystemAggregate = llk::Retained(cAggregate::New(mGlobal));
        mSystems = llk::Retained(cSystemsDouble::New(mSystemAggregate->Helper()));
    }
    void TearDown() override {
        llk::ReleaseAndClear(mSystem);
        llk::ReleaseAndClear(mSupervisor);
        mPool.Sink();
        llk::ReleaseAndClear(mSystems);
        llk::ReleaseAndClear(mSystemAggregate);
        llk::ReleaseAndClear(mAggregate);
        llk::ReleaseAndClear(mGlobal);
    }
    void Start(llk::u4 aPresent) {
        mSystems->mPresent = aPresent;
        mSupervisor = llk::Retained(cSupervisorProxy::New(mAggregate, mSystems));
        ASSERT_NE(mSupervisor, nullptr);
        ASSERT_EQ(mSupervisor->GetGoing(), 0);
        mSystem = llk::Retained(cSystemProxyDouble::New(mSystemAggregate, mSupervisor));
        ASSERT_NE(mSystem, nullptr);
    }
    llk::i8 Int(const char* aName, llk::i4 aExpect = 0) {
        llk::i8 value = -1;
        EXPECT_EQ(mSupervisor->PeekFeature(aName, kFeatureInt, &value, 0, nullptr), aExpect)
            << aName;
        return value;
    }
    llk::i4 SetInt(const char* aName, llk::i8 aValue) {
        return mSupervisor->PokeFeature(aName, kFeatureInt, &aValue, sizeof(aValue));
    }
    std::string Enum(const char* aName) {
        const char* value = nullptr;
        EXPECT_EQ(mSupervisor->PeekFeature(aName, kFeatureEnum, &value, 0, nullptr), 0) << aName;
        return value ? value : "";
    }
    bool Bool(const char* aName) {
        TvkBool_t value = 0;
        EXPECT_EQ(mSupervisor->PeekFeature(aName, kFeatureBool, &value, 0, nullptr), 0) << aName;
        return value != 0;
    }
    // The Supervisor's thread wrote mCalls; a finished request orders that
    // before this read.
    std::vector<std::string> Calls() {
        double elapsed = 0;
        mSupervisor->PeekFeature("Elapsed", kFeatureFloat, &elapsed, 0, nullptr);
        return mSystems->mCalls;
    }

    static constexpr llk::u4 kGigE = 1u << kInterfaceEthernet;
    static constexpr llk::u4 kFireWire = 1u << kInterfaceFirewire;
    static constexpr llk::u4 kUsb = 1u << kInterfaceUsb;

    llk::uAutoreleasePool mPool;
    cGlobal* mGlobal = nullptr;
    cAggregate* mAggregate = nullptr;
    cAggregate* mSystemAggregate = nullptr;
    cSystemsDouble* mSystems = nullptr;
    cSupervisorProxy* mSupervisor = nullptr;
    cSystemProxyDouble* mSystem = nullptr;
};

TEST_F(SupervisorTest, TransportsPresentAndTheDefaultSelection) {
    Start(kGigE | kUsb);
    EXPECT_TRUE(Bool("GeVTLIsPresent"));
    EXPECT_FALSE(Bool("FiWTLIsPresent"));
    EXPECT_TRUE(Bool("UsbTLIsPresent"));
    EXPECT_EQ(Enum("TLSchedulerSelector"), "GeV");
    double elapsed = -1.0;
    EXPECT_EQ(mSupervisor->PeekFeature("Elapsed", kFeatureFloat, &elapsed, 0, nullptr), 0);
    EXPECT_GE(elapsed, 0.0);
    EXPECT_EQ(mSupervisor->Actor()->Handle(), 1u);
}

TEST_F(SupervisorTest, OnlyFireWireSelectsItAndHidesGigEFeatures) {
    Start(kFireWire);
    EXPECT_FALSE(Bool("GeVTLIsPresent"));
    EXPECT_EQ(Enum("TLSchedulerSelector"), "FiW");
    EXPECT_EQ(mSupervisor->StatFeature("GeVDiscoveryAllOff", nullptr, nullptr), llk::kNotFound);
    EXPECT_EQ(Int("TLSchedulerConcurrencyMax"), 6);
}

TEST_F(SupervisorTest, SchedulerFeaturesReadTheSelectedSystem) {
    Start(kUsb);
    EXPECT_EQ(Enum("TLSchedulerSelector"), "Usb");
    EXPECT_EQ(Int("TLSchedulerConcurrencyMin"), 1);
    EXPECT_EQ(Int("TLSchedulerStride"), 5);
    // A write is accepted and changes nothing.
    EXPECT_EQ(SetInt("TLSchedulerConcurrencyMin", 4), 0);
    EXPECT_EQ(Int("TLSchedulerConcurrencyMin"), 1);
    // Statistics are served from a copy for a quarter of a second.
    EXPECT_EQ(Int("TLSchedulerStatObjects"), Int("TLSchedulerStatObjects"));
    EXPECT_EQ(mSupervisor->PokeFeature("TLSchedulerSelector", kFeatureEnum, "GeV", 0),
              TvkErrorInvalidValue);
    EXPECT_EQ(mSupervisor->PokeFeature("TLSchedulerSelector", kFeatureEnum, "Usb", 0), 0);
}

TEST_F(SupervisorTest, WithoutTransportsTheSchedulerCannotBeRead) {
    Start(0);
    EXPECT_EQ(Enum("TLSchedulerSelector"), "Usb");
    Int("TLSchedulerConcurrencyMin", TvkErrorInvalidAccess);
    Int("TLSchedulerStatBusy", TvkErrorInvalidAccess);
}

TEST_F(SupervisorTest, DiscoveryCommandsAndDurationGoToTheGigESystem) {
    Start(kGigE);
    EXPECT_EQ(mSupervisor->PokeFeature("GeVDiscoveryAllOnce", kFeatureCommand, nullptr, 0), 0);
    EXPECT_EQ(mSupervisor->PokeFeature("GeVDiscoveryAllOnce", kFeatureCommand, nullptr, 0), 0);
    EXPECT_EQ(SetInt("GeVDiscoveryAllDuration", 3000), 0);
    EXPECT_EQ(SetInt("GeVDiscoveryAllDuration", 3000), 0);
    EXPECT_EQ(Int("GeVDiscoveryAllDuration"), 3000);
    // An unchanged value is not sent again.
    EXPECT_EQ(Calls(), (std::vector<std::string>{"mode 2 2", "duration 2 3000"}));
    // Only 0, 1 and 2 are commands.
    EXPECT_EQ(mSupervisor->PokeFeature("GeVDiscoveryAllOff", kFeatureRaw, "\x03\0\0\0", 4),
              TvkErrorBadParameter);
    // A system that is gone.
    mSystems->mAnswer = llk::kNotFound;
    EXPECT_EQ(mSupervisor->PokeFeature("GeVDiscoveryAllAuto", kFeatureCommand, nullptr, 0),
              TvkErrorInternalFault);
    EXPECT_EQ(SetInt("GeVDiscoveryAllDuration", 10), TvkErrorInternalFault);
    EXPECT_EQ(Int("GeVDiscoveryAllDuration"), 3000);
}

TEST_F(SupervisorTest, ForceIPChecksItsAddressesBeforeItIsSent) {
    Start(kGigE);
    EXPECT_EQ(mSupervisor->PokeFeature("GeVForceIPAddressSend", kFeatureCommand, nullptr, 0),
              TvkErrorBadParameter);
    EXPECT_EQ(SetInt("GeVForceIPAddressIP", 0), TvkErrorBadParameter);
    EXPECT_EQ(SetInt("GeVForceIPAddressIP", 0xFFFFFFFF), TvkErrorBadParameter);
    EXPECT_EQ(SetInt("GeVForceIPAddressGateway", 0xFFFFFFFF), TvkErrorBadParameter);
    EXPECT_EQ(SetInt("GeVForceIPAddressMAC", 0x0011223344AA), 0);
    EXPECT_EQ(mSupervisor->PokeFeature("GeVForceIPAddressSend", kFeatureCommand, nullptr, 0),
              TvkErrorBadParameter); // no IP yet
    EXPECT_EQ(SetInt("GeVForceIPAddressIP", 0xC0A80002), 0);
    EXPECT_EQ(SetInt("GeVForceIPAddressSubnetMask", 0xFFFFFF00), 0);
    EXPECT_EQ(SetInt("GeVForceIPAddressGateway", 0xC0A80001), 0);
    EXPECT_EQ(mSupervisor->PokeFeature("GeVForceIPAddressSend", kFeatureCommand, nullptr, 0), 0);
    TvkBool_t done = 0;
    EXPECT_EQ(mSupervisor->PeekFeature("GeVForceIPAddressSend", kFeatureCommand, &done, 0, nullptr),
              0);
    EXPECT_EQ(done, 1);
    EXPECT_EQ(Calls(), std::vector<std::string>{"force 2 11223344aa c0a80002 ffffff00 c0a80001"});
    // Without a GigE Vision system nobody is told, and that is fine.
    mSystems->mAnswer = llk::kNotFound;
    EXPECT_EQ(mSupervisor->PokeFeature("GeVForceIPAddressSend", kFeatureCommand, nullptr, 0), 0);
}

TEST_F(SupervisorTest, ThePortAnswersByRegisterAndPart) {
    Start(kGigE);
    auto* actor = static_cast<cSupervisorActor*>(mSupervisor->Actor());
    llk::u1 bytes[8] = {};
    llk::u4 done = 0;
    // No register there.
    EXPECT_EQ(actor->OnPortFetch(0, 0x200, 4, bytes, done), TvkErrorInvalidAccess);
    EXPECT_EQ(actor->OnPortStore(0, 0x0FFFFFF0, 4, bytes, done), TvkErrorInvalidAccess);
    // Read-only registers refuse writes; parts of a register are written
    // over what it holds.
    EXPECT_EQ(actor->OnPortStore(0, 0x000, 8, bytes, done), TvkErrorInvalidAccess);
    const llk::u1 low[2] = {0x02, 0x00}, high[2] = {0xA8, 0xC0};
    EXPECT_EQ(actor->OnPortStore(0, 0x144, 2, low, done), 0);
    EXPECT_EQ(actor->OnPortStore(0, 0x146, 2, high, done), 0);
    EXPECT_EQ(actor->OnPortFetch(0, 0x145, 2, bytes, done), 0);
    EXPECT_EQ(done, 2u);
    EXPECT_EQ(bytes[0], 0x00);
    EXPECT_EQ(bytes[1], 0xA8);
    // Adjoining registers in one access.
    EXPECT_EQ(actor->OnPortFetch(0, 0x144, 8, bytes, done), 0);
    EXPECT_EQ(done, 8u);
    EXPECT_EQ(bytes[3], 0xC0);
    // The pseudo port serves no document.
    EXPECT_EQ(actor->OnPortFetchXML(0, bytes, 8, done, 0), llk::kNotImplemented);
}

// What the callbacks on handle 1 read while they ran.
struct tNewsSeen {
    cSupervisorProxy* supervisor = nullptr;
    std::mutex mutex;
    std::vector<std::string> lines;
    std::atomic<int> calls{0};
};

void OnNews(TvkHandle_t aHandle, const char* aName, void* aSeen) {
    auto* seen = static_cast<tNewsSeen*>(aSeen);
    llk::uAutoreleasePool pool;
    bool camera = std::strncmp(aName, "DiscoveryCamera", 15) == 0;
    const char* event = nullptr;
    char ident[129] = {};
    llk::u4 size = sizeof(ident);
    seen->supervisor->PeekFeature(camera ? "DiscoveryCameraEvent" : "DiscoveryInterfaceEvent",
                                  kFeatureEnum, &event, 0, nullptr);
    seen->supervisor->PeekFeature(camera ? "DiscoveryCameraIdent" : "DiscoveryInterfaceIdent",
                                  kFeatureString, ident, size, &size);
    std::lock_guard<std::mutex> hold(seen->mutex);
    seen->lines.push_back(std::string(aName) + " " + (event ? event : "?") + " " + ident +
                          (aHandle == TVK_SYSTEM_HANDLE ? "" : " (not handle 1)"));
    ++seen->calls;
}

TEST_F(SupervisorTest, DiscoveryNewsBecomesInvalidationsOnHandleOne) {
    Start(kGigE);
    tNewsSeen seen;
    seen.supervisor = mSupervisor;
    for (const char* name : {"DiscoveryCameraEvent", "DiscoveryCameraIdent",
                             "DiscoveryInterfaceEvent", "DiscoveryInterfaceIdent"})
        ASSERT_EQ(mSupervisor->RegisterCBFeature(name, &OnNews, &seen), 0);

    // Back to back: each waits until the callbacks have read the one before.
    ASSERT_EQ(mSystem->Post({{message::kInterfaceChanged, "if-0", 0, 1},
                             {message::kDeviceChanged, "cam-1", 1, 1},
                             {message::kDeviceChanged, "cam-2", 2, 2},
                             {message::kDeviceChanged, "cam-2", 2, 0},
                             {message::kDeviceChanged, "cam-1", 3, 0},
                             {message::kDeviceChanged, "cam-3", 7, 1},
                             {message::kInterfaceChanged, "if-0", 0, 0}}),
              0);
    ASSERT_TRUE(Eventually([&] { return seen.calls == 14; }));
    std::lock_guard<std::mutex> hold(seen.mutex);
    EXPECT_EQ(seen.lines, (std::vector<std::string>{
                              "DiscoveryInterfaceEvent Available if-0",
                              "DiscoveryInterfaceIdent Available if-0",
                              "DiscoveryCameraEvent Detected cam-1",
                              "DiscoveryCameraIdent Detected cam-1",
                              "DiscoveryCameraEvent Reachable cam-2",
                              "DiscoveryCameraIdent Reachable cam-2",
                              "DiscoveryCameraEvent Unreachable cam-2",
                              "DiscoveryCameraIdent Unreachable cam-2",
                              "DiscoveryCameraEvent Missing cam-1",
                              "DiscoveryCameraIdent Missing cam-1",
                              // An unknown change keeps the event, not the identifier.
                              "DiscoveryCameraEvent Missing cam-3",
                              "DiscoveryCameraIdent Missing cam-3",
                              "DiscoveryInterfaceEvent Unavailable if-0",
                              "DiscoveryInterfaceIdent Unavailable if-0",
                          }));
}

TEST_F(SupervisorTest, ALongIdentifierIsCutToItsRegister) {
    Start(kGigE);
    std::string longIdent(300, 'x');
    ASSERT_EQ(mSystem->Post({{message::kDeviceChanged, longIdent.c_str(), 1, 1}}), 0);
    std::string ident;
    ASSERT_TRUE(Eventually([&] {
        char text[200] = {};
        llk::u4 size = sizeof(text);
        mSupervisor->PeekFeature("DiscoveryCameraIdent", kFeatureString, text, size, &size);
        ident = text;
        return !ident.empty();
    }));
    EXPECT_EQ(ident, std::string(128, 'x'));
}

} // namespace
