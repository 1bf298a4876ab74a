#include "Cygm.h"

#include <algorithm>
#include <vector>

#include "BandPool.h"
#include "PixelIterators.h"

namespace img {

namespace {

inline uint32_t Fixed10(int32_t aValue) {
    if (aValue < 0) return 0;
    if (aValue >= 0x3FC00) return 255;
    return static_cast<uint32_t>(aValue) / 1024;
}

enum : uint32_t { kCy = 0, kYe = 1, kMa = 2, kGr = 3 };

} // namespace

void MapColorInterlacedNirMode0::YUVtoRGB(int32_t aY, int32_t aCr, int32_t aCb, uint32_t& r,
                                          uint32_t& g, uint32_t& b) {
    r = Fixed10(1024 * aY + 4811 * aCr + 2113 * aCb);
    g = Fixed10(1024 * aY - 2206 * aCr - 2161 * aCb);
    b = Fixed10(1024 * aY - 1261 * aCr + 5586 * aCb);
}

void MapColorInterlacedNirMode1::YUVtoRGB(int32_t aY, int32_t aCr, int32_t aCb, uint32_t& r,
                                          uint32_t& g, uint32_t& b) {
    r = Fixed10(1024 * aY + 2165 * aCr + 344 * aCb);
    g = Fixed10(1024 * aY - 917 * aCr - 1078 * aCb);
    b = Fixed10(1024 * aY - 959 * aCr + 4645 * aCb);
}

void CYMGToRGB(int32_t aCy, int32_t aYe, int32_t aMa, int32_t aGr, int32_t& aY, int32_t& aCr,
               int32_t& aCb) {
    aY = ((aYe + aMa) + (aCy + aGr)) / 4096;
    aCr = ((aYe + aMa) - (aCy + aGr)) / 4096;
    aCb = (aCy - aYe - aGr + aMa) / 4096;
}

void CYMGToRGB(int32_t aCy, int32_t aYe, int32_t aMa, int32_t aGr, int32_t& aY, int32_t& aCr,
               int32_t& aCb, int32_t aYIn) {
    CYMGToRGB(aCy, aYe, aMa, aGr, aY, aCr, aCb);
    aY = (aY + aYIn) / 2;
}

// Lines repeat every four: Cy Ye, Gr Ma, Cy Ye, Ma Gr; a pattern starts at
// that line.
uint32_t CygmColourAt(uint32_t aPattern, uint32_t x, uint32_t y) {
    switch ((y + aPattern) & 3) {
    case 1:
        return x & 1 ? kMa : kGr;
    case 3:
        return x & 1 ? kGr : kMa;
    default:
        return x & 1 ? kYe : kCy;
    }
}

namespace {

struct tYCC {
    int32_t y, cr, cb;
};

// "Pure" form: the four colours of the 2x2 block at (x, y).
tYCC Block2x2(const uint8_t* s, uint32_t w, uint32_t aPattern, uint32_t x, uint32_t y) {
    int32_t colour[4] = {};
    for (uint32_t dy = 0; dy < 2; ++dy)
        for (uint32_t dx = 0; dx < 2; ++dx)
            colour[CygmColourAt(aPattern, x + dx, y + dy)] =
                1024 * s[static_cast<size_t>(y + dy) * w + x + dx];
    tYCC v;
    CYMGToRGB(colour[kCy], colour[kYe], colour[kMa], colour[kGr], v.y, v.cr, v.cb);
    return v;
}

// 3x3 form at an interior site: each sample weighs 4 at the centre, 2 beside
// it and 1 at a corner, times 256, so each colour's weights sum to 1024; all
// nine with those weights give the second luma.
tYCC Window3x3(const uint8_t* s, uint32_t w, uint32_t aPattern, uint32_t x, uint32_t y) {
    int32_t sum[4] = {}, weight[4] = {}, all = 0;
    for (uint32_t dy = 0; dy < 3; ++dy)
        for (uint32_t dx = 0; dx < 3; ++dx) {
            const int32_t k = (dx == 1 ? 2 : 1) * (dy == 1 ? 2 : 1);
            const int32_t v = s[static_cast<size_t>(y + dy - 1) * w + x + dx - 1];
            const uint32_t c = CygmColourAt(aPattern, x + dx - 1, y + dy - 1);
            sum[c] += k * v;
            weight[c] += k;
            all += k * v;
        }
    int32_t colour[4];
    for (int c = 0; c < 4; ++c)
        colour[c] = weight[c] ? sum[c] * 1024 / weight[c] : 0;
    tYCC v;
    CYMGToRGB(colour[kCy], colour[kYe], colour[kMa], colour[kGr], v.y, v.cr, v.cb, all / 16);
    return v;
}

// Binned fields: the second field starts half way. Progressive lines take,
// in turn, the magenta-cyan line of field 2, the green-cyan line of field 1,
// the green-cyan line of field 2 and the magenta-cyan line of field 1.
const uint8_t* InterlacedToProgressive(const uint8_t* aSource, uint32_t w, uint32_t h, uint32_t y) {
    const uint8_t* field1 = aSource;
    const uint8_t* field2 = aSource + static_cast<size_t>(w) * h / 2;
    const uint32_t k = y / 4;
    static constexpr bool kSecond[4] = {true, false, true, false};
    static constexpr uint32_t kLine[4] = {0, 0, 1, 1};
    return (kSecond[y & 3] ? field2 : field1) + static_cast<size_t>(2 * k + kLine[y & 3]) * w;
}

inline bool IsMagentaCyanLine(uint32_t y) {
    return (y & 3) == 0 || (y & 3) == 3;
}

// Y the mean of the block, Cr and Cb half the differences along its
// magenta-cyan and green-cyan lines, their sign following the column.
tYCC BlockBinned(const uint8_t* aSource, uint32_t w, uint32_t h, uint32_t x, uint32_t y) {
    const uint8_t* l0 = InterlacedToProgressive(aSource, w, h, y);
    const uint8_t* l1 = InterlacedToProgressive(aSource, w, h, y + 1);
    const int32_t sign = x & 1 ? -1 : 1;
    const int32_t d0 = sign * (l0[x] - l0[x + 1]) / 2, d1 = sign * (l1[x] - l1[x + 1]) / 2;
    tYCC v;
    v.y = (l0[x] + l0[x + 1] + l1[x] + l1[x + 1]) / 4;
    v.cr = IsMagentaCyanLine(y) ? d0 : d1;
    v.cb = IsMagentaCyanLine(y) ? d1 : d0;
    return v;
}

} // namespace

TvkError_t PerformCygmDebayering(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth,
                                 uint32_t aHeight, uint32_t aFormat, uint32_t aPattern,
                                 uint32_t aMode, uint32_t aNirMode) {
    if (aMode > 3 || aNirMode > 1 || aPattern > 3) return TvkErrorBadParameter;
    const bool window = aMode <= 1;
    if (window && (aWidth < 4 || aHeight < 4)) return TvkErrorBadParameter;
    return WithIterator(aFormat, [&](auto aIterator) {
        const uint32_t w = aWidth, h = aHeight;
        return ForEachBand(h, size_t(w) * h, [&](uint32_t aFirst, uint32_t aEnd) {
            auto out = aIterator; // one writer per band
            for (uint32_t y = aFirst; y < aEnd; ++y) {
                out.p = aDest + static_cast<size_t>(y) * w * decltype(aIterator)::kBytes;
                for (uint32_t x = 0; x < w; ++x) {
                    tYCC v;
                    if (window) {
                        // Edges repeat their inner neighbours.
                        v = Window3x3(aSource, w, aPattern, std::clamp(x, 1u, w - 2),
                                      std::clamp(y, 1u, h - 2));
                    } else {
                        const uint32_t bx = std::min(x, w - 2), by = std::min(y, h - 2);
                        v = aMode == 2 ? Block2x2(aSource, w, aPattern, bx, by)
                                       : BlockBinned(aSource, w, h, bx, by);
                    }
                    uint32_t r, g, b;
                    if (aMode == 1) {
                        r = g = b = static_cast<uint32_t>(std::clamp(v.y, 0, 255));
                    } else if (aNirMode == 0) {
                        MapColorInterlacedNirMode0::YUVtoRGB(v.y, v.cr, v.cb, r, g, b);
                    } else {
                        MapColorInterlacedNirMode1::YUVtoRGB(v.y, v.cr, v.cb, r, g, b);
                    }
                    out.Write(r, g, b);
                }
            }
        });
    });
}

} // namespace img
