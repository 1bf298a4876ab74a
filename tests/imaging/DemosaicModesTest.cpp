// The other demosaic modes, the wider samples and the band split, each
// against a per-pixel reference.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "BandPool.h"
#include "Demosaic.h"
#include "DemosaicSimd.h"
#include "ImagingReference.h"

namespace {

using namespace ref;

constexpr uint32_t kWidths[] = {2, 4, 6, 10, 34, 66};
constexpr uint32_t kHeights[] = {2, 4, 6};

std::vector<tRGB> Grey(std::vector<tRGB> aPixels) {
    for (tRGB& p : aPixels) {
        const uint32_t y = (77 * p.r + 150 * p.g + 29 * p.b) >> 8;
        p = {y, y, y};
    }
    return aPixels;
}

// "Single": the red sample of each 2x2 cell fills the cell.
std::vector<tRGB> ReferenceSingle(const std::vector<uint8_t>& aRaw, uint32_t w, uint32_t h,
                                  uint32_t aPattern) {
    std::vector<tRGB> out(w * h);
    for (uint32_t y = 0; y < h; ++y)
        for (uint32_t x = 0; x < w; ++x) {
            uint32_t v = 0;
            for (uint32_t dy = 0; dy < 2; ++dy)
                for (uint32_t dx = 0; dx < 2; ++dx)
                    if (ColourAt(aPattern, dx, dy) == 'R')
                        v = aRaw[(y / 2 * 2 + dy) * w + x / 2 * 2 + dx];
            out[y * w + x] = {v, v, v};
        }
    return out;
}

uint32_t Clamp(int64_t v) {
    return static_cast<uint32_t>(std::clamp<int64_t>(v, 0, 255));
}

// The YUV modes: 2x2 colours to full-range YUV 4:4:4, chroma filtered in
// pairs (0), along the line (1) or along and across (2), and back.
std::vector<tRGB> ReferenceYuvMode(const std::vector<uint8_t>& aRaw, uint32_t w, uint32_t h,
                                   uint32_t aPattern, int aFilter) {
    const std::vector<tRGB> rgb = Reference2x2(aRaw, w, h, aPattern);
    std::vector<std::array<int, 3>> yuv(w * h);
    for (size_t i = 0; i < rgb.size(); ++i) {
        const int r = rgb[i].r, g = rgb[i].g, b = rgb[i].b;
        yuv[i] = {(29 * b + 77 * r + 150 * g) >> 8, ((128 * b - 43 * r - 85 * g) >> 8) + 128,
                  ((128 * r - 21 * b - 107 * g) >> 8) + 128};
    }
    auto four = [&](uint32_t y, uint32_t k, int c) {
        const auto* p = &yuv[y * w];
        if (k == 0) return 2 * (p[0][c] + p[1][c]);
        return p[2 * k - 2][c] + p[2 * k - 1][c] + p[2 * k][c] + p[2 * k + 1][c];
    };
    std::vector<tRGB> out(w * h);
    for (uint32_t y = 0; y < h; ++y)
        for (uint32_t x = 0; x < w; ++x) {
            const uint32_t k = x / 2;
            int chroma[3];
            for (int c = 1; c <= 2; ++c) {
                if (aFilter == 2 && y + 1 < h)
                    chroma[c] = (four(y, k, c) + four(y + 1, k, c) + 4) >> 3;
                else if (aFilter == 0 || k == 0)
                    chroma[c] = (yuv[y * w + 2 * k][c] + yuv[y * w + 2 * k + 1][c]) >> 1;
                else
                    chroma[c] = four(y, k, c) / 4;
            }
            const int64_t Y = int64_t(yuv[y * w + x][0]) << 20, U = chroma[1] - 128,
                          V = chroma[2] - 128;
            out[y * w + x] = {Clamp((Y + 1470104 * V + (1 << 19)) >> 20),
                              Clamp((Y - 360857 * U - 748830 * V + (1 << 19)) >> 20),
                              Clamp((Y + 1858077 * U + (1 << 19)) >> 20)};
        }
    return out;
}

TEST(DemosaicModesTest, EveryModeMatchesItsReference) {
    for (uint32_t w : kWidths)
        for (uint32_t h : kHeights) {
            const std::vector<uint8_t> raw = Random(w * h, w * 100 + h);
            for (uint32_t pattern = 0; pattern < 4; ++pattern) {
                struct {
                    uint32_t mode;
                    std::vector<tRGB> expected;
                    std::vector<uint32_t> formats;
                } cases[] = {
                    {1, Grey(Reference2x2(raw, w, h, pattern)), {0, 1, 2, 3, 4, 5, 6, 7, 8}},
                    {6, ReferenceSingle(raw, w, h, pattern), {0, 1, 2, 3, 4, 5, 6, 7, 8}},
                    {3, ReferenceYuvMode(raw, w, h, pattern, 0), {0, 1, 2, 3, 4, 5, 7, 8}},
                    {4, ReferenceYuvMode(raw, w, h, pattern, 1), {0, 1, 2, 3, 4, 5, 7, 8}},
                    {5, ReferenceYuvMode(raw, w, h, pattern, 2), {0, 1, 2, 3, 4, 5, 7, 8}},
                };
                for (auto& c : cases)
                    for (uint32_t format : c.formats) {
                        std::vector<uint8_t> out(w * h * OutputBytes(format), 0);
                        ASSERT_EQ(
                            TvkRaw8DeBayer(out.data(), raw.data(), w, h, format, pattern, c.mode),
                            TvkErrorSuccess);
                        EXPECT_EQ(out, Encode(c.expected, format))
                            << "mode " << c.mode << " " << w << "x" << h << " pattern " << pattern
                            << " format " << format;
                    }
            }
        }
}

TEST(DemosaicModesTest, GreenOnlyFormWritesTheMeanOfTheGreens) {
    const uint32_t w = 40, h = 6;
    const std::vector<uint8_t> raw = Random(w * h, 8);
    for (uint32_t pattern = 0; pattern < 4; ++pattern) {
        std::vector<tRGB> expected = Reference2x2(raw, w, h, pattern);
        for (tRGB& p : expected)
            p = {p.g, p.g, p.g};
        for (uint32_t format : {0u, 1u, 6u}) {
            std::vector<uint8_t> out(w * h * OutputBytes(format));
            ASSERT_EQ(
                img::Raw8ToGreen(out.data(), raw.data(), w, h, format, img::InternalPhase(pattern)),
                TvkErrorSuccess);
            EXPECT_EQ(out, Encode(expected, format)) << pattern << " " << format;
        }
    }
}

TEST(DemosaicModesTest, ThreeByThreeMonoIsGreyWithABlackTopLine) {
    const uint32_t w = 38, h = 8;
    const std::vector<uint8_t> raw = Random(w * h, 5);
    for (uint32_t pattern = 0; pattern < 4; ++pattern) {
        std::vector<tRGB> expected = Grey(Reference3x3(raw, w, h, pattern));
        std::fill(expected.begin(), expected.begin() + w, tRGB{0, 0, 0});
        for (uint32_t format : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u}) {
            std::vector<uint8_t> out(w * h * OutputBytes(format));
            ASSERT_EQ(TvkRaw8DeBayer(out.data(), raw.data(), w, h, format, pattern, 7),
                      TvkErrorSuccess);
            EXPECT_EQ(out, Encode(expected, format)) << pattern << " " << format;
        }
    }
}

