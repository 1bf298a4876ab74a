#include "Module.h"

#include "engine/Global.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"
#include "kit/LogFile.h"
#include "kit/ObjectMap.h"
#include "kit/String.h"
#include "kit/Whistle.h"
#include "kit/XMLBundle.h"

tLocalData gLocalData;

namespace {

// Opens the trace file named by the settings; the older key wins.
void OpenLog(tLocalData* aLocal) {
    llk::cXMLBundle* settings = aLocal->global->Settings();
    if (!settings) return;
    llk::cString* name = nullptr;
    bool append = false;
    if (settings->FetchText("Settings/LogFileName", name) && name) {
        settings->FetchBool("Settings/AppendLog", append);
    } else if (settings->Probe("Settings/Log", nullptr)) {
        bool enable = false;
        settings->FetchBool("Settings/Log/Enable", enable);
        if (!enable) return;
        settings->FetchBool("Settings/Log/Append", append);
        name = nullptr;
        if (!settings->FetchText("Settings/Log/FileName", name) || !name) return;
    } else {
        return;
    }
    // A file that cannot be created only leaves tracing off.
    aLocal->logFile = llk::Retained(llk::cLogFile::New(name->Chars(), append));
}

void ReleaseAll(tLocalData* aLocal) {
    llk::ReleaseAndClear(aLocal->stopped);
    llk::ReleaseAndClear(aLocal->mutex);
    llk::ReleaseAndClear(aLocal->junction);
    llk::ReleaseAndClear(aLocal->global);
    llk::ReleaseAndClear(aLocal->transportLayers);
    llk::ReleaseAndClear(aLocal->logFile);
}

void LocalInit(void* aLocal) {
    TvkAPILocalInit(static_cast<tLocalData*>(aLocal));
}
void LocalKill(void* aLocal) {
    TvkAPILocalKill(static_cast<tLocalData*>(aLocal));
}

} // namespace

void TvkAPILocalInit(tLocalData* aLocal) {
    if (aLocal->initialised) return;
    llk::uAutoreleasePool pool;
    aLocal->mutex = llk::Retained(llk::cMutex::New());
    aLocal->stopped = llk::Retained(llk::cWhistle::New(aLocal->mutex));
    aLocal->junction = llk::Retained(llk::cJunction::New());
    aLocal->global =
        llk::Retained(tvk::cGlobal::New(reinterpret_cast<const void*>(&TvkVersionQuery)));
    aLocal->transportLayers = llk::Retained(llk::cObjectMap::New(4, 0.5f, true));
    if (!aLocal->mutex || !aLocal->stopped || !aLocal->junction || !aLocal->global ||
        !aLocal->transportLayers)
        aLocal->initStatus = llk::kNoMemory;
    else
        OpenLog(aLocal);

    if (aLocal->initStatus != 0) {
        ReleaseAll(aLocal);
        return;
    }
    aLocal->initialised = true;
}

void TvkAPILocalKill(tLocalData* aLocal) {
    if (!aLocal->initialised) return;
    // A process that exits while started still has library threads running;
    // tearing their state down under them would crash the exit. Leave it.
    if (aLocal->started) return;
    llk::uAutoreleasePool pool;
    ReleaseAll(aLocal);
    aLocal->initialised = false;
}

// Built when the library is loaded, torn down when it is unloaded.
static llk::uScopeEnclosure gLocalFunc(&LocalInit, &LocalKill, &gLocalData);

TvkError_t TvkAPIEnter() {
    if (gLocalData.initStatus != 0) return gLocalData.initStatus;
    llk::uLock hold(gLocalData.mutex);
    if (!gLocalData.started || !gLocalData.junction || gLocalData.junction->Enter(0) != llk::kOk)
        return TvkErrorApiNotStarted;
    return TvkErrorSuccess;
}

void TvkAPILeave() {
    llk::uLock hold(gLocalData.mutex);
    if (gLocalData.junction) gLocalData.junction->Leave();
}

namespace {
// Table handles are small numbers; anything wider is no handle of ours.
bool TableHandle(TvkHandle_t aHandle, llk::u4& aValue) {
    auto value = reinterpret_cast<uintptr_t>(aHandle);
    aValue = static_cast<llk::u4>(value);
    return gLocalData.global && value <= 0xFFFFFFFFu;
}
} // namespace

tvk::pProxy* Handle2Proxy(TvkHandle_t aHandle) {
    if (aHandle == TVK_SYSTEM_HANDLE) {
        // Shutdown lets go of the Supervisor under the module mutex.
        llk::uLock hold(gLocalData.mutex);
        return llk::Retained(gLocalData.supervisorProxy);
    }
    llk::u4 value = 0;
    return TableHandle(aHandle, value) ? gLocalData.global->Search(value) : nullptr;
}

tvk::pProxy* Handle2Proxy(TvkHandle_t aHandle, llk::u4 aType) {
    llk::u4 value = 0;
    return TableHandle(aHandle, value) ? gLocalData.global->Search(aType, value) : nullptr;
}

void ReleaseProxy(tvk::pProxy* aProxy) {
    if (aProxy) aProxy->Release();
}
