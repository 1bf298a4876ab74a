// An address space as the feature kernel knows it: register nodes read and
// write through a port bound by name.
#pragma once

#include "kit/Object.h"

namespace gik {

using llk::pObject;

class pPort : public pObject {
public:
    // Readies the port before the first access; 0 on success.
    virtual llk::i4 Prepare() { return 0; }
    virtual void Dismiss() {}
    virtual bool IsWriteable() = 0;
    // aFetched / aStored receive the bytes done, also on failure.
    virtual llk::i4 Fetch(llk::u8 aAddress, llk::u4 aLength, void* aBuffer, llk::u4& aFetched) = 0;
    virtual llk::i4 Store(llk::u8 aAddress, llk::u4 aLength, const void* aBuffer,
                          llk::u4& aStored) = 0;
    // Custom URL information: 1001 document address (64-bit), 1002 its size
    // plus one for a terminator (32-bit), 1003 compressed (8-bit).
    virtual llk::i4 QueryXML(void* aBuffer, llk::u4 aSize, llk::u4& aLength, llk::u4 aInfo,
                             llk::u4 aIndex) = 0;
    // The document, terminated; 18 when aSize is too small.
    virtual llk::i4 FetchXML(void* aBuffer, llk::u4 aSize, llk::u4& aLength, llk::u4 aIndex) = 0;
};

} // namespace gik
