#include "gik/RegisterNode.h"

#include <cstring>
#include <tinyxml.h>

#include "gik/Nesting.h"
#include "gik/Notification.h"
#include "gik/PortNode.h"
#include "gik/Runtime.h"
#include "gik/Text.h"
#include "gik/Value.h"

namespace gik {

pRegisterNode::~pRegisterNode() {
    llk::ReleaseAndClear(mCache);
}

i4 pRegisterNode::Parse(cRuntime* aRuntime, const TiXmlElement* aElement) {
    i4 status = pNode::Parse(aRuntime, aElement);
    if (status != kOk) return status;
    if ((status = mLocation.Parse(aRuntime, aElement)) != kOk) return status;
    if (!aElement) return kOk;
    const tReading& reading = aRuntime->Reading();
    const TiXmlElement* length = sText::Child(aElement, "Length");
    const char* lengthNode = sText::ChildText(aElement, "pLength");
    if (lengthNode && reading.Has(tReading::kLengthNodes)) {
        if ((status = mLengthNode.SetName(aRuntime, lengthNode)) != kOk) return status;
    } else {
        if (!length) return kUnacceptable;
        i8 n = 0;
        if (!sText::ReadInteger(length->GetText(), n) || n < 0 || n > kMaxLength) return kBadNumber;
        mLength = static_cast<u4>(n);
    }
    if (const char* port = sText::ChildText(aElement, "pPort")) {
        if ((status = mPort.SetName(aRuntime, port)) != kOk) return status;
    } else if (!reading.Has(tReading::kPortlessRegisters)) {
        return kUnacceptable;
    }
    const char* endianess = sText::ChildText(aElement, "Endianess");
    mLittleEndian = endianess && strcmp(endianess, "LittleEndian") == 0;
    return kOk;
}

i4 pRegisterNode::Resolve(cRuntime* aRuntime) {
    i4 status = pNode::Resolve(aRuntime);
    if (status == kOk) status = mLocation.Resolve(this, aRuntime);
    if (status == kOk) status = mLengthNode.Resolve(this, aRuntime, true);
    // The port is resolved but is no dependency edge: a write to one
    // register must not invalidate every register of its port.
    if (status == kOk) status = mPort.Resolve(this, aRuntime, false);
    return status;
}

void pRegisterNode::SetImplemented(bool aImplemented) {
    PropagateImplemented([&] {
        mLocation.SetImplemented(aImplemented);
        if (pNode* n = mLengthNode.Node()) n->SetImplemented(aImplemented);
    });
    SetImplementedBase(aImplemented);
    if (mLocation.HasNodes()) mLatch = true;
}

cPortNode* pRegisterNode::PortNode() const {
    return dynamic_cast<cPortNode*>(mPort.Node());
}

bool pRegisterNode::IsWriteable(cRuntime* aRuntime) {
    if (!pNode::IsWriteable(aRuntime)) return false;
    cPortNode* port = PortNode();
    if (!port) return false;
    uNest nest;
    return nest && port->IsWriteable(aRuntime);
}

u4 pRegisterNode::Length(cRuntime* aRuntime) {
    u4 length = 0;
    return CurrentLength(aRuntime, length) == kOk ? length : 0;
}

i4 pRegisterNode::CurrentLength(cRuntime* aRuntime, u4& aLength) {
    if (!mLengthNode.IsNamed()) {
        aLength = mLength;
        return kOk;
    }
    cValue value;
    i4 status = mLengthNode.Get(this, aRuntime, value);
    if (status != kOk) return status;
    if (value.IsAbsent()) return kNoValue;
    i8 n = value.Sint();
    if (n < 0 || n > static_cast<i8>(tReading::kMaxNodeLength)) return kBadNumber;
    aLength = static_cast<u4>(n);
    return kOk;
}

i4 pRegisterNode::ComputeAddress(cRuntime* aRuntime, u8& aAddress) {
    u4 length = 0;
    if (mLocation.NeedsLength()) {
        i4 status = CurrentLength(aRuntime, length);
        if (status != kOk) return status;
    }
    return mLocation.Compute(this, aRuntime, length, aAddress);
}

cValue* pRegisterNode::CacheObject() {
    if (!mCache) mCache = new (std::nothrow) cValue();
    return mCache;
}

u8 pRegisterNode::Decode(const u1* aBytes, u4 aLength) const {
    u8 v = 0;
    if (mLittleEndian) {
        for (u4 i = aLength; i-- > 0;)
            v = (v << 8) | aBytes[i];
    } else {
        for (u4 i = 0; i < aLength; ++i)
            v = (v << 8) | aBytes[i];
    }
    return v;
}

void pRegisterNode::Encode(u8 aValue, u1* aBytes, u4 aLength) const {
    for (u4 i = 0; i < aLength; ++i) {
        u1 byte = static_cast<u1>(aValue >> (8 * i));
        aBytes[mLittleEndian ? i : aLength - 1 - i] = byte;
    }
}

i4 pRegisterNode::Fetch(cRuntime* aRuntime, u4 aLength, void* aBuffer, u4& aFetched) {
    aFetched = 0;
    u8 address = 0;
    i4 status = ComputeAddress(aRuntime, address);
    if (status != kOk) return status;
    cPortNode* port = PortNode();
    if (!port) return kNothing;
    return port->Fetch(aRuntime, address, aLength, aBuffer, aFetched);
}

i4 pRegisterNode::Store(cRuntime* aRuntime, u4 aLength, const void* aBuffer, u4& aStored) {
    return StoreFrom(aRuntime, aLength, aBuffer, aStored, nullptr);
}

i4 pRegisterNode::StoreFrom(cRuntime* aRuntime, u4 aLength, const void* aBuffer, u4& aStored,
                            pNode* aOriginator) {
    aStored = 0;
    u8 address = 0;
    i4 status = ComputeAddress(aRuntime, address);
    if (status != kOk) return status;
    cPortNode* port = PortNode();
    if (!port) return kNothing;
    if ((status = port->Store(aRuntime, address, aLength, aBuffer, aStored)) != kOk) return status;
    aRuntime->Propagate(cNotification::kValueChanged, nullptr, aOriginator, this);
    aRuntime->Broadcast(kBroadcastMask, cNotification::kMemoryChanged, mLocation.computed, this);
    return kOk;
}

void pRegisterNode::OnInvalidate(cRuntime*, cNotification* aNotification) {
    if (aNotification && aNotification->Type() == cNotification::kValueChanged) DropCache();
}

void pRegisterNode::OnBroadcast(cRuntime* aRuntime, cNotification* aNotification) {
    if (!aNotification || aNotification->Type() != cNotification::kMemoryChanged) return;
    llk::pObject* value = aNotification->Value();
    if (!mCached || !value || value->ClassCode() != cValue::kClassTag) return;
    u8 address = 0;
    if (ComputeAddress(aRuntime, address) != kOk) return;
    if (address != static_cast<cValue*>(value)->Uint()) return;
    DropCache();
    aRuntime->Propagate(cNotification::kValueChanged, nullptr, nullptr, this);
}

} // namespace gik
