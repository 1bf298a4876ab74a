// One transport interface (a network card, a USB host) and its features.
#pragma once

#include <cstdint>
#include <string>

#include "TavikCPP/FeatureContainer.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT Interface : public FeatureContainer {
public:
    // Copies the record; null texts become empty.
    explicit Interface(const TvkInterfaceInfo_t* pInterfaceInfo);
    // Closes the interface if open.
    ~Interface() override;

    virtual TvkErrorType Open();
    virtual TvkErrorType Close();

    // Two steps: a null buffer asks the length; a buffer must hold the
    // length + 1 bytes, for the terminating NUL.
    TvkErrorType GetID(char* pID, uint32_t& length) const;
    TvkErrorType GetName(char* pName, uint32_t& length) const;
    TvkErrorType GetSerialNumber(char* pSerial, uint32_t& length) const;
    TvkErrorType GetID(std::string& interfaceID) const;
    TvkErrorType GetName(std::string& name) const;
    TvkErrorType GetSerialNumber(std::string& serial) const;
    TvkErrorType GetType(TvkInterfaceType& type) const;
    // As it was when the interface was found.
    TvkErrorType GetPermittedAccess(TvkAccessModeType& permittedAccess) const;

private:
    class Impl;
    Impl* m_pImpl;
};

} // namespace QRX::TvkAPI
