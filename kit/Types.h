// Fixed-width names used throughout the kit, the kernel and the engine.
#pragma once

#include <cstddef>
#include <cstdint>

namespace llk {

using u1 = uint8_t;
using u2 = uint16_t;
using u4 = uint32_t;
using u8 = uint64_t;
using i1 = int8_t;
using i2 = int16_t;
using i4 = int32_t;
using i8 = int64_t;

// Two inclusive bounds.
struct tRangeWord {
    u4 first;
    u4 last;
};

// A six-byte hardware address.
struct uMAC {
    u1 bytes[6];
};

} // namespace llk
