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
    u4 length = 0;
    i4 status = CurrentLength(aRuntime, length);
    if (status != kOk) return status;
    auto* text = new (std::nothrow) llk::cString();
    if (!text) return kNoMemory;
    if (text->Initialize(length) != llk::kOk) {
        text->Release();
        return kNoMemory;
    }
    // The buffer holds the length plus a terminator, zero-filled.
    u4 done = 0;
    status = Fetch(aRuntime, length, const_cast<char*>(text->Chars()), done);
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
    u4 room = 0;
    i4 status = CurrentLength(aRuntime, room);
    if (status != kOk) return status;
    size_t length = strlen(text);
    // The terminator is written too, unless (in the wide reading) the text
    // fills the whole register.
    size_t written = length + 1;
    if (length == room && aRuntime->Reading().Has(tReading::kFullStrings)) written = length;
    if (written > room) return kTooLong;
    u4 done = 0;
    status = StoreFrom(aRuntime, static_cast<u4>(written), text, done, aOriginator);
    if (status != kOk) return status;
    cValue* cache = CacheObject();
    if (!cache || !cache->SetText(aValue->String())) return kNoMemory;
    mCached = true;
    if (IsWriteAround(aRuntime)) DropCache();
    return kOk;
}

} // namespace gik
