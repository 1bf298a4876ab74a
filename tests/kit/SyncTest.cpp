#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "Eventually.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"
#include "kit/Junction.h"
#include "kit/Semaphore.h"
#include "kit/Thread.h"

using namespace llk;

namespace {

using test::Eventually;

class SyncTest : public ::testing::Test {
protected:
    uAutoreleasePool mPool;
};

TEST_F(SyncTest, MutexIsRecursiveAndTimesOutForOthers) {
    cMutex* mutex = cMutex::New();
    ASSERT_EQ(mutex->Lock(), 0);
    ASSERT_EQ(mutex->Lock(), 0);
    EXPECT_TRUE(mutex->IsHeld());
    i4 other = kOk;
    std::thread([&] { other = mutex->Lock(20); }).join();
    EXPECT_EQ(other, kTimedOut);
    mutex->Unlock();
    mutex->Unlock();
    std::thread([&] {
        other = mutex->Lock(1000);
        mutex->Unlock();
    }).join();
    EXPECT_EQ(other, kOk);
}

TEST_F(SyncTest, WhistleSignalIsNotRememberedAndFreesTheOldestFirst) {
    cMutex* mutex = cMutex::New();
    cWhistle* whistle = cWhistle::New(mutex);
    ASSERT_NE(whistle, nullptr);
    EXPECT_EQ(cWhistle::New(nullptr), nullptr);

    mutex->Lock();
    EXPECT_EQ(whistle->Signal(false), kOk); // nobody waits: lost
    u4 timeout = 20;
    EXPECT_EQ(whistle->Wait(timeout), kTimedOut);
    EXPECT_EQ(timeout, 0u);
    mutex->Unlock();

    std::atomic<int> first{-1};
    std::atomic<int> freed{0};
    std::atomic<int> waiting{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        // Start one at a time so the arrival order is known.
        threads.emplace_back([&, i] {
            uLock hold(mutex);
            ++waiting;
            i4 status = whistle->Wait();
            if (freed++ == 0) first = i;
            EXPECT_EQ(status, i == 2 ? kCancelled : kOk);
        });
        ASSERT_TRUE(Eventually([&] { return waiting == i + 1; }));
    }
    {
        uLock hold(mutex);
        whistle->Signal(false);
    }
    ASSERT_TRUE(Eventually([&] { return freed == 1; }));
    EXPECT_EQ(first, 0);
    sEnv::Snooze(20);
    EXPECT_EQ(freed, 1); // the other two still wait
    {
        uLock hold(mutex);
        whistle->Signal(false);
        whistle->Cancel(true);
    }
    // Each thread checked its own outcome: the second got the signal, the
    // third the cancel.
    for (auto& t : threads)
        t.join();
}

TEST_F(SyncTest, TimedWhistleWaitReportsTimeLeft) {
    cMutex* mutex = cMutex::New();
    cWhistle* whistle = cWhistle::New(mutex);
    std::atomic<bool> inside{false};
    std::thread signaller([&] {
        ASSERT_TRUE(Eventually([&] { return inside.load(); }));
        uLock hold(mutex);
        whistle->Signal(true);
    });
    uLock hold(mutex);
    inside = true;
    u4 timeout = 60000;
    EXPECT_EQ(whistle->Wait(timeout), kOk);
    EXPECT_GT(timeout, 0u);
    EXPECT_LT(timeout, 60000u + 1);
    mutex->Unlock();
    signaller.join();
    mutex->Lock();
}

TEST_F(SyncTest, SemaphoreWaitsForTheWantedValue) {
    cSemaphore* semaphore = cSemaphore::New(false);
    u4 zero = 0;
    EXPECT_EQ(semaphore->Wait(true, zero), kOk); // no test at all with 0
    u4 shortWait = 10;
    EXPECT_EQ(semaphore->Wait(true, shortWait), kTimedOut);
    std::thread t([&] {
        sEnv::Snooze(5);
        semaphore->Signal(true);
    });
    EXPECT_EQ(semaphore->Wait(true), kOk);
    t.join();
    EXPECT_TRUE(semaphore->State());
}

TEST_F(SyncTest, ClosedJunctionRefusesAtOnceAndLeavesStillWork) {
    cJunction* junction = cJunction::New();
    ASSERT_EQ(junction->Enter(0), kOk);
    ASSERT_EQ(junction->Enter(0), kOk);
    junction->Latch(false); // returns with users inside
    EXPECT_EQ(junction->Enter(0), kRefused);
    EXPECT_EQ(junction->Enter(10), kTimedOut);
    EXPECT_EQ(junction->Users(), 2u);

    std::atomic<bool> drained{false};
    std::thread waiter([&] {
        EXPECT_EQ(junction->Wait(0), kOk);
        drained = true;
    });
    junction->Leave();
    sEnv::Snooze(10);
    EXPECT_FALSE(drained);
    junction->Leave();
    waiter.join();
    EXPECT_TRUE(drained);
    junction->Leave(); // never below zero
    EXPECT_EQ(junction->Users(), 0u);

    std::thread opener([&] {
        sEnv::Snooze(5);
        junction->Latch(true);
    });
    EXPECT_EQ(junction->Enter(60000), kOk); // waits for the gate to open
    opener.join();
    EXPECT_EQ(junction->CloseAndWait(10), kTimedOut);
    junction->CloseAndLeave();
    EXPECT_EQ(junction->CloseAndWait(10), kOk);
}

class cCounter : public pThread {
public:
    static cCounter* New() { return Make<cCounter>(); }
    i4 Run() override {
        while (!mStop.load()) {
            ++mTurns;
            sEnv::Snooze(1);
        }
        return 42;
    }
    i4 Stop() override {
        mStop = true;
        return kOk;
    }
    std::atomic<bool> mStop{false};
    std::atomic<int> mTurns{0};
};

class cIdle : public pThread {
public:
    static cIdle* New() { return Make<cIdle>(); }
};

TEST_F(SyncTest, ThreadStartsOnceStopsAndJoins) {
    cCounter* thread = cCounter::New();
    ASSERT_EQ(thread->Start(), kOk);
    ASSERT_TRUE(Eventually([&] { return thread->mTurns > 0; }));
    EXPECT_EQ(thread->Start(), kOk); // already running: nothing new
    EXPECT_TRUE(thread->IsRunning());
    EXPECT_EQ(thread->Join(5), kTimedOut);
    EXPECT_EQ(thread->StopAndJoin(0), kOk);
    EXPECT_FALSE(thread->IsRunning());
    EXPECT_EQ(thread->ExitCode(), 42u);

    cIdle* idle = cIdle::New();
    EXPECT_EQ(idle->StopAndJoin(0), kNotImplemented);
    ASSERT_EQ(idle->Start(), kOk);
    EXPECT_EQ(idle->Join(0), kOk);
    i4 level = -1;
    idle->GetPriority(level);
    EXPECT_EQ(level, 3);
}

} // namespace
