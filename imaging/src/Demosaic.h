// Bayer demosaic: the 2x2 nearest-neighbour core as templates over the output
// iterator and over a line source, and the modes built on it.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include "BandPool.h"
#include "DemosaicSimd.h"
#include "PixelIterators.h"
#include "TavikImageTransform.h"

namespace img {

// Internal phase of a public pattern: GB and GR trade places, so that the
// phases read 0 RG, 1 GR, 2 GB, 3 BG.
inline uint32_t InternalPhase(uint32_t aPattern) {
    return aPattern == 1 || aPattern == 2 ? 3 - aPattern : aPattern;
}

// The phase of output line y: where red and blue stand in its 2x2 blocks.
inline uint32_t LinePhase(uint32_t aPhase, uint32_t y) {
    return ((y + (aPhase >> 1)) & 1) + 2 * (aPhase & 1);
}

// One output pixel from the 2x2 block whose top left is l0[x] (a b in the
// line, c d in the next): phase 0 red a, 1 red c, 2 red b, 3 red d.
template <int Phase, class It, class S>
inline void Pixel2x2(It& aOut, const S* l0, const S* l1, uint32_t x) {
    const uint32_t a = l0[x], b = l0[x + 1], c = l1[x], d = l1[x + 1];
    if constexpr (Phase == 0)
        aOut.Write(a, (b + c) >> 1, d);
    else if constexpr (Phase == 1)
        aOut.Write(c, (a + d) >> 1, b);
    else if constexpr (Phase == 2)
        aOut.Write(b, (a + d) >> 1, c);
    else
        aOut.Write(d, (b + c) >> 1, a);
}

// Writes the Rec. 601 luminance of each pixel to all three channels ("2x2 mono").
template <class It> struct tGreyWriter : It {
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        const uint32_t y = LumaRec601(r, g, b);
        It::Write(y, y, y);
    }
};

// Writes only the green of each pixel to all three channels (Raw8ToGGG).
template <class It> struct tGreenWriter : It {
    void Write(uint32_t, uint32_t g, uint32_t) { It::Write(g, g, g); }
};

// The writer a grey writer wraps, and whether it is one.
template <class It> struct tVectorOf {
    using type = It;
    static constexpr bool grey = false;
};
template <class It> struct tVectorOf<tGreyWriter<It>> {
    using type = It;
    static constexpr bool grey = true;
};

// The display format an iterator of 8-bit samples writes where a vector line
// form exists, else -1.
template <class Writer, class S> constexpr int VectorFormat() {
    using It = typename tVectorOf<Writer>::type;
    if constexpr (!std::is_same_v<S, uint8_t>)
        return -1;
    else if constexpr (std::is_same_v<It, PixelIteratorMono8_Rec601>)
        return 0;
    else if constexpr (std::is_same_v<It, PixelIteratorBGR24>)
        return 1;
    else if constexpr (std::is_same_v<It, PixelIteratorBGRA32>)
        return 2;
    else if constexpr (std::is_same_v<It, PixelIteratorRGB24>)
        return 3;
    else if constexpr (std::is_same_v<It, PixelIteratorRGBA32>)
        return 4;
    else if constexpr (std::is_same_v<It, PixelIteratorMono8_Rec709>)
        return 5;
    else if constexpr (std::is_same_v<It, PixelIteratorUYVY>)
        return 6;
    else
        return -1;
}

// One output line. The window moves one pixel at a time, so odd pixels use
// the even phase with its columns swapped; the last pixel reuses the window of
// the one before.
template <int Even, class It, class S>
void Line2x2(It aOut, uint8_t* aDest, const S* l0, const S* l1, uint32_t aWidth) {
    constexpr int Odd = Even ^ 2;
    uint32_t x = 0;
    if constexpr (VectorFormat<It, S>() >= 0) {
        if (HaveSsse3()) {
            x = Line2x2Ssse3(aDest, l0, l1, aWidth, Even, VectorFormat<It, S>(),
                             tVectorOf<It>::grey);
            aOut.p = aDest + x * It::kBytes;
        }
    }
    for (; x + 2 < aWidth; x += 2) {
        Pixel2x2<Even>(aOut, l0, l1, x);
        Pixel2x2<Odd>(aOut, l0, l1, x + 1);
    }
    Pixel2x2<Even>(aOut, l0, l1, x);
    Pixel2x2<Even>(aOut, l0, l1, x);
}

template <class It, class S>
void Line2x2(It aOut, uint8_t* aDest, const S* l0, const S* l1, uint32_t aWidth,
             uint32_t aLinePhase) {
    switch (aLinePhase) {
    case 0:
        return Line2x2<0>(aOut, aDest, l0, l1, aWidth);
    case 1:
        return Line2x2<1>(aOut, aDest, l0, l1, aWidth);
    case 2:
        return Line2x2<2>(aOut, aDest, l0, l1, aWidth);
    default:
        return Line2x2<3>(aOut, aDest, l0, l1, aWidth);
    }
}

