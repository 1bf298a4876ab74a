// Interlaced complementary-colour sensors: cyan, yellow, magenta and green
// samples to colour through Y, Cr, Cb.
#pragma once

#include <cstdint>

#include "TavikImageTransform.h"

namespace img {

// Y, Cr, Cb (sample units) to R, G, B in fixed point with 10 fraction bits,
// clamped to 0 and 255. Mode 0 and mode 1 differ in their coefficients.
struct MapColorInterlacedNirMode0 {
    static void YUVtoRGB(int32_t aY, int32_t aCr, int32_t aCb, uint32_t& r, uint32_t& g,
                         uint32_t& b);
};
struct MapColorInterlacedNirMode1 {
    static void YUVtoRGB(int32_t aY, int32_t aCr, int32_t aCb, uint32_t& r, uint32_t& g,
                         uint32_t& b);
};

// The four colours, scaled by 1024, to Y, Cr, Cb; with aYIn, Y is the mean of
// the two lumas.
void CYMGToRGB(int32_t aCy, int32_t aYe, int32_t aMa, int32_t aGr, int32_t& aY, int32_t& aCr,
               int32_t& aCb);
void CYMGToRGB(int32_t aCy, int32_t aYe, int32_t aMa, int32_t aGr, int32_t& aY, int32_t& aCr,
               int32_t& aCb, int32_t aYIn);

// The colour of a sample: 0 cyan, 1 yellow, 2 magenta, 3 green.
uint32_t CygmColourAt(uint32_t aPattern, uint32_t x, uint32_t y);

// Mode 0 3x3, 1 3x3 to grey, 2 2x2, 3 binned fields; sizes even, at least 4
// by 4 for the 3x3 modes.
TvkError_t PerformCygmDebayering(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth,
                                 uint32_t aHeight, uint32_t aFormat, uint32_t aPattern,
                                 uint32_t aMode, uint32_t aNirMode);

} // namespace img
