#include "Demosaic.h"

#include <algorithm>

namespace img {

void Packed12To8(uint8_t* aDest, const uint8_t* aSource, size_t aPixels) {
    size_t i = HaveSsse3() ? Packed12To8Ssse3(aDest, aSource, aPixels) : 0;
    aSource += i / 2 * 3;
    for (; i + 1 < aPixels; i += 2, aSource += 3) {
        aDest[i] = aSource[0];
        aDest[i + 1] = aSource[2];
    }
    if (aPixels & 1) aDest[aPixels - 1] = aSource[0];
}

// The low nibble of the middle byte belongs to the first pixel.
void Packed12To16(uint16_t* aDest, const uint8_t* aSource, size_t aPixels) {
    for (size_t i = 0; i < aPixels; i += 2, aSource += 3) {
        aDest[i] = static_cast<uint16_t>((aSource[0] << 8) | ((aSource[1] & 0x0F) << 4));
        if (i + 1 < aPixels)
            aDest[i + 1] = static_cast<uint16_t>((aSource[2] << 8) | (aSource[1] & 0xF0));
    }
}

namespace {

template <bool BigEndian> inline uint32_t Sample16(const uint8_t* p) {
    return BigEndian ? (p[0] << 8 | p[1]) : (p[1] << 8 | p[0]);
}

template <bool BigEndian, class S>
void Wide16(S* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aBitsUsed, int aShift) {
    const uint32_t top = (1u << aBitsUsed) - 1;
    for (size_t i = 0; i < aPixels; ++i) {
        const uint32_t v = std::min(Sample16<BigEndian>(aSource + 2 * i), top);
        aDest[i] = static_cast<S>(aShift >= 0 ? v >> aShift : v << -aShift);
    }
}

} // namespace

void Wide16To8(uint8_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aBitsUsed,
               bool aBigEndian) {
    const int shift = static_cast<int>(aBitsUsed) - 8;
    if (aBigEndian)
        Wide16<true>(aDest, aSource, aPixels, aBitsUsed, shift);
    else
        Wide16<false>(aDest, aSource, aPixels, aBitsUsed, shift);
}

void Wide16To16(uint16_t* aDest, const uint8_t* aSource, size_t aPixels, uint32_t aBitsUsed,
                bool aBigEndian) {
    const int shift = static_cast<int>(aBitsUsed) - 16;
    if (aBigEndian)
        Wide16<true>(aDest, aSource, aPixels, aBitsUsed, shift);
    else
        Wide16<false>(aDest, aSource, aPixels, aBitsUsed, shift);
}

namespace {

// Runs the 2x2 core on 8-bit lines with writer W wrapped round the format's iterator.
template <template <class> class W>
TvkError_t Raw8Through(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                       uint32_t aFormat, uint32_t aPhase) {
    return WithIterator(aFormat, [&](auto aIterator) {
        W<decltype(aIterator)> out{};
        return Demosaic2x2(out, aDest, aWidth, aHeight, aPhase, [&] {
            return tRaw8Lines{aSource, aWidth};
        });
    });
}

template <class It> using tPlain = It;

// Decoded lines through the 2x2 core.
template <class S, class Decode>
TvkError_t DecodedThrough(uint8_t* aDest, uint32_t aWidth, uint32_t aHeight, uint32_t aFormat,
                          uint32_t aPhase, Decode aDecode) {
    auto body = [&](auto aIterator) {
        return Demosaic2x2(aIterator, aDest, aWidth, aHeight, aPhase, [&] {
            return tDecodedLines<S, Decode>{aDecode, aWidth};
        });
    };
    if constexpr (std::is_same_v<S, uint16_t>) {
        return WithWideIterator(aFormat, body);
    } else {
        if (aFormat == TvkSimpleImageFormatUYVY) return TvkErrorNotImplemented;
        return WithIterator(aFormat, body);
    }
}

} // namespace

TvkError_t Raw8To2x2(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                     uint32_t aFormat, uint32_t aPhase) {
    return Raw8Through<tPlain>(aDest, aSource, aWidth, aHeight, aFormat, aPhase);
}

TvkError_t Raw8To2x2Mono(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                         uint32_t aFormat, uint32_t aPhase) {
    return Raw8Through<tGreyWriter>(aDest, aSource, aWidth, aHeight, aFormat, aPhase);
}

TvkError_t Raw8ToGreen(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                       uint32_t aFormat, uint32_t aPhase) {
    return Raw8Through<tGreenWriter>(aDest, aSource, aWidth, aHeight, aFormat, aPhase);
}

// Half resolution at full size: the red sample of each 2x2 cell fills the cell.
TvkError_t Raw8ToSingle(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                        uint32_t aFormat, uint32_t aPhase) {
    return WithIterator(aFormat, [&](auto aIterator) {
        using It = decltype(aIterator);
        const size_t stride = static_cast<size_t>(aWidth) * It::kBytes;
        const uint32_t dx = aPhase & 1, dy = aPhase >> 1;
        for (uint32_t y = 0; y < aHeight; y += 2) {
            const uint8_t* line = aSource + static_cast<size_t>(y + dy) * aWidth + dx;
            It out{aDest + y * stride};
            for (uint32_t x = 0; x < aWidth; x += 2) {
                const uint32_t v = line[x];
                out.Write(v, v, v);
                out.Write(v, v, v);
            }
            memcpy(aDest + (y + 1) * stride, aDest + y * stride, stride);
        }
    });
}

TvkError_t Raw12To2x2(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                      uint32_t aFormat, uint32_t aPhase) {
    const size_t lineBytes = static_cast<size_t>(aWidth) / 2 * 3;
    auto decode = [=](uint8_t* aLine, uint32_t y) {
        Packed12To8(aLine, aSource + y * lineBytes, aWidth);
    };
    return DecodedThrough<uint8_t>(aDest, aWidth, aHeight, aFormat, aPhase, decode);
}

TvkError_t Raw16To2x2(uint8_t* aDest, const uint8_t* aSource, uint32_t aWidth, uint32_t aHeight,
                      uint32_t aFormat, uint32_t aPhase, uint32_t aBitsUsed, bool aBigEndian,
                      bool aWide) {
    if (aBitsUsed < 8 || aBitsUsed > 16) return TvkErrorBadParameter;
    const size_t lineBytes = static_cast<size_t>(aWidth) * 2;
    if (aFormat >= TvkSimpleImageFormatMono16) {
        if (!aWide) return TvkErrorNotImplemented;
        auto decode = [=](uint16_t* aLine, uint32_t y) {
            Wide16To16(aLine, aSource + y * lineBytes, aWidth, aBitsUsed, aBigEndian);
        };
        return DecodedThrough<uint16_t>(aDest, aWidth, aHeight, aFormat, aPhase, decode);
    }
    auto decode = [=](uint8_t* aLine, uint32_t y) {
        Wide16To8(aLine, aSource + y * lineBytes, aWidth, aBitsUsed, aBigEndian);
    };
    return DecodedThrough<uint8_t>(aDest, aWidth, aHeight, aFormat, aPhase, decode);
}

} // namespace img
