// Listing and opening cameras and interfaces.
#include <algorithm>
#include <cstring>

#include "CallFrame.h"
#include "DeviceMap.h"
#include "engine/Global.h"
#include "engine/Interface.h"
#include "kit/ObjectList.h"

namespace {

tvk::cInterfaceProxy* AsInterface(tvk::pProxy* aProxy) {
    return static_cast<tvk::cInterfaceProxy*>(aProxy);
}

TvkError_t ListCameras(TvkCameraInfo_t* aList, uint32_t aLength, uint32_t* aFound) {
    uDeviceMap devices(gLocalData);
    llk::i4 status = devices.Renew();
    if (status != llk::kOk) return status;
    const llk::u4 count = devices.Count();
    if (aList)
        for (llk::u4 i = 0; i < count && i < aLength; ++i)
            aList[i] = *devices.At(i);
    *aFound = count;
    return aList && count > aLength ? TvkErrorMoreData : TvkErrorSuccess;
}

TvkError_t QueryCamera(const char* aIdentifier, TvkCameraInfo_t* aInfo) {
    llk::cObjectList* interfaces = llk::cObjectList::New(8, true);
    if (!interfaces) return llk::kNoMemory;
    uDeviceMap devices(gLocalData);
    llk::i4 status = devices.Renew(interfaces);
    if (status != llk::kOk) return status;
    if (const TvkCameraInfo_t* known = devices.Find(aIdentifier)) {
        *aInfo = *known;
        return TvkErrorSuccess;
    }
    // Another form of identifier that a producer recognises.
    return FindOnInterfaces(interfaces, aIdentifier, *aInfo, nullptr) ? TvkErrorSuccess
                                                                      : TvkErrorNotFound;
}

// Copies what each interface tells of itself, at most aLength records of
// aSize bytes (a record's own size at most); counts every one that answered.
TvkError_t ListInterfaces(TvkInterfaceInfo_t* aList, uint32_t aLength, uint32_t* aFound,
                          uint32_t aSize) {
    llk::cObjectList* interfaces = llk::cObjectList::New(8, true);
    if (!interfaces) return llk::kNoMemory;
    gLocalData.global->Enumerate(tvk::kTypeInterfaceProxy, interfaces);
    if (!aList) {
        *aFound = interfaces->Count();
        return TvkErrorSuccess;
    }
    uint32_t copied = 0;
    const size_t bytes = std::min<size_t>(aSize, sizeof(TvkInterfaceInfo_t));
    for (llk::u4 i = 0; i < interfaces->Count(); ++i) {
        TvkInterfaceInfo_t info{};
        if (AsInterface(static_cast<tvk::pProxy*>(interfaces->AtIndex(i)))->QueryInfo(info) !=
            llk::kOk)
            continue;
        // A length of 0 counts them all without a place to put them.
        if (aLength != 0)
            memcpy(reinterpret_cast<char*>(aList) + size_t{copied} * aSize, &info, bytes);
        if (++copied == aLength) break;
    }
    *aFound = copied;
    return TvkErrorSuccess;
}

TvkError_t OpenInterface(const char* aIdentifier, TvkHandle_t* aHandle) {
    llk::u4 handle = 0;
    tvk::pProxy* proxy = gLocalData.global->Search(tvk::kTypeInterfaceProxy, aIdentifier, &handle);
    if (!proxy) return TvkErrorNotFound;
    llk::i4 status = AsInterface(proxy)->Open();
    if (status == llk::kOk) *aHandle = reinterpret_cast<TvkHandle_t>(uintptr_t{handle});
    proxy->Release();
    return status;
}

TvkError_t CloseInterface(TvkHandle_t aHandle) {
    tvk::pProxy* proxy = Handle2Proxy(aHandle, tvk::kTypeInterfaceProxy);
    if (!proxy) return TvkErrorBadHandle;
    llk::i4 status = AsInterface(proxy)->Close();
    proxy->Release();
    return status;
}

} // namespace

