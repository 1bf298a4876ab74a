// Objects that run only as events delivered by a scheduler.
#pragma once

#include "kit/Object.h"

namespace llk {

// The identity of an event: who, which kind, and a context word.
struct tActiveCode {
    u4 aUid;
    u4 aTag;
    u4 aCtx;
};

constexpr tActiveCode MakeActiveCode(u4 aUid, u4 aTag, u4 aCtx) {
    return {aUid, aTag, aCtx};
}

class pActiveObject : public pObject {
public:
    // Runs one event; never entered by two threads at once.
    virtual void OnExecute(const tActiveCode& aCode, pObject* aData) = 0;
};

} // namespace llk
