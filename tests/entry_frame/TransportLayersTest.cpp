#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

#include "TransportLayers.h"
#include "kit/AutoreleasePool.h"
#include "kit/ObjectList.h"
#include "kit/ObjectMap.h"

namespace fs = std::filesystem;

namespace {

class TransportLayersTest : public ::testing::Test {
protected:
    void SetUp() override {
        mRoot = fs::temp_directory_path() / ("tavik-scan-" + std::to_string(getpid()));
        fs::create_directories(mRoot / "a");
        fs::create_directories(mRoot / "b");
        mMap = llk::Retained(llk::cObjectMap::New(4, 0.5f, true));
    }
    void TearDown() override {
        llk::ReleaseAndClear(mMap);
        fs::remove_all(mRoot);
    }
    void Touch(const fs::path& aPath) { std::ofstream(aPath) << "x"; }
    std::string PathOf(const char* aName) {
        auto* tl = static_cast<cGenTL*>(mMap->Fetch(aName));
        return tl ? tl->GetPath()->Chars() : "";
    }

    llk::uAutoreleasePool mPool;
    fs::path mRoot;
    llk::cObjectMap* mMap = nullptr;
};

TEST_F(TransportLayersTest, FirstDirectoryWinsAndOnlyProducerFilesCount) {
    Touch(mRoot / "a" / "x.cti");
    Touch(mRoot / "b" / "x.cti");
    Touch(mRoot / "b" / "Y.CTI");
    Touch(mRoot / "b" / "notes.txt");
    fs::create_directories(mRoot / "b" / "dir.cti");
    ScanTLs(mMap, (mRoot / "a").c_str());
    ScanTLs(mMap, (mRoot / "b").c_str());
    ScanTLs(mMap, (mRoot / "missing").c_str());
    EXPECT_EQ(mMap->Count(), 2u);
    EXPECT_EQ(PathOf("x.cti"), (mRoot / "a" / "x.cti").string());
    EXPECT_EQ(PathOf("Y.CTI"), (mRoot / "b" / "Y.CTI").string());
}

TEST_F(TransportLayersTest, SearchPathSplitsAtEitherSeparatorInOrder) {
    llk::cObjectList* parts = SplitPaths("/one;/two:/three;;");
    ASSERT_EQ(parts->Count(), 3u);
    EXPECT_STREQ(static_cast<llk::cString*>(parts->AtIndex(0))->Chars(), "/one");
    EXPECT_STREQ(static_cast<llk::cString*>(parts->AtIndex(1))->Chars(), "/two");
    EXPECT_STREQ(static_cast<llk::cString*>(parts->AtIndex(2))->Chars(), "/three");
    parts = SplitPaths("/single");
    ASSERT_EQ(parts->Count(), 1u);
    EXPECT_STREQ(static_cast<llk::cString*>(parts->AtIndex(0))->Chars(), "/single");
}

} // namespace

namespace {

TEST_F(TransportLayersTest, DeepDirectoriesKeepTheirWholePath) {
    fs::path deep = mRoot / "a";
    for (int i = 0; i < 12; ++i)
        deep /= std::string(30, static_cast<char>('k' + i));
    fs::create_directories(deep);
    Touch(deep / "deep.cti");
    ScanTLs(mMap, deep.c_str());
    EXPECT_EQ(PathOf("deep.cti"), (deep / "deep.cti").string());
}

} // namespace
