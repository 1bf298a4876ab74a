// What each pixel format and each display format means.
#pragma once

#include <cstdint>

#include "TavikImageTransform.h"

namespace img {

struct tPixelFormatRow {
    uint32_t code;
    const char* name; // after the "TvkPixelFormat" prefix
    uint32_t bitsPerPixel;
    uint32_t bitsUsed;
    uint32_t layout;
    uint32_t bayer;
};

struct tSimpleFormatRow {
    uint32_t bitsPerPixel;
    uint32_t layout;
    uint32_t colorSpace;
};

// The row of a pixel format code, or null.
const tPixelFormatRow* FindPixelFormat(uint32_t aCode);
// The colour space of a pixel format: BT.601 for the YUV formats.
uint32_t ColorSpaceOf(const tPixelFormatRow& aRow);
// The row of a display format, or null.
const tSimpleFormatRow* FindSimpleFormat(uint32_t aFormat);
// Case-insensitive names: a display format, then a pixel format ("PixelFormat..."). -1 when
// unknown.
int64_t SimpleFormatByName(const char* aName, uint32_t aLength);
int64_t PixelFormatByName(const char* aName, uint32_t aLength);

// The display format a filled destination image stands for.
TvkError_t GetSimpleImageFormat(uint32_t& aFormat, const TvkImage& aImage);

} // namespace img
