// Network byte order, as GigE Vision puts its registers, event blocks and chunk tags.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sim {

// The low aWidth bytes of aValue, most significant first.
inline void StoreBigEndian(uint8_t* aAt, uint64_t aValue, size_t aWidth) {
    for (size_t i = 0; i < aWidth; ++i)
        aAt[i] = static_cast<uint8_t>(aValue >> (8 * (aWidth - 1 - i)));
}

inline uint64_t LoadBigEndian(const uint8_t* aAt, size_t aWidth) {
    uint64_t value = 0;
    for (size_t i = 0; i < aWidth; ++i)
        value = value << 8 | aAt[i];
    return value;
}

} // namespace sim
