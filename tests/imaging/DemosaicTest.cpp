// The 2x2 demosaic and the writers against a plain per-pixel reference.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "Demosaic.h"
#include "TavikImageTransform.h"

namespace {

struct tRGB {
    uint32_t r, g, b;
};

// Public pattern: 0 RG, 1 GB, 2 GR, 3 BG. The colour of the sample at (x, y).
char ColourAt(uint32_t aPattern, uint32_t x, uint32_t y) {
    static const char* kCells[4] = {"RGGB", "GBRG", "GRBG", "BGGR"};
    return kCells[aPattern][(y & 1) * 2 + (x & 1)];
}

// Straight from the description: each pixel takes red and blue from its 2x2
// block and the mean of the block's greens; the last column and the last line
// repeat their neighbours.
std::vector<tRGB> Reference2x2(const std::vector<uint8_t>& aRaw, uint32_t w, uint32_t h,
                               uint32_t aPattern) {
    std::vector<tRGB> out(static_cast<size_t>(w) * h);
    for (uint32_t y = 0; y + 1 < h; ++y)
        for (uint32_t x = 0; x < w; ++x) {
            const uint32_t bx = x + 1 < w ? x : x - 1;
            uint32_t r = 0, b = 0, g = 0;
            for (uint32_t dy = 0; dy < 2; ++dy)
                for (uint32_t dx = 0; dx < 2; ++dx) {
                    const uint8_t v = aRaw[(y + dy) * w + bx + dx];
                    switch (ColourAt(aPattern, bx + dx, y + dy)) {
                    case 'R':
                        r = v;
                        break;
                    case 'B':
                        b = v;
                        break;
                    default:
                        g += v;
                    }
                }
            out[y * w + x] = {r, g >> 1, b};
        }
    for (uint32_t x = 0; x < w; ++x)
        out[(h - 1) * w + x] = out[(h - 2) * w + x];
    return out;
}

// What each output format stores for a row of reference pixels.
std::vector<uint8_t> Encode(const std::vector<tRGB>& aPixels, uint32_t aFormat) {
    std::vector<uint8_t> out;
    for (size_t i = 0; i < aPixels.size(); ++i) {
        const auto [r, g, b] = aPixels[i];
        const uint8_t y601 = static_cast<uint8_t>((77 * r + 150 * g + 29 * b) >> 8);
        const uint8_t y709 = static_cast<uint8_t>((18 * (3 * r + b) + 184 * g + 128) / 256);
        switch (aFormat) {
        case 0:
            out.push_back(y601);
            break;
        case 1:
            out.insert(out.end(), {uint8_t(b), uint8_t(g), uint8_t(r)});
            break;
        case 2:
            out.insert(out.end(), {uint8_t(b), uint8_t(g), uint8_t(r), 255});
            break;
        case 3:
            out.insert(out.end(), {uint8_t(r), uint8_t(g), uint8_t(b)});
            break;
        case 4:
            out.insert(out.end(), {uint8_t(r), uint8_t(g), uint8_t(b), 255});
            break;
        case 5:
            out.push_back(y709);
            break;
        case 7:
            out.insert(out.end(), {y601, y601});
            break;
        case 8:
            out.insert(out.end(), {y709, y709});
            break;
        case 6: {
            const int ri = int(r), gi = int(g), bi = int(b);
            const int y = ((66 * ri + 129 * gi + 25 * bi + 128) >> 8) + 16;
            const int u = ((112 * bi - 74 * gi - 38 * ri + 128) >> 8) + 128;
            const int v = ((112 * ri - 94 * gi - 18 * bi + 128) >> 8) + 128;
            if (i % 2 == 0) {
                out.insert(out.end(), {uint8_t(u), uint8_t(y), uint8_t(v), 0});
            } else {
                uint8_t* pair = &out[out.size() - 4];
                pair[0] = uint8_t((pair[0] + u) / 2);
                pair[2] = uint8_t((pair[2] + v) / 2);
                pair[3] = uint8_t(y);
            }
            break;
        }
        }
    }
    return out;
}

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

TEST(TransformTest, DispatchChecksRecordsAndPicksTheRoutine) {
    std::vector<uint8_t> raw(8 * 4, 100), out(8 * 4 * 3);
    TvkImage source{}, destination{};
    source.Size = destination.Size = sizeof(TvkImage);
    source.Data = raw.data();
    destination.Data = out.data();
    ASSERT_EQ(TvkSetImageInfoFromPixelFormat(TvkPixelFormatBayerRG8, 8, 4, &source),
              TvkErrorSuccess);
    ASSERT_EQ(TvkSetImageInfoOutput(TvkSimpleImageFormatBGR24, 8, 4, &destination),
              TvkErrorSuccess);
    EXPECT_EQ(TvkImageTransform(&source, &destination, nullptr, 0), TvkErrorSuccess);
    EXPECT_EQ(out, std::vector<uint8_t>(out.size(), 100));

    TvkTransformInfo mode{};
    ASSERT_EQ(TvkSetDebayerMode(5, &mode), TvkErrorSuccess);
    EXPECT_EQ(TvkImageTransform(&source, &destination, &mode, 1), TvkErrorBadParameter);
    EXPECT_EQ(TvkSetDebayerMode(0, nullptr), TvkErrorBadParameter);

    source.ImageInfo.PixelInfo.BayerPattern = 255;
    EXPECT_EQ(TvkImageTransform(&source, &destination, nullptr, 0), TvkErrorBadParameter);
    source.ImageInfo.PixelInfo.BayerPattern = 0;

    destination.ImageInfo.Width = 7;
    EXPECT_EQ(TvkImageTransform(&source, &destination, nullptr, 0), TvkErrorBadParameter);
    destination.ImageInfo.Width = 8;
    source.Size = sizeof(TvkImage) - 1;
    EXPECT_EQ(TvkImageTransform(&source, &destination, nullptr, 0), TvkErrorStructSize);
    source.Size = sizeof(TvkImage);
    EXPECT_EQ(TvkImageTransform(&source, nullptr, nullptr, 0), TvkErrorBadParameter);

    // UYVY needs an even width.
    std::vector<uint8_t> mono(7 * 2, 50), uyvy(7 * 2 * 2);
    TvkImage monoImage{}, uyvyImage{};
    monoImage.Size = uyvyImage.Size = sizeof(TvkImage);
    monoImage.Data = mono.data();
    uyvyImage.Data = uyvy.data();
    ASSERT_EQ(TvkSetImageInfoFromPixelFormat(TvkPixelFormatMono8, 7, 2, &monoImage),
              TvkErrorSuccess);
    ASSERT_EQ(TvkSetImageInfoOutput(TvkSimpleImageFormatUYVY, 7, 2, &uyvyImage), TvkErrorSuccess);
    EXPECT_EQ(TvkImageTransform(&monoImage, &uyvyImage, nullptr, 0), TvkErrorBadParameter);
}

TEST(TransformTest, Mono12PackedKeepsTheUpperEightBits) {
    // Pixels 0xABC and 0xDEF: bytes AB, FC, DE.
    const uint8_t packed[6] = {0xAB, 0xFC, 0xDE, 0x12, 0x34, 0x56};
    uint8_t out[4] = {};
    ASSERT_EQ(TvkPacked12BitTo8Bit(out, packed, 4, 1), TvkErrorSuccess);
    EXPECT_EQ(out[0], 0xAB);
    EXPECT_EQ(out[1], 0xDE);
    EXPECT_EQ(out[2], 0x12);
    EXPECT_EQ(out[3], 0x56);
}

} // namespace

