#include "ColourSources.h"

#include <algorithm>
#include <cstring>

#include "ColourSourcesSimd.h"
#include "Demosaic.h"
#include "PixelIterators.h"

namespace img {

namespace {

inline uint32_t Clamp8(int32_t aValue) {
    return static_cast<uint32_t>(std::clamp(aValue, 0, 255));
}

// The chroma terms of one U, V, shared by the pixels that use them.
template <const tYuvCoefficients& C> struct tChroma {
    int32_t r, g, b;
    tChroma(uint32_t aU, uint32_t aV) {
        const int32_t u = static_cast<int32_t>(aU) - 128, v = static_cast<int32_t>(aV) - 128;
        constexpr int32_t kHalf = 1 << 19;
        r = C.vr * v + kHalf;
        g = C.ug * u + C.vg * v + kHalf;
        b = C.ub * u + kHalf;
    }
    template <class It> void Write(It& aOut, uint32_t aY) const {
        const int32_t y = std::max(static_cast<int32_t>(aY) - C.foot, 0) * C.y;
        aOut.Write(Clamp8((y + r) >> 20), Clamp8((y + g) >> 20), Clamp8((y + b) >> 20));
    }
};

// Groups of aGroup pixels of aBytes bytes that share one U at byte 0 and one
// V at byte aV; aLuma lists the bytes of the lumas.
template <const tYuvCoefficients& C, uint32_t aGroup, uint32_t aBytes, uint32_t aV>
TvkError_t YuvGroups(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat,
                     const uint8_t (&aLuma)[aGroup]) {
    return WithIterator(aFormat, [&](auto aIterator) {
        aIterator.p = aDest;
        for (size_t i = 0; i < aPixels / aGroup; ++i, aSource += aBytes) {
            const tChroma<C> chroma(aSource[0], aSource[aV]);
            for (uint32_t k = 0; k < aGroup; ++k)
                chroma.Write(aIterator, aSource[aLuma[k]]);
        }
    });
}

constexpr uint8_t kLuma411[4] = {1, 2, 4, 5}, kLuma422[2] = {1, 3}, kLuma444[1] = {1};

// Pixels written in order: aPixel(out, i) for each i.
template <class Pixel>
TvkError_t Each(uint8_t* aDest, size_t aPixels, uint32_t aFormat, Pixel&& aPixel) {
    return WithIterator(aFormat, [&](auto aIterator) {
        aIterator.p = aDest;
        for (size_t i = 0; i < aPixels; ++i)
            aPixel(aIterator, i);
    });
}

// Wide mono decoded a block at a time into a buffer on the stack: aWide(block,
// first, count) gives whole 16-bit samples for the 16-bit outputs, aNarrow
// their upper eight bits for the others.
template <class Wide, class Narrow>
TvkError_t WideMono(uint8_t* aDest, size_t aPixels, uint32_t aFormat, Wide&& aWide,
                    Narrow&& aNarrow) {
    constexpr size_t kBlock = 2048;
    if (aFormat >= TvkSimpleImageFormatMono16) {
        return WithWideIterator(aFormat, [&](auto aIterator) {
            aIterator.p = aDest;
            uint16_t block[kBlock];
            for (size_t at = 0; at < aPixels; at += kBlock) {
                const size_t n = std::min(kBlock, aPixels - at);
                aWide(block, at, n);
                for (size_t i = 0; i < n; ++i)
                    aIterator.Write(block[i], block[i], block[i]);
            }
        });
    }
    uint8_t block[kBlock];
    for (size_t at = 0; at < aPixels; at += kBlock) {
        const size_t n = std::min(kBlock, aPixels - at);
        aNarrow(block, at, n);
        if (TvkError_t status = Y8ToOutput(aDest + at * OutputBytes(aFormat), block, n, aFormat))
            return status;
    }
    return TvkErrorSuccess;
}

} // namespace

TvkError_t Y8ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat) {
    if (aFormat == TvkSimpleImageFormatMono8 || aFormat == TvkSimpleImageFormatMono8Rec709) {
        memcpy(aDest, aSource, aPixels);
        return TvkErrorSuccess;
    }
    const size_t done = HaveSsse3() ? ColourSsse3(aDest, aSource, aPixels, 1, false, aFormat) : 0;
    return Each(aDest + done * OutputBytes(aFormat), aPixels - done, aFormat,
                [&](auto& out, size_t i) {
                    const uint8_t v = aSource[done + i];
                    out.Write(v, v, v);
                });
}

