// What the tests of the flat library share: a fresh directory with no
// producer in it, and the camera simulator on request.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "TavikC.h"

namespace test {

// Runs each test from an empty directory with no producer search path, so
// start-up finds no producer until a test asks for the simulator.
class cFlatFixture : public ::testing::Test {
protected:
    void SetUp() override {
        mOld = std::filesystem::current_path();
        mDir = std::filesystem::temp_directory_path() / ("tavik-entry-" + std::to_string(getpid()));
        std::filesystem::create_directories(mDir);
        std::filesystem::current_path(mDir);
        unsetenv("GENICAM_GENTL64_PATH");
        unsetenv("TAVIK_SIM_CONFIG");
    }
    void TearDown() override {
        TvkShutdown();
        unsetenv("TAVIK_SIM_CONFIG");
        std::filesystem::current_path(mOld);
        std::filesystem::remove_all(mDir);
    }

    // Start-up finds the simulator (after a directory that does not exist).
    static void SearchSimulator() {
        std::string path =
            "/nonexistent;" + std::filesystem::path(TAVIK_SIM_PRODUCER).parent_path().string();
        setenv("GENICAM_GENTL64_PATH", path.c_str(), 1);
    }
    // The simulator loads this configuration from now on.
    void ConfigureSimulator(const std::string& aXml) {
        const std::filesystem::path file = mDir / "sim.xml";
        std::ofstream(file) << aXml;
        setenv("TAVIK_SIM_CONFIG", file.c_str(), 1);
    }
    // Whether the simulator is loaded in this process right now.
    static bool SimulatorLoaded() {
        void* handle = dlopen(TAVIK_SIM_PRODUCER, RTLD_NOW | RTLD_NOLOAD);
        if (handle) dlclose(handle);
        return handle != nullptr;
    }

    std::filesystem::path mOld, mDir;
};

} // namespace test
