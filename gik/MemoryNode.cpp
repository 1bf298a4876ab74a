#include "gik/MemoryNode.h"

#include <tinyxml.h>

#include "gik/Nesting.h"
#include "gik/Notification.h"
#include "gik/PortNode.h"
#include "gik/RegisterNode.h"
#include "gik/Runtime.h"
#include "gik/Text.h"
#include "gik/Value.h"

namespace gik {

i4 cMemoryNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = pNode::Parse(aRuntime, aElement);
    if (status != kOk) return status;
    if ((status = mLocation.Parse(aRuntime, aElement)) != kOk) return status;
    if (!aElement) return kOk;
    bool found = false;
    if ((status = ParseValue(aRuntime, aElement, "Length", mLength, tValue::kInteger, &found)) !=
        kOk)
        return status;
    if (!found) return kUnacceptable;
    if (cValue* length = mLength.Constant())
        if (length->Sint() < 0 || length->Sint() > kMaxLength) return kBadNumber;
    // Only the length is mandatory: without "pPort" the block answers as a
    // port that is not attached.
    const char* port = sText::ChildText(aElement, "pPort");
    return port ? mPort.SetName(aRuntime, port) : kOk;
}

i4 cMemoryNode::Resolve(cRuntime* aRuntime) {
    i4 status = pNode::Resolve(aRuntime);
    if (status == kOk) status = mLocation.Resolve(this, aRuntime);
    if (status == kOk) status = mLength.Resolve(this, aRuntime, true);
    if (status == kOk) status = mPort.Resolve(this, aRuntime, false);
    return status;
}

void cMemoryNode::SetImplemented(bool aImplemented) {
    PropagateImplemented([&] {
        mLocation.SetImplemented(aImplemented);
        if (pNode* n = mLength.Node()) n->SetImplemented(aImplemented);
    });
    SetImplementedBase(aImplemented);
}

cPortNode* cMemoryNode::PortNode() const {
    return dynamic_cast<cPortNode*>(mPort.Node());
}

bool cMemoryNode::IsWriteable(cRuntime* aRuntime) {
    if (!pNode::IsWriteable(aRuntime)) return false;
    cPortNode* port = PortNode();
    if (!port) return false;
    uNest nest;
    return nest && port->IsWriteable(aRuntime);
}

u4 cMemoryNode::Length(cRuntime* aRuntime) {
    u4 length = 0;
    return CurrentLength(aRuntime, length) == kOk ? length : 0;
}

i4 cMemoryNode::CurrentLength(cRuntime* aRuntime, u4& aLength) {
    cValue length;
    i4 status = mLength.Get(this, aRuntime, length);
    if (status != kOk) return status;
    if (mLength.IsNamed() && aRuntime->Reading().Has(tReading::kLengthNodes)) {
        i8 n = length.Sint();
        if (length.IsAbsent() || n < 0 || n > static_cast<i8>(tReading::kMaxNodeLength))
            return kBadNumber;
        aLength = static_cast<u4>(n);
        return kOk;
    }
    u8 n = length.Uint();
    aLength = n > kMaxLength ? kMaxLength : static_cast<u4>(n);
    return kOk;
}

i4 cMemoryNode::ComputeAddress(cRuntime* aRuntime, u8& aAddress) {
    u4 length = 0;
    if (mLocation.NeedsLength()) {
        i4 status = CurrentLength(aRuntime, length);
        if (status != kOk) return status;
    }
    return mLocation.Compute(this, aRuntime, length, aAddress);
}

i4 cMemoryNode::Locate(cRuntime* aRuntime, u8& aAddress) {
    if (mLength.IsNamed() && aRuntime->Reading().Has(tReading::kLengthNodes)) {
        u4 length = 0;
        i4 status = CurrentLength(aRuntime, length);
        if (status != kOk) return status;
    }
    return ComputeAddress(aRuntime, aAddress);
}

i4 cMemoryNode::Fetch(cRuntime* aRuntime, u4 aLength, void* aBuffer, u4& aFetched) {
    aFetched = 0;
    if (!IsReadable(aRuntime)) return kAccessDenied;
    u8 address = 0;
    i4 status = Locate(aRuntime, address);
    if (status != kOk) return status;
    cPortNode* port = PortNode();
    if (!port) return kNothing;
    return port->Fetch(aRuntime, address, aLength, aBuffer, aFetched);
}

i4 cMemoryNode::Store(cRuntime* aRuntime, u4 aLength, const void* aBuffer, u4& aStored) {
    aStored = 0;
    if (!IsWriteable(aRuntime)) return kAccessDenied;
    u8 address = 0;
    i4 status = Locate(aRuntime, address);
    if (status != kOk) return status;
    cPortNode* port = PortNode();
    if (!port) return kNothing;
    if ((status = port->Store(aRuntime, address, aLength, aBuffer, aStored)) != kOk) return status;
    aRuntime->Propagate(cNotification::kValueChanged, nullptr, nullptr, this);
    aRuntime->Broadcast(pRegisterNode::kBroadcastMask, cNotification::kMemoryChanged,
                        mLocation.computed, this);
    return kOk;
}

void cMemoryNode::OnBroadcast(cRuntime* aRuntime, cNotification* aNotification) {
    if (!aNotification || aNotification->Type() != cNotification::kMemoryChanged ||
        !aNotification->Value())
        return;
    aRuntime->Propagate(cNotification::kValueChanged, nullptr, nullptr, this);
}

} // namespace gik
