// gik::pValueNode: what the value nodes share: a Value
// reference to a target, usually a register, to which they forward the cache
// questions, the raw target, implementation and access.
#pragma once

#include "gik/Node.h"

namespace gik {

class pValueNode : public pNode {
public:
    const char* ClassName() const override { return "pValueNode"; }

    bool IsNoCache(cRuntime* aRuntime) override;
    bool IsWriteAround(cRuntime* aRuntime) override;
    pNode* Target(cRuntime* aRuntime) override;
    // Also needs a writeable target, so that a read-only port closes every
    // node over it.
    bool IsWriteable(cRuntime* aRuntime) override;
    void SetImplemented(bool aImplemented) override;
    bool HasInvalidators(cRuntime* aRuntime) override;
    // Never more open than the target.
    u4 ComputeAccess() override;

    tValue& ValueReference() { return mValue; }

protected:
    tValue mValue;
};

} // namespace gik
