#include "ColourSourcesSimd.h"

#include "SimdStore.h"

namespace img {

using namespace simd;

namespace {

struct tTerms {
    __m128i r, g, b;
};

// The chroma terms of four pairs, in 32-bit lanes.
__attribute__((target("sse4.1"))) inline tTerms Chroma(__m128i u8, __m128i v8,
                                                       const tYuvCoefficients& c) {
    const __m128i bias = _mm_set1_epi32(128), half = _mm_set1_epi32(1 << 19);
    const __m128i u = _mm_sub_epi32(_mm_cvtepu8_epi32(u8), bias);
    const __m128i v = _mm_sub_epi32(_mm_cvtepu8_epi32(v8), bias);
    return {_mm_add_epi32(_mm_mullo_epi32(v, _mm_set1_epi32(c.vr)), half),
            _mm_add_epi32(_mm_add_epi32(_mm_mullo_epi32(u, _mm_set1_epi32(c.ug)),
                                        _mm_mullo_epi32(v, _mm_set1_epi32(c.vg))),
                          half),
            _mm_add_epi32(_mm_mullo_epi32(u, _mm_set1_epi32(c.ub)), half)};
}

// Four pixels in 32-bit lanes from the lumas in the low bytes of y8 and the
// chroma terms t, spread over the pixels by the lane shuffle Spread (0x50: two
// pairs from lanes 0 and 1; 0xE4: one term each; 0x00: all from lane 0).
template <int Spread>
__attribute__((target("sse4.1"))) inline tTerms Pixels(__m128i y8, tTerms t,
                                                       const tYuvCoefficients& c) {
    const __m128i y = _mm_mullo_epi32(_mm_cvtepu8_epi32(y8), _mm_set1_epi32(c.y));
    auto one = [&](__m128i aTerm) {
        return _mm_srai_epi32(_mm_add_epi32(y, _mm_shuffle_epi32(aTerm, Spread)), 20);
    };
    return {one(t.r), one(t.g), one(t.b)};
}

// Sixteen values in 32-bit lanes to bytes, saturating at 0 and 255.
__attribute__((target("sse4.1"))) inline __m128i Bytes(__m128i a, __m128i b, __m128i c, __m128i d) {
    return _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
}

template <int Format>
__attribute__((target("sse4.1"))) size_t Yuv422(uint8_t* aDest, const uint8_t* aSource,
                                                size_t aPixels, const tYuvCoefficients& c) {
    const __m128i pickY = _mm_setr_epi8(1, 3, 5, 7, 9, 11, 13, 15, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i pickU =
        _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i pickV =
        _mm_setr_epi8(2, 6, 10, 14, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i foot = _mm_set1_epi8(static_cast<char>(c.foot));
    size_t i = 0;
    for (; i + 16 <= aPixels; i += 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(aSource + 2 * i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(aSource + 2 * i + 16));
        // Y - foot, floored at 0, for 16 pixels; U and V for the pairs 0-3 and 4-7.
        const __m128i y = _mm_subs_epu8(
            _mm_unpacklo_epi64(_mm_shuffle_epi8(a, pickY), _mm_shuffle_epi8(b, pickY)), foot);
        const tTerms lo = Chroma(_mm_shuffle_epi8(a, pickU), _mm_shuffle_epi8(a, pickV), c);
        const tTerms hi = Chroma(_mm_shuffle_epi8(b, pickU), _mm_shuffle_epi8(b, pickV), c);
        auto upper = [](tTerms t) {
            return tTerms{_mm_unpackhi_epi64(t.r, t.r), _mm_unpackhi_epi64(t.g, t.g),
                          _mm_unpackhi_epi64(t.b, t.b)};
        };
        const tTerms p0 = Pixels<0x50>(y, lo, c);
        const tTerms p1 = Pixels<0x50>(_mm_srli_si128(y, 4), upper(lo), c);
        const tTerms p2 = Pixels<0x50>(_mm_srli_si128(y, 8), hi, c);
        const tTerms p3 = Pixels<0x50>(_mm_srli_si128(y, 12), upper(hi), c);
        StorePlanes<Format>(aDest + OutputBytes(Format) * i, Bytes(p0.r, p1.r, p2.r, p3.r),
                            Bytes(p0.g, p1.g, p2.g, p3.g), Bytes(p0.b, p1.b, p2.b, p3.b));
    }
    return i;
}

} // namespace

size_t Yuv422Sse41(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat,
                   const tYuvCoefficients& c) {
    return WithFormat<5>(aFormat,
                         [&](auto f) -> size_t { return Yuv422<f()>(aDest, aSource, aPixels, c); });
}

namespace {

// Masks that gather plane c (0 red, 1 green, 2 blue) of 16 RGB pixels from
// the 16-byte block j of their 48 bytes.
struct alignas(16) tPickMasks {
    int8_t m[3][3][16];
};
constexpr tPickMasks MakePickMasks() {
    tPickMasks t{};
    for (int c = 0; c < 3; ++c)
        for (int j = 0; j < 3; ++j)
            for (int i = 0; i < 16; ++i) {
                const int at = 3 * i + c - 16 * j;
                t.m[c][j][i] = static_cast<int8_t>(at >= 0 && at < 16 ? at : -1);
            }
    return t;
}
constexpr tPickMasks kPick = MakePickMasks();

// Plane c of 16 RGB pixels in the blocks a.
__attribute__((target("ssse3"))) inline __m128i Pick(const __m128i* a, int c) {
    __m128i plane = _mm_setzero_si128();
    for (int j = 0; j < 3; ++j)
        plane = _mm_or_si128(
            plane, _mm_shuffle_epi8(
                       a[j], _mm_load_si128(reinterpret_cast<const __m128i*>(kPick.m[c][j]))));
    return plane;
}

// 16 values in 32-bit lanes (0 to 255) to bytes.
__attribute__((target("sse4.1"))) inline __m128i Pack4(const __m128i* v) {
    return _mm_packus_epi16(_mm_packus_epi32(v[0], v[1]), _mm_packus_epi32(v[2], v[3]));
}

// One output row of the matrix for 4 pixels, saturated: a result with a bit of
// 0xff00 set becomes 0 when negative and 255 otherwise, else keeps its low byte.
__attribute__((target("sse4.1"))) inline __m128i Row(__m128i r, __m128i g, __m128i b,
                                                     const int32_t* m) {
    const __m128i sum = _mm_add_epi32(_mm_add_epi32(_mm_mullo_epi32(r, _mm_set1_epi32(m[0])),
                                                    _mm_mullo_epi32(b, _mm_set1_epi32(m[1]))),
                                      _mm_mullo_epi32(g, _mm_set1_epi32(m[2])));
    const __m128i v = _mm_srai_epi32(sum, 10);
    const __m128i low = _mm_and_si128(v, _mm_set1_epi32(0xff));
    const __m128i high =
        _mm_cmpeq_epi32(_mm_and_si128(v, _mm_set1_epi32(0xff00)), _mm_setzero_si128());
    const __m128i saturated =
        _mm_andnot_si128(_mm_cmplt_epi32(v, _mm_setzero_si128()), _mm_set1_epi32(255));
    return _mm_blendv_epi8(saturated, low, high);
}

template <int Format>
__attribute__((target("sse4.1"))) size_t CorrectInt8(uint8_t* aDest, const uint8_t* aRgb,
                                                     size_t aPixels, const int32_t* m) {
    size_t i = 0;
    for (; i + 16 <= aPixels; i += 16) {
        const __m128i blocks[3] = {
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(aRgb + 3 * i)),
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(aRgb + 3 * i + 16)),
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(aRgb + 3 * i + 32))};
        __m128i r8 = Pick(blocks, 0), g8 = Pick(blocks, 1), b8 = Pick(blocks, 2);
        __m128i out[3][4];
        for (int q = 0; q < 4; ++q) {
            const __m128i r = _mm_cvtepu8_epi32(r8), g = _mm_cvtepu8_epi32(g8),
                          b = _mm_cvtepu8_epi32(b8);
            for (int k = 0; k < 3; ++k)
                out[k][q] = Row(r, g, b, m + 3 * k);
            r8 = _mm_srli_si128(r8, 4), g8 = _mm_srli_si128(g8, 4), b8 = _mm_srli_si128(b8, 4);
        }
        StorePlanes<Format>(aDest + OutputBytes(Format) * i, Pack4(out[0]), Pack4(out[1]),
                            Pack4(out[2]));
    }
    return i;
}

} // namespace

