// The module state of the flat library and the gate every gated call passes.
#pragma once

#include "TavikC.h"
#include "kit/Junction.h"
#include "kit/Mutex.h"

namespace llk {
class cLogFile;
class cObjectMap;
class cWhistle;
} // namespace llk

namespace tvk {
class cGlobal;
class cAggregate;
class pProxy;
} // namespace tvk

struct tLocalData {
    llk::cMutex* mutex;
    llk::cWhistle* stopped; // on the mutex: a shutdown has finished
    llk::cJunction* junction;
    llk::cLogFile* logFile;
    tvk::cGlobal* global;
    tvk::cAggregate* supervisorAggregate;
    tvk::pProxy* supervisorProxy;     // the proxy behind handle value 1
    llk::cObjectMap* transportLayers; // .cti file name to cGenTL
    bool started;                     // TvkStartup succeeded and TvkShutdown has not finished
    bool stopping;                    // a shutdown is tearing down; start-ups and shutdowns wait
    bool initialised;
    TvkError_t initStatus;
};

extern tLocalData gLocalData;

// Builds and tears down the module state; run at library load and unload.
void TvkAPILocalInit(tLocalData* aLocal);
void TvkAPILocalKill(tLocalData* aLocal);

// The gate: 0, or the status that refuses the call.
TvkError_t TvkAPIEnter();
void TvkAPILeave();

// A retained proxy for a handle, or null. The caller releases it.
tvk::pProxy* Handle2Proxy(TvkHandle_t aHandle);
// The same for a table handle whose proxy is of class aType.
tvk::pProxy* Handle2Proxy(TvkHandle_t aHandle, llk::u4 aType);
void ReleaseProxy(tvk::pProxy* aProxy);

// Thread tag masks of the calls that callbacks may not make.
constexpr llk::u4 kTagStartup = 0xf00d0000;
constexpr llk::u4 kTagFeatureSet = 0xf00d0001;
constexpr llk::u4 kTagCapture = 0xf00d0002;
