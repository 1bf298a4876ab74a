#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "kit/AutoreleasePool.h"
#include "kit/Registery.h"

using namespace llk;

namespace {

// Backs each register with bytes of its own and records every call.
class cRecorder : public cRegistery::pDelegate {
public:
    struct tCall {
        bool store;
        u8 base;
        u4 offset;
        u4 count;
    };

    explicit cRecorder(const cRegistery::tRegister* aTable, u4 aCount) : mTable(aTable) {
        for (u4 i = 0; i < aCount; ++i)
            for (u4 b = 0; b < aTable[i].length; ++b)
                mSpace.push_back(static_cast<u1>(aTable[i].base + b));
    }
    i4 OnRegisterFetch(u8 aBase, u4 aOffset, void* aBytes, u4 aCount) override {
        mCalls.push_back({false, aBase, aOffset, aCount});
        if (aBase == mRefuse) return -7;
        memcpy(aBytes, &mSpace[Where(aBase) + aOffset], aCount);
        return kOk;
    }
    i4 OnRegisterStore(u8 aBase, u4 aOffset, const void* aBytes, u4 aCount) override {
        mCalls.push_back({true, aBase, aOffset, aCount});
        if (aBase == mRefuse) return -7;
        memcpy(&mSpace[Where(aBase) + aOffset], aBytes, aCount);
        return kOk;
    }

