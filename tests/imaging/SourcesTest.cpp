// Colour, YUV and wide mono sources through the transform entry.
#include <gtest/gtest.h>

#include <vector>

#include "TavikImageTransform.h"

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
