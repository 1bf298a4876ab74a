// Network byte order, as GigE Vision puts event blocks and chunk tags.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sim {

// The low aWidth bytes of aValue, most significant first.
inline void StoreBigEndian(uint8_t* aAt, uint64_t aValue, size_t aWidth) {
    for (size_t i = 0; i < aWidth; ++i)
        aAt[i] = static_cast<uint8_t>(aValue >> (8 * (aWidth - 1 - i)));
}

} // namespace sim
