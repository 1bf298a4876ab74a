// The wide reading's rules for registers, each against the strict reading
// where the two differ: lengths of 1 to 8 bytes, bit fields in the
// register's own frame, pLength, summed and signed addresses, several
// indexes, registers without a port, and access mode texts.
#include <gtest/gtest.h>

#include "Fixture.h"
#include "gik/MemoryNode.h"
#include "gik/RegisterNode.h"

using namespace gik;

namespace {

class WideRegisters : public test::KernelTest {};

std::string Register(const char* aKind, const char* aName, const std::string& aBody) {
    return std::string("<") + aKind + " Name=\"" + aName + "\">" + aBody +
           "<AccessMode>RW</AccessMode><pPort>Device</pPort></" + aKind + ">";
}

std::string IntReg(const char* aName, const std::string& aAddress, int aLength,
                   const char* aExtra = "") {
    return Register("IntReg", aName,
                    "<Address>" + aAddress + "</Address><Length>" + std::to_string(aLength) +
                        "</Length>" + aExtra);
}

const char* kEndians[] = {"<Endianess>BigEndian</Endianess>",
                          "<Endianess>LittleEndian</Endianess>"};

} // namespace

TEST_F(WideRegisters, OneByteRegistersAtEveryOffsetInEitherByteOrder) {
    std::string nodes, names;
    for (int order = 0; order < 2; ++order)
        for (int at = 0; at < 8; ++at) {
            std::string name = std::string(order ? "L" : "B") + std::to_string(at);
            nodes += IntReg(name.c_str(), std::to_string(0x100 * order + at), 1, kEndians[order]);
            names += name + " ";
        }
    nodes += IntReg("Signed", "0x200", 1, "<Sign>Signed</Sign>");
    ASSERT_EQ(LoadWide(nodes, names + "Signed"), 0);
    for (int order = 0; order < 2; ++order)
        mPort->PutBig(0x100 * order, 0x0102030405060708ull, 8);
    for (int order = 0; order < 2; ++order)
        for (int at = 0; at < 8; ++at) {
            std::string name = std::string(order ? "L" : "B") + std::to_string(at);
            SCOPED_TRACE(name);
            mPort->ResetCounts();
            EXPECT_EQ(GetInt(name.c_str()), at + 1);
            ASSERT_EQ(mPort->mLog.size(), 1u);
            EXPECT_EQ(mPort->mLog[0].length, 1u); // the byte itself, nothing around it
            ASSERT_EQ(SetInt(name.c_str(), 0xF0 + at), 0);
            EXPECT_EQ(mPort->Byte(0x100 * order + at), 0xF0 + at);
            EXPECT_EQ(SetInt(name.c_str(), 256), 15); // beyond one unsigned byte
        }
    EXPECT_EQ(mPort->GetBig(0, 8), 0xF0F1F2F3F4F5F6F7ull);
    mPort->mBytes[0x200] = 0x80;
    EXPECT_EQ(GetInt("Signed"), -128);
    cValue minimum, maximum;
    ASSERT_EQ(Node("Signed")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), -128);
    EXPECT_EQ(maximum.Sint(), 127);
}

TEST_F(WideRegisters, OddLengthsSignExtendAndTwoBytesAreTwoBytes) {
    ASSERT_EQ(LoadWide(IntReg("S3", "0", 3, "<Sign>Signed</Sign>") +
                           IntReg("S7", "0x10", 7,
                                  "<Sign>Signed</Sign><Endianess>LittleEndian</Endianess>") +
                           IntReg("U5", "0x20", 5) + IntReg("U2", "0x30", 2),
                       "S3 S7 U5 U2"),
              0);
    mPort->PutBig(0, 0xFFFFFE, 3);
    mPort->PutLittle(0x10, 0x80000000000001ull, 7);
    mPort->PutBig(0x20, 0xFFFFFFFFFFull, 5);
    mPort->PutBig(0x30, 0xBEEF, 2);
    mPort->PutBig(0x32, 0x1122334455667788ull, 8);
    EXPECT_EQ(GetInt("S3"), -2);
    EXPECT_EQ(GetInt("S7"), static_cast<llk::i8>(0xFF80000000000001ull));
    EXPECT_EQ(GetInt("U5"), 0xFFFFFFFFFFll);
    EXPECT_EQ(GetInt("U2"), 0xBEEF); // the strict reading would read eight bytes after them
    cValue minimum, maximum;
    ASSERT_EQ(Node("S3")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), -(1 << 23));
    EXPECT_EQ(maximum.Sint(), (1 << 23) - 1);
    mPort->ResetCounts();
    ASSERT_EQ(SetInt("U2", 0x1234), 0);
    ASSERT_EQ(mPort->mLog.size(), 1u);
    EXPECT_EQ(mPort->mLog[0].length, 2u);
    EXPECT_EQ(mPort->GetBig(0x32, 8), 0x1122334455667788ull);
    EXPECT_EQ(SetInt("S3", 1 << 23), 15);
}

