#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <vector>

#include "Eventually.h"
#include "kit/ActiveOffloader.h"
#include "kit/ActiveTicker.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"

using namespace llk;

namespace {

using test::Eventually;

class cCounter : public pActiveObject {
public:
    static cCounter* New() { return Make<cCounter>(); }
    void OnExecute(const tActiveCode& aCode, pObject* aData) override {
        std::lock_guard<std::mutex> hold(mLock);
        mTimes.push_back(sEnv::GetElapsedTime());
        mUids.push_back(aCode.aUid);
        if (auto* function = dynamic_cast<cFunction*>(aData)) mDone.push_back(function->IsDone());
    }
    size_t Count() {
        std::lock_guard<std::mutex> hold(mLock);
        return mTimes.size();
    }
    std::mutex mLock;
    std::vector<double> mTimes;
    std::vector<u4> mUids;
    std::vector<bool> mDone;
};

class TickerTest : public ::testing::Test {
protected:
    void SetUp() override {
        cActiveScheduler::tSetup setup{1, 2, 5, 150, 3};
        mScheduler = Retained(cActiveScheduler::New(setup));
        mCounter = Retained(cCounter::New());
        mScheduler->Attach(mCounter, 0);
    }
    void TearDown() override {
        mScheduler->Detach(mCounter, true);
        ReleaseAndClear(mCounter);
        ReleaseAndClear(mScheduler);
    }
    uAutoreleasePool mPool;
    cActiveScheduler* mScheduler = nullptr;
    cCounter* mCounter = nullptr;
};

TEST_F(TickerTest, RepeatingTickFiresAtItsPeriod) {
    cActiveTicker* ticker = cActiveTicker::New(mScheduler);
    ASSERT_NE(ticker, nullptr);
    ASSERT_EQ(ticker->Start(mCounter, MakeActiveCode(7, 0, 0), nullptr, 50, true), kOk);
    EXPECT_EQ(ticker->Start(mCounter, MakeActiveCode(7, 0, 0), nullptr, 50, true), kDuplicate);
    ASSERT_TRUE(Eventually([&] { return mCounter->Count() >= 6; }));
    EXPECT_EQ(ticker->Cease(mCounter, MakeActiveCode(7, 0, 0)), kOk);
    std::lock_guard<std::mutex> hold(mCounter->mLock);
    // Roughly the period apart: never much earlier (10 ms window), and the
    // average not far off even on a loaded machine.
    double total = mCounter->mTimes.back() - mCounter->mTimes.front();
    double average = total / static_cast<double>(mCounter->mTimes.size() - 1);
    EXPECT_GT(average, 0.035);
    EXPECT_LT(average, 0.5);
}

TEST_F(TickerTest, OneShotStaysUntilCeasedAndResetRearmsIt) {
    cActiveTicker* ticker = cActiveTicker::New(mScheduler);
    ASSERT_EQ(ticker->Start(mCounter, MakeActiveCode(3, 0, 0), nullptr, 20, false), kOk);
    ASSERT_TRUE(Eventually([&] { return mCounter->Count() == 1; }));
    sEnv::Snooze(60);
    EXPECT_EQ(mCounter->Count(), 1u);
    EXPECT_EQ(ticker->Start(mCounter, MakeActiveCode(3, 0, 0), nullptr, 20, false), kDuplicate);
    EXPECT_EQ(ticker->Reset(mCounter, MakeActiveCode(3, 0, 0), 0), kOk);
    ASSERT_TRUE(Eventually([&] { return mCounter->Count() == 2; }));
    EXPECT_EQ(ticker->Cease(mCounter, MakeActiveCode(9, 0, 0)), kDuplicate);
    EXPECT_EQ(ticker->Cease(mCounter, MakeActiveCode(0, 0, 0)), kOk);
    EXPECT_EQ(ticker->Cease(mCounter, MakeActiveCode(0, 0, 0)), kNotFound);
    EXPECT_EQ(ticker->Reset(mCounter, MakeActiveCode(3, 0, 0), 0), kNotFound);
}

std::atomic<int> gSlowStarted{0};

pObject* Slow(pObject*, pObject*) {
    ++gSlowStarted;
    sEnv::Snooze(30);
    return nullptr;
}

class cDelegate : public cActiveOffloader::pDelegate {
public:
    void OnOffloaderDidExecute(cFunction*, bool aScheduled) override {
        (aScheduled ? scheduledRuns : plainRuns)++;
    }
    void OnOffloaderDidCancel(cFunction*, bool) override { cancels++; }
    std::atomic<int> plainRuns{0}, scheduledRuns{0}, cancels{0};
};

TEST_F(TickerTest, OffloaderRunsReportsAndCancels) {
    cDelegate delegate;
    cActiveOffloader* offloader = cActiveOffloader::New({3}, mScheduler, &delegate);
    ASSERT_NE(offloader, nullptr);
    cFunction* first = cFunction::New(true, &Slow);
    cFunction* second = cFunction::New(false, &Slow);
    cFunction* third = cFunction::New(false, &Slow);
    ASSERT_EQ(offloader->Submit(mCounter, first, 0), kOk);
    ASSERT_EQ(first->Wait(0), kOk);
    ASSERT_TRUE(Eventually([&] { return delegate.plainRuns == 1; }));

    // Hold the peon with a slow job, queue two more, cancel them.
    cFunction* blocker = cFunction::New(true, &Slow);
    gSlowStarted = 0;
    offloader->Submit(mCounter, blocker, MakeActiveCode(5, 0, 0), 0);
    ASSERT_TRUE(Eventually([] { return gSlowStarted == 1; }));
    offloader->Submit(mCounter, second, MakeActiveCode(6, 0, 0), 0);
    offloader->Submit(mCounter, third, 0);
    EXPECT_EQ(offloader->Cancel(mCounter, nullptr, true), kOk);
    ASSERT_TRUE(Eventually([&] { return mCounter->Count() == 2; }));
    EXPECT_EQ(delegate.cancels, 2);
    EXPECT_FALSE(second->IsDone());
    std::lock_guard<std::mutex> hold(mCounter->mLock);
    // A cancelled job with a code still reaches its object, not run.
    ASSERT_EQ(mCounter->mDone.size(), 2u);
    for (size_t i = 0; i < 2; ++i)
        EXPECT_EQ(mCounter->mDone[i], mCounter->mUids[i] == 5) << mCounter->mUids[i];

    offloader->Close();
    EXPECT_EQ(offloader->Submit(mCounter, third, 0), kRefused);
}

// A job may end its own object's work, as an object released from its own
// callback does: the cancel returns instead of waiting for itself.
cActiveOffloader* gOffloader = nullptr;
pActiveObject* gObject = nullptr;
pObject* CancelOwnWork(pObject*, pObject*) {
    gOffloader->Cancel(gObject, nullptr, true);
    return nullptr;
}

TEST_F(TickerTest, AJobCancellingItsOwnObjectDoesNotWaitForItself) {
    cActiveOffloader* offloader = cActiveOffloader::New({3}, mScheduler, nullptr);
    ASSERT_NE(offloader, nullptr);
    gOffloader = offloader;
    gObject = mCounter;
    cFunction* job = cFunction::New(true, &CancelOwnWork);
    ASSERT_EQ(offloader->Submit(mCounter, job, 0), kOk);
    EXPECT_EQ(job->Wait(5000), kOk);
    offloader->Close();
}

} // namespace
