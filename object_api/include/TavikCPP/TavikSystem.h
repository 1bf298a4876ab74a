// The one entry object of the object API: it starts and stops the library,
// knows the cameras and interfaces, tells observers when their lists change,
// and owns the log.
#pragma once

#include <cstdint>
#include <vector>

#include "TavikCPP/FileLogger.h"
#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT TavikSystem {
public:
    static TavikSystem& GetInstance();
    TavikSystem(const TavikSystem&) = delete;
    TavikSystem& operator=(const TavikSystem&) = delete;

    // The version of this API, not asked of the library.
    TvkErrorType QueryVersion(TvkVersionInfo_t& version) const;
    TvkErrorType Startup();
    // Closes every known camera and interface and stops the library. Objects
    // kept past this stay valid, closed.
    TvkErrorType Shutdown();

    // Two steps: a null array asks the count.
    TvkErrorType GetInterfaces(InterfacePtr* pInterfaces, uint32_t& size);
    TvkErrorType GetInterfaces(std::vector<InterfacePtr>& interfaces);
    TvkErrorType GetInterfaceByID(const char* pID, InterfacePtr& pInterface);
    TvkErrorType OpenInterfaceByID(const char* pID, InterfacePtr& pInterface);
    TvkErrorType GetCameras(CameraPtr* pCameras, uint32_t& size);
    TvkErrorType GetCameras(std::vector<CameraPtr>& cameras);
    // The identifier may also be another name the camera answers to, such as
    // its serial number or network address.
    TvkErrorType GetCameraByID(const char* pID, CameraPtr& pCamera);
    TvkErrorType OpenCameraByID(const char* pID, TvkAccessModeType eAccessMode, CameraPtr& pCamera);
    // The known camera opened with this handle, or a null pointer.
    CameraPtr GetCameraPtrByHandle(const void* handle) const;

    // One observer can be registered once. Unregister observers before Shutdown.
    TvkErrorType RegisterCameraListObserver(const ICameraListObserverPtr& pObserver);
    TvkErrorType UnregisterCameraListObserver(const ICameraListObserverPtr& pObserver);
    TvkErrorType RegisterInterfaceListObserver(const IInterfaceListObserverPtr& pObserver);
    TvkErrorType UnregisterInterfaceListObserver(const IInterfaceListObserverPtr& pObserver);

    // The factory builds the cameras found from now on.
    TvkErrorType RegisterCameraFactory(const ICameraFactoryPtr& cameraFactory);
    TvkErrorType UnregisterCameraFactory();

    // The log of the object API, "TavikCPP.log" in the temporary directory.
    FileLogger* GetLogger() const;

private:
    TavikSystem();
    ~TavikSystem();

    class Impl;
    Impl* m_pImpl;
    static TavikSystem s_Instance;
};

} // namespace QRX::TvkAPI
