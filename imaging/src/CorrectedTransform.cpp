#include "CorrectedTransform.h"

#include <algorithm>
#include <vector>

#include "ColorCorrection.h"
#include "ColourSourcesSimd.h"
#include "Demosaic.h"
#include "PixelFormatTable.h"

using namespace qrx;

namespace img {

namespace {

// Corrects each pixel before the iterator writes it; Wide picks the 16-bit
// form of the functor.
template <class It, class M, bool Wide> struct tCorrected : It {
    const M* matrix = nullptr;
    void Write(uint32_t r, uint32_t g, uint32_t b) {
        if constexpr (Wide)
            matrix->Apply16(r, g, b);
        else
            matrix->Apply8(r, g, b);
        It::Write(r, g, b);
    }
};

template <class It, bool Wide, class M> tCorrected<It, M, Wide> Corrected(const M& aMatrix) {
    tCorrected<It, M, Wide> out{};
    out.matrix = &aMatrix;
    return out;
}

// Colour pixels of aStep bytes, in RGB or BGR order.
template <class It>
void RGBToRGB_impl(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aStep,
                   bool aBgr, const ColorCorrectionMatrixInt8& aMatrix) {
    auto out = Corrected<It, false>(aMatrix);
    out.p = aDest;
    for (size_t i = 0; i < aPixels; ++i, aSource += aStep)
        out.Write(aSource[aBgr ? 2 : 0], aSource[1], aSource[aBgr ? 0 : 2]);
}

template <class M, bool Wide, class MakeLines>
TvkError_t DemosaicCorrected(uint8_t* aDest, uint32_t aFormat, const TvkImageInfo& aInfo,
                             const M& aMatrix, MakeLines&& aMakeLines) {
    auto body = [&](auto aIterator) {
        return Demosaic2x2(Corrected<decltype(aIterator), Wide>(aMatrix), aDest, aInfo.Width,
                           aInfo.Height, InternalPhase(aInfo.PixelInfo.BayerPattern), aMakeLines);
    };
    if constexpr (Wide)
        return WithWideIterator(aFormat, body);
    else
        return WithIterator(aFormat, body);
}

// The vector form of the 8-bit path: each line demosaiced into RGB, then
// corrected 16 pixels at a time; the line's tail goes through the plain writer.
TvkError_t Raw8Corrected(uint8_t* aDest, const uint8_t* aSource, const TvkImageInfo& aInfo,
                         uint32_t aFormat, const ColorCorrectionMatrixInt8& aMatrix) {
    const uint32_t w = aInfo.Width, h = aInfo.Height;
    const uint32_t phase = InternalPhase(aInfo.PixelInfo.BayerPattern);
    const size_t stride = size_t(w) * OutputBytes(aFormat);
    return ForEachBand(h, size_t(w) * h, [&](uint32_t aFirst, uint32_t aEnd) {
        thread_local std::vector<uint8_t> rgb;
        rgb.resize(size_t(w) * 3);
        for (uint32_t y = aFirst; y < aEnd; ++y) {
            const uint32_t top = y + 1 < h ? y : y - 1;
            const uint8_t* l0 = aSource + size_t(top) * w;
            Line2x2(PixelIteratorRGB24{rgb.data()}, rgb.data(), l0, l0 + w, w,
                    LinePhase(phase, top));
            uint8_t* out = aDest + y * stride;
            const size_t done = CorrectInt8Sse41(out, rgb.data(), w, aMatrix.m, aFormat);
            WithIterator(aFormat, [&](auto aIterator) {
                auto tail = Corrected<decltype(aIterator), false>(aMatrix);
                tail.p = out + done * OutputBytes(aFormat);
                for (size_t x = done; x < w; ++x)
                    tail.Write(rgb[3 * x], rgb[3 * x + 1], rgb[3 * x + 2]);
            });
        }
    });
}

} // namespace

TvkError_t ImageTransform__CC(const TvkImage& aSource, TvkImage& aDestination,
                              const float* aMatrix) {
    uint32_t format = 0;
    if (TvkError_t status = GetSimpleImageFormat(format, aDestination)) return status;
    const TvkImageInfo& info = aSource.ImageInfo;
    const TvkPixelInfo& p = info.PixelInfo;
    auto* dst = static_cast<uint8_t*>(aDestination.Data);
    const auto* src = static_cast<const uint8_t*>(aSource.Data);
    ColorCorrectionPrm prm;
    std::copy_n(aMatrix, 9, prm.matrix);
    const ColorCorrectionMatrixInt8 matrix8(prm);
    const ColorCorrectionMatrixInt16 matrix16(prm);
    const size_t pixels = static_cast<size_t>(info.Width) * info.Height;

    const bool colour =
        (p.PixelLayout == TvkPixelLayoutRGB || p.PixelLayout == TvkPixelLayoutBGR ||
         p.PixelLayout == TvkPixelLayoutRGBA || p.PixelLayout == TvkPixelLayoutBGRA);
    if (colour) {
        const uint32_t step = p.PixelLayout >= TvkPixelLayoutRGBA ? 4 : 3;
        if (p.BitsPerPixel != step * 8 || format < 1 || format > 4) return TvkErrorBadParameter;
        const bool bgr = p.PixelLayout == TvkPixelLayoutBGR || p.PixelLayout == TvkPixelLayoutBGRA;
        return WithIterator(format, [&](auto aIterator) {
            RGBToRGB_impl<decltype(aIterator)>(dst, src, pixels, step, bgr, matrix8);
        });
    }
    if (p.PixelLayout != TvkPixelLayoutRaw && p.PixelLayout != TvkPixelLayoutRawPacked)
        return TvkErrorBadParameter;
    if (info.Width == 0 || info.Height == 0 || (info.Width & 1) || (info.Height & 1) ||
        p.BayerPattern > 3)
        return TvkErrorBadParameter;
    const uint32_t w = info.Width;

    if (p.PixelLayout == TvkPixelLayoutRaw && p.BitsPerPixel == 8) {
        // Raw8ToBGR_impl and Raw8ToY8_impl.
        if (format != 0 && format != 1 && format != 3 && format != 5) return TvkErrorBadParameter;
        if (HaveSsse3() && HaveSse41()) return Raw8Corrected(dst, src, info, format, matrix8);
        return DemosaicCorrected<ColorCorrectionMatrixInt8, false>(dst, format, info, matrix8, [&] {
            return tRaw8Lines{src, w};
        });
    }
    if (p.PixelLayout == TvkPixelLayoutRaw && p.BitsPerPixel == 16) {
        // Raw16ToY16_impl and Raw16ToBGR16_impl: samples moved to the top of 16 bits.
        if (format != 7 && format != 8 && format != 9) return TvkErrorBadParameter;
        if (p.BitsUsed < 8 || p.BitsUsed > 16) return TvkErrorBadParameter;
        const uint32_t bits = p.BitsUsed;
        const bool bigEndian = p.Endianness == 1;
        auto decode = [=](uint16_t* aLine, uint32_t y) {
            Wide16To16(aLine, src + size_t(y) * w * 2, w, bits, bigEndian);
        };
        return DemosaicCorrected<ColorCorrectionMatrixInt16, true>(
            dst, format, info, matrix16, [&] {
                return tDecodedLines<uint16_t, decltype(decode)>{decode, w};
            });
    }
    if (p.PixelLayout == TvkPixelLayoutRawPacked && p.BitsPerPixel == 12) {
        const size_t lineBytes = size_t(w) / 2 * 3;
        if (format == TvkSimpleImageFormatBGR24) {
            // Raw12ToBGR_impl: the upper eight bits through the 16-bit matrix.
            auto decode = [=](uint8_t* aLine, uint32_t y) {
                Packed12To8(aLine, src + y * lineBytes, w);
            };
            return DemosaicCorrected<ColorCorrectionMatrixInt16, false>(
                dst, format, info, matrix16, [&] {
                    return tDecodedLines<uint8_t, decltype(decode)>{decode, w};
                });
        }
        if (format == TvkSimpleImageFormatBGR48) {
            // Raw12ToBGR16_impl.
            auto decode = [=](uint16_t* aLine, uint32_t y) {
                Packed12To16(aLine, src + y * lineBytes, w);
            };
            return DemosaicCorrected<ColorCorrectionMatrixInt16, true>(
                dst, format, info, matrix16, [&] {
                    return tDecodedLines<uint16_t, decltype(decode)>{decode, w};
                });
        }
    }
    return TvkErrorBadParameter;
}

} // namespace img