namespace {

TEST(TransformTest, Mono12PackedMatchesThePlainUnpackingAtEverySize) {
    std::mt19937 random(3);
    for (uint32_t w : {2u, 30u, 32u, 34u, 64u, 66u, 100u}) {
        const uint32_t h = 3;
        std::vector<uint8_t> packed(w * h / 2 * 3);
        for (auto& b : packed)
            b = static_cast<uint8_t>(random());
        std::vector<uint8_t> out(w * h, 0), expected(w * h);
        for (size_t i = 0; i < expected.size(); i += 2) {
            expected[i] = packed[i / 2 * 3];
            expected[i + 1] = packed[i / 2 * 3 + 2];
        }
        ASSERT_EQ(TvkPacked12BitTo8Bit(out.data(), packed.data(), w, h), TvkErrorSuccess);
        EXPECT_EQ(out, expected) << w;
    }
}

} // namespace

namespace {

// "3x3" straight from the description, with the edges copied afterwards.
std::vector<tRGB> Reference3x3(const std::vector<uint8_t>& aRaw, uint32_t w, uint32_t h,
                               uint32_t aPattern) {
    std::vector<tRGB> out(static_cast<size_t>(w) * h);
    auto at = [&](uint32_t x, uint32_t y) -> uint32_t { return aRaw[y * w + x]; };
    for (uint32_t y = 1; y + 1 < h; ++y)
        for (uint32_t x = 1; x + 1 < w; ++x) {
            const uint32_t cross = (at(x, y - 1) + at(x, y + 1) + at(x - 1, y) + at(x + 1, y)) >> 2;
            const uint32_t corners =
                (at(x - 1, y - 1) + at(x + 1, y - 1) + at(x - 1, y + 1) + at(x + 1, y + 1)) >> 2;
            const char here = ColourAt(aPattern, x, y);
            tRGB& v = out[y * w + x];
            if (here == 'R')
                v = {at(x, y), cross, corners};
            else if (here == 'B')
                v = {corners, cross, at(x, y)};
            else {
                const uint32_t g = (2 * at(x, y) + at(x - 1, y + 1) + at(x + 1, y - 1)) >> 2;
                const uint32_t lr = (at(x - 1, y) + at(x + 1, y)) >> 1,
                               ud = (at(x, y - 1) + at(x, y + 1)) >> 1;
                v = ColourAt(aPattern, x + 1, y) == 'R' ? tRGB{lr, g, ud} : tRGB{ud, g, lr};
            }
        }
    for (uint32_t y = 1; y + 1 < h; ++y) {
        out[y * w] = out[y * w + 1];
        out[y * w + w - 1] = out[y * w + w - 2];
    }
    for (uint32_t x = 0; x < w; ++x) {
        out[x] = out[w + x];
        out[(h - 1) * w + x] = out[(h - 2) * w + x];
    }
    return out;
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
