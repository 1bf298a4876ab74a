#include "TavikCPP/TavikSystem.h"

#include <algorithm>
#include <new>
#include <utility>

#include "LockGuards.h"
#include "Log.h"
#include "TavikCPP/MutexGuard.h"
#include "TavikSystemImpl.h"
#include "Text.h"

namespace QRX::TvkAPI {

namespace {

constexpr uint32_t kVersionMajor = 1;
constexpr uint32_t kVersionMinor = 3;
constexpr uint32_t kVersionPatch = 0;

// Registration of a list observer: the first one switches the flat
// notification on, and aSwitchOn with it.
template <class Ptr, class SwitchOn>
TvkErrorType RegisterListObserver(LockableVector<Ptr>& rList, ConditionHelper& rGate,
                                  const Ptr& pObserver, const char* aEvent,
                                  TvkInvalidationCallback aCallback, void* aContext,
                                  SwitchOn aSwitchOn, const char* aFunction, const char* aFailure) {
    if (!pObserver) return TvkErrorBadParameter;
    WriteLockGuard writing(rGate, rList, false);
    // A gate that can't be entered is not reported.
    if (!writing) return TvkErrorSuccess;
    auto& observers = rList.Vector;
    if (std::find(observers.begin(), observers.end(), pObserver) != observers.end())
        return TvkErrorInvalidCall;
    try {
        observers.push_back(pObserver);
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    if (observers.size() > 1) return TvkErrorSuccess;
    auto status = static_cast<TvkErrorType>(
        TvkFeatureInvalidationRegister(TVK_SYSTEM_HANDLE, aEvent, aCallback, aContext));
    if (status == TvkErrorSuccess) status = aSwitchOn();
    if (status != TvkErrorSuccess) {
        observers.pop_back();
        LogFailure(aFailure, aFunction);
    }
    return status;
}

// Unregistration: the last one switches the notification off, aSwitchOff
// first; if that fails the notification is switched on again.
template <class Ptr, class SwitchOff>
TvkErrorType
UnregisterListObserver(LockableVector<Ptr>& rList, ConditionHelper& rGate, const Ptr& pObserver,
                       const char* aEvent, TvkInvalidationCallback aCallback, void* aContext,
                       SwitchOff aSwitchOff, const char* aFunction, const char* aFailure) {
    if (!pObserver) return TvkErrorBadParameter;
    WriteLockGuard writing(rGate, rList, true);
    if (!writing) {
        LogFailure(aFailure, aFunction);
        return TvkErrorInternalFault;
    }
    auto& observers = rList.Vector;
    auto found = std::find(observers.begin(), observers.end(), pObserver);
    if (found == observers.end()) return TvkErrorNotFound;
    if (observers.size() == 1) {
        auto status = static_cast<TvkErrorType>(
            TvkFeatureInvalidationUnregister(TVK_SYSTEM_HANDLE, aEvent, aCallback));
        if (status != TvkErrorSuccess) return status;
        status = aSwitchOff();
        if (status != TvkErrorSuccess) {
            TvkFeatureInvalidationRegister(TVK_SYSTEM_HANDLE, aEvent, aCallback, aContext);
            return status;
        }
    }
    observers.erase(found);
    return TvkErrorSuccess;
}

// Empties a gated container for good, unless another holds it.
template <class Container, class Each>
void DrainAtShutdown(Container& rContainer, ConditionHelper& rGate, Each aEach) {
    WriteLockGuard writing(rGate, rContainer, true);
    if (writing) aEach();
}

} // namespace

TavikSystem TavikSystem::s_Instance;

TavikSystem::TavikSystem() : m_pImpl(new Impl()) {
    m_pImpl->m_pLogger = new FileLogger("TavikCPP.log", true);
}

TavikSystem::~TavikSystem() {
    // At exit without Shutdown the library's threads may still call in:
    // leave everything they could reach in place.
    if (m_pImpl->m_bStarted) return;
    delete std::exchange(m_pImpl->m_pLogger, nullptr);
    delete std::exchange(m_pImpl, nullptr);
}

TavikSystem& TavikSystem::GetInstance() {
    return s_Instance;
}

FileLogger* TavikSystem::GetLogger() const {
    return m_pImpl ? m_pImpl->m_pLogger : nullptr;
}

TvkErrorType TavikSystem::QueryVersion(TvkVersionInfo_t& version) const {
    version.major = kVersionMajor;
    version.minor = kVersionMinor;
    version.patch = kVersionPatch;
    return TvkErrorSuccess;
}

TvkErrorType TavikSystem::Startup() {
    const auto status = static_cast<TvkErrorType>(TvkStartup());
    if (status == TvkErrorSuccess) m_pImpl->m_bStarted = true;
    TvkBool_t present = 0;
    TvkFeatureBoolGet(TVK_SYSTEM_HANDLE, "GeVTLIsPresent", &present);
    m_pImpl->m_bGeVTLPresent = present != 0;
    return status;
}

TvkErrorType TavikSystem::Shutdown() {
    Impl& impl = *m_pImpl;
    impl.m_bGeVTLPresent = false;
    impl.m_bGeVDiscoveryAutoOn = false;
    // Observers should have been unregistered by now: the flat notification
    // is left as it is.
    DrainAtShutdown(impl.m_cameraObservers, impl.m_cameraObserversConditionHelper,
                    [&] { impl.m_cameraObservers.Vector.clear(); });
    DrainAtShutdown(impl.m_interfaceObservers, impl.m_interfaceObserversConditionHelper,
                    [&] { impl.m_interfaceObservers.Vector.clear(); });
    DrainAtShutdown(impl.m_cameras, impl.m_camerasConditionHelper, [&] {
        for (auto& entry : impl.m_cameras.Map)
            entry.second->Close();
        impl.m_cameras.Map.clear();
    });
    DrainAtShutdown(impl.m_interfaces, impl.m_interfacesConditionHelper, [&] {
        for (auto& entry : impl.m_interfaces.Map)
            entry.second->Close();
        impl.m_interfaces.Map.clear();
    });
    TvkShutdown();
    impl.m_bStarted = false;
    return TvkErrorSuccess;
}

TvkErrorType TavikSystem::GetInterfaces(InterfacePtr* pInterfaces, uint32_t& size) {
    Impl& impl = *m_pImpl;
    WriteLockGuard writing(impl.m_interfacesConditionHelper, impl.m_interfaces, false);
    if (!writing) return TvkErrorInternalFault;
    const TvkErrorType status = impl.UpdateInterfaceList();
    if (status != TvkErrorSuccess) return status;
    return CopyOut(impl.m_interfaces.Map, pInterfaces, size);
}

TvkErrorType TavikSystem::GetInterfaces(std::vector<InterfacePtr>& interfaces) {
    return FillVector(interfaces, [this](InterfacePtr* pList, uint32_t& rSize) {
        return GetInterfaces(pList, rSize);
    });
}

TvkErrorType TavikSystem::GetInterfaceByID(const char* pID, InterfacePtr& pInterface) {
    return m_pImpl->GetInterfaceByID(pID, pInterface);
}

TvkErrorType TavikSystem::OpenInterfaceByID(const char* pID, InterfacePtr& pInterface) {
    if (!pID) return TvkErrorBadParameter;
    TvkErrorType status = GetInterfaceByID(pID, pInterface);
    if (status != TvkErrorSuccess) return status;
    return pInterface->Open();
}

TvkErrorType TavikSystem::GetCameras(CameraPtr* pCameras, uint32_t& size) {
    Impl& impl = *m_pImpl;
    WriteLockGuard writing(impl.m_camerasConditionHelper, impl.m_cameras, false);
    if (!writing) return TvkErrorInternalFault;
    const TvkErrorType status = impl.UpdateCameraList();
    if (status != TvkErrorSuccess) return status;
    return CopyOut(impl.m_cameras.Map, pCameras, size);
}

TvkErrorType TavikSystem::GetCameras(std::vector<CameraPtr>& cameras) {
    return FillVector(
        cameras, [this](CameraPtr* pList, uint32_t& rSize) { return GetCameras(pList, rSize); });
}

TvkErrorType TavikSystem::GetCameraByID(const char* pID, CameraPtr& pCamera) {
    return m_pImpl->GetCameraByID(pID, pCamera);
}

TvkErrorType TavikSystem::OpenCameraByID(const char* pID, TvkAccessModeType eAccessMode,
                                         CameraPtr& pCamera) {
    if (!pID) return TvkErrorBadParameter;
    TvkErrorType status = GetCameraByID(pID, pCamera);
    if (status != TvkErrorSuccess) return status;
    return pCamera->Open(eAccessMode);
}

CameraPtr TavikSystem::GetCameraPtrByHandle(const void* handle) const {
    Impl& impl = *m_pImpl;
    ReadLockGuard reading(impl.m_camerasConditionHelper, impl.m_cameras);
    if (!reading) {
        LogFailure("Could not lock camera list", "QRX::TvkAPI::TavikSystem::GetCameraPtrByHandle");
        return CameraPtr();
    }
    for (const auto& entry : impl.m_cameras.Map)
        if (entry.second->GetHandle() == handle) return entry.second;
    return CameraPtr();
}

TvkErrorType TavikSystem::RegisterCameraListObserver(const ICameraListObserverPtr& pObserver) {
    Impl& impl = *m_pImpl;
    return RegisterListObserver(
        impl.m_cameraObservers, impl.m_cameraObserversConditionHelper, pObserver,
        "DiscoveryCameraEvent", &Impl::CameraDiscoveryCallback, &impl,
        [&] { return impl.SwitchGeVDiscovery("GeVDiscoveryAllAuto", true); },
        "QRX::TvkAPI::TavikSystem::RegisterCameraListObserver",
        "Could not register camera list observer");
}

TvkErrorType TavikSystem::UnregisterCameraListObserver(const ICameraListObserverPtr& pObserver) {
    Impl& impl = *m_pImpl;
    return UnregisterListObserver(
        impl.m_cameraObservers, impl.m_cameraObserversConditionHelper, pObserver,
        "DiscoveryCameraEvent", &Impl::CameraDiscoveryCallback, &impl,
        [&] { return impl.SwitchGeVDiscovery("GeVDiscoveryAllOff", false); },
        "QRX::TvkAPI::TavikSystem::UnregisterCameraListObserver",
        "Could not lock camera observer list.");
}

TvkErrorType
TavikSystem::RegisterInterfaceListObserver(const IInterfaceListObserverPtr& pObserver) {
    Impl& impl = *m_pImpl;
    return RegisterListObserver(
        impl.m_interfaceObservers, impl.m_interfaceObserversConditionHelper, pObserver,
        "DiscoveryInterfaceEvent", &Impl::InterfaceDiscoveryCallback, &impl,
        [] { return TvkErrorSuccess; }, "QRX::TvkAPI::TavikSystem::RegisterInterfaceListObserver",
        "Could not register interface list observer");
}

TvkErrorType
TavikSystem::UnregisterInterfaceListObserver(const IInterfaceListObserverPtr& pObserver) {
    Impl& impl = *m_pImpl;
    return UnregisterListObserver(
        impl.m_interfaceObservers, impl.m_interfaceObserversConditionHelper, pObserver,
        "DiscoveryInterfaceEvent", &Impl::InterfaceDiscoveryCallback, &impl,
        [] { return TvkErrorSuccess; }, "QRX::TvkAPI::TavikSystem::UnregisterInterfaceListObserver",
        "Could not lock interface observer list.");
}

TvkErrorType TavikSystem::RegisterCameraFactory(const ICameraFactoryPtr& cameraFactory) {
    if (!cameraFactory) return TvkErrorBadParameter;
    m_pImpl->SetFactory(cameraFactory);
    return TvkErrorSuccess;
}

TvkErrorType TavikSystem::UnregisterCameraFactory() {
    try {
        m_pImpl->SetFactory(ICameraFactoryPtr(new DefaultCameraFactory()));
    } catch (const std::bad_alloc&) {
        return TvkErrorInternalFault;
    }
    return TvkErrorSuccess;
}

TavikSystem::Impl::Impl()
    : m_pCameraFactory(new DefaultCameraFactory()), m_pFactoryMutex(new Mutex()) {}

TvkErrorType TavikSystem::Impl::SwitchGeVDiscovery(const char* aCommand, bool aAuto) {
    if (!m_bGeVTLPresent) return TvkErrorSuccess;
    const auto status =
        static_cast<TvkErrorType>(TvkFeatureCommandRun(TVK_SYSTEM_HANDLE, aCommand));
    if (status == TvkErrorSuccess) m_bGeVDiscoveryAutoOn = aAuto;
    return status;
}

ICameraFactoryPtr TavikSystem::Impl::Factory() const {
    MutexGuard guard(m_pFactoryMutex);
    return m_pCameraFactory;
}

void TavikSystem::Impl::SetFactory(const ICameraFactoryPtr& pFactory) {
    MutexGuard guard(m_pFactoryMutex);
    m_pCameraFactory = pFactory;
}

} // namespace QRX::TvkAPI
