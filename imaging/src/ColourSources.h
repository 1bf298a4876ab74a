// Sources that need no demosaicing: colour pixels, YUV 4:2:2 and wide mono.
#pragma once

#include <cstdint>

#include "TavikImageTransform.h"

namespace img {

// aLayout: 4 RGB, 5 BGR (three bytes), 6 RGBA, 7 BGRA (four bytes).
TvkError_t ColourToOutput(uint8_t* aDest, const uint8_t* aSource, uint32_t aPixels,
                          uint32_t aLayout, uint32_t aFormat);
// U Y V Y pairs, BT.601 limited range; aPixels even.
TvkError_t Yuv422ToOutput(uint8_t* aDest, const uint8_t* aSource, uint32_t aPixels,
                          uint32_t aFormat);
// 16-bit mono with aBitsUsed significant bits, reduced to 8 bits.
TvkError_t Y16ToOutput(uint8_t* aDest, const uint8_t* aSource, uint32_t aPixels, uint32_t aBitsUsed,
                       bool aBigEndian, uint32_t aFormat);

} // namespace img
