// Frames per second the simulator delivers to a plain GenTL consumer, as
// fast as it can, next to a memcpy of the same bytes.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "GenTLConsumer.h"

using namespace test;

namespace {

struct tCamera {
    tCamera(const char* aFormat, uint32_t aWidth, uint32_t aHeight) {
        config = std::filesystem::temp_directory_path() /
                 ("tavik-simbench-" + std::to_string(getpid()) + ".xml");
        std::ofstream(config) << "<TavikSim><Interface id=\"IF\"><Camera id=\"Cam\" pixelFormat=\""
                              << aFormat << "\" sensorWidth=\"" << aWidth << "\" sensorHeight=\""
                              << aHeight << "\" width=\"" << aWidth << "\" height=\"" << aHeight
                              << "\" frameRate=\"0\"/></Interface></TavikSim>";
        setenv("TAVIK_SIM_CONFIG", config.c_str(), 1);
        gentl = std::make_unique<GenTL>(TAVIK_SIM_PRODUCER);
        gentl->GCInitLib();
        gentl->TLOpen(&tl);
        gentl->TLUpdateInterfaceList(tl, nullptr, 0);
        gentl->TLOpenInterface(tl, "IF", &interface);
        gentl->IFUpdateDeviceList(interface, nullptr, 0);
        gentl->IFOpenDevice(interface, "Cam", DEVICE_ACCESS_CONTROL, &device);
        gentl->DevGetPort(device, &port);
        gentl->DevOpenDataStream(device, "Stream0", &stream);
        INFO_DATATYPE type;
        size_t size = sizeof(payload);
        gentl->DSGetInfo(stream, STREAM_INFO_PAYLOAD_SIZE, &type, &payload, &size);
        memory.assign(4, std::vector<uint8_t>(payload));
        for (auto& m : memory) {
            BUFFER_HANDLE buffer;
            gentl->DSAnnounceBuffer(stream, m.data(), payload, nullptr, &buffer);
            gentl->DSQueueBuffer(stream, buffer);
        }
        gentl->GCRegisterEvent(stream, EVENT_NEW_BUFFER, &event);
        gentl->DSStartAcquisition(stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE);
        uint32_t one = 1;
        size = 4;
        gentl->GCWritePort(port, 0x1020, &one, &size);
    }
    ~tCamera() {
        gentl->DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT);
        gentl->DSFlushQueue(stream, ACQ_QUEUE_ALL_DISCARD);
        gentl->DevClose(device);
        gentl->TLClose(tl);
        gentl->GCCloseLib();
        unsetenv("TAVIK_SIM_CONFIG");
        std::filesystem::remove(config);
    }
    // Waits for one frame and gives its buffer back.
    void Frame() {
        EVENT_NEW_BUFFER_DATA data{};
        size_t size = sizeof(data);
        gentl->EventGetData(event, &data, &size, 5000);
        gentl->DSQueueBuffer(stream, data.BufferHandle);
    }

    std::filesystem::path config;
    std::unique_ptr<GenTL> gentl;
    TL_HANDLE tl = nullptr;
    IF_HANDLE interface = nullptr;
    DEV_HANDLE device = nullptr;
    PORT_HANDLE port = nullptr;
    DS_HANDLE stream = nullptr;
    EVENT_HANDLE event = nullptr;
    size_t payload = 0;
    std::vector<std::vector<uint8_t>> memory;
};

void BM_SimulatorFrames(benchmark::State& aState, const char* aFormat, uint32_t aWidth,
                        uint32_t aHeight) {
    tCamera camera(aFormat, aWidth, aHeight);
    for (auto _ : aState)
        camera.Frame();
    aState.SetBytesProcessed(static_cast<int64_t>(aState.iterations() * camera.payload));
    aState.counters["fps"] =
        benchmark::Counter(static_cast<double>(aState.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(BM_SimulatorFrames, Mono8_640x480, "Mono8", 640, 480)->UseRealTime();
BENCHMARK_CAPTURE(BM_SimulatorFrames, BayerRG8_2592x1944, "BayerRG8", 2592, 1944)->UseRealTime();

// The same bytes into four rotating buffers, as the camera fills them.
void BM_Memcpy(benchmark::State& aState) {
    const size_t bytes = static_cast<size_t>(aState.range(0));
    std::vector<uint8_t> from(bytes, 1);
    std::vector<std::vector<uint8_t>> to(4, std::vector<uint8_t>(bytes));
    size_t next = 0;
    for (auto _ : aState) {
        memcpy(to[next].data(), from.data(), bytes);
        benchmark::DoNotOptimize(to[next].data());
        next = (next + 1) % to.size();
    }
    aState.SetBytesProcessed(static_cast<int64_t>(aState.iterations() * bytes));
    aState.counters["fps"] = benchmark::Counter(static_cast<double>(aState.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_Memcpy)->Arg(640 * 480)->Arg(2592 * 1944)->UseRealTime();

} // namespace
