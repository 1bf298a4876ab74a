// gik::cValue: flavours, total conversions and equality.
#include <gtest/gtest.h>

#include <cmath>

#include "gik/Value.h"
#include "kit/AutoreleasePool.h"

using namespace gik;

namespace {

class Values : public ::testing::Test {
protected:
    llk::uAutoreleasePool mPool;
};

} // namespace

TEST_F(Values, FreshValueIsSignedWithoutNumber) {
    cValue* v = cValue::New();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->Flavour(), kFlavourSigned);
    EXPECT_TRUE(v->IsAbsent());
    EXPECT_EQ(v->Sint(), 0);
    EXPECT_FALSE(v->Bool());
    EXPECT_EQ(v->Real(), 0.0);
}

TEST_F(Values, Factories) {
    EXPECT_EQ(cValue::NewBool(true)->Flavour(), kFlavourBool);
    EXPECT_EQ(cValue::NewByte(7)->Flavour(), kFlavourByte);
    EXPECT_EQ(cValue::NewSigned(-1)->Flavour(), kFlavourSigned);
    EXPECT_EQ(cValue::NewUnsigned(1)->Flavour(), kFlavourUnsigned);
    EXPECT_EQ(cValue::NewReal(0.5)->Flavour(), kFlavourReal);
    cValue* t = cValue::NewText("abc");
    EXPECT_EQ(t->Flavour(), kFlavourText);
    const char* chars = nullptr;
    ASSERT_TRUE(t->Get(chars));
    EXPECT_STREQ(chars, "abc");
    EXPECT_EQ(cValue::NewText(static_cast<const char*>(nullptr)), nullptr);
    cValue* copy = cValue::NewCopy(*t);
    EXPECT_EQ(copy->String(), t->String()); // the holder is shared, not copied
}

TEST_F(Values, ConversionsFromEachFlavour) {
    cValue v;
    v.SetSigned(-5);
    EXPECT_TRUE(v.Bool());
    EXPECT_EQ(v.Byte(), 0);
    EXPECT_EQ(v.Uint(), 0u);
    EXPECT_EQ(v.Real(), -5.0);
    v.SetSigned(300);
    EXPECT_EQ(v.Byte(), 255);
    v.SetUnsigned(UINT64_MAX);
    EXPECT_EQ(v.Sint(), INT64_MAX);
    EXPECT_EQ(v.Byte(), 255);
    v.SetReal(-2.9);
    EXPECT_EQ(v.Sint(), -2);
    EXPECT_EQ(v.Uint(), 0u);
    EXPECT_EQ(v.Byte(), 0);
    v.SetReal(1e30);
    EXPECT_EQ(v.Sint(), INT64_MAX);
    EXPECT_EQ(v.Uint(), UINT64_MAX);
    v.SetReal(-1e30);
    EXPECT_EQ(v.Sint(), INT64_MIN);
    v.SetReal(9223372036854775808.0);
    EXPECT_EQ(v.Sint(), INT64_MAX);
    v.SetReal(std::nan(""));
    EXPECT_TRUE(v.Bool()); // NaN counts as true
    EXPECT_EQ(v.Sint(), 0);
    v.SetReal(300.7);
    EXPECT_EQ(v.Byte(), 255);
    v.SetBool(true);
    EXPECT_EQ(v.Sint(), 1);
    EXPECT_EQ(v.Real(), 1.0);
    v.SetByte(200);
    EXPECT_EQ(v.Sint(), 200);
    v.SetText("12");
    EXPECT_FALSE(v.Bool());
    EXPECT_EQ(v.Sint(), 0);
    EXPECT_EQ(v.Real(), 0.0);
}

TEST_F(Values, AssignmentReplacesTheHolder) {
    cValue v;
    v.SetText("abc");
    EXPECT_TRUE(v.HasText());
    v.SetSigned(4);
    EXPECT_FALSE(v.HasText());
    EXPECT_TRUE(v.HasNumber());
    EXPECT_TRUE(v.IsDirty());
    v.SetDirty(false);
    v.Freeze(true);
    EXPECT_FALSE(v.SetSigned(5));
    EXPECT_EQ(v.Sint(), 4);
    EXPECT_FALSE(v.IsDirty());
    v.Freeze(false);
    EXPECT_TRUE(v.Clear());
    EXPECT_TRUE(v.IsAbsent());
}

TEST_F(Values, Equality) {
    cValue a, b;
    a.SetSigned(-1);
    b.SetUnsigned(UINT64_MAX);
    EXPECT_TRUE(a.Equals(b)); // the same 64 bits
    a.SetReal(1.0);
    b.SetSigned(1);
    EXPECT_TRUE(a.Equals(b));
    b.SetReal(1.0 + 1e-15);
    EXPECT_FALSE(a.Equals(b));
    a.SetBool(true);
    b.SetSigned(1);
    EXPECT_TRUE(a.Equals(b));
    a.SetText("x");
    b.SetText("x");
    EXPECT_TRUE(a.Equals(b));
    b.SetSigned(0);
    EXPECT_FALSE(a.Equals(b));
    cValue none;
    EXPECT_FALSE(none.Equals(none));
}
