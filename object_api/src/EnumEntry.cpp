#include "TavikCPP/EnumEntry.h"

#include "Text.h"

namespace QRX::TvkAPI {

namespace {
std::string TextOf(const char* aText) {
    return aText ? aText : "";
}
} // namespace

EnumEntry::EnumEntry() : m_Visibility(TvkFeatureVisibilityUnknown), m_Value(0) {}

EnumEntry::EnumEntry(const char* pName, const char* pDisplayName, const char* pDescription,
                     const char* pTooltip, const char* pSNFCNamespace,
                     TvkFeatureVisibilityType visibility, int64_t value)
    : m_Name(TextOf(pName)), m_DisplayName(TextOf(pDisplayName)),
      m_Description(TextOf(pDescription)), m_Tooltip(TextOf(pTooltip)),
      m_SFNCNamespace(TextOf(pSNFCNamespace)), m_Visibility(visibility), m_Value(value) {}

EnumEntry::EnumEntry(const EnumEntry&) = default;
EnumEntry& EnumEntry::operator=(const EnumEntry&) = default;
EnumEntry::~EnumEntry() = default;

TvkErrorType EnumEntry::GetName(char* pName, uint32_t& size) const {
    return CopyText(m_Name, pName, size, false);
}
TvkErrorType EnumEntry::GetDisplayName(char* pDisplayName, uint32_t& size) const {
    return CopyText(m_DisplayName, pDisplayName, size, false);
}
TvkErrorType EnumEntry::GetDescription(char* pDescription, uint32_t& size) const {
    return CopyText(m_Description, pDescription, size, false);
}
TvkErrorType EnumEntry::GetTooltip(char* pTooltip, uint32_t& size) const {
    return CopyText(m_Tooltip, pTooltip, size, false);
}
TvkErrorType EnumEntry::GetSFNCNamespace(char* pSFNCNamespace, uint32_t& size) const {
    return CopyText(m_SFNCNamespace, pSFNCNamespace, size, false);
}

TvkErrorType EnumEntry::GetName(std::string& name) const {
    return AssignText(name, m_Name);
}
TvkErrorType EnumEntry::GetDisplayName(std::string& displayName) const {
    return AssignText(displayName, m_DisplayName);
}
TvkErrorType EnumEntry::GetDescription(std::string& description) const {
    return AssignText(description, m_Description);
}
TvkErrorType EnumEntry::GetTooltip(std::string& tooltip) const {
    return AssignText(tooltip, m_Tooltip);
}
TvkErrorType EnumEntry::GetSFNCNamespace(std::string& sfncNamespace) const {
    return AssignText(sfncNamespace, m_SFNCNamespace);
}

TvkErrorType EnumEntry::GetValue(int64_t& value) const {
    value = m_Value;
    return TvkErrorSuccess;
}

TvkErrorType EnumEntry::GetVisibility(TvkFeatureVisibilityType& visibility) const {
    visibility = static_cast<TvkFeatureVisibilityType>(m_Visibility);
    return TvkErrorSuccess;
}

} // namespace QRX::TvkAPI
