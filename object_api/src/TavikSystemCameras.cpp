// The system's camera list: refreshed from the library, filled through the
// camera factory, and kept up to date by discovery notifications.
#include <algorithm>
#include <cstring>
#include <new>

#include "CallObserver.h"
#include "LockGuards.h"
#include "Log.h"
#include "TavikSystemImpl.h"

namespace QRX::TvkAPI {

namespace {

const char kAppend[] = "QRX::TvkAPI::TavikSystem::Impl::AppendCamToMap";
const char kDiscovery[] = "QRX::TvkAPI::TavikSystem::Impl::CameraDiscoveryCallback";

// The discovery event's values: "Missing", "Detected", then the reachability changes.
UpdateTriggerType ReasonOf(int64_t aEvent) {
    switch (aEvent) {
    case 0:
        return UpdateTriggerPluggedOut;
    case 1:
        return UpdateTriggerPluggedIn;
    default:
        return UpdateTriggerOpenStateChanged;
    }
}

} // namespace

TvkErrorType TavikSystem::Impl::PingGeV() {
    if (!m_bGeVTLPresent || m_bGeVDiscoveryAutoOn) return TvkErrorSuccess;
    return static_cast<TvkErrorType>(
        TvkFeatureCommandRun(TVK_SYSTEM_HANDLE, "GeVDiscoveryAllOnce"));
}

TvkErrorType TavikSystem::Impl::UpdateCameraList() {
    try {
        std::vector<TvkCameraInfo_t> list(10);
        TvkErrorType status = PingGeV();
        if (status != TvkErrorSuccess) return status;
        uint32_t found = 0;
        for (;;) {
            status = static_cast<TvkErrorType>(TvkCamerasList(
                list.data(), static_cast<uint32_t>(list.size()), &found, sizeof(TvkCameraInfo_t)));
            if (status != TvkErrorMoreData) break;
            list.resize(found);
        }
        if (status != TvkErrorSuccess) return status;
        if (found == 0) {
            m_cameras.Map.clear();
            return TvkErrorSuccess;
        }
        if (found < list.size()) list.resize(found);
        std::erase_if(m_cameras.Map, [&](const auto& rEntry) {
            return std::none_of(list.begin(), list.end(), [&](const TvkCameraInfo_t& rInfo) {
                return rInfo.idString && rEntry.first == rInfo.idString;
            });
        });
        for (const TvkCameraInfo_t& info : list) {
            if (info.idString && m_cameras.Map.find(info.idString) == m_cameras.Map.end())
                AppendCamToMap(info);
        }
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    return TvkErrorSuccess;
}

void TavikSystem::Impl::AppendCamToMap(const TvkCameraInfo_t& rInfo) {
    InterfacePtr owner;
    if (GetInterfaceByID(rInfo.interfaceID, owner) != TvkErrorSuccess) {
        LogFailure("Could not get interface", kAppend);
        return;
    }
    std::string interfaceName, interfaceSerial;
    TvkAccessModeType access = TvkAccessModeNone;
    TvkInterfaceType type = TvkInterfaceUnknown;
    if (owner->GetName(interfaceName) != TvkErrorSuccess ||
        owner->GetSerialNumber(interfaceSerial) != TvkErrorSuccess ||
        owner->GetPermittedAccess(access) != TvkErrorSuccess ||
        owner->GetType(type) != TvkErrorSuccess) {
        LogFailure("Could not get interface infos", kAppend);
        return;
    }
    const std::string id = rInfo.idString ? rInfo.idString : "";
    try {
        m_cameras.Map[id] = Factory()->CreateCamera(
            rInfo.idString, rInfo.name, rInfo.model, rInfo.serialNumber, rInfo.interfaceID, type,
            interfaceName.c_str(), interfaceSerial.c_str(), access);
    } catch (...) {
        // A factory of the application's may throw anything: it stops here.
        LogFailure("Could not create camera", kAppend);
    }
    auto entry = m_cameras.Map.find(id);
    if (entry != m_cameras.Map.end() && !entry->second) {
        m_cameras.Map.erase(entry);
        LogFailure("NULL camera created", kAppend);
    }
}

TvkErrorType TavikSystem::Impl::FindCamera(const char* pID, CameraPtr& rCamera) {
    auto known = m_cameras.Map.find(pID);
    if (known != m_cameras.Map.end()) {
        rCamera = known->second;
        return TvkErrorSuccess;
    }
    // An address names a network camera only once it has answered.
    if (PingGeV() != TvkErrorSuccess)
        LogFailure("Could not ping camera over ethernet",
                   "QRX::TvkAPI::TavikSystem::GetCameraByID");
    TvkCameraInfo_t info{};
    const auto status =
        static_cast<TvkErrorType>(TvkCameraInfoQuery(pID, &info, sizeof(TvkCameraInfo_t)));
    if (status != TvkErrorSuccess) return status;
    try {
        AppendCamToMap(info);
        known = m_cameras.Map.find(info.idString ? info.idString : "");
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    if (known == m_cameras.Map.end()) return TvkErrorNotFound;
    rCamera = known->second;
    return TvkErrorSuccess;
}

TvkErrorType TavikSystem::Impl::GetCameraByID(const char* pID, CameraPtr& rCamera) {
    if (!pID) return TvkErrorBadParameter;
    WriteLockGuard writing(m_camerasConditionHelper, m_cameras, false);
    if (!writing) return TvkErrorNotFound;
    try {
        return FindCamera(pID, rCamera);
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
}

void TavikSystem::Impl::CameraDiscoveryCallback(const TvkHandle_t, const char*, void* context) {
    // Nothing may unwind into the library's thread.
    CallObserver([&] { static_cast<Impl*>(context)->OnCameraDiscovery(); });
}

void TavikSystem::Impl::OnCameraDiscovery() {
    uint32_t length = 0;
    if (TvkFeatureStringMaxlengthQuery(TVK_SYSTEM_HANDLE, "DiscoveryCameraIdent", &length) !=
            TvkErrorSuccess ||
        length == 0) {
        LogFailure("Could not get length of camera ID or length is 0", kDiscovery);
        return;
    }
    std::vector<char> ident(static_cast<size_t>(length) + 1, '\0');
    uint32_t filled = 0;
    if (TvkFeatureStringGet(TVK_SYSTEM_HANDLE, "DiscoveryCameraIdent", ident.data(), length + 1,
                            &filled) != TvkErrorSuccess) {
        LogFailure("Could not get camera ID", kDiscovery);
        return;
    }
    const char* event = nullptr;
    if (TvkFeatureEnumGet(TVK_SYSTEM_HANDLE, "DiscoveryCameraEvent", &event) != TvkErrorSuccess) {
        LogFailure("Could not get callback trigger", kDiscovery);
        return;
    }
    int64_t value = 0;
    if (TvkFeatureEnumAsInt(TVK_SYSTEM_HANDLE, "DiscoveryCameraEvent", event, &value) !=
        TvkErrorSuccess) {
        LogFailure("Could not get integer representation of enum string", kDiscovery);
        return;
    }
    const UpdateTriggerType reason = ReasonOf(value);

    CameraPtr camera;
    {
        ReadLockGuard reading(m_camerasConditionHelper, m_cameras);
        if (!reading) {
            LogFailure("Could not lock camera list", kDiscovery);
            return;
        }
        auto known = m_cameras.Map.find(ident.data());
        if (known != m_cameras.Map.end()) camera = known->second;
    }
    if (!camera && GetCameraByID(ident.data(), camera) != TvkErrorSuccess) {
        LogFailure("Could not find a known camera in camera list", kDiscovery);
        return;
    }

    ReadLockGuard reading(m_cameraObserversConditionHelper, m_cameraObservers);
    if (!reading) {
        LogFailure("Could not lock camera observer list", kDiscovery);
        return;
    }
    for (const ICameraListObserverPtr& observer : m_cameraObservers.Vector)
        CallObserver([&] { observer->CameraListChanged(camera, reason); });
}

} // namespace QRX::TvkAPI
