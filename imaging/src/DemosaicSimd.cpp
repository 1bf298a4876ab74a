#include "DemosaicSimd.h"

#include <atomic>

#include "SimdStore.h"

namespace img {

using namespace simd;

namespace {
std::atomic<bool> gVectorForms{true};
} // namespace

bool HaveSsse3() {
    static const bool have = __builtin_cpu_supports("ssse3");
    return have && gVectorForms.load(std::memory_order_relaxed);
}

bool HaveSse41() {
    static const bool have = __builtin_cpu_supports("sse4.1");
    return have && gVectorForms.load(std::memory_order_relaxed);
}

void UseVectorForms(bool aUse) {
    gVectorForms = aUse;
}

namespace {

// The even and the odd bytes of 32 samples.
__attribute__((target("ssse3"))) inline void Split(const uint8_t* p, __m128i& aEven,
                                                   __m128i& aOdd) {
    const __m128i lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i hi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16));
    const __m128i mask = _mm_set1_epi16(0x00FF);
    aEven = _mm_packus_epi16(_mm_and_si128(lo, mask), _mm_and_si128(hi, mask));
    aOdd = _mm_packus_epi16(_mm_srli_epi16(lo, 8), _mm_srli_epi16(hi, 8));
}

// (u + v) >> 1 per byte, rounding down like the plain form.
__attribute__((target("ssse3"))) inline __m128i Mean(__m128i u, __m128i v) {
    const __m128i half = _mm_and_si128(_mm_srli_epi16(_mm_xor_si128(u, v), 1), _mm_set1_epi8(0x7F));
    return _mm_add_epi8(_mm_and_si128(u, v), half);
}

// Y, U + 128 and V + 128 of 8 pixels in 16-bit lanes, as the UYVY writer has
// them; Y's sum passes 15 bits, so it is shifted as unsigned.
struct tYuv {
    __m128i y, u, v;
};
__attribute__((target("ssse3"))) inline tYuv Yuv8(__m128i r, __m128i g, __m128i b) {
    auto mul = [](__m128i a, int16_t k) { return _mm_mullo_epi16(a, _mm_set1_epi16(k)); };
    const __m128i y = _mm_add_epi16(mul(r, 66), _mm_add_epi16(mul(g, 129), mul(b, 25)));
    const __m128i u = _mm_add_epi16(mul(b, 112), _mm_add_epi16(mul(g, -74), mul(r, -38)));
    const __m128i v = _mm_add_epi16(mul(r, 112), _mm_add_epi16(mul(g, -94), mul(b, -18)));
    const __m128i round = _mm_set1_epi16(128);
    return {_mm_add_epi16(_mm_srli_epi16(_mm_add_epi16(y, round), 8), _mm_set1_epi16(16)),
            _mm_add_epi16(_mm_srai_epi16(_mm_add_epi16(u, round), 8), round),
            _mm_add_epi16(_mm_srai_epi16(_mm_add_epi16(v, round), 8), round)};
}

// 32 pixels, from planes of the even (r0, g0, b0) and the odd pixels, in
// display format Format at aDest. UYVY pairs share the mean of their chroma.
template <int Format>
__attribute__((target("ssse3"))) inline void
Store32(uint8_t* aDest, __m128i r0, __m128i g0, __m128i b0, __m128i r1, __m128i g1, __m128i b1) {
    if constexpr (Format == 6) {
        const __m128i zero = _mm_setzero_si128();
        auto half = [&](auto unpack, tYuv& aEven, tYuv& aOdd) {
            aEven = Yuv8(unpack(r0, zero), unpack(g0, zero), unpack(b0, zero));
            aOdd = Yuv8(unpack(r1, zero), unpack(g1, zero), unpack(b1, zero));
        };
        tYuv evenLo, oddLo, evenHi, oddHi;
        half([](__m128i a, __m128i z) { return _mm_unpacklo_epi8(a, z); }, evenLo, oddLo);
        half([](__m128i a, __m128i z) { return _mm_unpackhi_epi8(a, z); }, evenHi, oddHi);
        auto mean = [](__m128i a, __m128i b) { return _mm_srli_epi16(_mm_add_epi16(a, b), 1); };
        Interleave4(aDest, _mm_packus_epi16(mean(evenLo.u, oddLo.u), mean(evenHi.u, oddHi.u)),
                    _mm_packus_epi16(evenLo.y, evenHi.y),
                    _mm_packus_epi16(mean(evenLo.v, oddLo.v), mean(evenHi.v, oddHi.v)),
                    _mm_packus_epi16(oddLo.y, oddHi.y));
    } else {
        StorePlanes<Format>(aDest, _mm_unpacklo_epi8(r0, r1), _mm_unpacklo_epi8(g0, g1),
                            _mm_unpacklo_epi8(b0, b1));
        StorePlanes<Format>(aDest + 16 * OutputBytes(Format), _mm_unpackhi_epi8(r0, r1),
                            _mm_unpackhi_epi8(g0, g1), _mm_unpackhi_epi8(b0, b1));
    }
}

