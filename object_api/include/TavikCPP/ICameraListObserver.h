// Told when a camera is plugged in, plugged out or changes its open state.
#pragma once

#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT ICameraListObserver : public virtual ReferenceCounted {
public:
    // Runs on a library thread with the observer list held for reading: it
    // may query the system, but must not register or unregister observers.
    virtual void CameraListChanged(CameraPtr pCam, UpdateTriggerType reason) = 0;
    ~ICameraListObserver() override;
};

} // namespace QRX::TvkAPI
