#include "Stream.h"

#include <chrono>
#include <cstdlib>
#include <cstring>

#include "BigEndian.h"
#include "Device.h"
#include "Info.h"
#include "Modules.h"

namespace sim {

namespace {
// The chunk block after an image of aImage bytes: the image's tag, the
// simulator's chunk and its tag.
void WriteChunks(uint8_t* aBase, size_t aImage, const chunk::tValues& aValues, uint64_t aFrameId,
                 uint64_t aTimestamp) {
    uint8_t* tag = aBase + aImage;
    StoreBigEndian(tag, chunk::kImageId, 4);
    StoreBigEndian(tag + 4, aImage, 4);
    uint8_t* data = tag + chunk::kTag;
    memset(data, 0, chunk::kSimLength);
    StoreBigEndian(data + chunk::kFrameCount, aValues.frameCount, 4);
    StoreBigEndian(data + chunk::kUserValue, aValues.userValue, 4);
    StoreBigEndian(data + chunk::kExposure, aValues.exposure, 4);
    StoreBigEndian(data + chunk::kGain, aValues.gain, 4);
    StoreBigEndian(data + chunk::kLevels, aValues.levels, 4);
    StoreBigEndian(data + chunk::kFrameId, aFrameId, 8);
    StoreBigEndian(data + chunk::kTimestamp, aTimestamp, 8);
    StoreBigEndian(data + chunk::kSimLength, chunk::kSimId, 4);
    StoreBigEndian(data + chunk::kSimLength + 4, chunk::kSimLength, 4);
}
} // namespace

Stream::Stream(Device* aDevice)
    : mDevice(aDevice), mNewBuffers(EVENT_NEW_BUFFER, this, sizeof(EVENT_NEW_BUFFER_DATA)),
      mModule(StreamModule(*this)) {}

Stream::~Stream() {
    Stop();
    for (auto& buffer : mBuffers)
        if (buffer->owned) free(buffer->base);
}

void Stream::Close() {
    Stop();
    std::lock_guard<std::mutex> hold(mLock);
    mOpen.store(false);
    mInput.clear();
    mOutput.clear();
    for (auto& buffer : mBuffers)
        if (buffer->owned) free(buffer->base);
    mBuffers.clear();
    mNewBuffers.Flush();
}

Buffer* Stream::Find(BUFFER_HANDLE aHandle) {
    for (auto& buffer : mBuffers)
        if (buffer.get() == aHandle) return buffer.get();
    return nullptr;
}

const std::string& Stream::TransportType() const {
    return mDevice->TransportType();
}

bool Stream::Owns(BUFFER_HANDLE aHandle) {
    std::lock_guard<std::mutex> hold(mLock);
    return Find(aHandle) != nullptr;
}

GC_ERROR Stream::Announce(void* aBase, size_t aSize, void* aUser, bool aOwned,
                          BUFFER_HANDLE* aHandle) {
    if (!aBase || aSize == 0 || !aHandle) return GC_ERR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> hold(mLock);
    for (auto& buffer : mBuffers)
        if (buffer->base == aBase) return GC_ERR_RESOURCE_IN_USE;
    auto buffer = std::make_unique<Buffer>();
    buffer->base = static_cast<uint8_t*>(aBase);
    buffer->size = aSize;
    buffer->user = aUser;
    buffer->owned = aOwned;
    *aHandle = buffer.get();
    mBuffers.push_back(std::move(buffer));
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::Revoke(BUFFER_HANDLE aHandle, void** aBase, void** aUser) {
    std::lock_guard<std::mutex> hold(mLock);
    Buffer* buffer = Find(aHandle);
    if (!buffer) return GC_ERR_INVALID_HANDLE;
    if (buffer->queued || buffer->acquiring) return GC_ERR_BUSY;
    std::erase(mOutput, buffer);
    if (aBase) *aBase = buffer->owned ? nullptr : buffer->base;
    if (aUser) *aUser = buffer->user;
    if (buffer->owned) free(buffer->base);
    mBuffers.remove_if([&](const std::unique_ptr<Buffer>& b) { return b.get() == buffer; });
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::Queue(BUFFER_HANDLE aHandle) {
    {
        std::lock_guard<std::mutex> hold(mLock);
        Buffer* buffer = Find(aHandle);
        if (!buffer) return GC_ERR_INVALID_HANDLE;
        if (buffer->queued) return GC_ERR_RESOURCE_IN_USE;
        std::erase(mOutput, buffer);
        buffer->queued = true;
        buffer->newData = false;
        mInput.push_back(buffer);
    }
    mChanged.notify_all();
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::Flush(int32_t aOperation) {
    std::lock_guard<std::mutex> hold(mLock);
    switch (aOperation) {
    case ACQ_QUEUE_INPUT_TO_OUTPUT:
        for (Buffer* b : mInput) {
            b->queued = false;
            mOutput.push_back(b);
            EVENT_NEW_BUFFER_DATA data{b, b->user};
            mNewBuffers.Push(&data, sizeof(data));
        }
        mInput.clear();
        break;
    case ACQ_QUEUE_OUTPUT_DISCARD:
        mOutput.clear();
        break;
    case ACQ_QUEUE_ALL_TO_INPUT:
    case ACQ_QUEUE_UNQUEUED_TO_INPUT:
        if (aOperation == ACQ_QUEUE_ALL_TO_INPUT) mOutput.clear();
        for (auto& b : mBuffers)
            if (!b->queued) {
                b->queued = true;
                mInput.push_back(b.get());
            }
        std::erase_if(mOutput, [](Buffer* b) { return b->queued; });
        break;
    case ACQ_QUEUE_ALL_DISCARD:
        for (Buffer* b : mInput)
            b->queued = false;
        mInput.clear();
        mOutput.clear();
        mNewBuffers.Flush();
        break;
    default:
        return GC_ERR_INVALID_PARAMETER;
    }
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::Start(uint64_t aCount) {
    std::lock_guard<std::mutex> hold(mLock);
    if (mRunning) return GC_ERR_RESOURCE_IN_USE;
    // A run that ended by its count has left the lock for good.
    if (mThread.joinable()) mThread.join();
    mRunning = true;
    mToAcquire = aCount;
    mThread = std::thread([this] { Run(); });
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::Stop() {
    {
        std::lock_guard<std::mutex> hold(mLock);
        if (!mRunning && !mThread.joinable()) return GC_ERR_RESOURCE_IN_USE;
        mRunning = false;
    }
    mChanged.notify_all();
    if (mThread.joinable() && mThread.get_id() != std::this_thread::get_id()) mThread.join();
    return GC_ERR_SUCCESS;
}

// Writes one frame (and its chunk block) into a buffer's memory, unlocked:
// the buffer belongs to the camera meanwhile. What the buffer says about it
// is set afterwards, under the lock.
Stream::tFilled Stream::Deliver(uint8_t* aBase, size_t aSize, const FrameGenerator& aGenerator,
                                bool aChunks, const chunk::tValues& aValues) {
    tFilled f;
    f.frameId = mNextFrameId++;
    f.timestamp = TimestampNs();
    f.imageSize = aGenerator.ImageSize();
    f.dataSize = f.imageSize + (aChunks ? chunk::kOverhead : 0);
    f.status = aSize < f.dataSize ? GC_ERR_BUFFER_TOO_SMALL_QRX : 0;
    f.filled = aGenerator.Fill(aBase, aSize, f.frameId);
    if (aChunks && aSize >= f.dataSize) {
        WriteChunks(aBase, f.imageSize, aValues, f.frameId, f.timestamp);
        f.filled = f.dataSize;
        f.chunks = true;
    }
    f.incomplete = f.status != 0;
    uint32_t incomplete = mIncomplete.load();
    while (incomplete && !mIncomplete.compare_exchange_weak(incomplete, incomplete - 1)) {
    }
    if (incomplete) {
        f.incomplete = true;
        f.filled /= 2;
    }
    return f;
}

void Stream::Run() {
    Device* device = mDevice;
    FrameGenerator generator;
    generator.Configure(device->ReadU32(reg::kPixelFormat), device->ReadU32(reg::kWidth),
                        device->ReadU32(reg::kHeight));
    const bool chunks = device->ChunksOn();
    const uint32_t width = device->ReadU32(reg::kWidth), height = device->ReadU32(reg::kHeight);
    const uint32_t offsetX = device->ReadU32(reg::kOffsetX),
                   offsetY = device->ReadU32(reg::kOffsetY);
    const uint32_t format = device->ReadU32(reg::kPixelFormat);
    auto next = std::chrono::steady_clock::now();
    uint64_t acquired = 0;
    std::unique_lock<std::mutex> hold(mLock);
    while (mRunning && (mToAcquire == GENTL_INFINITE || acquired < mToAcquire)) {
        const double rate = device->ReadF64(reg::kFrameRate);
        if (rate > 0) {
            next += std::chrono::nanoseconds(static_cast<int64_t>(1e9 / rate));
            if (mChanged.wait_until(hold, next, [&] { return !mRunning; })) break;
        }
        // Frames flow only while the camera itself acquires.
        if (!device->Acquiring() || mInput.empty()) {
            if (mInput.empty()) ++mUnderruns;
            mChanged.wait_for(hold, std::chrono::milliseconds(5));
            if (rate <= 0) next = std::chrono::steady_clock::now();
            continue;
        }
        Buffer* buffer = mInput.front();
        mInput.pop_front();
        buffer->queued = false;
        buffer->acquiring = true;
        ++mStarted;
        hold.unlock();
        const chunk::tValues values = device->CountFrame();
        const tFilled filled = Deliver(buffer->base, buffer->size, generator, chunks, values);
        device->FrameEvents(filled.frameId, filled.timestamp);
        hold.lock();
        buffer->acquiring = false;
        buffer->newData = true;
        buffer->frameId = filled.frameId;
        buffer->timestamp = filled.timestamp;
        buffer->dataSize = filled.dataSize;
        buffer->imageSize = filled.imageSize;
        buffer->chunks = filled.chunks;
        buffer->filled = filled.filled;
        buffer->status = filled.status;
        buffer->incomplete = filled.incomplete;
        buffer->width = width;
        buffer->height = height;
        buffer->offsetX = offsetX;
        buffer->offsetY = offsetY;
        buffer->pixelFormat = format;
        mOutput.push_back(buffer);
        ++mDelivered;
        ++acquired;
        EVENT_NEW_BUFFER_DATA data{buffer, buffer->user};
        mNewBuffers.Push(&data, sizeof(data));
    }
    mRunning = false;
}

Stream::tCounts Stream::Counts() {
    std::lock_guard<std::mutex> hold(mLock);
    return {mDelivered,    mUnderruns,     mStarted, mBuffers.size(),
            mInput.size(), mOutput.size(), mRunning};
}

GC_ERROR Stream::Info(int32_t aCommand, INFO_DATATYPE* aType, void* aBuffer, size_t* aSize) {
    const tCounts counts = Counts();
    auto size = [&](size_t aValue) {
        return ReplyValue(INFO_DATATYPE_SIZET, aValue, aType, aBuffer, aSize);
    };
    auto number = [&](uint64_t aValue) {
        return ReplyValue(INFO_DATATYPE_UINT64, aValue, aType, aBuffer, aSize);
    };
    switch (aCommand) {
    case STREAM_INFO_ID:
        return ReplyText(Id(), aType, aBuffer, aSize);
    case STREAM_INFO_NUM_DELIVERED:
        return number(counts.delivered);
    case STREAM_INFO_NUM_UNDERRUN:
        return number(counts.underruns);
    case STREAM_INFO_NUM_ANNOUNCED:
        return size(counts.announced);
    case STREAM_INFO_NUM_QUEUED:
        return size(counts.queued);
    case STREAM_INFO_NUM_AWAIT_DELIVERY:
        return size(counts.awaiting);
    case STREAM_INFO_NUM_STARTED:
        return number(counts.started);
    case STREAM_INFO_PAYLOAD_SIZE:
        return size(mDevice->ReadU32(reg::kPayloadSize));
    case STREAM_INFO_IS_GRABBING:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{counts.grabbing}, aType, aBuffer, aSize);
    case STREAM_INFO_DEFINES_PAYLOADSIZE:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{1}, aType, aBuffer, aSize);
    case STREAM_INFO_TLTYPE:
        return ReplyText(TransportType(), aType, aBuffer, aSize);
    case STREAM_INFO_NUM_CHUNKS_MAX:
        return size(kChunksMax);
    case STREAM_INFO_BUF_ANNOUNCE_MIN:
    case STREAM_INFO_BUF_ALIGNMENT:
        return size(1);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

GC_ERROR Stream::BufferInfo(BUFFER_HANDLE aHandle, int32_t aCommand, INFO_DATATYPE* aType,
                            void* aBuffer, size_t* aSize) {
    std::lock_guard<std::mutex> hold(mLock);
    Buffer* b = Find(aHandle);
    if (!b) return GC_ERR_INVALID_HANDLE;
    return BufferInfo(*b, aCommand, aType, aBuffer, aSize);
}

// With the lock held.
GC_ERROR Stream::BufferInfo(const Buffer& b, int32_t aCommand, INFO_DATATYPE* aType, void* aBuffer,
                            size_t* aSize) {
    auto size = [&](size_t aValue) {
        return ReplyValue(INFO_DATATYPE_SIZET, aValue, aType, aBuffer, aSize);
    };
    auto flag = [&](bool aValue) {
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{aValue}, aType, aBuffer, aSize);
    };
    auto number = [&](uint64_t aValue) {
        return ReplyValue(INFO_DATATYPE_UINT64, aValue, aType, aBuffer, aSize);
    };
    switch (aCommand) {
    case BUFFER_INFO_BASE:
        return ReplyValue(INFO_DATATYPE_PTR, static_cast<void*>(b.base), aType, aBuffer, aSize);
    case BUFFER_INFO_SIZE:
        return size(b.size);
    case BUFFER_INFO_USER_PTR:
        return ReplyValue(INFO_DATATYPE_PTR, b.user, aType, aBuffer, aSize);
    case BUFFER_INFO_TIMESTAMP: // ticks of a 1 GHz clock
    case BUFFER_INFO_TIMESTAMP_NS:
        return number(b.timestamp);
    case BUFFER_INFO_NEW_DATA:
        return flag(b.newData);
    case BUFFER_INFO_IS_QUEUED:
        return flag(b.queued);
    case BUFFER_INFO_IS_ACQUIRING:
        return flag(b.acquiring);
    case BUFFER_INFO_IS_INCOMPLETE:
        return flag(b.incomplete);
    case BUFFER_INFO_TLTYPE:
        return ReplyText(TransportType(), aType, aBuffer, aSize);
    case BUFFER_INFO_SIZE_FILLED:
        return size(b.filled);
    case BUFFER_INFO_WIDTH:
        return size(b.width);
    case BUFFER_INFO_HEIGHT:
    case BUFFER_INFO_DELIVERED_IMAGEHEIGHT:
        return size(b.height);
    case BUFFER_INFO_XOFFSET:
        return size(b.offsetX);
    case BUFFER_INFO_YOFFSET:
        return size(b.offsetY);
    case BUFFER_INFO_XPADDING:
    case BUFFER_INFO_YPADDING:
    case BUFFER_INFO_IMAGEOFFSET:
        return size(0);
    case BUFFER_INFO_FRAMEID:
        return number(b.frameId);
    case BUFFER_INFO_IMAGEPRESENT:
        return flag(true);
    case BUFFER_INFO_PAYLOADTYPE:
        return size(PAYLOAD_TYPE_IMAGE);
    case BUFFER_INFO_PIXELFORMAT:
        return number(b.pixelFormat);
    case BUFFER_INFO_PIXELFORMAT_NAMESPACE:
        return number(PIXELFORMAT_NAMESPACE_PFNC_32BIT);
    case BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE: // the whole payload is chunks, the image first
        return size(b.chunks ? b.filled : 0);
    case BUFFER_INFO_CHUNKLAYOUTID: // one layout: the simulator's chunk after the image
        return number(b.chunks ? 1 : 0);
    case BUFFER_INFO_FILENAME: // no file payloads
        return ReplyText("", aType, aBuffer, aSize);
    case BUFFER_INFO_PIXEL_ENDIANNESS:
        return ReplyValue(INFO_DATATYPE_INT32, int32_t{PIXELENDIANNESS_LITTLE}, aType, aBuffer,
                          aSize);
    case BUFFER_INFO_DATA_SIZE:
        return size(b.dataSize);
    case BUFFER_INFO_DATA_LARGER_THAN_BUFFER:
        return flag(b.dataSize > b.size);
    case BUFFER_INFO_CONTAINS_CHUNKDATA:
        return flag(b.chunks);
    case BUFFER_INFO_BUNDLE_QRX: {
        S_BUFFER_INFO_BUNDLE bundle{};
        bundle.ValidFlags = BUFFER_VALID_TIMESTAMP_QRX | BUFFER_VALID_WIDTH_QRX |
                            BUFFER_VALID_HEIGHT_QRX | BUFFER_VALID_XOFFSET_QRX |
                            BUFFER_VALID_YOFFSET_QRX;
        bundle.Timestamp = b.timestamp;
        bundle.FrameID = b.frameId;
        bundle.Status = b.status != 0 ? b.status : (b.incomplete ? GC_ERR_IO : 0);
        bundle.Width = b.width;
        bundle.Height = b.height;
        bundle.XOffset = b.offsetX;
        bundle.YOffset = b.offsetY;
        // The ancillary block begins where the simulator's chunk data does.
        const size_t image = b.imageSize + (b.chunks ? chunk::kTag : 0);
        bundle.ImageSize = static_cast<uint32_t>(image);
        bundle.PixelFormat = b.pixelFormat;
        bundle.AncillarySize = static_cast<uint32_t>(b.chunks ? b.filled - image : 0);
        return Reply(INFO_DATATYPE_BUFFER, &bundle, sizeof(bundle), aType, aBuffer, aSize);
    }
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

GC_ERROR Stream::Bundle(BUFFER_HANDLE aHandle, S_BUFFER_INFO_BUNDLE* aBundle) {
    size_t size = sizeof(*aBundle);
    return BufferInfo(aHandle, BUFFER_INFO_BUNDLE_QRX, nullptr, aBundle, &size);
}

GC_ERROR Stream::PartCount(BUFFER_HANDLE aHandle, uint32_t* aCount) {
    if (!aCount) return GC_ERR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> hold(mLock);
    if (!Find(aHandle)) return GC_ERR_INVALID_HANDLE;
    *aCount = 1;
    return GC_ERR_SUCCESS;
}

GC_ERROR Stream::PartInfo(BUFFER_HANDLE aHandle, uint32_t aIndex, int32_t aCommand,
                          INFO_DATATYPE* aType, void* aBuffer, size_t* aSize) {
    std::lock_guard<std::mutex> hold(mLock);
    Buffer* b = Find(aHandle);
    if (!b) return GC_ERR_INVALID_HANDLE;
    if (aIndex != 0) return GC_ERR_INVALID_INDEX;
    // The one part is the image: most answers are the buffer's.
    switch (aCommand) {
    case BUFFER_PART_INFO_DATA_SIZE:
        return ReplyValue(INFO_DATATYPE_SIZET, b->imageSize, aType, aBuffer, aSize);
    case BUFFER_PART_INFO_DATA_TYPE:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{PART_DATATYPE_2D_IMAGE}, aType, aBuffer,
                          aSize);
    case BUFFER_PART_INFO_SOURCE_ID:
        return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{0}, aType, aBuffer, aSize);
    default:
        break;
    }
    static const std::pair<int32_t, int32_t> kSameAsBuffer[] = {
        {BUFFER_PART_INFO_BASE, BUFFER_INFO_BASE},
        {BUFFER_PART_INFO_DATA_FORMAT, BUFFER_INFO_PIXELFORMAT},
        {BUFFER_PART_INFO_DATA_FORMAT_NAMESPACE, BUFFER_INFO_PIXELFORMAT_NAMESPACE},
        {BUFFER_PART_INFO_WIDTH, BUFFER_INFO_WIDTH},
        {BUFFER_PART_INFO_HEIGHT, BUFFER_INFO_HEIGHT},
        {BUFFER_PART_INFO_XOFFSET, BUFFER_INFO_XOFFSET},
        {BUFFER_PART_INFO_YOFFSET, BUFFER_INFO_YOFFSET},
        {BUFFER_PART_INFO_XPADDING, BUFFER_INFO_XPADDING},
        {BUFFER_PART_INFO_DELIVERED_IMAGEHEIGHT, BUFFER_INFO_DELIVERED_IMAGEHEIGHT}};
    for (const auto& [part, buffer] : kSameAsBuffer)
        if (part == aCommand) return BufferInfo(*b, buffer, aType, aBuffer, aSize);
    return GC_ERR_NOT_IMPLEMENTED;
}

GC_ERROR Stream::Chunks(BUFFER_HANDLE aHandle, SINGLE_CHUNK_DATA* aChunks, size_t* aCount) {
    if (!aCount) return GC_ERR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> hold(mLock);
    Buffer* b = Find(aHandle);
    if (!b) return GC_ERR_INVALID_HANDLE;
    if (!b->chunks) return GC_ERR_NO_DATA;
    const SINGLE_CHUNK_DATA chunks[kChunksMax] = {
        {chunk::kImageId, 0, b->imageSize},
        {chunk::kSimId, static_cast<ptrdiff_t>(b->imageSize + chunk::kTag), chunk::kSimLength}};
    const size_t count = sizeof(chunks) / sizeof(chunks[0]);
    const bool fits = *aCount >= count;
    if (aChunks && fits) memcpy(aChunks, chunks, sizeof(chunks));
    *aCount = count;
    return aChunks && !fits ? GC_ERR_BUFFER_TOO_SMALL : GC_ERR_SUCCESS;
}

GC_ERROR Stream::BufferAt(uint32_t aIndex, BUFFER_HANDLE* aHandle) {
    if (!aHandle) return GC_ERR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> hold(mLock);
    if (aIndex >= mBuffers.size()) return GC_ERR_INVALID_INDEX;
    auto it = mBuffers.begin();
    std::advance(it, aIndex);
    *aHandle = it->get();
    return GC_ERR_SUCCESS;
}

} // namespace sim
