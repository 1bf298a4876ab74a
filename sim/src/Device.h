// A simulated camera: its register space behind the device port, the
// document the port serves, and its one data stream.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ChunkLayout.h"
#include "Event.h"
#include "Port.h"
#include "Topology.h"

namespace sim {

class Interface;
class Stream;

// Register addresses of the built-in document (little-endian), after the
// GigE Vision bootstrap registers (Bootstrap.h).
namespace reg {
constexpr uint64_t kWidth = 0x1000, kHeight = 0x1004, kOffsetX = 0x1008, kOffsetY = 0x100C;
constexpr uint64_t kPixelFormat = 0x1010, kPayloadSize = 0x1014;
constexpr uint64_t kSensorWidth = 0x1018, kSensorHeight = 0x101C;
constexpr uint64_t kAcquisitionStart = 0x1020, kAcquisitionStop = 0x1024;
constexpr uint64_t kFrameRate = 0x1028, kExposure = 0x1030, kGain = 0x1038;
constexpr uint64_t kChunkMode = 0x1048, kFrameCounter = 0x104C, kTLParamsLocked = 0x1050;
constexpr uint64_t kEventSelector = 0x1060, kTemperature = 0x1070, kTLType = 0x1078;
constexpr uint64_t kReset = 0x107C, kUserOutputs = 0x1080, kLineStatus = 0x1090;
constexpr uint64_t kChunkSelector = 0x10B0, kChunkEnable = 0x10C0; // one word per selector
constexpr uint64_t kUserValue = 0x10E0;
constexpr uint64_t kEventNotification = 0x1200; // one word per event, from id 40000
constexpr uint64_t kDocument = 0x100000;
constexpr uint64_t kSpaceSize = 0x400000; // room for a 3 MiB document
} // namespace reg

// The cameras' timestamp clock: nanoseconds of the monotonic clock, so
// DEVICE_INFO_TIMESTAMP_FREQUENCY is 1 GHz.
uint64_t TimestampNs();

class Device;

// A camera's remote port: its register space and the document in it.
class RemotePort : public Port {
public:
    explicit RemotePort(Device& aDevice) : mDevice(aDevice) {}
    GC_ERROR Read(uint64_t aAddress, void* aBuffer, size_t* aSize) override;
    GC_ERROR Write(uint64_t aAddress, const void* aBuffer, size_t* aSize) override;
    tIdentity Identity() override;
    tDocument Document() override;

private:
    Device& mDevice;
};

// The events a camera sends on its own: their ids, as EventSelector numbers them.
constexpr uint32_t kEventExposureEnd = 40000, kEventFrameStart = 40001;

class Device {
public:
    Device(Interface* aParent, const tCameraConfig& aConfig);
    ~Device();

    const tCameraConfig& Config() const { return mConfig; }
    Interface* Parent() const { return mParent; }
    // The transport type of its interface.
    const std::string& TransportType() const;
    RemotePort& Remote() { return mRemote; }
    ModulePort& Module() { return *mModule; }
    GC_ERROR Info(DEVICE_INFO_CMD aCommand, INFO_DATATYPE* aType, void* aBuffer, size_t* aSize);
    // What a consumer named the camera in its bootstrap's user-defined name.
    std::string UserName();

    // Port access; the register space is kept below 4 GiB.
    GC_ERROR Read(uint64_t aAddress, void* aBuffer, size_t* aSize);
    GC_ERROR Write(uint64_t aAddress, const void* aBuffer, size_t* aSize);
    uint32_t ReadU32(uint64_t aAddress);
    double ReadF64(uint64_t aAddress);
    // The stream channel's packet size, as its SCPS register holds it.
    uint32_t PacketSize();
    GC_ERROR SetPacketSize(uint64_t aSize);

    // Open state; the handle is this object while open.
    bool Open(int32_t aFlags);
    void Close();
    int32_t AccessStatus();
    Stream* GetStream() const { return mStream.get(); }

    // Where the camera says its document lies. A test may make it misreport both,
    // to see how a consumer copes with a URL outside the register space.
    Port::tDocument Document();
    void ReportDocument(uint64_t aAddress, uint32_t aSize);

    // The camera acquires between its AcquisitionStart and AcquisitionStop.
    bool Acquiring() const { return mAcquiring.load(); }
    // Whether frames carry chunks: ChunkModeActive, and a chunk besides the image enabled.
    bool ChunksOn();
    // Counts a frame; gives the values its chunk carries.
    chunk::tValues CountFrame();
    // Sends the events whose notification is on for a frame taken at aTimestamp.
    void FrameEvents(uint64_t aFrameId, uint64_t aTimestamp);
    void SetPlugged(bool aPlugged);
    bool Plugged() const { return mPlugged.load(); }

    Event* RemoteEvents() { return &mRemoteEvents; }
    Event* Invalidations() { return &mInvalidations; }

private:
    void Reset();
    // Register values, with the lock held.
    uint32_t U32(uint64_t aAddress) const;
    double F64(uint64_t aAddress) const;
    void WriteU32(uint64_t aAddress, uint32_t aValue);
    Port::tDocument DocumentLocked() const;
    // Whether a write touches a register that only the camera sets, or the document.
    bool IsReadOnly(uint64_t aAddress, size_t aSize) const;
    // Applies what a register write means to the camera.
    void Apply(uint64_t aAddress, size_t aSize);
    void UpdatePayload();
    bool ChunksOnLocked() const;

    Interface* mParent;
    tCameraConfig mConfig;
    std::mutex mLock;
    std::vector<uint8_t> mSpace;
    std::vector<uint8_t> mDocument;
    std::array<uint8_t, 20> mDocumentHash{};
    uint64_t mReportedAddress = reg::kDocument;
    uint32_t mReportedSize = 0;
    std::unique_ptr<Stream> mStream;
    bool mOpen = false;
    bool mReadOnly = false;
    std::atomic<bool> mPlugged;
    std::atomic<bool> mAcquiring{false};
    Event mRemoteEvents;
    Event mInvalidations;
    RemotePort mRemote{*this};
    std::unique_ptr<ModulePort> mModule;
};

} // namespace sim
