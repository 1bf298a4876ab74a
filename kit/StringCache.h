// One shared string per text: interned names that stay valid while the
// cache lives.
#pragma once

#include "kit/ObjectMap.h"

namespace llk {

class cStringCache : public pObject {
public:
    static cStringCache* New() { return Make<cStringCache>(); }
    i4 Initialize() override;
    ~cStringCache() override;
    u4 ClassCode() const override { return 35; }
    const char* ClassName() const override { return "cStringCache"; }

    // The shared string for aText: the cached one or a new copy. Null on failure.
    cString* Store(const char* aText);
    cString* Fetch(const char* aText) const;
    u4 Count() const { return mStrings->Count(); }

private:
    cObjectMap* mStrings = nullptr;
};

} // namespace llk
