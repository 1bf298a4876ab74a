// Features end to end, on the features of the system as a whole (handle 1)
// against the simulator: lookups, every kind of value, observers.
#include <mutex>
#include <set>

#include "ObjectFixture.h"

namespace {

using namespace QRX::TvkAPI;
using test::Eventually;

// The system's own features, as a container of their own.
class SystemFeatures : public FeatureContainer {
public:
    SystemFeatures() { SetHandle(TVK_SYSTEM_HANDLE); }
    using FeatureContainer::Reset;
};

// Notes every call, the thread it came on and the feature it was given.
class Recorder : public IFeatureObserver {
public:
    void FeatureChanged(const FeaturePtr& pFeature) override {
        std::lock_guard<std::mutex> hold(mMutex);
        ++mCalls;
        mThreads.insert(std::this_thread::get_id());
        mLast = pFeature;
        if (mInside) mInside(*pFeature);
    }
    int Calls() {
        std::lock_guard<std::mutex> hold(mMutex);
        return mCalls;
    }
    FeaturePtr Last() {
        std::lock_guard<std::mutex> hold(mMutex);
        return mLast;
    }
    std::set<std::thread::id> Threads() {
        std::lock_guard<std::mutex> hold(mMutex);
        return mThreads;
    }
    // Runs inside each call.
    std::function<void(Feature&)> mInside;

private:
    std::mutex mMutex;
    int mCalls = 0;
    std::set<std::thread::id> mThreads;
    FeaturePtr mLast;
};

class SystemFeaturesTest : public test::ObjectFixture {
protected:
    void SetUp() override {
        ObjectFixture::SetUp();
        SearchSimulator();
        ASSERT_EQ(TavikSystem::GetInstance().Startup(), TvkErrorSuccess);
        mFeatures.reset(new SystemFeatures());
    }
    void TearDown() override {
        mFeatures.reset();
        ObjectFixture::TearDown();
    }
    FeaturePtr Get(const char* aName) {
        FeaturePtr feature;
        EXPECT_EQ(mFeatures->GetFeatureByName(aName, feature), TvkErrorSuccess) << aName;
        return feature;
    }
    // A write of the scheduler selector (to the one transport layer there
    // is) invalidates the features it selects.
    void Select() { ASSERT_EQ(Get("TLSchedulerSelector")->SetValue("GeV"), TvkErrorSuccess); }