TvkError_t Y16ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aBitsUsed,
                       bool aBigEndian, uint32_t aFormat) {
    if (aBitsUsed < 8 || aBitsUsed > 16) return TvkErrorBadParameter;
    return WideMono(
        aDest, aPixels, aFormat,
        [&](uint16_t* aBlock, size_t aAt, size_t aCount) {
            Wide16To16(aBlock, aSource + 2 * aAt, aCount, aBitsUsed, aBigEndian);
        },
        [&](uint8_t* aBlock, size_t aAt, size_t aCount) {
            Wide16To8(aBlock, aSource + 2 * aAt, aCount, aBitsUsed, aBigEndian);
        });
}

TvkError_t Y12ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat) {
    if (aFormat == TvkSimpleImageFormatMono8) {
        Packed12To8(aDest, aSource, aPixels);
        return TvkErrorSuccess;
    }
    // Blocks hold an even number of pixels, so each starts on a whole pair.
    return WideMono(
        aDest, aPixels, aFormat,
        [&](uint16_t* aBlock, size_t aAt, size_t aCount) {
            Packed12To16(aBlock, aSource + aAt / 2 * 3, aCount);
        },
        [&](uint8_t* aBlock, size_t aAt, size_t aCount) {
            Packed12To8(aBlock, aSource + aAt / 2 * 3, aCount);
        });
}

TvkError_t ColourToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aLayout,
                          uint32_t aFormat) {
    const uint32_t step = aLayout >= TvkPixelLayoutRGBA ? 4 : 3;
    const bool bgr = aLayout == TvkPixelLayoutBGR || aLayout == TvkPixelLayoutBGRA;
    if ((aLayout == TvkPixelLayoutRGB && aFormat == TvkSimpleImageFormatRGB24) ||
        (aLayout == TvkPixelLayoutBGR && aFormat == TvkSimpleImageFormatBGR24)) {
        memcpy(aDest, aSource, aPixels * 3);
        return TvkErrorSuccess;
    }
    const size_t done = HaveSsse3() ? ColourSsse3(aDest, aSource, aPixels, step, bgr, aFormat) : 0;
    return Each(aDest + done * OutputBytes(aFormat), aPixels - done, aFormat,
                [&](auto& out, size_t i) {
                    const uint8_t* p = aSource + (done + i) * step;
                    out.Write(bgr ? p[2] : p[0], p[1], bgr ? p[0] : p[2]);
                });
}

TvkError_t Yuv411ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels,
                          uint32_t aFormat) {
    const size_t done =
        HaveSse41() ? Yuv411Sse41(aDest, aSource, aPixels, aFormat, kLimitedRange) : 0;
    return YuvGroups<kLimitedRange, 4, 6, 3>(aDest + done * OutputBytes(aFormat),
                                             aSource + done / 4 * 6, aPixels - done, aFormat,
                                             kLuma411);
}

TvkError_t Yuv422ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels,
                          uint32_t aFormat) {
    if (aFormat == TvkSimpleImageFormatUYVY) {
        memcpy(aDest, aSource, aPixels * 2);
        return TvkErrorSuccess;
    }
    const size_t done =
        HaveSse41() ? Yuv422Sse41(aDest, aSource, aPixels, aFormat, kLimitedRange) : 0;
    return YuvGroups<kLimitedRange, 2, 4, 2>(aDest + done * OutputBytes(aFormat),
                                             aSource + 2 * done, aPixels - done, aFormat, kLuma422);
}

TvkError_t Yuv422FullRangeToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels,
                                   uint32_t aFormat) {
    const size_t done = HaveSse41() ? Yuv422Sse41(aDest, aSource, aPixels, aFormat, kFullRange) : 0;
    return YuvGroups<kFullRange, 2, 4, 2>(aDest + done * OutputBytes(aFormat), aSource + 2 * done,
                                          aPixels - done, aFormat, kLuma422);
}

TvkError_t Yuv444ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels,
                          uint32_t aFormat) {
    const size_t done =
        HaveSse41() ? Yuv444Sse41(aDest, aSource, aPixels, aFormat, kLimitedRange) : 0;
    return YuvGroups<kLimitedRange, 1, 3, 2>(aDest + done * OutputBytes(aFormat),
                                             aSource + 3 * done, aPixels - done, aFormat, kLuma444);
}

} // namespace img
