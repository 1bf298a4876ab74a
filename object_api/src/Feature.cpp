#include "TavikCPP/Feature.h"

#include <new>

#include "EnumFeature.h"
#include "ScalarFeatures.h"
#include "Text.h"
#include "TextFeatures.h"

namespace QRX::TvkAPI {

namespace {

// The class for the feature's kind; a null record or an unknown kind gives
// a feature whose value calls all answer TvkErrorWrongType.
BaseFeature* Make(const TvkFeatureInfo* pInfo, FeatureContainer* pContainer) {
    switch (pInfo ? pInfo->featureDataType : TvkFeatureData_t{TvkFeatureDataUnknown}) {
    case TvkFeatureDataInt:
        return new IntFeature(pInfo, pContainer);
    case TvkFeatureDataFloat:
        return new FloatFeature(pInfo, pContainer);
    case TvkFeatureDataEnum:
        return new EnumFeature(pInfo, pContainer);
    case TvkFeatureDataString:
        return new StringFeature(pInfo, pContainer);
    case TvkFeatureDataBool:
        return new BoolFeature(pInfo, pContainer);
    case TvkFeatureDataCommand:
        return new CommandFeature(pInfo, pContainer);
    case TvkFeatureDataRaw:
        return new RawFeature(pInfo, pContainer);
    default:
        return new BaseFeature(pInfo, pContainer);
    }
}

// Fills a vector through a two-step list call; a count of 0 leaves it as it was.
template <class Item, class List> TvkErrorType ReadList(std::vector<Item>& rItems, List aList) {
    try {
        uint32_t size = 0;
        TvkErrorType status = aList(nullptr, size);
        if (status != TvkErrorSuccess || size == 0) return status;
        std::vector<Item> items(size);
        status = aList(items.data(), size);
        if (status != TvkErrorSuccess) return status;
        items.resize(size);
        rItems = std::move(items);
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    return TvkErrorSuccess;
}

} // namespace

Feature::Feature(const TvkFeatureInfo* pFeatureInfo, FeatureContainer* pFeatureContainer)
    : m_pImpl(Make(pFeatureInfo, pFeatureContainer)) {}

Feature::~Feature() {
    m_pImpl->Retire();
    delete m_pImpl;
}

void Feature::ResetFeatureContainer() {
    m_pImpl->ResetFeatureContainer();
}

bool Feature::IsNotifying() const {
    return m_pImpl->IsNotifying();
}

TvkErrorType Feature::GetValue(uint8_t* pValue, uint32_t& size, uint32_t& sizeFilled) const {
    return m_pImpl->GetValue(pValue, size, sizeFilled);
}
TvkErrorType Feature::GetValue(char* pValue, uint32_t& length) const {
    return m_pImpl->GetValue(pValue, length);
}
TvkErrorType Feature::GetValue(bool& value) const {
    return m_pImpl->GetValue(value);
}
TvkErrorType Feature::GetValue(double& value) const {
    return m_pImpl->GetValue(value);
}
TvkErrorType Feature::GetValue(int64_t& value) const {
    return m_pImpl->GetValue(value);
}
TvkErrorType Feature::SetValue(const uint8_t* pValue, uint32_t size) {
    return m_pImpl->SetValue(pValue, size);
}
TvkErrorType Feature::SetValue(bool value) {
    return m_pImpl->SetValue(value);
}
TvkErrorType Feature::SetValue(const char* pValue) {
    return m_pImpl->SetValue(pValue);
}
TvkErrorType Feature::SetValue(const double& value) {
    return m_pImpl->SetValue(value);
}
TvkErrorType Feature::SetValue(const int64_t& value) {
    return m_pImpl->SetValue(value);
}
// Widened, so that integer and enumeration features take it.
TvkErrorType Feature::SetValue(const int32_t& value) {
    return m_pImpl->SetValue(static_cast<int64_t>(value));
}
TvkErrorType Feature::GetEntry(EnumEntry& entry, const char* pEntryName) const {
    return m_pImpl->GetEntry(entry, pEntryName);
}
TvkErrorType Feature::GetRange(double& minimum, double& maximum) const {
    return m_pImpl->GetRange(minimum, maximum);
}
TvkErrorType Feature::GetRange(int64_t& minimum, int64_t& maximum) const {
    return m_pImpl->GetRange(minimum, maximum);
}
TvkErrorType Feature::GetIncrement(int64_t& increment) const {
    return m_pImpl->GetIncrement(increment);
}
TvkErrorType Feature::IsValueAvailable(int64_t value, bool& available) const {
    return m_pImpl->IsValueAvailable(value, available);
}
TvkErrorType Feature::IsValueAvailable(const char* pValue, bool& available) const {
    return m_pImpl->IsValueAvailable(pValue, available);
}
TvkErrorType Feature::RunCommand() {
    return m_pImpl->RunCommand();
}
TvkErrorType Feature::IsCommandDone(bool& isDone) const {
    return m_pImpl->IsCommandDone(isDone);
}
TvkErrorType Feature::GetValues(int64_t* pValues, uint32_t& size) {
    return m_pImpl->GetValues(pValues, size);
}
TvkErrorType Feature::GetValues(const char** pValues, uint32_t& size) {
    return m_pImpl->GetValues(pValues, size);
}
TvkErrorType Feature::GetEntries(EnumEntry* pEntries, uint32_t& size) {
    return m_pImpl->GetEntries(pEntries, size);
}

TvkErrorType Feature::GetName(char* pName, uint32_t& length) const {
    return m_pImpl->GetName(pName, length);
}
TvkErrorType Feature::GetDisplayName(char* pDisplayName, uint32_t& length) const {
    return CopyText(m_pImpl->Info().displayName, pDisplayName, length, false);
}
TvkErrorType Feature::GetDataType(TvkFeatureDataType& dataType) const {
    dataType = m_pImpl->Info().dataType;
    return TvkErrorSuccess;
}
TvkErrorType Feature::GetFlags(TvkFeatureFlagsType& flags) const {
    flags = m_pImpl->Info().flags;
    return TvkErrorSuccess;
}
TvkErrorType Feature::GetCategory(char* pCategory, uint32_t& length) const {
    return CopyText(m_pImpl->Info().category, pCategory, length, false);
}
TvkErrorType Feature::GetPollingTime(uint32_t& pollingTime) const {
    pollingTime = m_pImpl->Info().pollingTime;
    return TvkErrorSuccess;
}
TvkErrorType Feature::GetUnit(char* pUnit, uint32_t& length) const {
    return CopyText(m_pImpl->Info().unit, pUnit, length, false);
}
TvkErrorType Feature::GetRepresentation(char* pRepresentation, uint32_t& length) const {
    return CopyText(m_pImpl->Info().representation, pRepresentation, length, false);
}
TvkErrorType Feature::GetVisibility(TvkFeatureVisibilityType& visibility) const {
    visibility = m_pImpl->Info().visibility;
    return TvkErrorSuccess;
}
TvkErrorType Feature::GetToolTip(char* pToolTip, uint32_t& length) const {
    return CopyText(m_pImpl->Info().tooltip, pToolTip, length, false);
}
TvkErrorType Feature::GetDescription(char* pDescription, uint32_t& length) const {
    return CopyText(m_pImpl->Info().description, pDescription, length, false);
}
TvkErrorType Feature::GetSFNCNamespace(char* pSFNCNamespace, uint32_t& length) const {
    return CopyText(m_pImpl->Info().sfncNamespace, pSFNCNamespace, length, false);
}
TvkErrorType Feature::GetAffectedFeatures(FeaturePtr* pAffectedFeatures, uint32_t& nSize) {
    return m_pImpl->GetAffectedFeatures(pAffectedFeatures, nSize);
}
TvkErrorType Feature::GetSelectedFeatures(FeaturePtr* pSelectedFeatures, uint32_t& nSize) {
    return m_pImpl->GetSelectedFeatures(pSelectedFeatures, nSize);
}
TvkErrorType Feature::IsReadable(bool& isReadable) const {
    return m_pImpl->IsReadable(isReadable);
}
TvkErrorType Feature::IsWritable(bool& isWritable) const {
    return m_pImpl->IsWritable(isWritable);
}
TvkErrorType Feature::IsStreamable(bool& isStreamable) const {
    isStreamable = m_pImpl->Info().isStreamable;
    return TvkErrorSuccess;
}

TvkErrorType Feature::RegisterObserver(const IFeatureObserverPtr& pObserver) {
    return m_pImpl->RegisterObserver(pObserver);
}
TvkErrorType Feature::UnregisterObserver(const IFeatureObserverPtr& pObserver) {
    return m_pImpl->UnregisterObserver(pObserver);
}

TvkErrorType Feature::GetValue(std::string& value) const {
    // The library may report the longest text the feature holds: cut at the end.
    return ReadText(
        value, [this](char* pText, uint32_t& rLength) { return GetValue(pText, rLength); }, true);
}

TvkErrorType Feature::GetValue(std::vector<uint8_t>& value) const {
    uint32_t sizeFilled = 0;
    return GetValue(value, sizeFilled);
}

TvkErrorType Feature::GetValue(std::vector<uint8_t>& value, uint32_t& sizeFilled) const {
    try {
        uint32_t size = 0;
        TvkErrorType status = GetValue(static_cast<uint8_t*>(nullptr), size, sizeFilled);
        if (status != TvkErrorSuccess) return status;
        value.resize(size);
        return GetValue(value.data(), size, sizeFilled);
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
}

TvkErrorType Feature::SetValue(const std::vector<uint8_t>& value) {
    if (value.empty()) return TvkErrorBadParameter;
    return SetValue(value.data(), static_cast<uint32_t>(value.size()));
}

TvkErrorType Feature::GetValues(std::vector<std::string>& values) {
    std::vector<const char*> texts;
    TvkErrorType status = ReadList(
        texts, [this](const char** pTexts, uint32_t& rSize) { return GetValues(pTexts, rSize); });
    if (status != TvkErrorSuccess) return status;
    try {
        values.clear();
        for (const char* text : texts)
            values.emplace_back(text);
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    return TvkErrorSuccess;
}

TvkErrorType Feature::GetValues(std::vector<int64_t>& values) {
    return ReadList(
        values, [this](int64_t* pValues, uint32_t& rSize) { return GetValues(pValues, rSize); });
}

TvkErrorType Feature::GetEntries(std::vector<EnumEntry>& entries) {
    return ReadList(entries, [this](EnumEntry* pEntries, uint32_t& rSize) {
        return GetEntries(pEntries, rSize);
    });
}

TvkErrorType Feature::GetAffectedFeatures(std::vector<FeaturePtr>& affectedFeatures) {
    return ReadList(affectedFeatures, [this](FeaturePtr* pFeatures, uint32_t& rSize) {
        return GetAffectedFeatures(pFeatures, rSize);
    });
}

TvkErrorType Feature::GetSelectedFeatures(std::vector<FeaturePtr>& selectedFeatures) {
    return ReadList(selectedFeatures, [this](FeaturePtr* pFeatures, uint32_t& rSize) {
        return GetSelectedFeatures(pFeatures, rSize);
    });
}

TvkErrorType Feature::GetName(std::string& name) const {
    return AssignText(name, m_pImpl->Info().name);
}
TvkErrorType Feature::GetDisplayName(std::string& displayName) const {
    return AssignText(displayName, m_pImpl->Info().displayName);
}
TvkErrorType Feature::GetCategory(std::string& category) const {
    return AssignText(category, m_pImpl->Info().category);
}
TvkErrorType Feature::GetUnit(std::string& unit) const {
    return AssignText(unit, m_pImpl->Info().unit);
}
TvkErrorType Feature::GetRepresentation(std::string& representation) const {
    return AssignText(representation, m_pImpl->Info().representation);
}
TvkErrorType Feature::GetToolTip(std::string& toolTip) const {
    return AssignText(toolTip, m_pImpl->Info().tooltip);
}
TvkErrorType Feature::GetDescription(std::string& description) const {
    return AssignText(description, m_pImpl->Info().description);
}
TvkErrorType Feature::GetSFNCNamespace(std::string& sfncNamespace) const {
    return AssignText(sfncNamespace, m_pImpl->Info().sfncNamespace);
}

} // namespace QRX::TvkAPI
