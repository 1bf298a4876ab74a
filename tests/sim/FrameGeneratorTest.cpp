// Every format's frames against the pattern, computed pixel by pixel.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "FrameGenerator.h"

namespace {

// The documented pattern: v = x + y + n, reduced to each format.
std::vector<uint8_t> Reference(const sim::tPixelFormat& aFormat, uint32_t aWidth, uint32_t aHeight,
                               uint64_t aFrame) {
    std::vector<uint8_t> out;
    const std::string name = aFormat.name;
    for (uint32_t y = 0; y < aHeight; ++y)
        for (uint32_t x = 0; x < aWidth; ++x) {
            const uint32_t v = static_cast<uint32_t>(x + y + aFrame);
            if (name.find("12Packed") != std::string::npos) {
                if (x % 2) continue;
                const uint32_t p0 = v & 0xFFF, p1 = (v + 1) & 0xFFF;
                out.push_back(static_cast<uint8_t>(p0 >> 4));
                out.push_back(static_cast<uint8_t>((p0 & 0xF) | ((p1 & 0xF) << 4)));
                out.push_back(static_cast<uint8_t>(p1 >> 4));
            } else if (name == "YUV422") {
                if (x % 2) continue;
                out.insert(out.end(),
                           {128, static_cast<uint8_t>(v), 128, static_cast<uint8_t>(v + 1)});
            } else if (aFormat.bitsPerPixel == 16) {
                const uint32_t bits = name == "Mono10" ? 10 : name == "Mono12" ? 12 : 16;
                const uint16_t value = static_cast<uint16_t>(v & ((1u << bits) - 1));
                out.push_back(static_cast<uint8_t>(value));
                out.push_back(static_cast<uint8_t>(value >> 8));
            } else if (aFormat.bitsPerPixel == 8) {
                out.push_back(static_cast<uint8_t>(v));
            } else {
                const uint8_t r = static_cast<uint8_t>(v), g = static_cast<uint8_t>(v + 85),
                              b = static_cast<uint8_t>(v + 170);
                const bool bgr = name[0] == 'B';
                out.insert(out.end(), {bgr ? b : r, g, bgr ? r : b});
                if (aFormat.bitsPerPixel == 32) out.push_back(255);
            }
        }
    memcpy(out.data(), &aFrame, std::min<size_t>(8, out.size()));
    return out;
}

TEST(FrameGeneratorTest, EveryFormatMatchesThePatternAcrossFramesAndWraps) {
    for (const sim::tPixelFormat& format : sim::Formats()) {
        for (uint64_t frame : {1ull, 255ull, 4095ull, 65535ull, 70000ull}) {
            sim::FrameGenerator generator;
            ASSERT_TRUE(generator.Configure(format.code, 34, 5)) << format.name;
            std::vector<uint8_t> image(generator.ImageSize());
            EXPECT_EQ(generator.Fill(image.data(), image.size(), frame), image.size());
            EXPECT_EQ(image, Reference(format, 34, 5, frame)) << format.name << " frame " << frame;
        }
    }
}

TEST(FrameGeneratorTest, RefusesOddWidthsForPairedFormatsAndStopsAtTheBufferEnd) {
    sim::FrameGenerator generator;
    EXPECT_FALSE(generator.Configure(0x010C0006, 33, 4)); // Mono12Packed
    EXPECT_FALSE(generator.Configure(0x0210001F, 33, 4)); // YUV422
    EXPECT_FALSE(generator.Configure(0x12345678, 32, 4));
    ASSERT_TRUE(generator.Configure(0x01080001, 32, 4));
    std::vector<uint8_t> small(50, 0xEE);
    EXPECT_EQ(generator.Fill(small.data(), 40, 3), 40u);
    EXPECT_EQ(small[40], 0xEE);
}

} // namespace
