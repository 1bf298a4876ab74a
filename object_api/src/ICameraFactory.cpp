#include "TavikCPP/ICameraFactory.h"

#include "TavikCPP/Camera.h"

namespace QRX::TvkAPI {

ICameraFactory::~ICameraFactory() = default;

CameraPtr DefaultCameraFactory::CreateCamera(const char* pCameraID, const char* pCameraName,
                                             const char* pCameraModel,
                                             const char* pCameraSerialNumber,
                                             const char* pInterfaceID,
                                             TvkInterfaceType interfaceType, const char*,
                                             const char*, TvkAccessModeType) {
    return CameraPtr(new Camera(pCameraID, pCameraName, pCameraModel, pCameraSerialNumber,
                                pInterfaceID, interfaceType));
}

} // namespace QRX::TvkAPI