TEST(DemosaicModesTest, FlatGreyStaysGreyAndTheYuvModesRefuseUyvy) {
    std::vector<uint8_t> raw(8 * 6, 77), bgr(8 * 6 * 3), uyvy(8 * 6 * 2);
    for (uint32_t mode : {0u, 1u, 2u, 3u, 4u, 5u, 6u}) {
        ASSERT_EQ(TvkRaw8DeBayer(bgr.data(), raw.data(), 8, 6, TvkSimpleImageFormatBGR24, 1, mode),
                  TvkErrorSuccess);
        EXPECT_EQ(bgr, std::vector<uint8_t>(bgr.size(), 77)) << mode;
    }
    EXPECT_EQ(TvkRaw8ImageTransform_IntLCAA(uyvy.data(), raw.data(), 8, 6, 6, 0),
              TvkErrorNotImplemented);
    EXPECT_EQ(TvkRaw8ImageTransform_IntLCAAV(uyvy.data(), raw.data(), 8, 6, 6, 0xFFFFFFFF),
              TvkErrorNotImplemented);
    EXPECT_EQ(TvkRaw8ImageTransform_IntYUV422(uyvy.data(), raw.data(), 8, 6, 1, 4),
              TvkErrorBadParameter);
    EXPECT_EQ(TvkRaw8DeBayer(bgr.data(), raw.data(), 8, 6, 1, 0, 8), TvkErrorBadParameter);
}