size_t CorrectInt8Sse41(uint8_t* aDest, const uint8_t* aRgb, size_t aPixels, const int32_t* m,
                        uint32_t aFormat) {
    return WithFormat<5>(
        aFormat, [&](auto f) -> size_t { return CorrectInt8<f()>(aDest, aRgb, aPixels, m); });
}

namespace {

// Channel c of 16 four-byte pixels in the blocks a.
__attribute__((target("ssse3"))) inline __m128i Pick4(const __m128i* a, int c) {
    const __m128i mask =
        _mm_setr_epi8(static_cast<char>(c), static_cast<char>(c + 4), static_cast<char>(c + 8),
                      static_cast<char>(c + 12), -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i t0 = _mm_shuffle_epi8(a[0], mask), t1 = _mm_shuffle_epi8(a[1], mask);
    const __m128i t2 = _mm_shuffle_epi8(a[2], mask), t3 = _mm_shuffle_epi8(a[3], mask);
    return _mm_unpacklo_epi64(_mm_unpacklo_epi32(t0, t1), _mm_unpacklo_epi32(t2, t3));
}

template <int Format, int Step, bool Bgr>
__attribute__((target("ssse3"))) size_t Colour(uint8_t* aDest, const uint8_t* aSource,
                                               size_t aPixels) {
    size_t i = 0;
    for (; i + 16 <= aPixels; i += 16) {
        const uint8_t* p = aSource + Step * i;
        __m128i blocks[Step];
        for (int j = 0; j < Step; ++j)
            blocks[j] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * j));
        __m128i c0, c1, c2;
        if constexpr (Step == 1)
            c0 = c1 = c2 = blocks[0];
        else if constexpr (Step == 3)
            c0 = Pick(blocks, 0), c1 = Pick(blocks, 1), c2 = Pick(blocks, 2);
        else
            c0 = Pick4(blocks, 0), c1 = Pick4(blocks, 1), c2 = Pick4(blocks, 2);
        if constexpr (Bgr)
            StorePlanes<Format>(aDest + OutputBytes(Format) * i, c2, c1, c0);
        else
            StorePlanes<Format>(aDest + OutputBytes(Format) * i, c0, c1, c2);
    }
    return i;
}

