// Vector forms of the 2x2 and 3x3 demosaic lines and of the 12-bit unpacking,
// for processors with SSSE3; they give the same bytes as the plain forms.
// The line forms write display formats 0 to 6 (mono, BGR, BGRA, RGB, RGBA,
// mono Rec. 709, UYVY); for another they write nothing and return 0. A build
// without the vector forms has them write nothing at all.
#pragma once

#include <cstddef>
#include <cstdint>

#include "VectorForms.h"

namespace img {

// A line's even and odd samples as two planes of aWidth / 2 bytes (aWidth even).
struct tLinePlanes {
    const uint8_t* even;
    const uint8_t* odd;
};

#if TAVIK_VECTOR_FORMS

// Writes pixels [0, return value) of one output line (a multiple of 32, never
// the last pair); aEven is the line's even phase. With aGrey each pixel is its
// Rec. 601 luminance in all three channels.
uint32_t Line2x2Ssse3(uint8_t* aDest, const uint8_t* l0, const uint8_t* l1, uint32_t aWidth,
                      int aEven, uint32_t aFormat, bool aGrey);

void SplitLineSsse3(const uint8_t* aLine, uint32_t aWidth, uint8_t* aEven, uint8_t* aOdd);

// "3x3" for one interior line from the planes of the lines above (u), at (m)
// and below (l): writes pixels [2, return value) of the line. aEvenColour is
// the colour of the line's even sites (0 red, 1 green, 2 blue); aRedLine says
// whether the line holds red samples.
uint32_t Line3x3Ssse3(uint8_t* aDest, const tLinePlanes& u, const tLinePlanes& m,
                      const tLinePlanes& l, uint32_t aWidth, uint32_t aEvenColour, bool aRedLine,
                      uint32_t aFormat, bool aGrey);

// The upper eight bits of 12-bit packed pixels; returns how many pixels it
// wrote (a multiple of 32), reading only inside the source.
size_t Packed12To8Ssse3(uint8_t* aDest, const uint8_t* aSource, size_t aPixels);

#else

inline uint32_t Line2x2Ssse3(uint8_t*, const uint8_t*, const uint8_t*, uint32_t, int, uint32_t,
                             bool) {
    return 0;
}
inline void SplitLineSsse3(const uint8_t*, uint32_t, uint8_t*, uint8_t*) {}
inline uint32_t Line3x3Ssse3(uint8_t*, const tLinePlanes&, const tLinePlanes&, const tLinePlanes&,
                             uint32_t, uint32_t, bool, uint32_t, bool) {
    return 0;
}
inline size_t Packed12To8Ssse3(uint8_t*, const uint8_t*, size_t) {
    return 0;
}

#endif

} // namespace img
