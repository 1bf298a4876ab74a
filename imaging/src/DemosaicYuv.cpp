// "2x2 YUV422", "2x2 LCAA" and "2x2 LCAA+V": the 2x2 colours as YUV 4:4:4,
// packed to YUV 4:2:2 with more or less chroma filtering, then written
// through the YUV 4:2:2 transform (full range, as the luma here has no foot
// room, so that a flat grey stays that grey). They work line by line through small
// buffers that each thread keeps.
#include "ColourSources.h"
#include "Demosaic.h"

namespace img {

namespace {

// Writes Y, U, V bytes; the chroma products fit in signed 16 bits.
struct tYuv444Writer {
    static constexpr uint32_t kBytes = 3;
    uint8_t* p;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        const int ri = static_cast<int>(r), gi = static_cast<int>(g), bi = static_cast<int>(b);
        const int16_t u = static_cast<int16_t>(128 * bi - 43 * ri - 85 * gi);
        const int16_t v = static_cast<int16_t>(128 * ri - 21 * bi - 107 * gi);
        p[0] = static_cast<uint8_t>((29 * bi + 77 * ri + 150 * gi) >> 8);
        p[1] = static_cast<uint8_t>((u >> 8) + 128);
        p[2] = static_cast<uint8_t>((v >> 8) + 128);
        p += 3;
    }
};

// The sum of channel c over the four pixels of pairs k - 1 and k; the first
// pair counts itself twice.
inline uint32_t Four(const uint8_t* aYuv, uint32_t k, int c) {
    const uint8_t* p = aYuv + 6 * k + c;
    const uint32_t pair = p[0] + p[3];
    return k == 0 ? 2 * pair : pair + p[-6] + p[-3];
}

// Packs a line of YUV 4:4:4 into U Y V Y. aFilter 0: the pair's mean; 1: the
// mean of four along the line; 2: the rounded mean of those four and the four
// below (aNext), or the line's own form when there is no line below.
void Pack(uint8_t* aDest, const uint8_t* aYuv, const uint8_t* aNext, uint32_t aWidth,
          uint32_t aFilter) {
    for (uint32_t k = 0; k < aWidth / 2; ++k) {
        const uint8_t* p = aYuv + 6 * k;
        uint32_t u, v;
        if (aFilter == 2 && aNext) {
            u = (Four(aYuv, k, 1) + Four(aNext, k, 1) + 4) >> 3;
            v = (Four(aYuv, k, 2) + Four(aNext, k, 2) + 4) >> 3;
        } else if (aFilter == 0 || k == 0) {
            u = (p[1] + p[4]) >> 1;
            v = (p[2] + p[5]) >> 1;
        } else {
            u = Four(aYuv, k, 1) / 4;
            v = Four(aYuv, k, 2) / 4;
        }
        uint8_t* out = aDest + 4 * k;
        out[0] = static_cast<uint8_t>(u);
        out[1] = p[0];
        out[2] = static_cast<uint8_t>(v);
        out[3] = p[3];
    }
}

struct tBuffers {
    std::vector<uint8_t> yuv, packed;
};

} // namespace

TvkError_t Raw8ToYuvFiltered(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth,
                             uint32_t aHeight, uint32_t aFormat, uint32_t aPhase,
                             uint32_t aFilter) {
    if (aFormat == TvkSimpleImageFormatUYVY || aFormat > TvkSimpleImageFormatMono16Rec709)
        return TvkErrorNotImplemented;
    const uint32_t bytes = OutputBytes(aFormat);
    const size_t w = aWidth;
    return ForEachBand(aHeight, w * aHeight, [&](uint32_t aFirst, uint32_t aEnd) {
        thread_local tBuffers buffers;
        buffers.yuv.resize(2 * 3 * w);
        buffers.packed.resize(2 * w);
        int64_t held[2] = {-1, -1};
        // YUV 4:4:4 of line y, which the last line takes from the one above.
        auto yuvLine = [&](uint32_t y) {
            uint8_t* line = buffers.yuv.data() + (y & 1) * 3 * w;
            if (held[y & 1] != y) {
                const uint32_t top = y + 1 < aHeight ? y : y - 1;
                const uint8_t* l0 = aSource + top * w;
                Line2x2(tYuv444Writer{line}, line, l0, l0 + w, aWidth, LinePhase(aPhase, top));
                held[y & 1] = y;
            }
            return line;
        };
        for (uint32_t y = aFirst; y < aEnd; ++y) {
            const uint8_t* line = yuvLine(y);
            const uint8_t* next = aFilter == 2 && y + 1 < aHeight ? yuvLine(y + 1) : nullptr;
            Pack(buffers.packed.data(), line, next, aWidth, aFilter);
            Yuv422FullRangeToOutput(aDest + y * w * bytes, buffers.packed.data(), aWidth, aFormat);
        }
    });
}

} // namespace img
