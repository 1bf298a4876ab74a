#include "EventData.h"

#include <cstdio>
#include <cstring>

#include "BigEndian.h"
#include "Info.h"

namespace sim {

namespace {
constexpr size_t kRemoteHeader = kRemoteEventDataMax - kEventPayloadMax;
constexpr size_t kDeviceChangeHeader = kDeviceChangeDataMax - kEventTextMax;

template <class T> T Load(const uint8_t* aAt) {
    T value;
    memcpy(&value, aAt, sizeof(value));
    return value;
}

// A text of at most the bytes there are.
std::string TextAt(const uint8_t* aAt, size_t aSize) {
    const char* text = reinterpret_cast<const char*>(aAt);
    return std::string(text, strnlen(text, aSize));
}

GC_ERROR RemoteInfo(const uint8_t* aData, size_t aSize, EVENT_DATA_INFO_CMD aCommand,
                    INFO_DATATYPE* aType, void* aBuffer, size_t* aBufferSize) {
    if (aSize < kRemoteHeader) return GC_ERR_INVALID_PARAMETER;
    const uint32_t id = Load<uint32_t>(aData);
    switch (aCommand) {
    case EVENT_DATA_ID: {
        char text[16];
        snprintf(text, sizeof(text), "%X", id);
        return ReplyText(text, aType, aBuffer, aBufferSize);
    }
    case EVENT_DATA_NUMID:
        return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{id}, aType, aBuffer, aBufferSize);
    case EVENT_DATA_VALUE: {
        std::vector<uint8_t> block(kEventBlockHeader + aSize - kRemoteHeader, 0);
        const uint64_t stamp = Load<uint64_t>(aData + 8);
        StoreBigEndian(&block[2], id, 2);
        StoreBigEndian(&block[6], Load<uint32_t>(aData + 4), 2);
        StoreBigEndian(&block[8], stamp >> 32, 4);
        StoreBigEndian(&block[12], stamp, 4);
        memcpy(block.data() + kEventBlockHeader, aData + kRemoteHeader, aSize - kRemoteHeader);
        return Reply(INFO_DATATYPE_BUFFER, block.data(), block.size(), aType, aBuffer, aBufferSize);
    }
    default:
        return GC_ERR_NOT_AVAILABLE;
    }
}

GC_ERROR DeviceChangeInfo(const uint8_t* aData, size_t aSize, EVENT_DATA_INFO_CMD aCommand,
                          INFO_DATATYPE* aType, void* aBuffer, size_t* aBufferSize) {
    if (aSize < kDeviceChangeHeader) return GC_ERR_INVALID_PARAMETER;
    switch (aCommand) {
    case EVENT_DATA_ID:
    case EVENT_DATA_DEVICE_ID_QRX:
        return ReplyText(TextAt(aData + kDeviceChangeHeader, aSize - kDeviceChangeHeader), aType,
                         aBuffer, aBufferSize);
    case EVENT_DATA_WHAT_QRX:
        return ReplyValue(INFO_DATATYPE_UINT32, Load<uint32_t>(aData), aType, aBuffer, aBufferSize);
    case EVENT_DATA_DATA_QRX:
        return ReplyValue(INFO_DATATYPE_UINT32, Load<uint32_t>(aData + 4), aType, aBuffer,
                          aBufferSize);
    default:
        return GC_ERR_NOT_AVAILABLE;
    }
}
} // namespace

std::vector<uint8_t> RemoteEventData(uint32_t aEventId, uint32_t aBlockId, uint64_t aTimestamp,
                                     const std::vector<uint8_t>& aPayload) {
    std::vector<uint8_t> data(kRemoteHeader + std::min(aPayload.size(), kEventPayloadMax));
    memcpy(&data[0], &aEventId, 4);
    memcpy(&data[4], &aBlockId, 4);
    memcpy(&data[8], &aTimestamp, 8);
    if (!aPayload.empty())
        memcpy(data.data() + kRemoteHeader, aPayload.data(), data.size() - kRemoteHeader);
    return data;
}

std::vector<uint8_t> InvalidationData(const std::string& aFeature) {
    std::string name = aFeature.substr(0, kEventTextMax - 1);
    return std::vector<uint8_t>(name.c_str(), name.c_str() + name.size() + 1);
}

std::vector<uint8_t> DeviceChangeData(uint32_t aWhat, uint32_t aData, const std::string& aDevice) {
    std::string id = aDevice.substr(0, kEventTextMax - 1);
    std::vector<uint8_t> data(kDeviceChangeHeader + id.size() + 1, 0);
    memcpy(&data[0], &aWhat, 4);
    memcpy(&data[4], &aData, 4);
    memcpy(&data[kDeviceChangeHeader], id.data(), id.size());
    return data;
}

size_t EventInfoSizeMax(EVENT_TYPE aType) {
    switch (aType) {
    case EVENT_NEW_BUFFER:
        return sizeof(void*);
    case EVENT_REMOTE_DEVICE:
        return kEventBlockHeader + kEventPayloadMax;
    default:
        return kEventTextMax;
    }
}

GC_ERROR EventDataInfo(EVENT_TYPE aType, const uint8_t* aData, size_t aSize,
                       EVENT_DATA_INFO_CMD aCommand, INFO_DATATYPE* aInfoType, void* aBuffer,
                       size_t* aBufferSize) {
    switch (aType) {
    case EVENT_NEW_BUFFER: {
        if (aSize < sizeof(EVENT_NEW_BUFFER_DATA)) return GC_ERR_INVALID_PARAMETER;
        EVENT_NEW_BUFFER_DATA data;
        memcpy(&data, aData, sizeof(data));
        if (aCommand == EVENT_DATA_ID)
            return ReplyValue(INFO_DATATYPE_PTR, data.BufferHandle, aInfoType, aBuffer,
                              aBufferSize);
        if (aCommand == EVENT_DATA_VALUE)
            return ReplyValue(INFO_DATATYPE_PTR, data.pUserPointer, aInfoType, aBuffer,
                              aBufferSize);
        return GC_ERR_NOT_AVAILABLE;
    }
    case EVENT_FEATURE_INVALIDATE:
        if (aCommand != EVENT_DATA_ID) return GC_ERR_NOT_AVAILABLE;
        return ReplyText(TextAt(aData, aSize), aInfoType, aBuffer, aBufferSize);
    case EVENT_REMOTE_DEVICE:
        return RemoteInfo(aData, aSize, aCommand, aInfoType, aBuffer, aBufferSize);
    case EVENT_DEVICE_LIST_CHANGED_QRX:
        return DeviceChangeInfo(aData, aSize, aCommand, aInfoType, aBuffer, aBufferSize);
    default:
        return GC_ERR_NOT_AVAILABLE;
    }
}

} // namespace sim
