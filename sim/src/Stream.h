// A camera's data stream: announced buffers, the input queue the camera
// fills from, the output the consumer takes back, and the thread that makes
// frames while acquisition runs.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "ChunkLayout.h"
#include "Event.h"
#include "FrameGenerator.h"
#include "Port.h"

namespace sim {

class Device;

struct Buffer {
    uint8_t* base = nullptr;
    size_t size = 0;
    void* user = nullptr;
    bool owned = false; // allocated by the producer
    bool queued = false;
    bool acquiring = false;
    bool newData = false;
    bool incomplete = false;
    int32_t status = 0; // 0, or GC_ERR_BUFFER_TOO_SMALL_QRX
    uint64_t frameId = 0;
    uint64_t timestamp = 0;
    size_t filled = 0;
    size_t dataSize = 0;  // what the frame needed
    size_t imageSize = 0; // the image alone
    bool chunks = false;  // a chunk block follows the image
    uint32_t width = 0, height = 0, offsetX = 0, offsetY = 0, pixelFormat = 0;
};

class Stream {
public:
    explicit Stream(Device* aDevice);
    ~Stream();

    static const char* Id() { return "Stream0"; }
    // Chunks in a buffer: the image and the simulator's.
    static constexpr size_t kChunksMax = 2;
    Device* Parent() const { return mDevice; }
    // The type of the interface the camera hangs from.
    const std::string& TransportType() const;
    // False when it is open already: one opener wins.
    bool TryOpen() { return !mOpen.exchange(true); }
    // Closing revokes every buffer.
    void Close();

    GC_ERROR Announce(void* aBase, size_t aSize, void* aUser, bool aOwned, BUFFER_HANDLE* aHandle);
    GC_ERROR Revoke(BUFFER_HANDLE aHandle, void** aBase, void** aUser);
    GC_ERROR Queue(BUFFER_HANDLE aHandle);
    GC_ERROR Flush(int32_t aOperation);
    GC_ERROR Start(uint64_t aCount);
    GC_ERROR Stop();
    GC_ERROR Info(int32_t aCommand, INFO_DATATYPE* aType, void* aBuffer, size_t* aSize);
    GC_ERROR BufferInfo(BUFFER_HANDLE aHandle, int32_t aCommand, INFO_DATATYPE* aType,
                        void* aBuffer, size_t* aSize);
    GC_ERROR Bundle(BUFFER_HANDLE aHandle, S_BUFFER_INFO_BUNDLE* aBundle);
    // Every buffer holds one part: the image.
    GC_ERROR PartCount(BUFFER_HANDLE aHandle, uint32_t* aCount);
    GC_ERROR PartInfo(BUFFER_HANDLE aHandle, uint32_t aIndex, int32_t aCommand,
                      INFO_DATATYPE* aType, void* aBuffer, size_t* aSize);
    GC_ERROR Chunks(BUFFER_HANDLE aHandle, SINGLE_CHUNK_DATA* aChunks, size_t* aCount);
    GC_ERROR BufferAt(uint32_t aIndex, BUFFER_HANDLE* aHandle);
    bool Owns(BUFFER_HANDLE aHandle);

    // What the stream has done, as its infos and its document report it.
    struct tCounts {
        uint64_t delivered = 0, underruns = 0, started = 0;
        size_t announced = 0, queued = 0, awaiting = 0;
        bool grabbing = false;
    };
    tCounts Counts();
    ModulePort& Module() { return *mModule; }

    Event* NewBuffers() { return &mNewBuffers; }
    // The next aCount frames come out incomplete (a test hook).
    void MakeIncomplete(uint32_t aCount) { mIncomplete.store(aCount); }

private:
    // What one delivery put into a buffer.
    struct tFilled {
        uint64_t frameId = 0;
        uint64_t timestamp = 0;
        size_t dataSize = 0;
        size_t imageSize = 0;
        bool chunks = false;
        size_t filled = 0;
        int32_t status = 0;
        bool incomplete = false;
    };

    Buffer* Find(BUFFER_HANDLE aHandle);
    GC_ERROR BufferInfo(const Buffer& aBuffer, int32_t aCommand, INFO_DATATYPE* aType, void* aOut,
                        size_t* aSize);
    void Run();
    tFilled Deliver(uint8_t* aBase, size_t aSize, const FrameGenerator& aGenerator, bool aChunks,
                    const chunk::tValues& aValues);

    Device* mDevice;
    std::atomic<bool> mOpen{false};
    std::mutex mLock;
    std::condition_variable mChanged;
    std::list<std::unique_ptr<Buffer>> mBuffers;
    std::deque<Buffer*> mInput;
    std::deque<Buffer*> mOutput;
    std::thread mThread;
    bool mRunning = false;
    uint64_t mToAcquire = 0;
    uint64_t mDelivered = 0;
    uint64_t mUnderruns = 0;
    uint64_t mStarted = 0;
    uint64_t mNextFrameId = 1;
    std::atomic<uint32_t> mIncomplete{0};
    Event mNewBuffers;
    std::unique_ptr<ModulePort> mModule;
};

} // namespace sim
