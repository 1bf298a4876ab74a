// Filling image records, and the pixel format queries.
#include <cstring>
#include <new>

#include "PixelFormatTable.h"

using namespace img;

namespace {

TvkError_t CheckImage(const TvkImage* aImage) {
    if (!aImage) return TvkErrorBadParameter;
    return aImage->Size == sizeof(TvkImage) ? TvkErrorSuccess : TvkErrorStructSize;
}

void SetSize(TvkImage* aImage, uint32_t aWidth, uint32_t aHeight) {
    aImage->ImageInfo.Height = aHeight;
    aImage->ImageInfo.Width = aWidth;
    aImage->ImageInfo.Stride = aWidth;
}

template <class F> TvkError_t Query(uint32_t* aOut, uint32_t aFormat, F aField) {
    const tPixelFormatRow* row = FindPixelFormat(aFormat);
    if (!aOut || !row) return TvkErrorBadParameter;
    *aOut = aField(*row);
    return TvkErrorSuccess;
}

} // namespace

extern "C" {

TVK_EXPORT TvkError_t TvkBitsPerPixel(uint32_t* pBitsPerPixel, uint32_t pixelFormat) {
    return Query(pBitsPerPixel, pixelFormat,
                 [](const tPixelFormatRow& r) { return r.bitsPerPixel; });
}

TVK_EXPORT TvkError_t TvkBitsPerPixelUsed(uint32_t* pBitsUsed, uint32_t pixelFormat) {
    return Query(pBitsUsed, pixelFormat, [](const tPixelFormatRow& r) { return r.bitsUsed; });
}

TVK_EXPORT TvkError_t TvkGetBayerPattern(uint32_t* pBayerPattern, uint32_t pixelFormat) {
    return Query(pBayerPattern, pixelFormat, [](const tPixelFormatRow& r) { return r.bayer; });
}

TVK_EXPORT TvkError_t TvkGetPixelLayout(uint32_t* pPixelLayout, uint32_t pixelFormat) {
    return Query(pPixelLayout, pixelFormat, [](const tPixelFormatRow& r) { return r.layout; });
}

TVK_EXPORT TvkError_t TvkGetColorSpace(uint32_t* pColorSpace, uint32_t pixelFormat) {
    return Query(pColorSpace, pixelFormat,
                 [](const tPixelFormatRow& r) { return ColorSpaceOf(r); });
}

TVK_EXPORT TvkError_t TvkHasBayerPattern(TvkBool_t* pHasPattern, uint32_t pixelFormat) {
    const tPixelFormatRow* row = FindPixelFormat(pixelFormat);
    if (!pHasPattern || !row) return TvkErrorBadParameter;
    *pHasPattern = row->bayer != TvkBayerPatternNone;
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkIsColor(TvkBool_t* pIsColor, uint32_t pixelFormat) {
    const tPixelFormatRow* row = FindPixelFormat(pixelFormat);
    if (!pIsColor || !row) return TvkErrorBadParameter;
    *pIsColor = row->layout != TvkPixelLayoutMono && row->layout != TvkPixelLayoutMonoPacked;
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkSetImageInfoFromPixelFormat(uint32_t pixelFormat, uint32_t width,
                                                     uint32_t height, TvkImage* pImage) {
    if (TvkError_t status = CheckImage(pImage)) return status;
    SetSize(pImage, width, height);
    const tPixelFormatRow* row = FindPixelFormat(pixelFormat);
    if (!row) return TvkErrorBadParameter;
    TvkPixelInfo& p = pImage->ImageInfo.PixelInfo;
    p.BitsPerPixel = row->bitsPerPixel;
    p.BitsUsed = row->bitsUsed;
    p.BayerPattern = row->bayer;
    p.PixelLayout = row->layout;
    p.ColorSpace = ColorSpaceOf(*row);
    p.Endianness = 0;
    p.Alignment = 1;
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkSetImageInfoOutput(uint32_t simpleImageFormat, uint32_t width,
                                            uint32_t height, TvkImage* pImage) {
    if (TvkError_t status = CheckImage(pImage)) return status;
    const tSimpleFormatRow* row = FindSimpleFormat(simpleImageFormat);
    if (!row) return TvkErrorBadParameter;
    SetSize(pImage, width, height);
    TvkPixelInfo& p = pImage->ImageInfo.PixelInfo;
    p.BitsPerPixel = p.BitsUsed = row->bitsPerPixel;
    p.PixelLayout = row->layout;
    p.ColorSpace = row->colorSpace;
    p.BayerPattern = TvkBayerPatternNone;
    p.Endianness = 0;
    p.Alignment = 1;
    return TvkErrorSuccess;
}

TVK_EXPORT TvkError_t TvkSetImageInfoFromString(const char* pText, uint32_t stringLength,
                                                uint32_t width, uint32_t height, TvkImage* pImage) {
    if (!pText || !pImage) return TvkErrorBadParameter;
    if (TvkError_t status = CheckImage(pImage)) return status;
    // A name from a TvkPixelFormat... listing may keep its prefix.
    uint32_t length = static_cast<uint32_t>(strnlen(pText, stringLength));
    if (length > 3 && strncasecmp(pText, "TVK", 3) == 0) {
        pText += 3;
        length -= 3;
    }
    try {
        int64_t simple = SimpleFormatByName(pText, length);
        if (simple >= 0)
            return TvkSetImageInfoOutput(static_cast<uint32_t>(simple), width, height, pImage);
        int64_t pixel = PixelFormatByName(pText, length);
        if (pixel >= 0)
            return TvkSetImageInfoFromPixelFormat(static_cast<uint32_t>(pixel), width, height,
                                                  pImage);
    } catch (...) {
        return TvkErrorResources;
    }
    return TvkErrorBadParameter;
}

} // extern "C"
