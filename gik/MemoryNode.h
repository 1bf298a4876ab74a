// gik::cMemoryNode: a "Register" element, a raw span of the
// address space without a typed value.
#pragma once

#include "gik/Location.h"
#include "gik/Node.h"

namespace gik {

class cPortNode;

class cMemoryNode : public pNode {
public:
    static constexpr u4 kMaxLength = 1u << 24;

    static cMemoryNode* New(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Make<cMemoryNode>(aRuntime, aElement);
    }
    i4 Initialize(cRuntime* aRuntime, const TiXmlElement* aElement) {
        return Parse(aRuntime, aElement);
    }
    u4 ClassCode() const override { return kTagMemory; }
    const char* ClassName() const override { return "cMemoryNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    i4 Resolve(cRuntime* aRuntime) override;
    void SetImplemented(bool aImplemented) override;
    bool IsWriteable(cRuntime* aRuntime) override;
    // Type 2 with a value: tells its own dependents, whatever the address.
    void OnBroadcast(cRuntime* aRuntime, cNotification* aNotification) override;

    // The span's length from "Length" / "pLength"; 0 when unreadable.
    u4 Length(cRuntime* aRuntime);
    // The same with a status; in the wide reading a "pLength" that is
    // negative or above tReading::kMaxNodeLength is kBadNumber.
    i4 CurrentLength(cRuntime* aRuntime, u4& aLength);
    i4 ComputeAddress(cRuntime* aRuntime, u8& aAddress);
    // kAccessDenied unless readable / writeable; in the wide reading also
    // the status of an unacceptable "pLength". A store tells the
    // dependents and broadcasts the address, as a register's does.
    i4 Fetch(cRuntime* aRuntime, u4 aLength, void* aBuffer, u4& aFetched);
    i4 Store(cRuntime* aRuntime, u4 aLength, const void* aBuffer, u4& aStored);

private:
    cPortNode* PortNode() const;
    // The start of a transfer: the length check of the wide reading, then
    // the address.
    i4 Locate(cRuntime* aRuntime, u8& aAddress);

    tLocation mLocation;
    tValue mLength;
    tValue mPort;
};

} // namespace gik
