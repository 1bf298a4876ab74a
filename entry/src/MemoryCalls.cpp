// Raw register and memory access, and a frame's ancillary data.
#include "CallFrame.h"

namespace {
// Memory and register calls need a camera; other proxies refuse them.
TvkError_t OnDevice(TvkHandle_t aHandle) {
    return WithProxy(aHandle, TvkErrorDeviceNotOpen,
                     [](tvk::pProxy*) { return TvkErrorInvalidAccess; });
}
} // namespace

extern "C" {

TVK_EXPORT TvkError_t TvkMemoryRead(const TvkHandle_t handle, uint64_t address, uint32_t bufferSize,
                                    char* dataBuffer, uint32_t* pSizeComplete) {
    uCallTrace trace("TvkMemoryRead");
    trace.InHandle("handle", handle).InU64("address", address).InU32("bufferSize", bufferSize);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(dataBuffer), Require(pSizeComplete)}),
                 [&] { return OnDevice(handle); });
    trace.OutPointer("dataBuffer", dataBuffer);
    trace.OutU32("pSizeComplete", pSizeComplete);
    return status;
}

TVK_EXPORT TvkError_t TvkMemoryWrite(const TvkHandle_t handle, uint64_t address,
                                     uint32_t bufferSize, const char* dataBuffer,
                                     uint32_t* pSizeComplete) {
    uCallTrace trace("TvkMemoryWrite");
    trace.InHandle("handle", handle)
        .InU64("address", address)
        .InU32("bufferSize", bufferSize)
        .InPointer("dataBuffer", dataBuffer);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(dataBuffer), Require(pSizeComplete)}),
                 [&] { return OnDevice(handle); });
    trace.OutU32("pSizeComplete", pSizeComplete);
    return status;
}

TVK_EXPORT TvkError_t TvkRegistersRead(const TvkHandle_t handle, uint32_t readCount,
                                       const uint64_t* pAddressArray, uint64_t* pDataArray,
                                       uint32_t* pNumCompleteReads) {
    uCallTrace trace("TvkRegistersRead");
    trace.InHandle("handle", handle)
        .InU32("readCount", readCount)
        .InPointer("pAddressArray", pAddressArray);
    TvkError_t status = RunGated(
        trace, 0,
        FirstFailure({Require(pAddressArray), Require(pDataArray), Require(pNumCompleteReads)}),
        [&] { return OnDevice(handle); });
    trace.OutPointer("pDataArray", pDataArray);
    trace.OutU32("pNumCompleteReads", pNumCompleteReads);
    return status;
}

TVK_EXPORT TvkError_t TvkRegistersWrite(const TvkHandle_t handle, uint32_t writeCount,
                                        const uint64_t* pAddressArray, const uint64_t* pDataArray,
                                        uint32_t* pNumCompleteWrites) {
    uCallTrace trace("TvkRegistersWrite");
    trace.InHandle("handle", handle)
        .InU32("writeCount", writeCount)
        .InPointer("pAddressArray", pAddressArray)
        .InPointer("pDataArray", pDataArray);
    TvkError_t status = RunGated(
        trace, 0,
        FirstFailure({Require(pAddressArray), Require(pDataArray), Require(pNumCompleteWrites)}),
        [&] { return OnDevice(handle); });
    trace.OutU32("pNumCompleteWrites", pNumCompleteWrites);
    return status;
}

// The ancillary calls hand back internal statuses as they are.
TVK_EXPORT TvkError_t TvkAncillaryDataOpen(TvkFrame_t* pFrame, TvkHandle_t* pAncillaryDataHandle) {
    uCallTrace trace("TvkAncillaryDataOpen");
    trace.InPointer("pFrame", pFrame);
    TvkError_t status = Require(pAncillaryDataHandle);
    if (status == TvkErrorSuccess && (status = TvkAPIEnter()) == TvkErrorSuccess) {
        status = TvkErrorNotImplemented;
        TvkAPILeave();
    }
    trace.Returned(status);
    trace.OutHandle("pAncillaryDataHandle", pAncillaryDataHandle);
    return status;
}

TVK_EXPORT TvkError_t TvkAncillaryDataClose(TvkHandle_t ancillaryDataHandle) {
    uCallTrace trace("TvkAncillaryDataClose");
    trace.InHandle("ancillaryDataHandle", ancillaryDataHandle);
    TvkError_t status = TvkAPIEnter();
    if (status == TvkErrorSuccess) {
        status = WithProxy(ancillaryDataHandle, TvkErrorBadHandle,
                           [](tvk::pProxy*) { return TvkErrorNotImplemented; });
        TvkAPILeave();
    }
    return trace.Returned(status);
}

} // extern "C"