namespace {

// Corrects aPixels pixels in place: formats 1 to 4 of 8-bit and 9, 10 of
// 16-bit samples; alpha stays.
struct tApply {
    uint8_t* data;
    size_t pixels;
    uint32_t step; // bytes per pixel; 6 for 16-bit samples
    int red;       // byte (or sample) of red: 0 or 2
};

template <class M> void ApplyTo(const M& aFunctor, const tApply& aJob) {
    const uint32_t step = aJob.step;
    const int red = aJob.red;
    if (step == 6) {
        auto at = [](uint8_t* p) -> uint32_t { return p[0] | p[1] << 8; };
        auto put = [](uint8_t* p, uint32_t v) {
            p[0] = static_cast<uint8_t>(v);
            p[1] = static_cast<uint8_t>(v >> 8);
        };
        for (size_t i = 0; i < aJob.pixels; ++i) {
            uint8_t* p = aJob.data + i * 6;
            uint32_t r = at(p + red * 2), g = at(p + 2), b = at(p + (2 - red) * 2);
            aFunctor.Apply16(r, g, b);
            put(p + red * 2, r), put(p + 2, g), put(p + (2 - red) * 2, b);
        }
        return;
    }
    for (size_t i = 0; i < aJob.pixels; ++i) {
        uint8_t* p = aJob.data + i * step;
        uint32_t r = p[red], g = p[1], b = p[2 - red];
        aFunctor.Apply8(r, g, b);
        p[red] = static_cast<uint8_t>(r), p[1] = static_cast<uint8_t>(g);
        p[2 - red] = static_cast<uint8_t>(b);
    }
}

} // namespace

