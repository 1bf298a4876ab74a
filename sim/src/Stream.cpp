#include "Stream.h"

#include <chrono>
#include <cstdlib>
#include <cstring>

#include "Device.h"
#include "Info.h"
#include "Transport.h"

namespace sim {

namespace {
constexpr uint32_t kChunkId = 0x5A5A0001;
constexpr size_t kChunkBytes = 16; // frame id and timestamp

} // namespace

Stream::Stream(Device* aDevice)
    : mDevice(aDevice), mNewBuffers(EVENT_NEW_BUFFER, this, sizeof(EVENT_NEW_BUFFER_DATA)) {}

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
    return mDevice->Parent()->Config().type;
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
    mRunning = true;
    mToAcquire = aCount;
    ++mStarted;
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
                                bool aChunks) {
    tFilled f;
    f.frameId = mNextFrameId++;
    f.timestamp = TimestampNs();
    f.imageSize = aGenerator.ImageSize();
    const size_t payload = f.imageSize + (aChunks ? kChunkBytes : 0);
    f.status = aSize < payload ? GC_ERR_BUFFER_TOO_SMALL_QRX : 0;
    f.filled = aGenerator.Fill(aBase, aSize, f.frameId);
    if (aChunks && aSize >= payload) {
        memcpy(aBase + f.imageSize, &f.frameId, 8);
        memcpy(aBase + f.imageSize + 8, &f.timestamp, 8);
        f.filled = payload;
        f.chunkSize = kChunkBytes;
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
    const bool chunks = device->ReadU32(reg::kChunkMode) != 0;
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
        hold.unlock();
        const tFilled filled = Deliver(buffer->base, buffer->size, generator, chunks);
        device->CountFrame();
        hold.lock();
        buffer->acquiring = false;
        buffer->newData = true;
        buffer->frameId = filled.frameId;
        buffer->timestamp = filled.timestamp;
        buffer->imageSize = filled.imageSize;
        buffer->chunkSize = filled.chunkSize;
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

GC_ERROR Stream::Info(int32_t aCommand, INFO_DATATYPE* aType, void* aBuffer, size_t* aSize) {
    std::lock_guard<std::mutex> hold(mLock);
    switch (aCommand) {
    case STREAM_INFO_ID:
        return ReplyText(Id(), aType, aBuffer, aSize);
    case STREAM_INFO_NUM_DELIVERED:
        return ReplyValue(INFO_DATATYPE_UINT64, mDelivered, aType, aBuffer, aSize);
    case STREAM_INFO_NUM_UNDERRUN:
        return ReplyValue(INFO_DATATYPE_UINT64, mUnderruns, aType, aBuffer, aSize);
    case STREAM_INFO_NUM_ANNOUNCED:
        return ReplyValue(INFO_DATATYPE_SIZET, mBuffers.size(), aType, aBuffer, aSize);
    case STREAM_INFO_NUM_QUEUED:
        return ReplyValue(INFO_DATATYPE_SIZET, mInput.size(), aType, aBuffer, aSize);
    case STREAM_INFO_NUM_AWAIT_DELIVERY:
        return ReplyValue(INFO_DATATYPE_SIZET, mOutput.size(), aType, aBuffer, aSize);
    case STREAM_INFO_NUM_STARTED:
        return ReplyValue(INFO_DATATYPE_UINT64, mStarted, aType, aBuffer, aSize);
    case STREAM_INFO_PAYLOAD_SIZE:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{mDevice->ReadU32(reg::kPayloadSize)}, aType,
                          aBuffer, aSize);
    case STREAM_INFO_IS_GRABBING:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{mRunning}, aType, aBuffer, aSize);
    case STREAM_INFO_DEFINES_PAYLOADSIZE:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{1}, aType, aBuffer, aSize);
    case STREAM_INFO_TLTYPE:
        return ReplyText(TransportType(), aType, aBuffer, aSize);
    case STREAM_INFO_NUM_CHUNKS_MAX:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{1}, aType, aBuffer, aSize);
    case STREAM_INFO_BUF_ANNOUNCE_MIN:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{1}, aType, aBuffer, aSize);
    case STREAM_INFO_BUF_ALIGNMENT:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{1}, aType, aBuffer, aSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