    std::unique_ptr<SystemFeatures> mFeatures;
};

TEST_F(SystemFeaturesTest, OneVisibleFeatureIsOneObjectAnInvisibleOneIsMadeAtEachLookup) {
    EXPECT_TRUE(Get("Elapsed").IsEqualTo(Get("Elapsed")));
    EXPECT_FALSE(Get("GeVTLIsPresent").IsEqualTo(Get("GeVTLIsPresent")));
    FeaturePtr missing;
    EXPECT_EQ(mFeatures->GetFeatureByName("NoSuchFeature", missing), TvkErrorNotFound);
    EXPECT_TRUE(missing.IsNull());
}

TEST_F(SystemFeaturesTest, TheListKeepsWhatWasHandedOutAndCountsEveryFeature) {
    FeaturePtr elapsed = Get("Elapsed");
    uint32_t count = 0;
    ASSERT_EQ(TvkFeaturesList(TVK_SYSTEM_HANDLE, nullptr, 0, &count, sizeof(TvkFeatureInfo)),
              TvkErrorSuccess);
    uint32_t size = 0;
    ASSERT_EQ(mFeatures->GetFeatures(nullptr, size), TvkErrorSuccess);
    EXPECT_EQ(size, count);
    std::vector<FeaturePtr> small(size - 1);
    uint32_t smallSize = size - 1;
    EXPECT_EQ(mFeatures->GetFeatures(small.data(), smallSize), TvkErrorMoreData);
    EXPECT_EQ(smallSize, size);
    std::vector<FeaturePtr> all;
    ASSERT_EQ(mFeatures->GetFeatures(all), TvkErrorSuccess);
    ASSERT_EQ(all.size(), count);
    int same = 0;
    for (const FeaturePtr& feature : all)
        same += feature.IsEqualTo(elapsed);
    EXPECT_EQ(same, 1);
    // The library lists no invisible feature: each lookup still makes one.
    EXPECT_FALSE(Get("GeVTLIsPresent").IsEqualTo(Get("GeVTLIsPresent")));
}

TEST_F(SystemFeaturesTest, EveryKindOfValueReadsAndWrites) {
    FeaturePtr address = Get("GeVForceIPAddressIP");
    int64_t value = 0, minimum = -1, maximum = 0, increment = 0;
    ASSERT_EQ(address->SetValue(int64_t{0x0A000001}), TvkErrorSuccess);
    EXPECT_EQ(address->GetValue(value), TvkErrorSuccess);
    EXPECT_EQ(value, 0x0A000001);
    EXPECT_EQ(address->SetValue(int32_t{0x0A000002}), TvkErrorSuccess);
    EXPECT_EQ(address->GetValue(value), TvkErrorSuccess);
    EXPECT_EQ(value, 0x0A000002);
    EXPECT_EQ(address->GetRange(minimum, maximum), TvkErrorSuccess);
    EXPECT_EQ(minimum, 0);
    EXPECT_EQ(maximum, 0xFFFFFFFF);
    EXPECT_EQ(address->GetIncrement(increment), TvkErrorSuccess);
    EXPECT_EQ(increment, 1);

    double elapsed = -1, low = -1, high = -1;
    EXPECT_EQ(Get("Elapsed")->GetValue(elapsed), TvkErrorSuccess);
    EXPECT_GE(elapsed, 0.0);
    EXPECT_EQ(Get("Elapsed")->GetRange(low, high), TvkErrorSuccess);
    EXPECT_EQ(low, 0.0);
    bool readable = false, writable = true;
    EXPECT_EQ(Get("Elapsed")->IsReadable(readable), TvkErrorSuccess);
    EXPECT_EQ(Get("Elapsed")->IsWritable(writable), TvkErrorSuccess);
    EXPECT_TRUE(readable);
    EXPECT_FALSE(writable);

    bool present = false;
    EXPECT_EQ(Get("GeVTLIsPresent")->GetValue(present), TvkErrorSuccess);
    EXPECT_TRUE(present); // the simulator's transport layer is GigE Vision-like

    FeaturePtr command = Get("GeVDiscoveryAllOff");
    bool done = false;
    EXPECT_EQ(command->RunCommand(), TvkErrorSuccess);
    EXPECT_EQ(command->IsCommandDone(done), TvkErrorSuccess);

    std::string ident = "stale";
    EXPECT_EQ(Get("DiscoveryCameraIdent")->GetValue(ident), TvkErrorSuccess);
    uint32_t maxLength = 0;
    EXPECT_EQ(Get("DiscoveryCameraIdent")->GetValue(static_cast<char*>(nullptr), maxLength),
              TvkErrorSuccess);
    EXPECT_LE(ident.size(), maxLength);
    EXPECT_EQ(ident.find('\0'), std::string::npos);

    // Wrong kinds are refused by the object itself.
    EXPECT_EQ(Get("Elapsed")->GetValue(value), TvkErrorWrongType);
    EXPECT_EQ(Get("DiscoveryCameraIdent")->GetValue(value), TvkErrorWrongType);
    EXPECT_EQ(address->SetValue(true), TvkErrorWrongType);
}

TEST_F(SystemFeaturesTest, AnEnumerationListsItsEntriesAndTakesNamesAndNumbers) {
    FeaturePtr selector = Get("TLSchedulerSelector");
    std::vector<std::string> names;
    ASSERT_EQ(selector->GetValues(names), TvkErrorSuccess);
    EXPECT_EQ(names, (std::vector<std::string>{"GeV", "FiW", "Usb"}));
    std::vector<int64_t> values;
    ASSERT_EQ(selector->GetValues(values), TvkErrorSuccess);
    EXPECT_EQ(values, (std::vector<int64_t>{0, 1, 2}));
    uint32_t size = 0;
    const char* pointers[2] = {};
    EXPECT_EQ(selector->GetValues(static_cast<const char**>(nullptr), size), TvkErrorSuccess);
    EXPECT_EQ(size, 3u);
    size = 2;
    EXPECT_EQ(selector->GetValues(pointers, size), TvkErrorMoreData);
    EXPECT_EQ(size, 3u);

    std::vector<EnumEntry> entries;
    ASSERT_EQ(selector->GetEntries(entries), TvkErrorSuccess);
    ASSERT_EQ(entries.size(), 3u);
    std::string name;
    int64_t number = -1;
    entries[2].GetName(name);
    entries[2].GetValue(number);
    EXPECT_EQ(name, "Usb");
    EXPECT_EQ(number, 2);

    // Only the transport layer that is there can be selected.
    ASSERT_EQ(selector->SetValue(int64_t{0}), TvkErrorSuccess);
    std::string current;
    EXPECT_EQ(selector->GetValue(current), TvkErrorSuccess);
    EXPECT_EQ(current, "GeV");
    EXPECT_EQ(selector->SetValue("Usb"), TvkErrorInvalidValue);
    ASSERT_EQ(selector->SetValue("GeV"), TvkErrorSuccess);
    EXPECT_EQ(selector->GetValue(number), TvkErrorSuccess);
    EXPECT_EQ(number, 0);
    bool available = false;
    EXPECT_EQ(selector->IsValueAvailable("GeV", available), TvkErrorSuccess);
    EXPECT_TRUE(available);
    EXPECT_EQ(selector->IsValueAvailable(int64_t{0}, available), TvkErrorSuccess);
    EXPECT_TRUE(available);
    EnumEntry entry;
    EXPECT_EQ(selector->GetEntry(entry, "Usb"), TvkErrorSuccess);
    entry.GetValue(number);
    EXPECT_EQ(number, 2);
}

TEST_F(SystemFeaturesTest, SelectedFeaturesAreFetchedOnceAndKept) {
    FeaturePtr selector = Get("TLSchedulerSelector");
    std::vector<FeaturePtr> selected;
    ASSERT_EQ(selector->GetSelectedFeatures(selected), TvkErrorSuccess);
    ASSERT_EQ(selected.size(), 8u);
    std::string name;
    selected[0]->GetName(name);
    EXPECT_EQ(name, "TLSchedulerConcurrencyMin");
    // The second time the same objects come from the feature's own list.
    std::vector<FeaturePtr> again;
    ASSERT_EQ(selector->GetSelectedFeatures(again), TvkErrorSuccess);
    ASSERT_EQ(again.size(), 8u);
    EXPECT_TRUE(again[7].IsEqualTo(selected[7]));
    std::vector<FeaturePtr> affected{FeaturePtr()};
    EXPECT_EQ(Get("Elapsed")->GetAffectedFeatures(affected), TvkErrorSuccess);
    EXPECT_EQ(affected.size(), 1u); // none: the vector stays as it was
}

// Observers are told on a library thread, with the object the container
// hands out, and may read features from there, but not write them.
TEST_F(SystemFeaturesTest, ObserversAreToldOnALibraryThreadAndMayReadThere) {
    FeaturePtr address = Get("GeVForceIPAddressIP");
    NetPointer<Recorder> recorder(new Recorder());
    std::atomic<int> readInside{-1}, writeInside{0};
    recorder->mInside = [&](Feature& rFeature) {
        int64_t value = 0;
        readInside = rFeature.GetValue(value);
        writeInside = rFeature.SetValue(value);
    };
    ASSERT_EQ(address->RegisterObserver(recorder), TvkErrorSuccess);
    ASSERT_EQ(address->SetValue(int64_t{0x0A000003}), TvkErrorSuccess);
    ASSERT_TRUE(Eventually([&] { return recorder->Calls() >= 1; }));
    EXPECT_TRUE(recorder->Last().IsEqualTo(address));
    EXPECT_EQ(recorder->Threads().count(std::this_thread::get_id()), 0u);
    EXPECT_EQ(readInside, TvkErrorSuccess);
    EXPECT_EQ(writeInside, TvkErrorInvalidCall);
    EXPECT_EQ(address->UnregisterObserver(recorder), TvkErrorSuccess);
}

TEST_F(SystemFeaturesTest, ObserversRegisterOnceAndUnregisterOnce) {
    FeaturePtr minimum = Get("TLSchedulerConcurrencyMin");
    IFeatureObserverPtr first(new Recorder()), second(new Recorder());
    ASSERT_EQ(minimum->RegisterObserver(first), TvkErrorSuccess);
    EXPECT_EQ(minimum->RegisterObserver(first), TvkErrorInvalidCall);
    // A second observer shares the flat registration (a second would be refused).
    EXPECT_EQ(minimum->RegisterObserver(second), TvkErrorSuccess);
    EXPECT_EQ(minimum->UnregisterObserver(first), TvkErrorSuccess);
    EXPECT_EQ(minimum->UnregisterObserver(first), TvkErrorNotFound);
    EXPECT_EQ(minimum->UnregisterObserver(second), TvkErrorSuccess);
    EXPECT_EQ(minimum->UnregisterObserver(second), TvkErrorNotFound);
    EXPECT_EQ(first.UseCount(), 1u);
}

// The selector's write invalidates the features it selects.
TEST_F(SystemFeaturesTest, AnUnregisteredObserverIsNeverCalledAgain) {
    FeaturePtr minimum = Get("TLSchedulerConcurrencyMin");
    NetPointer<Recorder> leaving(new Recorder()), staying(new Recorder());
    ASSERT_EQ(minimum->RegisterObserver(leaving), TvkErrorSuccess);
    ASSERT_EQ(minimum->RegisterObserver(staying), TvkErrorSuccess);
    Select();
    ASSERT_TRUE(Eventually([&] { return staying->Calls() == 1; }));
    EXPECT_EQ(leaving->Calls(), 1);
    // The first of two leaves: the other is still told, the first no more.
    ASSERT_EQ(minimum->UnregisterObserver(leaving), TvkErrorSuccess);
    Select();
    ASSERT_TRUE(Eventually([&] { return staying->Calls() == 2; }));
    EXPECT_EQ(leaving->Calls(), 1);
    // The last leaves: the flat registration goes. A marker on another feature
    // is told of two later writes; notifications run in order, so one still
    // due for the first would have come before.
    ASSERT_EQ(minimum->UnregisterObserver(staying), TvkErrorSuccess);
    NetPointer<Recorder> marker(new Recorder());
    FeaturePtr maximum = Get("TLSchedulerConcurrencyMax");
    ASSERT_EQ(maximum->RegisterObserver(marker), TvkErrorSuccess);
    Select();
    Select();
    ASSERT_TRUE(Eventually([&] { return marker->Calls() >= 2; }));
    EXPECT_EQ(staying->Calls(), 2);
    EXPECT_EQ(leaving->Calls(), 1);
}

TEST_F(SystemFeaturesTest, AFeatureKeptPastResetIsDetached) {
    FeaturePtr duration = Get("GeVDiscoveryAllDuration");
    NetPointer<Recorder> recorder(new Recorder());
    ASSERT_EQ(duration->RegisterObserver(recorder), TvkErrorSuccess);
    mFeatures->Reset();
    int64_t value = 0;
    EXPECT_EQ(duration->GetValue(value), TvkErrorDeviceNotOpen);
    EXPECT_EQ(duration->RegisterObserver(recorder), TvkErrorDeviceNotOpen);
    std::string name;
    EXPECT_EQ(duration->GetName(name), TvkErrorSuccess);
    EXPECT_EQ(name, "GeVDiscoveryAllDuration");
    EXPECT_EQ(recorder.UseCount(), 1u);
    // The container itself serves new objects.
    FeaturePtr again = Get("GeVDiscoveryAllDuration");
    EXPECT_FALSE(again.IsEqualTo(duration));
    EXPECT_EQ(again->GetValue(value), TvkErrorSuccess);
}

// Features come and go, observed, while their notifications are in flight,
// and the container resets under them: nothing is reached after it is gone.
TEST_F(SystemFeaturesTest, FeaturesDroppedWhileNotifiedAreNeverReachedAfterwards) {
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        FeaturePtr selector = Get("TLSchedulerSelector");
        for (int64_t i = 0; !stop; ++i)
            selector->SetValue(i % 3);
    });
    IFeatureObserverPtr observer(new Recorder());
    for (int round = 0; round < 200; ++round) {
        FeaturePtr minimum = Get("TLSchedulerConcurrencyMin");
        // The library keeps one registration per name: the object of the
        // round before may hold it still, while it is being notified.
        const TvkErrorType status = minimum->RegisterObserver(observer);
        EXPECT_TRUE(status == TvkErrorSuccess || status == TvkErrorOther) << status;
        if (round % 20 == 19) mFeatures->Reset();
    }
    stop = true;
    writer.join();
    mFeatures->Reset();
    EXPECT_EQ(observer.UseCount(), 1u);
}

} // namespace
