// The transform entries: the general one that picks a routine, and the
// per-source family.
#include <algorithm>
#include <atomic>
#include <cstring>

#include "BandPool.h"
#include "ColourSources.h"
#include "CorrectedTransform.h"
#include "Cygm.h"
#include "Demosaic.h"
#include "PixelFormatTable.h"

using namespace img;

namespace {

const TvkTransformInfo* FindTransformInfo(const TvkTransformInfo* aParameters, uint32_t aCount,
                                          uint32_t aType) {
    for (uint32_t i = 0; aParameters && i < aCount; ++i)
        if (aParameters[i].TransformType == aType) return &aParameters[i];
    return nullptr;
}

// The checks every raw routine shares. A pattern of ~0 passes, as "unknown",
// to the routines that have no use for it.
TvkError_t CheckRaw(const uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                    uint32_t aPattern) {
    if (!aDest || !aSource) return TvkErrorBadParameter;
    if (aWidth == 0 || aHeight == 0 || (aWidth & 1) || (aHeight & 1)) return TvkErrorBadParameter;
    if (aPattern > 3 && aPattern != 0xFFFFFFFFu) return TvkErrorBadParameter;
    return aPattern > 3 ? TvkErrorNotImplemented : TvkErrorSuccess;
}

// The modes by their number in the list of names; the 3x3 forms take the
// public pattern, the others the internal phase.
TvkError_t Raw8Mode(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                    uint32_t aFormat, uint32_t aPattern, uint32_t aMode) {
    if (TvkError_t status = CheckRaw(aDest, aSource, aWidth, aHeight, aPattern)) return status;
    const uint32_t phase = InternalPhase(aPattern);
    switch (aMode) {
    case 0:
        return Raw8To2x2(aDest, aSource, aWidth, aHeight, aFormat, phase);
    case 1:
        return Raw8To2x2Mono(aDest, aSource, aWidth, aHeight, aFormat, phase);
    case 2:
        return Raw8To3x3(aDest, aSource, aWidth, aHeight, aFormat, aPattern);
    case 3:
        return Raw8ToYuvFiltered(aDest, aSource, aWidth, aHeight, aFormat, phase, 0);
    case 4:
        return Raw8ToYuvFiltered(aDest, aSource, aWidth, aHeight, aFormat, phase, 1);
    case 5:
        return Raw8ToYuvFiltered(aDest, aSource, aWidth, aHeight, aFormat, phase, 2);
    case 6:
        return Raw8ToSingle(aDest, aSource, aWidth, aHeight, aFormat, phase);
    case 7:
        return Raw8To3x3Mono(aDest, aSource, aWidth, aHeight, aFormat, aPattern);
    default:
        return TvkErrorBadParameter;
    }
}

// TvkImageTransform's debayer modes, as numbers of the list above.
constexpr uint32_t kDebayerModes[] = {0, 2, 4, 5, 3};

// The checks of the sources given by pixel count: UYVY pairs pixels, so an odd
// count would write half a pair past the end.
TvkError_t CheckCount(const uint8_t* aDest, const uint8_t* aSource, uint32_t aPixels,
                      uint32_t aFormat) {
    if (!aDest || !aSource) return TvkErrorBadParameter;
    return aFormat == TvkSimpleImageFormatUYVY && (aPixels & 1) ? TvkErrorBadParameter
                                                                : TvkErrorSuccess;
}

// Converts a run of pixels in bands of whole chunks (4096 pixels, so that no
// pixel pair or group is cut), with aInHalves source bytes per pixel in
// halves; aConvert(dest, source, count) does one band.
template <class Convert>
TvkError_t InBands(uint8_t* aDest, const uint8_t* aSource, uint32_t aPixels, uint32_t aFormat,
                   uint32_t aInHalves, Convert&& aConvert) {
    constexpr size_t kChunk = 4096;
    const auto chunks = static_cast<uint32_t>((size_t(aPixels) + kChunk - 1) / kChunk);
    std::atomic<TvkError_t> status{TvkErrorSuccess};
    const TvkError_t banded = ForEachBand(chunks, aPixels, [&](uint32_t aFirst, uint32_t aEnd) {
        const size_t from = aFirst * kChunk, to = std::min<size_t>(aPixels, aEnd * kChunk);
        if (TvkError_t s = aConvert(aDest + from * OutputBytes(aFormat),
                                    aSource + from * aInHalves / 2, to - from))
            status = s;
    });
    return banded != TvkErrorSuccess ? banded : status.load();
}

// The mono routines report only success or failure.
TvkError_t ZeroOrAllOnes(TvkError_t aStatus) {
    return aStatus == TvkErrorSuccess ? 0 : static_cast<TvkError_t>(~0);
}

} // namespace