TEST(DemosaicModesTest, ModeNames) {
    const char* expected[] = {"2x2",      "2x2 mono",   "3x3",    "2x2 YUV422",
                              "2x2 LCAA", "2x2 LCAA+V", "Single", "3x3 bilin.Mono"};
    for (uint32_t i = 0; i < 8; ++i)
        EXPECT_STREQ(TvkGetDeBayeringName(8, i, 0), expected[i]);
    EXPECT_STREQ(TvkGetDeBayeringName(8, 8, 0), "none");
    EXPECT_STREQ(TvkGetDeBayeringName(12, 0, 0), "2x2");
    EXPECT_STREQ(TvkGetDeBayeringName(16, 2, 0), "none");
}

// 16-bit samples in either byte order.
std::vector<uint8_t> Store16(const std::vector<uint16_t>& aSamples, bool aBigEndian) {
    std::vector<uint8_t> bytes;
    for (uint16_t s : aSamples) {
        const uint8_t lo = static_cast<uint8_t>(s), hi = static_cast<uint8_t>(s >> 8);
        bytes.insert(bytes.end(), aBigEndian ? std::initializer_list<uint8_t>{hi, lo}
                                             : std::initializer_list<uint8_t>{lo, hi});
    }
    return bytes;
}

std::vector<uint16_t> RandomSamples(size_t aCount, uint32_t aBits, uint32_t aSeed) {
    std::mt19937 random(aSeed);
    std::vector<uint16_t> v(aCount);
    for (auto& s : v)
        s = static_cast<uint16_t>(random() & ((1u << aBits) - 1));
    return v;
}

// What the 16-bit outputs store for pixels of 16-bit samples.
std::vector<uint8_t> EncodeWide(const std::vector<tRGB>& aPixels, uint32_t aFormat) {
    std::vector<uint8_t> out;
    auto put = [&](uint32_t v) {
        out.push_back(static_cast<uint8_t>(v));
        out.push_back(static_cast<uint8_t>(v >> 8));
    };
    for (const auto& [r, g, b] : aPixels) {
        if (aFormat == 7) put((77 * r + 150 * g + 29 * b) >> 8);
        if (aFormat == 8) put((18 * (3 * r + b) + 184 * g + 128) / 256);
        if (aFormat == 9) put(b), put(g), put(r);
        if (aFormat == 10) put(r), put(g), put(b);
    }
    return out;
}

template <class T>
std::vector<T> Map(const std::vector<uint16_t>& aSamples, uint32_t (*aF)(uint32_t)) {
    std::vector<T> out;
    for (uint16_t s : aSamples)
        out.push_back(static_cast<T>(aF(s)));
    return out;
}

