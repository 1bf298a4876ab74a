#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "Probe.h"
#include "kit/AutoreleasePool.h"
#include "kit/Dictionary.h"
#include "kit/Directory.h"
#include "kit/LogFile.h"
#include "kit/XMLBundle.h"

using namespace llk;
namespace fs = std::filesystem;

namespace {

class StoresTest : public ::testing::Test {
protected:
    void SetUp() override {
        mDir = fs::temp_directory_path() /
               ("tavik-kit-" + std::to_string(getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(mDir);
    }
    void TearDown() override { fs::remove_all(mDir); }
    std::vector<std::string> Lines(const fs::path& aPath) {
        std::vector<std::string> lines;
        std::ifstream in(aPath);
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        return lines;
    }
    uAutoreleasePool mPool;
    fs::path mDir;
};

TEST_F(StoresTest, DictionaryKeepsTypesApart) {
    cDictionary* d = cDictionary::New();
    EXPECT_TRUE(d->StoreUint("w", u2{640}));
    u8 wide = 0;
    EXPECT_TRUE(d->FetchUint("w", wide));
    EXPECT_EQ(wide, 640u);
    i8 signedValue = 0;
    EXPECT_FALSE(d->FetchInt("w", signedValue));
    EXPECT_TRUE(d->StoreInt("w", i4{-3})); // overwrite with another type
    EXPECT_TRUE(d->FetchInt("w", signedValue));
    EXPECT_EQ(signedValue, -3);

    EXPECT_TRUE(d->StoreBlock("b", "abcdef", 6));
    char out[4];
    u4 size = sizeof(out);
    EXPECT_TRUE(d->FetchBlock("b", out, size));
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(std::string(out, 4), "abcd");

    EXPECT_FALSE(d->StoreObject("o", nullptr));
    test::cProbe* probe = test::cProbe::New();
    EXPECT_TRUE(d->StoreObject("o", probe));
    EXPECT_EQ(probe->RetainCount(), 2u);
    d->Clear();
    EXPECT_EQ(probe->RetainCount(), 1u);
    EXPECT_FALSE(d->Contains("w"));
}

TEST_F(StoresTest, BundleReadsWritesAndCreatesPaths) {
    fs::path file = mDir / "s.xml";
    std::ofstream(file) << "<A><Flag>TRUE</Flag><Yes>true</Yes><Hex>0x10</Hex></A>";
    cXMLBundle* bundle = cXMLBundle::New(file.c_str());
    ASSERT_NE(bundle, nullptr);
    bool flag = false;
    EXPECT_FALSE(bundle->FetchBool("A/Flag", flag)); // only True/true/False/false
    EXPECT_TRUE(bundle->FetchBool("A/Yes", flag));
    EXPECT_TRUE(flag);
    u4 hex = 0;
    EXPECT_TRUE(bundle->FetchUint("A/Hex", hex));
    EXPECT_EQ(hex, 16u);
    u4 missing = 0;
    EXPECT_FALSE(bundle->FetchUint("A/B", missing));
    EXPECT_TRUE(bundle->StoreUint("A/B", u4{7}));
    EXPECT_TRUE(bundle->FetchUint("A/B", missing));
    EXPECT_EQ(missing, 7u);
    EXPECT_TRUE(bundle->Probe("A/B", nullptr));
    EXPECT_TRUE(bundle->Remove("A/B", nullptr));
    EXPECT_FALSE(bundle->Probe("A/B", nullptr));
    EXPECT_FALSE(bundle->Probe(std::string(200, 'x').c_str(), nullptr)); // name too long

    EXPECT_EQ(cXMLBundle::New((mDir / "absent.xml").c_str()), nullptr);
    std::ofstream(mDir / "bad.xml") << "<A><B></A>";
    EXPECT_EQ(cXMLBundle::New((mDir / "bad.xml").c_str()), nullptr);
}

TEST_F(StoresTest, DirectoryListsRegularFilesByExtension) {
    std::ofstream(mDir / "a.cti") << "x";
    std::ofstream(mDir / "B.CTI") << "x";
    std::ofstream(mDir / "c.txt") << "x";
    fs::create_directories(mDir / "d.cti");
    cDirectory* directory = cDirectory::New(mDir.c_str());
    ASSERT_NE(directory, nullptr);
    std::vector<std::string> names;
    while (cString* name = directory->Next(".cti"))
        names.push_back(name->Chars());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"B.CTI", "a.cti"}));
    EXPECT_EQ(cDirectory::New((mDir / "none").c_str()), nullptr);
}

TEST_F(StoresTest, LogLinesAreStampedCutAndNeverInterleaved) {
    fs::path file = mDir / "t.log";
    std::ofstream(file) << "old\n";
    cLogFile* log = Retained(cLogFile::New(file.c_str(), false)); // empties the file
    ASSERT_NE(log, nullptr);
    log->LogError("value %d", 5);
    log->LogMessage("%s", std::string(2000, 'x').c_str());
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([log, t] {
            for (int i = 0; i < 200; ++i)
                log->LogPlain("thread %d line %d end", t, i);
        });
    for (auto& t : threads)
        t.join();
    log->Release();
    mPool.Sink(); // the last reference: closing flushes the file

    std::ifstream in(file);
    std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    auto lines = Lines(file);
    ASSERT_GE(lines.size(), 2u);
    // "yyyy-mm-dd hh:mm:ss.mmm: [E] value 5"
    EXPECT_EQ(lines[0].size(), 36u);
    EXPECT_EQ(lines[0].substr(23), ": [E] value 5");
    // The long message is cut at 1023 characters with no line break, so the
    // next line runs on behind it.
    EXPECT_EQ(all.find("old"), std::string::npos);
    auto cut = std::find_if(lines.begin(), lines.end(),
                            [](const std::string& l) { return l.find("xxxxxxxx") != l.npos; });
    ASSERT_NE(cut, lines.end());
    EXPECT_EQ(cut->find_last_of('x') + 1, 1023u);
    EXPECT_GT(cut->size(), 1023u);
    int complete = 0;
    for (const auto& line : lines)
        if (line.find("[ ] thread") != std::string::npos) {
            EXPECT_EQ(line.substr(line.size() - 4), " end") << line;
            ++complete;
        }
    EXPECT_EQ(complete, 800);
}

} // namespace
