#include "gik/PortNode.h"

#include "gik/Notification.h"
#include "gik/Port.h"
#include "gik/Runtime.h"

namespace gik {

cPortNode::~cPortNode() {
    llk::ReleaseAndClear(mPort);
}

void cPortNode::SetPort(pPort* aPort) {
    llk::Assign(mPort, aPort);
}

i4 cPortNode::Resolve(cRuntime* aRuntime) {
    i4 status = pNode::Resolve(aRuntime);
    if (status != kOk) return status;
    // A port the owner did not attach leaves the node without one: its
    // registers fail at transfer time, the document still loads.
    SetPort(aRuntime->Port(NameText()));
    return kOk;
}

bool cPortNode::IsWriteable(cRuntime* aRuntime) {
    return pNode::IsWriteable(aRuntime) && mPort && mPort->IsWriteable();
}

i4 cPortNode::Fetch(cRuntime* aRuntime, u8 aAddress, u4 aLength, void* aBuffer, u4& aFetched) {
    aFetched = 0;
    if (!IsReadable(aRuntime)) return kAccessDenied;
    if (!mPort) return kNothing;
    return mPort->Fetch(aAddress, aLength, aBuffer, aFetched);
}

i4 cPortNode::Store(cRuntime* aRuntime, u8 aAddress, u4 aLength, const void* aBuffer, u4& aStored) {
    aStored = 0;
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    if (!mPort) return kNothing;
    i4 status = mPort->Store(aAddress, aLength, aBuffer, aStored);
    if (status == kOk) aRuntime->Propagate(cNotification::kValueChanged, nullptr, nullptr, this);
    return status;
}

} // namespace gik
