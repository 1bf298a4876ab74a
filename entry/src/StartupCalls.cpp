// The calls outside the gate: version, start-up and shutdown.
#include "CallFrame.h"
#include "TransportLayers.h"
#include "engine/Global.h"

extern "C" {

TVK_EXPORT TvkError_t TvkVersionQuery(TvkVersionInfo_t* pVersionInfo, uint32_t sizeofVersionInfo) {
    uCallTrace trace("TvkVersionQuery");
    trace.InU32("sizeofVersionInfo", sizeofVersionInfo);
    // The size is tested before the pointer.
    TvkError_t status = RequireSize(sizeofVersionInfo, sizeof(TvkVersionInfo_t));
    if (status == TvkErrorSuccess) status = Require(pVersionInfo);
    if (status == TvkErrorSuccess) *pVersionInfo = TvkVersionInfo_t{1, 3, 0};
    trace.Returned(status);
    if (pVersionInfo && status == TvkErrorSuccess) {
        trace.OutU32("major", &pVersionInfo->major);
        trace.OutU32("minor", &pVersionInfo->minor);
        trace.OutU32("patch", &pVersionInfo->patch);
    }
    return status;
}

TVK_EXPORT TvkError_t TvkStartup(void) {
    llk::uAutoreleasePool pool;
    uCallTrace trace("TvkStartup");
    TvkError_t status = gLocalData.initStatus;
    if (status == 0 && (llk::sEnv::GetThreadTag() & kTagStartup) != 0) status = TvkErrorInvalidCall;
    if (status == 0) {
        llk::uLock hold(gLocalData.mutex);
        // A second start is harmless.
        if (!gLocalData.started) {
            status = StartTransportLayers(gLocalData);
            if (status == 0) gLocalData.started = true;
        }
    }
    return trace.Returned(TvkAPINormalizeError(status));
}

TVK_EXPORT void TvkShutdown(void) {
    uCallTrace trace("TvkShutdown");
    if ((llk::sEnv::GetThreadTag() & kTagStartup) == 0 && gLocalData.initStatus == 0) {
        llk::uAutoreleasePool pool;
        gLocalData.mutex->Lock();
        if (gLocalData.started) {
            gLocalData.mutex->Unlock();
            // New gated calls are refused from here; calls inside finish.
            gLocalData.junction->Latch(false);
            gLocalData.mutex->Lock();
            StopTransportLayers(gLocalData, pool);
            gLocalData.started = false;
            gLocalData.junction->Latch(true);
        }
        gLocalData.mutex->Unlock();
    }
    trace.Returned(0);
}

} // extern "C"
