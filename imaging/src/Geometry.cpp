// In-place flips and horizontal resampling of scanlines.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <iterator>
#include <vector>

#include "TavikImageTransform.h"

namespace {

// Bytes per pixel of the display formats 0 to 10.
constexpr uint32_t kFlipBytes[] = {1, 3, 4, 3, 4, 1, 2, 2, 2, 6, 6};
constexpr uint32_t kUyvy = 6;

void SwapPixels(uint8_t* a, uint8_t* b, uint32_t n) {
    uint8_t t[8];
    memcpy(t, a, n);
    memcpy(a, b, n);
    memcpy(b, t, n);
}

// Reverses the pixels of one row; UYVY reverses its pairs and their lumas.
void ReverseRow(uint8_t* aRow, uint32_t aPixels, uint32_t aBytes, bool aUyvy) {
    if (aUyvy) {
        const uint32_t pairs = aPixels / 2;
        for (uint32_t i = 0; i < pairs / 2; ++i) SwapPixels(aRow + 4 * i, aRow + 4 * (pairs - 1 - i), 4);
        for (uint32_t i = 0; i < pairs; ++i) std::swap(aRow[4 * i + 1], aRow[4 * i + 3]);
        return;
    }
    for (uint32_t i = 0; i < aPixels / 2; ++i) SwapPixels(aRow + i * aBytes, aRow + (aPixels - 1 - i) * aBytes, aBytes);
}

void SwapRows(uint8_t* aImage, size_t aBytesPerLine, uint32_t aLines) {
    std::vector<uint8_t> line(aBytesPerLine);
    for (uint32_t y = 0; y < aLines / 2; ++y) {
        uint8_t* top = aImage + y * aBytesPerLine;
        uint8_t* bottom = aImage + (aLines - 1 - y) * aBytesPerLine;
        memcpy(line.data(), top, aBytesPerLine);
        memcpy(top, bottom, aBytesPerLine);
        memcpy(bottom, line.data(), aBytesPerLine);
    }
}

} // namespace

extern "C" {

TVK_EXPORT TvkError_t TvkFlipVertical(void* pDst, uint32_t BytesPerLine, uint32_t Lines) {
    if (!pDst || BytesPerLine == 0 || Lines < 2) return TvkErrorBadParameter;
    SwapRows(static_cast<uint8_t*>(pDst), BytesPerLine, Lines);
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkFlip(void* pDst, uint32_t XSize, uint32_t YSize, uint32_t eFlipMode, uint32_t eccColorCode) {
    if (!pDst || YSize < 2 || XSize == 0) return TvkErrorBadParameter;
    if (eFlipMode < 1 || eFlipMode > 3) return TvkErrorBadParameter;
    // Packed colour codes are accepted but have no flip of their own yet.
    if (eccColorCode >= 128 && eccColorCode <= 130) return TvkErrorNotImplemented;
    if (eccColorCode >= std::size(kFlipBytes)) return TvkErrorBadParameter;
    const uint32_t bytes = kFlipBytes[eccColorCode];
    const bool uyvy = eccColorCode == kUyvy;
    if (uyvy && (XSize & 1)) return TvkErrorBadParameter;
    auto* image = static_cast<uint8_t*>(pDst);
    const size_t bytesPerLine = static_cast<size_t>(XSize) * bytes;
    if (eFlipMode & 1)
        for (uint32_t y = 0; y < YSize; ++y) ReverseRow(image + y * bytesPerLine, XSize, bytes, uyvy);
    if (eFlipMode & 2) SwapRows(image, bytesPerLine, YSize);
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkGetResampledScanlineLength(uint32_t* pDstXSize, uint32_t SrcXSize, float DstPixelSize,
                                                    float SrcPixelSize) {
    if (!pDstXSize || SrcPixelSize <= 0.0f) return TvkErrorBadParameter;
    uint32_t length = static_cast<uint32_t>(static_cast<double>(static_cast<float>(SrcXSize)) * DstPixelSize /
                                            SrcPixelSize);
    // Scanlines are a multiple of four pixels.
    length = (length + 3) & ~3u;
    *pDstXSize = length;
    return TvkErrorSuccess;
}

// RopMode 0: nearest; otherwise linear between the two source neighbours.
TVK_EXPORT TvkError_t TvkResampleScanlinesEx(void* pDst, const void* pSrc, uint32_t DstXSize, uint32_t SrcXSize,
                                             uint32_t SrcYSize, uint32_t DstPitch, uint32_t SrcPitch,
                                             uint32_t BytesPerPixel, uint32_t RopMode) {
    if (!pDst || !pSrc || DstXSize == 0 || SrcXSize == 0 || BytesPerPixel == 0 || BytesPerPixel > 6)
        return TvkErrorBadParameter;
    if (DstPitch < DstXSize * BytesPerPixel || SrcPitch < SrcXSize * BytesPerPixel) return TvkErrorBadParameter;
    // Source position of each destination pixel, in 1/256ths, centre to centre.
    std::vector<uint32_t> at(DstXSize);
    const double scale = static_cast<double>(SrcXSize) / DstXSize;
    for (uint32_t x = 0; x < DstXSize; ++x) {
        const double position = std::max(0.0, (x + 0.5) * scale - 0.5);
        at[x] = static_cast<uint32_t>(std::min(position, static_cast<double>(SrcXSize - 1)) * 256.0);
    }
    auto* dst = static_cast<uint8_t*>(pDst);
    const auto* src = static_cast<const uint8_t*>(pSrc);
    for (uint32_t y = 0; y < SrcYSize; ++y, dst += DstPitch, src += SrcPitch) {
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
                out[k] = static_cast<uint8_t>((a[k] * (256 - w) + a[k + BytesPerPixel] * w + 128) >> 8);
        }
    }
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkResampleScanlines(void* pDst, const void* pSrc, uint32_t DstXSize, uint32_t SrcXSize,
                                           uint32_t SrcYSize, uint32_t BytesPerPixel, uint32_t RopMode) {
    return TvkResampleScanlinesEx(pDst, pSrc, DstXSize, SrcXSize, SrcYSize, DstXSize * BytesPerPixel,
                                  SrcXSize * BytesPerPixel, BytesPerPixel, RopMode);
}

} // extern "C"
