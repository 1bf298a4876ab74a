// The body behind a Feature: what the device described, the link to its
// container, the observers. Each value operation answers TvkErrorWrongType
// here; the class of the feature's kind overrides its own.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "TavikCPP/BasicLockable.h"
#include "TavikCPP/EnumEntry.h"
#include "TavikCPP/FeatureContainer.h"

namespace QRX::TvkAPI {

class BaseFeature : public virtual BasicLockable {
public:
    struct FeatureInfo {
        std::string name;
        TvkFeatureDataType dataType = TvkFeatureDataUnknown;
        TvkFeatureFlagsType flags = TvkFeatureFlagsNone;
        bool hasAffectedFeatures = false;
        bool hasSelectedFeatures = false;
        std::string category;
        std::string displayName;
        uint32_t pollingTime = 0;
        std::string unit;
        std::string representation;
        TvkFeatureVisibilityType visibility = TvkFeatureVisibilityUnknown;
        std::string tooltip;
        std::string description;
        std::string sfncNamespace;
        bool isStreamable = false;
    };

    BaseFeature(const TvkFeatureInfo* pFeatureInfo, FeatureContainer* pFeatureContainer);
    ~BaseFeature() override;

    virtual TvkErrorType GetValue(uint8_t* pValue, uint32_t& size, uint32_t& sizeFilled) const;
    virtual TvkErrorType GetValue(char* pValue, uint32_t& length) const;
    virtual TvkErrorType GetValue(bool& value) const;
    virtual TvkErrorType GetValue(double& value) const;
    virtual TvkErrorType GetValue(int64_t& value) const;
    virtual TvkErrorType SetValue(const uint8_t* pValue, uint32_t size);
    virtual TvkErrorType SetValue(bool value);
    virtual TvkErrorType SetValue(const char* pValue);
    virtual TvkErrorType SetValue(const double& value);
    virtual TvkErrorType SetValue(const int64_t& value);
    virtual TvkErrorType SetValue(const int32_t& value);
    virtual TvkErrorType GetEntry(EnumEntry& entry, const char* pEntryName) const;
    virtual TvkErrorType GetRange(double& minimum, double& maximum) const;
    virtual TvkErrorType GetRange(int64_t& minimum, int64_t& maximum) const;
    virtual TvkErrorType GetIncrement(int64_t& increment) const;
    virtual TvkErrorType IsValueAvailable(int64_t value, bool& available) const;
    virtual TvkErrorType IsValueAvailable(const char* pValue, bool& available) const;
    virtual TvkErrorType RunCommand();
    virtual TvkErrorType IsCommandDone(bool& isDone) const;
    virtual TvkErrorType GetValues(int64_t* pValues, uint32_t& size);
    virtual TvkErrorType GetValues(const char** pValues, uint32_t& size);
    virtual TvkErrorType GetEntries(EnumEntry* pEntries, uint32_t& size);
    virtual TvkErrorType GetName(char* pName, uint32_t& length) const;

    // Detaches the feature from its container for good.
    void ResetFeatureContainer();
    // Puts the feature out of reach of notifications, and waits for one
    // under way; done before the feature's destruction begins, since a
    // notification still looks at the whole object.
    void Retire();
    TvkErrorType RegisterObserver(const IFeatureObserverPtr& pObserver);
    TvkErrorType UnregisterObserver(const IFeatureObserverPtr& pObserver);

    const FeatureInfo& Info() const { return m_FeatureInfo; }
    // Whether a notification for this feature is running now: then it must
    // not be let go of, for the notification waits for nothing but itself.
    bool IsNotifying() const;
    TvkErrorType GetAffectedFeatures(FeaturePtr* pAffectedFeatures, uint32_t& nSize);
    TvkErrorType GetSelectedFeatures(FeaturePtr* pSelectedFeatures, uint32_t& nSize);
    TvkErrorType IsReadable(bool& isReadable) const;
    TvkErrorType IsWritable(bool& isWritable) const;

protected:
    const char* Name() const { return m_FeatureInfo.name.c_str(); }
    // Runs aCall with the container's handle; a detach waits for it. A
    // detached feature, or a closed container, answers TvkErrorDeviceNotOpen.
    template <class Call> TvkErrorType OnDevice(Call aCall) const {
        const TvkHandle_t handle = EnterDevice();
        if (!handle) return TvkErrorDeviceNotOpen;
        struct Leave {
            const BaseFeature& rFeature;
            ~Leave() { rFeature.LeaveDevice(); }
        } leave{*this};
        return static_cast<TvkErrorType>(aCall(handle));
    }

private:
    class Impl;
    TvkErrorType ListRelated(TvkHandle_t aHandle, bool aAffected, FeaturePtr* pFeatures,
                             uint32_t& nSize);
    TvkErrorType AddObserver(TvkHandle_t aHandle, const IFeatureObserverPtr& pObserver);
    TvkErrorType RemoveObserver(TvkHandle_t aHandle, const IFeatureObserverPtr& pObserver);
    TvkErrorType QueryAccess(bool& rReadable, bool& rWritable) const;
    // Counts a call in and gives the container's handle, or counts nothing
    // and gives null.
    TvkHandle_t EnterDevice() const;
    void LeaveDevice() const;

    const FeatureInfo m_FeatureInfo;
    // Set while attached; written only under the container gate, exclusive.
    std::atomic<FeatureContainer*> m_pFeatureContainer;
    Impl* m_pImpl;
};

} // namespace QRX::TvkAPI
