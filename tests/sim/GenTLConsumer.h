// A minimal GenTL consumer that uses only standard calls, resolved by name
// from a loaded producer: what any third-party consumer would do. Like many
// consumers it binds every entry point of the version it speaks (1.5), and
// says which it could not find.
#pragma once

#include <dlfcn.h>

#include <string>
#include <vector>

#include "TavikGenTLVendor.h"

namespace test {

using namespace GenICam::Client;

// The entry points of GenTL 1.5: those of 1.0, then 1.1, 1.3, 1.4 and 1.5.
#define TAVIK_GENTL_15_ENTRIES(X)                                                                  \
    X(GCGetInfo)                                                                                   \
    X(GCGetLastError) X(GCInitLib) X(GCCloseLib) X(GCReadPort) X(GCWritePort) X(GCGetPortURL) X(   \
        GCGetPortInfo) X(GCRegisterEvent) X(GCUnregisterEvent) X(EventGetData) X(EventGetDataInfo) \
        X(EventGetInfo) X(EventFlush) X(EventKill) X(TLOpen) X(TLClose) X(TLGetInfo)               \
            X(TLGetNumInterfaces) X(TLGetInterfaceID) X(TLGetInterfaceInfo) X(TLOpenInterface)     \
                X(TLUpdateInterfaceList) X(IFClose) X(IFGetInfo) X(IFGetNumDevices)                \
                    X(IFGetDeviceID) X(IFUpdateDeviceList) X(IFGetDeviceInfo) X(IFOpenDevice)      \
                        X(DevGetPort) X(DevGetNumDataStreams) X(DevGetDataStreamID)                \
                            X(DevOpenDataStream) X(DevGetInfo) X(DevClose) X(DSAnnounceBuffer)     \
                                X(DSAllocAndAnnounceBuffer) X(DSFlushQueue) X(DSStartAcquisition)  \
                                    X(DSStopAcquisition) X(DSGetInfo) X(DSGetBufferID) X(DSClose)  \
                                        X(DSRevokeBuffer) X(DSQueueBuffer) X(DSGetBufferInfo)      \
                                            X(GCGetNumPortURLs) X(GCGetPortURLInfo)                \
                                                X(GCReadPortStacked) X(GCWritePortStacked)         \
                                                    X(DSGetBufferChunkData) X(IFGetParentTL)       \
                                                        X(DevGetParentIF) X(DSGetParentDev)        \
                                                            X(DSGetNumBufferParts)                 \
                                                                X(DSGetBufferPartInfo)

struct GenTL {
#define TAVIK_GENTL_ENTRY(name) decltype(&::GenICam::Client::name) name = nullptr;
    TAVIK_GENTL_15_ENTRIES(TAVIK_GENTL_ENTRY)
#undef TAVIK_GENTL_ENTRY

    // Loads the producer and resolves every entry point; missing ones are listed.
    explicit GenTL(const char* aPath) {
        library = dlopen(aPath, RTLD_NOW | RTLD_LOCAL);
        if (!library) return;
#define TAVIK_GENTL_RESOLVE(name)                                                                  \
    name = reinterpret_cast<decltype(name)>(dlsym(library, #name));                                \
    if (!name) missing.push_back(#name);
        TAVIK_GENTL_15_ENTRIES(TAVIK_GENTL_RESOLVE)
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
    std::vector<std::string> missing;
};

} // namespace test