extern "C" {

TVK_EXPORT TvkError_t TvkSetDebayerMode(uint32_t mode, TvkTransformInfo* pInfo) {
    if (!pInfo) return TvkErrorBadParameter;
    memset(pInfo, 0, sizeof(*pInfo));
    pInfo->TransformType = TvkTransformTypeDebayerMode;
    pInfo->Parameter.DebayerMode = mode;
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkSetColorCorrectionMatrix3x3(const float* pMatrix,
                                                     TvkTransformInfo* pInfo) {
    if (!pMatrix || !pInfo) return TvkErrorBadParameter;
    memset(pInfo, 0, sizeof(*pInfo));
    pInfo->TransformType = TvkTransformTypeColorCorrectionMatrix;
    memcpy(pInfo->Parameter.Matrix, pMatrix, sizeof(pInfo->Parameter.Matrix));
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkSetGammaCorrection(float gamma, TvkTransformInfo* pInfo) {
    if (!pInfo) return TvkErrorBadParameter;
    memset(pInfo, 0, sizeof(*pInfo));
    pInfo->TransformType = TvkTransformTypeGammaCorrection;
    pInfo->Parameter.Gamma = gamma;
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkPacked12BitTo8Bit(uint8_t* pDst, const uint8_t* pSrc, uint32_t XSize,
                                           uint32_t YSize) {
    if (XSize & 1) return TvkErrorBadParameter;
    if (!pDst || !pSrc) return TvkErrorBadParameter;
    Packed12To8(pDst, pSrc, static_cast<size_t>(XSize) * YSize);
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkRaw8ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                            uint32_t height, uint32_t imageFormat,
                                            uint32_t bayerPattern) {
    return Raw8Mode(pDst, pSrc, width, height, imageFormat, bayerPattern, 0);
}

TVK_EXPORT TvkError_t TvkRaw8ImageTransform_3x3(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                                uint32_t height, uint32_t imageFormat,
                                                uint32_t bayerPattern) {
    return Raw8Mode(pDst, pSrc, width, height, imageFormat, bayerPattern, 2);
}

TVK_EXPORT TvkError_t TvkRaw8ImageTransform_IntLCAA(uint8_t* pDst, const uint8_t* pSrc,
                                                    uint32_t width, uint32_t height,
                                                    uint32_t imageFormat, uint32_t bayerPattern) {
    return Raw8Mode(pDst, pSrc, width, height, imageFormat, bayerPattern, 4);
}

TVK_EXPORT TvkError_t TvkRaw8ImageTransform_IntLCAAV(uint8_t* pDst, const uint8_t* pSrc,
                                                     uint32_t width, uint32_t height,
                                                     uint32_t imageFormat, uint32_t bayerPattern) {
    return Raw8Mode(pDst, pSrc, width, height, imageFormat, bayerPattern, 5);
}

TVK_EXPORT TvkError_t TvkRaw8ImageTransform_IntYUV422(uint8_t* pDst, const uint8_t* pSrc,
                                                      uint32_t width, uint32_t height,
                                                      uint32_t imageFormat, uint32_t bayerPattern) {
    return Raw8Mode(pDst, pSrc, width, height, imageFormat, bayerPattern, 3);
}

TVK_EXPORT TvkError_t TvkRaw8DeBayer(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                     uint32_t height, uint32_t imageFormat, uint32_t bayerPattern,
                                     uint32_t functionNr) {
    return Raw8Mode(pDst, pSrc, width, height, imageFormat, bayerPattern, functionNr);
}

TVK_EXPORT const char* TvkGetDeBayeringName(uint32_t bitDepth, uint32_t functionNr,
                                            uint32_t interlacedMode) {
    (void)interlacedMode;
    static const char* const kNames[] = {"2x2",      "2x2 mono",   "3x3",    "2x2 YUV422",
                                         "2x2 LCAA", "2x2 LCAA+V", "Single", "3x3 bilin.Mono"};
    if (bitDepth != 8) return functionNr == 0 ? kNames[0] : "none";
    return functionNr < std::size(kNames) ? kNames[functionNr] : "none";
}

TVK_EXPORT TvkError_t TvkRaw12ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                             uint32_t height, uint32_t imageFormat,
                                             uint32_t bayerPattern) {
    if (TvkError_t status = CheckRaw(pDst, pSrc, width, height, bayerPattern)) return status;
    if (imageFormat > TvkSimpleImageFormatMono16Rec709) return TvkErrorNotImplemented;
    return Raw12To2x2(pDst, pSrc, width, height, imageFormat, InternalPhase(bayerPattern));
}

TVK_EXPORT TvkError_t TvkRaw16ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                             uint32_t height, uint32_t imageFormat,
                                             uint32_t bayerPattern) {
    if (TvkError_t status = CheckRaw(pDst, pSrc, width, height, bayerPattern)) return status;
    return Raw16To2x2(pDst, pSrc, width, height, imageFormat, InternalPhase(bayerPattern), 16, true,
                      false);
}

TVK_EXPORT TvkError_t TvkRaw16ImageTransformEx(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                               uint32_t height, uint32_t imageFormat,
                                               uint32_t alignment, uint32_t bitsUsed,
                                               uint32_t endianness, uint32_t bayerPattern) {
    (void)alignment; // samples sit in the low bits
    if (TvkError_t status = CheckRaw(pDst, pSrc, width, height, bayerPattern)) return status;
    return Raw16To2x2(pDst, pSrc, width, height, imageFormat, InternalPhase(bayerPattern), bitsUsed,
                      endianness == 1, true);
}

TVK_EXPORT TvkError_t TvkY8ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t pixelCount,
                                          uint32_t imageFormat) {
    if (TvkError_t status = CheckCount(pDst, pSrc, pixelCount, imageFormat)) return status;
    return InBands(pDst, pSrc, pixelCount, imageFormat, 2,
                   [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                       return Y8ToOutput(aDest, aSource, aCount, imageFormat);
                   });
}

TVK_EXPORT TvkError_t TvkY16ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t pixelCount,
                                           uint32_t imageFormat) {
    if (CheckCount(pDst, pSrc, pixelCount, imageFormat)) return ZeroOrAllOnes(TvkErrorBadParameter);
    return ZeroOrAllOnes(InBands(pDst, pSrc, pixelCount, imageFormat, 4,
                                 [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                                     return Y16ToOutput(aDest, aSource, aCount, 16, true,
                                                        imageFormat);
                                 }));
}

