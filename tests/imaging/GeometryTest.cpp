// Flips in place and scanline resampling.
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "TavikImageTransform.h"

namespace {

std::vector<uint8_t> Counting(size_t aBytes) {
    std::vector<uint8_t> v(aBytes);
    std::iota(v.begin(), v.end(), 1);
    return v;
}

TEST(GeometryTest, FlipsMovePixelsOfEveryWidth) {
    const uint32_t widths[] = {1, 3, 4, 3, 4, 1, 2, 2, 2, 6, 6};
    for (uint32_t code = 0; code <= 10; ++code) {
        const uint32_t bytes = widths[code], w = 4, h = 3;
        const std::vector<uint8_t> image = Counting(w * h * bytes);
        for (uint32_t mode = 1; mode <= 3; ++mode) {
            std::vector<uint8_t> flipped = image;
            ASSERT_EQ(TvkFlip(flipped.data(), w, h, mode, code), TvkErrorSuccess);
            for (uint32_t y = 0; y < h; ++y)
                for (uint32_t x = 0; x < w; ++x) {
                    const uint32_t sx = mode & 1 ? w - 1 - x : x, sy = mode & 2 ? h - 1 - y : y;
                    if (code == 6 && (mode & 1)) continue; // pairs, below
                    for (uint32_t k = 0; k < bytes; ++k)
                        EXPECT_EQ(flipped[(y * w + x) * bytes + k],
                                  image[(sy * w + sx) * bytes + k])
                            << code << " " << mode;
                }
        }
    }
    // UYVY: pairs reverse and their lumas trade places.
    std::vector<uint8_t> two = {10, 1, 20, 2, 30, 3, 40, 4, 10, 1, 20, 2, 30, 3, 40, 4};
    ASSERT_EQ(TvkFlip(two.data(), 4, 2, 1, 6), TvkErrorSuccess);
    EXPECT_EQ(std::vector<uint8_t>(two.begin(), two.begin() + 8),
              (std::vector<uint8_t>{30, 4, 40, 3, 10, 2, 20, 1}));
}

TEST(GeometryTest, PackedCodesReversePixelsNotBytes) {
    // 12-bit pairs: 0x123, 0x456 | 0x789, 0xABC, two lines.
    std::vector<uint8_t> packed = {0x12, 0x63, 0x45, 0x78, 0xC9, 0xAB,
                                   0x12, 0x63, 0x45, 0x78, 0xC9, 0xAB};
    ASSERT_EQ(TvkFlip(packed.data(), 4, 2, 1, 128), TvkErrorSuccess);
    EXPECT_EQ(std::vector<uint8_t>(packed.begin(), packed.begin() + 6),
              (std::vector<uint8_t>{0xAB, 0x9C, 0x78, 0x45, 0x36, 0x12}));
    // YUV 4:1:1: U Y0 Y1 V Y2 Y3 becomes U Y3 Y2 V Y1 Y0.
    std::vector<uint8_t> yuv411 = {9, 1, 2, 8, 3, 4, 9, 1, 2, 8, 3, 4};
    ASSERT_EQ(TvkFlip(yuv411.data(), 4, 2, 3, 129), TvkErrorSuccess);
    EXPECT_EQ(std::vector<uint8_t>(yuv411.begin(), yuv411.begin() + 6),
              (std::vector<uint8_t>{9, 4, 3, 8, 2, 1}));
    std::vector<uint8_t> yuv444 = Counting(2 * 2 * 3);
    ASSERT_EQ(TvkFlip(yuv444.data(), 2, 2, 2, 130), TvkErrorSuccess);
    EXPECT_EQ(yuv444[0], 7);
}

TEST(GeometryTest, FlipsRefuseBadArguments) {
    std::vector<uint8_t> image(64);
    EXPECT_EQ(TvkFlip(image.data(), 4, 1, 1, 0), TvkErrorBadParameter); // even horizontally
    EXPECT_EQ(TvkFlip(image.data(), 0, 4, 1, 0), TvkErrorBadParameter);
    EXPECT_EQ(TvkFlip(nullptr, 4, 4, 1, 0), TvkErrorBadParameter);
    EXPECT_EQ(TvkFlip(image.data(), 4, 4, 4, 0), TvkErrorBadParameter);
    EXPECT_EQ(TvkFlip(image.data(), 4, 4, 1, 11), TvkErrorBadParameter);
    EXPECT_EQ(TvkFlip(image.data(), 4, 4, 1, 131), TvkErrorBadParameter);
    EXPECT_EQ(TvkFlip(image.data(), 3, 4, 1, 6), TvkErrorBadParameter);
    EXPECT_EQ(TvkFlip(image.data(), 6, 4, 1, 129), TvkErrorBadParameter);
    EXPECT_EQ(TvkFlipVertical(image.data(), 8, 1), TvkErrorBadParameter);
    EXPECT_EQ(TvkFlipVertical(image.data(), 0, 4), TvkErrorBadParameter);
    std::vector<uint8_t> rows = {1, 2, 3, 4, 5, 6};
    ASSERT_EQ(TvkFlipVertical(rows.data(), 2, 3), TvkErrorSuccess);
    EXPECT_EQ(rows, (std::vector<uint8_t>{5, 6, 3, 4, 1, 2}));
}

TEST(GeometryTest, ScanlineLengthIsAMultipleOfFour) {
    uint32_t length = 0;
    ASSERT_EQ(TvkGetResampledScanlineLength(&length, 5, 1.0f, 1.0f), TvkErrorSuccess);
    EXPECT_EQ(length, 8u);
    ASSERT_EQ(TvkGetResampledScanlineLength(&length, 640, 1.25f, 1.0f), TvkErrorSuccess);
    EXPECT_EQ(length, 800u);
    EXPECT_EQ(TvkGetResampledScanlineLength(nullptr, 5, 1.0f, 1.0f), TvkErrorBadParameter);
}

TEST(GeometryTest, ResamplingTakesNearestOrBlendsNeighbours) {
    // Doubling: nearest repeats pixels; sub-pixel blends between them.
    std::vector<uint8_t> out(8 * 2);
    const std::vector<uint8_t> two = {0, 100, 200, 250, 0, 100, 200, 250};
    ASSERT_EQ(TvkResampleScanlines(out.data(), two.data(), 8, 4, 2, 0.5f, 1.0f, 1, 0),
              TvkErrorSuccess);
    EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + 8),
              (std::vector<uint8_t>{0, 0, 100, 100, 200, 200, 250, 250}));
    ASSERT_EQ(TvkResampleScanlines(out.data(), two.data(), 8, 4, 2, 0.5f, 1.0f, 1, 1),
              TvkErrorSuccess);
    EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + 8),
              (std::vector<uint8_t>{0, 25, 75, 125, 175, 213, 238, 250}));
    EXPECT_EQ(std::vector<uint8_t>(out.begin() + 8, out.end()),
              std::vector<uint8_t>(out.begin(), out.begin() + 8));
    // Three-byte pixels, explicit pitches in pixels; bytes past a line stay.
    std::vector<uint8_t> rgb = {1, 2, 3, 4, 5, 6, 99, 99, 99};
    std::vector<uint8_t> wide(4 * 3 + 3, 77);
    ASSERT_EQ(TvkResampleScanlinesEx(wide.data(), rgb.data(), 4, 2, 1, 5, 3, 0.5f, 1.0f, 3, 0),
              TvkErrorSuccess);
    EXPECT_EQ(wide, (std::vector<uint8_t>{1, 2, 3, 1, 2, 3, 4, 5, 6, 4, 5, 6, 77, 77, 77}));
    EXPECT_EQ(TvkResampleScanlines(out.data(), two.data(), 8, 4, 2, 0.5f, 1.0f, 7, 0),
              TvkErrorBadParameter);
    EXPECT_EQ(TvkResampleScanlines(out.data(), two.data(), 8, 4, 2, 0.0f, 1.0f, 1, 0),
              TvkErrorBadParameter);
    EXPECT_EQ(TvkResampleScanlinesEx(out.data(), two.data(), 8, 4, 2, 7, 4, 0.5f, 1.0f, 1, 0),
              TvkErrorBadParameter);
}

} // namespace
