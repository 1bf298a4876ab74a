#include "gik/FloatRegNode.h"

#include <cfloat>
#include <cstring>

#include "gik/Runtime.h"
#include "gik/Value.h"

namespace gik {

i4 cFloatRegNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = pRegisterNode::Parse(aRuntime, aElement);
    if (status != kOk || !aElement) return status;
    if (mLength != 4 && mLength != 8) return kBadNumber;
    return kOk;
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
    u1 bytes[8] = {};
    u4 done = 0;
    i4 status = Fetch(aRuntime, mLength, bytes, done);
    if (status != kOk) return status;
    u8 raw = Decode(bytes, mLength);
    double v;
    if (mLength == 4) {
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
    double v = aValue->Real();
    u8 raw;
    if (mLength == 4) {
        float f = static_cast<float>(v);
        v = f; // the cache keeps what was written, in single precision
        u4 bits;
        memcpy(&bits, &f, sizeof(bits));
        raw = bits;
    } else {
        memcpy(&raw, &v, sizeof(raw));
    }
    u1 bytes[8] = {};
    Encode(raw, bytes, mLength);
    u4 done = 0;
    i4 status = StoreFrom(aRuntime, mLength, bytes, done, aOriginator);
    if (status != kOk) return status;
    cValue* cache = CacheObject();
    if (!cache || !cache->SetReal(v)) return kNoMemory;
    mCached = true;
    if (IsWriteAround(aRuntime)) DropCache();
    return kOk;
}

} // namespace gik
