// In-place flips and horizontal resampling of scanlines.
#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "PixelIterators.h"
#include "TavikImageTransform.h"

namespace {

constexpr uint32_t kUyvy = 6;
// Packed codes: 12-bit pairs in three bytes, YUV 4:1:1 groups of four pixels
// in six bytes (U Y Y V Y Y), YUV 4:4:4 in three bytes.
constexpr uint32_t kPacked12 = 128, kYuv411 = 129, kYuv444 = 130;

// Fixed widths, so that each swap is a few register moves.
template <uint32_t N> inline void SwapPixels(uint8_t* a, uint8_t* b) {
    uint8_t t[N];
    memcpy(t, a, N);
    memcpy(a, b, N);
    memcpy(b, t, N);
}

template <uint32_t N> void ReversePixels(uint8_t* aRow, uint32_t aPixels) {
    for (uint32_t i = 0; i < aPixels / 2; ++i)
        SwapPixels<N>(aRow + i * N, aRow + (aPixels - 1 - i) * N);
}

// Reverses the pixels of one row; UYVY reverses its pairs and their lumas.
void ReverseRow(uint8_t* aRow, uint32_t aPixels, uint32_t aBytes, bool aUyvy) {
    if (aUyvy) {
        const uint32_t pairs = aPixels / 2;
        ReversePixels<4>(aRow, pairs);
        for (uint32_t i = 0; i < pairs; ++i)
            std::swap(aRow[4 * i + 1], aRow[4 * i + 3]);
        return;
    }
    switch (aBytes) {
    case 1:
        return std::reverse(aRow, aRow + aPixels);
    case 2:
        return ReversePixels<2>(aRow, aPixels);
    case 3:
        return ReversePixels<3>(aRow, aPixels);
    case 4:
        return ReversePixels<4>(aRow, aPixels);
    default:
        return ReversePixels<6>(aRow, aPixels);
    }
}

// 12-bit pixel i of a row of pairs: the upper eight bits in the pair's outer
// bytes, the low nibbles in its middle byte (the first pixel's below).
uint32_t Get12(const uint8_t* aRow, uint32_t i) {
    const uint8_t* g = aRow + i / 2 * 3;
    return i & 1 ? (g[2] << 4 | g[1] >> 4) : (g[0] << 4 | (g[1] & 0x0F));
}
void Set12(uint8_t* aRow, uint32_t i, uint32_t aValue) {
    uint8_t* g = aRow + i / 2 * 3;
    if (i & 1) {
        g[2] = static_cast<uint8_t>(aValue >> 4);
        g[1] = static_cast<uint8_t>((g[1] & 0x0F) | (aValue & 0x0F) << 4);
    } else {
        g[0] = static_cast<uint8_t>(aValue >> 4);
        g[1] = static_cast<uint8_t>((g[1] & 0xF0) | (aValue & 0x0F));
    }
}

void ReversePacked12(uint8_t* aRow, uint32_t aPixels) {
    for (uint32_t i = 0; i < aPixels / 2; ++i) {
        const uint32_t left = Get12(aRow, i), right = Get12(aRow, aPixels - 1 - i);
        Set12(aRow, i, right);
        Set12(aRow, aPixels - 1 - i, left);
    }
}

// Reverses a row of YUV 4:1:1 groups and the four lumas in each.
void ReverseYuv411(uint8_t* aRow, uint32_t aPixels) {
    const uint32_t groups = aPixels / 4;
    ReversePixels<6>(aRow, groups);
    for (uint32_t i = 0; i < groups; ++i) {
        uint8_t* g = aRow + 6 * i;
        std::swap(g[1], g[5]);
        std::swap(g[2], g[4]);
    }
}

// Swaps rows through a buffer on the stack, a piece at a time.
void SwapRows(uint8_t* aImage, size_t aBytesPerLine, uint32_t aLines) {
    uint8_t piece[4096];
    for (uint32_t y = 0; y < aLines / 2; ++y) {
        uint8_t* top = aImage + y * aBytesPerLine;
        uint8_t* bottom = aImage + (aLines - 1 - y) * aBytesPerLine;
        for (size_t at = 0; at < aBytesPerLine; at += sizeof(piece)) {
            const size_t n = std::min(sizeof(piece), aBytesPerLine - at);
            memcpy(piece, top + at, n);
            memcpy(top + at, bottom + at, n);
            memcpy(bottom + at, piece, n);
        }
    }
}

} // namespace

