// Discovery at scale: TvkCamerasList with 16, 64 and 256 simulated cameras
// on 16 interfaces, right after start-up and right after a camera was
// plugged in. The list is renewed from every interface on each call.
#include <benchmark/benchmark.h>

#include <dlfcn.h>
#include <sstream>
#include <string>
#include <vector>

#include "Simulator.h"
#include "TavikSimControl.h"

namespace {

constexpr int kInterfaces = 16;
// 16 interfaces sharing the cameras, and one more camera, unplugged, that
// the second benchmark plugs in.
void StartWithCameras(const benchmark::State& aState) {
    std::ostringstream config;
    config << "<TavikSim>\n";
    for (int i = 0; i < kInterfaces; ++i) {
        config << "<Interface id=\"IF-" << i << "\">";
        for (int c = 0; c < aState.range(0) / kInterfaces; ++c)
            config << "<Camera id=\"Cam-" << i << "-" << c << "\"/>";
        if (i == 0) config << "<Camera id=\"Late\" plugged=\"false\"/>";
        config << "</Interface>\n";
    }
    config << "</TavikSim>\n";
    bench::StartSimulator(config.str());
}

uint32_t ListCameras(std::vector<TvkCameraInfo_t>& aCameras) {
    uint32_t found = 0;
    TvkCamerasList(aCameras.data(), static_cast<uint32_t>(aCameras.size()), &found,
                   sizeof(TvkCameraInfo_t));
    return found;
}

void BM_CamerasList(benchmark::State& aState) {
    std::vector<TvkCameraInfo_t> cameras(aState.range(0) + 1);
    uint32_t found = 0;
    for (auto _ : aState)
        found = ListCameras(cameras);
    aState.counters["cameras"] = found;
    aState.SetComplexityN(aState.range(0));
}
// 16, 64 and 256 cameras, each size after its own start-up.
void AtScale(benchmark::internal::Benchmark* aBenchmark) {
    aBenchmark->Setup(StartWithCameras)
        ->Teardown(bench::StopSimulator)
        ->Arg(16)
        ->Arg(64)
        ->Arg(256)
        ->Unit(benchmark::kMillisecond)
        ->Complexity(benchmark::oN);
}
BENCHMARK(BM_CamerasList)->Apply(AtScale);

void BM_CamerasListAfterPlug(benchmark::State& aState) {
    void* module = dlopen(TAVIK_SIM_PRODUCER, RTLD_NOW | RTLD_NOLOAD);
    auto control = reinterpret_cast<TavikSimControl_t>(dlsym(module, "TavikSimControl"));
    std::vector<TvkCameraInfo_t> cameras(aState.range(0) + 1);
    uint32_t found = 0;
    for (auto _ : aState) {
        aState.PauseTiming();
        control("unplug Late");
        ListCameras(cameras);
        control("plug Late");
        aState.ResumeTiming();
        found = ListCameras(cameras);
    }
    dlclose(module);
    aState.counters["cameras"] = found;
    aState.SetComplexityN(aState.range(0));
}
BENCHMARK(BM_CamerasListAfterPlug)->Apply(AtScale);

} // namespace
