// Cost of the frame around a flat call when nothing is traced.
#include <benchmark/benchmark.h>

#include "TavikC.h"

namespace {

// Refused at the gate: tag test, checks, gate and normalisation.
void BM_GatedCallBeforeStartup(benchmark::State& aState) {
    int64_t value = 0;
    for (auto _ : aState)
        benchmark::DoNotOptimize(TvkFeatureIntGet(TVK_SYSTEM_HANDLE, "Width", &value));
}
BENCHMARK(BM_GatedCallBeforeStartup)->Threads(1)->Threads(2);

void BM_VersionQuery(benchmark::State& aState) {
    TvkVersionInfo_t info;
    for (auto _ : aState)
        benchmark::DoNotOptimize(TvkVersionQuery(&info, sizeof(info)));
}
BENCHMARK(BM_VersionQuery);

} // namespace
