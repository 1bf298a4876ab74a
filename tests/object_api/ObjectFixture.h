// What the tests of the object API share: a fresh directory with no producer
// in it, the camera simulator on request, and the log written meanwhile.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>

#include <TavikCPP/TavikCPP.h>

namespace test {

using namespace QRX::TvkAPI;

// Waits, generously, for a condition that another thread makes true.
template <class F> bool Eventually(F aCondition, double aSeconds = 10.0) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(aSeconds);
    while (!aCondition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

class ObjectFixture : public ::testing::Test {
protected:
    void SetUp() override {
        mOld = std::filesystem::current_path();
        mDir =
            std::filesystem::temp_directory_path() / ("tavik-objapi-" + std::to_string(getpid()));
        std::filesystem::create_directories(mDir);
        std::filesystem::current_path(mDir);
        unsetenv("GENICAM_GENTL64_PATH");
        unsetenv("TAVIK_SIM_CONFIG");
        mLogStart = LogText().size();
    }
    void TearDown() override {
        TavikSystem::GetInstance().Shutdown();
        std::filesystem::current_path(mOld);
        std::filesystem::remove_all(mDir);
    }

    // Start-up finds the simulator.
    static void SearchSimulator() {
        setenv("GENICAM_GENTL64_PATH",
               std::filesystem::path(TAVIK_SIM_PRODUCER).parent_path().c_str(), 1);
    }

    static std::string LogPath() { return FileLogger::GetTempPathW() + "TavikCPP.log"; }
    static std::string LogText() {
        std::ifstream file(LogPath());
        std::stringstream text;
        text << file.rdbuf();
        return text.str();
    }
    // What the object API logged since the test began.
    std::string NewLog() const { return LogText().substr(mLogStart); }

    std::filesystem::path mOld, mDir;
    size_t mLogStart = 0;
};

} // namespace test
