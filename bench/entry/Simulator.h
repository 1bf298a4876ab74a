// Starting the library on the simulator with a topology of the benchmark's
// own, and stopping it again.
#pragma once

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "TavikC.h"

namespace bench {

inline std::filesystem::path ConfigPath() {
    return std::filesystem::temp_directory_path() /
           ("tavik-bench-" + std::to_string(getpid()) + ".xml");
}

// Stops the process when the library does not start: no figure would mean
// anything.
inline void StartSimulator(const std::string& aTopology) {
    std::ofstream(ConfigPath()) << aTopology;
    setenv("TAVIK_SIM_CONFIG", ConfigPath().c_str(), 1);
    setenv("GENICAM_GENTL64_PATH", std::filesystem::path(TAVIK_SIM_PRODUCER).parent_path().c_str(),
           1);
    if (TvkStartup() != TvkErrorSuccess) abort();
}

inline void StopSimulator(const benchmark::State&) {
    TvkShutdown();
    std::filesystem::remove(ConfigPath());
}

} // namespace bench
