// The data of each kind of event: what EventGetData hands out, and what
// EventGetDataInfo reads from it.
//
// Remote device events hold a little-endian header (32-bit event id, 32-bit
// block id, 64-bit timestamp in ns) and the event's payload; their value is
// the GigE Vision event block: reserved (2 bytes), event id (2), stream
// channel (2), block id (2), timestamp high and low (4 and 4), all
// big-endian, then the payload. Feature invalidations hold the feature's
// name; device-list changes hold "what" and "data" (32-bit each) and the
// device's id.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "TavikGenTLVendor.h"

namespace sim {

using namespace GenICam::Client;

constexpr size_t kEventBlockHeader = 16;
constexpr size_t kEventTextMax = 256;    // feature names and device ids, terminated
constexpr size_t kEventPayloadMax = 512; // of a remote device event
constexpr size_t kRemoteEventDataMax = 16 + kEventPayloadMax;
constexpr size_t kDeviceChangeDataMax = 8 + kEventTextMax;

std::vector<uint8_t> RemoteEventData(uint32_t aEventId, uint32_t aBlockId, uint64_t aTimestamp,
                                     const std::vector<uint8_t>& aPayload = {});
std::vector<uint8_t> InvalidationData(const std::string& aFeature);
std::vector<uint8_t> DeviceChangeData(uint32_t aWhat, uint32_t aData, const std::string& aDevice);

// The most bytes EventGetDataInfo gives for an event of aType.
size_t EventInfoSizeMax(EVENT_TYPE aType);

// EventGetDataInfo for the data of an event of aType.
GC_ERROR EventDataInfo(EVENT_TYPE aType, const uint8_t* aData, size_t aSize,
                       EVENT_DATA_INFO_CMD aCommand, INFO_DATATYPE* aInfoType, void* aBuffer,
                       size_t* aBufferSize);

} // namespace sim
