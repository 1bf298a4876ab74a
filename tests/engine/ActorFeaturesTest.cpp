// The feature half of actors: every feature form of a proxy travels to the
// actor and back; invalidation callbacks with their registration rules, poll
// timers, the offloader thread and its tag, and writes deferred while a
// callback that reports back is running.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Eventually.h"
#include "engine/Actor.h"
#include "engine/Global.h"
#include "engine/Proxy.h"
#include "gik/MemoryPort.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"

using namespace tvk;

namespace {

using test::Eventually;

const char* kDocument = R"(<RegisterDescription>
  <Category Name="Root"><pFeature>Gain</pFeature><pFeature>Ratio</pFeature><pFeature>Mode</pFeature>
    <pFeature>Label</pFeature><pFeature>Enabled</pFeature><pFeature>Start</pFeature>
    <pFeature>Blob</pFeature><pFeature>Temperature</pFeature></Category>
  <Integer Name="Gain"><pValue>RegGain</pValue><Min>0</Min><Max>100</Max><Inc>5</Inc>
    <pSelected>Ratio</pSelected></Integer>
  <IntReg Name="RegGain"><Address>0x10</Address><Length>4</Length><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess></IntReg>
  <Float Name="Ratio"><pValue>RegRatio</pValue><Min>0.0</Min><Max>2.0</Max></Float>
  <FloatReg Name="RegRatio"><Address>0x20</Address><Length>8</Length><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess></FloatReg>
  <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="On"><Value>1</Value></EnumEntry><pValue>RegMode</pValue></Enumeration>
  <IntReg Name="RegMode"><Address>0x30</Address><Length>4</Length><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess></IntReg>
  <StringReg Name="Label"><Address>0x40</Address><Length>16</Length><pPort>Device</pPort></StringReg>
  <Boolean Name="Enabled"><pValue>RegEnabled</pValue></Boolean>
  <IntReg Name="RegEnabled"><Address>0x50</Address><Length>4</Length><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess></IntReg>
  <Command Name="Start"><pValue>RegStart</pValue><CommandValue>1</CommandValue></Command>
  <IntReg Name="RegStart"><Address>0x60</Address><Length>4</Length><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess></IntReg>
  <Register Name="Blob"><Address>0x80</Address><Length>4</Length><pPort>Device</pPort></Register>
  <Integer Name="Temperature"><pValue>RegTemperature</pValue><PollingTime>20</PollingTime></Integer>
  <IntReg Name="RegTemperature"><Address>0x70</Address><Length>4</Length><AccessMode>RO</AccessMode>
    <pPort>Device</pPort><Endianess>LittleEndian</Endianess><Cachable>NoCache</Cachable></IntReg>
  <Port Name="Device"/></RegisterDescription>)";

// An actor with features over an in-memory port; it counts the writes it
// had to put off.
class cDeviceActor : public pActor {
public:
    static cDeviceActor* New(pProxy* aProxy, cAggregate* aAggregate) {
        return Make<cDeviceActor>(aProxy, aAggregate);
    }
    llk::i4 Initialize(pProxy* aProxy, cAggregate* aAggregate) {
        llk::i4 status = pActor::Initialize(aProxy, aAggregate);
        mPort = llk::Retained(test::cMemoryPort::New(true));
        mFeatures = llk::Retained(cFeatures::New(false));
        if (status != llk::kOk || !mPort || !mFeatures) return llk::kNoMemory;
        mFeatures->SetDelegate(this);
        if ((status = mFeatures->Prepare()) != llk::kOk) return status;
        status = mFeatures->Connect("Device", mPort, kDocument, false, false, nullptr, nullptr);
        return status == llk::kOk ? mFeatures->Realize() : status;
    }
    ~cDeviceActor() override {
        llk::ReleaseAndClear(mFeatures);
        llk::ReleaseAndClear(mPort);
    }
    cFeatures* Features() const override { return mFeatures; }
    bool OnRequest(llk::cRequest* aRequest) override {
        bool finished = pActor::OnRequest(aRequest);
        if (!finished) ++mDeferred;
        return finished;
    }
    test::cMemoryPort* mPort = nullptr;
    cFeatures* mFeatures = nullptr;
    std::atomic<int> mDeferred{0};
};

