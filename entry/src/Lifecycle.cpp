#include "Lifecycle.h"

#include "SupervisorStart.h"
#include "TransportLayers.h"
#include "engine/Aggregate.h"
#include "engine/Global.h"
#include "kit/Whistle.h"

namespace {

// ---- Steps of the start, each with the module mutex held ----

// Opens the handle table and loads every producer found; TvkErrorNoTL when
// none loads.
TvkError_t LoadProducers(tLocalData& aLocal) {
    aLocal.global->Disable(false);
    ScanSearchPath(aLocal.transportLayers);
    return MakeTLs(aLocal.transportLayers, aLocal.global) ? TvkErrorSuccess : TvkErrorNoTL;
}

// With the mutex held: inserts fail from here, the systems end first, then
// every actor left in the table (interfaces, cameras, the Supervisor).
void EndActors(tLocalData& aLocal) {
    aLocal.global->Disable(true);
    EndSystems(aLocal.transportLayers, aLocal.global);
    aLocal.global->RemoveAll();
}

// After a failed start: what was made ends, the producers unload and the
// table closes; the map keeps its entries for the next attempt.
void UnloadProducers(tLocalData& aLocal) {
    EndActors(aLocal);
    ReleaseTLs(aLocal.transportLayers);
}

// ---- Steps of the stop ----

// Without the mutex: the aggregates' threads stop and the producers unload.
void ReleaseAggregates(tLocalData& aLocal) {
    ReleaseTLs(aLocal.transportLayers);
    llk::ReleaseAndClear(aLocal.supervisorAggregate);
}

} // namespace

void WaitWhileStopping(tLocalData& aLocal) {
    while (aLocal.stopping)
        aLocal.stopped->Wait();
}

TvkError_t StartModule(tLocalData& aLocal) {
    TvkError_t status = LoadProducers(aLocal);
    if (status == TvkErrorSuccess) status = StartSupervisor(aLocal);
    if (status == TvkErrorSuccess)
        aLocal.started = true;
    else
        UnloadProducers(aLocal);
    return status;
}

void StopModule(tLocalData& aLocal, llk::uAutoreleasePool& aPool) {
    llk::uLock hold(aLocal.mutex);
    // A second shutdown waits for the first, then finds the module stopped.
    WaitWhileStopping(aLocal);
    if (!aLocal.started) return;
    aLocal.stopping = true;
    // New gated calls are refused from here; calls inside finish.
    aLocal.junction->Latch(false);
    EndActors(aLocal);
    tvk::pProxy* supervisor = StopSupervisor(aLocal);
    aPool.Sink();
    // The Supervisor ends and the aggregates stop without the mutex: their
    // threads may still be finishing calls that need it.
    aLocal.mutex->Unlock();
    // Calls still inside may hold proxies whose actors run on the
    // aggregates, some from callbacks: they finish first, and the Supervisor
    // ends once they are out, on this thread.
    aLocal.junction->Wait(0);
    llk::ReleaseAndClear(supervisor);
    ReleaseAggregates(aLocal);
    aPool.Sink();
    aLocal.mutex->Lock();
    aLocal.started = false;
    aLocal.stopping = false;
    aLocal.junction->Latch(true);
    aLocal.stopped->Signal(true);
}
