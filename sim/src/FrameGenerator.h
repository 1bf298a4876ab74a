// Fills frames with the simulator's deterministic pattern. Every row is one
// copy out of a precomputed strip, so large frames run at memory speed.
//
// Pattern: v(x, y, n) = x + y + n for pixel (x, y) of frame n, reduced to the
// format's bit depth; colour formats derive their channels from v; the first
// eight bytes of each image hold the frame id (little-endian).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sim {

struct tPixelFormat {
    uint32_t code;
    const char* name;
    uint32_t bitsPerPixel;
};

// The formats the simulator produces, or null.
const tPixelFormat* FindFormat(uint32_t aCode);
const tPixelFormat* FindFormat(const char* aName);
const std::vector<tPixelFormat>& Formats();

class FrameGenerator {
public:
    // Width must be even for the packed and YUV formats.
    bool Configure(uint32_t aFormat, uint32_t aWidth, uint32_t aHeight);
    size_t ImageSize() const { return static_cast<size_t>(mRowBytes) * mHeight; }
    uint32_t RowBytes() const { return mRowBytes; }
    // Writes at most aCapacity bytes of frame aFrameId; returns bytes written.
    size_t Fill(uint8_t* aDest, size_t aCapacity, uint64_t aFrameId) const;

private:
    uint32_t mFormat = 0;
    uint32_t mWidth = 0;
    uint32_t mHeight = 0;
    uint32_t mRowBytes = 0;
    uint32_t mPeriod = 256;     // pattern period in pixels
    uint32_t mBytesPerStep = 1; // bytes per pixel, or per pixel pair for paired formats
    bool mPaired = false;       // two pixels share bytes: strips for even and odd shifts
    std::vector<uint8_t> mStrip[2];
};

} // namespace sim