TEST_F(WideRegisters, LengthsTheStrictReadingRefusesStayRefused) {
    EXPECT_EQ(Load(IntReg("One", "0", 1), "One"), 101);
    test::KernelTest::TearDown();
    test::KernelTest::SetUp();
    EXPECT_EQ(LoadWide(IntReg("Nine", "0", 9), "Nine"), 101);
}

TEST_F(WideRegisters, FieldsLieInTheRegistersOwnFrame) {
    const char* entries = "<StructEntry Name=\"High\"><LSB>32</LSB><MSB>63</MSB>"
                          "<Sign>Signed</Sign></StructEntry>"
                          "<StructEntry Name=\"All\"><LSB>0</LSB><MSB>63</MSB><Sign>Signed</Sign>"
                          "</StructEntry>"
                          "<StructEntry Name=\"Top\"><Bit>63</Bit></StructEntry>"
                          "<StructEntry Name=\"Nibble\"><LSB>4</LSB><MSB>7</MSB>"
                          "<Sign>Signed</Sign></StructEntry>";
    ASSERT_EQ(
        LoadWide(Register("StructReg", "L8",
                          std::string("<Address>0</Address><Length>8</Length>") + kEndians[1] +
                              entries) +
                     // Big endian: bit 0 is the most significant of all 64.
                     Register("MaskedIntReg", "B8Top",
                              std::string("<Address>0x10</Address><Length>8</Length><Bit>0</Bit>") +
                                  kEndians[0]) +
                     Register("MaskedIntReg", "B2Low",
                              std::string("<Address>0x20</Address><Length>2</Length><LSB>15</LSB>"
                                          "<MSB>8</MSB>") +
                                  kEndians[0]),
                 "High All Top Nibble B8Top B2Low"),
        0);
    mPort->PutLittle(0, 0x80000000000000F0ull, 8);
    EXPECT_EQ(GetInt("High"), static_cast<llk::i8>(0xFFFFFFFF80000000ull));
    EXPECT_EQ(GetInt("All"), static_cast<llk::i8>(0x80000000000000F0ull));
    EXPECT_EQ(GetInt("Top"), 1);
    EXPECT_EQ(GetInt("Nibble"), -1); // four bits of ones extend from their own top bit
    cValue minimum, maximum;
    ASSERT_EQ(Node("All")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), INT64_MIN);
    EXPECT_EQ(maximum.Sint(), INT64_MAX);
    ASSERT_EQ(SetInt("High", -2), 0);
    EXPECT_EQ(mPort->GetLittle(0, 8), 0xFFFFFFFE000000F0ull);
    ASSERT_EQ(SetInt("Nibble", 7), 0);
    EXPECT_EQ(mPort->GetLittle(0, 8), 0xFFFFFFFE00000070ull);

    mPort->PutBig(0x10, 0x8000000000000000ull, 8);
    mPort->PutBig(0x20, 0x12AB, 2);
    EXPECT_EQ(GetInt("B8Top"), 1);
    EXPECT_EQ(GetInt("B2Low"), 0xAB);
    ASSERT_EQ(SetInt("B2Low", 0xCD), 0);
    EXPECT_EQ(mPort->GetBig(0x20, 2), 0x12CDu);
}

