// Sources that need no demosaicing: mono, colour pixels and YUV, each written
// through the display format's iterator.
#pragma once

#include <cstddef>
#include <cstdint>

#include "TavikImageTransform.h"

namespace img {

// YUV to RGB, BT.601 in 20-bit fixed point: Y - foot (floored at 0) times y,
// plus the chroma terms. Limited range for camera YUV; full range (Y without
// foot room) for the YUV the demosaic modes make.
struct tYuvCoefficients {
    int32_t foot, y, vr, ug, vg, ub;
};
inline constexpr tYuvCoefficients kLimitedRange = {16, 1220542, 1673527, -409993, -852492, 2116026};
inline constexpr tYuvCoefficients kFullRange = {0, 1 << 20, 1470104, -360857, -748830, 1858077};

// Each takes aPixels pixels and a display format; TvkErrorNotImplemented for
// an output the source lacks.
TvkError_t Y8ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat);
// 16-bit mono with aBitsUsed significant bits (8 to 16): 8-bit outputs take
// the upper eight bits, 16-bit outputs the whole sample.
TvkError_t Y16ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aBitsUsed,
                       bool aBigEndian, uint32_t aFormat);
// 12-bit packed mono pairs.
TvkError_t Y12ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat);
// aLayout: 4 RGB, 5 BGR (three bytes), 6 RGBA, 7 BGRA (four bytes).
TvkError_t ColourToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aLayout,
                          uint32_t aFormat);
// BT.601 limited range: 4:1:1 as U Y Y V Y Y (aPixels a multiple of 4),
// 4:2:2 as U Y V Y (aPixels even), 4:4:4 as U Y V.
TvkError_t Yuv411ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat);
TvkError_t Yuv422ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat);
// U Y V Y with full-range Y (0 to 255), as the demosaic's YUV modes make it.
TvkError_t Yuv422FullRangeToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels,
                                   uint32_t aFormat);
TvkError_t Yuv444ToOutput(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat);

} // namespace img
