#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <thread>

#include "kit/Env.h"
#include "kit/Status.h"

using namespace llk;

TEST(EnvTest, Crc32MatchesTheReflectedTableWithoutFinalInversion) {
    EXPECT_EQ(sEnv::Crc32("", 0), 0xFFFFFFFFu);
    EXPECT_EQ(sEnv::Crc32(nullptr, 5), 0xFFFFFFFFu);
    // Standard CRC-32 of "123456789" is 0xCBF43926; without the final
    // inversion it is the complement.
    EXPECT_EQ(sEnv::Crc32("123456789"), ~0xCBF43926u);
}

TEST(EnvTest, InternetChecksumFoldsCarries) {
    const llk::u2 words[] = {0xFFFF, 0x0001};
    EXPECT_EQ(sEnv::InternetChecksum(words, 4), static_cast<llk::u2>(~0x0001));
    EXPECT_EQ(sEnv::InternetChecksum(nullptr, 0), 0xFFFF);
}

TEST(EnvTest, NumberTextTests) {
    EXPECT_TRUE(sEnv::IsFloatText("1.5e3"));
    EXPECT_FALSE(sEnv::IsFloatText("1e3"));
    EXPECT_FALSE(sEnv::IsFloatText("+-1"));
    EXPECT_FALSE(sEnv::IsIntegerText("+-1"));
    EXPECT_TRUE(sEnv::IsIntegerText(""));
    EXPECT_FALSE(sEnv::IsFloatText(""));
    EXPECT_TRUE(sEnv::IsIntegerText("-42"));
}

TEST(EnvTest, NumberReadersTakeDecimalAndHex) {
    u4 value = 7;
    EXPECT_TRUE(sEnv::ReadNumber("0x1F", value));
    EXPECT_EQ(value, 0x1Fu);
    EXPECT_TRUE(sEnv::ReadNumber("31", value));
    EXPECT_EQ(value, 31u);
    EXPECT_FALSE(sEnv::ReadNumber("abc", value));
    EXPECT_EQ(value, 31u);
    u8 wide = 0;
    EXPECT_TRUE(sEnv::ReadNumber("0xFFFFFFFFFF", wide));
    EXPECT_EQ(wide, 0xFFFFFFFFFFull);
    double real = 0;
    EXPECT_TRUE(sEnv::ReadNumber("2.5", real));
    EXPECT_DOUBLE_EQ(real, 2.5);
    char text[4];
    EXPECT_TRUE(sEnv::WriteNumber(text, sizeof(text), u4{123}));
    EXPECT_STREQ(text, "123");
    EXPECT_FALSE(sEnv::WriteNumber(text, sizeof(text), u4{1234}));
}

TEST(EnvTest, BitsUseOnlyTheLowBitOfTheData) {
    u4 value = 0xFF;
    sBits::Set(value, 2, 0);
    EXPECT_EQ(value, 0xFEu);
    sBits::Set(value, 1, 8);
    EXPECT_TRUE(sBits::Presents(value, 8));
    EXPECT_FALSE(sBits::Presents(value, 0));
}

TEST(EnvTest, EmptyEnvironmentVariableReadsAsUnset) {
    setenv("TAVIK_TEST_EMPTY", "", 1);
    EXPECT_EQ(sEnv::GetEnvVariable("TAVIK_TEST_EMPTY"), nullptr);
    setenv("TAVIK_TEST_SET", "abc", 1);
    char* value = sEnv::GetEnvVariable("TAVIK_TEST_SET");
    ASSERT_NE(value, nullptr);
    EXPECT_STREQ(value, "abc");
    sEnv::Free(value);
}

TEST(EnvTest, ResizeZeroesTheGrownTail) {
    auto* bytes = static_cast<unsigned char*>(sEnv::Malloc(4, false));
    for (int i = 0; i < 4; ++i)
        bytes[i] = 0xAA;
    bytes = static_cast<unsigned char*>(sEnv::Resize(bytes, 64, 4));
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes[3], 0xAA);
    for (int i = 4; i < 64; ++i)
        ASSERT_EQ(bytes[i], 0) << i;
    sEnv::Free(bytes, 64);
}

TEST(EnvTest, ThreadTagsArePerThreadAndRandomStaysInRange) {
    sEnv::SetThreadTag(0xf00d0002);
    u4 other = 1;
    std::thread([&] { other = sEnv::GetThreadTag(); }).join();
    EXPECT_EQ(other, 0u);
    EXPECT_EQ(sEnv::GetThreadTag(), 0xf00d0002u);
    sEnv::SetThreadTag(0);
    sEnv::SeedRandom(7);
    for (int i = 0; i < 1000; ++i) {
        u4 r = sEnv::Random(100, 10000);
        ASSERT_GE(r, 100u);
        ASSERT_LE(r, 10000u);
    }
}

TEST(EnvTest, ErrnoMapsToKitStatuses) {
    EXPECT_EQ(sEnv::StatusFromErrno(0), kOk);
    EXPECT_EQ(sEnv::StatusFromErrno(ENOENT), kNotFound);
    EXPECT_EQ(sEnv::StatusFromErrno(ENOMEM), kNoMemory);
    EXPECT_EQ(sEnv::StatusFromErrno(EACCES), kNotAllowed);
    EXPECT_EQ(sEnv::StatusFromErrno(EAGAIN), kNoResources);
    EXPECT_EQ(sEnv::StatusFromErrno(EXDEV), kFailed);
    char text[64];
    sEnv::ErrnoText(ENOENT, text, sizeof(text));
    EXPECT_STREQ(text, "No such file or directory");
}
