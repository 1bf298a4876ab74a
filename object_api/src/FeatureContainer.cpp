#include "TavikCPP/FeatureContainer.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <new>
#include <string>

#include "TavikCPP/Feature.h"
#include "TavikCPP/MutexGuard.h"
#include "Text.h"

namespace QRX::TvkAPI {

// The map and the list below are guarded by the container's own mutex, held
// only for their own changes and never across a call into the library.
class [[gnu::visibility("hidden")]] FeatureContainer::Impl {
public:
    std::atomic<TvkHandle_t> m_Handle{nullptr};
    bool m_bAllFetched = false;
    std::map<std::string, FeaturePtr> m_Features;
    // Invisible features handed out, which the map does not keep: they are
    // detached with the rest, and let go of once nobody else holds them.
    std::vector<FeaturePtr> m_Uncached;
    // While set, no feature is added or removed: the container is detaching them.
    bool m_bResetting = false;
    MutexPtr m_pResetMutex{new Mutex()};
};

FeatureContainer::FeatureContainer() : m_pImpl(new Impl()) {}

FeatureContainer::~FeatureContainer() {
    Reset();
    RevokeHandle();
    delete m_pImpl;
}

TvkHandle_t FeatureContainer::GetHandle() const {
    return m_pImpl->m_Handle.load();
}

void FeatureContainer::SetHandle(const TvkHandle_t handle) {
    if (!handle) Reset();
    m_pImpl->m_Handle = handle;
}

void FeatureContainer::RevokeHandle() {
    m_pImpl->m_Handle = nullptr;
}

void FeatureContainer::Reset() {
    Impl& impl = *m_pImpl;
    MutexGuard oneAtATime(impl.m_pResetMutex);
    {
        MutexGuard guard(*this);
        impl.m_bResetting = true;
    }
    // Nothing is added or removed while resetting, so the walk needs no lock;
    // a notification in flight may look features up meanwhile.
    for (const auto& entry : impl.m_Features)
        entry.second->ResetFeatureContainer();
    for (const FeaturePtr& feature : impl.m_Uncached)
        feature->ResetFeatureContainer();
    std::map<std::string, FeaturePtr> features;
    std::vector<FeaturePtr> uncached;
    {
        MutexGuard guard(*this);
        features.swap(impl.m_Features);
        uncached.swap(impl.m_Uncached);
        impl.m_bAllFetched = false;
        impl.m_bResetting = false;
    }
    // The features let go here, outside the lock.
}

TvkErrorType FeatureContainer::GetFeatureByName(const char* pName, FeaturePtr& pFeature) {
    if (!pName) return TvkErrorBadParameter;
    const TvkHandle_t handle = GetHandle();
    if (!handle) return TvkErrorDeviceNotOpen;
    {
        MutexGuard guard(*this);
        auto known = m_pImpl->m_Features.find(pName);
        if (known != m_pImpl->m_Features.end()) {
            pFeature = known->second;
            return TvkErrorSuccess;
        }
    }
    TvkFeatureInfo info{};
    const auto status =
        static_cast<TvkErrorType>(TvkFeatureInfoQuery(handle, pName, &info, sizeof(info)));
    if (status != TvkErrorSuccess) return status;
    // Features let go of are destroyed after the lock is left.
    std::vector<FeaturePtr> released;
    try {
        FeaturePtr made(new Feature(&info, this));
        MutexGuard guard(*this);
        if (m_pImpl->m_bResetting) return TvkErrorDeviceNotOpen;
        if (info.visibility == TvkFeatureVisibilityInvisible) {
            auto& uncached = m_pImpl->m_Uncached;
            // One only this list holds goes, unless it is being notified:
            // this may be its own notification's thread.
            auto kept = std::stable_partition(
                uncached.begin(), uncached.end(), [](const FeaturePtr& rFeature) {
                    return rFeature.UseCount() > 1 || rFeature->IsNotifying();
                });
            released.assign(std::make_move_iterator(kept), std::make_move_iterator(uncached.end()));
            uncached.erase(kept, uncached.end());
            uncached.push_back(made);
            pFeature = made;
        } else {
            // Another thread may have made it meanwhile: the first one stays.
            pFeature = m_pImpl->m_Features.emplace(pName, made).first->second;
        }
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    return TvkErrorSuccess;
}

TvkErrorType FeatureContainer::GetFeatures(FeaturePtr* pFeatures, uint32_t& size) {
    const TvkHandle_t handle = GetHandle();
    if (!handle) return TvkErrorDeviceNotOpen;
    bool fetched;
    {
        MutexGuard guard(*this);
        fetched = m_pImpl->m_bAllFetched;
    }
    if (!fetched) {
        uint32_t count = 0;
        auto status = static_cast<TvkErrorType>(
            TvkFeaturesList(handle, nullptr, 0, &count, sizeof(TvkFeatureInfo)));
        if (status != TvkErrorSuccess || count == 0) return status;
        try {
            std::vector<TvkFeatureInfo> records(count);
            status = static_cast<TvkErrorType>(
                TvkFeaturesList(handle, records.data(), count, &count, sizeof(TvkFeatureInfo)));
            if (status != TvkErrorSuccess) return status;
            records.resize(std::min<size_t>(count, records.size()));
            MutexGuard guard(*this);
            if (m_pImpl->m_bResetting) return TvkErrorDeviceNotOpen;
            for (const TvkFeatureInfo& record : records) {
                if (!record.name || !*record.name) continue;
                FeaturePtr& slot = m_pImpl->m_Features[record.name];
                if (!slot) slot.Reset(new Feature(&record, this));
            }
            m_pImpl->m_bAllFetched = true;
        } catch (const std::bad_alloc&) {
            return TvkErrorResources;
        }
    }
    MutexGuard guard(*this);
    return CopyOut(m_pImpl->m_Features, pFeatures, size);
}

TvkErrorType FeatureContainer::GetFeatures(std::vector<FeaturePtr>& features) {
    return FillVector(features, [this](FeaturePtr* pFeatures, uint32_t& rSize) {
        return GetFeatures(pFeatures, rSize);
    });
}

} // namespace QRX::TvkAPI
