// Colour, YUV and wide mono sources through the transform entry.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "ImagingReference.h"

namespace {

// Transforms a 2x1 source image of a pixel format into a display format.
std::vector<uint8_t> Convert(uint32_t aPixelFormat, std::vector<uint8_t> aSource, uint32_t aOutput,
                             TvkError_t aExpected = TvkErrorSuccess) {
    TvkImage in{}, out{};
    in.Size = out.Size = sizeof(TvkImage);
    EXPECT_EQ(TvkSetImageInfoFromPixelFormat(aPixelFormat, 2, 1, &in), TvkErrorSuccess);
    EXPECT_EQ(TvkSetImageInfoOutput(aOutput, 2, 1, &out), TvkErrorSuccess);
    std::vector<uint8_t> result(2 * out.ImageInfo.PixelInfo.BitsPerPixel / 8, 0xEE);
    in.Data = aSource.data();
    out.Data = result.data();
    EXPECT_EQ(TvkImageTransform(&in, &out, nullptr, 0), aExpected);
    return result;
}

TEST(SourcesTest, ColourPixelsChangeOrderAndDropAlpha) {
    EXPECT_EQ(Convert(TvkPixelFormatRgb8, {1, 2, 3, 4, 5, 6}, TvkSimpleImageFormatBGR24),
              (std::vector<uint8_t>{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(Convert(TvkPixelFormatBgra8, {1, 2, 3, 9, 4, 5, 6, 9}, TvkSimpleImageFormatRGB24),
              (std::vector<uint8_t>{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(Convert(TvkPixelFormatBgr8, {1, 2, 3, 4, 5, 6}, TvkSimpleImageFormatRGBA32),
              (std::vector<uint8_t>{3, 2, 1, 255, 6, 5, 4, 255}));
    EXPECT_EQ(Convert(TvkPixelFormatRgb8, {255, 255, 255, 0, 0, 0}, TvkSimpleImageFormatMono8),
              (std::vector<uint8_t>{255, 0}));
}

TEST(SourcesTest, Yuv422UsesLimitedRange) {
    // U Y V Y: white and black share neutral chroma.
    EXPECT_EQ(Convert(TvkPixelFormatYuv422, {128, 235, 128, 16}, TvkSimpleImageFormatRGB24),
              (std::vector<uint8_t>{255, 255, 255, 0, 0, 0}));
    // Below 16 clamps to black; saturated red stays in range.
    EXPECT_EQ(Convert(TvkPixelFormatYuv422, {128, 3, 128, 3}, TvkSimpleImageFormatBGR24),
              (std::vector<uint8_t>{0, 0, 0, 0, 0, 0}));
    std::vector<uint8_t> red =
        Convert(TvkPixelFormatYuv422, {90, 81, 240, 81}, TvkSimpleImageFormatRGB24);
    EXPECT_GT(red[0], 240);
    EXPECT_LT(red[1], 10);
    EXPECT_LT(red[2], 10);
}

TEST(SourcesTest, WideMonoIsReducedByItsSignificantBits) {
    // Mono12, little-endian: 0x0ABC >> 4.
    EXPECT_EQ(Convert(TvkPixelFormatMono12, {0xBC, 0x0A, 0xFF, 0x0F}, TvkSimpleImageFormatMono8),
              (std::vector<uint8_t>{0xAB, 0xFF}));
    EXPECT_EQ(Convert(TvkPixelFormatMono16, {0x00, 0x80, 0xFF, 0xFF}, TvkSimpleImageFormatBGR24),
              (std::vector<uint8_t>{0x80, 0x80, 0x80, 0xFF, 0xFF, 0xFF}));
}

} // namespace

namespace {

using namespace ref;

uint32_t Clamp8(int64_t v) {
    return static_cast<uint32_t>(std::clamp<int64_t>(v, 0, 255));
}

// BT.601 limited range in 20-bit fixed point.
tRGB FromYuv(int y, int u, int v) {
    const int64_t Y = int64_t(std::max(y - 16, 0)) * 1220542, U = u - 128, V = v - 128;
    const int64_t half = 1 << 19;
    return {Clamp8((Y + 1673527 * V + half) >> 20),
            Clamp8((Y - 409993 * U - 852492 * V + half) >> 20),
            Clamp8((Y + 2116026 * U + half) >> 20)};
}

using tEntry = TvkError_t (*)(uint8_t*, const uint8_t*, uint32_t, uint32_t);

TEST(SourcesTest, EverySourceMatchesItsReferenceForEveryOutput) {
    const uint32_t n = 40;
    struct tCase {
        const char* name;
        tEntry entry;
        uint32_t bytes; // per 4 pixels
        std::function<tRGB(const std::vector<uint8_t>&, uint32_t)> pixel;
    };
    const tCase cases[] = {
        {"RGB8", TvkRGB8ImageTransform, 12,
         [](auto& s, uint32_t i) {
             return tRGB{s[3 * i], s[3 * i + 1], s[3 * i + 2]};
         }},
        {"BGR8", TvkBGR8ImageTransform, 12,
         [](auto& s, uint32_t i) {
             return tRGB{s[3 * i + 2], s[3 * i + 1], s[3 * i]};
         }},
        {"RGBA8", TvkRGBA8ImageTransform, 16,
         [](auto& s, uint32_t i) {
             return tRGB{s[4 * i], s[4 * i + 1], s[4 * i + 2]};
         }},
        {"BGRA8", TvkBGRA8ImageTransform, 16,
         [](auto& s, uint32_t i) {
             return tRGB{s[4 * i + 2], s[4 * i + 1], s[4 * i]};
         }},
        {"Y8", TvkY8ImageTransform, 4,
         [](auto& s, uint32_t i) {
             return tRGB{s[i], s[i], s[i]};
         }},
        {"Y12", TvkY12ImageTransform, 6,
         [](auto& s, uint32_t i) {
             const uint32_t v = s[i / 2 * 3 + (i & 1) * 2];
             return tRGB{v, v, v};
         }},
        {"YUV411", TvkYUV411ImageTransform, 6,
         [](auto& s, uint32_t i) {
             const uint8_t* g = &s[i / 4 * 6];
             const int luma[4] = {g[1], g[2], g[4], g[5]};
             return FromYuv(luma[i & 3], g[0], g[3]);
         }},
        {"YUV422", TvkYUV422ImageTransform, 8,
         [](auto& s, uint32_t i) {
             const uint8_t* p = &s[i / 2 * 4];
             return FromYuv(p[1 + 2 * (i & 1)], p[0], p[2]);
         }},
        {"YUV444", TvkYUV444ImageTransform, 12,
         [](auto& s, uint32_t i) { return FromYuv(s[3 * i + 1], s[3 * i], s[3 * i + 2]); }},
    };
    for (const tCase& c : cases) {
        const std::vector<uint8_t> source = Random(n / 4 * c.bytes, c.bytes);
        std::vector<tRGB> expected;
        for (uint32_t i = 0; i < n; ++i)
            expected.push_back(c.pixel(source, i));
        for (uint32_t format = 0; format <= 8; ++format) {
            std::vector<uint8_t> out(n * OutputBytes(format), 0);
            ASSERT_EQ(c.entry(out.data(), source.data(), n, format), TvkErrorSuccess)
                << c.name << " " << format;
            if (c.entry == TvkYUV422ImageTransform && format == TvkSimpleImageFormatUYVY)
                EXPECT_EQ(out, source); // as it comes
            else if (c.entry == TvkY12ImageTransform && format >= 7)
                continue; // whole samples, below
            else
                EXPECT_EQ(out, Encode(expected, format)) << c.name << " format " << format;
        }
        EXPECT_EQ(c.entry(nullptr, source.data(), n, 1), TvkErrorBadParameter) << c.name;
    }
    std::vector<uint8_t> out(16 * 4);
    const std::vector<uint8_t> in(16 * 3);
    EXPECT_EQ(TvkYUV411ImageTransform(out.data(), in.data(), 6, 1), TvkErrorBadParameter);
    EXPECT_EQ(TvkYUV422ImageTransform(out.data(), in.data(), 5, 1), TvkErrorBadParameter);
    EXPECT_EQ(TvkRGB8ImageTransform(out.data(), in.data(), 4, 9), TvkErrorNotImplemented);
    // UYVY pairs pixels: an odd count would end in half a pair.
    EXPECT_EQ(TvkY8ImageTransform(out.data(), in.data(), 5, 6), TvkErrorBadParameter);
    EXPECT_EQ(TvkBGRA8ImageTransform(out.data(), in.data(), 3, 6), TvkErrorBadParameter);
    EXPECT_EQ(TvkY16ImageTransformLE(out.data(), in.data(), 3, 6), ~0);
}

TEST(SourcesTest, WideMonoKeepsWholeSamplesFor16BitOutputs) {
    // Mono12 packed 0xABC, 0xDEF to Mono16: moved to the top of 16 bits.
    const uint8_t packed[3] = {0xAB, 0xFC, 0xDE};
    uint8_t out[4] = {};
    ASSERT_EQ(TvkY12ImageTransform(out, packed, 2, TvkSimpleImageFormatMono16), TvkErrorSuccess);
    EXPECT_EQ((std::vector<uint8_t>(out, out + 4)), (std::vector<uint8_t>{0xC0, 0xAB, 0xF0, 0xDE}));
    // Big-endian 16 bits, little-endian 16 bits, and 10 significant bits.
    const uint8_t be[4] = {0x12, 0x34, 0xFF, 0x00};
    ASSERT_EQ(TvkY16ImageTransform(out, be, 2, TvkSimpleImageFormatMono16), 0);
    EXPECT_EQ((std::vector<uint8_t>(out, out + 4)), (std::vector<uint8_t>{0x34, 0x12, 0x00, 0xFF}));
    ASSERT_EQ(TvkY16ImageTransformLE(out, be, 2, TvkSimpleImageFormatMono8), 0);
    EXPECT_EQ(out[0], 0x34);
    EXPECT_EQ(out[1], 0x00);
    const uint8_t ten[4] = {0xFF, 0x03, 0x00, 0x02};
    ASSERT_EQ(TvkY16ImageTransformEx(out, ten, 2, TvkSimpleImageFormatMono8, 1, 10, 0, 0), 0);
    EXPECT_EQ(out[0], 0xFF);
    EXPECT_EQ(out[1], 0x80);
    uint8_t bgr48[12] = {};
    ASSERT_EQ(TvkY16ImageTransformEx(bgr48, ten, 2, TvkSimpleImageFormatBGR48, 1, 10, 0, 0), 0);
    EXPECT_EQ(bgr48[0], 0xC0);
    EXPECT_EQ(bgr48[1], 0xFF);
    // These report only success or failure.
    EXPECT_EQ(TvkY16ImageTransformEx(out, ten, 2, 1, 1, 17, 0, 0), ~0);
    EXPECT_EQ(TvkY16ImageTransform(nullptr, ten, 2, 1), ~0);
    EXPECT_EQ(TvkY16ImageTransformLE(out, ten, 2, 42), ~0);
}

} // namespace
