// The general transform picks the routine of the source's layout and size.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "ImagingReference.h"

namespace {

using namespace ref;

struct tPair {
    std::vector<uint8_t> in, out;
    TvkImage source{}, destination{};
    tPair(uint32_t aPixelFormat, uint32_t aOutput, uint32_t w, uint32_t h, size_t aBytes) {
        source.Size = destination.Size = sizeof(TvkImage);
        EXPECT_EQ(TvkSetImageInfoFromPixelFormat(aPixelFormat, w, h, &source), TvkErrorSuccess);
        EXPECT_EQ(TvkSetImageInfoOutput(aOutput, w, h, &destination), TvkErrorSuccess);
        in = Random(aBytes, aPixelFormat);
        out.assign(size_t(w) * h * OutputBytes(aOutput), 0xEE);
        source.Data = in.data();
        destination.Data = out.data();
    }
    TvkError_t Run(const TvkTransformInfo* aParameters = nullptr, uint32_t aCount = 0) {
        return TvkImageTransform(&source, &destination, aParameters, aCount);
    }
};

TEST(TransformTest, EachLayoutReachesItsRoutine) {
    const uint32_t w = 8, h = 4, n = w * h;
    using tDirect = std::function<TvkError_t(uint8_t*, const uint8_t*, uint32_t)>;
    struct {
        uint32_t pixelFormat;
        size_t bytes;
        uint32_t endianness;
        tDirect direct;
    } cases[] = {
        {TvkPixelFormatMono8, n, 0,
         [](auto d, auto s, auto f) { return TvkY8ImageTransform(d, s, 32, f); }},
        {TvkPixelFormatMono16, 2 * n, 0,
         [](auto d, auto s, auto f) { return TvkY16ImageTransformLE(d, s, 32, f); }},
        {TvkPixelFormatMono16, 2 * n, 1,
         [](auto d, auto s, auto f) { return TvkY16ImageTransform(d, s, 32, f); }},
        {TvkPixelFormatMono12, 2 * n, 0,
         [](auto d, auto s, auto f) { return TvkY16ImageTransformEx(d, s, 32, f, 1, 12, 0, 0); }},
        {TvkPixelFormatMono12Packed, n * 3 / 2, 0,
         [](auto d, auto s, auto f) { return TvkY12ImageTransform(d, s, 32, f); }},
        {TvkPixelFormatBayerGR8, n, 0,
         [](auto d, auto s, auto f) { return TvkRaw8ImageTransform(d, s, 8, 4, f, 2); }},
        {TvkPixelFormatBayerGB16, 2 * n, 1,
         [](auto d, auto s, auto f) { return TvkRaw16ImageTransform(d, s, 8, 4, f, 1); }},
        {TvkPixelFormatBayerBG10, 2 * n, 0,
         [](auto d, auto s, auto f) {
             return TvkRaw16ImageTransformEx(d, s, 8, 4, f, 1, 10, 0, 3);
         }},
        {TvkPixelFormatBayerRG12Packed, n * 3 / 2, 0,
         [](auto d, auto s, auto f) { return TvkRaw12ImageTransform(d, s, 8, 4, f, 0); }},
        {TvkPixelFormatRgb8, 3 * n, 0,
         [](auto d, auto s, auto f) { return TvkRGB8ImageTransform(d, s, 32, f); }},
        {TvkPixelFormatBgr8, 3 * n, 0,
         [](auto d, auto s, auto f) { return TvkBGR8ImageTransform(d, s, 32, f); }},
        {TvkPixelFormatRgba8, 4 * n, 0,
         [](auto d, auto s, auto f) { return TvkRGBA8ImageTransform(d, s, 32, f); }},
        {TvkPixelFormatBgra8, 4 * n, 0,
         [](auto d, auto s, auto f) { return TvkBGRA8ImageTransform(d, s, 32, f); }},
        {TvkPixelFormatYuv411, n * 3 / 2, 0,
         [](auto d, auto s, auto f) { return TvkYUV411ImageTransform(d, s, 32, f); }},
        {TvkPixelFormatYuv422, 2 * n, 0,
         [](auto d, auto s, auto f) { return TvkYUV422ImageTransform(d, s, 32, f); }},
        {TvkPixelFormatYuv444, 3 * n, 0,
         [](auto d, auto s, auto f) { return TvkYUV444ImageTransform(d, s, 32, f); }},
    };
    for (auto& c : cases)
        for (uint32_t output : {0u, 1u, 7u}) {
            tPair pair(c.pixelFormat, output, w, h, c.bytes);
            pair.source.ImageInfo.PixelInfo.Endianness = c.endianness;
            std::vector<uint8_t> expected(pair.out.size(), 0xEE);
            const TvkError_t status = c.direct(expected.data(), pair.in.data(), output);
            EXPECT_EQ(pair.Run(), status) << std::hex << c.pixelFormat << " " << output;
            EXPECT_EQ(pair.out, expected) << std::hex << c.pixelFormat << " " << output;
        }
}

TEST(TransformTest, DebayerParameterPicksTheMode) {
    const uint32_t numbers[] = {0, 2, 4, 5,
                                3}; // "2x2", "3x3", "2x2 LCAA", "2x2 LCAA+V", "2x2 YUV422"
    for (uint32_t mode = 0; mode < 5; ++mode) {
        tPair pair(TvkPixelFormatBayerBG8, TvkSimpleImageFormatRGB24, 10, 6, 60);
        TvkTransformInfo parameters[2];
        TvkSetGammaCorrection(2.2f, &parameters[0]); // not consulted
        TvkSetDebayerMode(mode, &parameters[1]);
        ASSERT_EQ(pair.Run(parameters, 2), TvkErrorSuccess);
        std::vector<uint8_t> expected(pair.out.size());
        ASSERT_EQ(TvkRaw8DeBayer(expected.data(), pair.in.data(), 10, 6, 3, 3, numbers[mode]),
                  TvkErrorSuccess);
        EXPECT_EQ(pair.out, expected) << mode;
    }
}

TEST(TransformTest, OddSizesFollowTheFallThrough) {
    // A BGR layout of 32 bits is read as RGBA.
    tPair pair(TvkPixelFormatBgr8, TvkSimpleImageFormatRGB24, 2, 1, 8);
    pair.source.ImageInfo.PixelInfo.BitsPerPixel = 32;
    ASSERT_EQ(pair.Run(), TvkErrorSuccess);
    EXPECT_EQ(pair.out, (std::vector<uint8_t>{pair.in[0], pair.in[1], pair.in[2], pair.in[4],
                                              pair.in[5], pair.in[6]}));
    // An RGBA layout of 12 bits is read as raw packed.
    tPair packed(TvkPixelFormatRgba8, TvkSimpleImageFormatBGR24, 4, 2, 12);
    packed.source.ImageInfo.PixelInfo.BitsPerPixel = 12;
    packed.source.ImageInfo.PixelInfo.BayerPattern = 0;
    std::vector<uint8_t> expected(packed.out.size());
    ASSERT_EQ(TvkRaw12ImageTransform(expected.data(), packed.in.data(), 4, 2, 1, 0),
              TvkErrorSuccess);
    ASSERT_EQ(packed.Run(), TvkErrorSuccess);
    EXPECT_EQ(packed.out, expected);
}

TEST(TransformTest, BadInputIsRefusedAndNothingIsWritten) {
    auto refused = [](tPair& aPair, TvkError_t aStatus, const char* aWhat) {
        EXPECT_EQ(aPair.Run(), aStatus) << aWhat;
        EXPECT_EQ(aPair.out, std::vector<uint8_t>(aPair.out.size(), 0xEE)) << aWhat;
    };
    {
        tPair p(TvkPixelFormatMono16, TvkSimpleImageFormatMono16, 4, 2, 16);
        p.destination.ImageInfo.PixelInfo.BitsUsed = 12;
        refused(p, TvkErrorNotImplemented, "16-bit destination using 12 bits");
    }
    {
        tPair p(TvkPixelFormatMono8, TvkSimpleImageFormatMono8, 4, 2, 8);
        p.source.Size = 0;
        p.destination.Size = 1;
        refused(p, TvkErrorStructSize, "record sizes");
        p.source.Size = sizeof(TvkImage);
        p.destination.ImageInfo.Height = 3;
        refused(p, TvkErrorBadParameter, "sizes differ");
        p.destination.ImageInfo.Height = 2;
        p.source.ImageInfo.PixelInfo.PixelLayout = 11;
        p.destination.Size = sizeof(TvkImage);
        refused(p, TvkErrorBadParameter, "unknown layout");
        p.source.ImageInfo.PixelInfo.PixelLayout = 0;
        p.source.ImageInfo.PixelInfo.BitsPerPixel = 10;
        refused(p, TvkErrorBadParameter, "mono of 10 bits");
        p.source.ImageInfo.PixelInfo.BitsPerPixel = 8;
        p.destination.ImageInfo.PixelInfo.PixelLayout = TvkPixelLayoutYUV411;
        refused(p, TvkErrorBadParameter, "destination not a display format");
        p.source.Data = nullptr;
        refused(p, TvkErrorBadParameter, "no source pixels");
    }
    for (auto [w, h] : {std::pair{0u, 0u}, {3u, 2u}, {4u, 3u}}) {
        tPair p(TvkPixelFormatBayerRG8, TvkSimpleImageFormatBGR24, w, h, 16);
        refused(p, TvkErrorBadParameter, "raw of zero or odd size");
    }
    {
        tPair p(TvkPixelFormatYuv411, TvkSimpleImageFormatBGR24, 6, 2, 18);
        refused(p, TvkErrorBadParameter, "4:1:1 width not a multiple of 4");
        tPair q(TvkPixelFormatYuv422, TvkSimpleImageFormatBGR24, 3, 2, 12);
        refused(q, TvkErrorBadParameter, "4:2:2 width odd");
        tPair r(TvkPixelFormatBayerRG16, TvkSimpleImageFormatUYVY, 4, 2, 16);
        refused(r, TvkErrorNotImplemented, "no UYVY from 16-bit raw");
    }
    TvkImage image{};
    image.Size = sizeof(TvkImage);
    EXPECT_EQ(TvkImageTransform(nullptr, &image, nullptr, 0), TvkErrorBadParameter);
    EXPECT_EQ(TvkSetColorCorrectionMatrix3x3(nullptr, nullptr), TvkErrorBadParameter);
    EXPECT_EQ(TvkSetGammaCorrection(1.0f, nullptr), TvkErrorBadParameter);
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