TEST_F(WideRegisters, FieldsOutsideTheRegisterAreRefused) {
    EXPECT_EQ(LoadWide(Register("MaskedIntReg", "M",
                                "<Address>0</Address><Length>2</Length><Bit>16</Bit>"),
                       "M"),
              101);
    test::KernelTest::TearDown();
    test::KernelTest::SetUp();
    // The strict reading numbers in a 32-bit frame whatever the length.
    EXPECT_EQ(Load(Register("StructReg", "S",
                            std::string("<Address>0</Address><Length>8</Length>") + kEndians[1] +
                                "<StructEntry Name=\"E\"><Bit>40</Bit></StructEntry>"),
                   "E"),
              101);
}

TEST_F(WideRegisters, ALengthNodeIsReadBeforeEachTransferAndBounded) {
    ASSERT_EQ(
        LoadWide(
            "<Integer Name=\"Len\"><Value>3</Value></Integer>" +
                Register("StringReg", "Text", "<Address>0x100</Address><pLength>Len</pLength>") +
                Register("IntReg", "Number", "<Address>0x200</Address><pLength>Len</pLength>") +
                Register("Register", "Raw", "<Address>0x300</Address><pLength>Len</pLength>"),
            "Len Text Number Raw"),
        0);
    mPort->PutText(0x100, "abcdef");
    mPort->PutBig(0x200, 0x0102030405060708ull, 8);
    EXPECT_EQ(GetText("Text"), "abc");
    EXPECT_EQ(GetInt("Number"), 0x010203);
    ASSERT_EQ(SetInt("Len", 5), 0);
    EXPECT_EQ(GetText("Text"), "abcde"); // the length's change reached the register's cache
    EXPECT_EQ(GetInt("Number"), 0x0102030405);
    EXPECT_EQ(static_cast<cMemoryNode*>(Node("Raw"))->Length(mRuntime), 5u);

    ASSERT_EQ(SetInt("Len", 9), 0); // no integer of nine bytes
    llk::i4 status = 0;
    GetInt("Number", &status);
    EXPECT_EQ(status, 104);
    ASSERT_EQ(SetInt("Len", 65537), 0);
    GetText("Text", &status);
    EXPECT_EQ(status, 104);
    llk::u1 buffer[4];
    llk::u4 done = 0;
    EXPECT_EQ(static_cast<cMemoryNode*>(Node("Raw"))->Fetch(mRuntime, 4, buffer, done), 104);
    ASSERT_EQ(SetInt("Len", -1), 0);
    GetText("Text", &status);
    EXPECT_EQ(status, 104);
    EXPECT_EQ(static_cast<pRegisterNode*>(Node("Text"))->Length(mRuntime), 0u);
    ASSERT_EQ(SetInt("Len", 65536), 0); // 64 KiB is still a length
    EXPECT_EQ(GetText("Text"), "abcdef");
}

