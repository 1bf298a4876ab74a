// The log of the object API: "TavikCPP.log" in the temporary directory,
// each entry the local time on one line, then ": " and the message.
#include <iomanip>

#include "ObjectFixture.h"

namespace {

using namespace QRX::TvkAPI;

class FileLoggerTest : public test::ObjectFixture {
protected:
    static std::string Read(const std::string& aName) {
        std::ifstream file(FileLogger::GetTempPathW() + aName);
        std::stringstream text;
        text << file.rdbuf();
        return text.str();
    }
};

TEST_F(FileLoggerTest, TheTemporaryDirectoryIsTheProgramsOwnWithASlash) {
    const char* configured = std::getenv("TMPDIR");
    ASSERT_NE(configured, nullptr);
    EXPECT_EQ(FileLogger::GetTempPathW(), std::string(configured) + "/");
}

TEST_F(FileLoggerTest, AnEntryIsTheTimeThenTheMessage) {
    {
        FileLogger logger("logger-entry.log", false);
        logger.Log("first message");
        logger.Log("second message");
    }
    std::istringstream text(Read("logger-entry.log"));
    for (const char* message : {": first message", ": second message"}) {
        std::string time, line;
        ASSERT_TRUE(std::getline(text, time));
        std::tm parsed{};
        std::istringstream shape(time);
        shape >> std::get_time(&parsed, "%a %b %d %H:%M:%S %Y");
        EXPECT_FALSE(shape.fail()) << time;
        EXPECT_EQ(time.size(), 24u) << time;
        ASSERT_TRUE(std::getline(text, line));
        EXPECT_EQ(line, message);
    }
    EXPECT_TRUE(text.peek() == EOF);
}

TEST_F(FileLoggerTest, AppendKeepsWhatIsThereAndTruncateStartsAfresh) {
    FileLogger("logger-append.log", false).Log("one");
    FileLogger("logger-append.log", true).Log("two");
    EXPECT_NE(Read("logger-append.log").find(": one\n"), std::string::npos);
    EXPECT_NE(Read("logger-append.log").find(": two\n"), std::string::npos);
    FileLogger("logger-append.log", false).Log("three");
    EXPECT_EQ(Read("logger-append.log").find(": one\n"), std::string::npos);
}

TEST_F(FileLoggerTest, AFileThatCouldNotOpenSwallowsEntries) {
    FileLogger logger("no-such-directory/logger.log", true);
    EXPECT_NO_THROW(logger.Log("lost"));
    EXPECT_FALSE(std::filesystem::exists(FileLogger::GetTempPathW() + "no-such-directory"));
}

TEST_F(FileLoggerTest, TheSystemLogsFailuresWithTheFunctionName) {
    ASSERT_NE(TavikSystem::GetInstance().GetLogger(), nullptr);
    Frame borrowed(nullptr, 64);
    EXPECT_NE(NewLog().find(": No valid buffer passed when constructing frame. in function: "
                            "QRX::TvkAPI::Frame::Frame\n"),
              std::string::npos);
}

TEST_F(FileLoggerTest, WithoutATemporaryDirectoryTheProcessStops) {
    GTEST_FLAG_SET(death_test_style, "fast");
    EXPECT_DEATH(
        {
            setenv("TMPDIR", "/nonexistent/tavik", 1);
            FileLogger logger("never.log", true);
        },
        "");
}

} // namespace