class cDeviceProxy : public pProxy {
public:
    static cDeviceProxy* New(cAggregate* aAggregate) { return Make<cDeviceProxy>(aAggregate); }
    llk::i4 Initialize(cAggregate* aAggregate) {
        SetAggregate(aAggregate);
        mActor = llk::Retained(cDeviceActor::New(this, aAggregate));
        return mActor ? StartActor(mActor) : llk::kNoMemory;
    }
    ~cDeviceProxy() override {
        EndActor(mActor);
        llk::ReleaseAndClear(mActor);
    }
    llk::u4 ClassType() const override { return kTypeCameraProxy; }
    pActor* Actor() const override { return mActor; }
    cDeviceActor* Device() const { return mActor; }

private:
    cDeviceActor* mActor = nullptr;
};

// What callbacks saw.
struct tSeen {
    std::mutex mutex;
    std::vector<std::string> names;
    std::vector<llk::u4> tags;
    std::vector<TvkHandle_t> handles;
    std::atomic<int> calls{0};
    void Add(TvkHandle_t aHandle, const char* aName) {
        std::lock_guard<std::mutex> hold(mutex);
        names.push_back(aName);
        tags.push_back(llk::sEnv::GetThreadTag());
        handles.push_back(aHandle);
        ++calls;
    }
};

void Record(TvkHandle_t aHandle, const char* aName, void* aSeen) {
    static_cast<tSeen*>(aSeen)->Add(aHandle, aName);
}
void Other(TvkHandle_t, const char*, void*) {}

class ActorFeaturesTest : public ::testing::Test {
protected:
    void SetUp() override {
        mGlobal = llk::Retained(cGlobal::New(nullptr));
        mAggregate = llk::Retained(cAggregate::New(mGlobal));
        mProxy = llk::Retained(cDeviceProxy::New(mAggregate));
        ASSERT_NE(mProxy, nullptr);
        ASSERT_EQ(mGlobal->Insert(mProxy, &mHandle), llk::kOk);
    }
    void TearDown() override {
        mGlobal->RemoveAll();
        llk::ReleaseAndClear(mProxy);
        mPool.Sink();
        llk::ReleaseAndClear(mAggregate);
        llk::ReleaseAndClear(mGlobal);
    }
    llk::uAutoreleasePool mPool;
    cGlobal* mGlobal = nullptr;
    cAggregate* mAggregate = nullptr;
    cDeviceProxy* mProxy = nullptr;
    llk::u4 mHandle = 0;
};

