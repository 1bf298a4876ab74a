// Compressed device documents under libFuzzer: any bytes as the image a
// camera serves. The scan accepts only an entry that lies inside the image,
// and inflating never writes past the size the header gives.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "engine/ZipDocument.h"

namespace {
// Documents of real cameras stay far below this; the engine refuses larger.
constexpr uint32_t kLargest = 1u << 20;
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* aData, size_t aSize) {
    if (aSize > 0xFFFFFFFFu) return 0;
    tvk::tZIPStream stream{};
    const auto length = static_cast<llk::u4>(aSize);
    if (tvk::ZIPScanBuffer(aData, length, stream) != 0) return 0;
    if (static_cast<uint64_t>(stream.offset) + stream.packedSize > length) abort();
    if (stream.unpackedSize > kLargest) return 0;
    // One guard byte past the entry catches an overrun the sanitizer cannot
    // see inside one allocation.
    std::vector<llk::u1> text(stream.unpackedSize + 1u, 0xA5);
    tvk::ZIPPuffBuffer(aData, stream, text.data());
    if (text[stream.unpackedSize] != 0xA5) abort();
    return 0;
}
