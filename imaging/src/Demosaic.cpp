#include "Demosaic.h"

#include <cstring>
#include <iterator>
#include <type_traits>

#include "DemosaicSimd.h"
#include "PixelIterators.h"

namespace img {

namespace {

// One output pixel from the 2x2 block whose top left is l0[x], under a phase
// that says where red and blue stand: 0 red a, 1 red c, 2 red b, 3 red d
// (a b in the line, c d in the next).
template <int Phase, class It>
inline void Pixel(It& aOut, const uint8_t* l0, const uint8_t* l1, uint32_t x) {
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

// One output line; the phase of odd pixels is the even phase with the column
// flipped. Three-byte outputs take the vector form where the processor has it.
template <int Even, class It>
void Line(uint8_t* aDest, const uint8_t* l0, const uint8_t* l1, uint32_t aWidth) {
    constexpr int Odd = Even ^ 2;
    uint32_t x = 0;
    if constexpr (std::is_same_v<It, PixelIteratorBGR24> ||
                  std::is_same_v<It, PixelIteratorRGB24>) {
        if (HaveSsse3())
            x = Line3Ssse3(aDest, l0, l1, aWidth, Even, std::is_same_v<It, PixelIteratorBGR24>);
    }
    It out{aDest + x * It::kBytes};
    for (; x + 2 < aWidth; x += 2) {
        Pixel<Even>(out, l0, l1, x);
        Pixel<Odd>(out, l0, l1, x + 1);
    }
    // The last pixel uses the window of the one before.
    Pixel<Even>(out, l0, l1, x);
    Pixel<Even>(out, l0, l1, x);
}

template <class It>
void Raw8ToColor(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                 uint32_t aPattern) {
    const size_t stride = static_cast<size_t>(aWidth) * It::kBytes;
    for (uint32_t y = 0; y + 1 < aHeight; ++y) {
        const uint8_t* l0 = aSource + static_cast<size_t>(y) * aWidth;
        const uint8_t* l1 = l0 + aWidth;
        uint8_t* out = aDest + y * stride;
        // The phase is decided once per line.
        const uint32_t phase = ((y + (aPattern >> 1)) & 1) + 2 * (aPattern & 1);
        switch (phase) {
        case 0:
            Line<0, It>(out, l0, l1, aWidth);
            break;
        case 1:
            Line<1, It>(out, l0, l1, aWidth);
            break;
        case 2:
            Line<2, It>(out, l0, l1, aWidth);
            break;
        default:
            Line<3, It>(out, l0, l1, aWidth);
            break;
        }
    }
    // The last line repeats the one above.
    memcpy(aDest + (aHeight - 1) * stride, aDest + (aHeight - 2) * stride, stride);
}

template <class It> void Y8To(uint8_t* aDest, const uint8_t* aSource, uint32_t aPixels) {
    It out{aDest};
    for (uint32_t i = 0; i < aPixels; ++i)
        out.Write(aSource[i], aSource[i], aSource[i]);
}

// Calls aBody with the iterator type of a display format.
template <class Body> TvkError_t WithIterator(uint32_t aFormat, Body&& aBody) {
    switch (aFormat) {
    case TvkSimpleImageFormatMono8:
        aBody(PixelIteratorMono8_Rec601{});
        break;
    case TvkSimpleImageFormatBGR24:
        aBody(PixelIteratorBGR24{});
        break;
    case TvkSimpleImageFormatBGRA32:
        aBody(PixelIteratorBGRA32{});
        break;
    case TvkSimpleImageFormatRGB24:
        aBody(PixelIteratorRGB24{});
        break;
    case TvkSimpleImageFormatRGBA32:
        aBody(PixelIteratorRGBA32{});
        break;
    case TvkSimpleImageFormatMono8Rec709:
        aBody(PixelIteratorMono8_Rec709{});
        break;
    case TvkSimpleImageFormatUYVY:
        aBody(PixelIteratorUYVY{});
        break;
    case TvkSimpleImageFormatMono16:
        aBody(PixelIteratorMono16_Rec601{});
        break;
    case TvkSimpleImageFormatMono16Rec709:
        aBody(PixelIteratorMono16_Rec709{});
        break;
    default:
        return TvkErrorNotImplemented;
    }
    return TvkErrorSuccess;
}

} // namespace

uint32_t OutputBytes(uint32_t aFormat) {
    static constexpr uint32_t kBytes[] = {1, 3, 4, 3, 4, 1, 2, 2, 2, 6, 6};
    return aFormat < std::size(kBytes) ? kBytes[aFormat] : 0;
}

TvkError_t Raw8ToColor2x2(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                          uint32_t aFormat, uint32_t aPattern) {
    return WithIterator(aFormat, [&](auto aIterator) {
        Raw8ToColor<decltype(aIterator)>(aDest, aSource, aWidth, aHeight, aPattern);
    });
}

TvkError_t Y8ToOutput(uint8_t* aDest, const uint8_t* aSource, uint32_t aPixels, uint32_t aFormat) {
    return WithIterator(
        aFormat, [&](auto aIterator) { Y8To<decltype(aIterator)>(aDest, aSource, aPixels); });
}

} // namespace img

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
    const uint32_t up = c[-static_cast<ptrdiff_t>(w)], down = c[w], left = c[-1], right = c[1];
    switch (SiteColour(aPattern, x, y)) {
    case 0: {
        const uint32_t corners = c[-static_cast<ptrdiff_t>(w) - 1] +
                                 c[-static_cast<ptrdiff_t>(w) + 1] + c[w - 1] + c[w + 1];
        return {*c, (up + down + left + right) >> 2, corners >> 2};
    }
    case 2: {
        const uint32_t corners = c[-static_cast<ptrdiff_t>(w) - 1] +
                                 c[-static_cast<ptrdiff_t>(w) + 1] + c[w - 1] + c[w + 1];
        return {corners >> 2, (up + down + left + right) >> 2, *c};
    }
    default: {
        // Green weights the centre twice and takes only the anti-diagonal.
        const uint32_t g = (2 * *c + c[w - 1] + c[-static_cast<ptrdiff_t>(w) + 1]) >> 2;
        const uint32_t across = (left + right) >> 1, along = (up + down) >> 1;
        if (SiteColour(aPattern, x + 1, y) == 0) return {across, g, along};
        return {along, g, across};
    }
    }
}

