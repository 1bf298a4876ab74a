// Vector forms of the colour and YUV sources and of the 8-bit colour
// matrix, for processors with SSSE3 or SSE4.1 as told; they give the same
// bytes as the plain forms. A build without the vector forms has them write
// nothing.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ColourSources.h"
#include "VectorForms.h"

namespace img {

#if TAVIK_VECTOR_FORMS

// U Y V Y pairs into display format aFormat (0 to 5) with coefficients c;
// writes pixels [0, return value), a multiple of 16, and nothing for another
// format.
size_t Yuv422Sse41(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat,
                   const tYuvCoefficients& c);
// The same for U Y V pixels and for U Y Y V Y Y groups of four.
size_t Yuv444Sse41(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat,
                   const tYuvCoefficients& c);
size_t Yuv411Sse41(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat,
                   const tYuvCoefficients& c);

// RGB24 pixels through a fixed-point matrix (coefficients m, rows applied to
// R, B, G, 10 fraction bits, results saturated on bits 0xff00) into display
// format aFormat (0 to 5); writes pixels [0, return value), a multiple of 16.
size_t CorrectInt8Sse41(uint8_t* aDest, const uint8_t* aRgb, size_t aPixels, const int32_t* m,
                        uint32_t aFormat);

// Mono (aStep 1) or colour pixels of three or four bytes, red first or, with
// aBgr, blue first, into display format aFormat (0 to 5); SSSE3. Writes
// pixels [0, return value), a multiple of 16.
size_t ColourSsse3(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aStep,
                   bool aBgr, uint32_t aFormat);

#else

inline size_t Yuv422Sse41(uint8_t*, const uint8_t*, size_t, uint32_t, const tYuvCoefficients&) {
    return 0;
}
inline size_t Yuv444Sse41(uint8_t*, const uint8_t*, size_t, uint32_t, const tYuvCoefficients&) {
    return 0;
}
inline size_t Yuv411Sse41(uint8_t*, const uint8_t*, size_t, uint32_t, const tYuvCoefficients&) {
    return 0;
}
inline size_t CorrectInt8Sse41(uint8_t*, const uint8_t*, size_t, const int32_t*, uint32_t) {
    return 0;
}
inline size_t ColourSsse3(uint8_t*, const uint8_t*, size_t, uint32_t, bool, uint32_t) {
    return 0;
}

#endif

} // namespace img
