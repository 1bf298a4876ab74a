// Straightforward per-pixel references for the transforms, written from
// their descriptions, and what each display format stores for a pixel.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "PixelIterators.h"
#include "TavikImageTransform.h"

namespace ref {

using img::OutputBytes;

struct tRGB {
    uint32_t r, g, b;
};

// Public pattern: 0 RG, 1 GB, 2 GR, 3 BG. The colour of the sample at (x, y).
inline char ColourAt(uint32_t aPattern, uint32_t x, uint32_t y) {
    static const char* kCells[4] = {"RGGB", "GBRG", "GRBG", "BGGR"};
    return kCells[aPattern][(y & 1) * 2 + (x & 1)];
}

// Straight from the description: each pixel takes red and blue from its 2x2
// block and the mean of the block's greens; the last column and the last line
// repeat their neighbours.
inline std::vector<tRGB> Reference2x2(const std::vector<uint8_t>& aRaw, uint32_t w, uint32_t h,
                                      uint32_t aPattern) {
    std::vector<tRGB> out(static_cast<size_t>(w) * h);
    for (uint32_t y = 0; y + 1 < h; ++y)
        for (uint32_t x = 0; x < w; ++x) {
            const uint32_t bx = x + 1 < w ? x : x - 1;
            uint32_t r = 0, b = 0, g = 0;
            for (uint32_t dy = 0; dy < 2; ++dy)
                for (uint32_t dx = 0; dx < 2; ++dx) {
                    const uint8_t v = aRaw[(y + dy) * w + bx + dx];
                    switch (ColourAt(aPattern, bx + dx, y + dy)) {
                    case 'R':
                        r = v;
                        break;
                    case 'B':
                        b = v;
                        break;
                    default:
                        g += v;
                    }
                }
            out[y * w + x] = {r, g >> 1, b};
        }
    for (uint32_t x = 0; x < w; ++x)
        out[(h - 1) * w + x] = out[(h - 2) * w + x];
    return out;
}

// What each output format stores for a row of reference pixels.
inline std::vector<uint8_t> Encode(const std::vector<tRGB>& aPixels, uint32_t aFormat) {
    std::vector<uint8_t> out;
    for (size_t i = 0; i < aPixels.size(); ++i) {
        const auto [r, g, b] = aPixels[i];
        const uint8_t y601 = static_cast<uint8_t>((77 * r + 150 * g + 29 * b) >> 8);
        const uint8_t y709 = static_cast<uint8_t>((18 * (3 * r + b) + 184 * g + 128) / 256);
        switch (aFormat) {
        case 0:
            out.push_back(y601);
            break;
        case 1:
            out.insert(out.end(), {uint8_t(b), uint8_t(g), uint8_t(r)});
            break;
        case 2:
            out.insert(out.end(), {uint8_t(b), uint8_t(g), uint8_t(r), 255});
            break;
        case 3:
            out.insert(out.end(), {uint8_t(r), uint8_t(g), uint8_t(b)});
            break;
        case 4:
            out.insert(out.end(), {uint8_t(r), uint8_t(g), uint8_t(b), 255});
            break;
        case 5:
            out.push_back(y709);
            break;
        case 7:
            out.insert(out.end(), {y601, y601});
            break;
        case 8:
            out.insert(out.end(), {y709, y709});
            break;
        case 6: {
            const int ri = int(r), gi = int(g), bi = int(b);
            const int y = ((66 * ri + 129 * gi + 25 * bi + 128) >> 8) + 16;
            const int u = ((112 * bi - 74 * gi - 38 * ri + 128) >> 8) + 128;
            const int v = ((112 * ri - 94 * gi - 18 * bi + 128) >> 8) + 128;
            if (i % 2 == 0) {
                out.insert(out.end(), {uint8_t(u), uint8_t(y), uint8_t(v), 0});
            } else {
                uint8_t* pair = &out[out.size() - 4];
                pair[0] = uint8_t((pair[0] + u) / 2);
                pair[2] = uint8_t((pair[2] + v) / 2);
                pair[3] = uint8_t(y);
            }
            break;
        }
        }
    }
    return out;
}

// "3x3" straight from the description, with the edges copied afterwards.
inline std::vector<tRGB> Reference3x3(const std::vector<uint8_t>& aRaw, uint32_t w, uint32_t h,
                                      uint32_t aPattern) {
    std::vector<tRGB> out(static_cast<size_t>(w) * h);
    auto at = [&](uint32_t x, uint32_t y) -> uint32_t { return aRaw[y * w + x]; };
    for (uint32_t y = 1; y + 1 < h; ++y)
        for (uint32_t x = 1; x + 1 < w; ++x) {
            const uint32_t cross = (at(x, y - 1) + at(x, y + 1) + at(x - 1, y) + at(x + 1, y)) >> 2;
            const uint32_t corners =
                (at(x - 1, y - 1) + at(x + 1, y - 1) + at(x - 1, y + 1) + at(x + 1, y + 1)) >> 2;
            const char here = ColourAt(aPattern, x, y);
            tRGB& v = out[y * w + x];
            if (here == 'R')
                v = {at(x, y), cross, corners};
            else if (here == 'B')
                v = {corners, cross, at(x, y)};
            else {
                const uint32_t g = (2 * at(x, y) + at(x - 1, y + 1) + at(x + 1, y - 1)) >> 2;
                const uint32_t lr = (at(x - 1, y) + at(x + 1, y)) >> 1,
                               ud = (at(x, y - 1) + at(x, y + 1)) >> 1;
                v = ColourAt(aPattern, x + 1, y) == 'R' ? tRGB{lr, g, ud} : tRGB{ud, g, lr};
            }
        }
    for (uint32_t y = 1; y + 1 < h; ++y) {
        out[y * w] = out[y * w + 1];
        out[y * w + w - 1] = out[y * w + w - 2];
    }
    for (uint32_t x = 0; x < w; ++x) {
        out[x] = out[w + x];
        out[(h - 1) * w + x] = out[(h - 2) * w + x];
    }
    return out;
}

inline std::vector<uint8_t> Random(size_t aBytes, uint32_t aSeed) {
    std::mt19937 random(aSeed);
    std::vector<uint8_t> v(aBytes);
    for (auto& b : v)
        b = static_cast<uint8_t>(random());
    return v;
}

} // namespace ref
