#include "gik/ValueNode.h"

#include "gik/Nesting.h"

namespace gik {

bool pValueNode::IsNoCache(cRuntime* aRuntime) {
    if (pNode::IsNoCache(aRuntime)) return true;
    pNode* target = mValue.Node();
    if (!target) return false;
    uNest nest;
    return nest && target->IsNoCache(aRuntime);
}

bool pValueNode::IsWriteAround(cRuntime* aRuntime) {
    if (pNode::IsWriteAround(aRuntime)) return true;
    pNode* target = mValue.Node();
    if (!target) return false;
    uNest nest;
    return nest && target->IsWriteAround(aRuntime);
}

pNode* pValueNode::Target(cRuntime* aRuntime) {
    pNode* target = mValue.Node();
    if (!target) return this;
    uNest nest;
    if (!nest) return this;
    return target->Target(aRuntime);
}

bool pValueNode::IsWriteable(cRuntime* aRuntime) {
    if (!pNode::IsWriteable(aRuntime)) return false;
    pNode* target = mValue.Node();
    if (!target) return true;
    uNest nest;
    return nest && target->IsWriteable(aRuntime);
}

void pValueNode::SetImplemented(bool aImplemented) {
    if (!mImplementing) {
        uNest nest;
        if (nest) {
            mImplementing = true;
            if (pNode* target = mValue.Node()) target->SetImplemented(aImplemented);
            mImplementing = false;
        }
    }
    SetImplementedBase(aImplemented);
}

bool pValueNode::HasInvalidators(cRuntime* aRuntime) {
    if (pNode::HasInvalidators(aRuntime)) return true;
    pNode* target = mValue.Node();
    if (!target) return false;
    uNest nest;
    return nest && target->HasInvalidators(aRuntime);
}

u4 pValueNode::ComputeAccess() {
    u4 own = OwnAccess();
    pNode* target = mValue.Node();
    if (!target) return own;
    uNest nest;
    if (!nest) return own;
    return own & target->ComputeAccess();
}

} // namespace gik
