#include "BaseFeature.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <unordered_map>
#include <vector>

#include "CallObserver.h"
#include "LockGuards.h"
#include "Log.h"
#include "TavikCPP/Feature.h"
#include "TavikCPP/IFeatureObserver.h"
#include "TavikCPP/MutexGuard.h"
#include "Text.h"

namespace QRX::TvkAPI {

namespace {

const char kCallback[] = "QRX::TvkAPI::BaseFeature::Impl::InvalidationCallback";
const char kGone[] = "Feature destroyed or device closed / destroyed";

std::string TextOf(const char* aText) {
    return aText ? aText : "";
}

BaseFeature::FeatureInfo CopyInfo(const TvkFeatureInfo* pInfo) {
    BaseFeature::FeatureInfo info;
    if (!pInfo) return info;
    info.name = TextOf(pInfo->name);
    info.dataType = static_cast<TvkFeatureDataType>(pInfo->featureDataType);
    info.flags = static_cast<TvkFeatureFlagsType>(pInfo->featureFlags);
    info.hasAffectedFeatures = pInfo->hasAffectedFeatures != 0;
    info.hasSelectedFeatures = pInfo->hasSelectedFeatures != 0;
    info.category = TextOf(pInfo->category);
    info.displayName = TextOf(pInfo->displayName);
    info.pollingTime = pInfo->pollingTime;
    info.unit = TextOf(pInfo->unit);
    info.representation = TextOf(pInfo->representation);
    info.visibility = static_cast<TvkFeatureVisibilityType>(pInfo->visibility);
    info.tooltip = TextOf(pInfo->tooltip);
    info.description = TextOf(pInfo->description);
    info.sfncNamespace = TextOf(pInfo->sfncNamespace);
    info.isStreamable = pInfo->isStreamable != 0;
    return info;
}

// Live features under numbers of their own. A notification carries the
// number, so one that comes late, for a feature already gone, finds nothing.
class FeatureRegistry {
public:
    uintptr_t Add(BaseFeature* pFeature) {
        std::lock_guard<std::mutex> hold(m_Mutex);
        const uintptr_t key = ++m_nLast;
        m_Features.emplace(key, pFeature);
        return key;
    }
    void Remove(uintptr_t aKey) {
        std::lock_guard<std::mutex> hold(m_Mutex);
        m_Features.erase(aKey);
    }
    // Runs aEnter on the live feature under the registry's lock; once the
    // feature has left the registry it is not found any more.
    template <class Enter> BaseFeature* Find(uintptr_t aKey, Enter aEnter) {
        std::lock_guard<std::mutex> hold(m_Mutex);
        auto found = m_Features.find(aKey);
        if (found == m_Features.end()) return nullptr;
        aEnter(found->second);
        return found->second;
    }

private:
    std::mutex m_Mutex;
    uintptr_t m_nLast = 0;
    std::unordered_map<uintptr_t, BaseFeature*> m_Features;
};

// Kept until the process ends: library threads may notify until then.
FeatureRegistry& Registry() {
    static FeatureRegistry* registry = new FeatureRegistry();
    return *registry;
}

} // namespace

class BaseFeature::Impl {
public:
    static void InvalidationCallback(const TvkHandle_t handle, const char* name, void* context);
    void* Context() const { return reinterpret_cast<void*>(m_Key); }