TVK_EXPORT TvkError_t TvkY16ImageTransformLE(uint8_t* pDst, const uint8_t* pSrc,
                                             uint32_t pixelCount, uint32_t imageFormat) {
    if (CheckCount(pDst, pSrc, pixelCount, imageFormat)) return ZeroOrAllOnes(TvkErrorBadParameter);
    return ZeroOrAllOnes(InBands(pDst, pSrc, pixelCount, imageFormat, 4,
                                 [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                                     return Y16ToOutput(aDest, aSource, aCount, 16, false,
                                                        imageFormat);
                                 }));
}

TVK_EXPORT TvkError_t TvkY16ImageTransformEx(uint8_t* pDst, const uint8_t* pSrc,
                                             uint32_t pixelCount, uint32_t imageFormat,
                                             uint32_t alignment, uint32_t bitsUsed,
                                             uint32_t endianness, uint32_t bayerPattern) {
    (void)alignment, (void)bayerPattern;
    if (CheckCount(pDst, pSrc, pixelCount, imageFormat)) return ZeroOrAllOnes(TvkErrorBadParameter);
    return ZeroOrAllOnes(InBands(pDst, pSrc, pixelCount, imageFormat, 4,
                                 [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                                     return Y16ToOutput(aDest, aSource, aCount, bitsUsed,
                                                        endianness == 1, imageFormat);
                                 }));
}

TVK_EXPORT TvkError_t TvkY12ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t pixelCount,
                                           uint32_t imageFormat) {
    if (TvkError_t status = CheckCount(pDst, pSrc, pixelCount, imageFormat)) return status;
    return InBands(pDst, pSrc, pixelCount, imageFormat, 3,
                   [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                       return Y12ToOutput(aDest, aSource, aCount, imageFormat);
                   });
}

TVK_EXPORT TvkError_t TvkRGB8ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t pixelCount,
                                            uint32_t imageFormat) {
    if (TvkError_t status = CheckCount(pDst, pSrc, pixelCount, imageFormat)) return status;
    return InBands(pDst, pSrc, pixelCount, imageFormat, 6,
                   [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                       return ColourToOutput(aDest, aSource, aCount, TvkPixelLayoutRGB,
                                             imageFormat);
                   });
}

