// SwissKnife, IntSwissKnife, Converter and IntConverter nodes.
#include <gtest/gtest.h>

#include "Fixture.h"
#include "gik/ConverterNode.h"
#include "gik/SwissKnifeNode.h"

using namespace gik;

namespace {

class Knives : public test::KernelTest {};

std::string IntReg(const char* aName, const char* aAddress, const char* aExtra = "") {
    return std::string("<IntReg Name=\"") + aName + "\"><Address>" + aAddress +
           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + aExtra +
           "</IntReg>";
}

} // namespace

TEST_F(Knives, IntSwissKnifeOverRegisters) {
    ASSERT_EQ(
        Load("<IntSwissKnife Name=\"Payload\"><pVariable Name=\"W\">Width</pVariable>"
             "<pVariable Name=\"H\">Height</pVariable><Formula>W * H</Formula></IntSwissKnife>"
             "<Integer Name=\"Width\"><pValue>WR</pValue><Min>1</Min><Max>4096</Max></Integer>"
             "<Integer Name=\"Height\"><pValue>HR</pValue><Min>1</Min><Max>2048</Max></Integer>" +
                 IntReg("WR", "0") + IntReg("HR", "4"),
             "Payload Width Height"),
        0);
    mPort->PutBig(0, 640, 4);
    mPort->PutBig(4, 480, 4);
    EXPECT_EQ(GetInt("Payload"), 640 * 480);
    auto* knife = static_cast<cSwissKnifeNode*>(Node("Payload"));
    EXPECT_FALSE(knife->IsFloat());
    EXPECT_EQ(knife->ClassType(), 0x10000215u);
    // Cached until a variable changes.
    mPort->ResetCounts();
    EXPECT_EQ(GetInt("Payload"), 640 * 480);
    EXPECT_EQ(mPort->mFetches, 0);
    ASSERT_EQ(SetInt("Width", 800), 0);
    EXPECT_EQ(Poked(), "Payload");
    EXPECT_EQ(GetInt("Payload"), 800 * 480);
    // A knife is read-only.
    EXPECT_FALSE(knife->CanWrite());
    EXPECT_EQ(SetInt("Payload", 1), 8);
    cValue minimum, maximum;
    ASSERT_EQ(knife->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), 1);
    EXPECT_EQ(maximum.Sint(), 4096 * 2048);
}

TEST_F(Knives, RangeIsExchangedWhenReversed) {
    ASSERT_EQ(
        Load(
            "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">A</pVariable><Formula>10 - X</Formula>"
            "</IntSwissKnife><Integer Name=\"A\"><Min>0</Min><Max>4</Max></Integer>",
            "K A"),
        0);
    cValue minimum, maximum;
    ASSERT_EQ(Node("K")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), 6);
    EXPECT_EQ(maximum.Sint(), 10);
}

TEST_F(Knives, FloatKnifeWorksInReals) {
    ASSERT_EQ(
        Load("<SwissKnife Name=\"K\"><pVariable Name=\"A\">A</pVariable><Formula>A / 4</Formula>"
             "</SwissKnife><Integer Name=\"A\"><Value>10</Value></Integer>"
             "<IntSwissKnife Name=\"I\"><Formula>10 / 4.0</Formula></IntSwissKnife>",
             "K I"),
        0);
    cValue v;
    ASSERT_EQ(Get("K", v), 0);
    EXPECT_EQ(v.Flavour(), kFlavourReal);
    EXPECT_DOUBLE_EQ(v.Real(), 2.5); // the variable was made real first
    ASSERT_EQ(Get("I", v), 0);
    EXPECT_EQ(v.Flavour(), kFlavourSigned); // an integer knife stores a real's Sint
    EXPECT_EQ(v.Sint(), 2);
    EXPECT_TRUE(static_cast<cSwissKnifeNode*>(Node("K"))->IsFloat());
}

TEST_F(Knives, NothingIs7AndVariableFailuresPassThrough) {
    ASSERT_EQ(
        Load("<IntSwissKnife Name=\"Div\"><Formula>1 / 0</Formula></IntSwissKnife>"
             "<IntSwissKnife Name=\"Bad\"><pVariable Name=\"R\">R</pVariable><Formula>R</Formula>"
             "</IntSwissKnife>" +
                 IntReg("R", "0"),
             "Div Bad"),
        0);
    llk::i4 status = 0;
    GetInt("Div", &status);
    EXPECT_EQ(status, 7);
    mPort->mFailFetch = -1010;
    GetInt("Bad", &status);
    EXPECT_EQ(status, -1010);
}

