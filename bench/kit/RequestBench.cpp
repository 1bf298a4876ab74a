// The round trip of a request from a caller thread to an active object on a
// scheduler runner and back: the path under every feature read.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "kit/ActiveScheduler.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"
#include "kit/ObjectWorks.h"
#include "kit/Request.h"

namespace {

using namespace llk;

// Answers each request by doubling its uid, as an actor's request pump does.
class cServer : public pActiveObject {
public:
    static cServer* New() { return Make<cServer>(); }
    i4 Initialize() override {
        mWorks = Retained(cObjectWorks::New(8));
        return mWorks ? kOk : kNoMemory;
    }
    ~cServer() override { ReleaseAndClear(mWorks); }
    void OnExecute(const tActiveCode&, pObject*) override {
        pObject* object = nullptr;
        while (mWorks->Accept(object) == kOk) {
            auto* request = static_cast<cRequest*>(object);
            request->SetOutcome(static_cast<i4>(request->GetUid() * 2));
            mWorks->Return(request);
        }
    }
    cObjectWorks* mWorks = nullptr;
};

struct tRig {
    tRig() {
        cActiveScheduler::tSetup setup{1, 6, 5, 150, 3};
        scheduler = Retained(cActiveScheduler::New(setup));
        server = Retained(cServer::New());
        scheduler->Attach(server, 0);
    }
    ~tRig() {
        scheduler->Detach(server, true);
        ReleaseAndClear(server);
        ReleaseAndClear(scheduler);
    }
    i4 RoundTrip(cRequest* aRequest, u4 aUid) {
        aRequest->Retarget(aUid, 14);
        server->mWorks->Submit(aRequest, 0);
        scheduler->Schedule(server, MakeActiveCode(0, 12, 0), nullptr, 255);
        server->mWorks->Expect(aRequest, 5000);
        return aRequest->GetOutcome();
    }
    cActiveScheduler* scheduler = nullptr;
    cServer* server = nullptr;
};

void BM_RequestRoundTrip(benchmark::State& aState) {
    uAutoreleasePool pool;
    tRig rig;
    cRequest* request = Retained(cRequest::New());
    std::vector<double> samples;
    samples.reserve(1 << 20);
    u4 uid = 0;
    for (auto _ : aState) {
        double start = sEnv::GetElapsedTime();
        benchmark::DoNotOptimize(rig.RoundTrip(request, ++uid));
        if (samples.size() < samples.capacity()) samples.push_back(sEnv::GetElapsedTime() - start);
    }
    std::sort(samples.begin(), samples.end());
    if (!samples.empty()) {
        aState.counters["median_us"] = samples[samples.size() / 2] * 1e6;
        aState.counters["p99_us"] = samples[samples.size() * 99 / 100] * 1e6;
    }
    request->Release();
}
BENCHMARK(BM_RequestRoundTrip)->UseRealTime()->MinTime(2.0);

// Four callers share one actor.
void BM_RequestThroughput4Callers(benchmark::State& aState) {
    static tRig* rig = nullptr;
    uAutoreleasePool pool;
    if (aState.thread_index() == 0) rig = new tRig;
    cRequest* request = Retained(cRequest::New());
    u4 uid = static_cast<u4>(aState.thread_index()) << 24;
    for (auto _ : aState)
        benchmark::DoNotOptimize(rig->RoundTrip(request, ++uid));
    aState.SetItemsProcessed(aState.iterations());
    request->Release();
    if (aState.thread_index() == 0) {
        delete rig;
        rig = nullptr;
    }
}
BENCHMARK(BM_RequestThroughput4Callers)->Threads(4)->UseRealTime()->MinTime(2.0);

} // namespace
