#include "FrameGenerator.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

namespace sim {

namespace {
enum : uint32_t {
    kMono8 = 0x01080001,
    kMono10 = 0x01100003,
    kMono12 = 0x01100005,
    kMono12Packed = 0x010C0006,
    kMono16 = 0x01100007,
    kBayerGR8 = 0x01080008,
    kBayerRG8 = 0x01080009,
    kBayerGB8 = 0x0108000A,
    kBayerBG8 = 0x0108000B,
    kBayerGR12Packed = 0x010C002A,
    kBayerRG12Packed = 0x010C002B,
    kBayerGB12Packed = 0x010C002C,
    kBayerBG12Packed = 0x010C002D,
    kBayerGR16 = 0x0110002E,
    kBayerRG16 = 0x0110002F,
    kBayerGB16 = 0x01100030,
    kBayerBG16 = 0x01100031,
    kRgb8 = 0x02180014,
    kBgr8 = 0x02180015,
    kRgba8 = 0x02200016,
    kBgra8 = 0x02200017,
    kYuv422 = 0x0210001F
};

// Significant bits of the 16-bit container formats.
uint32_t BitsOf(uint32_t aFormat) {
    switch (aFormat) {
    case kMono10:
        return 10;
    case kMono12:
        return 12;
    default:
        return 16;
    }
}

bool IsPacked12(uint32_t aFormat) {
    return aFormat == kMono12Packed || (aFormat >= kBayerGR12Packed && aFormat <= kBayerBG12Packed);
}
} // namespace

const std::vector<tPixelFormat>& Formats() {
    static const std::vector<tPixelFormat> kFormats = {
        {kMono8, "Mono8", 8},
        {kMono10, "Mono10", 16},
        {kMono12, "Mono12", 16},
        {kMono12Packed, "Mono12Packed", 12},
        {kMono16, "Mono16", 16},
        {kBayerGR8, "BayerGR8", 8},
        {kBayerRG8, "BayerRG8", 8},
        {kBayerGB8, "BayerGB8", 8},
        {kBayerBG8, "BayerBG8", 8},
        {kBayerGR12Packed, "BayerGR12Packed", 12},
        {kBayerRG12Packed, "BayerRG12Packed", 12},
        {kBayerGB12Packed, "BayerGB12Packed", 12},
        {kBayerBG12Packed, "BayerBG12Packed", 12},
        {kBayerGR16, "BayerGR16", 16},
        {kBayerRG16, "BayerRG16", 16},
        {kBayerGB16, "BayerGB16", 16},
        {kBayerBG16, "BayerBG16", 16},
        {kRgb8, "RGB8", 24},
        {kBgr8, "BGR8", 24},
        {kRgba8, "RGBA8", 32},
        {kBgra8, "BGRA8", 32},
        {kYuv422, "YUV422", 16},
    };
    return kFormats;
}

const tPixelFormat* FindFormat(uint32_t aCode) {
    for (const tPixelFormat& f : Formats())
        if (f.code == aCode) return &f;
    return nullptr;
}

const tPixelFormat* FindFormat(const char* aName) {
    for (const tPixelFormat& f : Formats())
        if (strcasecmp(f.name, aName) == 0) return &f;
    return nullptr;
}

bool FrameGenerator::Configure(uint32_t aFormat, uint32_t aWidth, uint32_t aHeight) {
    const tPixelFormat* format = FindFormat(aFormat);
    if (!format || aWidth == 0 || aHeight == 0) return false;
    mPaired = IsPacked12(aFormat) || aFormat == kYuv422;
    if (mPaired && aWidth % 2 != 0) return false;
    mFormat = aFormat;
    mWidth = aWidth;
    mHeight = aHeight;
    mRowBytes = static_cast<uint32_t>(static_cast<uint64_t>(aWidth) * format->bitsPerPixel / 8);

    // The strip holds period + width pixels starting at value 0 (and, for
    // paired formats, a second strip starting at value 1).
    const uint32_t bits = format->bitsPerPixel == 16 && aFormat != kYuv422 ? BitsOf(aFormat) : 8;
    mPeriod = IsPacked12(aFormat)
                  ? 4096u
                  : (format->bitsPerPixel == 16 && aFormat != kYuv422 ? 1u << bits : 256u);
    const uint32_t pixels = mPeriod + aWidth + 2;
    for (int variant = 0; variant < (mPaired ? 2 : 1); ++variant) {
        std::vector<uint8_t>& strip = mStrip[variant];
        strip.assign(static_cast<size_t>(pixels) * 4, 0);
        uint8_t* out = strip.data();
        for (uint32_t i = 0; i < pixels; ++i) {
            const uint32_t v = i + static_cast<uint32_t>(variant);
            if (IsPacked12(aFormat)) {
                if (i % 2 != 0) continue;
                const uint32_t p0 = v & 0xFFF, p1 = (v + 1) & 0xFFF;
                *out++ = static_cast<uint8_t>(p0 >> 4);
                *out++ = static_cast<uint8_t>((p0 & 0xF) | ((p1 & 0xF) << 4));
                *out++ = static_cast<uint8_t>(p1 >> 4);
            } else if (aFormat == kYuv422) {
                if (i % 2 != 0) continue;
                *out++ = 128;
                *out++ = static_cast<uint8_t>(v);
                *out++ = 128;
                *out++ = static_cast<uint8_t>(v + 1);
            } else if (format->bitsPerPixel == 16) {
                const uint16_t value = static_cast<uint16_t>(v & ((1u << bits) - 1));
                memcpy(out, &value, 2);
                out += 2;
            } else if (format->bitsPerPixel == 8) {
                *out++ = static_cast<uint8_t>(v);
            } else {
                const uint8_t r = static_cast<uint8_t>(v), g = static_cast<uint8_t>(v + 85),
                              b = static_cast<uint8_t>(v + 170);
                const bool bgr = aFormat == kBgr8 || aFormat == kBgra8;
                *out++ = bgr ? b : r;
                *out++ = g;
                *out++ = bgr ? r : b;
                if (format->bitsPerPixel == 32) *out++ = 255;
            }
        }
    }
    mBytesPerStep = mPaired ? (aFormat == kYuv422 ? 4 : 3) : format->bitsPerPixel / 8;
    return true;
}

size_t FrameGenerator::Fill(uint8_t* aDest, size_t aCapacity, uint64_t aFrameId) const {
    size_t written = 0;
    for (uint32_t y = 0; y < mHeight && written < aCapacity; ++y) {
        const uint32_t shift = static_cast<uint32_t>((y + aFrameId) % mPeriod);
        const uint8_t* source;
        if (mPaired)
            source = mStrip[shift % 2].data() + static_cast<size_t>(shift / 2) * mBytesPerStep;
        else
            source = mStrip[0].data() + static_cast<size_t>(shift) * mBytesPerStep;
        const size_t n = std::min<size_t>(mRowBytes, aCapacity - written);
        memcpy(aDest + written, source, n);
        written += n;
    }
    const size_t stamp = std::min<size_t>(written, sizeof(aFrameId));
    memcpy(aDest, &aFrameId, stamp);
    return written;
}

} // namespace sim
