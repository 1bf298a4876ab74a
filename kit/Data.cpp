#include "kit/Data.h"

#include <cstring>

#include "kit/Env.h"

namespace llk {

i4 cData::Initialize(u4 aCapacity) {
    mBytes = static_cast<u1*>(sEnv::Malloc(aCapacity, true));
    if (!mBytes) return kNoMemory;
    mCapacity = aCapacity;
    return kOk;
}

i4 cData::Initialize(const void* aBytes, u4 aLength) {
    i4 status = Initialize(aLength);
    if (status != kOk) return status;
    if (aBytes && aLength) memcpy(mBytes, aBytes, aLength);
    mLength = aLength;
    return kOk;
}

cData::~cData() {
    sEnv::Free(mBytes);
}

void cData::Clear() {
    if (mBytes) memset(mBytes, 0, mLength);
    mLength = 0;
}

i4 cData::SetCapacity(u4 aCapacity) {
    auto* bytes = static_cast<u1*>(sEnv::Resize(mBytes, aCapacity, mCapacity));
    if (!bytes) return kNoMemory;
    mBytes = bytes;
    mCapacity = aCapacity;
    if (mLength > aCapacity) mLength = aCapacity;
    return kOk;
}

void cData::SetLength(u4 aLength) {
    mLength = aLength > mCapacity ? mCapacity : aLength;
}

bool cData::Store(const void* aBytes, u4 aLength) {
    if (aLength > mCapacity || (!aBytes && aLength)) return false;
    if (aLength) memcpy(mBytes, aBytes, aLength);
    mLength = aLength;
    return true;
}

bool cData::Read(void* aDest, u4 aLength) const {
    if (aLength > mLength || (!aDest && aLength)) return false;
    if (aLength) memcpy(aDest, mBytes, aLength);
    return true;
}

} // namespace llk