template <int Step, bool Bgr>
size_t ColourOf(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat) {
    return WithFormat<5>(
        aFormat, [&](auto f) -> size_t { return Colour<f(), Step, Bgr>(aDest, aSource, aPixels); });
}

} // namespace

size_t ColourSsse3(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aStep,
                   bool aBgr, uint32_t aFormat) {
    switch (aStep * 2 + aBgr) {
    case 2:
        return ColourOf<1, false>(aDest, aSource, aPixels, aFormat);
    case 6:
        return ColourOf<3, false>(aDest, aSource, aPixels, aFormat);
    case 7:
        return ColourOf<3, true>(aDest, aSource, aPixels, aFormat);
    case 8:
        return ColourOf<4, false>(aDest, aSource, aPixels, aFormat);
    case 9:
        return ColourOf<4, true>(aDest, aSource, aPixels, aFormat);
    default:
        return 0;
    }
}

namespace {

// U Y V per pixel: the planes come out like those of RGB pixels.
template <int Format>
__attribute__((target("sse4.1"))) size_t Yuv444(uint8_t* aDest, const uint8_t* aSource,
                                                size_t aPixels, const tYuvCoefficients& c) {
    const __m128i foot = _mm_set1_epi8(static_cast<char>(c.foot));
    size_t i = 0;
    for (; i + 16 <= aPixels; i += 16) {
        const uint8_t* p = aSource + 3 * i;
        const __m128i blocks[3] = {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)),
                                   _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16)),
                                   _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 32))};
        const __m128i u = Pick(blocks, 0), v = Pick(blocks, 2);
        const __m128i y = _mm_subs_epu8(Pick(blocks, 1), foot);
        const tTerms p0 = Pixels<0xE4>(y, Chroma(u, v, c), c);
        const tTerms p1 = Pixels<0xE4>(_mm_srli_si128(y, 4),
                                       Chroma(_mm_srli_si128(u, 4), _mm_srli_si128(v, 4), c), c);
        const tTerms p2 = Pixels<0xE4>(_mm_srli_si128(y, 8),
                                       Chroma(_mm_srli_si128(u, 8), _mm_srli_si128(v, 8), c), c);
        const tTerms p3 = Pixels<0xE4>(_mm_srli_si128(y, 12),
                                       Chroma(_mm_srli_si128(u, 12), _mm_srli_si128(v, 12), c), c);
        StorePlanes<Format>(aDest + OutputBytes(Format) * i, Bytes(p0.r, p1.r, p2.r, p3.r),
                            Bytes(p0.g, p1.g, p2.g, p3.g), Bytes(p0.b, p1.b, p2.b, p3.b));
    }
    return i;
}

