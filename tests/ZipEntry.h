// The document inside a ZIP archive of the shared test data, for the tests
// that read real devices' documents.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace test {

// The first entry of a ZIP archive that is not "__MACOSX/" junk, stored or
// deflated; empty when there is none. The local headers suffice: a raw
// inflate finds the end of its stream itself.
inline std::string FirstZipEntry(const std::string& aPath) {
    FILE* file = fopen(aPath.c_str(), "rb");
    if (!file) return std::string();
    std::string zip;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof(buffer), file)) > 0)
        zip.append(buffer, n);
    fclose(file);
    auto u16 = [&](size_t at) {
        return unsigned(uint8_t(zip[at])) | unsigned(uint8_t(zip[at + 1])) << 8;
    };
    for (size_t at = 0; at + 30 <= zip.size() && u16(at) == 0x4b50 && u16(at + 2) == 0x0403;) {
        unsigned method = u16(at + 8), nameLength = u16(at + 26), extraLength = u16(at + 28);
        size_t packed = u16(at + 18) | size_t(u16(at + 20)) << 16;
        std::string name = zip.substr(at + 30, nameLength);
        size_t data = at + 30 + nameLength + extraLength;
        if (name.rfind("__MACOSX/", 0) == 0 || method != 8) {
            if (method == 0 && name.rfind("__MACOSX/", 0) != 0) return zip.substr(data, packed);
            at = data + packed;
            continue;
        }
        z_stream z{};
        if (inflateInit2(&z, -MAX_WBITS) != Z_OK) return std::string();
        z.next_in = reinterpret_cast<Bytef*>(&zip[data]);
        z.avail_in = static_cast<uInt>(zip.size() - data);
        std::string text;
        int status = Z_OK;
        while (status == Z_OK) {
            char out[16384];
            z.next_out = reinterpret_cast<Bytef*>(out);
            z.avail_out = sizeof(out);
            status = inflate(&z, Z_NO_FLUSH);
            text.append(out, sizeof(out) - z.avail_out);
        }
        inflateEnd(&z);
        return status == Z_STREAM_END ? text : std::string();
    }
    return std::string();
}

} // namespace test
