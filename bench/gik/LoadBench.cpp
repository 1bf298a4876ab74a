// Loading register description documents, in the wide reading, against
// Aravis 0.8's arv_gc_new on the same text in the same run (when the
// benchmark is built with Aravis): a document of more than a megabyte made
// of copies of the real devices' documents, and a small real one.
// Counters: milliseconds per MB of document, and the heap a loaded document
// holds per MB; the comparisons report the kernel's time over Aravis's.
// Times are the loading thread's processor time, so that other work on the
// machine weighs on neither side.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "LargeDocument.h"
#include "gik/Runtime.h"
#include "kit/AutoreleasePool.h"

#ifdef TAVIK_WITH_ARAVIS
#include <arv.h>
#endif

namespace {

using llk::i4;

// This thread's processor time, in seconds.
double Now() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

std::string Directory() {
    const char* dir = getenv("TAVIK_GENICAM_DIR");
    return dir ? std::string(dir) + "/" : std::string(TAVIK_GENICAM_DIR);
}

// The documents, made once: the large one, and the smallest real one.
const std::string& Text(bool aLarge) {
    static const std::string large =
        bench::LargeDocument(bench::Documents(Directory()), size_t(3) << 19);
    // The smallest real one above 64 KiB.
    static const std::string small = [] {
        std::string best;
        for (const std::string& path : bench::Documents(Directory())) {
            std::string text = bench::ReadText(path);
            if (text.size() > (64u << 10) && (best.empty() || text.size() < best.size()))
                best = text;
        }
        return best;
    }();
    return aLarge ? large : small;
}

double MegaBytes(const std::string& aText) {
    return double(aText.size()) / double(1 << 20);
}

// One load by the kernel: a runtime, retained, and the first failure.
gik::cRuntime* LoadTavik(const std::string& aText, i4& aStatus) {
    gik::cRuntime* runtime = llk::Retained(gik::cRuntime::New(false));
    runtime->SetReading(gik::tReading::Wide());
    runtime->Prepare();
    aStatus = runtime->Process(aText.c_str(), false, nullptr, false);
    if (aStatus == 0) aStatus = runtime->Finalize();
    return runtime;
}

void Counters(benchmark::State& aState, const std::string& aText, double aSeconds, size_t aHeld) {
    double mb = MegaBytes(aText);
    aState.counters["doc_mb"] = mb;
    aState.counters["ms_per_mb"] = aSeconds * 1000.0 / double(aState.iterations()) / mb;
    aState.counters["held_mb_per_mb"] = double(aHeld) / double(1 << 20) / mb;
}

void BM_LoadTavik(benchmark::State& aState) {
    const std::string& text = Text(aState.range(0) != 0);
    i4 status = 0;
    size_t held = 0;
    double seconds = 0;
    for (auto _ : aState) {
        llk::uAutoreleasePool pool;
        size_t before = mallinfo2().uordblks;
        double start = Now();
        gik::cRuntime* runtime = LoadTavik(text, status);
        seconds += Now() - start;
        aState.PauseTiming();
        held = mallinfo2().uordblks - before;
        runtime->Release();
        aState.ResumeTiming();
    }
    if (status != 0) aState.SkipWithError("the document did not load");
    Counters(aState, text, seconds, held);
}
BENCHMARK(BM_LoadTavik)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

#ifdef TAVIK_WITH_ARAVIS
// One load by Aravis; null when it fails.
ArvGc* LoadAravis(const std::string& aText) {
    return arv_gc_new(nullptr, aText.data(), aText.size());
}

void BM_LoadAravis(benchmark::State& aState) {
    const std::string& text = Text(aState.range(0) != 0);
    bool loaded = true;
    size_t held = 0;
    double seconds = 0;
    for (auto _ : aState) {
        size_t before = mallinfo2().uordblks;
        double start = Now();
        ArvGc* gc = LoadAravis(text);
        seconds += Now() - start;
        aState.PauseTiming();
        held = mallinfo2().uordblks - before;
        loaded = loaded && gc;
        if (gc) g_object_unref(gc);
        aState.ResumeTiming();
    }
    if (!loaded) aState.SkipWithError("Aravis did not load the document");
    Counters(aState, text, seconds, held);
}
BENCHMARK(BM_LoadAravis)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

// Both loaders in turn on the same text, so that the machine's state is the
// same for each: the kernel's time over Aravis's.
void BM_LoadAgainstAravis(benchmark::State& aState) {
    const std::string& text = Text(aState.range(0) != 0);
    double tavik = 0, aravis = 0;
    i4 status = 0;
    for (auto _ : aState) {
        llk::uAutoreleasePool pool;
        double t0 = Now();
        gik::cRuntime* runtime = LoadTavik(text, status);
        double t1 = Now();
        ArvGc* gc = LoadAravis(text);
        double t2 = Now();
        tavik += t1 - t0;
        aravis += t2 - t1;
        aState.PauseTiming();
        runtime->Release();
        if (gc) g_object_unref(gc);
        aState.ResumeTiming();
    }
    if (status != 0) aState.SkipWithError("the document did not load");
    aState.counters["doc_mb"] = MegaBytes(text);
    aState.counters["tavik_ms"] = tavik * 1000.0 / double(aState.iterations());
    aState.counters["aravis_ms"] = aravis * 1000.0 / double(aState.iterations());
    aState.counters["ratio"] = tavik / aravis;
}
BENCHMARK(BM_LoadAgainstAravis)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();
#endif

} // namespace
