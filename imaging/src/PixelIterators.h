// The writers every transform stores its pixels through: one iterator per
// output format, so each routine is instantiated per output and no pixel is
// dispatched at run time.
#pragma once

#include <cstdint>
#include <type_traits>

#include "TavikImageTransform.h"

namespace img {

inline uint8_t LumaRec601(uint32_t r, uint32_t g, uint32_t b) {
    return static_cast<uint8_t>((77 * r + 150 * g + 29 * b) >> 8);
}
inline uint8_t LumaRec709(uint32_t r, uint32_t g, uint32_t b) {
    return static_cast<uint8_t>((18 * (3 * r + b) + 184 * g + 128) / 256);
}

struct PixelIteratorBGR24 {
    static constexpr uint32_t kBytes = 3;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        p[0] = static_cast<uint8_t>(b);
        p[1] = static_cast<uint8_t>(g);
        p[2] = static_cast<uint8_t>(r);
        p += 3;
    }
};

struct PixelIteratorRGB24 {
    static constexpr uint32_t kBytes = 3;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        p[0] = static_cast<uint8_t>(r);
        p[1] = static_cast<uint8_t>(g);
        p[2] = static_cast<uint8_t>(b);
        p += 3;
    }
};

// Alpha is opaque.
struct PixelIteratorBGRA32 {
    static constexpr uint32_t kBytes = 4;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        p[0] = static_cast<uint8_t>(b);
        p[1] = static_cast<uint8_t>(g);
        p[2] = static_cast<uint8_t>(r);
        p[3] = 255;
        p += 4;
    }
};

struct PixelIteratorRGBA32 {
    static constexpr uint32_t kBytes = 4;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        p[0] = static_cast<uint8_t>(r);
        p[1] = static_cast<uint8_t>(g);
        p[2] = static_cast<uint8_t>(b);
        p[3] = 255;
        p += 4;
    }
};

struct PixelIteratorMono8_Rec601 {
    static constexpr uint32_t kBytes = 1;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) { *p++ = LumaRec601(r, g, b); }
};

struct PixelIteratorMono8_Rec709 {
    static constexpr uint32_t kBytes = 1;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) { *p++ = LumaRec709(r, g, b); }
};

// 8-bit luminance widened to the full 16-bit range, little-endian.
struct PixelIteratorMono16_Rec601 {
    static constexpr uint32_t kBytes = 2;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        const uint8_t y = LumaRec601(r, g, b);
        p[0] = y;
        p[1] = y;
        p += 2;
    }
};

struct PixelIteratorMono16_Rec709 {
    static constexpr uint32_t kBytes = 2;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        const uint8_t y = LumaRec709(r, g, b);
        p[0] = y;
        p[1] = y;
        p += 2;
    }
};

// Pixel pairs share averaged chroma: U Y V Y.
struct PixelIteratorUYVY {
    static constexpr uint32_t kBytes = 2;
    uint8_t* p;
    uint32_t count = 0;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        const int ri = static_cast<int>(r), gi = static_cast<int>(g), bi = static_cast<int>(b);
        const int y = ((66 * ri + 129 * gi + 25 * bi + 128) >> 8) + 16;
        const int u = (112 * bi - 74 * gi - 38 * ri + 128) >> 8;
        const int v = (112 * ri - 94 * gi - 18 * bi + 128) >> 8;
        if ((count & 1) == 0) {
            p[1] = static_cast<uint8_t>(y);
            p[0] = static_cast<uint8_t>(u + 128);
            p[2] = static_cast<uint8_t>(v + 128);
        } else {
            p[3] = static_cast<uint8_t>(y);
            p[0] = static_cast<uint8_t>((p[0] + u + 128) / 2);
            p[2] = static_cast<uint8_t>((p[2] + v + 128) / 2);
            p += 4;
        }
        ++count;
    }
};

