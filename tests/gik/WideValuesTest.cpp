// The wide reading's rules for values, each against the strict reading where
// the two differ: indexed values, formula constants and expressions,
// enumerations as numbers, powers, strings that fill their register; and the
// two defects fixed under both readings.
#include <gtest/gtest.h>

#include <cfloat>

#include "Fixture.h"

using namespace gik;

namespace {

class WideValues : public test::KernelTest {};

std::string IntReg(const char* aName, const char* aAddress) {
    return std::string("<IntReg Name=\"") + aName + "\"><Address>" + aAddress +
           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
           "<Endianess>LittleEndian</Endianess></IntReg>";
}

const std::string kSelector = "<Integer Name=\"Sel\"><Value>20</Value></Integer>";

// A value table with a default, and a multiplexer over two registers
// without one.
const std::string kIndexed =
    kSelector +
    "<Integer Name=\"Table\"><pIndex>Sel</pIndex><ValueIndexed Index=\"10\">100</ValueIndexed>"
    "<ValueIndexed Index=\"0x14\">200</ValueIndexed><ValueDefault>600</ValueDefault></Integer>"
    "<Integer Name=\"Mux\"><pIndex>Sel</pIndex><pValueIndexed Index=\"10\">A</pValueIndexed>"
    "<pValueIndexed Index=\"20\">B</pValueIndexed></Integer>"
    "<Float Name=\"Ratio\"><pIndex>Sel</pIndex><ValueIndexed Index=\"20\">2.5</ValueIndexed>"
    "<pValueDefault>Scale</pValueDefault></Float>"
    "<Float Name=\"Scale\"><Value>0.5</Value><Min>0</Min><Max>1</Max></Float>" +
    IntReg("A", "0x10") + IntReg("B", "0x20");

} // namespace

TEST_F(WideValues, AnIndexPicksTheValueAndItsDefault) {
    ASSERT_EQ(LoadWide(kIndexed, "Sel Table Mux Ratio"), 0);
    mPort->PutLittle(0x10, 11, 4);
    mPort->PutLittle(0x20, 22, 4);
    EXPECT_EQ(GetInt("Table"), 200);
    EXPECT_EQ(GetInt("Mux"), 22);
    EXPECT_DOUBLE_EQ(GetReal("Ratio"), 2.5);
    // A literal entry takes a write, and keeps it.
    ASSERT_EQ(SetInt("Table", 150), 0);
    EXPECT_EQ(GetInt("Table"), 150);
    ASSERT_EQ(SetInt("Sel", -1), 0);
    EXPECT_EQ(GetInt("Table"), 600);
    EXPECT_DOUBLE_EQ(GetReal("Ratio"), 0.5);
    llk::i4 status = 0;
    GetInt("Mux", &status);
    EXPECT_EQ(status, 5); // no entry and no default
    ASSERT_EQ(SetInt("Sel", 10), 0);
    EXPECT_EQ(GetInt("Table"), 100);
    EXPECT_EQ(GetInt("Mux"), 11);
    ASSERT_EQ(SetInt("Sel", 20), 0);
    EXPECT_EQ(GetInt("Table"), 150);
}

