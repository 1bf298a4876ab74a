// "3x3" bilinear demosaic and its mono form.
#include <cstring>
#include <optional>
#include <vector>

#include "Demosaic.h"

namespace img {

namespace {

// The colour at a site of a public pattern: 0 red, 1 green, 2 blue.
inline uint32_t SiteColour(uint32_t aPattern, uint32_t x, uint32_t y) {
    static constexpr uint8_t kCells[4][4] = {
        {0, 1, 1, 2}, {1, 2, 0, 1}, {1, 0, 2, 1}, {2, 1, 1, 0}};
    return kCells[aPattern][(y & 1) * 2 + (x & 1)];
}

struct tRgb {
    uint32_t r, g, b;
};

// The bilinear value at an interior site (1 <= x < w - 1, 1 <= y < h - 1).
inline tRgb Bilinear(const uint8_t* s, uint32_t w, uint32_t x, uint32_t y, uint32_t aPattern) {
    const uint8_t* c = s + static_cast<size_t>(y) * w + x;
    const ptrdiff_t up = -static_cast<ptrdiff_t>(w), down = w;
    const uint32_t cross = (c[up] + c[down] + c[-1] + c[1]) >> 2;
    const uint32_t corners = (c[up - 1] + c[up + 1] + c[down - 1] + c[down + 1]) >> 2;
    switch (SiteColour(aPattern, x, y)) {
    case 0:
        return {*c, cross, corners};
    case 2:
        return {corners, cross, *c};
    default: {
        // Green weights the centre twice and takes only the anti-diagonal.
        const uint32_t g = (2 * *c + c[down - 1] + c[up + 1]) >> 2;
        const uint32_t across = (c[-1] + c[1]) >> 1, along = (c[up] + c[down]) >> 1;
        if (SiteColour(aPattern, x + 1, y) == 0) return {across, g, along};
        return {along, g, across};
    }
    }
}

// Each source line split into its even and odd samples once, for the three
// output lines that use it, in a buffer that each thread keeps.
class cPlanes {
public:
    cPlanes(const uint8_t* aSource, uint32_t aWidth) : mSource(aSource), mWidth(aWidth) {
        thread_local std::vector<uint8_t> buffer;
        if (buffer.size() < 3 * size_t(aWidth)) buffer.resize(3 * size_t(aWidth));
        mBuffer = buffer.data();
    }
    tLinePlanes Get(uint32_t y) {
        uint8_t* slot = mBuffer + (y % 3) * size_t(mWidth);
        if (mHeld[y % 3] != y) {
            SplitLineSsse3(mSource + size_t(y) * mWidth, mWidth, slot, slot + mWidth / 2);
            mHeld[y % 3] = y;
        }
        return {slot, slot + mWidth / 2};
    }

private:
    const uint8_t* mSource;
    uint32_t mWidth;
    uint8_t* mBuffer;
    int64_t mHeld[3] = {-1, -1, -1};
};

// Output line y from interior line m: the first column repeats the second,
// the last the one before.
template <class It>
void Line3x3(It aOut, uint8_t* aDest, const uint8_t* aSource, uint32_t w, uint32_t m,
             uint32_t aPattern, cPlanes* aPlanes) {
    tRgb v = Bilinear(aSource, w, 1, m, aPattern);
    aOut.Write(v.r, v.g, v.b);
    aOut.Write(v.r, v.g, v.b);
    uint32_t x = 2;
    if constexpr (VectorFormat<It, uint8_t>() >= 0) {
        if (aPlanes) {
            const bool redLine = SiteColour(aPattern, 0, m) == 0 || SiteColour(aPattern, 1, m) == 0;
            x = Line3x3Ssse3(aDest, aPlanes->Get(m - 1), aPlanes->Get(m), aPlanes->Get(m + 1), w,
                             SiteColour(aPattern, 0, m), redLine, VectorFormat<It, uint8_t>(),
                             tVectorOf<It>::grey);
            aOut.p = aDest + x * It::kBytes;
        }
    }
    for (; x + 1 < w; ++x) {
        v = Bilinear(aSource, w, x, m, aPattern);
        aOut.Write(v.r, v.g, v.b);
    }
    aOut.Write(v.r, v.g, v.b);
}

// The top line repeats the second (or is black when aBlackTop), the bottom
// line the one above.
template <class It>
TvkError_t Raw8To3x3Lines(It aOut, uint8_t* aDest, const uint8_t* aSource, uint32_t w, uint32_t h,
                          uint32_t aPattern, bool aBlackTop) {
    const size_t stride = static_cast<size_t>(w) * It::kBytes;
    return ForEachBand(h, static_cast<size_t>(w) * h, [&](uint32_t aFirst, uint32_t aEnd) {
        std::optional<cPlanes> planes;
        if (VectorFormat<It, uint8_t>() >= 0 && HaveSsse3()) planes.emplace(aSource, w);
        for (uint32_t y = aFirst; y < aEnd; ++y) {
            It out = aOut;
            out.p = aDest + y * stride;
            if (y == 0 && aBlackTop) {
                for (uint32_t x = 0; x < w; ++x)
                    out.Write(0, 0, 0);
                continue;
            }
            const uint32_t m = y == 0 ? 1 : y + 1 == h ? h - 2 : y;
            Line3x3(out, out.p, aSource, w, m, aPattern, planes ? &*planes : nullptr);
        }
    });
}

} // namespace

TvkError_t Raw8To3x3(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                     uint32_t aFormat, uint32_t aPattern) {
    if (aFormat == TvkSimpleImageFormatUYVY || aWidth < 4 || aHeight < 4)
        return TvkErrorNotImplemented;
    return WithIterator(aFormat, [&](auto aIterator) {
        return Raw8To3x3Lines(aIterator, aDest, aSource, aWidth, aHeight, aPattern, false);
    });
}

TvkError_t Raw8To3x3Mono(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                         uint32_t aFormat, uint32_t aPattern) {
    if (aFormat == TvkSimpleImageFormatUYVY || aWidth < 4 || aHeight < 4)
        return TvkErrorNotImplemented;
    return WithIterator(aFormat, [&](auto aIterator) {
        tGreyWriter<decltype(aIterator)> out{};
        return Raw8To3x3Lines(out, aDest, aSource, aWidth, aHeight, aPattern, true);
    });
}

} // namespace img
