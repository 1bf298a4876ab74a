// Told of each filled frame of a camera.
#pragma once

#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT IFrameObserver : public virtual ReferenceCounted {
public:
    // Runs on a library thread. The frame is out of the queue: hand it back
    // with Camera::QueueFrame when done. From here an observer may query and
    // queue frames, but must not revoke its frame, flush the queue, or
    // register and unregister observers.
    virtual void FrameReceived(const FramePtr pFrame) = 0;
    ~IFrameObserver() override;

protected:
    explicit IFrameObserver(CameraPtr pCamera);
    CameraPtr m_pCamera;
};

} // namespace QRX::TvkAPI