GC_ERROR Stream::BufferInfo(BUFFER_HANDLE aHandle, int32_t aCommand, INFO_DATATYPE* aType,
                            void* aBuffer, size_t* aSize) {
    std::lock_guard<std::mutex> hold(mLock);
    Buffer* b = Find(aHandle);
    if (!b) return GC_ERR_INVALID_HANDLE;
    switch (aCommand) {
    case BUFFER_INFO_BASE:
        return ReplyValue(INFO_DATATYPE_PTR, static_cast<void*>(b->base), aType, aBuffer, aSize);
    case BUFFER_INFO_SIZE:
        return ReplyValue(INFO_DATATYPE_SIZET, b->size, aType, aBuffer, aSize);
    case BUFFER_INFO_USER_PTR:
        return ReplyValue(INFO_DATATYPE_PTR, b->user, aType, aBuffer, aSize);
    case BUFFER_INFO_TIMESTAMP:
        return ReplyValue(INFO_DATATYPE_UINT64, b->timestamp, aType, aBuffer, aSize);
    case BUFFER_INFO_NEW_DATA:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{b->newData}, aType, aBuffer, aSize);
    case BUFFER_INFO_IS_QUEUED:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{b->queued}, aType, aBuffer, aSize);
    case BUFFER_INFO_IS_ACQUIRING:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{b->acquiring}, aType, aBuffer, aSize);
    case BUFFER_INFO_IS_INCOMPLETE:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{b->incomplete}, aType, aBuffer, aSize);
    case BUFFER_INFO_TLTYPE:
        return ReplyText(TransportType(), aType, aBuffer, aSize);
    case BUFFER_INFO_SIZE_FILLED:
        return ReplyValue(INFO_DATATYPE_SIZET, b->filled, aType, aBuffer, aSize);
    case BUFFER_INFO_WIDTH:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{b->width}, aType, aBuffer, aSize);
    case BUFFER_INFO_HEIGHT:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{b->height}, aType, aBuffer, aSize);
    case BUFFER_INFO_XOFFSET:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{b->offsetX}, aType, aBuffer, aSize);
    case BUFFER_INFO_YOFFSET:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{b->offsetY}, aType, aBuffer, aSize);
    case BUFFER_INFO_XPADDING:
    case BUFFER_INFO_YPADDING:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{0}, aType, aBuffer, aSize);
    case BUFFER_INFO_FRAMEID:
        return ReplyValue(INFO_DATATYPE_UINT64, b->frameId, aType, aBuffer, aSize);
    case BUFFER_INFO_IMAGEPRESENT:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{1}, aType, aBuffer, aSize);
    case BUFFER_INFO_IMAGEOFFSET:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{0}, aType, aBuffer, aSize);
    case BUFFER_INFO_PAYLOADTYPE:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{PAYLOAD_TYPE_IMAGE}, aType, aBuffer, aSize);
    case BUFFER_INFO_PIXELFORMAT:
        return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{b->pixelFormat}, aType, aBuffer, aSize);
    case BUFFER_INFO_PIXELFORMAT_NAMESPACE:
        return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{PIXELFORMAT_NAMESPACE_PFNC_32BIT}, aType,
                          aBuffer, aSize);
    case BUFFER_INFO_DELIVERED_IMAGEHEIGHT:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{b->height}, aType, aBuffer, aSize);
    case BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE:
        return ReplyValue(INFO_DATATYPE_SIZET, b->chunkSize, aType, aBuffer, aSize);
    case BUFFER_INFO_BUNDLE_QRX: {
        if (aType) *aType = INFO_DATATYPE_BUFFER;
        if (!aSize) return GC_ERR_INVALID_PARAMETER;
        if (!aBuffer) {
            *aSize = sizeof(S_BUFFER_INFO_BUNDLE);
            return GC_ERR_SUCCESS;
        }
        if (*aSize < sizeof(S_BUFFER_INFO_BUNDLE)) return GC_ERR_BUFFER_TOO_SMALL;
        *aSize = sizeof(S_BUFFER_INFO_BUNDLE);
        S_BUFFER_INFO_BUNDLE bundle{};
        bundle.ValidFlags = BUFFER_VALID_TIMESTAMP_QRX | BUFFER_VALID_WIDTH_QRX |
                            BUFFER_VALID_HEIGHT_QRX | BUFFER_VALID_XOFFSET_QRX |
                            BUFFER_VALID_YOFFSET_QRX;
        bundle.Timestamp = b->timestamp;
        bundle.FrameID = b->frameId;
        bundle.Status = b->status != 0 ? b->status : (b->incomplete ? GC_ERR_IO : 0);
        bundle.Width = b->width;
        bundle.Height = b->height;
        bundle.XOffset = b->offsetX;
        bundle.YOffset = b->offsetY;
        bundle.ImageSize = static_cast<uint32_t>(b->imageSize);
        bundle.PixelFormat = b->pixelFormat;
        bundle.AncillarySize = static_cast<uint32_t>(b->chunkSize);
        memcpy(aBuffer, &bundle, sizeof(bundle));
        return GC_ERR_SUCCESS;
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
    switch (aCommand) {
    case BUFFER_PART_INFO_BASE:
        return ReplyValue(INFO_DATATYPE_PTR, static_cast<void*>(b->base), aType, aBuffer, aSize);
    case BUFFER_PART_INFO_DATA_SIZE:
        return ReplyValue(INFO_DATATYPE_SIZET, b->imageSize, aType, aBuffer, aSize);
    case BUFFER_PART_INFO_DATA_TYPE:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{PART_DATATYPE_2D_IMAGE}, aType, aBuffer,
                          aSize);
    case BUFFER_PART_INFO_DATA_FORMAT:
        return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{b->pixelFormat}, aType, aBuffer, aSize);
    case BUFFER_PART_INFO_DATA_FORMAT_NAMESPACE:
        return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{PIXELFORMAT_NAMESPACE_PFNC_32BIT}, aType,
                          aBuffer, aSize);
    case BUFFER_PART_INFO_WIDTH:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{b->width}, aType, aBuffer, aSize);
    case BUFFER_PART_INFO_HEIGHT:
    case BUFFER_PART_INFO_DELIVERED_IMAGEHEIGHT:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{b->height}, aType, aBuffer, aSize);
    case BUFFER_PART_INFO_XOFFSET:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{b->offsetX}, aType, aBuffer, aSize);
    case BUFFER_PART_INFO_YOFFSET:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{b->offsetY}, aType, aBuffer, aSize);
    case BUFFER_PART_INFO_XPADDING:
        return ReplyValue(INFO_DATATYPE_SIZET, size_t{0}, aType, aBuffer, aSize);
    case BUFFER_PART_INFO_SOURCE_ID:
        return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{0}, aType, aBuffer, aSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

GC_ERROR Stream::Chunks(BUFFER_HANDLE aHandle, SINGLE_CHUNK_DATA* aChunks, size_t* aCount) {
    if (!aCount) return GC_ERR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> hold(mLock);
    Buffer* b = Find(aHandle);
    if (!b) return GC_ERR_INVALID_HANDLE;
    if (b->chunkSize == 0) return GC_ERR_NO_DATA;
    if (!aChunks) {
        *aCount = 1;
        return GC_ERR_SUCCESS;
    }
    if (*aCount < 1) return GC_ERR_BUFFER_TOO_SMALL;
    aChunks[0] = {kChunkId, static_cast<ptrdiff_t>(b->imageSize), b->chunkSize};
    *aCount = 1;
    return GC_ERR_SUCCESS;
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
