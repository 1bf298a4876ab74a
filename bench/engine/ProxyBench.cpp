// A proxy call: from a caller thread through the request pool and the
// actor's works to a scheduler runner and back. Every feature read pays it.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

#include "engine/Actor.h"
#include "engine/Global.h"
#include "engine/Proxy.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"

namespace {

using namespace tvk;

class cEchoActor : public pActor {
public:
    static cEchoActor* New(pProxy* aProxy, cAggregate* aAggregate) {
        return Make<cEchoActor>(aProxy, aAggregate);
    }
    bool OnRequest(llk::cRequest* aRequest) override {
        *static_cast<llk::u8*>(aRequest->GetPointer()) += 1;
        aRequest->SetOutcome(0);
        return true;
    }
};

class cEchoProxy : public pProxy {
public:
    static cEchoProxy* New(cAggregate* aAggregate) { return Make<cEchoProxy>(aAggregate); }
    llk::i4 Initialize(cAggregate* aAggregate) {
        SetAggregate(aAggregate);
        mActor = llk::Retained(cEchoActor::New(this, aAggregate));
        return mActor ? StartActor(mActor) : llk::kNoMemory;
    }
    ~cEchoProxy() override {
        EndActor(mActor);
        llk::ReleaseAndClear(mActor);
    }
    llk::u4 ClassType() const override { return kTypeCameraProxy; }
    pActor* Actor() const override { return mActor; }

private:
    cEchoActor* mActor = nullptr;
};

struct tRig {
    tRig() {
        global = llk::Retained(cGlobal::New(nullptr));
        aggregate = llk::Retained(cAggregate::New(global));
        proxy = llk::Retained(cEchoProxy::New(aggregate));
    }
    ~tRig() {
        llk::ReleaseAndClear(proxy);
        llk::ReleaseAndClear(aggregate);
        llk::ReleaseAndClear(global);
    }
    cGlobal* global = nullptr;
    cAggregate* aggregate = nullptr;
    cEchoProxy* proxy = nullptr;
};

void BM_ProxyRoundTrip(benchmark::State& aState) {
    llk::uAutoreleasePool pool;
    tRig rig;
    llk::u8 value = 0;
    std::vector<double> samples;
    samples.reserve(1 << 20);
    for (auto _ : aState) {
        double start = llk::sEnv::GetElapsedTime();
        benchmark::DoNotOptimize(rig.proxy->SendRequest(10, 14, &value, 0));
        if (samples.size() < samples.capacity())
            samples.push_back(llk::sEnv::GetElapsedTime() - start);
        pool.Sink();
    }
    std::sort(samples.begin(), samples.end());
    if (!samples.empty()) {
        aState.counters["median_us"] = samples[samples.size() / 2] * 1e6;
        aState.counters["p99_us"] = samples[samples.size() * 99 / 100] * 1e6;
    }
}
BENCHMARK(BM_ProxyRoundTrip)->UseRealTime()->MinTime(2.0);

void BM_ProxyThroughput4Callers(benchmark::State& aState) {
    static tRig* rig = nullptr;
    llk::uAutoreleasePool pool;
    if (aState.thread_index() == 0) rig = new tRig;
    llk::u8 value = 0;
    for (auto _ : aState) {
        benchmark::DoNotOptimize(rig->proxy->SendRequest(10, 14, &value, 0));
        pool.Sink();
    }
    aState.SetItemsProcessed(aState.iterations());
    if (aState.thread_index() == 0) {
        delete rig;
        rig = nullptr;
    }
}
BENCHMARK(BM_ProxyThroughput4Callers)->Threads(4)->UseRealTime()->MinTime(2.0);

} // namespace
