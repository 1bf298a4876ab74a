// The 2x2 demosaic and the writers against a plain per-pixel reference.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "ImagingReference.h"

namespace {

using namespace ref;

TEST(DemosaicTest, MatchesTheReferenceForEveryPatternOutputAndManySizes) {
    std::mt19937 random(42);
    // Small sizes, and widths around the vector form's 32-pixel steps.
    const std::vector<uint32_t> widths = {2, 6, 10, 14, 18, 32, 34, 36, 66, 98, 130};
    for (uint32_t w : widths)
        for (uint32_t h = 2; h <= 10; h += 2) {
            std::vector<uint8_t> raw(w * h);
            for (auto& v : raw)
                v = static_cast<uint8_t>(random());
            for (uint32_t pattern = 0; pattern < 4; ++pattern) {
                const std::vector<tRGB> reference = Reference2x2(raw, w, h, pattern);
                for (uint32_t format = 0; format <= 8; ++format) {
                    std::vector<uint8_t> out(w * h * img::OutputBytes(format), 0);
                    ASSERT_EQ(TvkRaw8ImageTransform(out.data(), raw.data(), w, h, format, pattern),
                              TvkErrorSuccess);
                    EXPECT_EQ(out, Encode(reference, format))
                        << w << "x" << h << " pattern " << pattern << " format " << format;
                }
            }
        }
}

TEST(DemosaicTest, RedDotAtTheTopLeftOfBayerRG8StaysRed) {
    std::vector<uint8_t> raw(4 * 4, 0);
    raw[0] = 255;
    std::vector<uint8_t> bgr(4 * 4 * 3);
    ASSERT_EQ(TvkRaw8ImageTransform(bgr.data(), raw.data(), 4, 4, TvkSimpleImageFormatBGR24,
                                    TvkBayerPatternRGGB),
              TvkErrorSuccess);
    EXPECT_EQ(bgr[2], 255); // red
    EXPECT_EQ(bgr[0], 0);   // blue
    EXPECT_EQ(bgr[1], 0);   // green
}

TEST(DemosaicTest, FlatImagesStayFlatAndWhiteGivesFullLuminance) {
    std::vector<uint8_t> raw(8 * 6, 255);
    std::vector<uint8_t> mono(8 * 6), uyvy(8 * 6 * 2), bgr(8 * 6 * 3);
    ASSERT_EQ(TvkRaw8ImageTransform(mono.data(), raw.data(), 8, 6, TvkSimpleImageFormatMono8, 2),
              TvkErrorSuccess);
    EXPECT_EQ(mono, std::vector<uint8_t>(8 * 6, 255));
    ASSERT_EQ(TvkRaw8ImageTransform(uyvy.data(), raw.data(), 8, 6, TvkSimpleImageFormatUYVY, 3),
              TvkErrorSuccess);
    EXPECT_EQ(uyvy[1], 235);
    EXPECT_EQ(uyvy[3], 235);
    std::fill(raw.begin(), raw.end(), 77);
    ASSERT_EQ(TvkRaw8ImageTransform(bgr.data(), raw.data(), 8, 6, TvkSimpleImageFormatBGR24, 1),
              TvkErrorSuccess);
    EXPECT_EQ(bgr, std::vector<uint8_t>(8 * 6 * 3, 77));
}

TEST(DemosaicTest, BadArgumentsAreRefused) {
    std::vector<uint8_t> raw(8 * 8), out(8 * 8 * 4);
    EXPECT_EQ(TvkRaw8ImageTransform(out.data(), raw.data(), 7, 8, 1, 0), TvkErrorBadParameter);
    EXPECT_EQ(TvkRaw8ImageTransform(out.data(), raw.data(), 8, 0, 1, 0), TvkErrorBadParameter);
    EXPECT_EQ(TvkRaw8ImageTransform(nullptr, raw.data(), 8, 8, 1, 0), TvkErrorBadParameter);
    EXPECT_EQ(TvkRaw8ImageTransform(out.data(), raw.data(), 8, 8, 1, 255), TvkErrorBadParameter);
    EXPECT_EQ(TvkRaw8ImageTransform(out.data(), raw.data(), 8, 8, 42, 0), TvkErrorNotImplemented);
    EXPECT_EQ(TvkPacked12BitTo8Bit(out.data(), raw.data(), 7, 2), TvkErrorBadParameter);
    EXPECT_EQ(TvkPacked12BitTo8Bit(nullptr, raw.data(), 8, 2), TvkErrorBadParameter);
}

TEST(Demosaic3x3Test, MatchesTheReferenceForEveryPatternAndOutput) {
    std::mt19937 random(9);
    for (uint32_t w : {4u, 6u, 10u, 36u, 38u, 70u, 100u})
        for (uint32_t h : {4u, 8u}) {
            std::vector<uint8_t> raw(w * h);
            for (auto& v : raw)
                v = static_cast<uint8_t>(random());
            for (uint32_t pattern = 0; pattern < 4; ++pattern) {
                const std::vector<tRGB> reference = Reference3x3(raw, w, h, pattern);
                for (uint32_t format : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u}) {
                    std::vector<uint8_t> out(w * h * img::OutputBytes(format), 0);
                    ASSERT_EQ(
                        TvkRaw8ImageTransform_3x3(out.data(), raw.data(), w, h, format, pattern),
                        TvkErrorSuccess);
                    EXPECT_EQ(out, Encode(reference, format))
                        << w << "x" << h << " pattern " << pattern << " format " << format;
                }
            }
        }
    std::vector<uint8_t> raw(16), out(32);
    EXPECT_EQ(TvkRaw8ImageTransform_3x3(out.data(), raw.data(), 4, 4, TvkSimpleImageFormatUYVY, 0),
              TvkErrorNotImplemented);
    EXPECT_EQ(TvkRaw8ImageTransform_3x3(out.data(), raw.data(), 4, 4, 1, 255),
              TvkErrorBadParameter);
}

TEST(Demosaic3x3Test, GreenAtAGreenSiteIgnoresTheMainDiagonal) {
    // RG pattern: (1, 1) is blue, (2, 1) is green on a blue line.
    std::vector<uint8_t> raw(6 * 6, 0);
    raw[0 * 6 + 1] = 200; // upper-left of (2, 1): on the main diagonal
    raw[2 * 6 + 3] = 200; // lower-right of (2, 1): on the main diagonal
    std::vector<uint8_t> rgb(6 * 6 * 3);
    ASSERT_EQ(TvkRaw8ImageTransform_3x3(rgb.data(), raw.data(), 6, 6, TvkSimpleImageFormatRGB24, 0),
              TvkErrorSuccess);
    EXPECT_EQ(rgb[(1 * 6 + 2) * 3 + 1], 0); // green untouched by the diagonal
}

} // namespace