    LockableVector<IFeatureObserverPtr> m_observers;
    std::vector<FeaturePtr> m_affectedFeatures;
    std::vector<FeaturePtr> m_selectedFeatures;
    bool m_bAffectedFetched = false;
    bool m_bSelectedFetched = false;
    ConditionHelper m_observersConditionHelper;
    ConditionHelper m_containerConditionHelper;
    // Guards the two caches above.
    MutexPtr m_pCacheMutex{new Mutex()};
    uintptr_t m_Key = 0;
    std::atomic<int> m_nNotifying{0};
    // Value calls under way with the container's handle.
    std::atomic<int> m_nDeviceCalls{0};
};

BaseFeature::BaseFeature(const TvkFeatureInfo* pFeatureInfo, FeatureContainer* pFeatureContainer)
    : m_FeatureInfo(CopyInfo(pFeatureInfo)), m_pFeatureContainer(pFeatureContainer),
      m_pImpl(new Impl()) {
    if (!pFeatureInfo)
        LogFailure("No valid feature info pointer passed", "QRX::TvkAPI::BaseFeature::BaseFeature");
    if (!pFeatureContainer)
        LogFailure("No valid feature container pointer passed",
                   "QRX::TvkAPI::BaseFeature::BaseFeature");
    m_pImpl->m_Key = Registry().Add(this);
}

BaseFeature::~BaseFeature() {
    Retire();
    delete m_pImpl;
}

void BaseFeature::Retire() {
    Registry().Remove(m_pImpl->m_Key);
    ResetFeatureContainer();
    // A notification that found the feature before it left the registry
    // holds the read side: wait for it to finish.
    WriteLockGuard drain(m_pImpl->m_containerConditionHelper, *this, true);
}

bool BaseFeature::IsNotifying() const {
    return m_pImpl->m_nNotifying.load() > 0;
}

// A call counts itself in before it looks at the container; a detach clears
// the container before it counts the calls in: one of the two sees the other.
TvkHandle_t BaseFeature::EnterDevice() const {
    m_pImpl->m_nDeviceCalls.fetch_add(1);
    FeatureContainer* container = m_pFeatureContainer.load();
    const TvkHandle_t handle = container ? container->GetHandle() : nullptr;
    if (!handle) LeaveDevice();
    return handle;
}

void BaseFeature::LeaveDevice() const {
    if (m_pImpl->m_nDeviceCalls.fetch_sub(1) == 1) m_pImpl->m_nDeviceCalls.notify_all();
}

void BaseFeature::ResetFeatureContainer() {
    Impl& impl = *m_pImpl;
    // An attached feature's container is there: it detaches its features
    // before it goes.
    FeatureContainer* container = m_pFeatureContainer.load();
    const TvkHandle_t handle = container ? container->GetHandle() : nullptr;
    if (handle) {
        // Only a feature with observers holds a flat registration: another
        // object for the same name may hold one of its own.
        bool registered = false;
        {
            ReadLockGuard reading(impl.m_observersConditionHelper, impl.m_observers);
            registered = reading && !impl.m_observers.Vector.empty();
        }
        if (registered)
            TvkFeatureInvalidationUnregister(handle, Name(), &Impl::InvalidationCallback);
    }
    if (container) {
        WriteLockGuard writing(impl.m_containerConditionHelper, *this, true);
        if (writing)
            m_pFeatureContainer = nullptr;
        else
            LogFailure("Could not reset a feature's feature container reference. ",
                       "QRX::TvkAPI::BaseFeature::ResetFeatureContainer");
    }
    // Calls that found the container attached finish first.
    for (int calls = impl.m_nDeviceCalls.load(); calls != 0; calls = impl.m_nDeviceCalls.load())
        impl.m_nDeviceCalls.wait(calls);
    {
        WriteLockGuard writing(impl.m_observersConditionHelper, impl.m_observers, true);
        if (writing) impl.m_observers.Vector.clear();
    }
    // The caches hold features of the same container, which may hold this one.
    MutexGuard guard(impl.m_pCacheMutex);
    impl.m_affectedFeatures.clear();
    impl.m_selectedFeatures.clear();
}

TvkErrorType BaseFeature::RegisterObserver(const IFeatureObserverPtr& pObserver) {
    if (!pObserver) return TvkErrorBadParameter;
    return OnDevice([&](TvkHandle_t aHandle) { return AddObserver(aHandle, pObserver); });
}

TvkErrorType BaseFeature::AddObserver(TvkHandle_t aHandle, const IFeatureObserverPtr& pObserver) {
    Impl& impl = *m_pImpl;
    WriteLockGuard writing(impl.m_observersConditionHelper, impl.m_observers, false);
    if (!writing) return TvkErrorSuccess;
    auto& observers = impl.m_observers.Vector;
    if (std::find(observers.begin(), observers.end(), pObserver) != observers.end())
        return TvkErrorInvalidCall;
    try {
        observers.reserve(observers.size() + 1);
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    // One flat registration stands for all observers of this feature.
    if (observers.empty()) {
        const auto status = static_cast<TvkErrorType>(TvkFeatureInvalidationRegister(
            aHandle, Name(), &Impl::InvalidationCallback, impl.Context()));
        if (status != TvkErrorSuccess) return status;
    }
    observers.push_back(pObserver);
    return TvkErrorSuccess;
}

TvkErrorType BaseFeature::UnregisterObserver(const IFeatureObserverPtr& pObserver) {
    if (!pObserver) return TvkErrorBadParameter;
    return OnDevice([&](TvkHandle_t aHandle) { return RemoveObserver(aHandle, pObserver); });
}

TvkErrorType BaseFeature::RemoveObserver(TvkHandle_t aHandle,
                                         const IFeatureObserverPtr& pObserver) {
    Impl& impl = *m_pImpl;
    WriteLockGuard writing(impl.m_observersConditionHelper, impl.m_observers, true);
    if (!writing) {
        LogFailure("Could not lock feature observer list.",
                   "QRX::TvkAPI::BaseFeature::UnregisterObserver");
        return TvkErrorInternalFault;
    }
    auto& observers = impl.m_observers.Vector;
    auto found = std::find(observers.begin(), observers.end(), pObserver);
    if (found == observers.end()) return TvkErrorNotFound;
    if (observers.size() == 1) {
        const auto status = static_cast<TvkErrorType>(
            TvkFeatureInvalidationUnregister(aHandle, Name(), &Impl::InvalidationCallback));
        if (status != TvkErrorSuccess) return status;
    }
    observers.erase(found);
    return TvkErrorSuccess;
}

void BaseFeature::Impl::InvalidationCallback(const TvkHandle_t handle, const char*, void* context) {
    const auto key = reinterpret_cast<uintptr_t>(context);
    if (!key) {
        LogFailure("Feature pointer is null", kCallback);
        return;
    }
    if (!handle) {
        LogFailure("Device closed / destroyed", kCallback);
        return;
    }
    bool entered = false;
    BaseFeature* feature = Registry().Find(key, [&](BaseFeature* pFeature) {
        entered = pFeature->m_pImpl->m_containerConditionHelper.EnterReadLock(*pFeature);
        if (entered) ++pFeature->m_pImpl->m_nNotifying;
    });
    if (!feature) {
        LogFailure(kGone, kCallback);
        return;
    }
    if (!entered) {
        LogFailure("Could not lock feature.", kCallback);
        return;
    }
    Impl& impl = *feature->m_pImpl;
    ReadLockGuard attached(impl.m_containerConditionHelper, feature->GetMutex(), std::adopt_lock);
    struct Notifying {
        std::atomic<int>& rCount;
        ~Notifying() { --rCount; }
    } notifying{impl.m_nNotifying};
    // Nothing may unwind into the library's thread.
    CallObserver([&] {
        FeatureContainer* container = feature->m_pFeatureContainer.load();
        if (!container) {
            LogFailure(kGone, kCallback);
            return;
        }
        FeaturePtr self;
        if (container->GetFeatureByName(feature->Name(), self) != TvkErrorSuccess) {
            LogFailure("GetFeatureByName failed", kCallback);
            return;
        }
        ReadLockGuard reading(impl.m_observersConditionHelper, impl.m_observers);
        if (!reading) {
            LogFailure("Could not lock feature observer list.", kCallback);
            return;
        }
        for (const IFeatureObserverPtr& observer : impl.m_observers.Vector)
            CallObserver([&] { observer->FeatureChanged(self); });
    });
}

// The container must stay while its features are looked up.
TvkErrorType BaseFeature::GetAffectedFeatures(FeaturePtr* pAffectedFeatures, uint32_t& nSize) {
    return OnDevice(
        [&](TvkHandle_t aHandle) { return ListRelated(aHandle, true, pAffectedFeatures, nSize); });
}

TvkErrorType BaseFeature::GetSelectedFeatures(FeaturePtr* pSelectedFeatures, uint32_t& nSize) {
    return OnDevice(
        [&](TvkHandle_t aHandle) { return ListRelated(aHandle, false, pSelectedFeatures, nSize); });
}

TvkErrorType BaseFeature::ListRelated(TvkHandle_t aHandle, bool aAffected, FeaturePtr* pFeatures,
                                      uint32_t& nSize) {
    Impl& impl = *m_pImpl;
    auto list = aAffected ? &TvkFeatureListAffected : &TvkFeatureListSelected;
    std::vector<FeaturePtr>& cache = aAffected ? impl.m_affectedFeatures : impl.m_selectedFeatures;
    bool& fetched = aAffected ? impl.m_bAffectedFetched : impl.m_bSelectedFetched;
    FeatureContainer* container = m_pFeatureContainer.load();
    MutexGuard guard(impl.m_pCacheMutex);
    const auto cached = static_cast<uint32_t>(cache.size());
    if (fetched) {
        if (pFeatures) {
            if (nSize < cached) {
                nSize = cached;
                return TvkErrorMoreData;
            }
            std::copy(cache.begin(), cache.end(), pFeatures);
        }
        nSize = cached;
        return TvkErrorSuccess;
    }
    if (!pFeatures)
        return static_cast<TvkErrorType>(
            list(aHandle, Name(), nullptr, 0, &nSize, sizeof(TvkFeatureInfo)));
    uint32_t count = 0;
    auto status = static_cast<TvkErrorType>(
        list(aHandle, Name(), nullptr, 0, &count, sizeof(TvkFeatureInfo)));
    fetched = true;
    const bool tooSmall = nSize < count;
    nSize = count;
    if (tooSmall) return TvkErrorMoreData;
    if (status != TvkErrorSuccess || count == 0) return status;
    try {
        std::vector<TvkFeatureInfo> records(count);
        status = static_cast<TvkErrorType>(
            list(aHandle, Name(), records.data(), count, &count, sizeof(TvkFeatureInfo)));
        if (status != TvkErrorSuccess) return status;
        if (count > nSize) {
            nSize = count;
            return TvkErrorMoreData;
        }
        for (uint32_t i = 0; i < count; ++i) {
            FeaturePtr related;
            status = container->GetFeatureByName(records[i].name, related);
            if (status != TvkErrorSuccess) {
                cache.clear();
                return status;
            }
            cache.push_back(related);
            pFeatures[i] = related;
        }
    } catch (const std::bad_alloc&) {
        cache.clear();
        return TvkErrorResources;
    }
    nSize = count;
    return TvkErrorSuccess;
}

TvkErrorType BaseFeature::IsReadable(bool& isReadable) const {
    bool writable = false;
    return QueryAccess(isReadable, writable);
}

TvkErrorType BaseFeature::IsWritable(bool& isWritable) const {
    bool readable = false;
    return QueryAccess(readable, isWritable);
}

TvkErrorType BaseFeature::QueryAccess(bool& rReadable, bool& rWritable) const {
    return OnDevice([&](TvkHandle_t aHandle) {
        TvkBool_t readable = 0, writable = 0;
        const TvkError_t status = TvkFeatureAccessQuery(aHandle, Name(), &readable, &writable);
        if (status == TvkErrorSuccess) {
            rReadable = readable != 0;
            rWritable = writable != 0;
        }
        return status;
    });
}

TvkErrorType BaseFeature::GetName(char* pName, uint32_t& length) const {
    return CopyText(m_FeatureInfo.name, pName, length, false);
}

// A feature of another kind has none of these.
TvkErrorType BaseFeature::GetValue(uint8_t*, uint32_t&, uint32_t&) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::GetValue(char*, uint32_t&) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::GetValue(bool&) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::GetValue(double&) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::GetValue(int64_t&) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::SetValue(const uint8_t*, uint32_t) {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::SetValue(bool) {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::SetValue(const char*) {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::SetValue(const double&) {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::SetValue(const int64_t&) {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::SetValue(const int32_t&) {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::GetEntry(EnumEntry&, const char*) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::GetRange(double&, double&) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::GetRange(int64_t&, int64_t&) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::GetIncrement(int64_t&) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::IsValueAvailable(int64_t, bool&) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::IsValueAvailable(const char*, bool&) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::RunCommand() {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::IsCommandDone(bool&) const {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::GetValues(int64_t*, uint32_t&) {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::GetValues(const char**, uint32_t&) {
    return TvkErrorWrongType;
}
TvkErrorType BaseFeature::GetEntries(EnumEntry*, uint32_t&) {
    return TvkErrorWrongType;
}

} // namespace QRX::TvkAPI
