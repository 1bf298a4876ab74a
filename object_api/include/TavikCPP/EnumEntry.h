// One entry of an enumeration feature.
#pragma once

#include <cstdint>
#include <string>

#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT EnumEntry {
public:
    EnumEntry();
    EnumEntry(const char* pName, const char* pDisplayName, const char* pDescription,
              const char* pTooltip, const char* pSNFCNamespace, TvkFeatureVisibilityType visibility,
              int64_t value);
    EnumEntry(const EnumEntry&);
    EnumEntry& operator=(const EnumEntry&);
    virtual ~EnumEntry();

    // Two steps: a null buffer asks the length; the text is copied without
    // a terminating NUL.
    TvkErrorType GetName(char* pName, uint32_t& size) const;
    TvkErrorType GetDisplayName(char* pDisplayName, uint32_t& size) const;
    TvkErrorType GetDescription(char* pDescription, uint32_t& size) const;
    TvkErrorType GetTooltip(char* pTooltip, uint32_t& size) const;
    TvkErrorType GetSFNCNamespace(char* pSFNCNamespace, uint32_t& size) const;
    TvkErrorType GetName(std::string& name) const;
    TvkErrorType GetDisplayName(std::string& displayName) const;
    TvkErrorType GetDescription(std::string& description) const;
    TvkErrorType GetTooltip(std::string& tooltip) const;
    TvkErrorType GetSFNCNamespace(std::string& sfncNamespace) const;
    TvkErrorType GetValue(int64_t& value) const;
    TvkErrorType GetVisibility(TvkFeatureVisibilityType& visibility) const;

private:
    std::string m_Name;
    std::string m_DisplayName;
    std::string m_Description;
    std::string m_Tooltip;
    std::string m_SFNCNamespace;
    uint32_t m_Visibility;
    int64_t m_Value;
};

} // namespace QRX::TvkAPI
