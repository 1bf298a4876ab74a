#include "engine/Producer.h"

#include <dlfcn.h>

#include <string_view>

#include "engine/Proxy.h"

namespace tvk {

namespace {
using gc::GC_ERROR;

// A standard entry: an empty slot answers false and leaves aError alone.
template <class F, class... A> bool Call(F aFunction, GC_ERROR* aError, A... aArgs) {
    if (!aFunction) return false;
    GC_ERROR status = aFunction(aArgs...);
    if (aError) *aError = status;
    return status == gc::GC_ERR_SUCCESS;
}

// An extension: an empty slot reports "not implemented".
template <class F, class... A> bool CallCustom(F aFunction, GC_ERROR* aError, A... aArgs) {
    if (!aFunction) {
        if (aError) *aError = gc::GC_ERR_NOT_IMPLEMENTED;
        return false;
    }
    return Call(aFunction, aError, aArgs...);
}

template <class T> T Resolve(void* aLibrary, const char* aName) {
    return reinterpret_cast<T>(dlsym(aLibrary, aName));
}
} // namespace

llk::u4 cProducer::ClassType() const {
    return kTypeProducer;
}

llk::i4 cProducer::Initialize(const char* aPath) {
    if (!aPath) return llk::kBadArgument;
    mLibrary = dlopen(aPath, RTLD_NOW | RTLD_LOCAL);
    if (!mLibrary) return llk::kBadArgument;
    auto initEx = Resolve<decltype(&gc::GCInitLibEx)>(mLibrary, "GCInitLibEx");
    auto open = Resolve<decltype(&gc::TLOpen)>(mLibrary, "TLOpen");
    auto init = initEx ? nullptr : Resolve<decltype(&gc::GCInitLib)>(mLibrary, "GCInitLib");
    if ((!initEx && !init) || !open) return llk::kBadArgument;
    // The status of the init call is not looked at.
    if (initEx) {
        initEx(gc::TL_INIT_FLAGS_DEFAULT_QRX);
        mIsQRX = true;
    } else {
        init();
    }
    open(&mTL);
    if (!mTL) return llk::kBadArgument;

#define TAVIK_RESOLVE(name) mTable.name = Resolve<decltype(mTable.name)>(mLibrary, #name);
    TAVIK_TL_FUNCS(TAVIK_RESOLVE)
#undef TAVIK_RESOLVE
    // Every standard entry but the chunk call is required.
    bool complete = true;
#define TAVIK_REQUIRE(name)                                                                        \
    complete =                                                                                     \
        complete && (mTable.name != nullptr || std::string_view(#name) == "DSGetBufferChunkData");
    TAVIK_TL_FUNCS(TAVIK_REQUIRE)
#undef TAVIK_REQUIRE
    if (!complete) return llk::kNotFound;
#define TAVIK_RESOLVE(name) mCustom.name = Resolve<decltype(mCustom.name)>(mLibrary, #name);
    TAVIK_CUSTOM_FUNCS(TAVIK_RESOLVE)
#undef TAVIK_RESOLVE
    return llk::kOk;
}

cProducer::~cProducer() {
    if (!mLibrary) return;
    auto closeLib = Resolve<decltype(&gc::GCCloseLib)>(mLibrary, "GCCloseLib");
    auto close = Resolve<decltype(&gc::TLClose)>(mLibrary, "TLClose");
    // A producer that can't do both is closed by neither.
    if (closeLib && close) {
        if (mTL) close(mTL);
        closeLib();
    }
    dlclose(mLibrary);
}

bool cProducer::LastError(GC_ERROR* aCode, char* aText, size_t* aSize, GC_ERROR* aError) {
    return Call(mTable.GCGetLastError, aError, aCode, aText, aSize);
}
bool cProducer::Info(gc::TL_INFO_CMD aCommand, gc::INFO_DATATYPE* aType, void* aBuffer,
                     size_t* aSize, GC_ERROR* aError) {
    return Call(mTable.GCGetInfo, aError, aCommand, aType, aBuffer, aSize);
}
bool cProducer::InterfacesUpdate(bool* aChanged, uint64_t aTimeout, GC_ERROR* aError) {
    gc::bool8_t changed = 0;
    bool ok = Call(mTable.TLUpdateInterfaceList, aError, mTL, &changed, aTimeout);
    if (aChanged) *aChanged = changed != 0;
    return ok;
}
uint32_t cProducer::InterfacesCount(GC_ERROR* aError) {
    uint32_t count = 0;
    return Call(mTable.TLGetNumInterfaces, aError, mTL, &count) ? count : 0;
}
bool cProducer::InterfacesAtIndex(uint32_t aIndex, char* aId, size_t* aSize, GC_ERROR* aError) {
    return Call(mTable.TLGetInterfaceID, aError, mTL, aIndex, aId, aSize);
}
bool cProducer::InterfacesGetInfo(const char* aId, gc::INTERFACE_INFO_CMD aCommand,
                                  gc::INFO_DATATYPE* aType, void* aBuffer, size_t* aSize,
                                  GC_ERROR* aError) {
    return Call(mTable.TLGetInterfaceInfo, aError, mTL, aId, aCommand, aType, aBuffer, aSize);
}
bool cProducer::InterfaceOpen(const char* aId, gc::IF_HANDLE* aInterface, GC_ERROR* aError) {
    return Call(mTable.TLOpenInterface, aError, mTL, aId, aInterface);
}
bool cProducer::InterfaceClose(gc::IF_HANDLE aInterface, GC_ERROR* aError) {
    return Call(mTable.IFClose, aError, aInterface);
}
bool cProducer::InterfaceInfo(gc::IF_HANDLE aInterface, gc::INTERFACE_INFO_CMD aCommand,
                              gc::INFO_DATATYPE* aType, void* aBuffer, size_t* aSize,
                              GC_ERROR* aError) {
    return Call(mTable.IFGetInfo, aError, aInterface, aCommand, aType, aBuffer, aSize);
}
bool cProducer::InterfaceUpdate(gc::IF_HANDLE aInterface, bool* aChanged, uint64_t aTimeout,
                                GC_ERROR* aError) {
    gc::bool8_t changed = 0;
    bool ok = Call(mTable.IFUpdateDeviceList, aError, aInterface, &changed, aTimeout);
    if (aChanged) *aChanged = changed != 0;
    return ok;
}
uint32_t cProducer::InterfaceCount(gc::IF_HANDLE aInterface, GC_ERROR* aError) {
    uint32_t count = 0;
    return Call(mTable.IFGetNumDevices, aError, aInterface, &count) ? count : 0;
}
bool cProducer::InterfaceGetSerial(gc::IF_HANDLE aInterface, uint32_t aIndex, char* aId,
                                   size_t* aSize, GC_ERROR* aError) {
    return Call(mTable.IFGetDeviceID, aError, aInterface, aIndex, aId, aSize);
}
bool cProducer::InterfaceGetDetail(gc::IF_HANDLE aInterface, const char* aDevice,
                                   gc::DEVICE_INFO_CMD aCommand, gc::INFO_DATATYPE* aType,
                                   void* aBuffer, size_t* aSize, GC_ERROR* aError) {
    return Call(mTable.IFGetDeviceInfo, aError, aInterface, aDevice, aCommand, aType, aBuffer,
                aSize);
}
bool cProducer::DeviceOpen(gc::IF_HANDLE aInterface, const char* aDevice,
                           gc::DEVICE_ACCESS_FLAGS aFlags, gc::DEV_HANDLE* aHandle,
                           GC_ERROR* aError) {
    return Call(mTable.IFOpenDevice, aError, aInterface, aDevice, aFlags, aHandle);
}
bool cProducer::DeviceClose(gc::DEV_HANDLE aDevice, GC_ERROR* aError) {
    return Call(mTable.DevClose, aError, aDevice);
}
bool cProducer::DevicePort(gc::DEV_HANDLE aDevice, gc::PORT_HANDLE* aPort, GC_ERROR* aError) {
    return Call(mTable.DevGetPort, aError, aDevice, aPort);
}
bool cProducer::DeviceInfo(gc::DEV_HANDLE aDevice, gc::DEVICE_INFO_CMD aCommand,
                           gc::INFO_DATATYPE* aType, void* aBuffer, size_t* aSize,
                           GC_ERROR* aError) {
    return Call(mTable.DevGetInfo, aError, aDevice, aCommand, aType, aBuffer, aSize);
}
uint32_t cProducer::DeviceStreamCount(gc::DEV_HANDLE aDevice, GC_ERROR* aError) {
    uint32_t count = 0;
    return Call(mTable.DevGetNumDataStreams, aError, aDevice, &count) ? count : 0;
}
bool cProducer::DeviceStreamIdent(gc::DEV_HANDLE aDevice, uint32_t aIndex, char* aId, size_t* aSize,
                                  GC_ERROR* aError) {
    return Call(mTable.DevGetDataStreamID, aError, aDevice, aIndex, aId, aSize);
}
bool cProducer::StreamOpen(gc::DEV_HANDLE aDevice, const char* aId, gc::DS_HANDLE* aStream,
                           GC_ERROR* aError) {
    return Call(mTable.DevOpenDataStream, aError, aDevice, aId, aStream);
}
bool cProducer::StreamClose(gc::DS_HANDLE aStream, GC_ERROR* aError) {
    return Call(mTable.DSClose, aError, aStream);
}
bool cProducer::StreamStart(gc::DS_HANDLE aStream, gc::ACQ_START_FLAGS aFlags, uint64_t aCount,
                            GC_ERROR* aError) {
    return Call(mTable.DSStartAcquisition, aError, aStream, aFlags, aCount);
}
bool cProducer::StreamCease(gc::DS_HANDLE aStream, gc::ACQ_STOP_FLAGS aFlags, GC_ERROR* aError) {
    return Call(mTable.DSStopAcquisition, aError, aStream, aFlags);
}
bool cProducer::StreamQuery(gc::DS_HANDLE aStream, gc::STREAM_INFO_CMD aCommand,
                            gc::INFO_DATATYPE* aType, void* aBuffer, size_t* aSize,
                            GC_ERROR* aError) {
    return Call(mTable.DSGetInfo, aError, aStream, aCommand, aType, aBuffer, aSize);
}
bool cProducer::StreamBufferDeclare(gc::DS_HANDLE aStream, void* aMemory, size_t aSize,
                                    void* aPrivate, gc::BUFFER_HANDLE* aBuffer, GC_ERROR* aError) {
    return Call(mTable.DSAnnounceBuffer, aError, aStream, aMemory, aSize, aPrivate, aBuffer);
}
bool cProducer::StreamBufferDeclare(gc::DS_HANDLE aStream, size_t aSize, void* aPrivate,
                                    gc::BUFFER_HANDLE* aBuffer, GC_ERROR* aError) {
    return Call(mTable.DSAllocAndAnnounceBuffer, aError, aStream, aSize, aPrivate, aBuffer);
}
bool cProducer::StreamBufferDeclareAndEnqueue(gc::DS_HANDLE aStream, void* aMemory, size_t aSize,
                                              void* aPrivate, gc::BUFFER_HANDLE* aBuffer,
                                              GC_ERROR* aError) {
    if (mCustom.DSAnnounceAndQueueBuffer)
        return Call(mCustom.DSAnnounceAndQueueBuffer, aError, aStream, aMemory, aSize, aPrivate,
                    aBuffer);
    return StreamBufferDeclare(aStream, aMemory, aSize, aPrivate, aBuffer, aError) &&
           StreamBufferEnqueue(aStream, *aBuffer, aError);
}
bool cProducer::StreamBufferDismiss(gc::DS_HANDLE aStream, gc::BUFFER_HANDLE aBuffer,
                                    void** aMemory, void** aPrivate, GC_ERROR* aError) {
    return Call(mTable.DSRevokeBuffer, aError, aStream, aBuffer, aMemory, aPrivate);
}
bool cProducer::StreamBufferGetInfo(gc::DS_HANDLE aStream, gc::BUFFER_HANDLE aBuffer,
                                    gc::BUFFER_INFO_CMD aCommand, gc::INFO_DATATYPE* aType,
                                    void* aValue, size_t* aSize, GC_ERROR* aError) {
    return Call(mTable.DSGetBufferInfo, aError, aStream, aBuffer, aCommand, aType, aValue, aSize);
}
bool cProducer::StreamBufferGetInfoAndDismiss(gc::DS_HANDLE aStream, gc::BUFFER_HANDLE aBuffer,
                                              gc::S_BUFFER_INFO_BUNDLE* aBundle, GC_ERROR* aError) {
    if (mCustom.DSGetBufferInfoAndRevoke)
        return Call(mCustom.DSGetBufferInfoAndRevoke, aError, aStream, aBuffer, aBundle,
                    static_cast<void**>(nullptr), static_cast<void**>(nullptr));
    gc::INFO_DATATYPE type = 0;
    size_t size = sizeof(*aBundle);
    return StreamBufferGetInfo(aStream, aBuffer, gc::BUFFER_INFO_BUNDLE_QRX, &type, aBundle, &size,
                               aError) &&
           StreamBufferDismiss(aStream, aBuffer, nullptr, nullptr, aError);
}
bool cProducer::StreamBufferEnqueue(gc::DS_HANDLE aStream, gc::BUFFER_HANDLE aBuffer,
                                    GC_ERROR* aError) {
    return Call(mTable.DSQueueBuffer, aError, aStream, aBuffer);
}
bool cProducer::StreamBufferDequeue(gc::DS_HANDLE aStream, gc::ACQ_QUEUE_TYPE aOperation,
                                    GC_ERROR* aError) {
    return Call(mTable.DSFlushQueue, aError, aStream, aOperation);
}
bool cProducer::StreamBufferGetChunks(gc::DS_HANDLE aStream, gc::BUFFER_HANDLE aBuffer,
                                      gc::SINGLE_CHUNK_DATA* aChunks, size_t* aCount,
                                      GC_ERROR* aError) {
    // The one optional standard entry reports its absence like an extension.
    return CallCustom(mTable.DSGetBufferChunkData, aError, aStream, aBuffer, aChunks, aCount);
}
bool cProducer::EventRegister(gc::EVENTSRC_HANDLE aSource, gc::EVENT_TYPE aType,
                              gc::EVENT_HANDLE* aEvent, GC_ERROR* aError) {
    return Call(mTable.GCRegisterEvent, aError, aSource, aType, aEvent);
}
bool cProducer::EventUnregister(gc::EVENTSRC_HANDLE aSource, gc::EVENT_TYPE aType,
                                GC_ERROR* aError) {
    return Call(mTable.GCUnregisterEvent, aError, aSource, aType);
}
bool cProducer::EventInfo(gc::EVENT_HANDLE aEvent, gc::EVENT_INFO_CMD aCommand,
                          gc::INFO_DATATYPE* aType, void* aBuffer, size_t* aSize,
                          GC_ERROR* aError) {
    return Call(mTable.EventGetInfo, aError, aEvent, aCommand, aType, aBuffer, aSize);
}
bool cProducer::EventFlush(gc::EVENT_HANDLE aEvent, GC_ERROR* aError) {
    return Call(mTable.EventFlush, aError, aEvent);
}
bool cProducer::EventKill(gc::EVENT_HANDLE aEvent, GC_ERROR* aError) {
    return Call(mTable.EventKill, aError, aEvent);
}
bool cProducer::EventGetData(gc::EVENT_HANDLE aEvent, void* aBuffer, size_t* aSize,
                             uint64_t aTimeout, GC_ERROR* aError) {
    return Call(mTable.EventGetData, aError, aEvent, aBuffer, aSize, aTimeout);
}
bool cProducer::EventGetDataInfo(gc::EVENT_HANDLE aEvent, const void* aIn, size_t aInSize,
                                 gc::EVENT_DATA_INFO_CMD aCommand, gc::INFO_DATATYPE* aType,
                                 void* aOut, size_t* aOutSize, GC_ERROR* aError) {
    return Call(mTable.EventGetDataInfo, aError, aEvent, aIn, aInSize, aCommand, aType, aOut,
                aOutSize);
}
bool cProducer::PortRead(gc::PORT_HANDLE aPort, uint64_t aAddress, void* aBuffer, size_t* aSize,
                         GC_ERROR* aError) {
    return Call(mTable.GCReadPort, aError, aPort, aAddress, aBuffer, aSize);
}
bool cProducer::PortWrite(gc::PORT_HANDLE aPort, uint64_t aAddress, const void* aBuffer,
                          size_t* aSize, GC_ERROR* aError) {
    return Call(mTable.GCWritePort, aError, aPort, aAddress, aBuffer, aSize);
}
bool cProducer::PortRead(gc::PORT_HANDLE aPort, gc::PORT_REGISTER_STACK_ENTRY* aEntries,
                         size_t* aCount, GC_ERROR* aError) {
    return Call(mTable.GCReadPortStacked, aError, aPort, aEntries, aCount);
}
bool cProducer::PortWrite(gc::PORT_HANDLE aPort, gc::PORT_REGISTER_STACK_ENTRY* aEntries,
                          size_t* aCount, GC_ERROR* aError) {
    return Call(mTable.GCWritePortStacked, aError, aPort, aEntries, aCount);
}
bool cProducer::PortQuery(gc::PORT_HANDLE aPort, gc::PORT_INFO_CMD aCommand,
                          gc::INFO_DATATYPE* aType, void* aBuffer, size_t* aSize,
                          GC_ERROR* aError) {
    return Call(mTable.GCGetPortInfo, aError, aPort, aCommand, aType, aBuffer, aSize);
}
bool cProducer::PortQueryURL(gc::PORT_HANDLE aPort, char* aUrl, size_t* aSize, GC_ERROR* aError) {
    return Call(mTable.GCGetPortURL, aError, aPort, aUrl, aSize);
}
uint32_t cProducer::PortQueryURLCount(gc::PORT_HANDLE aPort, GC_ERROR* aError) {
    uint32_t count = 0;
    return Call(mTable.GCGetNumPortURLs, aError, aPort, &count) ? count : 0;
}
bool cProducer::PortQueryURLInfo(gc::PORT_HANDLE aPort, uint32_t aIndex, gc::URL_INFO_CMD aCommand,
                                 gc::INFO_DATATYPE* aType, void* aBuffer, size_t* aSize,
                                 GC_ERROR* aError) {
    return Call(mTable.GCGetPortURLInfo, aError, aPort, aIndex, aCommand, aType, aBuffer, aSize);
}

bool cProducer::EventCreate(gc::EVENT_TYPE aType, gc::EVENT_HANDLE* aEvent, GC_ERROR* aError) {
    return CallCustom(mCustom.EventCreate, aError, aType, aEvent);
}
bool cProducer::EventDelete(gc::EVENT_HANDLE aEvent, GC_ERROR* aError) {
    return CallCustom(mCustom.EventDelete, aError, aEvent);
}
bool cProducer::EventWait(gc::EVENT_HANDLE aEvent, uint64_t aTimeout, GC_ERROR* aError) {
    return CallCustom(mCustom.EventWait, aError, aEvent, aTimeout);
}
bool cProducer::EventSetData(gc::EVENT_HANDLE aEvent, const void* aBuffer, size_t aSize,
                             GC_ERROR* aError) {
    return CallCustom(mCustom.EventSetData, aError, aEvent, aBuffer, aSize);
}
bool cProducer::UnionCreate(gc::UNION_HANDLE* aUnion, GC_ERROR* aError) {
    return CallCustom(mCustom.UnionCreate, aError, aUnion);
}
bool cProducer::UnionDelete(gc::UNION_HANDLE aUnion, GC_ERROR* aError) {
    return CallCustom(mCustom.UnionDelete, aError, aUnion);
}
bool cProducer::UnionLinkup(gc::UNION_HANDLE aUnion, gc::EVENT_HANDLE aEvent, GC_ERROR* aError) {
    return CallCustom(mCustom.UnionLinkup, aError, aUnion, aEvent);
}
bool cProducer::UnionUnlink(gc::UNION_HANDLE aUnion, gc::EVENT_HANDLE aEvent, GC_ERROR* aError) {
    return CallCustom(mCustom.UnionUnlink, aError, aUnion, aEvent);
}
bool cProducer::UnionFlush(gc::UNION_HANDLE aUnion, GC_ERROR* aError) {
    return CallCustom(mCustom.UnionFlush, aError, aUnion);
}
bool cProducer::UnionKill(gc::UNION_HANDLE aUnion, GC_ERROR* aError) {
    return CallCustom(mCustom.UnionKill, aError, aUnion);
}
bool cProducer::UnionWait(gc::UNION_HANDLE aUnion, uint64_t aTimeout, gc::EVENT_HANDLE* aEvent,
                          GC_ERROR* aError) {
    return CallCustom(mCustom.UnionWait, aError, aUnion, aEvent, aTimeout);
}

} // namespace tvk
