// Bayer demosaic of 8-bit raw images.
#pragma once

#include <cstdint>

#include "TavikImageTransform.h"

namespace img {

// "2x2" nearest neighbour into output format aFormat (a TvkSimpleImageFormat).
// aPattern is the internal phase: 0 RG, 1 GR, 2 GB, 3 BG. Sizes must be even.
TvkError_t Raw8ToColor2x2(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                          uint32_t aFormat, uint32_t aPattern);

// "3x3" bilinear; aPattern is the public pattern (0 RG, 1 GB, 2 GR, 3 BG).
// Sizes of at least 4 by 4; no UYVY output.
TvkError_t Raw8ToColor3x3(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                          uint32_t aFormat, uint32_t aPattern);

// Mono 8-bit samples through an output format.
TvkError_t Y8ToOutput(uint8_t* aDest, const uint8_t* aSource, uint32_t aPixels, uint32_t aFormat);

// Bytes per output pixel of a display format, or 0.
uint32_t OutputBytes(uint32_t aFormat);

} // namespace img
