// A minimal GenTL consumer that uses only standard calls, resolved by name
// from a loaded producer: what any third-party consumer would do.
#pragma once

#include <dlfcn.h>

#include <string>
#include <vector>

#include "TavikGenTLVendor.h"

namespace test {

using namespace GenICam::Client;

struct GenTL {
#define TAVIK_GENTL_ENTRY(name) decltype(&::GenICam::Client::name) name = nullptr;
    TAVIK_GENTL_ENTRY(GCInitLib)
    TAVIK_GENTL_ENTRY(GCCloseLib)
    TAVIK_GENTL_ENTRY(GCGetInfo)
    TAVIK_GENTL_ENTRY(TLOpen)
    TAVIK_GENTL_ENTRY(TLClose)
    TAVIK_GENTL_ENTRY(TLUpdateInterfaceList)
    TAVIK_GENTL_ENTRY(TLGetNumInterfaces)
    TAVIK_GENTL_ENTRY(TLGetInterfaceID)
    TAVIK_GENTL_ENTRY(TLGetInterfaceInfo)
    TAVIK_GENTL_ENTRY(TLOpenInterface)
    TAVIK_GENTL_ENTRY(IFClose)
    TAVIK_GENTL_ENTRY(IFUpdateDeviceList)
    TAVIK_GENTL_ENTRY(IFGetNumDevices)
    TAVIK_GENTL_ENTRY(IFGetDeviceID)
    TAVIK_GENTL_ENTRY(IFGetDeviceInfo)
    TAVIK_GENTL_ENTRY(IFOpenDevice)
    TAVIK_GENTL_ENTRY(DevGetPort)
    TAVIK_GENTL_ENTRY(DevClose)
    TAVIK_GENTL_ENTRY(DevGetDataStreamID)
    TAVIK_GENTL_ENTRY(DevOpenDataStream)
    TAVIK_GENTL_ENTRY(GCReadPort)
    TAVIK_GENTL_ENTRY(GCWritePort)
    TAVIK_GENTL_ENTRY(GCGetPortURL)
    TAVIK_GENTL_ENTRY(GCGetPortURLInfo)
    TAVIK_GENTL_ENTRY(GCRegisterEvent)
    TAVIK_GENTL_ENTRY(GCUnregisterEvent)
    TAVIK_GENTL_ENTRY(EventGetData)
    TAVIK_GENTL_ENTRY(EventGetDataInfo)
    TAVIK_GENTL_ENTRY(EventKill)
    TAVIK_GENTL_ENTRY(DSAnnounceBuffer)
    TAVIK_GENTL_ENTRY(DSRevokeBuffer)
    TAVIK_GENTL_ENTRY(DSQueueBuffer)
    TAVIK_GENTL_ENTRY(DSStartAcquisition)
    TAVIK_GENTL_ENTRY(DSStopAcquisition)
    TAVIK_GENTL_ENTRY(DSGetInfo)
    TAVIK_GENTL_ENTRY(DSGetBufferInfo)
    TAVIK_GENTL_ENTRY(DSGetBufferChunkData)
    TAVIK_GENTL_ENTRY(DSFlushQueue)
    TAVIK_GENTL_ENTRY(DSClose)
#undef TAVIK_GENTL_ENTRY

    // Loads the producer and resolves every entry point above.
    explicit GenTL(const char* aPath) {
        library = dlopen(aPath, RTLD_NOW | RTLD_LOCAL);
        if (!library) return;
#define TAVIK_GENTL_RESOLVE(name) name = reinterpret_cast<decltype(name)>(dlsym(library, #name));
        TAVIK_GENTL_RESOLVE(GCInitLib)
        TAVIK_GENTL_RESOLVE(GCCloseLib)
        TAVIK_GENTL_RESOLVE(GCGetInfo)
        TAVIK_GENTL_RESOLVE(TLOpen)
        TAVIK_GENTL_RESOLVE(TLClose)
        TAVIK_GENTL_RESOLVE(TLUpdateInterfaceList)
        TAVIK_GENTL_RESOLVE(TLGetNumInterfaces)
        TAVIK_GENTL_RESOLVE(TLGetInterfaceID)
        TAVIK_GENTL_RESOLVE(TLGetInterfaceInfo)
        TAVIK_GENTL_RESOLVE(TLOpenInterface)
        TAVIK_GENTL_RESOLVE(IFClose)
        TAVIK_GENTL_RESOLVE(IFUpdateDeviceList)
        TAVIK_GENTL_RESOLVE(IFGetNumDevices)
        TAVIK_GENTL_RESOLVE(IFGetDeviceID)
        TAVIK_GENTL_RESOLVE(IFGetDeviceInfo)
        TAVIK_GENTL_RESOLVE(IFOpenDevice)
        TAVIK_GENTL_RESOLVE(DevGetPort)
        TAVIK_GENTL_RESOLVE(DevClose)
        TAVIK_GENTL_RESOLVE(DevGetDataStreamID)
        TAVIK_GENTL_RESOLVE(DevOpenDataStream)
        TAVIK_GENTL_RESOLVE(GCReadPort)
        TAVIK_GENTL_RESOLVE(GCWritePort)
        TAVIK_GENTL_RESOLVE(GCGetPortURL)
        TAVIK_GENTL_RESOLVE(GCGetPortURLInfo)
        TAVIK_GENTL_RESOLVE(GCRegisterEvent)
        TAVIK_GENTL_RESOLVE(GCUnregisterEvent)
        TAVIK_GENTL_RESOLVE(EventGetData)
        TAVIK_GENTL_RESOLVE(EventGetDataInfo)
        TAVIK_GENTL_RESOLVE(EventKill)
        TAVIK_GENTL_RESOLVE(DSAnnounceBuffer)
        TAVIK_GENTL_RESOLVE(DSRevokeBuffer)
        TAVIK_GENTL_RESOLVE(DSQueueBuffer)
        TAVIK_GENTL_RESOLVE(DSStartAcquisition)
        TAVIK_GENTL_RESOLVE(DSStopAcquisition)
        TAVIK_GENTL_RESOLVE(DSGetInfo)
        TAVIK_GENTL_RESOLVE(DSGetBufferInfo)
        TAVIK_GENTL_RESOLVE(DSGetBufferChunkData)
        TAVIK_GENTL_RESOLVE(DSFlushQueue)
        TAVIK_GENTL_RESOLVE(DSClose)
#undef TAVIK_GENTL_RESOLVE
    }
    ~GenTL() {
        if (library) dlclose(library);
    }
    void* Symbol(const char* aName) const {
        return library ? dlsym(library, aName) : nullptr;
    }

    // Two-step string reads.
    template <class F> std::string Text(F aCall) const {
        size_t size = 0;
        if (aCall(nullptr, &size) != GC_ERR_SUCCESS) return {};
        std::string text(size, '\0');
        if (aCall(text.data(), &size) != GC_ERR_SUCCESS) return {};
        text.resize(size ? size - 1 : 0);
        return text;
    }

    void* library = nullptr;
};

} // namespace test
