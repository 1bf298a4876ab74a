#include "Device.h"

#include <chrono>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>

#include "BigEndian.h"
#include "Bootstrap.h"
#include "Documents.h"
#include "EventData.h"
#include "FrameGenerator.h"
#include "Info.h"
#include "Modules.h"
#include "Producer.h"
#include "Sha1.h"
#include "Stream.h"
#include "Transport.h"
#include "Zip.h"

namespace sim {

uint64_t TimestampNs() {
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                     std::chrono::steady_clock::now().time_since_epoch())
                                     .count());
}

Device::Device(Interface* aParent, const tCameraConfig& aConfig)
    : mParent(aParent), mConfig(aConfig), mSpace(reg::kSpaceSize, 0), mPlugged(aConfig.plugged),
      mRemoteEvents(EVENT_REMOTE_DEVICE, this, kRemoteEventDataMax),
      mInvalidations(EVENT_FEATURE_INVALIDATE, this, kEventTextMax) {
    std::vector<uint8_t> text;
    if (!mConfig.document.empty()) {
        std::ifstream file(mConfig.document, std::ios::binary);
        text.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    if (text.empty())
        text.assign(kRemoteDeviceDocument, kRemoteDeviceDocument + strlen(kRemoteDeviceDocument));
    mDocument = mConfig.zipped ? ZipOneFile("TavikSim.xml", text) : text;
    if (mDocument.size() > reg::kSpaceSize - reg::kDocument)
        mDocument.resize(reg::kSpaceSize - reg::kDocument);
    mDocumentHash = Sha1(mDocument);
    ReportDocument(reg::kDocument, static_cast<uint32_t>(mDocument.size()));
    Reset();
    // A camera served with a foreign document has no acquisition registers of
    // ours: it delivers whenever its stream runs.
    mAcquiring.store(!mConfig.document.empty());
    mStream = std::make_unique<Stream>(this);
    mModule = DeviceModule(*this);
}

Device::~Device() = default;

// A camera served with another document keeps a zero-filled register space.
// Ours comes up with the network settings it last kept.
void Device::Reset() {
    std::lock_guard<std::mutex> hold(mLock);
    std::fill(mSpace.begin(), mSpace.end(), 0);
    memcpy(mSpace.data() + reg::kDocument, mDocument.data(), mDocument.size());
    if (!mConfig.document.empty()) return;
    gev::Fill(
        mSpace.data(), mConfig,
        Producer().networks.Recall(mConfig.id).value_or(gev::FactorySettings(mConfig.ipAddress)));
    gev::WriteUrl(mSpace.data(), LocalUrl(DocumentLocked()));
    WriteU32(reg::kSensorWidth, mConfig.sensorWidth);
    WriteU32(reg::kSensorHeight, mConfig.sensorHeight);
    WriteU32(reg::kWidth, mConfig.width);
    WriteU32(reg::kHeight, mConfig.height);
    WriteU32(reg::kPixelFormat, mConfig.pixelFormat);
    WriteU32(reg::kTemperature, 250); // 25 degrees
    WriteU32(reg::kTLType, TypeCode(TransportType()));
    WriteU32(reg::kEventSelector, kEventExposureEnd);
    for (uint32_t selector = 0; selector < chunk::kSelectors; ++selector)
        WriteU32(reg::kChunkEnable + 4 * selector, 1);
    memcpy(mSpace.data() + reg::kFrameRate, &mConfig.frameRate, 8);
    const double exposure = 10000.0;
    memcpy(mSpace.data() + reg::kExposure, &exposure, 8);
    UpdatePayload();
}

const std::string& Device::TransportType() const {
    return mParent->Config().type;
}

GC_ERROR Device::Info(DEVICE_INFO_CMD aCommand, INFO_DATATYPE* aType, void* aBuffer,
                      size_t* aSize) {
    const tCameraConfig& c = mConfig;
    switch (aCommand) {
    case DEVICE_INFO_ID:
        return ReplyText(c.id, aType, aBuffer, aSize);
    case DEVICE_INFO_VENDOR:
        return ReplyText(c.vendor, aType, aBuffer, aSize);
    case DEVICE_INFO_MODEL:
        return ReplyText(c.model, aType, aBuffer, aSize);
    case DEVICE_INFO_TLTYPE:
        return ReplyText(mParent->Config().type, aType, aBuffer, aSize);
    case DEVICE_INFO_DISPLAYNAME:
        return ReplyText(c.vendor + " " + c.model + " (" + c.serial + ")", aType, aBuffer, aSize);
    case DEVICE_INFO_ACCESS_STATUS:
        return ReplyValue(INFO_DATATYPE_INT32, AccessStatus(), aType, aBuffer, aSize);
    case DEVICE_INFO_USER_DEFINED_NAME:
        return ReplyText(UserName(), aType, aBuffer, aSize);
    case DEVICE_INFO_SERIAL_NUMBER:
    case DEVICE_INFO_SERIAL_QRX:
        return ReplyText(c.serial, aType, aBuffer, aSize);
    case DEVICE_INFO_VERSION:
        return ReplyText(c.version, aType, aBuffer, aSize);
    case DEVICE_INFO_TIMESTAMP_FREQUENCY:
        return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{1000000000}, aType, aBuffer, aSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

// The bootstrap's URL register says the same.
void Device::ReportDocument(uint64_t aAddress, uint32_t aSize) {
    std::lock_guard<std::mutex> hold(mLock);
    mReportedAddress = aAddress;
    mReportedSize = aSize;
    if (mConfig.document.empty()) gev::WriteUrl(mSpace.data(), LocalUrl(DocumentLocked()));
}

Port::tDocument Device::Document() {
    std::lock_guard<std::mutex> hold(mLock);
    return DocumentLocked();
}

Port::tDocument Device::DocumentLocked() const {
    Port::tDocument d;
    d.address = mReportedAddress;
    d.size = mReportedSize;
    d.zipped = mConfig.zipped;
    d.fileName = mConfig.zipped ? "TavikSim.zip" : "TavikSim.xml";
    d.sha1 = mDocumentHash;
    return d;
}

GC_ERROR RemotePort::Read(uint64_t aAddress, void* aBuffer, size_t* aSize) {
    return mDevice.Read(aAddress, aBuffer, aSize);
}

GC_ERROR RemotePort::Write(uint64_t aAddress, const void* aBuffer, size_t* aSize) {
    return mDevice.Write(aAddress, aBuffer, aSize);
}

Port::tIdentity RemotePort::Identity() {
    const tCameraConfig& c = mDevice.Config();
    return {c.id + "-Port", c.vendor, c.model, mDevice.TransportType(), "Device", "Device"};
}

Port::tDocument RemotePort::Document() {
    return mDevice.Document();
}

void Device::WriteU32(uint64_t aAddress, uint32_t aValue) {
    memcpy(mSpace.data() + aAddress, &aValue, 4);
}

uint32_t Device::ReadU32(uint64_t aAddress) {
    std::lock_guard<std::mutex> hold(mLock);
    return U32(aAddress);
}

double Device::ReadF64(uint64_t aAddress) {
    std::lock_guard<std::mutex> hold(mLock);
    return F64(aAddress);
}

uint32_t Device::PacketSize() {
    std::lock_guard<std::mutex> hold(mLock);
    return gev::PacketSize(mSpace.data());
}

// A write of the SCPS register's low half, where the packet size lies: its
// flags stay.
GC_ERROR Device::SetPacketSize(uint64_t aSize) {
    if (aSize > 0xFFFF) return GC_ERR_INVALID_PARAMETER;
    uint8_t field[2];
    StoreBigEndian(field, aSize, sizeof(field));
    size_t size = sizeof(field);
    return Write(gev::kPacketSize + 2, field, &size);
}

std::string Device::UserName() {
    std::lock_guard<std::mutex> hold(mLock);
    if (!mConfig.document.empty()) return {};
    return gev::GetText(mSpace.data() + gev::kUserName, gev::kSerialLength);
}

uint32_t Device::U32(uint64_t aAddress) const {
    uint32_t value;
    memcpy(&value, mSpace.data() + aAddress, 4);
    return value;
}

double Device::F64(uint64_t aAddress) const {
    double value;
    memcpy(&value, mSpace.data() + aAddress, 8);
    return value;
}

bool Device::ChunksOnLocked() const {
    if (!U32(reg::kChunkMode)) return false;
    for (uint32_t selector = 1; selector < chunk::kSelectors; ++selector)
        if (U32(reg::kChunkEnable + 4 * selector)) return true;
    return false;
}

bool Device::ChunksOn() {
    std::lock_guard<std::mutex> hold(mLock);
    return ChunksOnLocked();
}

void Device::UpdatePayload() {
    const tPixelFormat* f = FindFormat(U32(reg::kPixelFormat));
    uint64_t payload =
        f ? static_cast<uint64_t>(U32(reg::kWidth)) * U32(reg::kHeight) * f->bitsPerPixel / 8 : 0;
    if (ChunksOnLocked()) payload += chunk::kOverhead;
    WriteU32(reg::kPayloadSize, static_cast<uint32_t>(payload));
}

GC_ERROR Device::Read(uint64_t aAddress, void* aBuffer, size_t* aSize) {
    if (!aBuffer || !aSize) return GC_ERR_INVALID_PARAMETER;
    if (aAddress > mSpace.size() || *aSize > mSpace.size() - aAddress)
        return GC_ERR_INVALID_ADDRESS;
    std::lock_guard<std::mutex> hold(mLock);
    if (!mPlugged) return GC_ERR_TIMEOUT;
    memcpy(aBuffer, mSpace.data() + aAddress, *aSize);
    return GC_ERR_SUCCESS;
}

GC_ERROR Device::Write(uint64_t aAddress, const void* aBuffer, size_t* aSize) {
    if (!aBuffer || !aSize) return GC_ERR_INVALID_PARAMETER;
    if (aAddress > mSpace.size() || *aSize > mSpace.size() - aAddress)
        return GC_ERR_INVALID_ADDRESS;
    {
        std::lock_guard<std::mutex> hold(mLock);
        if (mReadOnly) return GC_ERR_ACCESS_DENIED;
        if (!mPlugged) return GC_ERR_TIMEOUT;
        if (IsReadOnly(aAddress, *aSize)) return GC_ERR_ACCESS_DENIED;
        memcpy(mSpace.data() + aAddress, aBuffer, *aSize);
        Apply(aAddress, *aSize);
    }
    return GC_ERR_SUCCESS;
}

bool Device::IsReadOnly(uint64_t aAddress, size_t aSize) const {
    // What the camera decides itself: who it is and where it is on the
    // network (the bootstrap registers but those a consumer sets), its
    // sensor, the payload it sends, its counters; and the document.
    struct tRange {
        uint64_t address, length;
    };
    static constexpr tRange kReadOnly[] = {{reg::kPayloadSize, 4},
                                           {reg::kSensorWidth, 8},
                                           {reg::kFrameCounter, 4},
                                           {reg::kTemperature, 4}};
    auto overlaps = [&](uint64_t aStart, uint64_t aLength) {
        return aAddress < aStart + aLength && aStart < aAddress + aSize;
    };
    if (overlaps(reg::kDocument, reg::kSpaceSize - reg::kDocument)) return true;
    if (!mConfig.document.empty()) return false; // another document: a plain register space
    if (overlaps(0, gev::kEnd) && !gev::Writable(aAddress, aSize)) return true;
    for (const tRange& range : kReadOnly)
        if (overlaps(range.address, range.length)) return true;
    return false;
}

// With the lock held.
void Device::Apply(uint64_t aAddress, size_t aSize) {
    auto touches = [&](uint64_t aRegister) {
        return aAddress <= aRegister && aRegister < aAddress + aSize;
    };
    if (!mConfig.document.empty()) return;
    if (touches(reg::kWidth) || touches(reg::kHeight) || touches(reg::kPixelFormat) ||
        touches(reg::kChunkMode) ||
        (aAddress < reg::kChunkEnable + 4 * chunk::kSelectors &&
         reg::kChunkEnable < aAddress + aSize))
        UpdatePayload();
    if (gev::TouchesSettings(aAddress, aSize)) {
        const gev::tNetworkSettings settings = gev::ReadSettings(mSpace.data());
        gev::WriteSettings(mSpace.data(), settings);
        Producer().networks.Keep(mConfig.id, settings);
    }
    if (touches(reg::kAcquisitionStart)) mAcquiring.store(true);
    if (touches(reg::kAcquisitionStop)) mAcquiring.store(false);
    if (touches(reg::kReset)) {
        mLock.unlock();
        Reset();
        mLock.lock();
    }
}

bool Device::Open(int32_t aFlags) {
    std::lock_guard<std::mutex> hold(mLock);
    if (mOpen || !mPlugged) return false;
    mOpen = true;
    mReadOnly = aFlags == DEVICE_ACCESS_READONLY;
    return true;
}

void Device::Close() {
    mStream->Close();
    std::lock_guard<std::mutex> hold(mLock);
    mOpen = false;
}

chunk::tValues Device::CountFrame() {
    std::lock_guard<std::mutex> hold(mLock);
    chunk::tValues values;
    values.frameCount = U32(reg::kFrameCounter) + 1;
    WriteU32(reg::kFrameCounter, values.frameCount);
    values.userValue = U32(reg::kUserValue);
    values.exposure = static_cast<uint32_t>(std::lround(F64(reg::kExposure)));
    values.gain = static_cast<uint32_t>(std::lround(F64(reg::kGain)));
    values.levels = (U32(reg::kLineStatus) & 0xFFFF) << 16 | (U32(reg::kUserOutputs) & 0x3);
    return values;
}

void Device::FrameEvents(uint64_t aFrameId, uint64_t aTimestamp) {
    bool exposureEnd, frameStart;
    {
        std::lock_guard<std::mutex> hold(mLock);
        if (!mConfig.document.empty()) return;
        exposureEnd = U32(reg::kEventNotification) != 0;
        frameStart = U32(reg::kEventNotification + 4) != 0;
    }
    const uint32_t block = static_cast<uint32_t>(aFrameId);
    if (frameStart) mRemoteEvents.Push(RemoteEventData(kEventFrameStart, block, aTimestamp));
    if (exposureEnd) mRemoteEvents.Push(RemoteEventData(kEventExposureEnd, block, aTimestamp));
}

void Device::SetPlugged(bool aPlugged) {
    mPlugged.store(aPlugged);
}

int32_t Device::AccessStatus() {
    std::lock_guard<std::mutex> hold(mLock);
    if (mOpen)
        return mReadOnly ? DEVICE_ACCESS_STATUS_OPEN_READONLY : DEVICE_ACCESS_STATUS_OPEN_READWRITE;
    return mConfig.access;
}

} // namespace sim
