#include "Zip.h"

#include <zlib.h>

namespace sim {

namespace {
void Put16(std::vector<uint8_t>& aOut, uint32_t aValue) {
    aOut.push_back(static_cast<uint8_t>(aValue));
    aOut.push_back(static_cast<uint8_t>(aValue >> 8));
}
void Put32(std::vector<uint8_t>& aOut, uint32_t aValue) {
    Put16(aOut, aValue & 0xFFFF);
    Put16(aOut, aValue >> 16);
}

std::vector<uint8_t> Deflate(const std::vector<uint8_t>& aData) {
    z_stream stream{};
    // Negative window bits: raw deflate, as ZIP entries hold it.
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    std::vector<uint8_t> out(deflateBound(&stream, aData.size()));
    stream.next_in = const_cast<Bytef*>(aData.data());
    stream.avail_in = static_cast<uInt>(aData.size());
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}
} // namespace

std::vector<uint8_t> ZipOneFile(const std::string& aName, const std::vector<uint8_t>& aData) {
    const std::vector<uint8_t> packed = Deflate(aData);
    const uint32_t crc =
        static_cast<uint32_t>(crc32(0, aData.data(), static_cast<uInt>(aData.size())));
    std::vector<uint8_t> zip;
    auto header = [&](bool aCentral) {
        Put32(zip, aCentral ? 0x02014b50 : 0x04034b50);
        if (aCentral) Put16(zip, 20); // made by
        Put16(zip, 20);               // needed to extract
        Put16(zip, 0);                // flags
        Put16(zip, 8);                // deflate
        Put16(zip, 0);                // time
        Put16(zip, 0x21);             // date
        Put32(zip, crc);
        Put32(zip, static_cast<uint32_t>(packed.size()));
        Put32(zip, static_cast<uint32_t>(aData.size()));
        Put16(zip, static_cast<uint32_t>(aName.size()));
        Put16(zip, 0); // extra
        if (aCentral) {
            Put16(zip, 0); // comment
            Put16(zip, 0); // disk
            Put16(zip, 0); // internal attributes
            Put32(zip, 0); // external attributes
            Put32(zip, 0); // offset of the local header
        }
        zip.insert(zip.end(), aName.begin(), aName.end());
    };
    header(false);
    zip.insert(zip.end(), packed.begin(), packed.end());
    const uint32_t central = static_cast<uint32_t>(zip.size());
    header(true);
    const uint32_t centralSize = static_cast<uint32_t>(zip.size()) - central;
    Put32(zip, 0x06054b50);
    Put16(zip, 0);
    Put16(zip, 0);
    Put16(zip, 1);
    Put16(zip, 1);
    Put32(zip, centralSize);
    Put32(zip, central);
    Put16(zip, 0);
    return zip;
}

} // namespace sim
