// The writers every transform stores its pixels through: one iterator per
// output format, so each routine is instantiated per output and no pixel is
// dispatched at run time.
#pragma once

#include <cstdint>

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

} // namespace img
