// What the Supervisor forwards to: the system of each transport kind (GigE
// Vision, FireWire, USB). The entry layer gives the systems it started;
// tests give doubles.
#pragma once

#include "engine/Aggregate.h"

namespace tvk {

enum tDiscoveryMode : llk::u4 { kDiscoveryOff = 0, kDiscoveryAuto = 1, kDiscoveryOnce = 2 };

// A GigE Vision camera told to take an address.
struct tCommandForceIP {
    llk::u8 mac;
    llk::u8 ip;
    llk::u8 subnetMask;
    llk::u8 gateway;
};

class pSystems : public llk::pObject {
public:
    // The scheduler of the kind's system, or null when the kind has none.
    virtual cHelper* Helper(tInterface aKind) = 0;
    // Forwarded to the kind's system; kNotFound when the kind has none.
    virtual llk::i4 SetDiscoveryMode(tInterface aKind, tDiscoveryMode aMode) = 0;
    virtual llk::i4 SetDiscoveryDuration(tInterface aKind, llk::u8 aDuration) = 0;
    virtual llk::i4 SendForceIP(tInterface aKind, const tCommandForceIP& aCommand) = 0;
};

} // namespace tvk