// U Y Y V Y Y per four pixels: each group's terms go to its four pixels.
template <int Format>
__attribute__((target("sse4.1"))) size_t Yuv411(uint8_t* aDest, const uint8_t* aSource,
                                                size_t aPixels, const tYuvCoefficients& c) {
    const __m128i pickY0 = _mm_setr_epi8(1, 2, 4, 5, 7, 8, 10, 11, 13, 14, -1, -1, -1, -1, -1, -1);
    const __m128i pickY1 = _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0, 1, 3, 4, 6, 7);
    const __m128i pickU =
        _mm_setr_epi8(0, 6, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i pickV =
        _mm_setr_epi8(3, 9, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i foot = _mm_set1_epi8(static_cast<char>(c.foot));
    size_t i = 0;
    // 16 pixels are 24 bytes; the second load reaches 8 bytes further, so
    // the loop stops where that stays inside the source.
    for (; i + 24 <= aPixels; i += 16) {
        const uint8_t* p = aSource + i / 4 * 6;
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16));
        const __m128i y = _mm_subs_epu8(
            _mm_or_si128(_mm_shuffle_epi8(a, pickY0), _mm_shuffle_epi8(b, pickY1)), foot);
        // Group 3 of 4 starts at byte 18: its U is b[2], its V b[5].
        const __m128i u = _mm_insert_epi8(_mm_shuffle_epi8(a, pickU), _mm_extract_epi8(b, 2), 3);
        const __m128i v = _mm_insert_epi8(_mm_shuffle_epi8(a, pickV), _mm_extract_epi8(b, 5), 3);
        const tTerms t = Chroma(u, v, c);
        const tTerms p0 = Pixels<0x00>(y, t, c);
        const tTerms p1 = Pixels<0x55>(_mm_srli_si128(y, 4), t, c);
        const tTerms p2 = Pixels<0xAA>(_mm_srli_si128(y, 8), t, c);
        const tTerms p3 = Pixels<0xFF>(_mm_srli_si128(y, 12), t, c);
        StorePlanes<Format>(aDest + OutputBytes(Format) * i, Bytes(p0.r, p1.r, p2.r, p3.r),
                            Bytes(p0.g, p1.g, p2.g, p3.g), Bytes(p0.b, p1.b, p2.b, p3.b));
    }
    return i;
}

} // namespace

size_t Yuv444Sse41(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat,
                   const tYuvCoefficients& c) {
    return WithFormat<5>(aFormat,
                         [&](auto f) -> size_t { return Yuv444<f()>(aDest, aSource, aPixels, c); });
}

size_t Yuv411Sse41(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aFormat,
                   const tYuvCoefficients& c) {
    return WithFormat<5>(aFormat,
                         [&](auto f) -> size_t { return Yuv411<f()>(aDest, aSource, aPixels, c); });
}

} // namespace img