TEST_F(ActorFeaturesTest, EveryFeatureFormTravelsToTheActorAndBack) {
    pProxy* p = mProxy;
    llk::i8 gain = 35;
    double ratio = 1.5;
    TvkBool_t on = 1;
    EXPECT_EQ(p->PokeFeature("Gain", kFeatureInt, &gain, sizeof(gain)), 0);
    EXPECT_EQ(p->PokeFeature("Ratio", kFeatureFloat, &ratio, sizeof(ratio)), 0);
    EXPECT_EQ(p->PokeFeature("Mode", kFeatureEnum, "On", 0), 0);
    EXPECT_EQ(p->PokeFeature("Label", kFeatureString, "abc", 0), 0);
    EXPECT_EQ(p->PokeFeature("Enabled", kFeatureBool, &on, 1), 0);
    EXPECT_EQ(p->PokeFeature("Start", kFeatureCommand, nullptr, 0), 0);
    EXPECT_EQ(p->PokeFeature("Blob", kFeatureRaw, "\x01\x02\x03\x04", 4), 0);
    EXPECT_EQ(p->PokeFeature("Gain", kFeatureInt, nullptr, 0), kFeatureNullOutput);
    EXPECT_EQ(p->PokeFeature("Gain", kFeatureFloat, &ratio, 8), kFeatureWrongType);
    EXPECT_EQ(p->PokeFeature("Gain", static_cast<tFeatureData>(9), &gain, 8), kFeatureWrongType);

    gain = 0;
    ratio = 0;
    on = 0;
    const char* mode = nullptr;
    char label[8];
    char blob[4];
    TvkBool_t done = 1;
    llk::u4 filled = 0;
    EXPECT_EQ(p->PeekFeature("Gain", kFeatureInt, &gain, 0, nullptr), 0);
    EXPECT_EQ(gain, 35);
    EXPECT_EQ(p->PeekFeature("Ratio", kFeatureFloat, &ratio, 0, nullptr), 0);
    EXPECT_EQ(ratio, 1.5);
    EXPECT_EQ(p->PeekFeature("Mode", kFeatureEnum, &mode, 0, nullptr), 0);
    EXPECT_STREQ(mode, "On");
    EXPECT_EQ(p->PeekFeature("Label", kFeatureString, label, sizeof(label), &filled), 0);
    EXPECT_STREQ(label, "abc");
    EXPECT_EQ(filled, 4u);
    EXPECT_EQ(p->PeekFeature("Label", kFeatureString, nullptr, 0, &filled), 0);
    EXPECT_EQ(filled, 4u);
    EXPECT_EQ(p->PeekFeature("Enabled", kFeatureBool, &on, 0, nullptr), 0);
    EXPECT_EQ(on, 1);
    EXPECT_EQ(p->PeekFeature("Start", kFeatureCommand, &done, 0, nullptr), 0);
    EXPECT_EQ(done, 0);
    EXPECT_EQ(p->PeekFeature("Blob", kFeatureRaw, blob, sizeof(blob), &filled), 0);
    EXPECT_EQ(filled, 4u);
    EXPECT_EQ(std::memcmp(blob, "\x01\x02\x03\x04", 4), 0);
    EXPECT_EQ(p->PeekFeature("Mode", kFeatureEnum, nullptr, 0, nullptr), kFeatureNullOutput);
    EXPECT_EQ(p->PeekFeature("Gain", kFeatureEnum, &mode, 0, nullptr), kFeatureWrongType);

    llk::i8 min = -1, max = -1, step = 0;
    bool stated = false;
    EXPECT_EQ(p->RngeFeature("Gain", kFeatureInt, &min, &max), 0);
    EXPECT_EQ(max, 100);
    EXPECT_EQ(p->RngeFeature("Gain", kFeatureInt, nullptr, nullptr), 0);
    EXPECT_EQ(p->RngeFeature("Mode", kFeatureInt, &min, nullptr), kFeatureWrongType);
    EXPECT_EQ(p->RngeFeature("Gain", kFeatureString, &min, nullptr), kFeatureWrongType);
    const char* names[1] = {};
    EXPECT_EQ(p->RngeFeature("Mode", nullptr, 0, &filled), 0);
    EXPECT_EQ(filled, 2u);
    EXPECT_EQ(p->RngeFeature("Mode", names, 1, &filled), 0);
    EXPECT_EQ(filled, 1u);
    EXPECT_STREQ(names[0], "Off");
    EXPECT_EQ(p->QIncFeature("Gain", kFeatureInt, &step, &stated), 0);
    EXPECT_TRUE(stated);
    EXPECT_EQ(step, 5);
    EXPECT_EQ(p->QIncFeature("Mode", kFeatureEnum, &step, &stated), kFeatureWrongType);

    bool available = false, readable = false, writeable = false;
    llk::i8 number = 0;
    const char* text = nullptr;
    tFeatureEnumEntry entry{};
    EXPECT_EQ(p->IsEnumValueAvailable("Mode", "On", &available), 0);
    EXPECT_TRUE(available);
    EXPECT_EQ(p->GetEnumValueAsInteger("Mode", "On", &number), 0);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(p->GetEnumValueAsString("Mode", 0, &text), 0);
    EXPECT_STREQ(text, "Off");
    EXPECT_EQ(p->GetEnumValueInfo("Mode", "On", &entry), 0);
    EXPECT_STREQ(entry.name, "On");
    EXPECT_EQ(p->StatFeature("Temperature", &readable, &writeable), 0);
    EXPECT_TRUE(readable);
    EXPECT_FALSE(writeable);

    // Sizes: by the register, raw for any feature, the type must match.
    llk::u4 size = 0;
    EXPECT_EQ(p->SizeFeature("Label", kFeatureString, &size), 0);
    EXPECT_EQ(size, 16u);
    EXPECT_EQ(p->SizeFeature("Ratio", kFeatureRaw, &size), 0);
    EXPECT_EQ(size, 8u);
    EXPECT_EQ(p->SizeFeature("Gain", kFeatureString, &size), kFeatureWrongType);

    tFeatureInfo info{};
    EXPECT_EQ(p->InfoFeature("Gain", &info, sizeof(info)), 0);
    EXPECT_STREQ(info.name, "Gain");
    EXPECT_EQ(p->ListFeatures(nullptr, sizeof(info), 0, &filled), 0);
    EXPECT_EQ(filled, 8u);
    EXPECT_EQ(p->ListSelectedFeatures("Gain", &info, sizeof(info), 1, &filled), 0);
    EXPECT_EQ(filled, 1u);
    EXPECT_STREQ(info.name, "Ratio");
    EXPECT_EQ(p->ListAffectedFeatures("Mode", nullptr, sizeof(info), 0, &filled), 0);
    EXPECT_EQ(filled, 0u);
    EXPECT_EQ(p->InfoFeature("Nope", &info, sizeof(info)), llk::kNotFound);

    // Unknown tags keep the refused outcome.
    EXPECT_EQ(p->SendRequest(10, 99, &info, 0), llk::kRefused);
}

