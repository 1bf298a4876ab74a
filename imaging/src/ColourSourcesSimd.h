// Vector forms of the YUV 4:2:2 sources, for processors with SSE4.1; they give
// the same bytes as the plain forms.
#pragma once

#include <cstddef>
#include <cstdint>

namespace img {

// U Y V Y pairs into display format aFormat (0 to 5), limited or full range;
// writes pixels [0, return value), a multiple of 16, and nothing for another
// format.
size_t Yuv422Sse41(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat,
                   bool aFullRange);

} // namespace img
