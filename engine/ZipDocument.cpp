#include "engine/ZipDocument.h"

#include <zlib.h>

#include <cstring>

namespace tvk {

namespace {
constexpr llk::u4 kLocalHeader = 0x04034B50;
constexpr llk::u4 kHeaderSize = 30;
constexpr llk::u4 kMethodStored = 0;

llk::u4 Read16(const llk::u1* aBytes) {
    return aBytes[0] | (aBytes[1] << 8);
}
llk::u4 Read32(const llk::u1* aBytes) {
    return aBytes[0] | (aBytes[1] << 8) | (aBytes[2] << 16) |
           (static_cast<llk::u4>(aBytes[3]) << 24);
}
} // namespace

llk::i4 ZIPScanBuffer(const llk::u1* aImage, llk::u4 aLength, tZIPStream& aStream) {
    if (!aImage || aLength < kHeaderSize || Read32(aImage) != kLocalHeader) return 1;
    const llk::u8 offset = kHeaderSize + Read16(aImage + 26) + Read16(aImage + 28);
    const llk::u4 packed = Read32(aImage + 18);
    // The data must lie inside the image.
    if (offset + packed > aLength) return 1;
    aStream = {static_cast<llk::u4>(offset), packed, Read32(aImage + 22)};
    return 0;
}

llk::i4 ZIPPuffBuffer(const llk::u1* aImage, const tZIPStream& aStream, llk::u1* aOut) {
    // Some tools store a small document rather than deflate it.
    if (Read16(aImage + 8) == kMethodStored) {
        if (aStream.packedSize != aStream.unpackedSize) return 1;
        memcpy(aOut, aImage + aStream.offset, aStream.unpackedSize);
        return 0;
    }
    z_stream stream{};
    // Raw deflate: ZIP entries carry no zlib header.
    if (inflateInit2(&stream, -15) != Z_OK) return 1;
    stream.next_in = const_cast<Bytef*>(aImage + aStream.offset);
    stream.avail_in = aStream.packedSize;
    stream.next_out = aOut;
    stream.avail_out = aStream.unpackedSize;
    int result = inflate(&stream, Z_FINISH);
    bool complete = result == Z_STREAM_END && stream.total_out == aStream.unpackedSize;
    inflateEnd(&stream);
    return complete ? 0 : 1;
}

} // namespace tvk
