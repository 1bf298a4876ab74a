// Events: registration on the modules, waiting and reading; the vendor
// events made by hand and unions, where one thread waits on many events.
#include "Entry.h"
#include "EventData.h"
#include "Info.h"
#include "Stream.h"

using namespace sim;

namespace {

// The event a source offers for a type, or null.
Event* EventOf(void* aSource, EVENT_TYPE aType) {
    tProducer& p = Producer();
    if (p.handles.Is(aSource, tKind::kStream) && aType == EVENT_NEW_BUFFER)
        return static_cast<Stream*>(aSource)->NewBuffers();
    if (p.handles.Is(aSource, tKind::kDevice)) {
        auto* device = static_cast<Device*>(aSource);
        if (aType == EVENT_REMOTE_DEVICE) return device->RemoteEvents();
        if (aType == EVENT_FEATURE_INVALIDATE) return device->Invalidations();
    }
    if (p.handles.Is(aSource, tKind::kSystem) && aType == EVENT_INTERFACE_LIST_CHANGED_QRX)
        return static_cast<System*>(aSource)->InterfaceListChanged();
    if (p.handles.Is(aSource, tKind::kInterface) && aType == EVENT_DEVICE_LIST_CHANGED_QRX)
        return static_cast<Interface*>(aSource)->DeviceListChanged();
    return nullptr;
}

bool IsEvent(void* aHandle) {
    return Producer().handles.Is(aHandle, tKind::kEvent);
}

} // namespace

extern "C" {

GC_API GCRegisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID, EVENT_HANDLE* phEvent) {
    ENTER("GCRegisterEvent");
    if (!phEvent) return GC_ERR_INVALID_PARAMETER;
    Event* event = EventOf(hEventSrc, iEventID);
    if (!event) return Fail(GC_ERR_NOT_AVAILABLE, "no such event on this source");
    if (!event->Register()) return GC_ERR_RESOURCE_IN_USE;
    Producer().handles.Add(event, tKind::kEvent);
    *phEvent = event;
    return GC_ERR_SUCCESS;
}

GC_API GCUnregisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID) {
    ENTER("GCUnregisterEvent");
    Event* event = EventOf(hEventSrc, iEventID);
    if (!event || !event->Unregister()) return GC_ERR_NOT_AVAILABLE;
    Producer().handles.Remove(event);
    return GC_ERR_SUCCESS;
}

GC_API EventGetData(EVENT_HANDLE hEvent, void* pBuffer, size_t* piSize, uint64_t iTimeout) {
    ENTER("EventGetData");
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    return static_cast<Event*>(hEvent)->Get(pBuffer, piSize, iTimeout);
}

GC_API EventGetDataInfo(EVENT_HANDLE hEvent, const void* pInBuffer, size_t iInSize,
                        EVENT_DATA_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pOutBuffer,
                        size_t* piOutSize) {
    ENTER("EventGetDataInfo");
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    if (!pInBuffer) return GC_ERR_INVALID_PARAMETER;
    return EventDataInfo(static_cast<Event*>(hEvent)->type, static_cast<const uint8_t*>(pInBuffer),
                         iInSize, iInfoCmd, piType, pOutBuffer, piOutSize);
}