TEST_F(WideValues, WritesRangesAndInvalidationsFollowTheChosenEntry) {
    ASSERT_EQ(LoadWide(kIndexed, "Sel Table Mux Ratio"), 0);
    // The multiplexer writes the register the index picks.
    ASSERT_EQ(SetInt("Mux", 33), 0);
    EXPECT_EQ(mPort->GetLittle(0x20, 4), 33u);
    EXPECT_EQ(mPort->GetLittle(0x10, 4), 0u);
    cValue minimum, maximum;
    ASSERT_EQ(Node("Mux")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(maximum.Uint(), 0xFFFFFFFFu); // the register's
    ASSERT_EQ(Node("Ratio")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(maximum.Real(), DBL_MAX); // a literal: the type's limits
    ASSERT_EQ(SetInt("Sel", 0), 0);
    ASSERT_EQ(Node("Ratio")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(maximum.Real(), 1.0); // the default's node
    EXPECT_EQ(SetReal("Ratio", 2.0), 15);
    ASSERT_EQ(SetReal("Ratio", 0.25), 0);
    EXPECT_DOUBLE_EQ(GetReal("Scale"), 0.25);

    // The index, and every entry that is a node, tell the value of changes.
    ASSERT_EQ(SetInt("Sel", 10), 0);
    EXPECT_EQ(Poked(), "Table Mux Ratio");
    ASSERT_EQ(SetInt("A", 5), 0);
    EXPECT_EQ(Poked(), "Mux");
}

TEST_F(WideValues, TheStrictReadingIgnoresTheIndex) {
    ASSERT_EQ(Load(kIndexed, "Sel Table Mux Ratio"), 0);
    EXPECT_EQ(GetInt("Table"), 0); // no Value: the constant 0
    EXPECT_DOUBLE_EQ(GetReal("Ratio"), 0.0);
}

TEST_F(WideValues, AnIndexedEntryWithoutAnIndexIsRefused) {
    EXPECT_EQ(LoadWide(kSelector + "<Integer Name=\"T\"><pIndex>Sel</pIndex>"
                                   "<ValueIndexed>1</ValueIndexed></Integer>",
                       "T"),
              101);
}

TEST_F(WideValues, ConstantsAndExpressionsOfFormulas) {
    const std::string nodes =
        "<Integer Name=\"X\"><Value>4</Value></Integer>"
        "<Integer Name=\"Raw\"><Value>7</Value></Integer>"
        // TEN + X = 14, then 10 x 14.
        "<IntSwissKnife Name=\"Sum\"><pVariable Name=\"X\">X</pVariable>"
        "<Constant Name=\"TEN\">10</Constant><Expression Name=\"XPLUS\">TEN + X</Expression>"
        "<Formula>TEN * XPLUS</Formula></IntSwissKnife>"
        // The constant X stands over the variable X.
        "<IntSwissKnife Name=\"Shadow\"><pVariable Name=\"X\">X</pVariable>"
        "<Constant Name=\"X\">100</Constant><Formula>X + 1</Formula></IntSwissKnife>"
        "<SwissKnife Name=\"Half\"><Constant Name=\"H\">0.5</Constant><Formula>H * 3</Formula>"
        "</SwissKnife>"
        // To the register: FROM x 10; from it: TO / 10, through expressions.
        "<IntConverter Name=\"Conv\"><pValue>Raw</pValue><Constant Name=\"K\">10</Constant>"
        "<Expression Name=\"UP\">FROM * K</Expression><Expression Name=\"DOWN\">TO / K</Expression>"
        "<FormulaTo>UP</FormulaTo><FormulaFrom>DOWN</FormulaFrom></IntConverter>";
    ASSERT_EQ(LoadWide(nodes, "Sum Shadow Half Conv"), 0);
    EXPECT_EQ(GetInt("Sum"), 140);
    EXPECT_EQ(GetInt("Shadow"), 101);
    EXPECT_DOUBLE_EQ(GetReal("Half"), 1.5);
    EXPECT_EQ(GetInt("Conv"), 0);
    ASSERT_EQ(SetInt("Conv", 100), 0);
    EXPECT_EQ(GetInt("Raw"), 1000);
    EXPECT_EQ(GetInt("Conv"), 100);
    ASSERT_EQ(SetInt("X", 6), 0);
    EXPECT_EQ(GetInt("Sum"), 160);

    // The strict reading knows neither: the names have no value.
    test::KernelTest::TearDown();
    test::KernelTest::SetUp();
    ASSERT_EQ(Load(nodes, "Sum Shadow Half Conv"), 0);
    llk::i4 status = 0;
    GetInt("Sum", &status);
    EXPECT_EQ(status, 7);
    EXPECT_EQ(GetInt("Shadow"), 5);
}

TEST_F(WideValues, AnUnreadableConstantIsRefused) {
    EXPECT_EQ(LoadWide("<IntSwissKnife Name=\"K\"><Constant Name=\"C\">ten</Constant>"
                       "<Formula>C</Formula></IntSwissKnife>",
                       "K"),
              101);
}

TEST_F(WideValues, EnumerationsCountAsTheirNumbersInFormulas) {
    const std::string nodes =
        "<Enumeration Name=\"Mode\"><EnumEntry Name=\"Low\"><Value>3</Value></EnumEntry>"
        "<EnumEntry Name=\"High\"><Value>5</Value></EnumEntry><pValue>ModeValue</pValue>"
        "</Enumeration><Integer Name=\"ModeValue\"><Value>5</Value></Integer>"
        "<Converter Name=\"Scaled\"><pValue>Mode</pValue><FormulaTo>FROM / 2</FormulaTo>"
        "<FormulaFrom>TO * 2</FormulaFrom></Converter>"
        "<IntSwissKnife Name=\"Plus\"><pVariable Name=\"M\">Mode</pVariable>"
        "<Formula>M + 1</Formula></IntSwissKnife>";
    ASSERT_EQ(LoadWide(nodes, "Mode Scaled Plus"), 0);
    EXPECT_DOUBLE_EQ(GetReal("Scaled"), 10.0);
    EXPECT_EQ(GetInt("Plus"), 6);
    cValue minimum, maximum;
    ASSERT_EQ(Node("Scaled")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_DOUBLE_EQ(minimum.Real(), 6.0);
    EXPECT_DOUBLE_EQ(maximum.Real(), 10.0);
    ASSERT_EQ(SetReal("Scaled", 6.0), 0); // written to the enumeration as the number 3
    EXPECT_EQ(GetText("Mode"), "Low");
    EXPECT_EQ(SetReal("Scaled", 8.0), 15); // 4 is no entry's number

    // The strict reading: an entry's name is a text; a float formula takes
    // it as 0.0, as the conversions say, an integer one has no value.
    test::KernelTest::TearDown();
    test::KernelTest::SetUp();
    ASSERT_EQ(Load(nodes, "Mode Scaled Plus"), 0);
    llk::i4 status = 0;
    EXPECT_DOUBLE_EQ(GetReal("Scaled", &status), 0.0);
    EXPECT_EQ(status, 0);
    GetInt("Plus", &status);
    EXPECT_EQ(status, 7);
}

TEST_F(WideValues, AFloatKnifeTakesATextVariableAsZero) {
    ASSERT_EQ(Load("<String Name=\"Label\"><Value>abc</Value></String>"
                   "<SwissKnife Name=\"K\"><pVariable Name=\"L\">Label</pVariable>"
                   "<Formula>L + 1.5</Formula></SwissKnife>",
                   "K"),
              0);
    llk::i4 status = 0;
    EXPECT_DOUBLE_EQ(GetReal("K", &status), 1.5);
    EXPECT_EQ(status, 0);
}

TEST_F(WideValues, PowersTakeAnyExponent) {
    const std::string nodes = "<Integer Name=\"N\"><Value>0</Value></Integer>"
                              "<IntSwissKnife Name=\"Bit\"><pVariable Name=\"N\">N</pVariable>"
                              "<Formula>2 ** N</Formula></IntSwissKnife>"
                              "<SwissKnife Name=\"Inverse\"><pVariable Name=\"N\">N</pVariable>"
                              "<Formula>2 ** (N - 1)</Formula></SwissKnife>"
                              "<SwissKnife Name=\"Pole\"><Formula>0 ** -1</Formula></SwissKnife>";
    ASSERT_EQ(LoadWide(nodes, "Bit Inverse Pole"), 0);
    EXPECT_EQ(GetInt("Bit"), 1);
    EXPECT_DOUBLE_EQ(GetReal("Inverse"), 0.5);
    llk::i4 status = 0;
    GetReal("Pole", &status);
    EXPECT_EQ(status, 7); // not finite: still no value
    test::KernelTest::TearDown();
    test::KernelTest::SetUp();
    ASSERT_EQ(Load(nodes, "Bit Inverse Pole"), 0);
    GetInt("Bit", &status);
    EXPECT_EQ(status, 7);
}

TEST_F(WideValues, AStringMayFillItsRegister) {
    const std::string nodes = "<StringReg Name=\"S\"><Address>0x10</Address><Length>4</Length>"
                              "<AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>";
    ASSERT_EQ(LoadWide(nodes, "S"), 0);
    mPort->PutText(0x14, "!");
    mPort->ResetCounts();
    ASSERT_EQ(SetText("S", "Toto"), 0);
    ASSERT_EQ(mPort->mLog.size(), 1u);
    EXPECT_EQ(mPort->mLog[0].length, 4u); // no terminator after it
    EXPECT_EQ(mPort->Byte(0x14), '!');
    Node("S")->Invalidate(mRuntime);
    EXPECT_EQ(GetText("S"), "Toto");
    ASSERT_EQ(SetText("S", "Ab"), 0);
    EXPECT_EQ(mPort->Byte(0x12), 0); // a shorter one keeps its terminator
    EXPECT_EQ(SetText("S", "Totos"), 9);
    test::KernelTest::TearDown();
    test::KernelTest::SetUp();
    ASSERT_EQ(Load(nodes, "S"), 0);
    EXPECT_EQ(SetText("S", "Toto"), 9);
}

TEST_F(WideValues, CopiesTakeEveryWriteAndNarrowTheRange) {
    const std::string nodes =
        "<Integer Name=\"Split\"><pValueCopy>First</pValueCopy><pValue>Main</pValue>"
        "<pValueCopy>Last</pValueCopy></Integer>"
        "<Integer Name=\"First\"><pValue>FirstReg</pValue><Max>100</Max></Integer>"
        "<Integer Name=\"Main\"><pValue>MainReg</pValue><Min>10</Min></Integer>"
        "<Integer Name=\"Last\"><Value>0</Value></Integer>" +
        IntReg("FirstReg", "0x10") + IntReg("MainReg", "0x20");
    ASSERT_EQ(LoadWide(nodes, "Split"), 0);
    cValue minimum, maximum;
    ASSERT_EQ(Node("Split")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), 10);
    EXPECT_EQ(maximum.Sint(), 100);
    mPort->ResetCounts();
    ASSERT_EQ(SetInt("Split", 42), 0);
    ASSERT_EQ(mPort->mLog.size(), 2u); // in document order: the first copy, then the value
    EXPECT_EQ(mPort->mLog[0].address, 0x10u);
    EXPECT_EQ(mPort->mLog[1].address, 0x20u);
    EXPECT_EQ(GetInt("Last"), 42);
    EXPECT_EQ(GetInt("Split"), 42);
    EXPECT_EQ(SetInt("Split", 101), 15);
    test::KernelTest::TearDown();
    test::KernelTest::SetUp();
    ASSERT_EQ(Load(nodes, "Split"), 0); // the strict reading writes the value alone
    ASSERT_EQ(SetInt("Split", 142), 0);
    EXPECT_EQ(GetInt("Last"), 0);
}
