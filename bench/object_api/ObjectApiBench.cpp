// What the object API adds to the flat calls beneath it, measured in one run
// on the camera simulator: an integer read through IntFeature::GetValue
// against TvkFeatureIntGet on the same feature.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include <TavikCPP/TavikCPP.h>

namespace {

using namespace QRX::TvkAPI;
using Clock = std::chrono::steady_clock;

// The library started once for the program, on the simulator unless a
// search path is given.
struct Started {
    Started() {
        setenv("GENICAM_GENTL64_PATH",
               std::filesystem::path(TAVIK_SIM_PRODUCER).parent_path().c_str(), 0);
        status = TavikSystem::GetInstance().Startup();
    }
    ~Started() { TavikSystem::GetInstance().Shutdown(); }
    TvkErrorType status;
};

bool IsStarted(benchmark::State& aState) {
    static Started started;
    if (started.status == TvkErrorSuccess) return true;
    aState.SkipWithError("start-up failed");
    return false;
}

// The system's own features, as a container.
class SystemFeatures : public FeatureContainer {
public:
    SystemFeatures() { SetHandle(TVK_SYSTEM_HANDLE); }
};

// A cached integer of the system, served from the kernel's cache.
constexpr const char* kInteger = "GeVDiscoveryAllDuration";

double Median(std::vector<double>& aMicros) {
    auto middle = aMicros.begin() + static_cast<long>(aMicros.size() / 2);
    std::nth_element(aMicros.begin(), middle, aMicros.end());
    return *middle;
}

// A flat read and an object read take turns, each timed on its own, so that
// both see the same machine; medians keep other programs' bursts out.
void BM_IntegerRead_FlatAgainstObject(benchmark::State& aState) {
    if (!IsStarted(aState)) return;
    SystemFeatures features;
    FeaturePtr feature;
    int64_t value = 0;
    if (features.GetFeatureByName(kInteger, feature) != TvkErrorSuccess ||
        feature->GetValue(value) != TvkErrorSuccess) {
        aState.SkipWithError("the integer cannot be read");
        return;
    }
    std::vector<double> flat, object;
    flat.reserve(static_cast<size_t>(aState.max_iterations));
    object.reserve(static_cast<size_t>(aState.max_iterations));
    auto timed = [](std::vector<double>& rMicros, auto aRead) {
        const auto start = Clock::now();
        benchmark::DoNotOptimize(aRead());
        rMicros.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    };
    bool flatFirst = true;
    for (auto _ : aState) {
        auto readFlat = [&] { return TvkFeatureIntGet(TVK_SYSTEM_HANDLE, kInteger, &value); };
        auto readObject = [&] { return feature->GetValue(value); };
        if (flatFirst) {
            timed(flat, readFlat);
            timed(object, readObject);
        } else {
            timed(object, readObject);
            timed(flat, readFlat);
        }
        flatFirst = !flatFirst;
    }
    const double flatMedian = Median(flat), objectMedian = Median(object);
    aState.counters["flat_median_us"] = flatMedian;
    aState.counters["object_median_us"] = objectMedian;
    aState.counters["overhead_pct"] = 100.0 * (objectMedian - flatMedian) / flatMedian;
}
BENCHMARK(BM_IntegerRead_FlatAgainstObject)->Iterations(20000)->UseRealTime();

} // namespace
