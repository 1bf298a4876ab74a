// The camera actor's life: opening the device by access mode, the events it
// listens to, the requests it answers, and closing.
#include "engine/Camera.h"

#include <cstring>

#include "engine/Features.h"
#include "engine/Global.h"
#include "engine/RequestIds.h"
#include "kit/Env.h"

namespace tvk {

namespace {

// Listener uids.
constexpr llk::u4 kBufferEvent = 11;
constexpr llk::u4 kDeviceEvent = 12;
constexpr llk::u4 kStreamInvalidateEvent = 13;
constexpr llk::u4 kDeviceInvalidateEvent = 14;
// The async call that builds the features.
constexpr llk::u4 kBuildFeatures = 10;
// A remote device event's header, and the most an event block may hold.
constexpr size_t kEventHeader = 16;
constexpr size_t kEventBlockMax = 1024;

// The open flags of an access mode; 0 for a mode that cannot be had here.
gc::DEVICE_ACCESS_FLAGS FlagsOf(TvkAccessMode_t aMode, bool aGigE) {
    switch (aMode) {
    case TvkAccessModeFull:
    case TvkAccessModeLite:
        return gc::DEVICE_ACCESS_CONTROL;
    case TvkAccessModeRead:
        return gc::DEVICE_ACCESS_READONLY;
    case TvkAccessModeConfig:
        return aGigE ? gc::DEVICE_ACCESS_CONFIG_QRX : 0;
    default:
        return 0;
    }
}

llk::u4 BigEndian(const llk::u1* aBytes) {
    return llk::u4{aBytes[0]} << 24 | llk::u4{aBytes[1]} << 16 | llk::u4{aBytes[2]} << 8 |
           aBytes[3];
}

} // namespace

llk::i4 cCameraActor::Initialize(pProxy* aProxy, cAggregate* aAggregate) {
    return pActor::Initialize(aProxy, aAggregate);
}

cCameraActor::~cCameraActor() {
    llk::ReleaseAndClear(mFeatures);
    llk::ReleaseAndClear(mCameraPort);
    llk::ReleaseAndClear(mStreamPort);
    llk::ReleaseAndClear(mRemotePort);
    llk::ReleaseAndClear(mDevicePort);
    llk::ReleaseAndClear(mRegistery);
}

llk::i4 cCameraActor::Prepare(const char* aIdentifier, gc::IF_HANDLE aInterface,
                              TvkAccessMode_t aMode) {
    cProducer* producer = Producer();
    gc::DEVICE_ACCESS_FLAGS flags = FlagsOf(aMode, IsGigE());
    if (flags == 0) return llk::kNotImplemented;
    mMode = aMode;
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    if (!producer->DeviceOpen(aInterface, aIdentifier, flags, &mDevice, &error)) {
        // A producer that has no shared control may still give it alone.
        if (error != gc::GC_ERR_NOT_IMPLEMENTED || flags != gc::DEVICE_ACCESS_CONTROL ||
            !producer->DeviceOpen(aInterface, aIdentifier, gc::DEVICE_ACCESS_EXCLUSIVE, &mDevice,
                                  &error))
            return error;
    }
    llk::i4 status = PrepareWithMode();
    if (status != llk::kOk) {
        producer->DeviceClose(mDevice, nullptr);
        mDevice = nullptr;
    }
    return status;
}

llk::i4 cCameraActor::PrepareWithMode() {
    const bool readOnly = mMode == TvkAccessModeRead;
    llk::i4 status = mMode == TvkAccessModeConfig ? llk::kOk : PrepareStream(readOnly);
    if (status == llk::kOk) status = PreparePorts(readOnly, mMode != TvkAccessModeLite);
    if (status == llk::kOk && mMode != TvkAccessModeLite) {
        mFeatures = llk::Retained(cFeatures::New(false));
        status = mFeatures ? mFeatures->Prepare() : llk::kNoMemory;
        if (status == llk::kOk) {
            mFeatures->SetDelegate(this);
            status = Helper()->AsyncCall(this, kBuildFeatures, 0, 255);
        }
    }
    if (status != llk::kOk) {
        llk::ReleaseAndClear(mFeatures);
        llk::ReleaseAndClear(mCameraPort);
        llk::ReleaseAndClear(mStreamPort);
        llk::ReleaseAndClear(mRemotePort);
        llk::ReleaseAndClear(mDevicePort);
        CloseStream();
        return status;
    }
    if (mStream) ListenForInvalidations();
    return llk::kOk;
}

llk::i4 cCameraActor::PrepareStream(bool aReadOnly) {
    (void)aReadOnly;
    cProducer* producer = Producer();
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    char id[256] = {};
    size_t size = sizeof(id) - 1;
    if (!producer->DeviceStreamIdent(mDevice, 0, id, &size, &error) ||
        !producer->StreamOpen(mDevice, id, &mStream, &error))
        return error;
    if (producer->EventRegister(mStream, gc::EVENT_NEW_BUFFER, &mBufferEvent, &error) &&
        producer->EventRegister(mDevice, gc::EVENT_REMOTE_DEVICE, &mDeviceEvent, &error)) {
        llk::i4 status = Helper()->EventListen(this, kDeviceEvent, mDeviceEvent);
        if (status == llk::kOk) return llk::kOk;
        error = status;
    }
    CloseStream();
    return error;
}

llk::i4 cCameraActor::PreparePorts(bool aReadOnly, bool aModulePorts) {
    cProducer* producer = Producer();
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    if (!producer->DevicePort(mDevice, &mPortHandle, &error)) return error;
    mRemotePort = llk::Retained(cDirectPort::New(producer, mPortHandle, aReadOnly));
    if (!mRemotePort) return llk::kNoMemory;
    if (!aModulePorts) return llk::kOk;
    mDevicePort = llk::Retained(cDirectPort::New(producer, mDevice, aReadOnly));
    if (mStream) mStreamPort = llk::Retained(cDirectPort::New(producer, mStream, aReadOnly));
    mCameraPort = llk::Retained(cPseudoPort::New(0, this, aReadOnly));
    return mDevicePort && (mStreamPort || !mStream) && mCameraPort ? llk::kOk : llk::kNoMemory;
}

void cCameraActor::ListenForInvalidations() {
    cProducer* producer = Producer();
    cHelper* helper = Helper();
    if (producer->EventRegister(mStream, gc::EVENT_FEATURE_INVALIDATE, &mStreamInvalidate,
                                nullptr) &&
        helper->EventListen(this, kStreamInvalidateEvent, mStreamInvalidate) != llk::kOk) {
        producer->EventUnregister(mStream, gc::EVENT_FEATURE_INVALIDATE, nullptr);
        mStreamInvalidate = nullptr;
    }
    if (producer->EventRegister(mDevice, gc::EVENT_FEATURE_INVALIDATE, &mDeviceInvalidate,
                                nullptr) &&
        helper->EventListen(this, kDeviceInvalidateEvent, mDeviceInvalidate) != llk::kOk) {
        producer->EventUnregister(mDevice, gc::EVENT_FEATURE_INVALIDATE, nullptr);
        mDeviceInvalidate = nullptr;
    }
}

// Ends the stream and everything registered on it or on the device.
void cCameraActor::CloseStream() {
    if (!mStream) return;
    cProducer* producer = Producer();
    cHelper* helper = Helper();
    for (llk::u4 uid = kBufferEvent; uid <= kDeviceInvalidateEvent; ++uid)
        helper->EventForget(this, uid);
    if (mDeviceEvent) producer->EventUnregister(mDevice, gc::EVENT_REMOTE_DEVICE, nullptr);
    if (mBufferEvent) producer->EventUnregister(mStream, gc::EVENT_NEW_BUFFER, nullptr);
    if (mStreamInvalidate)
        producer->EventUnregister(mStream, gc::EVENT_FEATURE_INVALIDATE, nullptr);
    if (mDeviceInvalidate)
        producer->EventUnregister(mDevice, gc::EVENT_FEATURE_INVALIDATE, nullptr);
    mDeviceEvent = mBufferEvent = mStreamInvalidate = mDeviceInvalidate = nullptr;
    producer->StreamClose(mStream, nullptr);
    mStream = nullptr;
}

void cCameraActor::Dismiss() {
    pActor::Dismiss();
    RequestsDisable(true);
    RequestsReject();
    mActive = false;
    CloseStream();
    if (mDevice) {
        Producer()->DeviceClose(mDevice, nullptr);
        mDevice = nullptr;
    }
}

void cCameraActor::OnAsyncFired(llk::u4 aUid) {
    if (aUid == kBuildFeatures) BuildFeatures();
}

void cCameraActor::OnEventFired(llk::u4 aUid, const void* aData, llk::u4 aLength) {
    if (!mActive) return;
    cProducer* producer = Producer();
    gc::INFO_DATATYPE type = 0;
    llk::cMessage* message = nullptr;
    if (aUid == kDeviceEvent) {
        // A GigE Vision event block: id, block id and timestamp, big-endian,
        // then what the event carries, which is not kept.
        llk::u1 block[kEventBlockMax] = {};
        size_t size = sizeof(block);
        if (aLength < kEventHeader ||
            !producer->EventGetDataInfo(mDeviceEvent, aData, aLength, gc::EVENT_DATA_VALUE, &type,
                                        block, &size, nullptr) ||
            size < kEventHeader)
            return;
        const llk::u4 id = block[2] << 8 | block[3];
        const llk::u4 frame = block[6] << 8 | block[7];
        const llk::u8 stamp = llk::u8{BigEndian(block + 8)} << 32 | BigEndian(block + 12);
        message = Global()->NewMessage(message::kRemoteEvent, id);
        if (!message || !message->StoreUint("stamp", stamp) || !message->StoreUint("frame", frame))
            return;
    } else if (aUid == kStreamInvalidateEvent || aUid == kDeviceInvalidateEvent) {
        const bool stream = aUid == kStreamInvalidateEvent;
        char name[128] = {};
        size_t size = sizeof(name) - 1;
        if (!producer->EventGetDataInfo(stream ? mStreamInvalidate : mDeviceInvalidate, aData,
                                        aLength, gc::EVENT_DATA_ID, &type, name, &size, nullptr))
            return;
        message = Global()->NewMessage(
            stream ? message::kStreamFeatureInvalidated : message::kDeviceFeatureInvalidated, 0);
        if (!message || !message->StoreBlock("name", name, static_cast<llk::u4>(strlen(name) + 1)))
            return;
    } else {
        return;
    }
    PostMessage(message, 255);
}

bool cCameraActor::OnRequest(llk::cRequest* aRequest) {
    switch (aRequest->GetUid()) {
    case request::kCameraGo:
        mActive = true;
        aRequest->SetOutcome(llk::kOk);
        return true;
    case request::kCameraShutDown:
        mActive = false;
        aRequest->SetOutcome(llk::kOk);
        return true;
    default:
        // A camera that is not going answers nothing else.
        if (!mActive) return true;
        // One whose device has gone only lets callbacks be unregistered.
        if (mLost && !(aRequest->GetUid() == request::kFeature &&
                       aRequest->GetTag() == request::kFeatureCallback)) {
            aRequest->SetOutcome(gc::GC_ERR_TIMEOUT);
            return true;
        }
        return pActor::OnRequest(aRequest);
    }
}

bool cCameraActor::OnMessage(llk::cMessage* aMessage) {
    if (aMessage->GetUid() == message::kDeviceLost) {
        mLost = true;
        return true;
    }
    if (!mActive || !mFeatures) return true;
    // A change waits until the callbacks have seen the last one.
    if (!IsFeaturesWritable()) return false;
    const llk::u4 tag = aMessage->GetTag();
    switch (aMessage->GetUid()) {
    case message::kRemoteEvent: {
        tEventSlot slot{};
        aMessage->FetchUint("stamp", slot.stamp);
        aMessage->FetchUint("frame", slot.frame);
        if (tag == kEventOverflow)
            Republish(slot, mOverflow, "EventOverflow", "RegEventOverflowTimestamp",
                      "RegEventOverflowFrameID");
        else if (tag == kEventError)
            Republish(slot, mError, "EventError", "RegEventErrorTimestamp", "RegEventErrorFrameID");
        else if (tag >= kEventFirst && tag - kEventFirst < kEventRows &&
                 mEventRows[tag - kEventFirst].invalidator) {
            const tEventRow& row = mEventRows[tag - kEventFirst];
            Republish(slot, mSlots[tag - kEventFirst], row.invalidator->Chars(),
                      row.timestamp->Chars(), row.frame->Chars());
        }
        break;
    }
    case message::kStreamFeatureInvalidated:
    case message::kDeviceFeatureInvalidated: {
        char name[128] = {};
        llk::u4 size = sizeof(name) - 1;
        if (aMessage->FetchBlock("name", name, size)) {
            mFeatures->TrackInvalidations(true);
            mFeatures->FeatureInvalidate(name);
            mFeatures->TrackInvalidations(false);
        }
        break;
    }
    default:
        break;
    }
    return true;
}

void cCameraActor::Republish(const tEventSlot& aSlot, tEventSlot& aInto, const char* aInvalidator,
                             const char* aTimestamp, const char* aFrame) {
    aInto = aSlot;
    mFeatures->TrackInvalidations(true);
    mFeatures->FeatureInvalidate(aInvalidator);
    mFeatures->FeatureInvalidate(aTimestamp);
    mFeatures->FeatureInvalidate(aFrame);
    mFeatures->TrackInvalidations(false);
}

// ---- cCameraProxy -------------------------------------------------------------

llk::i4 cCameraProxy::Initialize(const pProxy* aParent, llk::cString* aIdentifier,
                                 cAggregate* aAggregate, gc::IF_HANDLE aInterface,
                                 TvkAccessMode_t aMode, llk::i4* aError) {
    if (!aIdentifier || !aAggregate) return llk::kNoMemory;
    SetParent(aParent);
    SetIdentifier(aIdentifier);
    SetAggregate(aAggregate);
    mActor = llk::Retained(cCameraActor::New(this, aAggregate));
    llk::i4 status = mActor ? StartActor(mActor) : llk::kNoMemory;
    if (status == llk::kOk) status = mActor->Prepare(aIdentifier->Chars(), aInterface, aMode);
    if (aError) *aError = status;
    return status;
}

cCameraProxy::~cCameraProxy() {
    EndActor(mActor);
    llk::ReleaseAndClear(mActor);
}

llk::i4 cCameraProxy::GetGoing() {
    return SendRequest(request::kCameraGo, 0, nullptr, 255);
}

llk::i4 cCameraProxy::Shutdown() {
    llk::i4 status = SendRequest(request::kCameraShutDown, 0, nullptr, 255);
    mActor->Helper()->Kill(mActor, true);
    // The device closes now, even while some other thread still holds the
    // proxy, so that it can be opened again at once.
    mActor->Dismiss();
    return status;
}

} // namespace tvk
