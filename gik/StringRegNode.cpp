#include "gik/StringRegNode.h"

#include <cstring>

#include "gik/Runtime.h"
#include "gik/Text.h"
#include "gik/Value.h"
#include "kit/Env.h"
#include "kit/String.h"

namespace gik {

i4 cStringRegNode::GetValue(cRuntime* aRuntime, cValue& aValue, pNode*) {
    if (!IsReadable(aRuntime)) return kAccessDenied;
    if (mCached && mCache && !IsNoCache(aRuntime) && aRuntime->IsCacheEnabled())
        return aValue.Assign(*mCache) ? kOk : kFailed;
    auto* text = new (std::nothrow) llk::cString();
    if (!text) return kNoMemory;
    if (text->Initialize(mLength) != llk::kOk) {
        text->Release();
        return kNoMemory;
    }
    // The buffer holds the length plus a terminator, zero-filled.
    u4 done = 0;
    i4 status = Fetch(aRuntime, mLength, const_cast<char*>(text->Chars()), done);
    if (status != kOk) {
        text->Release();
        return status;
    }
    text->Recount(); // the length stops at the first zero byte
    cValue* cache = CacheObject();
    bool set = cache && cache->SetText(text);
    text->Release();
    if (!set) return kNoMemory;
    mCached = true;
    return aValue.Assign(*cache) ? kOk : kFailed;
}

i4 cStringRegNode::SetValue(cRuntime* aRuntime, const cValue* aValue, pNode* aOriginator) {
    const char* text = nullptr;
    if (!aValue || !aValue->Get(text)) return kNoProperty;
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    size_t length = strlen(text);
    if (length + 1 > mLength) return kTooLong;
    u4 done = 0;
    i4 status = StoreFrom(aRuntime, static_cast<u4>(length + 1), text, done, aOriginator);
    if (status != kOk) return status;
    cValue* cache = CacheObject();
    if (!cache || !cache->SetText(aValue->String())) return kNoMemory;
    mCached = true;
    if (IsWriteAround(aRuntime)) DropCache();
    return kOk;
}

} // namespace gik
