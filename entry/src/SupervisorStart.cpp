#include "SupervisorStart.h"

#include "TransportLayers.h"
#include "engine/Global.h"
#include "engine/Supervisor.h"
#include "kit/AutoreleasePool.h"
#include "kit/ObjectMap.h"

namespace {

// The systems of the loaded producers, by transport kind: the first
// producer of a kind stands for it. A producer has a scheduler as soon as
// it is loaded; what the system proxies answer is not forwarded yet, so
// those calls find no system.
class cTransportSystems : public tvk::pSystems {
public:
    static cTransportSystems* New(llk::cObjectMap* aTransportLayers) {
        return Make<cTransportSystems>(aTransportLayers);
    }
    llk::i4 Initialize(llk::cObjectMap* aTransportLayers) {
        mTransportLayers = llk::Retained(aTransportLayers);
        return mTransportLayers ? llk::kOk : llk::kNoMemory;
    }
    ~cTransportSystems() override { llk::ReleaseAndClear(mTransportLayers); }

    tvk::cHelper* Helper(tvk::tInterface aKind) override {
        tvk::cAggregate* aggregate = AggregateOf(aKind);
        return aggregate ? aggregate->Helper() : nullptr;
    }
    llk::i4 SetDiscoveryMode(tvk::tInterface, tvk::tDiscoveryMode) override {
        return llk::kNotFound;
    }
    llk::i4 SetDiscoveryDuration(tvk::tInterface, llk::u8) override { return llk::kNotFound; }
    llk::i4 SendForceIP(tvk::tInterface, const tvk::tCommandForceIP&) override {
        return llk::kNotFound;
    }

private:
    tvk::cAggregate* AggregateOf(tvk::tInterface aKind) {
        for (llk::u4 i = 0; i < mTransportLayers->Count(); ++i) {
            tvk::cAggregate* aggregate =
                static_cast<cGenTL*>(mTransportLayers->AtIndex(i))->GetAggregate();
            if (aggregate && aggregate->Type() == aKind) return aggregate;
        }
        return nullptr;
    }

    llk::cObjectMap* mTransportLayers = nullptr;
};

} // namespace

TvkError_t StartSupervisor(tLocalData& aLocal) {
    llk::uAutoreleasePool pool;
    aLocal.supervisorAggregate = llk::Retained(tvk::cAggregate::New(aLocal.global));
    cTransportSystems* systems = cTransportSystems::New(aLocal.transportLayers);
    auto* proxy =
        llk::Retained(aLocal.supervisorAggregate && systems
                          ? tvk::cSupervisorProxy::New(aLocal.supervisorAggregate, systems)
                          : nullptr);
    llk::i4 status = proxy ? aLocal.global->Insert(proxy, nullptr) : llk::kNoMemory;
    if (status == llk::kOk) {
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