extern "C" {

TVK_EXPORT TvkError_t TvkFlipVertical(void* pDst, uint32_t BytesPerLine, uint32_t Lines) {
    if (!pDst || BytesPerLine == 0 || Lines < 2) return TvkErrorBadParameter;
    SwapRows(static_cast<uint8_t*>(pDst), BytesPerLine, Lines);
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkFlip(void* pDst, uint32_t XSize, uint32_t YSize, uint32_t eFlipMode,
                              uint32_t eccColorCode) {
    if (!pDst || YSize < 2 || XSize == 0) return TvkErrorBadParameter;
    if (eFlipMode < 1 || eFlipMode > 3) return TvkErrorBadParameter;
    size_t bytesPerLine;
    if (const uint32_t bytes = img::OutputBytes(eccColorCode)) {
        if (eccColorCode == kUyvy && (XSize & 1)) return TvkErrorBadParameter;
        bytesPerLine = static_cast<size_t>(XSize) * bytes;
    } else if (eccColorCode == kPacked12 || eccColorCode == kYuv411) {
        if (XSize % (eccColorCode == kPacked12 ? 2 : 4)) return TvkErrorBadParameter;
        bytesPerLine = static_cast<size_t>(XSize) / 2 * 3;
    } else if (eccColorCode == kYuv444) {
        bytesPerLine = static_cast<size_t>(XSize) * 3;
    } else {
        return TvkErrorBadParameter;
    }
    auto* image = static_cast<uint8_t*>(pDst);
    if (eFlipMode & 1)
        for (uint32_t y = 0; y < YSize; ++y) {
            uint8_t* row = image + y * bytesPerLine;
            if (eccColorCode == kPacked12)
                ReversePacked12(row, XSize);
            else if (eccColorCode == kYuv411)
                ReverseYuv411(row, XSize);
            else
                ReverseRow(row, XSize, static_cast<uint32_t>(bytesPerLine / XSize),
                           eccColorCode == kUyvy);
        }
    if (eFlipMode & 2) SwapRows(image, bytesPerLine, YSize);
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkGetResampledScanlineLength(uint32_t* pDstXSize, uint32_t SrcXSize,
                                                    float DstPixelSize, float SrcPixelSize) {
    if (!pDstXSize || SrcPixelSize <= 0.0f) return TvkErrorBadParameter;
    uint32_t length = static_cast<uint32_t>(static_cast<double>(static_cast<float>(SrcXSize)) *
                                            DstPixelSize / SrcPixelSize);
    // Scanlines are a multiple of four pixels.
    length = (length + 3) & ~3u;
    *pDstXSize = length;
    return TvkErrorSuccess;
}

// RopMode 0: nearest; otherwise linear between the two source neighbours.
TVK_EXPORT TvkError_t TvkResampleScanlinesEx(void* pDst, const void* pSrc, uint32_t DstXSize,
                                             uint32_t SrcXSize, uint32_t SrcYSize,
                                             uint32_t DstPitch, uint32_t SrcPitch,
                                             float DstPixelSize, float SrcPixelSize,
                                             uint32_t BytesPerPixel, uint32_t RopMode) {
    if (!pDst || !pSrc || DstXSize == 0 || SrcXSize == 0 || BytesPerPixel == 0 || BytesPerPixel > 6)
        return TvkErrorBadParameter;
    if (!(DstPixelSize > 0.0f) || !(SrcPixelSize > 0.0f)) return TvkErrorBadParameter;
    if (DstPitch < DstXSize || SrcPitch < SrcXSize) return TvkErrorBadParameter;
    // Source position of each destination pixel, in 1/256ths, centre to centre.
    std::vector<uint32_t> at;
    try {
        at.resize(DstXSize);
    } catch (...) {
        return TvkErrorResources;
    }
    const double scale = static_cast<double>(DstPixelSize) / SrcPixelSize;
    for (uint32_t x = 0; x < DstXSize; ++x) {
        const double position = std::max(0.0, (x + 0.5) * scale - 0.5);
        at[x] = static_cast<uint32_t>(std::min(position, SrcXSize - 1.0) * 256.0);
    }
    auto* dst = static_cast<uint8_t*>(pDst);
    const auto* src = static_cast<const uint8_t*>(pSrc);
    const size_t dstStep = static_cast<size_t>(DstPitch) * BytesPerPixel;
    const size_t srcStep = static_cast<size_t>(SrcPitch) * BytesPerPixel;
    for (uint32_t y = 0; y < SrcYSize; ++y, dst += dstStep, src += srcStep) {
        for (uint32_t x = 0; x < DstXSize; ++x) {
            const uint32_t left = at[x] >> 8;
            const uint8_t* a = src + left * BytesPerPixel;
            uint8_t* out = dst + x * BytesPerPixel;
            if (RopMode == 0 || left + 1 >= SrcXSize) {
                const uint32_t nearest = std::min((at[x] + 128) >> 8, SrcXSize - 1);
                memcpy(out, src + nearest * BytesPerPixel, BytesPerPixel);
                continue;
            }
            const uint32_t w = at[x] & 0xFF;
            for (uint32_t k = 0; k < BytesPerPixel; ++k)
                out[k] =
                    static_cast<uint8_t>((a[k] * (256 - w) + a[k + BytesPerPixel] * w + 128) >> 8);
        }
    }
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkResampleScanlines(void* pDst, const void* pSrc, uint32_t DstXSize,
                                           uint32_t SrcXSize, uint32_t SrcYSize, float DstPixelSize,
                                           float SrcPixelSize, uint32_t BytesPerPixel,
                                           uint32_t RopMode) {
    return TvkResampleScanlinesEx(pDst, pSrc, DstXSize, SrcXSize, SrcYSize, DstXSize, SrcXSize,
                                  DstPixelSize, SrcPixelSize, BytesPerPixel, RopMode);
}

} // extern "C"
