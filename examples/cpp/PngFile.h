// Saves an 8-bit RGB image as a PNG file: the rows, each behind a filter
// byte of 0, deflated by zlib, between the header and end chunks.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

inline bool WritePngRgb(const char* aPath, const uint8_t* aPixels, uint32_t aWidth,
                        uint32_t aHeight) {
    auto bigEndian = [](std::string& rOut, uint32_t aValue) {
        for (int shift = 24; shift >= 0; shift -= 8)
            rOut += static_cast<char>(aValue >> shift);
    };
    auto chunk = [&](std::string& rOut, const char* aType, const std::string& aData) {
        bigEndian(rOut, static_cast<uint32_t>(aData.size()));
        const std::string body = aType + aData;
        rOut += body;
        bigEndian(rOut, static_cast<uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(body.data()),
                                                    static_cast<uInt>(body.size()))));
    };
    std::string header;
    bigEndian(header, aWidth);
    bigEndian(header, aHeight);
    header +=
        std::string("\x08\x02\x00\x00\x00", 5); // 8 bits, RGB, deflate, no filter, no interlace

    std::vector<uint8_t> rows;
    const size_t stride = static_cast<size_t>(aWidth) * 3;
    for (uint32_t y = 0; y < aHeight; ++y) {
        rows.push_back(0);
        rows.insert(rows.end(), aPixels + y * stride, aPixels + (y + 1) * stride);
    }
    uLongf packedSize = compressBound(rows.size());
    std::string packed(packedSize, '\0');
    if (compress(reinterpret_cast<Bytef*>(packed.data()), &packedSize, rows.data(), rows.size()) !=
        Z_OK)
        return false;
    packed.resize(packedSize);

    std::string file = "\x89PNG\r\n\x1a\n";
    chunk(file, "IHDR", header);
    chunk(file, "IDAT", packed);
    chunk(file, "IEND", "");
    FILE* out = std::fopen(aPath, "wb");
    if (!out) return false;
    const bool written = std::fwrite(file.data(), 1, file.size(), out) == file.size();
    return std::fclose(out) == 0 && written;
}
