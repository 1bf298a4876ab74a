// Complementary-colour sensors against a per-pixel reference.
#include <gtest/gtest.h>

#include <algorithm>

#include "Cygm.h"
#include "ImagingReference.h"

namespace {

using namespace ref;

// Lines repeat every four: Cy Ye, Gr Ma, Cy Ye, Ma Gr; 0 cyan 1 yellow 2 magenta 3 green.
int ColourOf(uint32_t aPattern, uint32_t x, uint32_t y) {
    static const int kLines[4][2] = {{0, 1}, {3, 2}, {0, 1}, {2, 3}};
    return kLines[(y + aPattern) % 4][x % 2];
}

uint32_t To8(int64_t aFixed) {
    if (aFixed < 0) return 0;
    if (aFixed >= 255 * 1024) return 255;
    return static_cast<uint32_t>(aFixed / 1024);
}

tRGB Map(int y, int cr, int cb, uint32_t aNir) {
    if (aNir == 0)
        return {To8(1024 * y + 4811 * cr + 2113 * cb), To8(1024 * y - 2206 * cr - 2161 * cb),
                To8(1024 * y - 1261 * cr + 5586 * cb)};
    return {To8(1024 * y + 2165 * cr + 344 * cb), To8(1024 * y - 917 * cr - 1078 * cb),
            To8(1024 * y - 959 * cr + 4645 * cb)};
}

// The four colours (times 1024) to Y, Cr, Cb, and to R, G, B.
tRGB FromColours(const int64_t* c, uint32_t aNir, int aSecondLuma = -1) {
    const int64_t cy = c[0], ye = c[1], ma = c[2], gr = c[3];
    int y = static_cast<int>((ye + ma + cy + gr) / 4096);
    const int cr = static_cast<int>(((ye + ma) - (cy + gr)) / 4096);
    const int cb = static_cast<int>((cy - ye - gr + ma) / 4096);
    if (aSecondLuma >= 0) y = (y + aSecondLuma) / 2;
    return Map(y, cr, cb, aNir);
}

std::vector<tRGB> Reference(const std::vector<uint8_t>& s, uint32_t w, uint32_t h, uint32_t p,
                            uint32_t aMode, uint32_t aNir) {
    std::vector<tRGB> out(w * h);
    for (uint32_t y = 0; y < h; ++y)
        for (uint32_t x = 0; x < w; ++x) {
            if (aMode == 2) {
                const uint32_t bx = std::min(x, w - 2), by = std::min(y, h - 2);
                int64_t c[4] = {};
                for (uint32_t dy = 0; dy < 2; ++dy)
                    for (uint32_t dx = 0; dx < 2; ++dx)
                        c[ColourOf(p, bx + dx, by + dy)] = 1024 * s[(by + dy) * w + bx + dx];
                out[y * w + x] = FromColours(c, aNir);
                continue;
            }
            // 1-2-1 weights in both directions, each colour's share scaled to 1024.
            const uint32_t cx = std::clamp(x, 1u, w - 2), cyy = std::clamp(y, 1u, h - 2);
            int64_t sum[4] = {}, weight[4] = {}, all = 0;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const int k = (dx == 0 ? 2 : 1) * (dy == 0 ? 2 : 1);
                    const int v = s[(cyy + dy) * w + cx + dx];
                    const int c = ColourOf(p, cx + dx, cyy + dy);
                    sum[c] += k * v, weight[c] += k, all += k * v;
                }
            int64_t c[4];
            for (int i = 0; i < 4; ++i)
                c[i] = sum[i] * 1024 / weight[i];
            if (aMode == 0) {
                out[y * w + x] = FromColours(c, aNir, static_cast<int>(all / 16));
            } else {
                const int luma =
                    static_cast<int>(((c[1] + c[2] + c[0] + c[3]) / 4096 + all / 16) / 2);
                const uint32_t g = static_cast<uint32_t>(std::clamp(luma, 0, 255));
                out[y * w + x] = {g, g, g};
            }
        }
    return out;
}

TEST(CygmTest, WindowedModesMatchTheReference) {
    for (uint32_t w : {4u, 6u, 10u})
        for (uint32_t h : {4u, 8u}) {
            const std::vector<uint8_t> raw = Random(w * h, w + 7 * h);
            for (uint32_t pattern = 0; pattern < 4; ++pattern)
                for (uint32_t mode : {0u, 1u, 2u})
                    for (uint32_t nir : {0u, 1u})
                        for (uint32_t format : {0u, 1u, 4u}) {
                            std::vector<uint8_t> out(w * h * OutputBytes(format));
                            ASSERT_EQ(TvkCygmImageTransform(out.data(), raw.data(), w, h, format,
                                                            pattern, mode, nir),
                                      TvkErrorSuccess);
                            EXPECT_EQ(out, Encode(Reference(raw, w, h, pattern, mode, nir), format))
                                << w << "x" << h << " pattern " << pattern << " mode " << mode
                                << " nir " << nir << " format " << format;
                        }
        }
}

TEST(CygmTest, BinnedFieldsInterleaveAndFlatGreyStaysGrey) {
    // Flat samples: no colour difference, Y is the sample.
    std::vector<uint8_t> flat(8 * 8, 90), bgr(8 * 8 * 3);
    for (uint32_t mode = 0; mode <= 3; ++mode) {
        ASSERT_EQ(TvkCygmImageTransform(bgr.data(), flat.data(), 8, 8, 1, 0, mode, 0),
                  TvkErrorSuccess);
        EXPECT_EQ(bgr, std::vector<uint8_t>(bgr.size(), 90)) << mode;
    }
    // Binned: progressive line 0 is field 2's first line, line 1 field 1's.
    const uint32_t w = 4, h = 4;
    std::vector<uint8_t> fields(w * h);
    for (uint32_t i = 0; i < w * h / 2; ++i)
        fields[i] = 40; // field 1
    for (uint32_t i = w * h / 2; i < w * h; ++i)
        fields[i] = 120; // field 2
    std::vector<uint8_t> mono(w * h);
    ASSERT_EQ(TvkCygmImageTransform(mono.data(), fields.data(), w, h, 0, 0, 3, 1), TvkErrorSuccess);
    EXPECT_EQ(mono[0], 80); // mean of a block across both fields, no colour
    // A difference along field 2's first line is red-difference, with the sign of the column.
    fields[w * h / 2] = 140;
    std::vector<uint8_t> rgb(w * h * 3);
    ASSERT_EQ(TvkCygmImageTransform(rgb.data(), fields.data(), w, h, 3, 0, 3, 1), TvkErrorSuccess);
    int32_t y = (140 + 120 + 40 + 40) / 4, cr = (140 - 120) / 2, cb = 0;
    uint32_t r, g, b;
    img::MapColorInterlacedNirMode1::YUVtoRGB(y, cr, cb, r, g, b);
    EXPECT_EQ(rgb[0], r);
    EXPECT_EQ(rgb[1], g);
    EXPECT_EQ(rgb[2], b);
    EXPECT_EQ(TvkCygmImageTransform(rgb.data(), fields.data(), w, h, 3, 4, 0, 0),
              TvkErrorBadParameter);
    EXPECT_EQ(TvkCygmImageTransform(rgb.data(), fields.data(), w, h, 3, 0, 4, 0),
              TvkErrorBadParameter);
    EXPECT_EQ(TvkCygmImageTransform(rgb.data(), fields.data(), 2, 2, 3, 0, 0, 0),
              TvkErrorBadParameter);
}

} // namespace
