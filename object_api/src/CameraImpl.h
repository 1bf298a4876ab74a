// What a Camera keeps: its identity, and a handler for each frame the
// capture engine knows.
#pragma once

#include <string>

#include "FrameHandler.h"
#include "TavikCPP/Camera.h"
#include "TavikCPP/ConditionHelper.h"

namespace QRX::TvkAPI {

class [[gnu::visibility("hidden")]] Camera::Impl {
public:
    Impl(const char* pID, const char* pName, const char* pModel, const char* pSerialNumber,
         const char* pInterfaceID, TvkInterfaceType interfaceType);

    // Makes the frame's handler and links it from the frame's record.
    TvkErrorType AppendFrameToVector(const FramePtr& pFrame);

    struct CameraInfo {
        std::string id;
        std::string name;
        std::string model;
        std::string serialNumber;
        std::string interfaceID;
        TvkInterfaceType interfaceType;
    } m_CameraInfo;
    LockableVector<FrameHandlerPtr> m_frameHandlers;
    ConditionHelper m_frameHandlersConditionHelper;
    MutexPtr m_pQueueFrameMutex;
    // Cleared while a continuous acquisition is being stopped; guarded by
    // the mutex above.
    bool m_bAllowQueueFrame = true;
};

} // namespace QRX::TvkAPI
