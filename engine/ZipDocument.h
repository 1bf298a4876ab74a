// Compressed device documents: a ZIP image whose first entry holds the text.
#pragma once

#include "kit/Types.h"

namespace tvk {

struct tZIPStream {
    llk::u4 offset;       // of the compressed data
    llk::u4 packedSize;   // compressed bytes
    llk::u4 unpackedSize; // bytes of the document
};

// Reads the first local file header; 1 when the image is no ZIP or is cut short.
llk::i4 ZIPScanBuffer(const llk::u1* aImage, llk::u4 aLength, tZIPStream& aStream);
// Inflates the entry into aOut, which holds aStream.unpackedSize bytes; 1 on failure.
llk::i4 ZIPPuffBuffer(const llk::u1* aImage, const tZIPStream& aStream, llk::u1* aOut);

} // namespace tvk