TEST_F(WideRegisters, AddressTermsAreSummedWithWrapping) {
    ASSERT_EQ(
        LoadWide("<Integer Name=\"Base\"><Value>0x10</Value></Integer>"
                 "<Integer Name=\"Row\"><Value>2</Value></Integer>"
                 "<Integer Name=\"Column\"><Value>3</Value></Integer>"
                 "<Integer Name=\"Plane\"><Value>1</Value></Integer>"
                 "<Integer Name=\"Pitch\"><Value>0x40</Value></Integer>" +
                     Register("IntReg", "Back",
                              "<pAddress>Base</pAddress><Address>-4</Address><Length>4</Length>") +
                     Register("IntReg", "Tail", "<Address>-0x8</Address><Length>4</Length>") +
                     // 0x1000 + 2 x 0x40 (pOffset) + 3 x 4 (Offset) + 1 x 8 (the length)
                     Register("IntReg", "Cell",
                              "<Address>0x1000</Address><pIndex pOffset=\"Pitch\">Row</pIndex>"
                              "<pIndex Offset=\"4\">Column</pIndex><pIndex>Plane</pIndex>"
                              "<Length>8</Length>") +
                     // 0x200 + 3 x 2, the literal index times the length.
                     Register("IntReg", "Fixed",
                              "<Address>0x200</Address><Index>3</Index><Length>2</Length>"),
                 "Back Tail Cell Fixed"),
        0);
    u8 address = 0;
    ASSERT_EQ(static_cast<pRegisterNode*>(Node("Back"))->ComputeAddress(mRuntime, address), 0);
    EXPECT_EQ(address, 0xCu);
    ASSERT_EQ(static_cast<pRegisterNode*>(Node("Tail"))->ComputeAddress(mRuntime, address), 0);
    EXPECT_EQ(address, 0xFFFFFFFFFFFFFFF8ull);
    ASSERT_EQ(static_cast<pRegisterNode*>(Node("Cell"))->ComputeAddress(mRuntime, address), 0);
    EXPECT_EQ(address, 0x1000u + 0x80 + 12 + 8);
    ASSERT_EQ(static_cast<pRegisterNode*>(Node("Fixed"))->ComputeAddress(mRuntime, address), 0);
    EXPECT_EQ(address, 0x206u);
    mPort->PutBig(0x1000 + 0x80 + 12 + 8, 77, 8);
    EXPECT_EQ(GetInt("Cell"), 77);
    ASSERT_EQ(SetInt("Plane", 0), 0); // the index's change reaches the register
    mPort->PutBig(0x1000 + 0x80 + 12, 55, 8);
    EXPECT_EQ(GetInt("Cell"), 55);
}

TEST_F(WideRegisters, AddressTextsTheWideReadingStillRefuses) {
    for (const char* text : {"0x", "12abc", "- 4", "0x10000000000000000", "18446744073709551616"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(LoadWide(IntReg("R", text, 4), "R"), 101);
        test::KernelTest::TearDown();
        test::KernelTest::SetUp();
    }
    // The strict reading takes decimal digits and "0x" only.
    EXPECT_EQ(Load(IntReg("R", "-4", 4), "R"), 101);
}

TEST_F(WideRegisters, RegistersWithoutAPortAnswerAsAnUnattachedPort) {
    const std::string portless = "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length>"
                                 "</IntReg><Register Name=\"Raw\"><Address>0</Address>"
                                 "<Length>4</Length></Register>";
    EXPECT_EQ(Load(portless, "R Raw"), 101); // the strict reading wants a port on an IntReg
    test::KernelTest::TearDown();
    test::KernelTest::SetUp();
    ASSERT_EQ(LoadWide(portless, "R Raw"), 0);
    llk::i4 status = 0;
    GetInt("R", &status);
    EXPECT_EQ(status, 5);
    EXPECT_FALSE(Node("R")->IsWriteable(mRuntime));
}

TEST_F(WideRegisters, ARegisterBlockNeedsNoPortInEitherReading) {
    ASSERT_EQ(
        Load("<Register Name=\"Raw\"><Address>0</Address><Length>4</Length></Register>", "Raw"), 0);
    auto* raw = static_cast<cMemoryNode*>(Node("Raw"));
    llk::u1 buffer[4];
    llk::u4 done = 0;
    EXPECT_EQ(raw->Fetch(mRuntime, 4, buffer, done), 5);
    EXPECT_EQ(raw->Length(mRuntime), 4u);
    EXPECT_FALSE(raw->IsWriteable(mRuntime));
}

TEST_F(WideRegisters, AccessModeTextsItDoesNotKnowNarrowNothing) {
    const std::string nodes = "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length>"
                              "<AccessMode>R</AccessMode><pPort>Device</pPort></IntReg>"
                              "<Integer Name=\"I\"><ImposedAccessMode>NA</ImposedAccessMode>"
                              "<Value>1</Value></Integer>";
    EXPECT_EQ(Load(nodes, "R I"), 101);
    test::KernelTest::TearDown();
    test::KernelTest::SetUp();
    ASSERT_EQ(LoadWide(nodes, "R I"), 0);
    EXPECT_TRUE(Node("R")->IsReadable(mRuntime));
    EXPECT_TRUE(Node("R")->IsWriteable(mRuntime));
    EXPECT_TRUE(Node("I")->IsWriteable(mRuntime));
}