    std::vector<tCall> mCalls;
    u8 mRefuse = ~u8{0};

private:
    size_t Where(u8 aBase) const {
        size_t at = 0;
        for (const cRegistery::tRegister* r = mTable; r->base != aBase; ++r)
            at += r->length;
        return at;
    }
    const cRegistery::tRegister* mTable;
    std::vector<u1> mSpace;
};

// Two adjoining 4-byte registers, a gap, then an 8-byte one and a 4-byte one
// that adjoins it.
const cRegistery::tRegister kTable[] = {{0x100, 4, 0}, {0x104, 4, 0}, {0x110, 8, 0}, {0x118, 4, 0}};
constexpr u4 kRows = 4;

class RegisteryTest : public ::testing::Test {
protected:
    uAutoreleasePool mPool;
    cRecorder mDelegate{kTable, kRows};
    cRegistery* mRegistery = cRegistery::New(kTable, kRows, &mDelegate);
};

TEST_F(RegisteryTest, ReadAcrossAdjoiningRegistersCallsTheDelegateForEach) {
    ASSERT_NE(mRegistery, nullptr);
    EXPECT_EQ(mRegistery->ClassCode(), 56u);
    u1 bytes[8] = {};
    u4 length = 8;
    EXPECT_EQ(mRegistery->Fetch(0x100, bytes, length), kOk);
    EXPECT_EQ(length, 8u);
    ASSERT_EQ(mDelegate.mCalls.size(), 2u);
    EXPECT_EQ(mDelegate.mCalls[0].base, 0x100u);
    EXPECT_EQ(mDelegate.mCalls[0].count, 4u);
    EXPECT_EQ(mDelegate.mCalls[1].base, 0x104u);
    EXPECT_EQ(mDelegate.mCalls[1].offset, 0u);
    EXPECT_EQ(mDelegate.mCalls[1].count, 4u);
    const u1 expected[8] = {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07};
    EXPECT_EQ(memcmp(bytes, expected, 8), 0);
}

TEST_F(RegisteryTest, AccessInsideARegisterPassesItsOffset) {
    u1 in[6] = {0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5};
    u4 length = 6;
    // 0x116: the last two bytes of the 8-byte register, then four of the next.
    EXPECT_EQ(mRegistery->Store(0x116, in, length), kOk);
    EXPECT_EQ(length, 6u);
    ASSERT_EQ(mDelegate.mCalls.size(), 2u);
    EXPECT_TRUE(mDelegate.mCalls[0].store);
    EXPECT_EQ(mDelegate.mCalls[0].base, 0x110u);
    EXPECT_EQ(mDelegate.mCalls[0].offset, 6u);
    EXPECT_EQ(mDelegate.mCalls[0].count, 2u);
    EXPECT_EQ(mDelegate.mCalls[1].base, 0x118u);
    EXPECT_EQ(mDelegate.mCalls[1].count, 4u);

    u1 out[6] = {};
    length = 6;
    EXPECT_EQ(mRegistery->Fetch(0x116, out, length), kOk);
    EXPECT_EQ(memcmp(in, out, 6), 0);

    // A short access stays within one register.
    mDelegate.mCalls.clear();
    length = 1;
    EXPECT_EQ(mRegistery->Fetch(0x102, out, length), kOk);
    EXPECT_EQ(length, 1u);
    ASSERT_EQ(mDelegate.mCalls.size(), 1u);
    EXPECT_EQ(mDelegate.mCalls[0].offset, 2u);
}

TEST_F(RegisteryTest, GapsEndAnAccessShort) {
    u1 bytes[16] = {};
    u4 length = 16;
    EXPECT_EQ(mRegistery->Fetch(0x104, bytes, length), kOk);
    EXPECT_EQ(length, 4u);
    EXPECT_EQ(mDelegate.mCalls.size(), 1u);
}

TEST_F(RegisteryTest, AddressesOutsideOrBetweenRegistersAndNullBuffers) {
    u1 bytes[4] = {};
    u4 length = 4;
    EXPECT_EQ(mRegistery->Fetch(0xFF, bytes, length), kOutOfRange);
    EXPECT_EQ(length, 0u);
    length = 4;
    EXPECT_EQ(mRegistery->Fetch(0x11C, bytes, length), kOutOfRange); // one past the end
    length = 4;
    EXPECT_EQ(mRegistery->Store(~u8{0}, bytes, length), kOutOfRange);
    length = 4;
    EXPECT_EQ(mRegistery->Fetch(0x108, bytes, length), kNoMatch); // in the gap
    length = 4;
    EXPECT_EQ(mRegistery->Fetch(0x100, nullptr, length), kNoMatch);
    length = 4;
    EXPECT_EQ(mRegistery->Store(0x100, nullptr, length), kNoMatch);
    EXPECT_TRUE(mDelegate.mCalls.empty());

    // The last byte of the last register is inside.
    length = 4;
    EXPECT_EQ(mRegistery->Fetch(0x11B, bytes, length), kOk);
    EXPECT_EQ(length, 1u);
}

TEST_F(RegisteryTest, ARefusingRegisterEndsTheAccessWithItsStatus) {
    mDelegate.mRefuse = 0x104;
    u1 bytes[8] = {};
    u4 length = 8;
    EXPECT_EQ(mRegistery->Store(0x100, bytes, length), -7);
    EXPECT_EQ(mDelegate.mCalls.size(), 2u);
    EXPECT_EQ(length, 8u); // both registers were handed their bytes

    mDelegate.mCalls.clear();
    mDelegate.mRefuse = 0x100;
    length = 8;
    EXPECT_EQ(mRegistery->Fetch(0x100, bytes, length), -7);
    EXPECT_EQ(mDelegate.mCalls.size(), 1u);
    EXPECT_EQ(length, 4u);
}

TEST(RegisteryNewTest, NeedsADelegateAndATable) {
    uAutoreleasePool pool;
    cRecorder delegate{kTable, kRows};
    EXPECT_EQ(cRegistery::New(kTable, kRows, nullptr), nullptr);
    EXPECT_EQ(cRegistery::New(nullptr, 3, &delegate), nullptr);
    cRegistery* empty = cRegistery::New(nullptr, 0, &delegate);
    ASSERT_NE(empty, nullptr);
    u1 byte = 0;
    u4 length = 1;
    EXPECT_EQ(empty->Fetch(0, &byte, length), kOutOfRange);
}

} // namespace