// 16-bit samples, little-endian: the wide outputs.
struct PixelIteratorBGR48 {
    static constexpr uint32_t kBytes = 6;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        Put16(p, b);
        Put16(p + 2, g);
        Put16(p + 4, r);
        p += 6;
    }
    static void Put16(uint8_t* aAt, uint32_t aValue) {
        aAt[0] = static_cast<uint8_t>(aValue);
        aAt[1] = static_cast<uint8_t>(aValue >> 8);
    }
};

struct PixelIteratorRGB48 {
    static constexpr uint32_t kBytes = 6;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        PixelIteratorBGR48::Put16(p, r);
        PixelIteratorBGR48::Put16(p + 2, g);
        PixelIteratorBGR48::Put16(p + 4, b);
        p += 6;
    }
};

// Luminance of 16-bit samples; the weights sum to 256, so no overflow past 16 bits.
struct PixelIteratorMono16Wide_Rec601 {
    static constexpr uint32_t kBytes = 2;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        PixelIteratorBGR48::Put16(p, (77 * r + 150 * g + 29 * b) >> 8);
        p += 2;
    }
};

struct PixelIteratorMono16Wide_Rec709 {
    static constexpr uint32_t kBytes = 2;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        PixelIteratorBGR48::Put16(p, (18 * (3 * r + b) + 184 * g + 128) / 256);
        p += 2;
    }
};

// aBody's status when it gives one (a banded body reports bands it could not
// write), else success.
template <class Body, class It> TvkError_t RunBody(Body& aBody, It aIterator) {
    if constexpr (std::is_void_v<std::invoke_result_t<Body&, It>>) {
        aBody(aIterator);
        return TvkErrorSuccess;
    } else {
        return aBody(aIterator);
    }
}

// Calls aBody with an iterator of the display format for 8-bit samples
// (formats 0 to 8); TvkErrorNotImplemented for any other.
template <class Body> TvkError_t WithIterator(uint32_t aFormat, Body&& aBody) {
    switch (aFormat) {
    case TvkSimpleImageFormatMono8:
        return RunBody(aBody, PixelIteratorMono8_Rec601{});
    case TvkSimpleImageFormatBGR24:
        return RunBody(aBody, PixelIteratorBGR24{});
    case TvkSimpleImageFormatBGRA32:
        return RunBody(aBody, PixelIteratorBGRA32{});
    case TvkSimpleImageFormatRGB24:
        return RunBody(aBody, PixelIteratorRGB24{});
    case TvkSimpleImageFormatRGBA32:
        return RunBody(aBody, PixelIteratorRGBA32{});
    case TvkSimpleImageFormatMono8Rec709:
        return RunBody(aBody, PixelIteratorMono8_Rec709{});
    case TvkSimpleImageFormatUYVY:
        return RunBody(aBody, PixelIteratorUYVY{});
    case TvkSimpleImageFormatMono16:
        return RunBody(aBody, PixelIteratorMono16_Rec601{});
    case TvkSimpleImageFormatMono16Rec709:
        return RunBody(aBody, PixelIteratorMono16_Rec709{});
    default:
        return TvkErrorNotImplemented;
    }
}

// The same for 16-bit samples: formats 7 to 10.
template <class Body> TvkError_t WithWideIterator(uint32_t aFormat, Body&& aBody) {
    switch (aFormat) {
    case TvkSimpleImageFormatMono16:
        return RunBody(aBody, PixelIteratorMono16Wide_Rec601{});
    case TvkSimpleImageFormatMono16Rec709:
        return RunBody(aBody, PixelIteratorMono16Wide_Rec709{});
    case TvkSimpleImageFormatBGR48:
        return RunBody(aBody, PixelIteratorBGR48{});
    case TvkSimpleImageFormatRGB48:
        return RunBody(aBody, PixelIteratorRGB48{});
    default:
        return TvkErrorNotImplemented;
    }
}

// Bytes per pixel of a display format, or 0.
constexpr uint32_t OutputBytes(uint32_t aFormat) {
    constexpr uint32_t kBytes[] = {1, 3, 4, 3, 4, 1, 2, 2, 2, 6, 6};
    return aFormat < 11 ? kBytes[aFormat] : 0;
}

} // namespace img
