#include "TavikCPP/Interface.h"

#include <string>

#include "Text.h"

namespace QRX::TvkAPI {

class [[gnu::visibility("hidden")]] Interface::Impl {
public:
    std::string m_ID;
    TvkInterfaceType m_Type = TvkInterfaceUnknown;
    std::string m_Name;
    std::string m_SerialNumber;
    TvkAccessModeType m_PermittedAccess = TvkAccessModeNone;
};

namespace {
std::string TextOf(const char* aText) {
    return aText ? aText : "";
}
} // namespace

Interface::Interface(const TvkInterfaceInfo_t* pInterfaceInfo) : m_pImpl(new Impl()) {
    if (!pInterfaceInfo) return;
    m_pImpl->m_ID = TextOf(pInterfaceInfo->idString);
    m_pImpl->m_Type = static_cast<TvkInterfaceType>(pInterfaceInfo->interfaceType);
    m_pImpl->m_Name = TextOf(pInterfaceInfo->name);
    m_pImpl->m_SerialNumber = TextOf(pInterfaceInfo->serialNumber);
    m_pImpl->m_PermittedAccess = static_cast<TvkAccessModeType>(pInterfaceInfo->permittedAccess);
}

Interface::~Interface() {
    Close();
    delete m_pImpl;
}

TvkErrorType Interface::Open() {
    TvkHandle_t handle = nullptr;
    const auto status = static_cast<TvkErrorType>(TvkInterfaceOpen(m_pImpl->m_ID.c_str(), &handle));
    if (status == TvkErrorSuccess) SetHandle(handle);
    return status;
}

TvkErrorType Interface::Close() {
    const TvkHandle_t handle = GetHandle();
    if (!handle) return TvkErrorSuccess;
    Reset();
    const auto status = static_cast<TvkErrorType>(TvkInterfaceClose(handle));
    RevokeHandle();
    return status;
}

TvkErrorType Interface::GetID(char* pID, uint32_t& length) const {
    return CopyText(m_pImpl->m_ID, pID, length, true);
}
TvkErrorType Interface::GetName(char* pName, uint32_t& length) const {
    return CopyText(m_pImpl->m_Name, pName, length, true);
}
TvkErrorType Interface::GetSerialNumber(char* pSerial, uint32_t& length) const {
    return CopyText(m_pImpl->m_SerialNumber, pSerial, length, true);
}
TvkErrorType Interface::GetID(std::string& interfaceID) const {
    return AssignText(interfaceID, m_pImpl->m_ID);
}
TvkErrorType Interface::GetName(std::string& name) const {
    return AssignText(name, m_pImpl->m_Name);
}
TvkErrorType Interface::GetSerialNumber(std::string& serial) const {
    return AssignText(serial, m_pImpl->m_SerialNumber);
}

TvkErrorType Interface::GetType(TvkInterfaceType& type) const {
    type = m_pImpl->m_Type;
    return TvkErrorSuccess;
}

TvkErrorType Interface::GetPermittedAccess(TvkAccessModeType& permittedAccess) const {
    permittedAccess = m_pImpl->m_PermittedAccess;
    return TvkErrorSuccess;
}

} // namespace QRX::TvkAPI