TEST_F(Knives, NoCacheVariableMakesTheKnifeNoCache) {
    ASSERT_EQ(
        Load("<IntSwissKnife Name=\"K\"><pVariable Name=\"R\">R</pVariable><Formula>R + 1</Formula>"
             "</IntSwissKnife>" +
                 IntReg("R", "0", "<Cachable>NoCache</Cachable><PollingTime>250</PollingTime>") +
                 "<IntSwissKnife Name=\"P\"><pVariable "
                 "Name=\"R\">R</pVariable><PollingTime>40</PollingTime>"
                 "<Formula>R</Formula></IntSwissKnife>",
             "K P"),
        0);
    EXPECT_TRUE(Node("K")->IsNoCache(mRuntime));
    EXPECT_EQ(Node("K")->PollingTime(), 250u);
    EXPECT_EQ(Node("P")->PollingTime(), 40u);
    EXPECT_EQ(GetInt("K"), 1);
    mPort->PutBig(0, 5, 4);
    EXPECT_EQ(GetInt("K"), 6);
}

TEST_F(Knives, ConverterBothWays) {
    ASSERT_EQ(
        Load("<Converter Name=\"Exposure\"><pVariable Name=\"OFF\">Offset</pVariable>"
             "<FormulaTo>(FROM - OFF) * 10</FormulaTo><FormulaFrom>TO / 10 + OFF</FormulaFrom>"
             "<pValue>Raw</pValue></Converter>"
             "<Integer Name=\"Offset\"><Value>2</Value></Integer>"
             "<Integer Name=\"Raw\"><pValue>RR</pValue><Min>0</Min><Max>1000</Max></Integer>" +
                 IntReg("RR", "0x10"),
             "Exposure Offset"),
        0);
    auto* c = static_cast<cConverterNode*>(Node("Exposure"));
    EXPECT_TRUE(c->IsFloat());
    mPort->PutBig(0x10, 55, 4);
    EXPECT_DOUBLE_EQ(GetReal("Exposure"), 7.5);
    ASSERT_EQ(SetReal("Exposure", 12.0), 0);
    EXPECT_EQ(mPort->GetBig(0x10, 4), 100u);
    EXPECT_DOUBLE_EQ(GetReal("Exposure"), 12.0); // the input is the cached result
    cValue minimum, maximum;
    ASSERT_EQ(c->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_DOUBLE_EQ(minimum.Real(), 2.0);
    EXPECT_DOUBLE_EQ(maximum.Real(), 102.0);
    EXPECT_EQ(SetReal("Exposure", 103.0), 15);
    EXPECT_EQ(SetReal("Exposure", 102.0 + 1e-17), 0);
    // The converter's access follows its target.
    EXPECT_TRUE(c->CanWrite());
}

TEST_F(Knives, IntConverterAndReversedRange) {
    ASSERT_EQ(Load("<IntConverter Name=\"C\"><FormulaTo>100 - FROM</FormulaTo><FormulaFrom>100 - "
                   "TO</FormulaFrom>"
                   "<pValue>R</pValue></IntConverter>"
                   "<Integer Name=\"R\"><Value>30</Value><Min>10</Min><Max>40</Max></Integer>",
                   "C"),
              0);
    EXPECT_EQ(GetInt("C"), 70);
    cValue minimum, maximum;
    ASSERT_EQ(Node("C")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), 60);
    EXPECT_EQ(maximum.Sint(), 90);
    EXPECT_EQ(SetInt("C", 95), 15);
    ASSERT_EQ(SetInt("C", 65), 0);
    EXPECT_EQ(GetInt("R"), 35);
    ASSERT_EQ(SetReal("C", 61.9), 0); // converted to the integer type first
    EXPECT_EQ(GetInt("R"), 39);
}

TEST_F(Knives, ConverterFormulaWithoutValueIs7) {
    ASSERT_EQ(
        Load("<IntConverter Name=\"C\"><FormulaTo>FROM / 0</FormulaTo><FormulaFrom>TO</FormulaFrom>"
             "<pValue>R</pValue></IntConverter><Integer Name=\"R\"><Value>3</Value></Integer>",
             "C"),
        0);
    EXPECT_EQ(GetInt("C"), 3);
    EXPECT_EQ(SetInt("C", 3), 7);
}

TEST_F(Knives, BadFormulasRefuseTheNode) {
    EXPECT_EQ(Load("<SwissKnife Name=\"K\"><Formula>(1 + </Formula></SwissKnife>", "K"), 101);
    EXPECT_EQ(Load("<SwissKnife Name=\"K2\"/>", "K2"), 101);
    EXPECT_EQ(Load("<Converter "
                   "Name=\"C\"><FormulaTo>FROM</FormulaTo><FormulaFrom>)</FormulaFrom></Converter>",
                   "C"),
              101);
}

TEST_F(Knives, VariableElementsOfBothSpellings) {
    ASSERT_EQ(
        Load(
            "<IntSwissKnife Name=\"K\"><Variable Name=\"A\">One</Variable><pVariable Name=\"B\">Two"
            "</pVariable><Formula>A * 10 + B</Formula></IntSwissKnife>"
            "<Integer Name=\"One\"><Value>1</Value></Integer><Integer "
            "Name=\"Two\"><Value>2</Value></Integer>",
            "K"),
        0);
    EXPECT_EQ(GetInt("K"), 12);
    EXPECT_EQ(static_cast<cSwissKnifeNode*>(Node("K"))->VariableCount(), 2u);
}