// The same, or with Grey the Rec. 601 luminance of each pixel in all three
// channels (the "2x2 mono" and "3x3 bilin.Mono" writers).
template <int Format, bool Grey>
__attribute__((target("ssse3"))) inline void StoreColourOrGrey(uint8_t* aDest, __m128i r0,
                                                               __m128i g0, __m128i b0, __m128i r1,
                                                               __m128i g1, __m128i b1) {
    if constexpr (Grey) {
        const __m128i y0 = Luma<77, 150, 29, 0>(r0, g0, b0), y1 = Luma<77, 150, 29, 0>(r1, g1, b1);
        Store32<Format>(aDest, y0, y0, y0, y1, y1, y1);
    } else {
        Store32<Format>(aDest, r0, g0, b0, r1, g1, b1);
    }
}

} // namespace

namespace {

template <int Kind>
__attribute__((target("ssse3"))) uint32_t Line2x2(uint8_t* aDest, const uint8_t* l0,
                                                  const uint8_t* l1, uint32_t aWidth, int aEven) {
    constexpr int Format = Kind & 0xFF;
    constexpr bool Grey = Kind >> 8;
    uint32_t x = 0;
    // Each step reads samples [x, x + 34) and writes pixels [x, x + 32).
    for (; x + 34 <= aWidth; x += 32) {
        __m128i A, B, E, Bn, C, D, F, Dn;
        Split(l0 + x, A, B);
        Split(l0 + x + 2, E, Bn);
        Split(l1 + x, C, D);
        Split(l1 + x + 2, F, Dn);
        (void)Bn, (void)Dn;
        __m128i r0, g0, b0, r1, g1, b1;
        switch (aEven) {
        case 0:
            r0 = A, g0 = Mean(B, C), b0 = D, r1 = E, g1 = Mean(B, F), b1 = D;
            break;
        case 1:
            r0 = C, g0 = Mean(A, D), b0 = B, r1 = F, g1 = Mean(E, D), b1 = B;
            break;
        case 2:
            r0 = B, g0 = Mean(A, D), b0 = C, r1 = B, g1 = Mean(E, D), b1 = F;
            break;
        default:
            r0 = D, g0 = Mean(B, C), b0 = A, r1 = D, g1 = Mean(B, F), b1 = E;
            break;
        }
        StoreColourOrGrey<Format, Grey>(aDest + OutputBytes(Format) * x, r0, g0, b0, r1, g1, b1);
    }
    return x;
}

} // namespace

uint32_t Line2x2Ssse3(uint8_t* aDest, const uint8_t* l0, const uint8_t* l1, uint32_t aWidth,
                      int aEven, uint32_t aFormat, bool aGrey) {
    return static_cast<uint32_t>(WithFormat<6>(aFormat, [&](auto f) {
        return aGrey ? Line2x2<f() | 0x100>(aDest, l0, l1, aWidth, aEven)
                     : Line2x2<f()>(aDest, l0, l1, aWidth, aEven);
    }));
}

// Four groups of three bytes (two 12-bit pixels each) give eight upper bytes.
__attribute__((target("ssse3"))) size_t Packed12To8Ssse3(uint8_t* aDest, const uint8_t* aSource,
                                                         size_t aPixels) {
    const __m128i pick = _mm_setr_epi8(0, 2, 3, 5, 6, 8, 9, 11, -1, -1, -1, -1, -1, -1, -1, -1);
    size_t i = 0;
    // Each step reads 52 bytes (48 used) and writes 32 pixels.
    for (; i + 32 <= aPixels && (i + 32) / 2 * 3 + 4 <= aPixels / 2 * 3; i += 32, aSource += 48) {
        const __m128i a =
            _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(aSource)), pick);
        const __m128i b =
            _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(aSource + 12)), pick);
        const __m128i c =
            _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(aSource + 24)), pick);
        const __m128i d =
            _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(aSource + 36)), pick);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(aDest + i), _mm_unpacklo_epi64(a, b));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(aDest + i + 16), _mm_unpacklo_epi64(c, d));
    }
    return i;
}