// "2x2" of wide samples on 16-bit values, as the reference does on 8-bit ones.
std::vector<tRGB> Reference2x2Wide(const std::vector<uint16_t>& aRaw, uint32_t w, uint32_t h,
                                   uint32_t aPattern) {
    std::vector<tRGB> out(w * h);
    for (uint32_t y = 0; y < h; ++y)
        for (uint32_t x = 0; x < w; ++x) {
            const uint32_t bx = x + 1 < w ? x : x - 1, by = y + 1 < h ? y : y - 1;
            uint32_t r = 0, b = 0, g = 0;
            for (uint32_t dy = 0; dy < 2; ++dy)
                for (uint32_t dx = 0; dx < 2; ++dx) {
                    const uint32_t v = aRaw[(by + dy) * w + bx + dx];
                    const char c = ColourAt(aPattern, bx + dx, by + dy);
                    (c == 'R' ? r : c == 'B' ? b : g) += v;
                }
            out[y * w + x] = {r, g >> 1, b};
        }
    return out;
}

TEST(DemosaicModesTest, WideSamplesTakeTheirUpperBitsOrStayWhole) {
    const uint32_t w = 36, h = 6;
    for (uint32_t pattern = 0; pattern < 4; ++pattern) {
        // 12-bit packed: the upper eight bits through "2x2"; 16-bit outputs of 8-bit luminance.
        const std::vector<uint16_t> s12 = RandomSamples(w * h, 12, pattern);
        std::vector<uint8_t> packed;
        for (size_t i = 0; i < s12.size(); i += 2)
            packed.insert(packed.end(),
                          {uint8_t(s12[i] >> 4), uint8_t((s12[i] & 15) | (s12[i + 1] & 15) << 4),
                           uint8_t(s12[i + 1] >> 4)});
        const auto top12 = Map<uint8_t>(s12, [](uint32_t s) { return s >> 4; });
        for (uint32_t format : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u}) {
            std::vector<uint8_t> out(w * h * OutputBytes(format));
            ASSERT_EQ(TvkRaw12ImageTransform(out.data(), packed.data(), w, h, format, pattern),
                      TvkErrorSuccess);
            EXPECT_EQ(out, Encode(Reference2x2(top12, w, h, pattern), format)) << format;
        }
        // Big-endian full range.
        const std::vector<uint16_t> s16 = RandomSamples(w * h, 16, pattern + 10);
        const auto top16 = Map<uint8_t>(s16, [](uint32_t s) { return s >> 8; });
        for (uint32_t format : {0u, 1u, 2u, 3u, 4u, 5u}) {
            std::vector<uint8_t> out(w * h * OutputBytes(format));
            ASSERT_EQ(TvkRaw16ImageTransform(out.data(), Store16(s16, true).data(), w, h, format,
                                             pattern),
                      TvkErrorSuccess);
            EXPECT_EQ(out, Encode(Reference2x2(top16, w, h, pattern), format)) << format;
        }
        // Ten to sixteen significant bits, either order, values past them saturating.
        for (uint32_t bits : {10u, 12u, 14u, 16u})
            for (bool bigEndian : {false, true}) {
                std::vector<uint16_t> s = RandomSamples(w * h, bits, bits + pattern);
                if (bits < 16) s[5] = 0xFFFF;
                const uint32_t max = (1u << bits) - 1;
                std::vector<uint8_t> narrow;
                std::vector<uint16_t> wide;
                for (uint16_t v : s) {
                    narrow.push_back(
                        static_cast<uint8_t>(std::min<uint32_t>(v, max) >> (bits - 8)));
                    wide.push_back(
                        static_cast<uint16_t>(std::min<uint32_t>(v, max) << (16 - bits)));
                }
                const std::vector<uint8_t> bytes = Store16(s, bigEndian);
                for (uint32_t format = 0; format <= 10; ++format) {
                    if (format == 6) continue;
                    std::vector<uint8_t> out(w * h * OutputBytes(format));
                    ASSERT_EQ(TvkRaw16ImageTransformEx(out.data(), bytes.data(), w, h, format, 1,
                                                       bits, bigEndian, pattern),
                              TvkErrorSuccess);
                    EXPECT_EQ(out, format < 7
                                       ? Encode(Reference2x2(narrow, w, h, pattern), format)
                                       : EncodeWide(Reference2x2Wide(wide, w, h, pattern), format))
                        << bits << " bits, big-endian " << bigEndian << ", format " << format;
                }
            }
    }
    std::vector<uint8_t> raw(8 * 8 * 2), out(8 * 8 * 6);
    EXPECT_EQ(TvkRaw16ImageTransform(out.data(), raw.data(), 8, 8, 7, 0), TvkErrorNotImplemented);
    EXPECT_EQ(TvkRaw16ImageTransform(out.data(), raw.data(), 8, 8, 6, 0), TvkErrorNotImplemented);
    EXPECT_EQ(TvkRaw12ImageTransform(out.data(), raw.data(), 8, 8, 9, 0), TvkErrorNotImplemented);
    EXPECT_EQ(TvkRaw16ImageTransformEx(out.data(), raw.data(), 8, 8, 1, 1, 7, 0, 0),
              TvkErrorBadParameter);
    EXPECT_EQ(TvkRaw16ImageTransformEx(out.data(), raw.data(), 8, 8, 1, 1, 12, 0, 255),
              TvkErrorBadParameter);
}

