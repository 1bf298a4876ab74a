// Settings beside the library switch the trace file on; each case runs a
// private copy of the library in a child process, so load and unload are real.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "TavikC.h"

namespace fs = std::filesystem;

namespace {

class SettingsTraceTest : public ::testing::Test {
protected:
    void SetUp() override {
        mDir = fs::temp_directory_path() /
               ("tavik-settings-" + std::to_string(getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(mDir);
        fs::copy_file(TAVIK_C_LIBRARY, mDir / "libTavikC.so", fs::copy_options::overwrite_existing);
    }
    void TearDown() override { fs::remove_all(mDir); }

    void WriteSettings(const std::string& aText) { std::ofstream(mDir / "libTavikC.xml") << aText; }

    // Loads the copy in a child, runs aBody with it, and exits normally so
    // that unloading closes the trace file.
    void InChild(const std::function<void(void*)>& aBody) {
        pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            chdir(mDir.c_str());
            unsetenv("GENICAM_GENTL64_PATH");
            void* library = dlopen((mDir / "libTavikC.so").c_str(), RTLD_NOW | RTLD_LOCAL);
            if (!library) _exit(3);
            aBody(library);
            exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFEXITED(status));
        ASSERT_EQ(WEXITSTATUS(status), 0);
    }

    std::vector<std::string> TraceLines(const fs::path& aFile) {
        std::vector<std::string> lines;
        std::ifstream in(aFile);
        for (std::string line; std::getline(in, line);) {
            // Drop the "yyyy-mm-dd hh:mm:ss.mmm: " stamp and the empty tag's blank.
            auto colon = line.find(": ");
            lines.push_back(colon == std::string::npos ? line : line.substr(colon + 3));
        }
        return lines;
    }

    static void RunSomeCalls(void* aLibrary) {
        auto version =
            reinterpret_cast<decltype(&TvkVersionQuery)>(dlsym(aLibrary, "TvkVersionQuery"));
        auto intGet =
            reinterpret_cast<decltype(&TvkFeatureIntGet)>(dlsym(aLibrary, "TvkFeatureIntGet"));
        auto startup = reinterpret_cast<decltype(&TvkStartup)>(dlsym(aLibrary, "TvkStartup"));
        TvkVersionInfo_t info;
        version(&info, sizeof(info));
        int64_t value;
        intGet(reinterpret_cast<TvkHandle_t>(0x1234), "Width", &value);
        intGet(TVK_SYSTEM_HANDLE, nullptr, &value);
        startup();
    }

    fs::path mDir;
};

TEST_F(SettingsTraceTest, LogBlockTracesEveryCallInItsLineShapes) {
    WriteSettings("<?xml version=\"1.0\" ?><Settings><Log><Enable>True</Enable>"
                  "<FileName>" +
                  (mDir / "trace.log").string() + "</FileName></Log></Settings>");
    InChild(&RunSomeCalls);
    auto lines = TraceLines(mDir / "trace.log");
    std::vector<std::string> expected = {
        "TvkVersionQuery called",
        "  TvkVersionQuery: Input Parameter sizeofVersionInfo = UInt32 12 (0x0000000C)",
        "  TvkVersionQuery returned Int32 0 (0x00000000)",
    };
    ASSERT_GE(lines.size(), 5u);
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(lines[i], expected[i]);
    std::string all;
    for (auto& l : lines)
        all += l + "\n";
    EXPECT_NE(all.find("TvkFeatureIntGet called\n"
                       "  TvkFeatureIntGet: Input Parameter handle = Handle 0x0000000000001234\n"
                       "  TvkFeatureIntGet: Input Parameter name = Pointer 0x"),
              std::string::npos);
    EXPECT_NE(all.find(" to Char (Wid...)\n"
                       "  TvkFeatureIntGet returned Int32 -2 (0xFFFFFFFE)\n"),
              std::string::npos);
    // A null name prints as a null pointer with three question marks.
    EXPECT_NE(all.find("name = Pointer 0x0000000000000000 to Char (???...)\n"
                       "  TvkFeatureIntGet returned Int32 -7 (0xFFFFFFF9)\n"),
              std::string::npos);
    EXPECT_NE(all.find("TvkStartup called\n  TvkStartup returned Int32 -16 (0xFFFFFFF0)\n"),
              std::string::npos);
    // Output lines only follow a status that is not negative.
    EXPECT_EQ(all.find("TvkFeatureIntGet: Output Parameter"), std::string::npos);
}

TEST_F(SettingsTraceTest, OlderFileNameKeyWinsAndAppendKeepsOldLines) {
    fs::path trace = mDir / "old.log";
    std::ofstream(trace) << "earlier line\n";
    WriteSettings("<Settings><LogFileName>" + trace.string() +
                  "</LogFileName><AppendLog>true</AppendLog>"
                  "<Log><Enable>True</Enable><FileName>" +
                  (mDir / "new.log").string() + "</FileName></Log></Settings>");
    InChild(&RunSomeCalls);
    auto lines = TraceLines(trace);
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], "earlier line");
    EXPECT_EQ(lines[1], "TvkVersionQuery called");
    EXPECT_FALSE(fs::exists(mDir / "new.log"));
}

TEST_F(SettingsTraceTest, MissingEmptyOrMalformedSettingsLeaveTracingOff) {
    for (const char* text : {"", "<Settings><Log><Enable>True",
                             "<Settings><Log><Enable>TRUE</Enable>"
                             "<FileName>x.log</FileName></Log></Settings>"}) {
        WriteSettings(text);
        InChild(&RunSomeCalls);
        EXPECT_FALSE(fs::exists(mDir / "x.log")) << text;
    }
    fs::remove(mDir / "libTavikC.xml");
    InChild(&RunSomeCalls);
    for (auto& entry : fs::directory_iterator(mDir))
        EXPECT_NE(entry.path().extension(), ".log") << entry.path();
}

} // namespace