template <class It>
void Raw8To3x3(uint8_t* aDest, const uint8_t* aSource, uint32_t w, uint32_t h, uint32_t aPattern) {
    const size_t stride = static_cast<size_t>(w) * It::kBytes;
    for (uint32_t y = 1; y + 1 < h; ++y) {
        It out{aDest + y * stride};
        // The first column repeats the second, the last the one before.
        tRgb v = Bilinear(aSource, w, 1, y, aPattern);
        out.Write(v.r, v.g, v.b);
        out.Write(v.r, v.g, v.b);
        uint32_t x = 2;
        if constexpr (std::is_same_v<It, PixelIteratorBGR24> ||
                      std::is_same_v<It, PixelIteratorRGB24>) {
            if (HaveSsse3()) {
                const uint8_t* m = aSource + static_cast<size_t>(y) * w;
                const bool redLine =
                    SiteColour(aPattern, 0, y) == 0 || SiteColour(aPattern, 1, y) == 0;
                x = Line3x3Ssse3(aDest + y * stride, m - w, m, m + w, w, SiteColour(aPattern, 0, y),
                                 redLine, std::is_same_v<It, PixelIteratorBGR24>);
                out = It{aDest + y * stride + x * It::kBytes};
            }
        }
        for (; x + 1 < w; ++x) {
            v = Bilinear(aSource, w, x, y, aPattern);
            out.Write(v.r, v.g, v.b);
        }
        out.Write(v.r, v.g, v.b);
    }
    // The top line repeats the second, the bottom line the one above.
    memcpy(aDest, aDest + stride, stride);
    memcpy(aDest + (h - 1) * stride, aDest + (h - 2) * stride, stride);
}

} // namespace

TvkError_t Raw8ToColor3x3(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                          uint32_t aFormat, uint32_t aPattern) {
    if (aFormat == TvkSimpleImageFormatUYVY || aWidth < 4 || aHeight < 4)
        return TvkErrorNotImplemented;
    return WithIterator(aFormat, [&](auto aIterator) {
        Raw8To3x3<decltype(aIterator)>(aDest, aSource, aWidth, aHeight, aPattern);
    });
}

} // namespace img
