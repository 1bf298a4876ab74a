#include "PixelFormatTable.h"

#include <strings.h>

#include <map>
#include <string>

namespace img {

namespace {

constexpr uint32_t kNone = 255;

constexpr tPixelFormatRow kPixelFormats[] = {
    {TvkPixelFormatMono8, "Mono8", 8, 8, 0, kNone},
    {TvkPixelFormatMono10, "Mono10", 16, 10, 0, kNone},
    {TvkPixelFormatMono12, "Mono12", 16, 12, 0, kNone},
    {TvkPixelFormatMono12Packed, "Mono12Packed", 12, 12, 1, kNone},
    {TvkPixelFormatMono14, "Mono14", 16, 14, 0, kNone},
    {TvkPixelFormatMono16, "Mono16", 16, 16, 0, kNone},
    {TvkPixelFormatBayerGR8, "BayerGR8", 8, 8, 2, 2},
    {TvkPixelFormatBayerRG8, "BayerRG8", 8, 8, 2, 0},
    {TvkPixelFormatBayerGB8, "BayerGB8", 8, 8, 2, 1},
    {TvkPixelFormatBayerBG8, "BayerBG8", 8, 8, 2, 3},
    {TvkPixelFormatBayerGR10, "BayerGR10", 16, 10, 2, 2},
    {TvkPixelFormatBayerRG10, "BayerRG10", 16, 10, 2, 0},
    {TvkPixelFormatBayerGB10, "BayerGB10", 16, 10, 2, 1},
    {TvkPixelFormatBayerBG10, "BayerBG10", 16, 10, 2, 3},
    {TvkPixelFormatBayerGR12, "BayerGR12", 16, 12, 2, 2},
    {TvkPixelFormatBayerRG12, "BayerRG12", 16, 12, 2, 0},
    {TvkPixelFormatBayerGB12, "BayerGB12", 16, 12, 2, 1},
    {TvkPixelFormatBayerBG12, "BayerBG12", 16, 12, 2, 3},
    {TvkPixelFormatBayerGR12Packed, "BayerGR12Packed", 12, 12, 3, 2},
    {TvkPixelFormatBayerRG12Packed, "BayerRG12Packed", 12, 12, 3, 0},
    {TvkPixelFormatBayerGB12Packed, "BayerGB12Packed", 12, 12, 3, 1},
    {TvkPixelFormatBayerBG12Packed, "BayerBG12Packed", 12, 12, 3, 3},
    {TvkPixelFormatBayerGR16, "BayerGR16", 16, 16, 2, 2},
    {TvkPixelFormatBayerRG16, "BayerRG16", 16, 16, 2, 0},
    {TvkPixelFormatBayerGB16, "BayerGB16", 16, 16, 2, 1},
    {TvkPixelFormatBayerBG16, "BayerBG16", 16, 16, 2, 3},
    {TvkPixelFormatRgb8, "Rgb8", 24, 24, 4, kNone},
    {TvkPixelFormatBgr8, "Bgr8", 24, 24, 5, kNone},
    {TvkPixelFormatRgba8, "Rgba8", 32, 32, 6, kNone},
    {TvkPixelFormatArgb8, "Argb8", 32, 32, 6, kNone},
    {TvkPixelFormatBgra8, "Bgra8", 32, 32, 7, kNone},
    {TvkPixelFormatRgb12, "Rgb12", 48, 36, 4, kNone},
    {TvkPixelFormatRgb16, "Rgb16", 48, 48, 4, kNone},
    {TvkPixelFormatYuv411, "Yuv411", 12, 12, 8, kNone},
    {TvkPixelFormatYuv422, "Yuv422", 16, 16, 9, kNone},
    {TvkPixelFormatYuv444, "Yuv444", 24, 24, 10, kNone},
};

constexpr tSimpleFormatRow kSimpleFormats[] = {
    {8, 0, 2},  {24, 5, 0}, {32, 7, 0}, {24, 4, 0}, {32, 6, 0}, {8, 0, 1},
    {16, 9, 2}, {16, 0, 2}, {16, 0, 1}, {48, 5, 0}, {48, 4, 0},
};

struct tNoCase {
    bool operator()(const std::string& a, const std::string& b) const {
        return strcasecmp(a.c_str(), b.c_str()) < 0;
    }
};

struct tNames {
    std::map<std::string, uint32_t, tNoCase> simple;
    std::map<std::string, uint32_t, tNoCase> pixel;
};

// Built once, on first use.
const tNames& Names() {
    static const tNames names = [] {
        tNames n;
        const std::pair<const char*, uint32_t> simple[] = {
            {"MONO8", 0},         {"MONO8_REC601", 0},  {"BGR8", 1},   {"BGR24", 1},
            {"BGRA32", 2},        {"RGB8", 3},          {"RGB24", 3},  {"RGBA32", 4},
            {"MONO8_REC709", 5},  {"UYVY", 6},          {"YUV422", 6}, {"MONO16", 7},
            {"MONO16_REC601", 7}, {"MONO16_REC709", 8}, {"BGR48", 9},  {"RGB48", 10},
        };
        for (auto& [name, value] : simple)
            n.simple.emplace(name, value);
        for (const tPixelFormatRow& row : kPixelFormats)
            n.pixel.emplace(std::string("PixelFormat") + row.name, row.code);
        return n;
    }();
    return names;
}

template <class Map> int64_t Lookup(const Map& aMap, const char* aName, uint32_t aLength) {
    auto it = aMap.find(std::string(aName, aLength));
    return it == aMap.end() ? -1 : static_cast<int64_t>(it->second);
}

} // namespace

const tPixelFormatRow* FindPixelFormat(uint32_t aCode) {
    for (const tPixelFormatRow& row : kPixelFormats)
        if (row.code == aCode) return &row;
    return nullptr;
}

uint32_t ColorSpaceOf(const tPixelFormatRow& aRow) {
    return aRow.layout >= TvkPixelLayoutYUV411 ? TvkColorSpaceITU_BT601 : TvkColorSpaceUndefined;
}

const tSimpleFormatRow* FindSimpleFormat(uint32_t aFormat) {
    return aFormat < std::size(kSimpleFormats) ? &kSimpleFormats[aFormat] : nullptr;
}

int64_t SimpleFormatByName(const char* aName, uint32_t aLength) {
    return Lookup(Names().simple, aName, aLength);
}
int64_t PixelFormatByName(const char* aName, uint32_t aLength) {
    return Lookup(Names().pixel, aName, aLength);
}

TvkError_t GetSimpleImageFormat(uint32_t& aFormat, const TvkImage& aImage) {
    const TvkPixelInfo& p = aImage.ImageInfo.PixelInfo;
    const uint32_t bits = p.BitsPerPixel;
    uint32_t layout = p.PixelLayout;
    if (layout == TvkPixelLayoutMono) {
        if (p.ColorSpace == TvkColorSpaceUndefined || p.ColorSpace == TvkColorSpaceITU_BT601) {
            if (bits == 8) return aFormat = 0, TvkErrorSuccess;
            if (bits == 16) {
                if (p.Endianness != 0 || p.BitsUsed != 16) return TvkErrorNotImplemented;
                return aFormat = 7, TvkErrorSuccess;
            }
            return TvkErrorBadParameter;
        }
        if (p.ColorSpace == TvkColorSpaceITU_BT709) {
            if (bits == 8) return aFormat = 5, TvkErrorSuccess;
            if (bits == 16) return aFormat = 8, TvkErrorSuccess;
            return TvkErrorBadParameter;
        }
        layout = TvkPixelLayoutRGB; // any other colour space reads as RGB
    }
    switch (layout) {
    case TvkPixelLayoutRGB:
        if (bits == 24 || bits == 48) return aFormat = bits == 24 ? 3 : 10, TvkErrorSuccess;
        break;
    case TvkPixelLayoutBGR:
        if (bits == 24 || bits == 48) return aFormat = bits == 24 ? 1 : 9, TvkErrorSuccess;
        break;
    case TvkPixelLayoutRGBA:
        if (bits == 32) return aFormat = 4, TvkErrorSuccess;
        break;
    case TvkPixelLayoutBGRA:
        if (bits == 32) return aFormat = 2, TvkErrorSuccess;
        break;
    case TvkPixelLayoutYUV422:
        return aFormat = 6, TvkErrorSuccess;
    default:
        break;
    }
    return TvkErrorBadParameter;
}

} // namespace img