extern "C" {

TVK_EXPORT TvkError_t TvkCamerasList(TvkCameraInfo_t* pCameraInfo, uint32_t listLength,
                                     uint32_t* pNumFound, uint32_t sizeofCameraInfo) {
    uCallTrace trace("TvkCamerasList");
    trace.InPointer("pCameraInfo", pCameraInfo)
        .InU32("listLength", listLength)
        .InU32("sizeofCameraInfo", sizeofCameraInfo);
    TvkError_t status = RunGated(
        trace, 0,
        FirstFailure({Require(pNumFound), RequireSize(sizeofCameraInfo, sizeof(TvkCameraInfo_t))}),
        [&] { return ListCameras(pCameraInfo, listLength, pNumFound); });
    trace.OutU32("pNumFound", pNumFound);
    return status;
}

TVK_EXPORT TvkError_t TvkCameraInfoQuery(const char* idString, TvkCameraInfo_t* pInfo,
                                         uint32_t sizeofCameraInfo) {
    uCallTrace trace("TvkCameraInfoQuery");
    trace.InString("idString", idString).InU32("sizeofCameraInfo", sizeofCameraInfo);
    TvkError_t status =
        RunGated(trace, 0,
                 FirstFailure({Require(idString), Require(pInfo),
                               RequireSize(sizeofCameraInfo, sizeof(TvkCameraInfo_t))}),
                 [&] { return QueryCamera(idString, pInfo); });
    trace.OutPointer("pInfo", pInfo);
    return status;
}

TVK_EXPORT TvkError_t TvkCameraOpen(const char* idString, TvkAccessMode_t accessMode,
                                    TvkHandle_t* pCameraHandle) {
    uCallTrace trace("TvkCameraOpen");
    trace.InString("idString", idString).InU32("accessMode", accessMode);
    TvkError_t status =
        RunGated(trace, kTagCapture, FirstFailure({Require(idString), Require(pCameraHandle)}),
                 [&] { return TvkErrorNotImplemented; });
    trace.OutHandle("pCameraHandle", pCameraHandle);
    return status;
}

TVK_EXPORT TvkError_t TvkCameraClose(const TvkHandle_t cameraHandle) {
    uCallTrace trace("TvkCameraClose");
    trace.InHandle("cameraHandle", cameraHandle);
    return RunGated(trace, kTagCapture, TvkErrorSuccess, [&] {
        return WithProxy(cameraHandle, TvkErrorDeviceNotOpen,
                         [](tvk::pProxy*) { return TvkErrorNotImplemented; });
    });
}

TVK_EXPORT TvkError_t TvkInterfacesList(TvkInterfaceInfo_t* pInterfaceInfo, uint32_t listLength,
                                        uint32_t* pNumFound, uint32_t sizeofInterfaceInfo) {
    uCallTrace trace("TvkInterfacesList");
    trace.InPointer("pInterfaceInfo", pInterfaceInfo)
        .InU32("listLength", listLength)
        .InU32("sizeofInterfaceInfo", sizeofInterfaceInfo);
    TvkError_t status = RunGated(trace, 0, Require(pNumFound), [&] {
        return ListInterfaces(pInterfaceInfo, listLength, pNumFound, sizeofInterfaceInfo);
    });
    trace.OutU32("pNumFound", pNumFound);
    return status;
}

TVK_EXPORT TvkError_t TvkInterfaceOpen(const char* idString, TvkHandle_t* pInterfaceHandle) {
    uCallTrace trace("TvkInterfaceOpen");
    trace.InString("idString", idString);
    TvkError_t status = RunGated(trace, 0, Require(pInterfaceHandle),
                                 [&] { return OpenInterface(idString, pInterfaceHandle); });
    trace.OutHandle("pInterfaceHandle", pInterfaceHandle);
    return status;
}

TVK_EXPORT TvkError_t TvkInterfaceClose(const TvkHandle_t interfaceHandle) {
    uCallTrace trace("TvkInterfaceClose");
    trace.InHandle("interfaceHandle", interfaceHandle);
    return RunGated(trace, 0, TvkErrorSuccess, [&] { return CloseInterface(interfaceHandle); });
}

} // extern "C"
