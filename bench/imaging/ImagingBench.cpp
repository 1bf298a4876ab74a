// Every conversion of the image transform on 2592x1944 images, next to memcpy
// and memset of the same bytes and, where installed, OpenCV and libyuv doing
// the same job. One thread unless TAVIK_IMAGE_THREADS says otherwise.
// imaging_ratios.py turns the JSON output into milliseconds per megapixel and
// ratios.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "TavikImageTransform.h"

#ifdef TAVIK_WITH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif
#ifdef TAVIK_WITH_LIBYUV
#include <libyuv.h>
#endif

namespace {

constexpr uint32_t kWidth = 2592, kHeight = 1944, kPixels = kWidth * kHeight;

std::vector<uint8_t> Noise(size_t aBytes) {
    std::vector<uint8_t> v(aBytes);
    std::mt19937 random(7);
    for (auto& b : v)
        b = static_cast<uint8_t>(random());
    return v;
}

// A conversion from aInBytes to aOutBytes bytes (per pixel, in halves so that
// 12-bit packing fits).
struct tCase {
    std::string name;
    uint32_t inHalves, outHalves;
    std::function<void(uint8_t*, uint8_t*)> run;
};

void Run(benchmark::State& aState, const tCase& aCase) {
    std::vector<uint8_t> in = Noise(size_t(kPixels) * aCase.inHalves / 2);
    std::vector<uint8_t> out(size_t(kPixels) * aCase.outHalves / 2);
    for (auto _ : aState) {
        aCase.run(out.data(), in.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    aState.SetBytesProcessed(int64_t(aState.iterations()) * int64_t(out.size()));
    aState.counters["in_bytes_per_px"] = aCase.inHalves / 2.0;
    aState.counters["out_bytes_per_px"] = aCase.outHalves / 2.0;
}

TvkImage Image(void* aData, uint32_t aPixelFormat) {
    TvkImage image{};
    image.Size = sizeof(TvkImage);
    image.Data = aData;
    TvkSetImageInfoFromPixelFormat(aPixelFormat, kWidth, kHeight, &image);
    return image;
}

const float kMatrix[9] = {1.2f, -0.1f, -0.1f, -0.1f, 1.2f, -0.1f, -0.1f, -0.1f, 1.2f};

std::vector<tCase> Cases() {
    std::vector<tCase> cases;
    auto add = [&](std::string aName, uint32_t aIn, uint32_t aOut, auto aRun) {
        cases.push_back({std::move(aName), aIn, aOut, aRun});
    };
    const uint32_t W = kWidth, H = kHeight, N = kPixels;
    // Demosaic modes into BGR24, and "2x2" into the other outputs.
    const char* modes[] = {"2x2",      "2x2_mono",   "3x3",    "2x2_YUV422",
                           "2x2_LCAA", "2x2_LCAA+V", "Single", "3x3_bilin.Mono"};
    for (uint32_t mode = 0; mode < 8; ++mode)
        add(std::string("Bayer8_to_BGR24/") + modes[mode], 2, 6, [=](uint8_t* d, uint8_t* s) {
            TvkRaw8DeBayer(d, s, W, H, TvkSimpleImageFormatBGR24, 0, mode);
        });
    add("Bayer8_to_Mono8/2x2", 2, 2,
        [=](uint8_t* d, uint8_t* s) { TvkRaw8ImageTransform(d, s, W, H, 0, 0); });
    add("Bayer8_to_Mono8/3x3", 2, 2,
        [=](uint8_t* d, uint8_t* s) { TvkRaw8ImageTransform_3x3(d, s, W, H, 0, 0); });
    add("Bayer8_to_BGRA32/2x2", 2, 8,
        [=](uint8_t* d, uint8_t* s) { TvkRaw8ImageTransform(d, s, W, H, 2, 0); });
    add("Bayer8_to_RGB24/3x3", 2, 6,
        [=](uint8_t* d, uint8_t* s) { TvkRaw8ImageTransform_3x3(d, s, W, H, 3, 0); });
    add("Bayer8_to_UYVY/2x2", 2, 4,
        [=](uint8_t* d, uint8_t* s) { TvkRaw8ImageTransform(d, s, W, H, 6, 0); });
    add("Bayer12Packed_to_BGR24/2x2", 3, 6,
        [=](uint8_t* d, uint8_t* s) { TvkRaw12ImageTransform(d, s, W, H, 1, 0); });
    add("Bayer16BE_to_BGR24/2x2", 4, 6,
        [=](uint8_t* d, uint8_t* s) { TvkRaw16ImageTransform(d, s, W, H, 1, 0); });
    add("Bayer12LE_to_BGR24/2x2", 4, 6,
        [=](uint8_t* d, uint8_t* s) { TvkRaw16ImageTransformEx(d, s, W, H, 1, 1, 12, 0, 0); });
    add("Bayer12LE_to_BGR48/2x2", 4, 12,
        [=](uint8_t* d, uint8_t* s) { TvkRaw16ImageTransformEx(d, s, W, H, 9, 1, 12, 0, 0); });
    add("Bayer8_to_BGR24/2x2+matrix", 2, 6, [=](uint8_t* d, uint8_t* s) {
        TvkImage in = Image(s, TvkPixelFormatBayerRG8), out{};
        out.Size = sizeof(TvkImage);
        out.Data = d;
        TvkSetImageInfoOutput(TvkSimpleImageFormatBGR24, W, H, &out);
        TvkTransformInfo matrix;
        TvkSetColorCorrectionMatrix3x3(kMatrix, &matrix);
        TvkImageTransform(&in, &out, &matrix, 1);
    });
    add("Mono12Packed_to_Mono8", 3, 2,
        [=](uint8_t* d, uint8_t* s) { TvkPacked12BitTo8Bit(d, s, W, H); });
    add("Mono12Packed_to_BGR24", 3, 6,
        [=](uint8_t* d, uint8_t* s) { TvkY12ImageTransform(d, s, N, 1); });
    add("Mono16_to_Mono8", 4, 2,
        [=](uint8_t* d, uint8_t* s) { TvkY16ImageTransformLE(d, s, N, 0); });
    add("Mono12_to_Mono16", 4, 4,
        [=](uint8_t* d, uint8_t* s) { TvkY16ImageTransformEx(d, s, N, 7, 1, 12, 0, 0); });
    add("Mono8_to_BGRA32", 2, 8, [=](uint8_t* d, uint8_t* s) { TvkY8ImageTransform(d, s, N, 2); });
    add("RGB8_to_BGR24", 6, 6, [=](uint8_t* d, uint8_t* s) { TvkRGB8ImageTransform(d, s, N, 1); });
    add("BGR8_to_BGRA32", 6, 8, [=](uint8_t* d, uint8_t* s) { TvkBGR8ImageTransform(d, s, N, 2); });
    add("BGRA8_to_BGR24", 8, 6,
        [=](uint8_t* d, uint8_t* s) { TvkBGRA8ImageTransform(d, s, N, 1); });
    add("BGR8_to_Mono8", 6, 2, [=](uint8_t* d, uint8_t* s) { TvkBGR8ImageTransform(d, s, N, 0); });
    add("YUV411_to_BGR24", 3, 6,
        [=](uint8_t* d, uint8_t* s) { TvkYUV411ImageTransform(d, s, N, 1); });
    add("YUV422_to_BGR24", 4, 6,
        [=](uint8_t* d, uint8_t* s) { TvkYUV422ImageTransform(d, s, N, 1); });
    add("YUV422_to_BGRA32", 4, 8,
        [=](uint8_t* d, uint8_t* s) { TvkYUV422ImageTransform(d, s, N, 2); });
    add("YUV444_to_BGR24", 6, 6,
        [=](uint8_t* d, uint8_t* s) { TvkYUV444ImageTransform(d, s, N, 1); });
    add("CYGM_to_BGR24/3x3", 2, 6,
        [=](uint8_t* d, uint8_t* s) { TvkCygmImageTransform(d, s, W, H, 1, 0, 0, 0); });
    add("CYGM_to_BGR24/2x2", 2, 6,
        [=](uint8_t* d, uint8_t* s) { TvkCygmImageTransform(d, s, W, H, 1, 0, 2, 0); });
    // In place: the output buffer is the image.
    add("ColorCorrection_Int8_BGR24", 2, 6, [=](uint8_t* d, uint8_t*) {
        static TvkColorCorrectionHandle handle = TvkCreateColorCorrectionMatrix_Int8(kMatrix);
        TvkApplyColorCorrection(handle, d, N, 1);
    });
    add("Flip_horizontal_BGR24", 2, 6, [=](uint8_t* d, uint8_t*) { TvkFlip(d, W, H, 1, 1); });
    add("Flip_vertical_BGR24", 2, 6, [=](uint8_t* d, uint8_t*) { TvkFlip(d, W, H, 2, 1); });
    add("Resample_BGR24_x1.25", 6, 6, [=](uint8_t* d, uint8_t* s) {
        TvkResampleScanlinesEx(d, s, W, W * 4 / 5, H, W, W, 0.8f, 1.0f, 3, 1);
    });

    // The memory floors: copying and filling the output bytes of each size.
    for (uint32_t halves : {2u, 3u, 4u, 6u, 8u, 12u}) {
        const std::string size = std::to_string(halves / 2) + (halves & 1 ? ".5" : "") + "B";
        add("memcpy/" + size, halves, halves,
            [=](uint8_t* d, uint8_t* s) { memcpy(d, s, size_t(N) * halves / 2); });
        add("memset/" + size, halves, halves,
            [=](uint8_t* d, uint8_t*) { memset(d, 3, size_t(N) * halves / 2); });
    }

#ifdef TAVIK_WITH_OPENCV
    auto mat = [](uint8_t* p, int type) { return cv::Mat(int(kHeight), int(kWidth), type, p); };
    add("OpenCV/Bayer8_to_BGR24_bilinear", 2, 6, [=](uint8_t* d, uint8_t* s) {
        cv::Mat out = mat(d, CV_8UC3);
        cv::cvtColor(mat(s, CV_8UC1), out, cv::COLOR_BayerRG2BGR);
    });
    add("OpenCV/Bayer8_to_Mono8", 2, 2, [=](uint8_t* d, uint8_t* s) {
        cv::Mat out = mat(d, CV_8UC1);
        cv::cvtColor(mat(s, CV_8UC1), out, cv::COLOR_BayerRG2GRAY);
    });
    add("OpenCV/YUV422_to_BGR24", 4, 6, [=](uint8_t* d, uint8_t* s) {
        cv::Mat out = mat(d, CV_8UC3);
        cv::cvtColor(mat(s, CV_8UC2), out, cv::COLOR_YUV2BGR_UYVY);
    });
    add("OpenCV/RGB8_to_BGR24", 6, 6, [=](uint8_t* d, uint8_t* s) {
        cv::Mat out = mat(d, CV_8UC3);
        cv::cvtColor(mat(s, CV_8UC3), out, cv::COLOR_RGB2BGR);
    });
    add("OpenCV/BGR8_to_Mono8", 6, 2, [=](uint8_t* d, uint8_t* s) {
        cv::Mat out = mat(d, CV_8UC1);
        cv::cvtColor(mat(s, CV_8UC3), out, cv::COLOR_BGR2GRAY);
    });
    add("OpenCV/Flip_horizontal_BGR24", 2, 6, [=](uint8_t* d, uint8_t*) {
        cv::Mat image = mat(d, CV_8UC3);
        cv::flip(image, image, 1);
    });
#endif
#ifdef TAVIK_WITH_LIBYUV
    // libyuv's ARGB is B, G, R, A in memory, its RGB24 B, G, R and its RAW R, G, B.
    add("libyuv/YUV422_to_BGRA32", 4, 8, [=](uint8_t* d, uint8_t* s) {
        libyuv::UYVYToARGB(s, int(W) * 2, d, int(W) * 4, int(W), int(H));
    });
    add("libyuv/RGB8_to_BGR24", 6, 6, [=](uint8_t* d, uint8_t* s) {
        libyuv::RAWToRGB24(s, int(W) * 3, d, int(W) * 3, int(W), int(H));
    });
    add("libyuv/BGR8_to_BGRA32", 6, 8, [=](uint8_t* d, uint8_t* s) {
        libyuv::RGB24ToARGB(s, int(W) * 3, d, int(W) * 4, int(W), int(H));
    });
    add("libyuv/BGRA8_to_BGR24", 8, 6, [=](uint8_t* d, uint8_t* s) {
        libyuv::ARGBToRGB24(s, int(W) * 4, d, int(W) * 3, int(W), int(H));
    });
    add("libyuv/Mono8_to_BGRA32", 2, 8, [=](uint8_t* d, uint8_t* s) {
        libyuv::J400ToARGB(s, int(W), d, int(W) * 4, int(W), int(H));
    });
    add("libyuv/Flip_horizontal_BGR24", 6, 6, [=](uint8_t* d, uint8_t* s) {
        libyuv::RGB24Mirror(s, int(W) * 3, d, int(W) * 3, int(W), int(H));
    });
#endif
    return cases;
}

// One thread unless asked otherwise; registered before any transform runs.
const bool kRegistered = [] {
    setenv("TAVIK_IMAGE_THREADS", "1", 0);
#ifdef TAVIK_WITH_OPENCV
    cv::setNumThreads(1);
#endif
    static const std::vector<tCase> cases = Cases();
    for (const tCase& c : cases)
        benchmark::RegisterBenchmark(c.name.c_str(), Run, c)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    return true;
}();

} // namespace
