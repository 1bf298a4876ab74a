#include "SupervisorStart.h"

#include "TransportLayers.h"
#include "engine/Global.h"
#include "engine/Supervisor.h"
#include "engine/System.h"
#include "kit/AutoreleasePool.h"
#include "kit/ObjectList.h"

namespace {

// The systems of the loaded producers, by transport kind: the first system
// of a kind in the handle table stands for it.
class cTransportSystems : public tvk::pSystems {
public:
    static cTransportSystems* New(tvk::cGlobal* aGlobal) {
        return Make<cTransportSystems>(aGlobal);
    }
    llk::i4 Initialize(tvk::cGlobal* aGlobal) {
        mGlobal = aGlobal;
        return aGlobal ? llk::kOk : llk::kNoMemory;
    }

    // The aggregate outlives the Supervisor, and so does its helper.
    tvk::cHelper* Helper(tvk::tInterface aKind) override {
        tvk::cSystemProxy* system = SystemOf(aKind);
        return system ? system->Aggregate()->Helper() : nullptr;
    }
    llk::i4 SetDiscoveryMode(tvk::tInterface aKind, tvk::tDiscoveryMode aMode) override {
        tvk::cSystemProxy* system = SystemOf(aKind);
        return system ? system->SetDiscoveryMode(aMode) : llk::kNotFound;
    }
    llk::i4 SetDiscoveryDuration(tvk::tInterface aKind, llk::u8 aDuration) override {
        tvk::cSystemProxy* system = SystemOf(aKind);
        return system ? system->SetDiscoveryDuration(aDuration) : llk::kNotFound;
    }
    llk::i4 SendForceIP(tvk::tInterface aKind, const tvk::tCommandForceIP& aCommand) override {
        tvk::cSystemProxy* system = SystemOf(aKind);
        return system ? system->SendForceIP(aCommand) : llk::kNotFound;
    }

private:
    // Autoreleased, so that it stays while it is asked.
    tvk::cSystemProxy* SystemOf(tvk::tInterface aKind) {
        llk::cObjectList* systems = llk::cObjectList::New(4, true);
        if (!systems) return nullptr;
        mGlobal->Enumerate(tvk::kTypeSystemProxy, systems);
        for (llk::u4 i = 0; i < systems->Count(); ++i) {
            auto* system = static_cast<tvk::cSystemProxy*>(systems->AtIndex(i));
            if (system->Aggregate()->Type() == aKind) return system;
        }
        return nullptr;
    }

    tvk::cGlobal* mGlobal = nullptr; // lives as long as the module
};

} // namespace

TvkError_t StartSupervisor(tLocalData& aLocal) {
    llk::uAutoreleasePool pool;
    aLocal.supervisorAggregate = llk::Retained(tvk::cAggregate::New(aLocal.global));
    cTransportSystems* systems = cTransportSystems::New(aLocal.global);
    auto* proxy =
        llk::Retained(aLocal.supervisorAggregate && systems
                          ? tvk::cSupervisorProxy::New(aLocal.supervisorAggregate, systems)
                          : nullptr);
    llk::i4 status = proxy ? aLocal.global->Insert(proxy, nullptr) : llk::kNoMemory;
    if (status == llk::kOk) {
        // The systems come after the Supervisor, so that their first news
        // reaches it, and before it gets going, so that it finds them.
        MakeSystems(aLocal.transportLayers, aLocal.global);
        status = proxy->GetGoing();
        if (status != llk::kOk) aLocal.global->Remove(proxy);
    }
    if (status == llk::kOk) {
        aLocal.supervisorProxy = proxy;
        return TvkErrorSuccess;
    }
    // The actor ends before the threads it runs on.
    llk::ReleaseAndClear(proxy);
    pool.Sink();
    llk::ReleaseAndClear(aLocal.supervisorAggregate);
    return status;
}

tvk::pProxy* StopSupervisor(tLocalData& aLocal) {
    tvk::pProxy* supervisor = aLocal.supervisorProxy;
    aLocal.supervisorProxy = nullptr;
    return supervisor;
}
