#include "ColourSources.h"

#include <algorithm>

#include "PixelIterators.h"

namespace img {

namespace {

// BT.601 limited range in 20-bit fixed point.
constexpr int32_t kCY = 1220542, kCVR = 1673527, kCUG = -409993, kCVG = -852492, kCUB = 2116026;

inline uint32_t Clamp8(int32_t aValue) {
    return static_cast<uint32_t>(std::clamp(aValue, 0, 255));
}

template <class It, class Body> void Each(uint8_t* aDest, uint32_t aCount, Body&& aBody) {
    It out{aDest};
    for (uint32_t i = 0; i < aCount; ++i)
        aBody(out, i);
}

template <class Body> TvkError_t WithOutput(uint32_t aFormat, Body&& aBody) {
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

TvkError_t ColourToOutput(uint8_t* aDest, const uint8_t* aSource, uint32_t aPixels,
                          uint32_t aLayout, uint32_t aFormat) {
    const uint32_t step = aLayout >= TvkPixelLayoutRGBA ? 4 : 3;
    const bool bgr = aLayout == TvkPixelLayoutBGR || aLayout == TvkPixelLayoutBGRA;
    return WithOutput(aFormat, [&](auto aIterator) {
        using It = decltype(aIterator);
        Each<It>(aDest, aPixels, [&](It& out, uint32_t i) {
            const uint8_t* p = aSource + static_cast<size_t>(i) * step;
            out.Write(bgr ? p[2] : p[0], p[1], bgr ? p[0] : p[2]);
        });
    });
}

TvkError_t Yuv422ToOutput(uint8_t* aDest, const uint8_t* aSource, uint32_t aPixels,
                          uint32_t aFormat) {
    return WithOutput(aFormat, [&](auto aIterator) {
        using It = decltype(aIterator);
        Each<It>(aDest, aPixels, [&](It& out, uint32_t i) {
            const uint8_t* pair = aSource + static_cast<size_t>(i / 2) * 4;
            const int32_t y = std::max(static_cast<int32_t>(pair[1 + 2 * (i & 1)]) - 16, 0) * kCY;
            const int32_t u = static_cast<int32_t>(pair[0]) - 128,
                          v = static_cast<int32_t>(pair[2]) - 128;
            constexpr int32_t kHalf = 1 << 19;
            out.Write(Clamp8((y + kCVR * v + kHalf) >> 20),
                      Clamp8((y + kCUG * u + kCVG * v + kHalf) >> 20),
                      Clamp8((y + kCUB * u + kHalf) >> 20));
        });
    });
}

TvkError_t Y16ToOutput(uint8_t* aDest, const uint8_t* aSource, uint32_t aPixels, uint32_t aBitsUsed,
                       bool aBigEndian, uint32_t aFormat) {
    if (aBitsUsed < 8 || aBitsUsed > 16) return TvkErrorBadParameter;
    const uint32_t shift = aBitsUsed - 8;
    return WithOutput(aFormat, [&](auto aIterator) {
        using It = decltype(aIterator);
        Each<It>(aDest, aPixels, [&](It& out, uint32_t i) {
            const uint8_t* p = aSource + static_cast<size_t>(i) * 2;
            const uint32_t sample = aBigEndian ? (p[0] << 8 | p[1]) : (p[1] << 8 | p[0]);
            const uint32_t v = std::min<uint32_t>(sample >> shift, 255);
            out.Write(v, v, v);
        });
    });
}

} // namespace img
