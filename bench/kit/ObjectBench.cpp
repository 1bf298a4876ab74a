// Cost of the reference counting every kit object pays.
#include <benchmark/benchmark.h>

#include "kit/AutoreleasePool.h"

namespace {

class cPlain : public llk::pObject {
public:
    static cPlain* New() { return Make<cPlain>(); }
};

void BM_RetainRelease(benchmark::State& aState) {
    llk::uAutoreleasePool pool;
    static cPlain* shared = nullptr;
    if (aState.thread_index() == 0) shared = llk::Retained(cPlain::New());
    for (auto _ : aState) {
        shared->Retain();
        shared->Release();
    }
}
BENCHMARK(BM_RetainRelease)->Threads(1)->Threads(2);

void BM_NewAndAutorelease(benchmark::State& aState) {
    llk::uAutoreleasePool pool;
    for (auto _ : aState) {
        benchmark::DoNotOptimize(cPlain::New());
        pool.Sink();
    }
}
BENCHMARK(BM_NewAndAutorelease);

} // namespace
