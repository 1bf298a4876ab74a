// Decides which class stands for each camera the system finds.
#pragma once

#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT ICameraFactory : public virtual ReferenceCounted {
public:
    virtual CameraPtr CreateCamera(const char* pCameraID, const char* pCameraName,
                                   const char* pCameraModel, const char* pCameraSerialNumber,
                                   const char* pInterfaceID, TvkInterfaceType interfaceType,
                                   const char* pInterfaceName, const char* pInterfaceSerialNumber,
                                   TvkAccessModeType interfacePermittedAccess) = 0;
    ~ICameraFactory() override;
};

// Builds a plain Camera.
class TVKCPP_EXPORT DefaultCameraFactory : public ICameraFactory {
public:
    CameraPtr CreateCamera(const char* pCameraID, const char* pCameraName, const char* pCameraModel,
                           const char* pCameraSerialNumber, const char* pInterfaceID,
                           TvkInterfaceType interfaceType, const char* pInterfaceName,
                           const char* pInterfaceSerialNumber,
                           TvkAccessModeType interfacePermittedAccess) override;
};

} // namespace QRX::TvkAPI