// Lines of 8-bit samples straight from the source.
struct tRaw8Lines {
    const uint8_t* source;
    uint32_t width;
    const uint8_t* Get(uint32_t y) { return source + static_cast<size_t>(y) * width; }
};

// Lines decoded into samples of type S, two at a time, in a buffer that each
// thread keeps between calls. aDecode(dest, y) fills line y.
template <class S, class Decode> struct tDecodedLines {
    Decode decode;
    uint32_t width;
    std::vector<S>& buffer = Buffer();
    int64_t held[2] = {-1, -1};

    const S* Get(uint32_t y) {
        if (buffer.size() < 2 * static_cast<size_t>(width)) buffer.resize(2 * width);
        S* line = buffer.data() + (y & 1) * width;
        if (held[y & 1] != y) {
            decode(line, y);
            held[y & 1] = y;
        }
        return line;
    }
    static std::vector<S>& Buffer() {
        thread_local std::vector<S> lines;
        return lines;
    }
};

// "2x2" for output lines [aFirst, aEnd): line y comes from source lines y and
// y + 1; the last line repeats the one above.
template <class It, class Lines>
void Demosaic2x2Band(It aOut, uint8_t* aDest, Lines& aLines, uint32_t aWidth, uint32_t aHeight,
                     uint32_t aPhase, uint32_t aFirst, uint32_t aEnd) {
    const size_t stride = static_cast<size_t>(aWidth) * It::kBytes;
    for (uint32_t y = aFirst; y < aEnd; ++y) {
        const uint32_t top = y + 1 < aHeight ? y : y - 1;
        const auto* l0 = aLines.Get(top);
        const auto* l1 = aLines.Get(top + 1);
        uint8_t* out = aDest + y * stride;
        aOut.p = out;
        Line2x2(aOut, out, l0, l1, aWidth, LinePhase(aPhase, top));
    }
}

// The whole image, in bands; aMakeLines() gives each band its line source.
// TvkErrorResources when a band's line buffer could not be had.
template <class It, class MakeLines>
TvkError_t Demosaic2x2(It aOut, uint8_t* aDest, uint32_t aWidth, uint32_t aHeight, uint32_t aPhase,
                       MakeLines&& aMakeLines) {
    return ForEachBand(
        aHeight, static_cast<size_t>(aWidth) * aHeight, [&](uint32_t aFirst, uint32_t aEnd) {
            auto lines = aMakeLines();
            Demosaic2x2Band(aOut, aDest, lines, aWidth, aHeight, aPhase, aFirst, aEnd);
        });
}

// Entries of the 8-bit modes; aPhase is the internal phase, sizes even and
// checked, aFormat a display format. TvkErrorNotImplemented for an output the
// mode lacks.
TvkError_t Raw8To2x2(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                     uint32_t aFormat, uint32_t aPhase);
TvkError_t Raw8To2x2Mono(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                         uint32_t aFormat, uint32_t aPhase);
TvkError_t Raw8ToGreen(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                       uint32_t aFormat, uint32_t aPhase);
TvkError_t Raw8ToSingle(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                        uint32_t aFormat, uint32_t aPhase);
// "3x3" and "3x3 bilin.Mono"; aPattern is the public pattern. Sizes of at
// least 4 by 4.
TvkError_t Raw8To3x3(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                     uint32_t aFormat, uint32_t aPattern);
TvkError_t Raw8To3x3Mono(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                         uint32_t aFormat, uint32_t aPattern);
// "2x2 YUV422" (aFilter 0), "2x2 LCAA" (1), "2x2 LCAA+V" (2).
TvkError_t Raw8ToYuvFiltered(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth,
                             uint32_t aHeight, uint32_t aFormat, uint32_t aPhase, uint32_t aFilter);

// Wider samples through the 2x2 core: 12-bit packed, and 16-bit samples with
// aBitsUsed significant bits (8 to 16) in either byte order. The 8-bit outputs
// take the upper eight bits (and so do Mono16 outputs of the packed form); the
// 16-bit outputs 7 to 10 take whole samples when aWide is set and are refused
// otherwise. No UYVY.
TvkError_t Raw12To2x2(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                      uint32_t aFormat, uint32_t aPhase);
TvkError_t Raw16To2x2(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                      uint32_t aFormat, uint32_t aPhase, uint32_t aBitsUsed, bool aBigEndian,
                      bool aWide);

// Sample decoding shared with the correcting paths.
// One line of 12-bit packed pixel pairs: the upper eight bits, or all twelve
// moved to the top of 16 bits.
void Packed12To8(uint8_t* aDest, const uint8_t* aSource, size_t aPixels);
void Packed12To16(uint16_t* aDest, const uint8_t* aSource, size_t aPixels);
// 16-bit samples with aBitsUsed significant bits: to 8 bits, or to the top of
// 16 bits. Values past the significant bits saturate.
void Wide16To8(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aBitsUsed,
               bool aBigEndian);
void Wide16To16(uint16_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aBitsUsed,
                bool aBigEndian);

} // namespace img