GC_API EventGetInfo(EVENT_HANDLE hEvent, EVENT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                    void* pBuffer, size_t* piSize) {
    ENTER("EventGetInfo");
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    auto* event = static_cast<Event*>(hEvent);
    switch (iInfoCmd) {
    case EVENT_EVENT_TYPE:
        return ReplyValue(INFO_DATATYPE_INT32, event->type, piType, pBuffer, piSize);
    case EVENT_NUM_IN_QUEUE:
        return ReplyValue(INFO_DATATYPE_SIZET, event->Queued(), piType, pBuffer, piSize);
    case EVENT_NUM_FIRED:
        return ReplyValue(INFO_DATATYPE_UINT64, event->Fired(), piType, pBuffer, piSize);
    case EVENT_SIZE_MAX:
        return ReplyValue(INFO_DATATYPE_SIZET, event->maxSize, piType, pBuffer, piSize);
    case EVENT_INFO_DATA_SIZE_MAX:
        return ReplyValue(INFO_DATATYPE_SIZET, EventInfoSizeMax(event->type), piType, pBuffer,
                          piSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

GC_API EventFlush(EVENT_HANDLE hEvent) {
    ENTER("EventFlush");
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    static_cast<Event*>(hEvent)->Flush();
    return GC_ERR_SUCCESS;
}

GC_API EventKill(EVENT_HANDLE hEvent) {
    ENTER("EventKill");
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    static_cast<Event*>(hEvent)->Kill();
    return GC_ERR_SUCCESS;
}

#ifndef TAVIK_SIM_STANDARD_ONLY
GC_API EventCreate(EVENT_TYPE iEventID, EVENT_HANDLE* phEvent) {
    ENTER("EventCreate");
    if (!phEvent) return GC_ERR_INVALID_PARAMETER;
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    auto event = std::make_unique<Event>(iEventID, nullptr, 1024);
    event->Register();
    *phEvent = event.get();
    p.handles.Add(event.get(), tKind::kEvent);
    p.madeEvents.insert(std::move(event));
    return GC_ERR_SUCCESS;
}

GC_API EventDelete(EVENT_HANDLE hEvent) {
    ENTER("EventDelete");
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    for (auto it = p.madeEvents.begin(); it != p.madeEvents.end(); ++it)
        if (it->get() == hEvent) {
            p.handles.Remove(hEvent);
            p.madeEvents.erase(it);
            return GC_ERR_SUCCESS;
        }
    return GC_ERR_INVALID_HANDLE;
}

GC_API EventSetData(EVENT_HANDLE hEvent, const void* pBuffer, size_t iSize) {
    ENTER("EventSetData");
    if (!IsEvent(hEvent) || (!pBuffer && iSize)) return GC_ERR_INVALID_PARAMETER;
    static_cast<Event*>(hEvent)->Push(pBuffer, iSize);
    return GC_ERR_SUCCESS;
}

GC_API EventGetDataStacked(EVENT_HANDLE hEvent, void* pBuffer, size_t* piSize,
                           S_EVENT_DATA_STACK_ENTRY* pEntries, size_t* piNumEntries,
                           uint64_t iTimeout) {
    ENTER("EventGetDataStacked");
    if (!IsEvent(hEvent) || !pBuffer || !piSize || !pEntries || !piNumEntries)
        return GC_ERR_INVALID_PARAMETER;
    auto* event = static_cast<Event*>(hEvent);
    size_t used = 0, count = 0;
    GC_ERROR status = GC_ERR_SUCCESS;
    while (count < *piNumEntries) {
        size_t size = *piSize - used;
        status =
            event->Get(static_cast<uint8_t*>(pBuffer) + used, &size, count == 0 ? iTimeout : 0);
        if (status != GC_ERR_SUCCESS) break;
        pEntries[count++] = {hEvent, static_cast<uint32_t>(size)};
        used += size;
    }
    *piNumEntries = count;
    *piSize = used;
    return count ? GC_ERR_SUCCESS : status;
}

GC_API EventWait(EVENT_HANDLE hEvent, uint64_t iTimeout) {
    ENTER("EventWait");
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    return static_cast<Event*>(hEvent)->Wait(iTimeout);
}

#define UNION(handle)                                                                              \
    CHECK(handle, tKind::kUnion);                                                                  \
    Union* group = static_cast<Union*>(handle)

GC_API UnionCreate(UNION_HANDLE* phUnion) {
    ENTER("UnionCreate");
    if (!phUnion) return GC_ERR_INVALID_PARAMETER;
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    auto group = std::make_unique<Union>();
    *phUnion = group.get();
    p.handles.Add(group.get(), tKind::kUnion);
    p.unions.insert(std::move(group));
    return GC_ERR_SUCCESS;
}

GC_API UnionDelete(UNION_HANDLE hUnion) {
    ENTER("UnionDelete");
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    for (auto it = p.unions.begin(); it != p.unions.end(); ++it)
        if (it->get() == hUnion) {
            p.handles.Remove(hUnion);
            p.unions.erase(it);
            return GC_ERR_SUCCESS;
        }
    return GC_ERR_INVALID_HANDLE;
}

GC_API UnionLinkup(UNION_HANDLE hUnion, EVENT_HANDLE hEvent) {
    ENTER("UnionLinkup");
    UNION(hUnion);
    if (!IsEvent(hEvent)) return GC_ERR_INVALID_HANDLE;
    return group->Link(static_cast<Event*>(hEvent));
}

GC_API UnionUnlink(UNION_HANDLE hUnion, EVENT_HANDLE hEvent) {
    ENTER("UnionUnlink");
    UNION(hUnion);
    return group->Unlink(static_cast<Event*>(hEvent));
}

GC_API UnionWait(UNION_HANDLE hUnion, EVENT_HANDLE* phEvent, uint64_t iTimeout) {
    ENTER("UnionWait");
    UNION(hUnion);
    Event* event = nullptr;
    GC_ERROR status = group->Wait(&event, iTimeout);
    if (status == GC_ERR_SUCCESS && phEvent) *phEvent = event;
    return status;
}

GC_API UnionGetData(UNION_HANDLE hUnion, EVENT_HANDLE* phEvent, void* pBuffer, size_t* piSize,
                    uint64_t iTimeout) {
    ENTER("UnionGetData");
    UNION(hUnion);
    Event* event = nullptr;
    GC_ERROR status = group->Wait(&event, iTimeout);
    if (status != GC_ERR_SUCCESS) return status;
    if (phEvent) *phEvent = event;
    return event->Get(pBuffer, piSize, 0);
}

GC_API UnionGetDataStacked(UNION_HANDLE hUnion, S_UNION_DATA_STACK_ENTRY* pEntries,
                           size_t* piNumEntries, uint64_t iTimeout) {
    ENTER("UnionGetDataStacked");
    UNION(hUnion);
    if (!pEntries || !piNumEntries || *piNumEntries == 0) return GC_ERR_INVALID_PARAMETER;
    Event* event = nullptr;
    GC_ERROR status = group->Wait(&event, iTimeout);
    if (status != GC_ERR_SUCCESS) return status;
    pEntries[0] = {event, nullptr};
    *piNumEntries = 1;
    return GC_ERR_SUCCESS;
}

GC_API UnionGetDataInfo(UNION_HANDLE hUnion, EVENT_HANDLE hEvent, const void* pInBuffer,
                        size_t iInSize, EVENT_DATA_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                        void* pOutBuffer, size_t* piOutSize) {
    ENTER("UnionGetDataInfo");
    UNION(hUnion);
    (void)group;
    return EventGetDataInfo(hEvent, pInBuffer, iInSize, iInfoCmd, piType, pOutBuffer, piOutSize);
}

GC_API UnionFlush(UNION_HANDLE hUnion) {
    ENTER("UnionFlush");
    UNION(hUnion);
    (void)group;
    return GC_ERR_SUCCESS;
}

GC_API UnionKill(UNION_HANDLE hUnion) {
    ENTER("UnionKill");
    UNION(hUnion);
    group->Kill();
    return GC_ERR_SUCCESS;
}
#endif

} // extern "C"