// Bands on several threads give the same bytes as one pass.
TEST(DemosaicModesTest, BandsOnSeveralThreadsMatchOnePass) {
    const uint32_t w = 70, h = 46;
    const std::vector<uint8_t> raw = Random(w * h, 77);
    for (uint32_t mode = 0; mode < 8; ++mode)
        for (uint32_t format : {0u, 1u, 3u, 4u}) {
            std::vector<uint8_t> one(w * h * OutputBytes(format)), many(one.size());
            img::SetBandLimits(size_t(1) << 30, 1);
            ASSERT_EQ(TvkRaw8DeBayer(one.data(), raw.data(), w, h, format, 2, mode),
                      TvkErrorSuccess);
            img::SetBandLimits(16, 5);
            ASSERT_EQ(TvkRaw8DeBayer(many.data(), raw.data(), w, h, format, 2, mode),
                      TvkErrorSuccess);
            EXPECT_EQ(one, many) << mode << " " << format;
        }
    for (uint32_t mode = 0; mode < 4; ++mode) {
        std::vector<uint8_t> one(w * h * 3), many(one.size());
        img::SetBandLimits(size_t(1) << 30, 1);
        ASSERT_EQ(TvkCygmImageTransform(one.data(), raw.data(), w, h, 1, 2, mode, 1),
                  TvkErrorSuccess);
        img::SetBandLimits(16, 5);
        ASSERT_EQ(TvkCygmImageTransform(many.data(), raw.data(), w, h, 1, 2, mode, 1),
                  TvkErrorSuccess);
        EXPECT_EQ(one, many) << "CYGM mode " << mode;
    }
    // Sources given by pixel count go in bands of whole 4096-pixel chunks.
    const uint32_t n = 3 * 4096 + 100;
    const std::vector<uint8_t> source = Random(n * 4, 78);
    using tSource = TvkError_t (*)(uint8_t*, const uint8_t*, uint32_t, uint32_t);
    for (tSource convert :
         {TvkY8ImageTransform, TvkY12ImageTransform, TvkRGB8ImageTransform, TvkBGRA8ImageTransform,
          TvkYUV411ImageTransform, TvkYUV422ImageTransform, TvkYUV444ImageTransform,
          TvkY16ImageTransformLE})
        for (uint32_t format : {1u, 6u, 7u}) {
            std::vector<uint8_t> one(n * OutputBytes(format)), many(one.size());
            img::SetBandLimits(size_t(1) << 30, 1);
            const TvkError_t status = convert(one.data(), source.data(), n, format);
            img::SetBandLimits(16, 5);
            EXPECT_EQ(convert(many.data(), source.data(), n, format), status);
            EXPECT_EQ(one, many) << format;
        }
    img::SetBandLimits(size_t(1) << 18, 0);
}

} // namespace

