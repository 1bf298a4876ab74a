// gik::pValueTarget and gik::pValueNode: nodes that stand on a Value target,
// usually a register, and forward to it the cache questions, the raw target,
// implementation and access. The value nodes and the converters are such nodes.
#pragma once

#include "gik/Nesting.h"
#include "gik/Node.h"

namespace gik {

// uNest bounds each forwarding walk, so a cyclic document cannot recurse
// without end.
template <class Base> class pValueTarget : public Base {
public:
    bool IsNoCache(cRuntime* aRuntime) override {
        return Base::IsNoCache(aRuntime) ||
               TargetSays([aRuntime](pNode* aTarget) { return aTarget->IsNoCache(aRuntime); });
    }
    bool IsWriteAround(cRuntime* aRuntime) override {
        return Base::IsWriteAround(aRuntime) ||
               TargetSays([aRuntime](pNode* aTarget) { return aTarget->IsWriteAround(aRuntime); });
    }
    bool HasInvalidators(cRuntime* aRuntime) override {
        return Base::HasInvalidators(aRuntime) || TargetSays([aRuntime](pNode* aTarget) {
                   return aTarget->HasInvalidators(aRuntime);
               });
    }
    // Also needs a writeable target, so that a read-only port closes every
    // node over it.
    bool IsWriteable(cRuntime* aRuntime) override {
        if (!Base::IsWriteable(aRuntime)) return false;
        return !mValue.Node() ||
               TargetSays([aRuntime](pNode* aTarget) { return aTarget->IsWriteable(aRuntime); });
    }
    pNode* Target(cRuntime* aRuntime) override {
        pNode* target = mValue.Node();
        if (!target) return this;
        uNest nest;
        return nest ? target->Target(aRuntime) : this;
    }
    void SetImplemented(bool aImplemented) override {
        this->PropagateImplemented([&] {
            if (pNode* target = mValue.Node()) target->SetImplemented(aImplemented);
        });
        Base::SetImplemented(aImplemented);
    }
    // Never more open than the target.
    u4 ComputeAccess() override {
        u4 own = this->OwnAccess();
        pNode* target = mValue.Node();
        if (!target) return own;
        uNest nest;
        return nest ? own & target->ComputeAccess() : own;
    }

    tValue& ValueReference() { return mValue; }

protected:
    // The target's answer; false without a target or too deep a walk.
    template <class F> bool TargetSays(F aQuestion) {
        pNode* target = mValue.Node();
        if (!target) return false;
        uNest nest;
        return nest && aQuestion(target);
    }

    tValue mValue;
};

class pValueNode : public pValueTarget<pNode> {
public:
    const char* ClassName() const override { return "pValueNode"; }
};

} // namespace gik
