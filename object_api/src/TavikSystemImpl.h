// What the system singleton keeps: the known cameras and interfaces, their
// list observers, the camera factory and the log.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "TavikCPP/Camera.h"
#include "TavikCPP/ConditionHelper.h"
#include "TavikCPP/ICameraFactory.h"
#include "TavikCPP/ICameraListObserver.h"
#include "TavikCPP/IInterfaceListObserver.h"
#include "TavikCPP/Interface.h"
#include "TavikCPP/TavikSystem.h"

namespace QRX::TvkAPI {

class [[gnu::visibility("hidden")]] TavikSystem::Impl {
public:
    Impl();

    // The camera list. Callers hold the write side of the camera gate.
    TvkErrorType UpdateCameraList();
    TvkErrorType FindCamera(const char* pID, CameraPtr& rCamera);
    void AppendCamToMap(const TvkCameraInfo_t& rInfo);
    // Asks for one discovery round when discovery does not run by itself.
    TvkErrorType PingGeV();
    // Runs a GigE Vision discovery command, when such a transport is there,
    // and notes whether discovery now runs by itself.
    TvkErrorType SwitchGeVDiscovery(const char* aCommand, bool aAuto);
    TvkErrorType GetCameraByID(const char* pID, CameraPtr& rCamera);

    // The interface list. Callers hold the write side of the interface gate.
    TvkErrorType UpdateInterfaceList();
    TvkErrorType GetInterfaceByID(const char* pID, InterfacePtr& rInterface);

    // The factory in force, never null.
    ICameraFactoryPtr Factory() const;
    void SetFactory(const ICameraFactoryPtr& pFactory);

    // The flat notifications of discovery, with this object as context.
    static void CameraDiscoveryCallback(const TvkHandle_t handle, const char* name, void* context);
    static void InterfaceDiscoveryCallback(const TvkHandle_t handle, const char* name,
                                           void* context);
    void OnCameraDiscovery();
    void OnInterfaceDiscovery();

    LockableMap<std::string, CameraPtr> m_cameras;
    ConditionHelper m_camerasConditionHelper;
    LockableMap<std::string, InterfacePtr> m_interfaces;
    ConditionHelper m_interfacesConditionHelper;
    LockableVector<ICameraListObserverPtr> m_cameraObservers;
    ConditionHelper m_cameraObserversConditionHelper;
    LockableVector<IInterfaceListObserverPtr> m_interfaceObservers;
    ConditionHelper m_interfaceObserversConditionHelper;
    std::atomic<bool> m_bGeVDiscoveryAutoOn{false};
    std::atomic<bool> m_bGeVTLPresent{false};
    // Started and not shut down: library threads may still call in.
    std::atomic<bool> m_bStarted{false};
    FileLogger* m_pLogger = nullptr;

private:
    ICameraFactoryPtr m_pCameraFactory;
    MutexPtr m_pFactoryMutex;
};

// Fetches the interface records in two steps.
TvkErrorType GetInterfaceList(std::vector<TvkInterfaceInfo_t>& rList);

} // namespace QRX::TvkAPI
