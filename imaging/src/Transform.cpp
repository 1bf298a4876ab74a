// The transform entries: the general one that picks a routine, and the
// per-source family.
#include <cstring>
#include <vector>

#include "ColourSources.h"
#include "Demosaic.h"
#include "DemosaicSimd.h"
#include "PixelFormatTable.h"

using namespace img;

namespace {

const TvkTransformInfo* FindTransformInfo(const TvkTransformInfo* aParameters, uint32_t aCount,
                                          uint32_t aType) {
    for (uint32_t i = 0; aParameters && i < aCount; ++i)
        if (aParameters[i].TransformType == aType) return &aParameters[i];
    return nullptr;
}

// 12-bit pairs in three bytes: the upper eight bits of each pixel.
void Packed12To8(uint8_t* aDest, const uint8_t* aSource, size_t aPixels) {
    size_t i = HaveSsse3() ? Packed12To8Ssse3(aDest, aSource, aPixels) : 0;
    aSource += i / 2 * 3;
    for (; i + 1 < aPixels; i += 2, aSource += 3) {
        aDest[i] = aSource[0];
        aDest[i + 1] = aSource[2];
    }
    if (aPixels & 1) aDest[aPixels - 1] = aSource[0];
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
    if (!pDst || !pSrc) return TvkErrorBadParameter;
    if (width == 0 || height == 0 || (width & 1) || (height & 1)) return TvkErrorBadParameter;
    if (bayerPattern > 3 && bayerPattern != 0xFFFFFFFFu) return TvkErrorBadParameter;
    if (bayerPattern > 3) return TvkErrorNotImplemented;
    // GB and GR trade places in the internal phase.
    if (bayerPattern == 1 || bayerPattern == 2) bayerPattern = 3 - bayerPattern;
    return Raw8ToColor2x2(pDst, pSrc, width, height, imageFormat, bayerPattern);
}

TVK_EXPORT TvkError_t TvkRaw8ImageTransform_3x3(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                                uint32_t height, uint32_t imageFormat,
                                                uint32_t bayerPattern) {
    if (!pDst || !pSrc) return TvkErrorBadParameter;
    if (width == 0 || height == 0 || (width & 1) || (height & 1)) return TvkErrorBadParameter;
    if (bayerPattern > 3 && bayerPattern != 0xFFFFFFFFu) return TvkErrorBadParameter;
    if (bayerPattern > 3) return TvkErrorNotImplemented;
    return Raw8ToColor3x3(pDst, pSrc, width, height, imageFormat, bayerPattern);
}

TVK_EXPORT TvkError_t TvkY8ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t pixelCount,
                                          uint32_t imageFormat) {
    if (!pDst || !pSrc) return TvkErrorBadParameter;
    return Y8ToOutput(pDst, pSrc, pixelCount, imageFormat);
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
    if (FindTransformInfo(parameter, parameterCount, TvkTransformTypeColorCorrectionMatrix))
        return TvkErrorNotImplemented;
    uint32_t format = 0;
    if (TvkError_t status = GetSimpleImageFormat(format, *destination)) return status;
    if (format == TvkSimpleImageFormatUYVY && (in.Width & 1)) return TvkErrorBadParameter;

    const TvkPixelInfo& p = in.PixelInfo;
    auto* dst = static_cast<uint8_t*>(destination->Data);
    const auto* src = static_cast<const uint8_t*>(source->Data);
    const size_t pixels = static_cast<size_t>(in.Width) * in.Height;
    switch (p.PixelLayout) {
    case TvkPixelLayoutMono:
        if (p.BitsPerPixel == 8)
            return TvkY8ImageTransform(dst, src, static_cast<uint32_t>(pixels), format);
        if (p.BitsPerPixel == 16)
            return Y16ToOutput(dst, src, static_cast<uint32_t>(pixels), p.BitsUsed,
                               p.Endianness == 1, format);
        return TvkErrorNotImplemented;
    case TvkPixelLayoutMonoPacked: {
        if (p.BitsPerPixel != 12) return TvkErrorBadParameter;
        if (format == TvkSimpleImageFormatMono8) {
            Packed12To8(dst, src, pixels);
            return TvkErrorSuccess;
        }
        std::vector<uint8_t> mono(pixels);
        Packed12To8(mono.data(), src, pixels);
        return Y8ToOutput(dst, mono.data(), static_cast<uint32_t>(pixels), format);
    }
    case TvkPixelLayoutRaw: {
        if (p.BitsPerPixel != 8) return TvkErrorNotImplemented;
        const TvkTransformInfo* debayer =
            FindTransformInfo(parameter, parameterCount, TvkTransformTypeDebayerMode);
        const uint32_t mode = debayer ? debayer->Parameter.DebayerMode : 0;
        if (mode > 4) return TvkErrorBadParameter;
        if (mode == 1)
            return TvkRaw8ImageTransform_3x3(dst, src, in.Width, in.Height, format, p.BayerPattern);
        if (mode != 0) return TvkErrorNotImplemented;
        return TvkRaw8ImageTransform(dst, src, in.Width, in.Height, format, p.BayerPattern);
    }
    case TvkPixelLayoutRGB:
        if (p.BitsPerPixel != 24) return TvkErrorBadParameter;
        return ColourToOutput(dst, src, static_cast<uint32_t>(pixels), p.PixelLayout, format);
    case TvkPixelLayoutBGR:
    case TvkPixelLayoutRGBA:
    case TvkPixelLayoutBGRA:
        if (p.BitsPerPixel != (p.PixelLayout == TvkPixelLayoutBGR ? 24u : 32u))
            return TvkErrorNotImplemented;
        return ColourToOutput(dst, src, static_cast<uint32_t>(pixels), p.PixelLayout, format);
    case TvkPixelLayoutYUV422:
        if (in.Width & 1) return TvkErrorBadParameter;
        return Yuv422ToOutput(dst, src, static_cast<uint32_t>(pixels), format);
    default:
        return TvkErrorNotImplemented;
    }
}

} // extern "C"
