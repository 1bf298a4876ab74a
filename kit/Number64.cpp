#include "kit/Number64.h"

#include <cstring>

namespace llk {

void cNumber64::SetDouble(double aValue) {
    u8 bits;
    memcpy(&bits, &aValue, sizeof(bits));
    Set(kDouble, bits);
}

double cNumber64::ValueDouble() const {
    double value;
    memcpy(&value, &mValue, sizeof(value));
    return value;
}

bool cNumber64::GetInt8(i1& aValue) const {
    if (mType != kInt8) return false;
    aValue = static_cast<i1>(mValue);
    return true;
}
bool cNumber64::GetUInt8(u1& aValue) const {
    if (mType != kUInt8) return false;
    aValue = static_cast<u1>(mValue);
    return true;
}
bool cNumber64::GetInt64(i8& aValue) const {
    if (mType != kInt64) return false;
    aValue = static_cast<i8>(mValue);
    return true;
}
bool cNumber64::GetUInt64(u8& aValue) const {
    if (mType != kUInt64) return false;
    aValue = mValue;
    return true;
}
bool cNumber64::GetDouble(double& aValue) const {
    if (mType != kDouble) return false;
    aValue = ValueDouble();
    return true;
}

cNumber64* cNumber64::Copy() const {
    auto* copy = new (std::nothrow) cNumber64();
    if (copy) copy->Set(mType, mValue);
    return copy;
}

cPointer* cPointer::Copy() const {
    auto* copy = new (std::nothrow) cPointer();
    if (copy) copy->mValue = mValue;
    return copy;
}

} // namespace llk
