// The system's interface list: refreshed from the library and kept up to
// date by discovery notifications.
#include <algorithm>
#include <cstring>
#include <new>

#include "CallObserver.h"
#include "LockGuards.h"
#include "Log.h"
#include "TavikSystemImpl.h"

namespace QRX::TvkAPI {

namespace {

const char kDiscovery[] = "QRX::TvkAPI::TavikSystem::Impl::InterfaceDiscoveryCallback";

bool Matches(const TvkInterfaceInfo_t& rInfo, const char* pID) {
    return rInfo.idString && std::strcmp(rInfo.idString, pID) == 0;
}

} // namespace

TvkErrorType GetInterfaceList(std::vector<TvkInterfaceInfo_t>& rList) {
    uint32_t count = 0;
    auto status = static_cast<TvkErrorType>(
        TvkInterfacesList(nullptr, 0, &count, sizeof(TvkInterfaceInfo_t)));
    if (status != TvkErrorSuccess) return status;
    rList.resize(count);
    if (count == 0) return TvkErrorSuccess;
    status = static_cast<TvkErrorType>(
        TvkInterfacesList(rList.data(), count, &count, sizeof(TvkInterfaceInfo_t)));
    if (status == TvkErrorSuccess) rList.resize(count);
    return status;
}

TvkErrorType TavikSystem::Impl::UpdateInterfaceList() {
    try {
        std::vector<TvkInterfaceInfo_t> list;
        const TvkErrorType status = GetInterfaceList(list);
        if (status != TvkErrorSuccess) return status;
        std::erase_if(m_interfaces.Map, [&](const auto& rEntry) {
            return std::none_of(list.begin(), list.end(), [&](const TvkInterfaceInfo_t& rInfo) {
                return Matches(rInfo, rEntry.first.c_str());
            });
        });
        for (const TvkInterfaceInfo_t& info : list) {
            if (info.idString && m_interfaces.Map.find(info.idString) == m_interfaces.Map.end())
                m_interfaces.Map[info.idString] = InterfacePtr(new Interface(&info));
        }
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    return TvkErrorSuccess;
}

TvkErrorType TavikSystem::Impl::GetInterfaceByID(const char* pID, InterfacePtr& rInterface) {
    if (!pID) return TvkErrorBadParameter;
    WriteLockGuard writing(m_interfacesConditionHelper, m_interfaces, false);
    if (!writing) return TvkErrorNotFound;
    try {
        auto known = m_interfaces.Map.find(pID);
        if (known == m_interfaces.Map.end()) {
            std::vector<TvkInterfaceInfo_t> list;
            const TvkErrorType status = GetInterfaceList(list);
            if (status != TvkErrorSuccess) return status;
            auto record =
                std::find_if(list.begin(), list.end(),
                             [&](const TvkInterfaceInfo_t& rInfo) { return Matches(rInfo, pID); });
            if (record != list.end()) m_interfaces.Map[pID] = InterfacePtr(new Interface(&*record));
            known = m_interfaces.Map.find(pID);
            if (known == m_interfaces.Map.end()) return TvkErrorNotFound;
        }
        rInterface = known->second;
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    return TvkErrorSuccess;
}

void TavikSystem::Impl::InterfaceDiscoveryCallback(const TvkHandle_t, const char*, void* context) {
    // Nothing may unwind into the library's thread.
    CallObserver([&] { static_cast<Impl*>(context)->OnInterfaceDiscovery(); });
}

void TavikSystem::Impl::OnInterfaceDiscovery() {
    uint32_t length = 0;
    if (TvkFeatureStringMaxlengthQuery(TVK_SYSTEM_HANDLE, "DiscoveryInterfaceIdent", &length) !=
        TvkErrorSuccess)
        return;
    std::string ident;
    if (length > 0) {
        std::vector<char> text(static_cast<size_t>(length) + 1, '\0');
        uint32_t filled = 0;
        if (TvkFeatureStringGet(TVK_SYSTEM_HANDLE, "DiscoveryInterfaceIdent", text.data(),
                                length + 1, &filled) != TvkErrorSuccess)
            return;
        ident = text.data();
    }
    // Whether the interface was known before and is known now tells what happened.
    auto lookUp = [&](InterfacePtr& rFound) {
        ReadLockGuard reading(m_interfacesConditionHelper, m_interfaces);
        if (!reading) {
            LogFailure("Could not lock interface list", kDiscovery);
            return false;
        }
        auto known = m_interfaces.Map.find(ident);
        if (known != m_interfaces.Map.end()) rFound = known->second;
        return true;
    };
    InterfacePtr before, after;
    if (!lookUp(before)) return;
    {
        WriteLockGuard writing(m_interfacesConditionHelper, m_interfaces, false);
        if (!writing || UpdateInterfaceList() != TvkErrorSuccess) return;
    }
    if (!lookUp(after)) return;

    UpdateTriggerType reason;
    InterfacePtr subject = before;
    if (before && !after) {
        reason = UpdateTriggerPluggedOut;
    } else if (before) {
        reason = UpdateTriggerOpenStateChanged;
    } else if (after) {
        reason = UpdateTriggerPluggedIn;
        subject = after;
    } else {
        LogFailure("Could not find interface in interface list.", kDiscovery);
        return;
    }

    ReadLockGuard reading(m_interfaceObserversConditionHelper, m_interfaceObservers);
    if (!reading) {
        LogFailure("Could not lock interface observer list", kDiscovery);
        return;
    }
    for (const IInterfaceListObserverPtr& observer : m_interfaceObservers.Vector)
        CallObserver([&] { observer->InterfaceListChanged(subject, reason); });
}

} // namespace QRX::TvkAPI
