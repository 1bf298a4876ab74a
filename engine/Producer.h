// One GenTL producer (a ".cti" module): loaded, opened, and its entry points
// offered as methods of one shape. Each takes a final aError, which receives
// the producer's status; the result is true when that status was 0. Statuses
// pass through untouched.
#pragma once

#include "TavikGenTLVendor.h"
#include "kit/Object.h"

namespace tvk {

namespace gc = GenICam::Client;

// The standard entry points, in the order they are resolved; only the last,
// DSGetBufferChunkData, may be missing.
#define TAVIK_TL_FUNCS(X)                                                                          \
    X(GCGetInfo)                                                                                   \
    X(GCGetLastError)                                                                              \
    X(TLUpdateInterfaceList)                                                                       \
    X(TLGetNumInterfaces)                                                                          \
    X(TLGetInterfaceID) X(TLGetInterfaceInfo) X(TLOpenInterface) X(GCRegisterEvent)                \
        X(GCUnregisterEvent) X(EventGetData) X(EventGetDataInfo) X(EventFlush) X(EventKill)        \
            X(EventGetInfo) X(GCReadPort) X(GCWritePort) X(GCReadPortStacked)                      \
                X(GCWritePortStacked) X(GCGetPortInfo) X(GCGetPortURL) X(GCGetNumPortURLs)         \
                    X(GCGetPortURLInfo) X(IFClose) X(IFGetInfo) X(IFUpdateDeviceList)              \
                        X(IFGetNumDevices) X(IFGetDeviceID) X(IFGetDeviceInfo) X(IFOpenDevice)     \
                            X(DevClose) X(DevGetPort) X(DevGetInfo) X(DevGetNumDataStreams)        \
                                X(DevGetDataStreamID) X(DevOpenDataStream) X(DSClose) X(DSGetInfo) \
                                    X(DSAnnounceBuffer) X(DSAllocAndAnnounceBuffer)                \
                                        X(DSRevokeBuffer) X(DSGetBufferInfo) X(DSQueueBuffer)      \
                                            X(DSFlushQueue) X(DSStartAcquisition)                  \
                                                X(DSStopAcquisition) X(DSGetBufferChunkData)

// The vendor extensions; all optional.
#define TAVIK_CUSTOM_FUNCS(X)                                                                      \
    X(EventCreate)                                                                                 \
    X(EventDelete)                                                                                 \
    X(EventSetData)                                                                                \
    X(EventGetDataStacked)                                                                         \
    X(UnionCreate) X(UnionDelete) X(UnionLinkup) X(UnionUnlink) X(UnionGetData)                    \
        X(UnionGetDataStacked) X(UnionGetDataInfo) X(UnionFlush) X(UnionKill) X(EventWait)         \
            X(UnionWait) X(DSAnnounceAndQueueBuffer) X(DSGetBufferInfoAndRevoke)

class cProducer : public llk::pObject {
public:
    using GC_ERROR = gc::GC_ERROR;

    // Null when the module cannot be loaded, opened or lacks a required entry.
    static cProducer* New(const char* aPath) { return Make<cProducer>(aPath); }
    // 7: not loadable, no init, no TLOpen, no handle; 5: a required entry missing.
    llk::i4 Initialize(const char* aPath);
    ~cProducer() override;
    llk::u4 ClassType() const;

    bool IsQRX() const { return mIsQRX; }
    bool HasUnion() const { return mIsQRX && mCustom.UnionCreate; }
    gc::TL_HANDLE System() const { return mTL; }

