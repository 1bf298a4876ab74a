#include "EnumFeature.h"

#include <algorithm>
#include <new>

#include "TavikCPP/MutexGuard.h"
#include "Text.h"

namespace QRX::TvkAPI {

namespace {

// Hands out a cache in two steps: a null array asks the count.
template <class Cache, class Item, class Make>
TvkErrorType HandOut(const Cache& rCache, Item* pItems, uint32_t& rSize, Make aMake) {
    const auto count = static_cast<uint32_t>(rCache.size());
    if (pItems) {
        if (rSize < count) {
            rSize = count;
            return TvkErrorMoreData;
        }
        std::transform(rCache.begin(), rCache.end(), pItems, aMake);
    }
    rSize = count;
    return TvkErrorSuccess;
}

} // namespace

TvkErrorType EnumFeature::GetValue(char* pValue, uint32_t& length) const {
    const char* text = nullptr;
    const TvkErrorType status =
        OnDevice([&](TvkHandle_t aHandle) { return TvkFeatureEnumGet(aHandle, Name(), &text); });
    if (status != TvkErrorSuccess) return status;
    return CopyText(text ? text : "", pValue, length, false);
}

TvkErrorType EnumFeature::GetValue(int64_t& value) const {
    return OnDevice([&](TvkHandle_t aHandle) {
        const char* text = nullptr;
        const TvkError_t status = TvkFeatureEnumGet(aHandle, Name(), &text);
        if (status != TvkErrorSuccess) return status;
        return TvkFeatureEnumAsInt(aHandle, Name(), text, &value);
    });
}

TvkErrorType EnumFeature::SetValue(const char* pValue) {
    return OnDevice(
        [&](TvkHandle_t aHandle) { return TvkFeatureEnumSet(aHandle, Name(), pValue); });
}

TvkErrorType EnumFeature::SetValue(const int64_t& value) {
    return OnDevice([&](TvkHandle_t aHandle) {
        const char* text = nullptr;
        const TvkError_t status = TvkFeatureEnumAsString(aHandle, Name(), value, &text);
        if (status != TvkErrorSuccess) return status;
        return TvkFeatureEnumSet(aHandle, Name(), text);
    });
}

TvkErrorType EnumFeature::GetEntry(EnumEntry& entry, const char* pEntryName) const {
    return OnDevice([&](TvkHandle_t aHandle) {
        TvkFeatureEnumEntry record{};
        const TvkError_t status =
            TvkFeatureEnumEntryGet(aHandle, Name(), pEntryName, &record, sizeof(record));
        if (status == TvkErrorSuccess)
            entry = EnumEntry(record.name, record.displayName, record.description, record.tooltip,
                              record.sfncNamespace,
                              static_cast<TvkFeatureVisibilityType>(record.visibility),
                              record.intValue);
        return status;
    });
}

TvkErrorType EnumFeature::IsValueAvailable(const char* pValue, bool& available) const {
    return OnDevice([&](TvkHandle_t aHandle) {
        TvkBool_t flag = 0;
        const TvkError_t status = TvkFeatureEnumIsAvailable(aHandle, Name(), pValue, &flag);
        if (status == TvkErrorSuccess) available = flag != 0;
        return status;
    });
}

TvkErrorType EnumFeature::IsValueAvailable(int64_t value, bool& available) const {
    const char* text = nullptr;
    const TvkErrorType status = OnDevice(
        [&](TvkHandle_t aHandle) { return TvkFeatureEnumAsString(aHandle, Name(), value, &text); });
    if (status != TvkErrorSuccess) return status;
    return IsValueAvailable(text, available);
}

TvkErrorType EnumFeature::FetchNames(uint32_t& rCount) {
    return OnDevice([&](TvkHandle_t aHandle) {
        rCount = 0;
        TvkError_t status = TvkFeatureEnumRangeQuery(aHandle, Name(), nullptr, 0, &rCount);
        if (status != TvkErrorSuccess || rCount == 0) return status;
        std::vector<const char*> names(rCount, nullptr);
        status = TvkFeatureEnumRangeQuery(aHandle, Name(), names.data(), rCount, &rCount);
        if (status != TvkErrorSuccess) return status;
        names.resize(std::min<size_t>(rCount, names.size()));
        m_Names.clear();
        for (const char* name : names)
            m_Names.emplace_back(name ? name : "");
        return status;
    });
}

TvkErrorType EnumFeature::GetValues(const char** pValues, uint32_t& size) {
    MutexGuard guard(m_pCacheMutex);
    try {
        uint32_t count = 0;
        const TvkErrorType status = FetchNames(count);
        if (status != TvkErrorSuccess || count == 0) return status;
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    return HandOut(m_Names, pValues, size, [](const std::string& rName) { return rName.c_str(); });
}

TvkErrorType EnumFeature::GetValues(int64_t* pValues, uint32_t& size) {
    MutexGuard guard(m_pCacheMutex);
    try {
        uint32_t count = 0;
        TvkErrorType status = FetchNames(count);
        if (status != TvkErrorSuccess || count == 0) return status;
        m_Values.clear();
        for (const std::string& name : m_Names) {
            int64_t value = 0;
            status = OnDevice([&](TvkHandle_t aHandle) {
                return TvkFeatureEnumAsInt(aHandle, Name(), name.c_str(), &value);
            });
            if (status != TvkErrorSuccess) {
                m_Values.clear();
                return status;
            }
            m_Values.push_back(value);
        }
    } catch (const std::bad_alloc&) {
        m_Values.clear();
        return TvkErrorResources;
    }
    return HandOut(m_Values, pValues, size, [](int64_t aValue) { return aValue; });
}

TvkErrorType EnumFeature::GetEntries(EnumEntry* pEntries, uint32_t& size) {
    MutexGuard guard(m_pCacheMutex);
    try {
        uint32_t count = 0;
        TvkErrorType status = FetchNames(count);
        if (status != TvkErrorSuccess || m_Names.empty()) return status;
        m_Entries.clear();
        for (const std::string& name : m_Names) {
            EnumEntry entry;
            status = GetEntry(entry, name.c_str());
            if (status != TvkErrorSuccess) {
                m_Entries.clear();
                return status;
            }
            m_Entries.push_back(entry);
        }
    } catch (const std::bad_alloc&) {
        m_Entries.clear();
        return TvkErrorResources;
    }
    return HandOut(m_Entries, pEntries, size, [](const EnumEntry& rEntry) { return rEntry; });
}

} // namespace QRX::TvkAPI
