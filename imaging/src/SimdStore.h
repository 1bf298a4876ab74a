// The last stage of the vector forms: planes of red, green and blue for 16
// pixels, in pixel order, stored in a display format (0 to 5; UYVY, which
// needs pixel pairs, is stored by the demosaic lines themselves).
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "PixelIterators.h"

namespace img::simd {

// Three planes of 16 pixels into 48 interleaved bytes: c0, c1, c2 per pixel.
__attribute__((target("ssse3"))) inline void Interleave(uint8_t* out, __m128i c0, __m128i c1,
                                                        __m128i c2) {
    alignas(16) static const int8_t kMasks[3][3][16] = {
        // For each output block k and plane c: the plane index of each byte, or -1.
        {{0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1, 5},
         {-1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1},
         {-1, -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1}},
        {{-1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10, -1},
         {5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10},
         {-1, 5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1}},
        {{-1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1, -1},
         {-1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1},
         {10, -1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15}},
    };
    const __m128i planes[3] = {c0, c1, c2};
    for (int k = 0; k < 3; ++k) {
        __m128i block = _mm_setzero_si128();
        for (int c = 0; c < 3; ++c)
            block = _mm_or_si128(
                block,
                _mm_shuffle_epi8(planes[c],
                                 _mm_load_si128(reinterpret_cast<const __m128i*>(kMasks[k][c]))));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16 * k), block);
    }
}

// Four planes of 16 pixels into 64 interleaved bytes.
__attribute__((target("ssse3"))) inline void Interleave4(uint8_t* out, __m128i c0, __m128i c1,
                                                         __m128i c2, __m128i c3) {
    const __m128i lo01 = _mm_unpacklo_epi8(c0, c1), hi01 = _mm_unpackhi_epi8(c0, c1);
    const __m128i lo23 = _mm_unpacklo_epi8(c2, c3), hi23 = _mm_unpackhi_epi8(c2, c3);
    auto* at = reinterpret_cast<__m128i*>(out);
    _mm_storeu_si128(at, _mm_unpacklo_epi16(lo01, lo23));
    _mm_storeu_si128(at + 1, _mm_unpackhi_epi16(lo01, lo23));
    _mm_storeu_si128(at + 2, _mm_unpacklo_epi16(hi01, hi23));
    _mm_storeu_si128(at + 3, _mm_unpackhi_epi16(hi01, hi23));
}

// (wr * r + wg * g + wb * b + aRound) >> 8 for 16 pixels; the weights sum to
// 256, so no lane passes 16 bits.
template <int wr, int wg, int wb, int aRound>
__attribute__((target("ssse3"))) inline __m128i Luma(__m128i r, __m128i g, __m128i b) {
    const __m128i zero = _mm_setzero_si128();
    auto half = [&](__m128i r16, __m128i g16, __m128i b16) {
        __m128i sum = _mm_add_epi16(_mm_mullo_epi16(r16, _mm_set1_epi16(wr)),
                                    _mm_mullo_epi16(g16, _mm_set1_epi16(wg)));
        sum = _mm_add_epi16(sum, _mm_mullo_epi16(b16, _mm_set1_epi16(wb)));
        return _mm_srli_epi16(_mm_add_epi16(sum, _mm_set1_epi16(aRound)), 8);
    };
    return _mm_packus_epi16(
        half(_mm_unpacklo_epi8(r, zero), _mm_unpacklo_epi8(g, zero), _mm_unpacklo_epi8(b, zero)),
        half(_mm_unpackhi_epi8(r, zero), _mm_unpackhi_epi8(g, zero), _mm_unpackhi_epi8(b, zero)));
}

template <int Format>
__attribute__((target("ssse3"))) inline void StorePlanes(uint8_t* aDest, __m128i r, __m128i g,
                                                         __m128i b) {
    const __m128i opaque = _mm_set1_epi8(-1);
    if constexpr (Format == 0)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(aDest), Luma<77, 150, 29, 0>(r, g, b));
    else if constexpr (Format == 5)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(aDest), Luma<54, 184, 18, 128>(r, g, b));
    else if constexpr (Format == 1)
        Interleave(aDest, b, g, r);
    else if constexpr (Format == 3)
        Interleave(aDest, r, g, b);
    else if constexpr (Format == 2)
        Interleave4(aDest, b, g, r, opaque);
    else
        Interleave4(aDest, r, g, b, opaque);
}

// Calls aBody with the format (0 to Last) as a compile-time value; 0 for
// another format.
template <int Last, int Format = 0, class Body> size_t WithFormat(uint32_t aFormat, Body&& aBody) {
    if constexpr (Format > Last) {
        return 0;
    } else {
        if (aFormat == Format) return aBody(std::integral_constant<int, Format>{});
        return WithFormat<Last, Format + 1>(aFormat, aBody);
    }
}

} // namespace img::simd
