#include "kit/StringCache.h"

namespace llk {

i4 cStringCache::Initialize() {
    mStrings = Retained(cObjectMap::New(128, 0.0f, false));
    return mStrings ? kOk : kNoMemory;
}

cStringCache::~cStringCache() {
    ReleaseAndClear(mStrings);
}

cString* cStringCache::Store(const char* aText) {
    if (!aText) return nullptr;
    if (cString* cached = Fetch(aText)) return cached;
    cString* copy = cString::New(aText, false);
    if (!copy || mStrings->Store(copy) != kOk) return nullptr;
    return copy;
}

cString* cStringCache::Fetch(const char* aText) const {
    return static_cast<cString*>(mStrings->Fetch(aText));
}

} // namespace llk