namespace {

// (a + b + c + d) >> 2 in eight bits: the mean of the two pair means,
// rounded up (pavgb) only when both pair sums were odd.
__attribute__((target("ssse3"))) inline __m128i Quarter(__m128i a, __m128i b, __m128i c,
                                                        __m128i d) {
    const __m128i one = _mm_set1_epi8(1);
    const __m128i ab = _mm_xor_si128(a, b), cd = _mm_xor_si128(c, d);
    const __m128i s1 = _mm_sub_epi8(_mm_avg_epu8(a, b), _mm_and_si128(ab, one));
    const __m128i s2 = _mm_sub_epi8(_mm_avg_epu8(c, d), _mm_and_si128(cd, one));
    const __m128i bothOdd = _mm_and_si128(_mm_and_si128(ab, cd), one);
    const __m128i down = _mm_andnot_si128(bothOdd, _mm_and_si128(_mm_xor_si128(s1, s2), one));
    return _mm_sub_epi8(_mm_avg_epu8(s1, s2), down);
}

// The three colours of 16 sites of one kind.
struct tSites {
    __m128i r, g, b;
};

// A red or blue site: itself, the cross of greens, the corners of the other colour.
__attribute__((target("ssse3"))) inline tSites ColourSite(bool aRed, __m128i c, __m128i up,
                                                          __m128i down, __m128i left, __m128i right,
                                                          __m128i ul, __m128i ur, __m128i ll,
                                                          __m128i lr) {
    const __m128i g = Quarter(up, down, left, right), other = Quarter(ul, ur, ll, lr);
    return aRed ? tSites{c, g, other} : tSites{other, g, c};
}

// A green site: its own colour twice with the anti-diagonal; the line's
// colour from left and right, the other from up and down.
__attribute__((target("ssse3"))) inline tSites GreenSite(bool aRedLine, __m128i c, __m128i up,
                                                         __m128i down, __m128i left, __m128i right,
                                                         __m128i ll, __m128i ur) {
    // (2c + ll + ur) >> 2 is the mean of c and the mean of ll and ur, both floored.
    const __m128i g = Mean(c, Mean(ll, ur));
    const __m128i across = Mean(left, right), along = Mean(up, down);
    return aRedLine ? tSites{across, g, along} : tSites{along, g, across};
}

template <int Kind>
__attribute__((target("ssse3"))) uint32_t
Line3x3(uint8_t* aDest, const tLinePlanes& u, const tLinePlanes& m, const tLinePlanes& l,
        uint32_t aWidth, uint32_t aEvenColour, bool aRedLine) {
    constexpr int Format = Kind & 0xFF;
    constexpr bool Grey = Kind >> 8;
    auto at = [](const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); };
    // Pairs (x, x + 1) from x = 2, sites k = x / 2 on: the planes give the
    // neighbours one site left and right by loading one byte earlier or later.
    uint32_t x = 2;
    for (; x + 34 <= aWidth; x += 32) {
        const uint32_t k = x / 2;
        const __m128i mE = at(m.even + k), mO = at(m.odd + k), mOl = at(m.odd + k - 1),
                      mEr = at(m.even + k + 1);
        const __m128i uE = at(u.even + k), uO = at(u.odd + k), uOl = at(u.odd + k - 1),
                      uEr = at(u.even + k + 1);
        const __m128i lE = at(l.even + k), lO = at(l.odd + k), lOl = at(l.odd + k - 1),
                      lEr = at(l.even + k + 1);
        // Even sites: left M[x-1], right M[x+1]; odd sites: left M[x], right M[x+2].
        tSites even, odd;
        if (aEvenColour != 1) {
            even = ColourSite(aEvenColour == 0, mE, uE, lE, mOl, mO, uOl, uO, lOl, lO);
            odd = GreenSite(aRedLine, mO, uO, lO, mE, mEr, lE, uEr);
        } else {
            even = GreenSite(aRedLine, mE, uE, lE, mOl, mO, lOl, uO);
            odd = ColourSite(aRedLine, mO, uO, lO, mE, mEr, uE, uEr, lE, lEr);
        }
        StoreColourOrGrey<Format, Grey>(aDest + OutputBytes(Format) * x, even.r, even.g, even.b,
                                        odd.r, odd.g, odd.b);
    }
    return x;
}

} // namespace

__attribute__((target("ssse3"))) void SplitLineSsse3(const uint8_t* aLine, uint32_t aWidth,
                                                     uint8_t* aEven, uint8_t* aOdd) {
    uint32_t x = 0;
    for (; x + 32 <= aWidth; x += 32) {
        __m128i even, odd;
        Split(aLine + x, even, odd);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(aEven + x / 2), even);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(aOdd + x / 2), odd);
    }
    for (; x + 1 < aWidth; x += 2) {
        aEven[x / 2] = aLine[x];
        aOdd[x / 2] = aLine[x + 1];
    }
}

uint32_t Line3x3Ssse3(uint8_t* aDest, const tLinePlanes& u, const tLinePlanes& m,
                      const tLinePlanes& l, uint32_t aWidth, uint32_t aEvenColour, bool aRedLine,
                      uint32_t aFormat, bool aGrey) {
    return static_cast<uint32_t>(WithFormat<6>(aFormat, [&](auto f) {
        return aGrey ? Line3x3<f() | 0x100>(aDest, u, m, l, aWidth, aEvenColour, aRedLine)
                     : Line3x3<f()>(aDest, u, m, l, aWidth, aEvenColour, aRedLine);
    }));
}

} // namespace img
