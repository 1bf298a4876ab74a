// What the object API adds to the flat calls beneath it, measured in one run
// on the camera simulator: an integer read through IntFeature::GetValue
// against TvkFeatureIntGet on the same feature.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

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
constexpr int kBlock = 256;

// Blocks of flat reads and of object reads take turns, so that both see the
// same machine; the counters are the mean time of one read each way.
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
    std::chrono::duration<double, std::micro> flat{0}, object{0};
    for (auto _ : aState) {
        auto start = Clock::now();
        for (int i = 0; i < kBlock; ++i)
            benchmark::DoNotOptimize(TvkFeatureIntGet(TVK_SYSTEM_HANDLE, kInteger, &value));
        auto middle = Clock::now();
        for (int i = 0; i < kBlock; ++i)
            benchmark::DoNotOptimize(feature->GetValue(value));
        auto end = Clock::now();
        flat += middle - start;
        object += end - middle;
    }
    const double reads = static_cast<double>(aState.iterations()) * kBlock;
    aState.counters["flat_us"] = flat.count() / reads;
    aState.counters["object_us"] = object.count() / reads;
    aState.counters["overhead_pct"] = 100.0 * (object.count() - flat.count()) / flat.count();
}
BENCHMARK(BM_IntegerRead_FlatAgainstObject)->Iterations(200)->UseRealTime();

} // namespace
