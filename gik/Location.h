// gik::tLocation: where a register or a raw block lies in its port's space.
#pragma once

#include "gik/Reference.h"

namespace gik {

// "Address"/"pAddress" (0 when absent), plus an optional "Index"/"pIndex"
// times the "Offset" attribute of the index element.
struct tLocation {
    tValue address;
    tValue index;
    u4 multiplier = 1;
    cValue* computed = nullptr; // the last computed address, reused by every transfer

    tLocation() = default;
    ~tLocation();
    tLocation(const tLocation&) = delete;
    tLocation& operator=(const tLocation&) = delete;

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement);
    // Makes the owner follow changes of the address and index nodes.
    i4 Resolve(pNode* aOwner, cRuntime* aRuntime);
    void SetImplemented(bool aImplemented) const;
    bool HasNodes() const { return address.Node() || index.Node(); }
    // address + index x multiplier, 64-bit, wrapping; also kept in computed.
    i4 Compute(pNode* aOwner, cRuntime* aRuntime, u8& aAddress);
};

} // namespace gik
