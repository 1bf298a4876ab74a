// The number inside a value: a flavour and 64 bits, with the total
// conversions. Shared by gik::cValue and the formula evaluator.
#pragma once

#include <cmath>
#include <cstdint>

#include "gik/Status.h"

namespace llk {
class cString;
}

namespace gik {

enum tFlavour : u4 {
    kFlavourBool = 0,
    kFlavourByte = 1,
    kFlavourSigned = 2,
    kFlavourUnsigned = 3,
    kFlavourReal = 4,
    kFlavourText = 5,
};

// Clamping conversions from double; NaN gives 0.
inline i8 RealToSint(double aValue) {
    if (std::isnan(aValue)) return 0;
    if (aValue >= 9223372036854775808.0) return INT64_MAX;
    if (aValue <= -9223372036854775808.0) return INT64_MIN;
    return static_cast<i8>(aValue);
}
inline u8 RealToUint(double aValue) {
    if (std::isnan(aValue) || aValue <= 0.0) return 0;
    if (aValue >= 18446744073709551616.0) return UINT64_MAX;
    return static_cast<u8>(aValue);
}

struct tScalar {
    u4 flavour = kFlavourSigned;
    bool number = false; // holds a number (flavours 0 to 4)
    union {
        u8 u = 0;
        i8 s;
        double r;
    };
    const llk::cString* text = nullptr; // flavour 5; not owned

    static tScalar Bool(bool aValue) {
        tScalar v;
        v.flavour = kFlavourBool;
        v.number = true;
        v.u = aValue ? 1 : 0;
        return v;
    }
    static tScalar Byte(u1 aValue) {
        tScalar v;
        v.flavour = kFlavourByte;
        v.number = true;
        v.u = aValue;
        return v;
    }
    static tScalar Signed(i8 aValue) {
        tScalar v;
        v.flavour = kFlavourSigned;
        v.number = true;
        v.s = aValue;
        return v;
    }
    static tScalar Unsigned(u8 aValue) {
        tScalar v;
        v.flavour = kFlavourUnsigned;
        v.number = true;
        v.u = aValue;
        return v;
    }
    static tScalar Real(double aValue) {
        tScalar v;
        v.flavour = kFlavourReal;
        v.number = true;
        v.r = aValue;
        return v;
    }

    bool IsReal() const { return number && flavour == kFlavourReal; }

    // The 64 bits of the value for wrapping sums: an integer as it is (a
    // negative one in two's complement), a real truncated as AsSint.
    u8 AsBits() const {
        if (!number) return 0;
        return flavour == kFlavourReal ? static_cast<u8>(RealToSint(r)) : u;
    }

    bool AsBool() const {
        if (!number) return false;
        if (flavour == kFlavourReal) return r != 0.0; // NaN counts as true
        return u != 0;
    }
    u1 AsByte() const {
        if (!number) return 0;
        switch (flavour) {
        case kFlavourBool:
        case kFlavourByte:
            return static_cast<u1>(u);
        case kFlavourSigned:
            return s < 0 ? 0 : (s > 255 ? 255 : static_cast<u1>(s));
        case kFlavourUnsigned:
            return u > 255 ? 255 : static_cast<u1>(u);
        case kFlavourReal: {
            if (std::isnan(r) || r <= 0.0) return 0;
            if (r >= 255.0) return 255;
            return static_cast<u1>(r);
        }
        default:
            return 0;
        }
    }
    i8 AsSint() const {
        if (!number) return 0;
        switch (flavour) {
        case kFlavourBool:
        case kFlavourByte:
        case kFlavourSigned:
            return s;
        case kFlavourUnsigned:
            return u > static_cast<u8>(INT64_MAX) ? INT64_MAX : static_cast<i8>(u);
        case kFlavourReal:
            return RealToSint(r);
        default:
            return 0;
        }
    }
    u8 AsUint() const {
        if (!number) return 0;
        switch (flavour) {
        case kFlavourBool:
        case kFlavourByte:
        case kFlavourUnsigned:
            return u;
        case kFlavourSigned:
            return s < 0 ? 0 : static_cast<u8>(s);
        case kFlavourReal:
            return RealToUint(r);
        default:
            return 0;
        }
    }
    double AsReal() const {
        if (!number) return 0.0;
        switch (flavour) {
        case kFlavourBool:
        case kFlavourByte:
        case kFlavourUnsigned:
            return static_cast<double>(u);
        case kFlavourSigned:
            return static_cast<double>(s);
        case kFlavourReal:
            return r;
        default:
            return 0.0;
        }
    }
};

} // namespace gik
