// Listing and opening cameras and interfaces.
#include <algorithm>
#include <cstring>

#include "CallFrame.h"
#include "DeviceMap.h"
#include "engine/Camera.h"
#include "engine/Global.h"
#include "engine/Interface.h"
#include "kit/ObjectList.h"

namespace {

// Table entries and list elements of the interface type.
tvk::cInterfaceProxy* AsInterface(llk::pObject* aProxy) {
    return static_cast<tvk::cInterfaceProxy*>(aProxy);
}

TvkError_t ListCameras(TvkCameraInfo_t* aList, uint32_t aLength, uint32_t* aFound) {
    uDeviceMap devices;
    llk::i4 status = devices.Renew(gLocalData.global);
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
    uDeviceMap devices;
    llk::i4 status = devices.Renew(gLocalData.global, interfaces);
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
        if (AsInterface(interfaces->AtIndex(i))->QueryInfo(info) != llk::kOk) continue;
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

// The interface of aInterfaces called aIdentifier, or null.
tvk::cInterfaceProxy* InterfaceOf(llk::cObjectList* aInterfaces, const char* aIdentifier) {
    for (llk::u4 i = 0; i < aInterfaces->Count(); ++i) {
        auto* interface = AsInterface(aInterfaces->AtIndex(i));
        if (strcmp(interface->Identifier()->Chars(), aIdentifier) == 0) return interface;
    }
    return nullptr;
}

// Finds the camera of aIdentifier and the interface that gives access to
// it: the one the device map names, or any that recognises the identifier.
bool FindCamera(const char* aIdentifier, llk::cObjectList* aInterfaces, TvkCameraInfo_t& aInfo,
                tvk::cInterfaceProxy*& aWhere, llk::i4& aStatus) {
    uDeviceMap devices;
    aStatus = devices.Renew(gLocalData.global, aInterfaces);
    if (aStatus != llk::kOk) return false;
    if (const TvkCameraInfo_t* known = devices.Find(aIdentifier)) {
        tvk::cInterfaceProxy* interface = InterfaceOf(aInterfaces, known->interfaceID);
        if (interface && interface->DeviceFind(aIdentifier, aInfo) == llk::kOk) {
            llk::Assign(aWhere, interface);
            return true;
        }
    }
    return FindOnInterfaces(aInterfaces, aIdentifier, aInfo, &aWhere);
}

tvk::cCameraProxy* NewCamera(tvk::cInterfaceProxy* aInterface, const char* aIdentifier,
                             TvkAccessMode_t aMode, llk::i4& aStatus) {
    llk::cString* identifier = gLocalData.global->Cache(aIdentifier);
    if (!identifier) {
        aStatus = llk::kNoMemory;
        return nullptr;
    }
    return tvk::cCameraProxy::New(aInterface, identifier, aInterface->Aggregate(),
                                  aInterface->OwnHandle(), aMode, &aStatus);
}

TvkError_t OpenCamera(const char* aIdentifier, TvkAccessMode_t aMode, TvkHandle_t* aHandle) {
    llk::cObjectList* interfaces = llk::cObjectList::New(8, true);
    if (!interfaces) return llk::kNoMemory;
    TvkCameraInfo_t info{};
    tvk::cInterfaceProxy* where = nullptr;
    llk::i4 status = llk::kOk;
    const bool found = FindCamera(aIdentifier, interfaces, info, where, status);
    if (where) where->Autorelease();
    if (status != llk::kOk) return status;
    *aHandle = nullptr;
    tvk::cCameraProxy* camera = nullptr;
    if (found) {
        // The device's own identifier, whatever form the caller used.
        camera = NewCamera(where, info.idString, aMode, status);
        if (!camera) return status;
    } else {
        // A GigE Vision camera may be reached by an address no list holds.
        for (llk::u4 i = 0; i < interfaces->Count() && !camera; ++i) {
            auto* interface = AsInterface(interfaces->AtIndex(i));
            if (interface->Aggregate()->Type() == tvk::kInterfaceEthernet)
                camera = NewCamera(interface, aIdentifier, aMode, status);
        }
        if (!camera) return TvkErrorNotFound;
    }
    llk::u4 handle = 0;
    status = gLocalData.global->Insert(camera, &handle);
    if (status != llk::kOk) return status;
    // A camera that did not get going (its features took longer than a
    // request may wait) would refuse every call: it is closed again.
    status = camera->GetGoing();
    if (status != llk::kOk) {
        if (gLocalData.global->Remove(camera) == llk::kOk) camera->Shutdown();
        return status;
    }
    *aHandle = reinterpret_cast<TvkHandle_t>(uintptr_t{handle});
    return TvkErrorSuccess;
}

TvkError_t CloseCamera(TvkHandle_t aHandle) {
    auto* camera = static_cast<tvk::cCameraProxy*>(Handle2Proxy(aHandle, tvk::kTypeCameraProxy));
    if (!camera) return TvkErrorDeviceNotOpen;
    // A close racing with another gets there second.
    llk::i4 status = gLocalData.global->Remove(camera);
    if (status == llk::kOk) camera->Shutdown();
    camera->Release();
    return status == llk::kOk ? TvkErrorSuccess : TvkErrorDeviceNotOpen;
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
                 [&] { return OpenCamera(idString, accessMode, pCameraHandle); });
    trace.OutHandle("pCameraHandle", pCameraHandle);
    return status;
}

TVK_EXPORT TvkError_t TvkCameraClose(const TvkHandle_t cameraHandle) {
    uCallTrace trace("TvkCameraClose");
    trace.InHandle("cameraHandle", cameraHandle);
    return RunGated(trace, kTagCapture, TvkErrorSuccess, [&] { return CloseCamera(cameraHandle); });
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