TVK_EXPORT TvkError_t TvkBGR8ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t pixelCount,
                                            uint32_t imageFormat) {
    if (TvkError_t status = CheckCount(pDst, pSrc, pixelCount, imageFormat)) return status;
    return InBands(pDst, pSrc, pixelCount, imageFormat, 6,
                   [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                       return ColourToOutput(aDest, aSource, aCount, TvkPixelLayoutBGR,
                                             imageFormat);
                   });
}

TVK_EXPORT TvkError_t TvkRGBA8ImageTransform(uint8_t* pDst, const uint8_t* pSrc,
                                             uint32_t pixelCount, uint32_t imageFormat) {
    if (TvkError_t status = CheckCount(pDst, pSrc, pixelCount, imageFormat)) return status;
    return InBands(pDst, pSrc, pixelCount, imageFormat, 8,
                   [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                       return ColourToOutput(aDest, aSource, aCount, TvkPixelLayoutRGBA,
                                             imageFormat);
                   });
}

TVK_EXPORT TvkError_t TvkBGRA8ImageTransform(uint8_t* pDst, const uint8_t* pSrc,
                                             uint32_t pixelCount, uint32_t imageFormat) {
    if (TvkError_t status = CheckCount(pDst, pSrc, pixelCount, imageFormat)) return status;
    return InBands(pDst, pSrc, pixelCount, imageFormat, 8,
                   [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                       return ColourToOutput(aDest, aSource, aCount, TvkPixelLayoutBGRA,
                                             imageFormat);
                   });
}

TVK_EXPORT TvkError_t TvkYUV411ImageTransform(uint8_t* pDst, const uint8_t* pSrc,
                                              uint32_t pixelCount, uint32_t imageFormat) {
    if (TvkError_t status = CheckCount(pDst, pSrc, pixelCount, imageFormat)) return status;
    if (pixelCount & 3) return TvkErrorBadParameter;
    return InBands(pDst, pSrc, pixelCount, imageFormat, 3,
                   [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                       return Yuv411ToOutput(aDest, aSource, aCount, imageFormat);
                   });
}

TVK_EXPORT TvkError_t TvkYUV422ImageTransform(uint8_t* pDst, const uint8_t* pSrc,
                                              uint32_t pixelCount, uint32_t imageFormat) {
    if (TvkError_t status = CheckCount(pDst, pSrc, pixelCount, imageFormat)) return status;
    if (pixelCount & 1) return TvkErrorBadParameter;
    return InBands(pDst, pSrc, pixelCount, imageFormat, 4,
                   [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                       return Yuv422ToOutput(aDest, aSource, aCount, imageFormat);
                   });
}

TVK_EXPORT TvkError_t TvkYUV444ImageTransform(uint8_t* pDst, const uint8_t* pSrc,
                                              uint32_t pixelCount, uint32_t imageFormat) {
    if (TvkError_t status = CheckCount(pDst, pSrc, pixelCount, imageFormat)) return status;
    return InBands(pDst, pSrc, pixelCount, imageFormat, 6,
                   [&](uint8_t* aDest, const uint8_t* aSource, size_t aCount) {
                       return Yuv444ToOutput(aDest, aSource, aCount, imageFormat);
                   });
}