TEST_F(ActorFeaturesTest, CallbacksRunOnTheOffloaderWithTheTagAndTheHandle) {
    tSeen seen;
    pProxy* p = mProxy;
    EXPECT_EQ(p->RegisterCBFeature("Gain", &Record, &seen), 0);
    EXPECT_EQ(p->RegisterCBFeature("Ratio", &Record, &seen), 0);
    EXPECT_EQ(p->RegisterCBFeature("Gain", &Other, nullptr), 0);
    // One callback once on one name; names must be features.
    EXPECT_EQ(p->RegisterCBFeature("Gain", &Record, &seen), llk::kDuplicate);
    EXPECT_EQ(p->RegisterCBFeature(nullptr, &Record, &seen), llk::kNotFound);
    EXPECT_EQ(p->RegisterCBFeature("RegGain", &Record, &seen), llk::kNotFound);
    EXPECT_EQ(p->UnregisterCBFeature("Mode", &Record), llk::kDuplicate);
    EXPECT_EQ(p->UnregisterCBFeature(nullptr, &Record), llk::kDuplicate);

    llk::i8 gain = 10;
    EXPECT_EQ(p->PokeFeature("Gain", kFeatureInt, &gain, sizeof(gain)), 0);
    ASSERT_TRUE(Eventually([&] { return seen.calls == 2; }));
    std::lock_guard<std::mutex> hold(seen.mutex);
    // The selected feature first, the written one last.
    EXPECT_EQ(seen.names, (std::vector<std::string>{"Ratio", "Gain"}));
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(seen.tags[i], kTagFeatureCallback);
        EXPECT_EQ(seen.handles[i], reinterpret_cast<TvkHandle_t>(static_cast<uintptr_t>(mHandle)));
    }
    EXPECT_EQ(llk::sEnv::GetThreadTag(), 0u);
}

