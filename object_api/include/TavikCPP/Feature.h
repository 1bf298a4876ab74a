// One feature of a camera, interface or ancillary data block. Each value
// operation answers TvkErrorWrongType for a feature of another kind, without
// touching the device, and TvkErrorDeviceNotOpen once its device has closed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "TavikCPP/EnumEntry.h"
#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class BaseFeature;

class TVKCPP_EXPORT Feature : public virtual ReferenceCounted {
public:
    // A null record gives a feature of no kind, whose value calls all fail.
    Feature(const TvkFeatureInfo* pFeatureInfo, FeatureContainer* pFeatureContainer);
    ~Feature() override;
    Feature(const Feature&) = delete;
    Feature& operator=(const Feature&) = delete;

    // Values. Texts and buffers take two steps: a null buffer asks the size.
    TvkErrorType GetValue(uint8_t* pValue, uint32_t& size, uint32_t& sizeFilled) const;
    TvkErrorType GetValue(char* pValue, uint32_t& length) const;
    TvkErrorType GetValue(bool& value) const;
    TvkErrorType GetValue(double& value) const;
    TvkErrorType GetValue(int64_t& value) const;
    TvkErrorType SetValue(const uint8_t* pValue, uint32_t size);
    TvkErrorType SetValue(bool value);
    TvkErrorType SetValue(const char* pValue);
    TvkErrorType SetValue(const double& value);
    TvkErrorType SetValue(const int64_t& value);
    TvkErrorType SetValue(const int32_t& value);
    TvkErrorType GetEntry(EnumEntry& entry, const char* pEntryName) const;
    TvkErrorType GetRange(double& minimum, double& maximum) const;
    TvkErrorType GetRange(int64_t& minimum, int64_t& maximum) const;
    TvkErrorType GetIncrement(int64_t& increment) const;
    TvkErrorType IsValueAvailable(int64_t value, bool& available) const;
    TvkErrorType IsValueAvailable(const char* pValue, bool& available) const;
    TvkErrorType RunCommand();
    TvkErrorType IsCommandDone(bool& isDone) const;
    // The enumeration's entries; the texts stay valid until the next call on
    // this feature.
    TvkErrorType GetValues(int64_t* pValues, uint32_t& size);
    TvkErrorType GetValues(const char** pValues, uint32_t& size);
    TvkErrorType GetEntries(EnumEntry* pEntries, uint32_t& size);

    // What the device described, kept from the start. Texts are copied
    // without a terminating NUL.
    TvkErrorType GetName(char* pName, uint32_t& length) const;
    TvkErrorType GetDisplayName(char* pDisplayName, uint32_t& length) const;
    TvkErrorType GetDataType(TvkFeatureDataType& dataType) const;
    TvkErrorType GetFlags(TvkFeatureFlagsType& flags) const;
    TvkErrorType GetCategory(char* pCategory, uint32_t& length) const;
    TvkErrorType GetPollingTime(uint32_t& pollingTime) const;
    TvkErrorType GetUnit(char* pUnit, uint32_t& length) const;
    TvkErrorType GetRepresentation(char* pRepresentation, uint32_t& length) const;
    TvkErrorType GetVisibility(TvkFeatureVisibilityType& visibility) const;
    TvkErrorType GetToolTip(char* pToolTip, uint32_t& length) const;
    TvkErrorType GetDescription(char* pDescription, uint32_t& length) const;
    TvkErrorType GetSFNCNamespace(char* pSFNCNamespace, uint32_t& length) const;
    TvkErrorType GetAffectedFeatures(FeaturePtr* pAffectedFeatures, uint32_t& nSize);
    TvkErrorType GetSelectedFeatures(FeaturePtr* pSelectedFeatures, uint32_t& nSize);
    TvkErrorType IsReadable(bool& isReadable) const;
    TvkErrorType IsWritable(bool& isWritable) const;
    TvkErrorType IsStreamable(bool& isStreamable) const;

    // Observers are told when the feature may have changed. One observer
    // can be registered once.
    TvkErrorType RegisterObserver(const IFeatureObserverPtr& pObserver);
    TvkErrorType UnregisterObserver(const IFeatureObserverPtr& pObserver);

    // The same, for strings and vectors.
    TvkErrorType GetValue(std::string& value) const;
    TvkErrorType GetValue(std::vector<uint8_t>& value) const;
    TvkErrorType GetValue(std::vector<uint8_t>& value, uint32_t& sizeFilled) const;
    TvkErrorType SetValue(const std::vector<uint8_t>& value);
    TvkErrorType GetValues(std::vector<std::string>& values);
    TvkErrorType GetValues(std::vector<int64_t>& values);
    TvkErrorType GetEntries(std::vector<EnumEntry>& entries);
    TvkErrorType GetName(std::string& name) const;
    TvkErrorType GetDisplayName(std::string& displayName) const;
    TvkErrorType GetCategory(std::string& category) const;
    TvkErrorType GetUnit(std::string& unit) const;
    TvkErrorType GetRepresentation(std::string& representation) const;
    TvkErrorType GetToolTip(std::string& toolTip) const;
    TvkErrorType GetDescription(std::string& description) const;
    TvkErrorType GetSFNCNamespace(std::string& sfncNamespace) const;
    TvkErrorType GetAffectedFeatures(std::vector<FeaturePtr>& affectedFeatures);
    TvkErrorType GetSelectedFeatures(std::vector<FeaturePtr>& selectedFeatures);

private:
    friend class FeatureContainer;
    void ResetFeatureContainer();
    bool IsNotifying() const;

    BaseFeature* m_pImpl;
};

} // namespace QRX::TvkAPI