TVK_EXPORT TvkError_t TvkImageTransform(const TvkImage* source, TvkImage* destination,
                                        const TvkTransformInfo* parameter,
                                        uint32_t parameterCount) {
    if (!source || !destination || !source->Data || !destination->Data) return TvkErrorBadParameter;
    const TvkImageInfo& in = source->ImageInfo;
    if (in.Height != destination->ImageInfo.Height || in.Width != destination->ImageInfo.Width)
        return TvkErrorBadParameter;
    if (source->Size != sizeof(TvkImage) || destination->Size != sizeof(TvkImage))
        return TvkErrorStructSize;
    if (const TvkTransformInfo* matrix =
            FindTransformInfo(parameter, parameterCount, TvkTransformTypeColorCorrectionMatrix))
        return ImageTransform__CC(*source, *destination, matrix->Parameter.Matrix);
    uint32_t format = 0;
    if (TvkError_t status = GetSimpleImageFormat(format, *destination)) return status;
    if (format == TvkSimpleImageFormatUYVY && (in.Width & 1)) return TvkErrorBadParameter;

    const TvkPixelInfo& p = in.PixelInfo;
    auto* dst = static_cast<uint8_t*>(destination->Data);
    const auto* src = static_cast<const uint8_t*>(source->Data);
    const uint64_t pixels = static_cast<uint64_t>(in.Width) * in.Height;
    if (pixels > UINT32_MAX) return TvkErrorBadParameter;
    const auto count = static_cast<uint32_t>(pixels);
    const uint32_t bits = p.BitsPerPixel;
    // Some layouts of an unexpected size go on as another layout.
    uint32_t layout = p.PixelLayout;
    for (;;) {
        switch (layout) {
        case TvkPixelLayoutMono:
            if (bits == 8) return TvkY8ImageTransform(dst, src, count, format);
            if (bits != 16) return TvkErrorBadParameter;
            if (p.BitsUsed == bits && p.Endianness == 0)
                return TvkY16ImageTransformLE(dst, src, count, format);
            if (p.BitsUsed == bits) return TvkY16ImageTransform(dst, src, count, format);
            return TvkY16ImageTransformEx(dst, src, count, format, p.Alignment, p.BitsUsed,
                                          p.Endianness, 0);
        case TvkPixelLayoutMonoPacked:
            if (bits != 12) return TvkErrorBadParameter;
            return TvkY12ImageTransform(dst, src, count, format);
        case TvkPixelLayoutRaw: {
            if (bits == 8) {
                const TvkTransformInfo* debayer =
                    FindTransformInfo(parameter, parameterCount, TvkTransformTypeDebayerMode);
                const uint32_t mode = debayer ? debayer->Parameter.DebayerMode : 0;
                if (mode >= std::size(kDebayerModes)) return TvkErrorBadParameter;
                return Raw8Mode(dst, src, in.Width, in.Height, format, p.BayerPattern,
                                kDebayerModes[mode]);
            }
            if (bits != 16) return TvkErrorBadParameter;
            if (p.BitsUsed == bits && p.Endianness == 1)
                return TvkRaw16ImageTransform(dst, src, in.Width, in.Height, format,
                                              p.BayerPattern);
            return TvkRaw16ImageTransformEx(dst, src, in.Width, in.Height, format, p.Alignment,
                                            p.BitsUsed, p.Endianness, p.BayerPattern);
        }
        case TvkPixelLayoutRawPacked:
            if (bits == 12)
                return TvkRaw12ImageTransform(dst, src, in.Width, in.Height, format,
                                              p.BayerPattern);
            layout = TvkPixelLayoutRaw;
            continue;
        case TvkPixelLayoutRGB:
            if (bits != 24) return TvkErrorBadParameter;
            return TvkRGB8ImageTransform(dst, src, count, format);
        case TvkPixelLayoutBGR:
            if (bits == 24) return TvkBGR8ImageTransform(dst, src, count, format);
            layout = TvkPixelLayoutRGBA;
            continue;
        case TvkPixelLayoutRGBA:
            if (bits == 32) return TvkRGBA8ImageTransform(dst, src, count, format);
            layout = TvkPixelLayoutRawPacked;
            continue;
        case TvkPixelLayoutBGRA:
            if (bits == 32) return TvkBGRA8ImageTransform(dst, src, count, format);
            layout = TvkPixelLayoutRawPacked;
            continue;
        case TvkPixelLayoutYUV411:
            if (in.Width & 3) return TvkErrorBadParameter;
            return TvkYUV411ImageTransform(dst, src, count, format);
        case TvkPixelLayoutYUV422:
            if (in.Width & 1) return TvkErrorBadParameter;
            return TvkYUV422ImageTransform(dst, src, count, format);
        case TvkPixelLayoutYUV444:
            return TvkYUV444ImageTransform(dst, src, count, format);
        default:
            return TvkErrorBadParameter;
        }
    }
}

} // extern "C"

extern "C" TVK_EXPORT TvkError_t TvkCygmImageTransform(uint8_t* pDst, const uint8_t* pSrc,
                                                       uint32_t width, uint32_t height,
                                                       uint32_t imageFormat, uint32_t cygmPattern,
                                                       uint32_t mode, uint32_t nirMode) {
    if (TvkError_t status = CheckRaw(pDst, pSrc, width, height, 0)) return status;
    return PerformCygmDebayering(pDst, pSrc, width, height, imageFormat, cygmPattern, mode,
                                 nirMode);
}
