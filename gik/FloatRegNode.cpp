#include "gik/FloatRegNode.h"

#include <cfloat>
#include <cstring>

#include "gik/Runtime.h"
#include "gik/Value.h"

namespace gik {

i4 cFloatRegNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = pRegisterNode::Parse(aRuntime, aElement);
    if (status != kOk || !aElement) return status;
    if (!HasLengthNode() && mLength != 4 && mLength != 8) return kBadNumber;
    return kOk;
}

i4 cFloatRegNode::ValueLength(cRuntime* aRuntime, u4& aLength) {
    i4 status = CurrentLength(aRuntime, aLength);
    return status == kOk && aLength != 4 && aLength != 8 ? kBadNumber : status;
}

i4 cFloatRegNode::GetRange(cRuntime*, cValue& aMinimum, cValue& aMaximum, pNode*) {
    aMinimum.SetReal(-1.7976931348623157e308);
    aMaximum.SetReal(1.7976931348623157e308);
    return kOk;
}

i4 cFloatRegNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode*) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    if (mCached && mCache && !IsNoCache(aRuntime) && aRuntime->IsCacheEnabled())
        return aValue.Assign(*mCache) ? kOk : kFailed;
    u4 length = 0;
    i4 status = ValueLength(aRuntime, length);
    if (status != kOk) return status;
    u1 bytes[8] = {};
    u4 done = 0;
    if ((status = Fetch(aRuntime, length, bytes, done)) != kOk) return status;
    u8 raw = Decode(bytes, length);
    double v;
    if (length == 4) {
        u4 bits = static_cast<u4>(raw);
        float f;
        memcpy(&f, &bits, sizeof(f));
        v = f; // single values are widened
    } else {
        memcpy(&v, &raw, sizeof(v));
    }
    cValue* cache = CacheObject();
    if (!cache || !cache->SetReal(v)) return kNoMemory;
    mCached = true;
    return aValue.Assign(*cache) ? kOk : kFailed;
}

i4 cFloatRegNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    if (!aValue) return kNothing;
    u4 length = 0;
    i4 status = ValueLength(aRuntime, length);
    if (status != kOk) return status;
    double v = aValue->Real();
    u8 raw;
    if (length == 4) {
        float f = static_cast<float>(v);
        v = f; // the cache keeps what was written, in single precision
        u4 bits;
        memcpy(&bits, &f, sizeof(bits));
        raw = bits;
    } else {
        memcpy(&raw, &v, sizeof(raw));
    }
    u1 bytes[8] = {};
    Encode(raw, bytes, length);
    u4 done = 0;
    if ((status = StoreFrom(aRuntime, length, bytes, done, aOriginator)) != kOk) return status;
    cValue* cache = CacheObject();
    if (!cache || !cache->SetReal(v)) return kNoMemory;
    mCached = true;
    if (IsWriteAround(aRuntime)) DropCache();
    return kOk;
}

} // namespace gik
