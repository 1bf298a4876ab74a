// Opening and closing a simulated camera, with the simulator's own document
// and with the largest real document the kernel accepts, beside loading the
// same document in the kernel alone: opening should cost little more than
// the document.
#include <benchmark/benchmark.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "Simulator.h"
#include "gik/Port.h"
#include "gik/Runtime.h"
#include "kit/AutoreleasePool.h"

namespace {

const std::string kDocuments[] = {
    TAVIK_SOURCE_DIR "/sim/src/documents/RemoteDevice.xml",
    TAVIK_SOURCE_DIR "/../shared/testdata/genicam/Teledyne_ShadoBox.xml",
};

void StartWithCamera(const benchmark::State& aState) {
    const std::string document = aState.range(0) == 0 ? "" : kDocuments[aState.range(0)];
    bench::StartSimulator("<TavikSim><Interface id=\"IF\"><Camera id=\"Cam\" document=\"" +
                          document + "\"/></Interface></TavikSim>");
}

void BM_CameraOpenClose(benchmark::State& aState) {
    for (auto _ : aState) {
        TvkHandle_t camera = nullptr;
        if (TvkCameraOpen("Cam", TvkAccessModeFull, &camera) != TvkErrorSuccess) {
            aState.SkipWithError("open failed");
            break;
        }
        TvkCameraClose(camera);
    }
}
// 0: the simulator's document, 1: the real one.
BENCHMARK(BM_CameraOpenClose)
    ->Setup(StartWithCamera)
    ->Teardown(bench::StopSimulator)
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// A port of zeros, as the simulator's register space is.
class cZeros : public gik::pPort {
public:
    static cZeros* New() { return Make<cZeros>(); }
    bool IsWriteable() override { return true; }
    llk::i4 Fetch(llk::u8, llk::u4 aLength, void* aBuffer, llk::u4& aFetched) override {
        memset(aBuffer, 0, aLength);
        aFetched = aLength;
        return 0;
    }
    llk::i4 Store(llk::u8, llk::u4 aLength, const void*, llk::u4& aStored) override {
        aStored = aLength;
        return 0;
    }
    llk::i4 QueryXML(void*, llk::u4, llk::u4&, llk::u4, llk::u4) override { return 8; }
    llk::i4 FetchXML(void*, llk::u4, llk::u4&, llk::u4) override { return 8; }
};

void BM_DocumentLoadInKernel(benchmark::State& aState) {
    std::ifstream file(kDocuments[aState.range(0)]);
    std::stringstream text;
    text << file.rdbuf();
    const std::string document = text.str();
    for (auto _ : aState) {
        llk::uAutoreleasePool pool;
        gik::cRuntime* runtime = gik::cRuntime::New(false);
        runtime->AttachPort("Device", cZeros::New());
        runtime->Prepare();
        runtime->Process(document.c_str(), false, nullptr, false);
        benchmark::DoNotOptimize(runtime->Finalize());
    }
}
BENCHMARK(BM_DocumentLoadInKernel)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
