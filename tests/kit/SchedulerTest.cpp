#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Eventually.h"
#include "Probe.h"
#include "kit/ActiveScheduler.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"

using namespace llk;

namespace {

using test::Eventually;

// Records the events it runs and catches concurrent entries.
class cRecorder : public pActiveObject {
public:
    static cRecorder* New(char aName, u4 aWorkMicros = 0) {
        return Make<cRecorder>(aName, aWorkMicros);
    }
    i4 Initialize(char aName, u4 aWorkMicros) {
        mName = aName;
        mWork = aWorkMicros;
        return kOk;
    }
    void OnExecute(const tActiveCode& aCode, pObject* aData) override {
        if (mInside.fetch_add(1) != 0) mOverlaps++;
        if (mWork) {
            double end = sEnv::GetElapsedTime() + mWork * 1e-6;
            while (sEnv::GetElapsedTime() < end) {
            }
        }
        {
            std::lock_guard<std::mutex> hold(*mLog);
            std::string entry(1, mName);
            entry += std::to_string(aCode.aUid);
            mTrace->push_back(entry);
        }
        if (aData) mDataSeen++;
        mInside.fetch_sub(1);
        mRuns++;
        if (mOnRun) mOnRun(aCode);
    }
    char mName = '?';
    u4 mWork = 0;
    std::atomic<int> mInside{0}, mOverlaps{0}, mRuns{0}, mDataSeen{0};
    std::mutex* mLog = nullptr;
    std::vector<std::string>* mTrace = nullptr;
    std::function<void(const tActiveCode&)> mOnRun;
};

class SchedulerTest : public ::testing::Test {
protected:
    cActiveScheduler* Make(u4 aMin, u4 aMax, u4 aStride, u4 aTimeout = 150) {
        cActiveScheduler::tSetup setup{aMin, aMax, aStride, aTimeout, 3};
        return cActiveScheduler::New(setup);
    }
    cRecorder* Recorder(char aName, u4 aWork = 0) {
        cRecorder* r = cRecorder::New(aName, aWork);
        r->mLog = &mLog;
        r->mTrace = &mTrace;
        return r;
    }
    u4 Runners(cActiveScheduler* aScheduler) {
        cActiveScheduler::tStats stats{};
        aScheduler->GetStats(stats);
        return stats.busy + stats.idle;
    }
    uAutoreleasePool mPool;
    std::mutex mLog;
    std::vector<std::string> mTrace;
};

TEST_F(SchedulerTest, RunnersAreMadeLazilyAndRetireWhenIdle) {
    cActiveScheduler* scheduler = Make(2, 6, 5, 30);
    cActiveScheduler::tSetup setup{};
    scheduler->GetSetup(setup);
    EXPECT_EQ(setup.concurrencyMin, 2u);
    EXPECT_EQ(Runners(scheduler), 0u);

    std::vector<cRecorder*> objects;
    for (char c = 'a'; c < 'g'; ++c) {
        objects.push_back(Recorder(c, 2000));
        ASSERT_EQ(scheduler->Attach(objects.back(), 0), kOk);
    }
    EXPECT_EQ(scheduler->Attach(objects[0], 0), kDuplicate);
    ASSERT_EQ(scheduler->Schedule(objects[0], MakeActiveCode(1, 0, 0), nullptr, 0), kOk);
    EXPECT_EQ(Runners(scheduler), 1u);
    // Objects that become ready while every runner is busy grow the pool.
    for (int round = 0; round < 20; ++round)
        for (auto* o : objects) {
            scheduler->Schedule(o, MakeActiveCode(1, 0, 0), nullptr, 0);
            if (round == 0) sEnv::Snooze(1);
        }
    ASSERT_TRUE(Eventually([&] {
        int runs = 0;
        for (auto* o : objects)
            runs += o->mRuns;
        return runs == 121;
    }));
    cActiveScheduler::tStats stats{};
    scheduler->GetStats(stats);
    EXPECT_GT(stats.peakBusy, 1u);
    EXPECT_LE(stats.peakBusy, 6u);
    // Idle runners retire down to the minimum.
    ASSERT_TRUE(Eventually([&] { return Runners(scheduler) <= 2; }));
    for (auto* o : objects)
        EXPECT_EQ(o->mOverlaps, 0);

    setup.concurrencyMin = 0;
    scheduler->SetSetup(setup);
    scheduler->GetSetup(setup);
    EXPECT_EQ(setup.concurrencyMin, 1u);
}

TEST_F(SchedulerTest, OneRunnerNeverRunsTwoObjectsAtOnce) {
    cActiveScheduler* scheduler = Make(1, 1, 5);
    std::vector<cRecorder*> objects{Recorder('a', 200), Recorder('b', 200)};
    for (auto* o : objects)
        scheduler->Attach(o, 0);
    for (int i = 0; i < 50; ++i)
        for (auto* o : objects)
            scheduler->Schedule(o, MakeActiveCode(i, 0, 0), nullptr, 0);
    ASSERT_TRUE(Eventually([&] { return objects[0]->mRuns + objects[1]->mRuns == 100; }));
    EXPECT_EQ(objects[0]->mOverlaps + objects[1]->mOverlaps, 0);
    cActiveScheduler::tStats stats{};
    scheduler->GetStats(stats);
    EXPECT_EQ(stats.peakBusy, 1u);
}

TEST_F(SchedulerTest, StrideSharesTheRunnerBetweenEqualObjects) {
    cActiveScheduler* scheduler = Make(1, 1, 5);
    cRecorder* a = Recorder('A');
    cRecorder* b = Recorder('B');
    scheduler->Attach(a, 0);
    scheduler->Attach(b, 0);
    // Hold the runner in a blocker so both queues fill first.
    cRecorder* gate = Recorder('G');
    std::atomic<bool> open{false};
    gate->mOnRun = [&](const tActiveCode&) {
        while (!open.load())
            sEnv::Snooze(1);
    };
    scheduler->Attach(gate, 0);
    scheduler->Schedule(gate, MakeActiveCode(0, 0, 0), nullptr, 0);
    ASSERT_TRUE(Eventually([&] { return scheduler->IsRunning(gate); }));
    for (u4 i = 0; i < 12; ++i)
        scheduler->Schedule(a, MakeActiveCode(i, 0, 0), nullptr, 0);
    scheduler->Schedule(b, MakeActiveCode(0, 0, 0), nullptr, 0);
    open = true;
    ASSERT_TRUE(Eventually([&] { return a->mRuns == 12 && b->mRuns == 1; }));
    std::lock_guard<std::mutex> hold(mLog);
    std::vector<std::string> expected = {"G0", "A0", "A1", "A2", "A3", "A4",  "B0",
                                         "A5", "A6", "A7", "A8", "A9", "A10", "A11"};
    EXPECT_EQ(mTrace, expected);
}

TEST_F(SchedulerTest, StrideZeroRunsEverythingInOneTurnAndEventsKeepTheirPriority) {
    cActiveScheduler* scheduler = Make(1, 1, 0);
    cRecorder* a = Recorder('A');
    scheduler->Attach(a, 0);
    int added = 0;
    a->mOnRun = [&](const tActiveCode& aCode) {
        // Events scheduled during the turn run in the same turn.
        if (aCode.aUid == 0 && added++ == 0)
            scheduler->Schedule(a, MakeActiveCode(9, 0, 0), nullptr, 0);
    };
    cRecorder* gate = Recorder('G');
    std::atomic<bool> open{false};
    gate->mOnRun = [&](const tActiveCode&) {
        while (!open.load())
            sEnv::Snooze(1);
    };
    scheduler->Attach(gate, 0);
    scheduler->Schedule(gate, MakeActiveCode(0, 0, 0), nullptr, 0);
    ASSERT_TRUE(Eventually([&] { return scheduler->IsRunning(gate); }));
    scheduler->Schedule(a, MakeActiveCode(0, 0, 0), nullptr, 1);
    scheduler->Schedule(a, MakeActiveCode(1, 0, 0), nullptr, 200);
    open = true;
    ASSERT_TRUE(Eventually([&] { return a->mRuns == 3; }));
    std::lock_guard<std::mutex> hold(mLog);
    EXPECT_EQ(mTrace, (std::vector<std::string>{"G0", "A1", "A0", "A9"}));
}

TEST_F(SchedulerTest, ScheduleRefusalsKillAndDetach) {
    cActiveScheduler* scheduler = Make(1, 2, 5);
    cRecorder* a = Recorder('A');
    EXPECT_EQ(scheduler->Schedule(a, MakeActiveCode(0, 0, 0), nullptr, 0), kNotFound);
    scheduler->Attach(a, 0);
    std::atomic<bool> release{false};
    a->mOnRun = [&](const tActiveCode&) {
        while (!release.load())
            sEnv::Snooze(1);
    };
    scheduler->Schedule(a, MakeActiveCode(0, 0, 0), nullptr, 0);
    scheduler->Schedule(a, MakeActiveCode(1, 0, 0), nullptr, 0);
    ASSERT_TRUE(Eventually([&] { return scheduler->IsRunning(a); }));
    std::atomic<bool> killed{false};
    std::thread killer([&] {
        EXPECT_EQ(scheduler->Kill(a, true), kOk);
        killed = true;
    });
    // The kill is in force once new events are refused; any the probe got in
    // before then never run either. The kill waits for the event in hand.
    ASSERT_TRUE(Eventually(
        [&] { return scheduler->Schedule(a, MakeActiveCode(9, 0, 0), nullptr, 0) == kRefused; }));
    EXPECT_FALSE(killed);
    release = true;
    killer.join();
    // The event in hand finished; the second never ran.
    EXPECT_EQ(a->mRuns, 1);
    EXPECT_EQ(scheduler->Schedule(a, MakeActiveCode(2, 0, 0), nullptr, 0), kRefused);
    EXPECT_TRUE(scheduler->IsAttached(a));
    EXPECT_EQ(scheduler->Detach(a, true), kOk);
    EXPECT_FALSE(scheduler->IsAttached(a));
    EXPECT_EQ(scheduler->Detach(a, true), kNotFound);
}

TEST_F(SchedulerTest, EventDataIsReleasedAfterItsEventAndCancelRemovesPending) {
    test::gProbesDestroyed = 0;
    cActiveScheduler* scheduler = Make(1, 1, 5);
    cRecorder* a = Recorder('A');
    scheduler->Attach(a, 0);
    std::atomic<bool> open{false};
    std::vector<int> destroyedBefore;
    a->mOnRun = [&](const tActiveCode& aCode) {
        {
            std::lock_guard<std::mutex> hold(mLog);
            destroyedBefore.push_back(test::gProbesDestroyed.load());
        }
        if (aCode.aUid == 0)
            while (!open.load())
                sEnv::Snooze(1);
    };
    {
        uAutoreleasePool pool;
        scheduler->Schedule(a, MakeActiveCode(0, 0, 0), test::cProbe::New(), 0);
        ASSERT_TRUE(Eventually([&] { return scheduler->IsRunning(a); }));
        test::cProbe* data = test::cProbe::New();
        scheduler->Schedule(a, MakeActiveCode(1, 0, 0), data, 0);
        scheduler->Schedule(a, MakeActiveCode(2, 7, 0), nullptr, 0);
        scheduler->Schedule(a, MakeActiveCode(2, 7, 1), nullptr, 0);
        EXPECT_TRUE(scheduler->IsPending(a, MakeActiveCode(2, 7, 99), nullptr));
        EXPECT_EQ(scheduler->Cancel(a, MakeActiveCode(2, 7, 0), nullptr), kOk);
        EXPECT_FALSE(scheduler->IsPending(a, MakeActiveCode(2, 7, 0), nullptr));
        EXPECT_TRUE(scheduler->IsPending(a, MakeActiveCode(1, 0, 0), data, 0));
    }
    open = true;
    ASSERT_TRUE(Eventually([&] { return a->mRuns == 2; }));
    // The first event's data died before the second event ran.
    std::lock_guard<std::mutex> hold(mLog);
    EXPECT_EQ(destroyedBefore, (std::vector<int>{0, 1}));
    EXPECT_TRUE(Eventually([] { return test::gProbesDestroyed == 2; }));
}

TEST_F(SchedulerTest, DestroyingTheSchedulerEndsItsRunners) {
    for (int i = 0; i < 5; ++i) {
        cActiveScheduler* scheduler = Retained(Make(1, 4, 5));
        cRecorder* a = Recorder('A');
        scheduler->Attach(a, 0);
        for (u4 k = 0; k < 50; ++k)
            scheduler->Schedule(a, MakeActiveCode(k, 0, 0), nullptr, 0);
        scheduler->Release();
        mPool.Sink();
    }
}

} // namespace
