#include <gtest/gtest.h>

#include "kit/AutoreleasePool.h"
#include "kit/Data.h"
#include "kit/Number64.h"
#include "kit/String.h"
#include "kit/StringCache.h"

using namespace llk;

namespace {

class StringsTest : public ::testing::Test {
protected:
    uAutoreleasePool mPool;
};

TEST_F(StringsTest, BorrowedTextIsCopiedOnFirstChangeOnly) {
    static const char kLiteral[] = "abc";
    cString* s = cString::New(kLiteral, true);
    EXPECT_TRUE(s->IsBorrowed());
    EXPECT_EQ(s->Chars(), kLiteral);
    EXPECT_TRUE(s->Append(""));
    EXPECT_TRUE(s->IsBorrowed()); // an empty append makes no copy
    EXPECT_TRUE(s->Append("d"));
    EXPECT_FALSE(s->IsBorrowed());
    EXPECT_STREQ(s->Chars(), "abcd");
    EXPECT_STREQ(kLiteral, "abc");
    EXPECT_EQ(s->Capacity(), 4u); // exact growth
    EXPECT_TRUE(s->Prepend(">"));
    EXPECT_STREQ(s->Chars(), ">abcd");
}

TEST_F(StringsTest, HashIsCachedAndClearedByChanges) {
    cString* empty = cString::New(8);
    EXPECT_EQ(empty->Hash(), 0u);
    cString* s = cString::New("Width", false);
    u4 hash = s->Hash();
    EXPECT_EQ(hash, cString::New("Width", true)->Hash());
    s->Append("X");
    EXPECT_NE(s->Hash(), hash);
}

TEST_F(StringsTest, FormatKeepsLengthUntilRecount) {
    cString* s = cString::New(8);
    EXPECT_TRUE(s->Format("%s", "0123456789"));
    EXPECT_STREQ(s->Chars(), "0123456");
    EXPECT_EQ(s->Length(), 0u);
    s->Recount();
    EXPECT_EQ(s->Length(), 7u);
    EXPECT_FALSE(s->Format("%s", ""));
}

TEST_F(StringsTest, SearchAndSubstringsRespectTheirBounds) {
    cString* s = cString::New("abc", false);
    u4 position = 3;
    EXPECT_FALSE(s->FindFirstOccurence(position, 'a'));
    EXPECT_EQ(position, 3u);
    position = 1;
    EXPECT_TRUE(s->FindFirstOccurence(position, 'c'));
    EXPECT_EQ(position, 2u);

    cString* a = s->SubstringFromRange({0, 0});
    ASSERT_NE(a, nullptr);
    EXPECT_STREQ(a->Chars(), "a");
    a->Release();
    EXPECT_EQ(s->SubstringFromRange({0, 3}), nullptr);
    EXPECT_EQ(s->SubstringFromRange({2, 1}), nullptr);
    EXPECT_EQ(cString::New(4)->SubstringFromRange({0, 0}), nullptr);

    EXPECT_EQ(s->Compare("abd"), -1);
    EXPECT_EQ(s->Compare("abc"), 0);
    EXPECT_EQ(s->CompareHead("ab"), 0);
    EXPECT_EQ(s->CompareTail("bc"), 0);
    EXPECT_EQ(s->CompareHead("abcd"), -1);
}

TEST_F(StringsTest, DataStoresWithinCapacity) {
    cData* data = cData::New(4);
    EXPECT_FALSE(data->Store("12345", 5));
    EXPECT_TRUE(data->Store("1234", 4));
    char out[4];
    EXPECT_FALSE(data->Read(out, 5));
    EXPECT_TRUE(data->Read(out, 4));
    data->SetLength(100);
    EXPECT_EQ(data->GetLength(), 4u);
    EXPECT_EQ(data->SetCapacity(2), kOk);
    EXPECT_EQ(data->GetLength(), 2u);
}

TEST_F(StringsTest, CheckedNumberReadsWantTheExactType) {
    cNumber64* n = cNumber64::NewUInt8(7);
    u8 wide = 99;
    EXPECT_FALSE(n->GetUInt64(wide));
    EXPECT_EQ(wide, 99u);
    u1 narrow = 0;
    EXPECT_TRUE(n->GetUInt8(narrow));
    EXPECT_EQ(narrow, 7);
    cNumber64* d = cNumber64::NewDouble(2.5);
    EXPECT_DOUBLE_EQ(d->ValueDouble(), 2.5);
    EXPECT_EQ(cNumber64::New()->Type(), cNumber64::kUInt64);
}

TEST_F(StringsTest, CacheInternsOneStringPerText) {
    cStringCache* cache = cStringCache::New();
    char text[] = "Gain";
    cString* first = cache->Store(text);
    text[0] = 'X'; // the cache owns a copy
    EXPECT_EQ(cache->Store("Gain"), first);
    EXPECT_NE(cache->Store(text), first);
    EXPECT_EQ(cache->Count(), 2u);
}

} // namespace