extern "C" {

TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionMatrix(const float* pMatrix) {
    return createMatrixCorrectionHandle(pMatrix);
}
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionMatrix_Int8(const float* pMatrix) {
    return createMatrixInt8CorrectionHandle(pMatrix);
}
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionMatrix_Int16(const float* pMatrix) {
    return createMatrixInt16CorrectionHandle(pMatrix);
}
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGamma(float gamma, float maximum) {
    return createGammaCorrectionHandle(gamma, maximum);
}
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGammaMatrix(const float* pMatrix,
                                                                        float gamma,
                                                                        float maximum) {
    return createGammaMatrixCorrectionHandle(pMatrix, gamma, maximum);
}
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGammaMatrix_LUT8(const float* pMatrix,
                                                                             float gamma,
                                                                             float maximum) {
    return createGammaMatrixLUT8CorrectionHandle(pMatrix, gamma, maximum);
}
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGammaMatrix_LUT16(const float* pMatrix,
                                                                              float gamma,
                                                                              float maximum) {
    return createGammaMatrixUT16CorrectionHandle(pMatrix, gamma, maximum);
}
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGamma_LUT8(float gamma, float maximum) {
    return createGammaLUT8CorrectionHandle(gamma, maximum);
}
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGamma_LUT16(float gamma,
                                                                        float maximum) {
    return createGammaLUT16CorrectionHandle(gamma, maximum);
}

TVK_EXPORT int32_t TvkDestroyColorCorrection(TvkColorCorrectionHandle handle) {
    return destroyCorrectionHandle(static_cast<FunctorBase*>(handle));
}

TVK_EXPORT TvkError_t TvkApplyColorCorrection(TvkColorCorrectionHandle handle, void* pData,
                                              uint32_t pixelCount, uint32_t imageFormat) {
    if (!handle || !pData) return TvkErrorBadParameter;
    if (imageFormat < 1 || (imageFormat > 4 && imageFormat < 9) || imageFormat > 10)
        return TvkErrorNotImplemented;
    const bool bgr = imageFormat == TvkSimpleImageFormatBGR24 ||
                     imageFormat == TvkSimpleImageFormatBGRA32 ||
                     imageFormat == TvkSimpleImageFormatBGR48;
    tApply job{static_cast<uint8_t*>(pData), pixelCount, img::OutputBytes(imageFormat),
               bgr ? 2 : 0};
    const bool live = WithLiveHandle(
        handle,
        [](const FunctorBase& aFunctor, void* aJob) {
            VisitCorrection(aFunctor, [&](const auto& aReal) {
                ApplyTo(aReal, *static_cast<const tApply*>(aJob));
            });
        },
        &job);
    return live ? TvkErrorSuccess : TvkErrorBadParameter;
}

} // extern "C"
