#include "engine/Interface.h"

#include <cstring>

#include "engine/DiscoveryNews.h"
#include "engine/Features.h"
#include "engine/RequestIds.h"
#include "kit/ObjectList.h"

namespace tvk {

namespace {

constexpr llk::u4 kDeviceChangeEvent = 10;
// Room for a device identifier and the texts that describe it.
constexpr size_t kTextSize = 256;

// Requests of the interface, by tag of request::kDeviceList.
constexpr llk::u4 kTagRenew = 1, kTagCount = 2, kTagQuery = 3, kTagFind = 4;
// Tags of the discovery requests.
constexpr llk::u4 kTagSet = 5, kTagGet = 6;
constexpr llk::i4 kNotAValue = TvkErrorBadParameter;

} // namespace

llk::u4 cInterfaceActor::ConvertStatus(llk::i4 aStatus, tInterface aType) {
    switch (aStatus) {
    case gc::DEVICE_ACCESS_STATUS_READWRITE:
        return aType == kInterfaceEthernet
                   ? TvkAccessModeFull | TvkAccessModeRead | TvkAccessModeConfig | TvkAccessModeLite
                   : TvkAccessModeFull | TvkAccessModeRead | TvkAccessModeLite;
    case gc::DEVICE_ACCESS_STATUS_READONLY:
        return TvkAccessModeRead;
    case gc::DEVICE_ACCESS_STATUS_CONFIG_QRX:
        return TvkAccessModeConfig;
    default:
        return TvkAccessModeNone;
    }
}

llk::i4 cInterfaceActor::Prepare(const char* aIdentifier, tDiscoveryMode aMode) {
    cProducer* producer = Producer();
    llk::cString* identifier = Global()->Cache(aIdentifier);
    if (!identifier) return llk::kNoMemory;
    mIdentifier = identifier->Chars();
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    if (!producer->InterfaceOpen(aIdentifier, &mInterface, &error)) return error;
    mPort = llk::Retained(cDirectPort::New(producer, mInterface, false));
    llk::i4 status = mPort ? llk::kOk : llk::kNoMemory;
    if (status == llk::kOk && IsGigE() && aMode != kDiscoveryOff) {
        llk::u4 mode = aMode, done = 0;
        status = mPort->Store(kRegDiscoveryMode, sizeof(mode), &mode, done);
    }
    // Device changes are the vendor's extension: without it the list is
    // still renewed on every query, only changes go unannounced.
    if (status == llk::kOk &&
        producer->EventRegister(mInterface, gc::EVENT_DEVICE_LIST_CHANGED_QRX, &mEvent, nullptr)) {
        status = Helper()->EventListen(this, kDeviceChangeEvent, mEvent);
        if (status != llk::kOk) {
            producer->EventUnregister(mInterface, gc::EVENT_DEVICE_LIST_CHANGED_QRX, nullptr);
            mEvent = nullptr;
        }
    }
    if (status != llk::kOk) {
        llk::ReleaseAndClear(mPort);
        producer->InterfaceClose(mInterface, nullptr);
        mInterface = nullptr;
    }
    return status;
}

void cInterfaceActor::Dismiss() {
    pActor::Dismiss();
    cProducer* producer = Producer();
    if (mEvent) {
        Helper()->EventForget(this, kDeviceChangeEvent);
        producer->EventUnregister(mInterface, gc::EVENT_DEVICE_LIST_CHANGED_QRX, nullptr);
        mEvent = nullptr;
    }
    if (mInterface) {
        // What this interface listed is gone with it.
        llk::u4 count = producer->InterfaceCount(mInterface, nullptr);
        for (llk::u4 i = 0; i < count; ++i) {
            char id[kTextSize];
            size_t size = sizeof(id);
            if (producer->InterfaceGetSerial(mInterface, i, id, &size, nullptr))
                TellDeviceChanged(Global(), id, gc::IFCHANGE_DEVICE_PRESENCE, 0);
        }
        producer->InterfaceClose(mInterface, nullptr);
        mInterface = nullptr;
    }
    llk::ReleaseAndClear(mFeatures);
    llk::ReleaseAndClear(mPort);
    RequestsDisable(true);
    RequestsReject();
}

void cInterfaceActor::OnEventFired(llk::u4 aUid, const void* aData, llk::u4 aLength) {
    if (aUid != kDeviceChangeEvent) return;
    cProducer* producer = Producer();
    char id[kTextSize] = {};
    llk::u4 what = 0, data = 0;
    size_t size = sizeof(id) - 1;
    gc::INFO_DATATYPE type = 0;
    // An event that cannot be read is dropped.
    if (!producer->EventGetDataInfo(mEvent, aData, aLength, gc::EVENT_DATA_DEVICE_ID_QRX, &type, id,
                                    &size, nullptr))
        return;
    size = sizeof(what);
    if (!producer->EventGetDataInfo(mEvent, aData, aLength, gc::EVENT_DATA_WHAT_QRX, &type, &what,
                                    &size, nullptr))
        return;
    size = sizeof(data);
    if (!producer->EventGetDataInfo(mEvent, aData, aLength, gc::EVENT_DATA_DATA_QRX, &type, &data,
                                    &size, nullptr))
        return;
    TellDeviceChanged(Global(), id, what, data);
    const bool gone = what == gc::IFCHANGE_DEVICE_REACHABILITY
                          ? !(data & gc::IFCHANGE_DATA_REACHABLE)
                          : !(data & gc::IFCHANGE_DATA_PRESENT);
    // News may come late: a device that is back by now has cameras of its
    // own again, which the old news must not reach.
    llk::i4 access = 0;
    size = sizeof(access);
    if (gone && !producer->InterfaceGetDetail(mInterface, id, gc::DEVICE_INFO_ACCESS_STATUS, &type,
                                              &access, &size, nullptr))
        TellCamerasLost(id);
}

void cInterfaceActor::TellCamerasLost(const char* aIdentifier) {
    llk::cObjectList* cameras = llk::cObjectList::New(4, true);
    if (!cameras) return;
    Global()->Enumerate(kTypeCameraProxy, Proxy(), cameras);
    for (llk::u4 i = 0; i < cameras->Count(); ++i) {
        auto* camera = static_cast<pProxy*>(cameras->AtIndex(i));
        if (strcmp(camera->Identifier()->Chars(), aIdentifier) != 0) continue;
        if (llk::cMessage* message = Global()->NewMessage(message::kDeviceLost, 0))
            camera->PostMessage(message, 255);
    }
}

bool cInterfaceActor::OnRequest(llk::cRequest* aRequest) {
    llk::i4 outcome;
    switch (aRequest->GetUid()) {
    case request::kInterfaceInfo:
        outcome = QueryInfo(*static_cast<tInterfaceInfo*>(aRequest->GetPointer()));
        break;
    case request::kInterfaceOpen:
        Open();
        outcome = llk::kOk;
        break;
    case request::kInterfaceClose:
        outcome = mOpened ? llk::kOk : llk::kDuplicate;
        mOpened = false;
        break;
    case request::kDeviceList:
        outcome =
            DeviceList(aRequest->GetTag(), *static_cast<tDeviceListQuery*>(aRequest->GetPointer()));
        break;
    case request::kInterfaceDiscoveryMode:
    case request::kInterfaceDiscoveryDuration:
        // A write waits while a callback still reports the last change.
        if (aRequest->GetTag() == kTagSet && mFeatures && !IsFeaturesWritable()) return false;
        outcome = Discovery(aRequest->GetUid(), aRequest->GetTag(), aRequest->GetPointer());
        break;
    default:
        return pActor::OnRequest(aRequest);
    }
    aRequest->SetOutcome(outcome);
    return true;
}

void cInterfaceActor::Open() {
    mOpened = true;
    if (mFeatures) return;
    mFeatures = llk::Retained(cFeatures::New(false));
    llk::i4 status = mFeatures ? mFeatures->Prepare() : llk::kNoMemory;
    if (status == llk::kOk) {
        mFeatures->SetDelegate(this);
        status = mFeatures->Connect("InterfacePort", mPort, false, nullptr, nullptr);
    }
    if (status == llk::kOk) {
        mFeatures->HideCategory("/InterfaceModule");
        status = mFeatures->Realize();
    }
    if (status != llk::kOk) llk::ReleaseAndClear(mFeatures);
}

const char* cInterfaceActor::InfoText(gc::INTERFACE_INFO_CMD aCommand) {
    char text[kTextSize] = {};
    size_t size = sizeof(text) - 1;
    gc::INFO_DATATYPE type = 0;
    if (!Producer()->InterfaceInfo(mInterface, aCommand, &type, text, &size, nullptr) ||
        type != gc::INFO_DATATYPE_STRING)
        return nullptr;
    llk::cString* cached = Global()->Cache(text);
    return cached ? cached->Chars() : nullptr;
}

llk::i4 cInterfaceActor::QueryInfo(tInterfaceInfo& aInfo) {
    // Names and serials do not change: asked until the producer answers.
    if (!mName) mName = InfoText(gc::INTERFACE_INFO_DISPLAYNAME);
    if (!mSerial) mSerial = InfoText(gc::INTERFACE_INFO_SERIAL_QRX);
    aInfo.name = mName;
    aInfo.serialNumber = mSerial;
    return llk::kOk;
}

llk::i4 cInterfaceActor::FetchDeviceInfo(const char* aIdentifier, llk::u4 aIndex,
                                         tDeviceInfo& aInfo) {
    cProducer* producer = Producer();
    char id[kTextSize] = {};
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    if (!aIdentifier) {
        size_t size = sizeof(id) - 1;
        if (!producer->InterfaceGetSerial(mInterface, aIndex, id, &size, &error)) return error;
        aIdentifier = id;
    }
    const char** texts[] = {&aInfo.idString, &aInfo.name, &aInfo.model, &aInfo.serialNumber};
    constexpr gc::DEVICE_INFO_CMD kCommands[] = {gc::DEVICE_INFO_ID, gc::DEVICE_INFO_DISPLAYNAME,
                                                 gc::DEVICE_INFO_MODEL, gc::DEVICE_INFO_SERIAL_QRX};
    for (size_t i = 0; i < sizeof(kCommands) / sizeof(kCommands[0]); ++i) {
        char text[kTextSize] = {};
        size_t size = sizeof(text) - 1;
        gc::INFO_DATATYPE type = 0;
        if (!producer->InterfaceGetDetail(mInterface, aIdentifier, kCommands[i], &type, text, &size,
                                          &error)) {
            // A producer that keeps no serial lists the device without one.
            if (kCommands[i] != gc::DEVICE_INFO_SERIAL_QRX ||
                (error != gc::GC_ERR_NOT_IMPLEMENTED && error != gc::GC_ERR_NOT_AVAILABLE))
                return error;
            strcpy(text, "N/A");
        }
        llk::cString* cached = Global()->Cache(text);
        if (!cached) return llk::kNoMemory;
        *texts[i] = cached->Chars();
    }
    llk::i4 access = gc::DEVICE_ACCESS_STATUS_UNKNOWN;
    size_t size = sizeof(access);
    gc::INFO_DATATYPE type = 0;
    if (!producer->InterfaceGetDetail(mInterface, aIdentifier, gc::DEVICE_INFO_ACCESS_STATUS, &type,
                                      &access, &size, &error))
        return error;
    aInfo.permittedAccess = ConvertStatus(access, Aggregate()->Type());
    aInfo.interfaceID = mIdentifier;
    return llk::kOk;
}

llk::i4 cInterfaceActor::DeviceList(llk::u4 aTag, tDeviceListQuery& aQuery) {
    cProducer* producer = Producer();
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    switch (aTag) {
    case kTagRenew:
        producer->InterfaceUpdate(mInterface, nullptr, 0, &error);
        return error;
    case kTagCount:
        aQuery.count = producer->InterfaceCount(mInterface, &error);
        return error;
    case kTagQuery: {
        // The count goes back as the number filled, also on a failure.
        const llk::u4 wanted = aQuery.count;
        aQuery.count = 0;
        llk::u4 count = producer->InterfaceCount(mInterface, &error);
        if (error != gc::GC_ERR_SUCCESS) return llk::kBadArgument;
        if (aQuery.index >= count) return llk::kOutOfRange;
        llk::i4 status = llk::kOk;
        while (aQuery.count < wanted && aQuery.index < count && status == llk::kOk) {
            status = FetchDeviceInfo(nullptr, aQuery.index, aQuery.array[aQuery.count]);
            if (status == llk::kOk) ++aQuery.count;
            ++aQuery.index;
        }
        return status;
    }
    case kTagFind:
        return aQuery.identifier ? FetchDeviceInfo(aQuery.identifier, 0, aQuery.array[0])
                                 : llk::kNotFound;
    default:
        return llk::kRefused;
    }
}

llk::i4 cInterfaceActor::Discovery(llk::u4 aUid, llk::u4 aTag, void* aValue) {
    // Only GigE Vision interfaces discover; elsewhere there is nothing to do.
    if (!IsGigE()) return llk::kOk;
    bool mode = aUid == request::kInterfaceDiscoveryMode;
    llk::u8 address = mode ? kRegDiscoveryMode : kRegDiscoveryDuration;
    llk::u4 length = mode ? 4 : 8, done = 0;
    if (aTag == kTagGet) return mPort->Fetch(address, length, aValue, done);
    if (aTag != kTagSet) return llk::kRefused;
    if (!mFeatures) return mPort->Store(address, length, aValue, done);
    if (!mode)
        return mFeatures->FeatureIntSet("DiscoveryDuration",
                                        static_cast<llk::i8>(*static_cast<llk::u8*>(aValue)));
    static const char* const kModes[] = {"Off", "Auto", "Once"};
    const llk::u4 value = *static_cast<llk::u4*>(aValue);
    return value < 3 ? mFeatures->FeatureEnumSet("DiscoveryMode", kModes[value]) : kNotAValue;
}

// ---- cInterfaceProxy ------------------------------------------------------------

llk::i4 cInterfaceProxy::Initialize(const pProxy* aParent, llk::cString* aIdentifier,
                                    cAggregate* aAggregate, tDiscoveryMode aMode) {
    if (!aIdentifier) return llk::kNoMemory;
    SetParent(aParent);
    SetIdentifier(aIdentifier);
    SetAggregate(aAggregate);
    mActor = llk::Retained(cInterfaceActor::New(this, aAggregate));
    if (!mActor) return llk::kNoMemory;
    llk::i4 status = StartActor(mActor);
    return status == llk::kOk ? mActor->Prepare(aIdentifier->Chars(), aMode) : status;
}

cInterfaceProxy::~cInterfaceProxy() {
    EndActor(mActor);
    llk::ReleaseAndClear(mActor);
}

llk::i4 cInterfaceProxy::QueryInfo(tInterfaceInfo& aInfo) {
    llk::i4 status = Ask(request::kInterfaceInfo, 0, &aInfo);
    if (status != llk::kOk) return status;
    aInfo.idString = Identifier()->Chars();
    aInfo.interfaceType = Aggregate()->Type();
    aInfo.permittedAccess = TvkAccessModeFull;
    return llk::kOk;
}

llk::i4 cInterfaceProxy::DeviceListRenew() {
    tDeviceListQuery query{};
    return Ask(request::kDeviceList, kTagRenew, &query);
}

llk::i4 cInterfaceProxy::DeviceListCount(llk::u4& aCount) {
    tDeviceListQuery query{};
    llk::i4 status = Ask(request::kDeviceList, kTagCount, &query);
    if (status == llk::kOk) aCount = query.count;
    return status;
}

llk::i4 cInterfaceProxy::DeviceListQuery(llk::u4 aIndex, tDeviceInfo* aArray, llk::u4& aCount) {
    tDeviceListQuery query{nullptr, aArray, aIndex, aCount};
    llk::i4 status = Ask(request::kDeviceList, kTagQuery, &query);
    aCount = query.count;
    return status;
}

llk::i4 cInterfaceProxy::DeviceFind(const char* aIdentifier, tDeviceInfo& aInfo) {
    tDeviceListQuery query{aIdentifier, &aInfo, 0, 1};
    return Ask(request::kDeviceList, kTagFind, &query);
}

llk::i4 cInterfaceProxy::Open() {
    return Ask(request::kInterfaceOpen, 0, nullptr);
}

llk::i4 cInterfaceProxy::Close() {
    return Ask(request::kInterfaceClose, 0, nullptr);
}

llk::i4 cInterfaceProxy::SetDiscoveryMode(tDiscoveryMode aMode) {
    llk::u4 mode = aMode;
    return Ask(request::kInterfaceDiscoveryMode, kTagSet, &mode);
}

llk::i4 cInterfaceProxy::GetDiscoveryMode(tDiscoveryMode& aMode) {
    llk::u4 mode = aMode;
    llk::i4 status = Ask(request::kInterfaceDiscoveryMode, kTagGet, &mode);
    if (status == llk::kOk) aMode = static_cast<tDiscoveryMode>(mode);
    return status;
}

llk::i4 cInterfaceProxy::SetDiscoveryDuration(llk::u8 aDuration) {
    return Ask(request::kInterfaceDiscoveryDuration, kTagSet, &aDuration);
}

llk::i4 cInterfaceProxy::GetDiscoveryDuration(llk::u8& aDuration) {
    return Ask(request::kInterfaceDiscoveryDuration, kTagGet, &aDuration);
}

} // namespace tvk
