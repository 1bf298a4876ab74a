// Feature calls through the whole path (gate, proxy, actor thread and back)
// on the system, with the camera simulator loaded: the latency of a cached
// integer read, and how long a write takes to reach 100 callbacks.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <utility>
#include <vector>

#include "TavikC.h"

namespace {

using tClock = std::chrono::steady_clock;

// The library started once for the program, on the simulator unless a
// search path is given.
struct tStarted {
    tStarted() {
        setenv("GENICAM_GENTL64_PATH",
               std::filesystem::path(TAVIK_SIM_PRODUCER).parent_path().c_str(), 0);
        status = TvkStartup();
    }
    ~tStarted() { TvkShutdown(); }
    TvkError_t status;
};

bool Started(benchmark::State& aState) {
    static tStarted started;
    if (started.status == TvkErrorSuccess) return true;
    aState.SkipWithError("start-up failed");
    return false;
}

// A cached integer of the system: its register is read once, then served
// from the kernel's cache on the actor's thread.
constexpr const char* kCachedInteger = "GeVDiscoveryAllDuration";

double Percentile(std::vector<double>& aMicros, double aFraction) {
    size_t at = static_cast<size_t>(aFraction * static_cast<double>(aMicros.size() - 1));
    std::nth_element(aMicros.begin(), aMicros.begin() + static_cast<long>(at), aMicros.end());
    return aMicros[at];
}

// Per caller: every call timed on its own, so the median and the 99th
// percentile can be told (averaged over the callers).
void BM_FeatureIntGetCached(benchmark::State& aState) {
    if (!Started(aState)) return;
    int64_t value = 0;
    if (TvkFeatureIntGet(TVK_SYSTEM_HANDLE, kCachedInteger, &value) != TvkErrorSuccess) {
        aState.SkipWithError("the integer cannot be read");
        return;
    }
    std::vector<double> micros;
    micros.reserve(static_cast<size_t>(aState.max_iterations));
    for (auto _ : aState) {
        auto start = tClock::now();
        TvkError_t status = TvkFeatureIntGet(TVK_SYSTEM_HANDLE, kCachedInteger, &value);
        auto end = tClock::now();
        benchmark::DoNotOptimize(status);
        micros.push_back(std::chrono::duration<double, std::micro>(end - start).count());
    }
    aState.counters["median_us"] =
        benchmark::Counter(Percentile(micros, 0.5), benchmark::Counter::kAvgThreads);
    aState.counters["p99_us"] =
        benchmark::Counter(Percentile(micros, 0.99), benchmark::Counter::kAvgThreads);
}
BENCHMARK(BM_FeatureIntGetCached)->Iterations(100000)->Threads(1)->UseRealTime();
BENCHMARK(BM_FeatureIntGetCached)->Iterations(100000)->Threads(4)->UseRealTime();

constexpr int kCallbacks = 100;
std::atomic<int> gCalls{0};

// A hundred distinct callbacks: one callback is registered once on a name.
template <int N> void Callback(const TvkHandle_t, const char*, void*) {
    gCalls.fetch_add(1, std::memory_order_release);
}
template <int... N> constexpr auto MakeCallbacks(std::integer_sequence<int, N...>) {
    return std::array<TvkInvalidationCallback, sizeof...(N)>{&Callback<N>...};
}
constexpr auto kAll = MakeCallbacks(std::make_integer_sequence<int, kCallbacks>{});

// From the write until the last of the callbacks it reached has run.
void BM_WriteReaches100Callbacks(benchmark::State& aState) {
    if (!Started(aState)) return;
    const char* name = "TLSchedulerConcurrencyMin";
    for (TvkInvalidationCallback callback : kAll)
        if (TvkFeatureInvalidationRegister(TVK_SYSTEM_HANDLE, name, callback, nullptr) !=
            TvkErrorSuccess) {
            aState.SkipWithError("registration failed");
            return;
        }
    int64_t value = 0;
    TvkFeatureIntGet(TVK_SYSTEM_HANDLE, name, &value);
    for (auto _ : aState) {
        int target = gCalls.load() + kCallbacks;
        auto start = tClock::now();
        if (TvkFeatureIntSet(TVK_SYSTEM_HANDLE, name, value) != TvkErrorSuccess) {
            aState.SkipWithError("write failed");
            break;
        }
        while (gCalls.load(std::memory_order_acquire) < target) {
        }
        aState.SetIterationTime(std::chrono::duration<double>(tClock::now() - start).count());
    }
    for (TvkInvalidationCallback callback : kAll)
        TvkFeatureInvalidationUnregister(TVK_SYSTEM_HANDLE, name, callback);
}
BENCHMARK(BM_WriteReaches100Callbacks)->UseManualTime()->Unit(benchmark::kMicrosecond);

} // namespace
