// The hot paths of every viewer, next to memcpy of the same bytes and, where
// installed, OpenCV's bilinear demosaic on one thread.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "TavikImageTransform.h"

#ifdef TAVIK_WITH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr uint32_t kWidth = 2592, kHeight = 1944;

std::vector<uint8_t> Noise(size_t aBytes) {
    std::vector<uint8_t> v(aBytes);
    std::mt19937 random(7);
    for (auto& b : v)
        b = static_cast<uint8_t>(random());
    return v;
}

// Time per megapixel, shown as the inverse of a rate.
void Megapixels(benchmark::State& aState) {
    aState.counters["per_MP"] =
        benchmark::Counter(static_cast<double>(aState.iterations()) * kWidth * kHeight / 1e6,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_Bayer8To_BGR24_2x2(benchmark::State& aState) {
    auto raw = Noise(kWidth * kHeight);
    std::vector<uint8_t> bgr(kWidth * kHeight * 3);
    for (auto _ : aState) {
        TvkRaw8ImageTransform(bgr.data(), raw.data(), kWidth, kHeight, TvkSimpleImageFormatBGR24,
                              0);
        benchmark::DoNotOptimize(bgr.data());
    }
    Megapixels(aState);
}
BENCHMARK(BM_Bayer8To_BGR24_2x2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Bayer8To_BGR24_3x3(benchmark::State& aState) {
    auto raw = Noise(kWidth * kHeight);
    std::vector<uint8_t> bgr(kWidth * kHeight * 3);
    for (auto _ : aState) {
        TvkRaw8ImageTransform_3x3(bgr.data(), raw.data(), kWidth, kHeight,
                                  TvkSimpleImageFormatBGR24, 0);
        benchmark::DoNotOptimize(bgr.data());
    }
    Megapixels(aState);
}
BENCHMARK(BM_Bayer8To_BGR24_3x3)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Bayer8To_Mono8_2x2(benchmark::State& aState) {
    auto raw = Noise(kWidth * kHeight);
    std::vector<uint8_t> mono(kWidth * kHeight);
    for (auto _ : aState) {
        TvkRaw8ImageTransform(mono.data(), raw.data(), kWidth, kHeight, TvkSimpleImageFormatMono8,
                              0);
        benchmark::DoNotOptimize(mono.data());
    }
    Megapixels(aState);
}
BENCHMARK(BM_Bayer8To_Mono8_2x2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Mono12PackedTo_Mono8(benchmark::State& aState) {
    auto packed = Noise(kWidth * kHeight * 3 / 2);
    std::vector<uint8_t> mono(kWidth * kHeight);
    for (auto _ : aState) {
        TvkPacked12BitTo8Bit(mono.data(), packed.data(), kWidth, kHeight);
        benchmark::DoNotOptimize(mono.data());
    }
    Megapixels(aState);
}
BENCHMARK(BM_Mono12PackedTo_Mono8)->Unit(benchmark::kMillisecond)->UseRealTime();

// Memory floors: writing the BGR output, and reading 12-bit input plus writing 8-bit output.
void BM_Memcpy(benchmark::State& aState) {
    const size_t bytes = static_cast<size_t>(aState.range(0));
    std::vector<uint8_t> from(bytes, 1), to(bytes);
    for (auto _ : aState) {
        memcpy(to.data(), from.data(), bytes);
        benchmark::DoNotOptimize(to.data());
    }
    aState.SetBytesProcessed(static_cast<int64_t>(aState.iterations() * bytes));
}
BENCHMARK(BM_Memcpy)
    ->Arg(kWidth* kHeight * 3)
    ->Arg(kWidth* kHeight * 3 / 2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void BM_Memset(benchmark::State& aState) {
    const size_t bytes = static_cast<size_t>(aState.range(0));
    std::vector<uint8_t> to(bytes);
    for (auto _ : aState) {
        memset(to.data(), 3, bytes);
        benchmark::DoNotOptimize(to.data());
    }
    aState.SetBytesProcessed(static_cast<int64_t>(aState.iterations() * bytes));
}
BENCHMARK(BM_Memset)->Arg(kWidth* kHeight * 3)->Unit(benchmark::kMillisecond)->UseRealTime();

#ifdef TAVIK_WITH_OPENCV
void BM_OpenCV_BayerRG2BGR(benchmark::State& aState) {
    cv::setNumThreads(1);
    auto raw = Noise(kWidth * kHeight);
    cv::Mat in(kHeight, kWidth, CV_8UC1, raw.data()), out(kHeight, kWidth, CV_8UC3);
    for (auto _ : aState) {
        cv::cvtColor(in, out, cv::COLOR_BayerRG2BGR);
        benchmark::DoNotOptimize(out.data);
    }
    Megapixels(aState);
}
BENCHMARK(BM_OpenCV_BayerRG2BGR)->Unit(benchmark::kMillisecond)->UseRealTime();
#endif

} // namespace
