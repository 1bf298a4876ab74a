// The engine's ports: onto a producer's port handle, or onto a delegate in
// this process (chunk data, and the engine's own register maps).
#pragma once

#include "engine/Producer.h"
#include "gik/Port.h"
#include "kit/Registery.h"

namespace tvk {

class pPort : public gik::pPort {};

// A GenTL port. One timeout closes it for good: every later access fails at
// once without touching the device.
class cDirectPort : public pPort {
public:
    static cDirectPort* New(cProducer* aProducer, gc::PORT_HANDLE aHandle, bool aReadOnly) {
        return Make<cDirectPort>(aProducer, aHandle, aReadOnly);
    }
    llk::i4 Initialize(cProducer* aProducer, gc::PORT_HANDLE aHandle, bool aReadOnly);
    ~cDirectPort() override;

    bool IsWriteable() override { return !mReadOnly; }
    llk::i4 Fetch(llk::u8 aAddress, llk::u4 aLength, void* aBuffer, llk::u4& aFetched) override;
    llk::i4 Store(llk::u8 aAddress, llk::u4 aLength, const void* aBuffer,
                  llk::u4& aStored) override;
    // Stacked 32-bit registers; words travel in network byte order on the port.
    llk::i4 Fetch(const llk::u8* aAddresses, llk::u8* aData, llk::u4 aCount, llk::u4& aFetched);
    llk::i4 Store(const llk::u8* aAddresses, llk::u8* aData, llk::u4 aCount, llk::u4& aStored);
    llk::i4 QueryXML(void* aBuffer, llk::u4 aSize, llk::u4& aLength, llk::u4 aInfo,
                     llk::u4 aIndex) override;
    llk::i4 FetchXML(void* aBuffer, llk::u4 aSize, llk::u4& aLength, llk::u4 aIndex) override;
    bool IsDead() const { return mDead; }

private:
    llk::i4 Stacked(const llk::u8* aAddresses, llk::u8* aData, llk::u4 aCount, llk::u4& aDone,
                    bool aWrite);

    bool mReadOnly = false;
    gc::PORT_HANDLE mHandle = nullptr;
    cProducer* mProducer = nullptr;
    bool mDead = false;
};

// What answers a chunk or pseudo port.
class pPortDelegate {
public:
    virtual ~pPortDelegate() = default;
    virtual llk::i4 OnPortQueryXML(llk::u4 aUid, void* aBuffer, llk::u4 aSize, llk::u4& aLength,
                                   llk::u4 aInfo, llk::u4 aIndex) = 0;
    virtual llk::i4 OnPortFetchXML(llk::u4 aUid, void* aBuffer, llk::u4 aSize, llk::u4& aLength,
                                   llk::u4 aIndex) = 0;
    virtual llk::i4 OnPortFetch(llk::u4 aUid, llk::u8 aAddress, llk::u4 aLength, void* aBuffer,
                                llk::u4& aFetched) = 0;
    virtual llk::i4 OnPortStore(llk::u4 aUid, llk::u8 aAddress, llk::u4 aLength,
                                const void* aBuffer, llk::u4& aStored) = 0;
};

// A port that hands every call to its delegate with its uid.
class cDelegatePort : public pPort {
public:
    llk::i4 Initialize(llk::u4 aUid, pPortDelegate* aDelegate, bool aReadOnly);
    bool IsWriteable() override { return !mReadOnly; }
    llk::i4 Fetch(llk::u8 aAddress, llk::u4 aLength, void* aBuffer, llk::u4& aFetched) override;
    llk::i4 Store(llk::u8 aAddress, llk::u4 aLength, const void* aBuffer,
                  llk::u4& aStored) override;
    llk::i4 QueryXML(void* aBuffer, llk::u4 aSize, llk::u4& aLength, llk::u4 aInfo,
                     llk::u4 aIndex) override;
    llk::i4 FetchXML(void* aBuffer, llk::u4 aSize, llk::u4& aLength, llk::u4 aIndex) override;

private:
    bool mReadOnly = false;
    llk::u4 mUid = 0;
    pPortDelegate* mDelegate = nullptr;
};

// A frame's chunk data.
class cChunkPort : public cDelegatePort {
public:
    using pDelegate = pPortDelegate;
    static cChunkPort* New(llk::u4 aUid, pDelegate* aDelegate, bool aReadOnly) {
        return Make<cChunkPort>(aUid, aDelegate, aReadOnly);
    }
};

// What answers a pseudo port from a register map: an address the map does
// not hold is no access, and there is no document of its own.
class pRegisterMapDelegate : public pPortDelegate {
public:
    llk::i4 OnPortQueryXML(llk::u4 aUid, void* aBuffer, llk::u4 aSize, llk::u4& aLength,
                           llk::u4 aInfo, llk::u4 aIndex) override;
    llk::i4 OnPortFetchXML(llk::u4 aUid, void* aBuffer, llk::u4 aSize, llk::u4& aLength,
                           llk::u4 aIndex) override;
    // By the low 32 bits of the address.
    llk::i4 OnPortFetch(llk::u4 aUid, llk::u8 aAddress, llk::u4 aLength, void* aBuffer,
                        llk::u4& aFetched) override;
    llk::i4 OnPortStore(llk::u4 aUid, llk::u8 aAddress, llk::u4 aLength, const void* aBuffer,
                        llk::u4& aStored) override;

protected:
    virtual llk::cRegistery* RegisterMap() const = 0;
};

// The engine's own register maps behind its built-in documents.
class cPseudoPort : public cDelegatePort {
public:
    using pDelegate = pRegisterMapDelegate;
    static cPseudoPort* New(llk::u4 aUid, pPortDelegate* aDelegate, bool aReadOnly) {
        return Make<cPseudoPort>(aUid, aDelegate, aReadOnly);
    }
};

} // namespace tvk