    bool LastError(GC_ERROR* aCode, char* aText, size_t* aSize, GC_ERROR* aError);
    bool Info(gc::TL_INFO_CMD aCommand, gc::INFO_DATATYPE* aType, void* aBuffer, size_t* aSize,
              GC_ERROR* aError);
    bool InterfacesUpdate(bool* aChanged, uint64_t aTimeout, GC_ERROR* aError);
    // The count, or 0 on failure.
    uint32_t InterfacesCount(GC_ERROR* aError);
    bool InterfacesAtIndex(uint32_t aIndex, char* aId, size_t* aSize, GC_ERROR* aError);
    bool InterfacesGetInfo(const char* aId, gc::INTERFACE_INFO_CMD aCommand,
                           gc::INFO_DATATYPE* aType, void* aBuffer, size_t* aSize,
                           GC_ERROR* aError);
    bool InterfaceOpen(const char* aId, gc::IF_HANDLE* aInterface, GC_ERROR* aError);
    bool InterfaceClose(gc::IF_HANDLE aInterface, GC_ERROR* aError);
    bool InterfaceInfo(gc::IF_HANDLE aInterface, gc::INTERFACE_INFO_CMD aCommand,
                       gc::INFO_DATATYPE* aType, void* aBuffer, size_t* aSize, GC_ERROR* aError);
    bool InterfaceUpdate(gc::IF_HANDLE aInterface, bool* aChanged, uint64_t aTimeout,
                         GC_ERROR* aError);
    uint32_t InterfaceCount(gc::IF_HANDLE aInterface, GC_ERROR* aError);
    bool InterfaceGetSerial(gc::IF_HANDLE aInterface, uint32_t aIndex, char* aId, size_t* aSize,
                            GC_ERROR* aError);
    bool InterfaceGetDetail(gc::IF_HANDLE aInterface, const char* aDevice,
                            gc::DEVICE_INFO_CMD aCommand, gc::INFO_DATATYPE* aType, void* aBuffer,
                            size_t* aSize, GC_ERROR* aError);
    bool DeviceOpen(gc::IF_HANDLE aInterface, const char* aDevice, gc::DEVICE_ACCESS_FLAGS aFlags,
                    gc::DEV_HANDLE* aHandle, GC_ERROR* aError);
    bool DeviceClose(gc::DEV_HANDLE aDevice, GC_ERROR* aError);
    bool DevicePort(gc::DEV_HANDLE aDevice, gc::PORT_HANDLE* aPort, GC_ERROR* aError);
    bool DeviceInfo(gc::DEV_HANDLE aDevice, gc::DEVICE_INFO_CMD aCommand, gc::INFO_DATATYPE* aType,
                    void* aBuffer, size_t* aSize, GC_ERROR* aError);
    uint32_t DeviceStreamCount(gc::DEV_HANDLE aDevice, GC_ERROR* aError);
    bool DeviceStreamIdent(gc::DEV_HANDLE aDevice, uint32_t aIndex, char* aId, size_t* aSize,
                           GC_ERROR* aError);
    bool StreamOpen(gc::DEV_HANDLE aDevice, const char* aId, gc::DS_HANDLE* aStream,
                    GC_ERROR* aError);
    bool StreamClose(gc::DS_HANDLE aStream, GC_ERROR* aError);
    bool StreamStart(gc::DS_HANDLE aStream, gc::ACQ_START_FLAGS aFlags, uint64_t aCount,
                     GC_ERROR* aError);
    bool StreamCease(gc::DS_HANDLE aStream, gc::ACQ_STOP_FLAGS aFlags, GC_ERROR* aError);
    bool StreamQuery(gc::DS_HANDLE aStream, gc::STREAM_INFO_CMD aCommand, gc::INFO_DATATYPE* aType,
                     void* aBuffer, size_t* aSize, GC_ERROR* aError);
    bool StreamBufferDeclare(gc::DS_HANDLE aStream, void* aMemory, size_t aSize, void* aPrivate,
                             gc::BUFFER_HANDLE* aBuffer, GC_ERROR* aError);
    bool StreamBufferDeclare(gc::DS_HANDLE aStream, size_t aSize, void* aPrivate,
                             gc::BUFFER_HANDLE* aBuffer, GC_ERROR* aError);
    // With the extension in one call; otherwise announce, then queue.
    bool StreamBufferDeclareAndEnqueue(gc::DS_HANDLE aStream, void* aMemory, size_t aSize,
                                       void* aPrivate, gc::BUFFER_HANDLE* aBuffer,
                                       GC_ERROR* aError);
    bool StreamBufferDismiss(gc::DS_HANDLE aStream, gc::BUFFER_HANDLE aBuffer, void** aMemory,
                             void** aPrivate, GC_ERROR* aError);
    bool StreamBufferGetInfo(gc::DS_HANDLE aStream, gc::BUFFER_HANDLE aBuffer,
                             gc::BUFFER_INFO_CMD aCommand, gc::INFO_DATATYPE* aType, void* aValue,
                             size_t* aSize, GC_ERROR* aError);
    // With the extension in one call; otherwise the bundle, then revoke.
    bool StreamBufferGetInfoAndDismiss(gc::DS_HANDLE aStream, gc::BUFFER_HANDLE aBuffer,
                                       gc::S_BUFFER_INFO_BUNDLE* aBundle, GC_ERROR* aError);
    bool StreamBufferEnqueue(gc::DS_HANDLE aStream, gc::BUFFER_HANDLE aBuffer, GC_ERROR* aError);
    bool StreamBufferDequeue(gc::DS_HANDLE aStream, gc::ACQ_QUEUE_TYPE aOperation,
                             GC_ERROR* aError);
    bool StreamBufferGetChunks(gc::DS_HANDLE aStream, gc::BUFFER_HANDLE aBuffer,
                               gc::SINGLE_CHUNK_DATA* aChunks, size_t* aCount, GC_ERROR* aError);

