// The calls outside the gate: version, start-up and shutdown.
#include "CallFrame.h"
#include "Lifecycle.h"

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
        // A start-up during a shutdown starts once the shutdown has finished.
        WaitWhileStopping(gLocalData);
        // A second start is harmless.
        if (!gLocalData.started) status = StartModule(gLocalData);
        // What the start made belongs to the module state before the mutex
        // is given up: a shutdown may release it at once.
        pool.Sink();
    }
    return trace.Returned(TvkAPINormalizeError(status));
}

TVK_EXPORT void TvkShutdown(void) {
    uCallTrace trace("TvkShutdown");
    if ((llk::sEnv::GetThreadTag() & kTagStartup) == 0 && gLocalData.initStatus == 0) {
        llk::uAutoreleasePool pool;
        StopModule(gLocalData, pool);
    }
    trace.Returned(0);
}

} // extern "C"