TEST_F(ActorFeaturesTest, PollTimersRunWhileSomethingIsRegistered) {
    tSeen seen;
    pProxy* p = mProxy;
    EXPECT_EQ(p->RegisterCBFeature("Temperature", &Record, &seen), 0);
    ASSERT_TRUE(Eventually([&] { return seen.calls >= 3; }));
    EXPECT_EQ(p->UnregisterCBFeature("Temperature", &Record), 0);
    // Registering again starts over, with the timers made anew.
    int before = seen.calls;
    EXPECT_EQ(p->RegisterCBFeature("Temperature", &Record, &seen), 0);
    ASSERT_TRUE(Eventually([&] { return seen.calls >= before + 2; }));
    EXPECT_EQ(p->UnregisterCBFeature("Temperature", &Record), 0);
}

// Holds the first callback until the write that follows it was put off, and
// reads the feature meanwhile.
struct tHold {
    cDeviceProxy* proxy;
    std::atomic<int> calls{0};
    std::atomic<llk::i8> seenInside{-1};
};

void HoldFirst(TvkHandle_t, const char*, void* aHold) {
    auto* hold = static_cast<tHold*>(aHold);
    if (hold->calls++ != 0) return;
    EXPECT_TRUE(Eventually([&] { return hold->proxy->Device()->mDeferred > 0; }));
    llk::uAutoreleasePool pool;
    llk::i8 value = 0;
    // Getters work inside a callback.
    EXPECT_EQ(hold->proxy->PeekFeature("Gain", kFeatureInt, &value, 0, nullptr), 0);
    hold->seenInside = value;
}

TEST_F(ActorFeaturesTest, AWriteWaitsForTheCallbackStillReporting) {
    tHold hold{mProxy};
    pProxy* p = mProxy;
    EXPECT_EQ(p->RegisterCBFeature("Gain", &HoldFirst, &hold), 0);
    llk::i8 first = 20;
    EXPECT_EQ(p->PokeFeature("Gain", kFeatureInt, &first, sizeof(first)), 0);
    // This write is put off until the callback of the first has returned.
    llk::i8 second = 30;
    EXPECT_EQ(p->PokeFeature("Gain", kFeatureInt, &second, sizeof(second)), 0);
    EXPECT_EQ(hold.seenInside, 20);
    ASSERT_TRUE(Eventually([&] { return hold.calls == 2; }));
    llk::i8 now = 0;
    EXPECT_EQ(p->PeekFeature("Gain", kFeatureInt, &now, 0, nullptr), 0);
    EXPECT_EQ(now, 30);
}

// Blocks the offloader until the test lets it go.
struct tGate {
    std::atomic<int> calls{0};
    std::atomic<bool> open{false};
};

void Block(TvkHandle_t, const char*, void* aGate) {
    auto* gate = static_cast<tGate*>(aGate);
    ++gate->calls;
    EXPECT_TRUE(Eventually([&] { return gate->open.load(); }));
}

TEST_F(ActorFeaturesTest, UnregisteringTakesBackCallsNotYetRun) {
    tGate gate;
    tSeen seen;
    pProxy* p = mProxy;
    // The blocked first callback keeps the second waiting on the offloader.
    EXPECT_EQ(p->RegisterCBFeature("Ratio", &Block, &gate), 0);
    EXPECT_EQ(p->RegisterCBFeature("Gain", &Record, &seen), 0);
    llk::i8 gain = 5;
    EXPECT_EQ(p->PokeFeature("Gain", kFeatureInt, &gain, sizeof(gain)), 0);
    ASSERT_TRUE(Eventually([&] { return gate.calls == 1; }));
    EXPECT_EQ(p->UnregisterCBFeature("Gain", &Record), 0);
    gate.open = true;
    // The offloader runs in order: once a later call has run, the taken
    // back one would have run too.
    EXPECT_EQ(p->RegisterCBFeature("Mode", &Record, &seen), 0);
    EXPECT_EQ(p->PokeFeature("Mode", kFeatureEnum, "On", 0), 0);
    ASSERT_TRUE(Eventually([&] { return seen.calls == 1; }));
    std::lock_guard<std::mutex> hold(seen.mutex);
    EXPECT_EQ(seen.names, std::vector<std::string>{"Mode"});
}

} // namespace
