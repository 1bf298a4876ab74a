// What one producer's actors share: the producer, the helper that owns their
// threads, and the global. The Supervisor's aggregate has no producer.
#pragma once

#include "engine/Helper.h"

namespace tvk {

// Transport kinds, as the public interface types.
enum tInterface : llk::u4 {
    kInterfaceUnknown = 0,
    kInterfaceFirewire = 1,
    kInterfaceEthernet = 2,
    kInterfaceUsb = 3
};

class cAggregate : public llk::pObject {
public:
    // The Supervisor's aggregate, without a producer.
    static cAggregate* New(cGlobal* aGlobal) { return Make<cAggregate>(aGlobal); }
    // One producer's: null when the producer does not load or its transport
    // layer type is not one of "GEV", "IIDC", "USB3".
    static cAggregate* New(const char* aPath, cGlobal* aGlobal) {
        return Make<cAggregate>(aPath, aGlobal);
    }

    llk::i4 Initialize(cGlobal* aGlobal);
    llk::i4 Initialize(const char* aPath, cGlobal* aGlobal);
    ~cAggregate() override;

    cProducer* Producer() const { return mProducer; }
    cHelper* Helper() const { return mHelper; }
    cGlobal* Global() const { return mGlobal; }
    tInterface Type() const { return mType; }

private:
    cProducer* mProducer = nullptr;
    cHelper* mHelper = nullptr;
    cGlobal* mGlobal = nullptr; // not owned
    tInterface mType = kInterfaceUnknown;
};

} // namespace tvk
