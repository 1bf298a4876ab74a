// Direct access to a device's registers and memory, in vector forms.
#pragma once

#include <cstdint>
#include <vector>

#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT IRegisterDevice {
public:
    virtual ~IRegisterDevice();

    virtual TvkErrorType ReadRegisters(const std::vector<uint64_t>& addresses,
                                       std::vector<uint64_t>& buffer) = 0;
    virtual TvkErrorType ReadRegisters(const std::vector<uint64_t>& addresses,
                                       std::vector<uint64_t>& buffer, uint32_t& completedReads) = 0;
    virtual TvkErrorType WriteRegisters(const std::vector<uint64_t>& addresses,
                                        const std::vector<uint64_t>& buffer) = 0;
    virtual TvkErrorType WriteRegisters(const std::vector<uint64_t>& addresses,
                                        const std::vector<uint64_t>& buffer,
                                        uint32_t& completedWrites) = 0;
    virtual TvkErrorType ReadMemory(const uint64_t& address, std::vector<uint8_t>& buffer) = 0;
    virtual TvkErrorType ReadMemory(const uint64_t& address, std::vector<uint8_t>& buffer,
                                    uint32_t& completeReads) = 0;
    virtual TvkErrorType WriteMemory(const uint64_t& address,
                                     const std::vector<uint8_t>& buffer) = 0;
    virtual TvkErrorType WriteMemory(const uint64_t& address, const std::vector<uint8_t>& buffer,
                                     uint32_t& sizeComplete) = 0;
};

} // namespace QRX::TvkAPI
