// Image records from pixel formats, names and display formats.
#include <gtest/gtest.h>

#include <cstring>

#include "PixelFormatTable.h"
#include "TavikImageTransform.h"

namespace {

TvkImage Blank() {
    TvkImage image;
    memset(&image, 0xAB, sizeof(image));
    image.Size = sizeof(TvkImage);
    return image;
}

TEST(ImageInfoTest, PixelFormatFillsTheWholeDescription) {
    TvkImage image = Blank();
    ASSERT_EQ(TvkSetImageInfoFromPixelFormat(TvkPixelFormatBayerGB12Packed, 640, 480, &image),
              TvkErrorSuccess);
    const TvkPixelInfo& p = image.ImageInfo.PixelInfo;
    EXPECT_EQ(image.ImageInfo.Width, 640u);
    EXPECT_EQ(image.ImageInfo.Stride, 640u);
    EXPECT_EQ(p.BitsPerPixel, 12u);
    EXPECT_EQ(p.BitsUsed, 12u);
    EXPECT_EQ(p.PixelLayout, static_cast<uint32_t>(TvkPixelLayoutRawPacked));
    EXPECT_EQ(p.BayerPattern, static_cast<uint32_t>(TvkBayerPatternGBRG));
    EXPECT_EQ(p.Alignment, 1u);
    EXPECT_EQ(p.Endianness, 0u);
    EXPECT_EQ(p.ColorSpace, 0u);
    ASSERT_EQ(TvkSetImageInfoFromPixelFormat(TvkPixelFormatYuv422, 2, 2, &image), TvkErrorSuccess);
    EXPECT_EQ(image.ImageInfo.PixelInfo.ColorSpace, static_cast<uint32_t>(TvkColorSpaceITU_BT601));
    // An unknown code is refused, with the size already written.
    image = Blank();
    EXPECT_EQ(TvkSetImageInfoFromPixelFormat(0x12345678, 8, 9, &image), TvkErrorBadParameter);
    EXPECT_EQ(image.ImageInfo.Height, 9u);
}

TEST(ImageInfoTest, RecordSizeIsCheckedBeforeAnythingIsWritten) {
    TvkImage image = Blank();
    image.Size = sizeof(TvkImage) - 1;
    EXPECT_EQ(TvkSetImageInfoFromPixelFormat(TvkPixelFormatMono8, 1, 1, &image),
              TvkErrorStructSize);
    EXPECT_EQ(image.ImageInfo.Width, 0xABABABABu);
    EXPECT_EQ(TvkSetImageInfoOutput(0, 1, 1, &image), TvkErrorStructSize);
    EXPECT_EQ(TvkSetImageInfoFromString("MONO8", 5, 1, 1, &image), TvkErrorStructSize);
    EXPECT_EQ(TvkSetImageInfoFromPixelFormat(TvkPixelFormatMono8, 1, 1, nullptr),
              TvkErrorBadParameter);
    image.Size = sizeof(TvkImage);
    EXPECT_EQ(TvkSetImageInfoOutput(11, 1, 1, &image), TvkErrorBadParameter);
}

TEST(ImageInfoTest, NamesAreFoundWithOrWithoutPrefixAndInAnyCase) {
    TvkImage image = Blank();
    ASSERT_EQ(TvkSetImageInfoFromString("tvkpixelformatmono8", 19, 4, 4, &image), TvkErrorSuccess);
    EXPECT_EQ(image.ImageInfo.PixelInfo.ColorSpace, 0u); // a pixel format
    ASSERT_EQ(TvkSetImageInfoFromString("mono8", 5, 4, 4, &image), TvkErrorSuccess);
    EXPECT_EQ(image.ImageInfo.PixelInfo.ColorSpace, 2u); // a display format
    EXPECT_EQ(image.ImageInfo.PixelInfo.BitsPerPixel, 8u);
    ASSERT_EQ(TvkSetImageInfoFromString("PixelFormatBayerGR12Packed", 26, 4, 4, &image),
              TvkErrorSuccess);
    EXPECT_EQ(image.ImageInfo.PixelInfo.PixelLayout, 3u);
    ASSERT_EQ(TvkSetImageInfoFromString("bgr24", 5, 4, 4, &image), TvkErrorSuccess);
    EXPECT_EQ(image.ImageInfo.PixelInfo.PixelLayout, static_cast<uint32_t>(TvkPixelLayoutBGR));
    // Three characters are never a prefix; unknown names are refused.
    EXPECT_EQ(TvkSetImageInfoFromString("TVK", 3, 4, 4, &image), TvkErrorBadParameter);
    EXPECT_EQ(TvkSetImageInfoFromString("MONO9", 5, 4, 4, &image), TvkErrorBadParameter);
    EXPECT_EQ(TvkSetImageInfoFromString(nullptr, 5, 4, 4, &image), TvkErrorBadParameter);
    // The length bounds the name.
    ASSERT_EQ(TvkSetImageInfoFromString("RGB8xyz", 4, 4, 4, &image), TvkErrorSuccess);
}

TEST(ImageInfoTest, QueriesAnswerFromTheTable) {
    uint32_t value = 0;
    TvkBool_t flag = 0;
    EXPECT_EQ(TvkBitsPerPixel(&value, TvkPixelFormatRgb12), TvkErrorSuccess);
    EXPECT_EQ(value, 48u);
    EXPECT_EQ(TvkBitsPerPixelUsed(&value, TvkPixelFormatRgb12), TvkErrorSuccess);
    EXPECT_EQ(value, 36u);
    EXPECT_EQ(TvkGetBayerPattern(&value, TvkPixelFormatBayerBG16), TvkErrorSuccess);
    EXPECT_EQ(value, 3u);
    EXPECT_EQ(TvkHasBayerPattern(&flag, TvkPixelFormatMono16), TvkErrorSuccess);
    EXPECT_FALSE(flag);
    EXPECT_EQ(TvkIsColor(&flag, TvkPixelFormatBayerRG8), TvkErrorSuccess);
    EXPECT_TRUE(flag);
    EXPECT_EQ(TvkIsColor(&flag, TvkPixelFormatMono12Packed), TvkErrorSuccess);
    EXPECT_FALSE(flag);
    EXPECT_EQ(TvkBitsPerPixel(nullptr, TvkPixelFormatMono8), TvkErrorBadParameter);
    EXPECT_EQ(TvkBitsPerPixel(&value, 42), TvkErrorBadParameter);
    EXPECT_EQ(static_cast<uint32_t>(TvkPixelFormatRgba8),
              static_cast<uint32_t>(TvkPixelFormatArgb8));
}

TEST(ImageInfoTest, DestinationsMapBackToDisplayFormats) {
    TvkImage image = Blank();
    for (uint32_t format = 0; format <= 10; ++format) {
        ASSERT_EQ(TvkSetImageInfoOutput(format, 2, 2, &image), TvkErrorSuccess);
        uint32_t back = 99;
        ASSERT_EQ(img::GetSimpleImageFormat(back, image), TvkErrorSuccess) << format;
        EXPECT_EQ(back, format);
    }
    // A 16-bit mono destination that uses only 12 bits is not written.
    ASSERT_EQ(TvkSetImageInfoFromPixelFormat(TvkPixelFormatMono12, 2, 2, &image), TvkErrorSuccess);
    uint32_t back = 0;
    EXPECT_EQ(img::GetSimpleImageFormat(back, image), TvkErrorNotImplemented);
    ASSERT_EQ(TvkSetImageInfoFromPixelFormat(TvkPixelFormatBayerRG8, 2, 2, &image),
              TvkErrorSuccess);
    EXPECT_EQ(img::GetSimpleImageFormat(back, image), TvkErrorBadParameter);
}

TEST(ImageInfoTest, VersionApiAndErrorTexts) {
    uint32_t version = 0;
    EXPECT_EQ(TvkGetVersion(&version), TvkErrorSuccess);
    EXPECT_EQ(version >> 24, 1u);
    EXPECT_EQ(TvkGetVersion(nullptr), TvkErrorBadParameter);
    char text[32];
    EXPECT_EQ(TvkGetApiInfoString(0, text, sizeof(text)), TvkErrorSuccess);
    EXPECT_STREQ(text, "Release X86");
    EXPECT_EQ(TvkGetApiInfoString(2, text, sizeof(text)), TvkErrorSuccess);
    EXPECT_STREQ(text, "Release");
    EXPECT_EQ(TvkGetApiInfoString(0, text, 4), TvkErrorSuccess);
    EXPECT_STREQ(text, "Rel");
    EXPECT_EQ(TvkGetApiInfoString(7, text, sizeof(text)), TvkErrorSuccess);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(TvkGetApiInfoString(0, nullptr, 4), TvkErrorBadParameter);
    EXPECT_EQ(TvkGetErrorInfo(TvkErrorBadParameter, text, 4), TvkErrorMoreData);
    EXPECT_STREQ(text, "One");
    EXPECT_EQ(TvkGetErrorInfo(TvkErrorSuccess, nullptr, 4), TvkErrorBadParameter);
}

} // namespace
