// Colour correction functors, handles and the correcting transform path.
#include <gtest/gtest.h>

#include <thread>

#include "ColorCorrection.h"
#include "ImagingReference.h"

namespace {

using namespace ref;

// Rows applied to R, B, G in that order: this one leaves a pixel as it is.
constexpr float kIdentity[9] = {1, 0, 0, 0, 0, 1, 0, 1, 0};
// Red times 1.5, green from blue, blue from green.
constexpr float kMixed[9] = {1.5f, 0, 0, 0, 1, 0, 0, 0, 1};

// The fixed-point matrix on 8-bit samples, with its saturation rule.
tRGB Correct8(tRGB p, const float* m) {
    auto sat = [](int32_t v) -> uint32_t {
        if (v & 0xff00) return v < 0 ? 0 : 255;
        return v & 0xff;
    };
    int32_t f[9];
    for (int k = 0; k < 9; ++k)
        f[k] = static_cast<int32_t>(m[k] * 1024.0);
    const int32_t r = p.r, g = p.g, b = p.b;
    return {sat((f[0] * r + f[1] * b + f[2] * g) >> 10),
            sat((f[3] * r + f[4] * b + f[5] * g) >> 10),
            sat((f[6] * r + f[7] * b + f[8] * g) >> 10)};
}

TEST(ColorCorrectionTest, FixedPointRowsSaturateOnTheirHighBits) {
    qrx::ColorCorrectionPrm prm;
    std::copy_n(kIdentity, 9, prm.matrix);
    qrx::ColorCorrectionMatrixInt8 int8(prm);
    EXPECT_EQ(int8.m[0], 1024);
    uint32_t r = 10, g = 20, b = 30;
    int8.Apply8(r, g, b);
    EXPECT_EQ((std::array<uint32_t, 3>{r, g, b}), (std::array<uint32_t, 3>{10, 20, 30}));

    // -1 clamps to 0, 256 to 255; a result past 16 bits keeps its low byte.
    int8.m[0] = -4, int8.m[1] = int8.m[2] = 0;
    r = 255, int8.Apply8(r, g, b);
    EXPECT_EQ(r, 0u);
    int8.m[0] = 2048;
    r = 128, int8.Apply8(r, g, b);
    EXPECT_EQ(r, 255u);
    int8.m[0] = 1024 * 512;
    r = 128, int8.Apply8(r, g, b);
    EXPECT_EQ(r, 0u);

    // The 16-bit matrix on 8-bit samples saturates only past 16 bits.
    qrx::ColorCorrectionMatrixInt16 int16(prm);
    int16.m[0] = 2048;
    r = 128, int16.Apply8(r, g, b);
    EXPECT_EQ(r, 0u); // 256 keeps its low byte
    r = 200, int16.Apply8(r, g, b);
    EXPECT_EQ(r, 400u & 0xff);
    int16.m[0] = 1024 * 1024;
    r = 255, int16.Apply8(r, g, b);
    EXPECT_EQ(r, 255u);
    r = 40000, int16.Apply16(r, g, b);
    EXPECT_EQ(r, 0xFFFFu);
}

TEST(ColorCorrectionTest, LookupTablesFollowGammaThenMatrix) {
    qrx::ColorCorrectionPrm prm;
    std::copy_n(kMixed, 9, prm.matrix);
    prm.gamma = 0.5f;
    prm.maximum = 255;
    qrx::ColorCorrectionGammaMatrixLUT8 lut(prm);
    // Row 64: 255 * sqrt(64 / 255) = 127.75, rounded to 128.
    EXPECT_EQ(lut.rows[64][0], static_cast<int32_t>(128 * 1.5 * 1024 + 0.5));
    qrx::ColorCorrectionGammaMatrix plain(prm);
    for (uint32_t v : {0u, 1u, 64u, 100u, 255u}) {
        uint32_t r1 = v, g1 = 255 - v, b1 = v / 2, r2 = r1, g2 = g1, b2 = b1;
        lut.Apply8(r1, g1, b1);
        plain.Apply8(r2, g2, b2);
        EXPECT_NEAR(r1, r2, 1.0) << v;
        EXPECT_NEAR(g1, g2, 1.0) << v;
        EXPECT_NEAR(b1, b2, 1.0) << v;
    }
    qrx::ColorCorrectionGammaMatrixLUT16 wide(prm);
    ASSERT_EQ(wide.rows.size(), 256u);
}

TEST(ColorCorrectionTest, HandlesAreCheckedAndEndOnce) {
    std::vector<TvkColorCorrectionHandle> handles = {
        TvkCreateColorCorrectionMatrix(kMixed),
        TvkCreateColorCorrectionMatrix_Int8(kMixed),
        TvkCreateColorCorrectionMatrix_Int16(kMixed),
        TvkCreateColorCorrectionGamma(1.0f, 255),
        TvkCreateColorCorrectionGammaMatrix(kMixed, 1.0f, 255),
        TvkCreateColorCorrectionGammaMatrix_LUT8(kMixed, 1.0f, 255),
        TvkCreateColorCorrectionGammaMatrix_LUT16(kMixed, 1.0f, 4095),
        TvkCreateColorCorrectionGamma_LUT8(1.0f, 255),
        TvkCreateColorCorrectionGamma_LUT16(1.0f, 65535),
    };
    // Each gives the same result on a pixel that needs no rounding.
    const tRGB expected[] = {{150, 30, 20}, {150, 30, 20}, {150, 30, 20},
                             {100, 20, 30}, {150, 30, 20}, {150, 30, 20},
                             {150, 30, 20}, {100, 20, 30}, {100, 20, 30}};
    for (size_t i = 0; i < handles.size(); ++i) {
        ASSERT_NE(handles[i], nullptr) << i;
        uint8_t rgb[3] = {100, 20, 30};
        ASSERT_EQ(TvkApplyColorCorrection(handles[i], rgb, 1, TvkSimpleImageFormatRGB24),
                  TvkErrorSuccess);
        EXPECT_EQ(rgb[0], expected[i].r) << i;
        EXPECT_EQ(rgb[1], expected[i].g) << i;
        EXPECT_EQ(rgb[2], expected[i].b) << i;
    }
    // BGRA keeps its alpha; BGR48 corrects whole 16-bit samples.
    uint8_t bgra[4] = {30, 20, 100, 7};
    ASSERT_EQ(TvkApplyColorCorrection(handles[1], bgra, 1, TvkSimpleImageFormatBGRA32),
              TvkErrorSuccess);
    EXPECT_EQ((std::vector<uint8_t>(bgra, bgra + 4)), (std::vector<uint8_t>{20, 30, 150, 7}));
    uint8_t bgr48[6] = {0, 1, 0, 2, 0, 40};
    ASSERT_EQ(TvkApplyColorCorrection(handles[2], bgr48, 1, TvkSimpleImageFormatBGR48),
              TvkErrorSuccess);
    EXPECT_EQ((std::vector<uint8_t>(bgr48, bgr48 + 6)), (std::vector<uint8_t>{0, 2, 0, 1, 0, 60}));

    uint8_t mono[1] = {};
    EXPECT_EQ(TvkApplyColorCorrection(handles[0], mono, 1, TvkSimpleImageFormatMono8),
              TvkErrorNotImplemented);
    EXPECT_EQ(TvkApplyColorCorrection(handles[0], nullptr, 1, 1), TvkErrorBadParameter);
    for (TvkColorCorrectionHandle h : handles) {
        EXPECT_EQ(TvkDestroyColorCorrection(h), 0);
        EXPECT_EQ(TvkDestroyColorCorrection(h), -1);
    }
    int unknown = 0;
    EXPECT_EQ(TvkDestroyColorCorrection(&unknown), -1);
    EXPECT_EQ(TvkDestroyColorCorrection(nullptr), -1);
    EXPECT_EQ(TvkApplyColorCorrection(&unknown, mono, 1, 1), TvkErrorBadParameter);
    EXPECT_EQ(TvkCreateColorCorrectionMatrix(nullptr), nullptr);
}

TEST(ColorCorrectionTest, HandlesServeSeveralThreads) {
    TvkColorCorrectionHandle shared = TvkCreateColorCorrectionMatrix_Int8(kIdentity);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([shared] {
            for (int i = 0; i < 200; ++i) {
                TvkColorCorrectionHandle own = TvkCreateColorCorrectionGamma_LUT8(0.8f, 255);
                std::vector<uint8_t> pixels(64 * 3, 90);
                EXPECT_EQ(TvkApplyColorCorrection(shared, pixels.data(), 64, 1), TvkErrorSuccess);
                EXPECT_EQ(TvkApplyColorCorrection(own, pixels.data(), 64, 1), TvkErrorSuccess);
                EXPECT_EQ(TvkDestroyColorCorrection(own), 0);
            }
        });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(TvkDestroyColorCorrection(shared), 0);
}

struct tImages {
    std::vector<uint8_t> in, out;
    TvkImage source{}, destination{};
    tImages(uint32_t aPixelFormat, uint32_t aOutput, uint32_t w, uint32_t h,
            std::vector<uint8_t> aData) {
        source.Size = destination.Size = sizeof(TvkImage);
        EXPECT_EQ(TvkSetImageInfoFromPixelFormat(aPixelFormat, w, h, &source), TvkErrorSuccess);
        EXPECT_EQ(TvkSetImageInfoOutput(aOutput, w, h, &destination), TvkErrorSuccess);
        in = std::move(aData);
        out.assign(size_t(w) * h * OutputBytes(aOutput), 0xEE);
        source.Data = in.data();
        destination.Data = out.data();
    }
    TvkError_t Run(const float* aMatrix, uint32_t aDebayer = 0) {
        TvkTransformInfo parameters[2];
        EXPECT_EQ(TvkSetDebayerMode(aDebayer, &parameters[0]), TvkErrorSuccess);
        EXPECT_EQ(TvkSetColorCorrectionMatrix3x3(aMatrix, &parameters[1]), TvkErrorSuccess);
        return TvkImageTransform(&source, &destination, parameters, 2);
    }
};

TEST(ColorCorrectionTest, CorrectingTransformDemosaicsThenCorrects) {
    const uint32_t w = 34, h = 6;
    const std::vector<uint8_t> raw = Random(w * h, 4);
    for (uint32_t output : {0u, 1u, 3u, 5u}) {
        // A debayer parameter beside the matrix is ignored: "2x2" either way.
        tImages t(TvkPixelFormatBayerGB8, output, w, h, raw);
        ASSERT_EQ(t.Run(kMixed, 1), TvkErrorSuccess);
        std::vector<tRGB> expected = Reference2x2(raw, w, h, TvkBayerPatternGBRG);
        for (tRGB& p : expected)
            p = Correct8(p, kMixed);
        EXPECT_EQ(t.out, Encode(expected, output)) << output;
    }
    // Colour sources in, any of the four colour outputs.
    tImages bgr(TvkPixelFormatBgr8, TvkSimpleImageFormatRGBA32, 2, 1, {30, 20, 100, 3, 2, 1});
    ASSERT_EQ(bgr.Run(kMixed), TvkErrorSuccess);
    EXPECT_EQ(bgr.out, (std::vector<uint8_t>{150, 30, 20, 255, 1, 3, 2, 255}));

    // 16-bit samples go to the top of 16 bits: Mono12 raw to BGR48 and Mono16.
    std::vector<uint8_t> raw12(4 * 2 * 2, 0);
    for (size_t i = 0; i < raw12.size(); i += 2)
        raw12[i] = 0x10; // every sample 0x010 -> 0x0100
    tImages wide(TvkPixelFormatBayerRG12, TvkSimpleImageFormatBGR48, 4, 2, raw12);
    ASSERT_EQ(wide.Run(kIdentity), TvkErrorSuccess);
    for (size_t i = 0; i < wide.out.size(); i += 2) {
        EXPECT_EQ(wide.out[i], 0x00);
        EXPECT_EQ(wide.out[i + 1], 0x01);
    }
    tImages wideMono(TvkPixelFormatBayerRG12, TvkSimpleImageFormatMono16, 4, 2, raw12);
    ASSERT_EQ(wideMono.Run(kIdentity), TvkErrorSuccess);
    EXPECT_EQ(wideMono.out[0], 0x00);
    EXPECT_EQ(wideMono.out[1], 0x01);

    // 12-bit packed to BGR24 through the 16-bit matrix: 2 * 200 keeps its low byte.
    const float doubled[9] = {2, 0, 0, 0, 0, 2, 0, 2, 0};
    tImages packed(TvkPixelFormatBayerRG12Packed, TvkSimpleImageFormatBGR24, 2, 2,
                   {200, 0, 200, 200, 0, 200});
    ASSERT_EQ(packed.Run(doubled), TvkErrorSuccess);
    EXPECT_EQ(packed.out[2], 400 & 0xff);
    tImages packedWide(TvkPixelFormatBayerRG12Packed, TvkSimpleImageFormatBGR48, 2, 2,
                       {0x12, 0x43, 0x56, 0x12, 0x43, 0x56});
    ASSERT_EQ(packedWide.Run(kIdentity), TvkErrorSuccess);
    EXPECT_EQ(packedWide.out[4], 0x30); // red 0x123 << 4, low byte
    EXPECT_EQ(packedWide.out[5], 0x12);

    // Pairings without a routine.
    EXPECT_EQ(tImages(TvkPixelFormatMono8, 1, 2, 2, {1, 2, 3, 4}).Run(kIdentity),
              TvkErrorBadParameter);
    EXPECT_EQ(tImages(TvkPixelFormatBayerRG8, TvkSimpleImageFormatUYVY, 2, 2, {1, 2, 3, 4})
                  .Run(kIdentity),
              TvkErrorBadParameter);
    EXPECT_EQ(tImages(TvkPixelFormatBayerRG8, 1, 3, 2, {1, 2, 3, 4, 5, 6}).Run(kIdentity),
              TvkErrorBadParameter);
    EXPECT_EQ(
        tImages(TvkPixelFormatRgb8, TvkSimpleImageFormatMono8, 1, 1, {1, 2, 3}).Run(kIdentity),
        TvkErrorBadParameter);
}

} // namespace
