// Start-up and shutdown called from several threads at once.
#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <thread>
#include <vector>

#include "FlatFixture.h"
#include "TavikC.h"

namespace {

// Polls a condition that another thread makes true, for up to ten seconds.
template <class F> bool Eventually(F aCondition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!aCondition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

class StartStopTest : public test::cFlatFixture {
protected:
    // The simulator, closing its transport layer slowly. It has no camera:
    // start-up needs none, and building a camera's register space costs more
    // than the rest of a start under the thread sanitizer.
    void SlowClose(unsigned aDelayMs) {
        ConfigureSimulator("<TavikSim><Fault call=\"TLClose\" delay=\"" + std::to_string(aDelayMs) +
                           "\"/></TavikSim>");
        SearchSimulator();
    }
    // Whether a gated call passes the gate.
    static bool Admitted() {
        int64_t value = 0;
        return TvkFeatureIntGet(TVK_SYSTEM_HANDLE, "Width", &value) != TvkErrorApiNotStarted;
    }
    // A shutdown on a thread of its own, returned once it is tearing down:
    // the gate is closed while the producer is still loaded.
    std::thread ShutdownUnderWay() {
        std::thread stopper([] { TvkShutdown(); });
        EXPECT_TRUE(Eventually([] { return !Admitted(); }));
        EXPECT_TRUE(SimulatorLoaded());
        return stopper;
    }
};

TEST_F(StartStopTest, ASecondShutdownWaitsForTheFirstToFinish) {
    SlowClose(200);
    ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
    std::thread first = ShutdownUnderWay();
    TvkShutdown();
    // The producer is closed and unloaded by the time the second returns.
    EXPECT_FALSE(SimulatorLoaded());
    first.join();
    EXPECT_FALSE(Admitted());
}

TEST_F(StartStopTest, AStartupDuringAShutdownWaitsForItThenStarts) {
    SlowClose(200);
    ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
    std::thread stopper = ShutdownUnderWay();
    EXPECT_EQ(TvkStartup(), TvkErrorSuccess);
    stopper.join();
    // Started after the shutdown, not swallowed by it.
    EXPECT_TRUE(Admitted());
    EXPECT_TRUE(SimulatorLoaded());
}

// Sixteen threads start and stop the library together, a hundred times, with
// a producer that is slow to close: in turn nearly all start while one stops,
// and nearly all stop while one starts. Every start finds the producer; the
// library ends stopped or started, never in between.
TEST_F(StartStopTest, SixteenThreadsStartAndStopAHundredTimes) {
    SlowClose(1);
    constexpr int kThreads = 16;
    std::barrier together(kThreads);
    std::atomic<int> failed{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (int cycle = 0; cycle < 100; ++cycle) {
                together.arrive_and_wait();
                // All threads but one start (or stop) at once; the one left
                // does the opposite.
                if ((cycle % 2 == 0) != (t == cycle % kThreads)) {
                    if (TvkStartup() != TvkErrorSuccess) ++failed;
                    Admitted();
                } else {
                    TvkShutdown();
                }
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(failed, 0);
    TvkShutdown();
    EXPECT_FALSE(Admitted());
    EXPECT_FALSE(SimulatorLoaded());
    ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
    EXPECT_TRUE(Admitted());
    EXPECT_TRUE(SimulatorLoaded());
}

} // namespace
