// The GigE Vision bootstrap registers at the start of a simulated camera's
// register space: who the camera is, its network settings, where its
// document lies and its stream channel, big-endian as GigE Vision has them,
// so that a consumer reading them through the remote port finds what a
// GigE Vision camera shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "Topology.h"

namespace sim::gev {

constexpr uint64_t kVersion = 0x0000, kDeviceMode = 0x0004;
constexpr uint64_t kMacHigh = 0x0008, kMacLow = 0x000C;
constexpr uint64_t kInterfaceCapability = 0x0010, kInterfaceConfiguration = 0x0014;
constexpr uint64_t kCurrentIp = 0x0024, kCurrentSubnet = 0x0034, kCurrentGateway = 0x0044;
constexpr uint64_t kManufacturerName = 0x0048, kModelName = 0x0068, kDeviceVersion = 0x0088;
constexpr uint64_t kManufacturerInfo = 0x00A8, kSerialNumber = 0x00D8, kUserName = 0x00E8;
constexpr uint64_t kFirstUrl = 0x0200, kSecondUrl = 0x0400;
constexpr uint64_t kInterfaceCount = 0x0600;
constexpr uint64_t kPersistentIp = 0x064C, kPersistentSubnet = 0x065C;
constexpr uint64_t kPersistentGateway = 0x066C, kLinkSpeed = 0x0670;
constexpr uint64_t kMessageChannels = 0x0900, kStreamChannels = 0x0904, kActiveLinks = 0x0910;
constexpr uint64_t kGvcpCapability = 0x0934, kHeartbeatTimeout = 0x0938;
constexpr uint64_t kTickFrequencyHigh = 0x093C, kTickFrequencyLow = 0x0940;
constexpr uint64_t kPrivilege = 0x0A00;
constexpr uint64_t kMessagePort = 0x0B00, kMessageDestination = 0x0B10;
constexpr uint64_t kMessageTimeout = 0x0B14, kMessageRetries = 0x0B18;
constexpr uint64_t kStreamPort = 0x0D00, kPacketSize = 0x0D04, kPacketDelay = 0x0D08;
constexpr uint64_t kStreamDestination = 0x0D18;
// The block ends with the first (and only) stream channel's registers.
constexpr uint64_t kEnd = 0x0D40;

constexpr size_t kNameLength = 32, kInfoLength = 48, kSerialLength = 16, kUrlLength = 512;

// Network interface configuration (and capability) bits. Link-local
// addressing is always on.
constexpr uint32_t kPersistentIpOn = 1, kDhcpOn = 2, kLlaOn = 4;

// A locally administered MAC address, the same for a camera every time.
uint64_t MacAddress(const std::string& aCameraId);

// What a camera keeps of its network settings, as a camera keeps them in
// its flash: its IP configuration and persistent address.
struct tNetworkSettings {
    uint32_t configuration = kDhcpOn | kLlaOn;
    uint32_t ip = 0, subnet = 0, gateway = 0;
};
// Those of a camera new from the factory: DHCP, and the persistent address
// set to where it is.
tNetworkSettings FactorySettings(uint32_t aCurrentIp);

// Fills the bootstrap block of a camera's register space.
void Fill(uint8_t* aSpace, const tCameraConfig& aCamera, const tNetworkSettings& aSettings);
void WriteUrl(uint8_t* aSpace, const std::string& aUrl);
// The network settings in a register space, with the configuration reduced
// to what the camera can do.
tNetworkSettings ReadSettings(const uint8_t* aSpace);
void WriteSettings(uint8_t* aSpace, const tNetworkSettings& aSettings);
bool TouchesSettings(uint64_t aAddress, size_t aSize);
// Whether a write into the block reaches only registers a consumer may set.
bool Writable(uint64_t aAddress, size_t aSize);
// The packet size field of the stream channel's SCPS register.
uint32_t PacketSize(const uint8_t* aSpace);

// Writes a text into a string register of aLength bytes, cut to leave a terminator.
void PutText(uint8_t* aAt, const std::string& aText, size_t aLength);
std::string GetText(const uint8_t* aAt, size_t aLength);

// The cameras' network settings by camera id, kept while the producer stays
// loaded: a camera opened again, or reset, comes up with what was set.
class NetworkMemory {
public:
    std::optional<tNetworkSettings> Recall(const std::string& aCameraId);
    void Keep(const std::string& aCameraId, const tNetworkSettings& aSettings);

private:
    std::mutex mLock;
    std::map<std::string, tNetworkSettings> mKept;
};

} // namespace sim::gev