namespace {

using namespace ref;

// Every vector form gives the bytes of the plain form it stands for.
TEST(DemosaicModesTest, VectorFormsMatchThePlainForms) {
    if (!img::kVectorForms) GTEST_SKIP() << "built without the vector forms";
    const uint32_t w = 134, h = 10;
    const std::vector<uint8_t> raw = Random(w * h * 2, 31);
    auto both = [&](auto aRun, size_t aBytes, const char* aWhat) {
        std::vector<uint8_t> plain(aBytes, 0), vector(aBytes, 0);
        img::UseVectorForms(false);
        aRun(plain.data());
        img::UseVectorForms(true);
        aRun(vector.data());
        EXPECT_EQ(plain, vector) << aWhat;
    };
    for (uint32_t pattern = 0; pattern < 4; ++pattern)
        for (uint32_t format = 0; format <= 8; ++format) {
            const size_t bytes = size_t(w) * h * OutputBytes(format);
            both([&](uint8_t* d) { TvkRaw8ImageTransform(d, raw.data(), w, h, format, pattern); },
                 bytes, "2x2");
            both(
                [&](uint8_t* d) {
                    TvkRaw8ImageTransform_3x3(d, raw.data(), w, h, format, pattern);
                },
                bytes, "3x3");
            for (uint32_t mode : {1u, 7u})
                both(
                    [&](uint8_t* d) { TvkRaw8DeBayer(d, raw.data(), w, h, format, pattern, mode); },
                    bytes, "mono modes");
            both([&](uint8_t* d) { TvkRaw12ImageTransform(d, raw.data(), w, h, format, pattern); },
                 bytes, "12-bit packed");
        }
    for (uint32_t format = 0; format <= 8; ++format) {
        const size_t bytes = size_t(w) * h * OutputBytes(format);
        both([&](uint8_t* d) { TvkYUV422ImageTransform(d, raw.data(), w * h, format); }, bytes,
             "YUV 4:2:2");
        both([&](uint8_t* d) { TvkRaw8DeBayer(d, raw.data(), w, h, format, 1, 5); }, bytes,
             "2x2 LCAA+V");
    }
    using tSource = TvkError_t (*)(uint8_t*, const uint8_t*, uint32_t, uint32_t);
    for (tSource source :
         {TvkY8ImageTransform, TvkRGB8ImageTransform, TvkBGR8ImageTransform, TvkRGBA8ImageTransform,
          TvkBGRA8ImageTransform, TvkYUV411ImageTransform, TvkYUV444ImageTransform})
        for (uint32_t format = 0; format <= 8; ++format)
            both([&](uint8_t* d) { source(d, raw.data(), 333, format); }, 333 * OutputBytes(format),
                 "colour source");
    // The correcting path, with rows that saturate both ways and one past 16 bits.
    const float matrix[9] = {1.7f, -0.4f, 0.2f, -0.6f, 300.0f, 0.9f, 0.1f, 0.3f, -0.2f};
    for (uint32_t format : {0u, 1u, 3u, 5u}) {
        both(
            [&](uint8_t* d) {
                TvkImage in{}, out{};
                in.Size = out.Size = sizeof(TvkImage);
                TvkSetImageInfoFromPixelFormat(TvkPixelFormatBayerGR8, w, h, &in);
                TvkSetImageInfoOutput(format, w, h, &out);
                in.Data = const_cast<uint8_t*>(raw.data());
                out.Data = d;
                TvkTransformInfo parameter;
                TvkSetColorCorrectionMatrix3x3(matrix, &parameter);
                ASSERT_EQ(TvkImageTransform(&in, &out, &parameter, 1), TvkErrorSuccess);
            },
            size_t(w) * h * OutputBytes(format), "2x2 with a matrix");
    }
    for (uint32_t pixels : {1u, 31u, 32u, 33u, 64u, 1001u})
        both([&](uint8_t* d) { TvkPacked12BitTo8Bit(d, raw.data(), pixels & ~1u, 1); }, pixels,
             "unpacking");
}

} // namespace