    bool EventRegister(gc::EVENTSRC_HANDLE aSource, gc::EVENT_TYPE aType, gc::EVENT_HANDLE* aEvent,
                       GC_ERROR* aError);
    bool EventUnregister(gc::EVENTSRC_HANDLE aSource, gc::EVENT_TYPE aType, GC_ERROR* aError);
    bool EventInfo(gc::EVENT_HANDLE aEvent, gc::EVENT_INFO_CMD aCommand, gc::INFO_DATATYPE* aType,
                   void* aBuffer, size_t* aSize, GC_ERROR* aError);
    bool EventFlush(gc::EVENT_HANDLE aEvent, GC_ERROR* aError);
    bool EventKill(gc::EVENT_HANDLE aEvent, GC_ERROR* aError);
    bool EventGetData(gc::EVENT_HANDLE aEvent, void* aBuffer, size_t* aSize, uint64_t aTimeout,
                      GC_ERROR* aError);
    bool EventGetDataInfo(gc::EVENT_HANDLE aEvent, const void* aIn, size_t aInSize,
                          gc::EVENT_DATA_INFO_CMD aCommand, gc::INFO_DATATYPE* aType, void* aOut,
                          size_t* aOutSize, GC_ERROR* aError);

    bool PortRead(gc::PORT_HANDLE aPort, uint64_t aAddress, void* aBuffer, size_t* aSize,
                  GC_ERROR* aError);
    bool PortWrite(gc::PORT_HANDLE aPort, uint64_t aAddress, const void* aBuffer, size_t* aSize,
                   GC_ERROR* aError);
    bool PortRead(gc::PORT_HANDLE aPort, gc::PORT_REGISTER_STACK_ENTRY* aEntries, size_t* aCount,
                  GC_ERROR* aError);
    bool PortWrite(gc::PORT_HANDLE aPort, gc::PORT_REGISTER_STACK_ENTRY* aEntries, size_t* aCount,
                   GC_ERROR* aError);
    bool PortQuery(gc::PORT_HANDLE aPort, gc::PORT_INFO_CMD aCommand, gc::INFO_DATATYPE* aType,
                   void* aBuffer, size_t* aSize, GC_ERROR* aError);
    bool PortQueryURL(gc::PORT_HANDLE aPort, char* aUrl, size_t* aSize, GC_ERROR* aError);
    uint32_t PortQueryURLCount(gc::PORT_HANDLE aPort, GC_ERROR* aError);
    bool PortQueryURLInfo(gc::PORT_HANDLE aPort, uint32_t aIndex, gc::URL_INFO_CMD aCommand,
                          gc::INFO_DATATYPE* aType, void* aBuffer, size_t* aSize, GC_ERROR* aError);

    // Vendor extensions; without them the result is false and aError -1003.
    bool EventCreate(gc::EVENT_TYPE aType, gc::EVENT_HANDLE* aEvent, GC_ERROR* aError);
    bool EventDelete(gc::EVENT_HANDLE aEvent, GC_ERROR* aError);
    bool EventWait(gc::EVENT_HANDLE aEvent, uint64_t aTimeout, GC_ERROR* aError);
    bool EventSetData(gc::EVENT_HANDLE aEvent, const void* aBuffer, size_t aSize, GC_ERROR* aError);
    bool UnionCreate(gc::UNION_HANDLE* aUnion, GC_ERROR* aError);
    bool UnionDelete(gc::UNION_HANDLE aUnion, GC_ERROR* aError);
    bool UnionLinkup(gc::UNION_HANDLE aUnion, gc::EVENT_HANDLE aEvent, GC_ERROR* aError);
    bool UnionUnlink(gc::UNION_HANDLE aUnion, gc::EVENT_HANDLE aEvent, GC_ERROR* aError);
    bool UnionFlush(gc::UNION_HANDLE aUnion, GC_ERROR* aError);
    bool UnionKill(gc::UNION_HANDLE aUnion, GC_ERROR* aError);
    // The arguments go to the entry point as union, event, timeout.
    bool UnionWait(gc::UNION_HANDLE aUnion, uint64_t aTimeout, gc::EVENT_HANDLE* aEvent,
                   GC_ERROR* aError);

private:
    struct tTable {
#define TAVIK_SLOT(name) decltype(&gc::name) name = nullptr;
        TAVIK_TL_FUNCS(TAVIK_SLOT)
    };
    struct tCustom {
        TAVIK_CUSTOM_FUNCS(TAVIK_SLOT)
#undef TAVIK_SLOT
    };

    void* mLibrary = nullptr;
    tTable mTable;
    tCustom mCustom;
    gc::TL_HANDLE mTL = nullptr;
    bool mIsQRX = false;
};

} // namespace tvk
