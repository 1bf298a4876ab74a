#include "Bootstrap.h"

#include <algorithm>
#include <cstring>

#include "BigEndian.h"

namespace sim::gev {

namespace {
constexpr uint32_t kSubnetMask = 0xFFFFFF00; // 255.255.255.0

// GigE Vision 2.0; a big-endian transmitter that writes its strings in UTF-8.
constexpr uint32_t kVersionValue = 0x00020000, kDeviceModeValue = 0x80000001;
// GVCP capabilities: user-defined name, serial number, link speed, events, WRITEMEM.
constexpr uint32_t kGvcpCapabilities = 1u << 31 | 1u << 30 | 1u << 28 | 1u << 3 | 1u << 1;
constexpr uint32_t kTicksPerSecond = 1000000000; // the cameras' nanosecond clock
constexpr uint32_t kDefaultPacketSize = 1500;
constexpr const char* kManufacturerInfoText = "TavikSim camera simulator";

// Every camera's network has its router at .1.
uint32_t GatewayOf(uint32_t aIp) {
    return (aIp & kSubnetMask) | 1;
}

void Put(uint8_t* aSpace, uint64_t aAddress, uint32_t aValue) {
    StoreBigEndian(aSpace + aAddress, aValue, 4);
}

uint32_t Get(const uint8_t* aSpace, uint64_t aAddress) {
    return static_cast<uint32_t>(LoadBigEndian(aSpace + aAddress, 4));
}

struct tRange {
    uint64_t address, length;
};
// What a consumer sets: the IP configuration, the user-defined name, the
// persistent address, the heartbeat, the control privilege, and the message
// and stream channels.
constexpr tRange kWritable[] = {{kInterfaceConfiguration, 4},
                                {kUserName, kSerialLength},
                                {kPersistentIp, 4},
                                {kPersistentSubnet, 4},
                                {kPersistentGateway, 4},
                                {kHeartbeatTimeout, 4},
                                {kPrivilege, 4},
                                {kMessagePort, 4},
                                {kMessageDestination, 4},
                                {kMessageTimeout, 4},
                                {kMessageRetries, 4},
                                {kStreamPort, 4},
                                {kPacketSize, 4},
                                {kPacketDelay, 4},
                                {kStreamDestination, 4}};

bool InWritable(uint64_t aAt) {
    return std::any_of(std::begin(kWritable), std::end(kWritable), [aAt](const tRange& aRange) {
        return aRange.address <= aAt && aAt < aRange.address + aRange.length;
    });
}
} // namespace

uint64_t MacAddress(const std::string& aCameraId) {
    uint32_t hash = 2166136261u; // FNV-1a
    for (char c : aCameraId)
        hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;
    return 0x025441000000ull | (hash & 0xFFFFFF);
}

tNetworkSettings FactorySettings(uint32_t aCurrentIp) {
    tNetworkSettings s;
    s.ip = aCurrentIp;
    s.subnet = kSubnetMask;
    s.gateway = GatewayOf(aCurrentIp);
    return s;
}

void Fill(uint8_t* aSpace, const tCameraConfig& aCamera, const tNetworkSettings& aSettings) {
    const uint64_t mac = MacAddress(aCamera.id);
    Put(aSpace, kVersion, kVersionValue);
    Put(aSpace, kDeviceMode, kDeviceModeValue);
    Put(aSpace, kMacHigh, static_cast<uint32_t>(mac >> 32));
    Put(aSpace, kMacLow, static_cast<uint32_t>(mac));
    Put(aSpace, kInterfaceCapability, kPersistentIpOn | kDhcpOn | kLlaOn);
    Put(aSpace, kCurrentIp, aCamera.ipAddress);
    Put(aSpace, kCurrentSubnet, kSubnetMask);
    Put(aSpace, kCurrentGateway, GatewayOf(aCamera.ipAddress));
    PutText(aSpace + kManufacturerName, aCamera.vendor, kNameLength);
    PutText(aSpace + kModelName, aCamera.model, kNameLength);
    PutText(aSpace + kDeviceVersion, aCamera.version, kNameLength);
    PutText(aSpace + kManufacturerInfo, kManufacturerInfoText, kInfoLength);
    PutText(aSpace + kSerialNumber, aCamera.serial, kSerialLength);
    Put(aSpace, kInterfaceCount, 1);
    WriteSettings(aSpace, aSettings);
    Put(aSpace, kLinkSpeed, 1000); // Mbit/s
    Put(aSpace, kMessageChannels, 1);
    Put(aSpace, kStreamChannels, 1);
    Put(aSpace, kActiveLinks, 1);
    Put(aSpace, kGvcpCapability, kGvcpCapabilities);
    Put(aSpace, kHeartbeatTimeout, 3000); // ms
    Put(aSpace, kTickFrequencyLow, kTicksPerSecond);
    Put(aSpace, kPacketSize, kDefaultPacketSize);
}

void WriteUrl(uint8_t* aSpace, const std::string& aUrl) {
    PutText(aSpace + kFirstUrl, aUrl, kUrlLength);
}

tNetworkSettings ReadSettings(const uint8_t* aSpace) {
    tNetworkSettings s;
    s.configuration = (Get(aSpace, kInterfaceConfiguration) & (kPersistentIpOn | kDhcpOn)) | kLlaOn;
    s.ip = Get(aSpace, kPersistentIp);
    s.subnet = Get(aSpace, kPersistentSubnet);
    s.gateway = Get(aSpace, kPersistentGateway);
    return s;
}

void WriteSettings(uint8_t* aSpace, const tNetworkSettings& aSettings) {
    Put(aSpace, kInterfaceConfiguration, aSettings.configuration);
    Put(aSpace, kPersistentIp, aSettings.ip);
    Put(aSpace, kPersistentSubnet, aSettings.subnet);
    Put(aSpace, kPersistentGateway, aSettings.gateway);
}

bool TouchesSettings(uint64_t aAddress, size_t aSize) {
    auto touches = [&](uint64_t aRegister) {
        return aAddress < aRegister + 4 && aRegister < aAddress + aSize;
    };
    return touches(kInterfaceConfiguration) || touches(kPersistentIp) ||
           touches(kPersistentSubnet) || touches(kPersistentGateway);
}

bool Writable(uint64_t aAddress, size_t aSize) {
    const uint64_t end = std::min<uint64_t>(aAddress + aSize, kEnd);
    for (uint64_t at = aAddress; at < end; ++at)
        if (!InWritable(at)) return false;
    return true;
}

uint32_t PacketSize(const uint8_t* aSpace) {
    return Get(aSpace, kPacketSize) & 0xFFFF;
}

void PutText(uint8_t* aAt, const std::string& aText, size_t aLength) {
    memset(aAt, 0, aLength);
    memcpy(aAt, aText.data(), std::min(aText.size(), aLength - 1));
}

std::string GetText(const uint8_t* aAt, size_t aLength) {
    const auto* text = reinterpret_cast<const char*>(aAt);
    return std::string(text, strnlen(text, aLength));
}

std::optional<tNetworkSettings> NetworkMemory::Recall(const std::string& aCameraId) {
    std::lock_guard<std::mutex> hold(mLock);
    auto it = mKept.find(aCameraId);
    if (it == mKept.end()) return std::nullopt;
    return it->second;
}

void NetworkMemory::Keep(const std::string& aCameraId, const tNetworkSettings& aSettings) {
    std::lock_guard<std::mutex> hold(mLock);
    mKept[aCameraId] = aSettings;
}

} // namespace sim::gev
