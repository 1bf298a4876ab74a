// gik::pRegisterNode: a value on a span of a device's address
// space, reached through a named port. Here a feature's set finally becomes
// a port write, and here the cache lives: a register keeps its last value and
// serves it until something invalidates it.
#pragma once

#include "gik/Location.h"
#include "gik/Node.h"

namespace gik {

class cPortNode;

class pRegisterNode : public pNode {
public:
    // Lengths above this are refused as unacceptable (104): no register is
    // that long, and a document must not make the kernel allocate at will.
    static constexpr u4 kMaxLength = 1u << 24;
    // Class tags that hear a register's memory broadcast: all but cPortNode.
    static constexpr u4 kBroadcastMask = 0x10000100;

    ~pRegisterNode() override;
    const char* ClassName() const override { return "pRegisterNode"; }

    i4 Parse(cRuntime* aRuntime, const TiXmlElement* aElement) override;
    i4 Resolve(cRuntime* aRuntime) override;
    void SetImplemented(bool aImplemented) override;
    // Also needs the port to be writeable.
    bool IsWriteable(cRuntime* aRuntime) override;
    void OnInvalidate(cRuntime* aRuntime, cNotification* aNotification) override;
    void OnBroadcast(cRuntime* aRuntime, cNotification* aNotification) override;
    // Slot 41: the register's length in bytes; 0 when a "pLength" gives
    // none that is acceptable.
    virtual u4 Length(cRuntime* aRuntime);
    // The length for a transfer: "Length", or the value of "pLength" in the
    // wide reading (kBadNumber when negative or above
    // tReading::kMaxNodeLength).
    i4 CurrentLength(cRuntime* aRuntime, u4& aLength);
    bool HasLengthNode() const { return mLengthNode.IsNamed(); }

    // Raw transfers at the computed address. A successful store tells the
    // dependents (type 1) and broadcasts the address to every other node
    // (type 2).
    i4 Fetch(cRuntime* aRuntime, u4 aLength, void* aBuffer, u4& aFetched);
    i4 Store(cRuntime* aRuntime, u4 aLength, const void* aBuffer, u4& aStored);

    // The address of the register's location (tLocation), also kept as the
    // computed address value.
    i4 ComputeAddress(cRuntime* aRuntime, u8& aAddress);
    bool IsLittleEndian() const { return mLittleEndian; }
    bool HasCache() const { return mCached; }
    void DropCache() { mCached = false; }

protected:
    // Store with the originator that the dependents' walk leaves out.
    i4 StoreFrom(cRuntime* aRuntime, u4 aLength, const void* aBuffer, u4& aStored,
                 pNode* aOriginator);
    cPortNode* PortNode() const;
    // The cache value object, made on first use; null without memory.
    cValue* CacheObject();
    // Numbers in the register's byte order.
    u8 Decode(const u1* aBytes, u4 aLength) const;
    void Encode(u8 aValue, u1* aBytes, u4 aLength) const;

    tLocation mLocation;
    u4 mLength = 0;
    tValue mLengthNode; // "pLength", in the wide reading
    cValue* mCache = nullptr;
    bool mCached = false;
    tValue mPort;
    bool mLittleEndian = false;
};

} // namespace gik
