// Told when an interface comes, goes or changes its open state.
#pragma once

#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT IInterfaceListObserver : public virtual ReferenceCounted {
public:
    // Runs on a library thread with the observer list held for reading: it
    // may query the system, but must not register or unregister observers.
    virtual void InterfaceListChanged(InterfacePtr pInterface, UpdateTriggerType reason) = 0;
    ~IInterfaceListObserver() override;
};

} // namespace QRX::TvkAPI
