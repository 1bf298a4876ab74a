// The typed value nodes over their targets: ranges, increments, tolerance,
// booleans, enumerations, commands and strings.
#include <gtest/gtest.h>

#include <cfloat>

#include "Fixture.h"
#include "gik/CommandNode.h"
#include "gik/EnumNode.h"

using namespace gik;

namespace {

class ValueNodes : public test::KernelTest {};

std::string Reg(const char* aName, const char* aAddress, const char* aExtra = "") {
    return std::string("<IntReg Name=\"") + aName + "\"><Address>" + aAddress +
           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + aExtra +
           "</IntReg>";
}

} // namespace

TEST_F(ValueNodes, IntegerRangeAndIncrement) {
    ASSERT_EQ(Load("<Integer "
                   "Name=\"A\"><pValue>R</pValue><Min>1</Min><Max>100</Max><Inc>2</Inc></Integer>" +
                       Reg("R", "0"),
                   "A"),
              0);
    EXPECT_EQ(SetInt("A", 7), 0);
    EXPECT_EQ(GetInt("A"), 7);
    EXPECT_EQ(SetInt("A", 8), 15);
    EXPECT_EQ(GetInt("A"), 7); // no state change on failure
    EXPECT_EQ(SetInt("A", 0), 15);
    EXPECT_EQ(SetInt("A", 101), 15);
    cValue minimum, maximum, increment;
    ASSERT_EQ(Node("A")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), 1);
    EXPECT_EQ(maximum.Sint(), 100);
    ASSERT_EQ(Node("A")->GetIncrement(mRuntime, increment, nullptr), 0);
    EXPECT_EQ(increment.Sint(), 2);
}

TEST_F(ValueNodes, IntegerTruncatesARealBeforeTheCheck) {
    ASSERT_EQ(Load("<Integer Name=\"A\"><pValue>R</pValue><Min>0</Min><Max>3</Max></Integer>" +
                       Reg("R", "0"),
                   "A"),
              0);
    EXPECT_EQ(SetReal("A", 3.9), 0);
    EXPECT_EQ(GetInt("A"), 3);
    EXPECT_EQ(mPort->GetBig(0, 4), 3u);
}

TEST_F(ValueNodes, IntegerRangeComesFromTheTargetWhenLeftOpen) {
    ASSERT_EQ(Load("<Integer Name=\"A\"><pValue>R</pValue></Integer>"
                   "<Integer Name=\"B\"><pValue>R</pValue><Max>10</Max></Integer>" +
                       Reg("R", "0", "<Sign>Signed</Sign>"),
                   "A B"),
              0);
    cValue minimum, maximum;
    ASSERT_EQ(Node("A")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), -2147483648ll);
    EXPECT_EQ(maximum.Sint(), 2147483647ll);
    ASSERT_EQ(Node("B")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), -2147483648ll);
    EXPECT_EQ(maximum.Sint(), 10);
}

TEST_F(ValueNodes, IntegerWithoutValueIsAWriteableConstant) {
    ASSERT_EQ(
        Load("<Integer Name=\"A\"/><Integer Name=\"B\"><Value>-5</Value><pMax>A</pMax></Integer>",
             "A B"),
        0);
    EXPECT_EQ(GetInt("A"), 0);
    EXPECT_EQ(SetInt("A", 42), 0);
    EXPECT_EQ(GetInt("A"), 42);
    cValue minimum, maximum;
    ASSERT_EQ(Node("B")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), INT64_MIN);
    EXPECT_EQ(maximum.Sint(), 42);
    // B's maximum follows A: A's change pokes B.
    EXPECT_EQ(SetInt("A", 1), 0);
    EXPECT_EQ(Poked(), "B");
}

TEST_F(ValueNodes, ZeroIncrementConstrainsNothing) {
    ASSERT_EQ(Load("<Integer Name=\"A\"><Inc>0</Inc></Integer>", "A"), 0);
    EXPECT_EQ(SetInt("A", 5), 0);
}

TEST_F(ValueNodes, FloatToleranceAndNoIncrement) {
    ASSERT_EQ(Load("<Float Name=\"F\"><Min>0.5</Min><Max>1.5</Max><Inc>0.25</Inc></Float>"
                   "<Float Name=\"G\"><Min>-1</Min><Max>1e-300</Max></Float>",
                   "F G"),
              0);
    EXPECT_EQ(SetReal("F", 0.6), 0); // not a multiple of Inc: no test
    EXPECT_DOUBLE_EQ(GetReal("F"), 0.6);
    EXPECT_EQ(SetReal("F", 1.5 + 1e-17), 0);
    EXPECT_EQ(GetReal("F"), 1.5);
    EXPECT_EQ(SetReal("F", 1.6), 15);
    EXPECT_EQ(SetReal("F", 0.4), 15);
    EXPECT_EQ(SetReal("F", std::nan("")), 15);
    // Just above a tiny maximum, within the tolerance: the maximum itself.
    EXPECT_EQ(SetReal("G", 1e-300 + 1e-17), 0);
    EXPECT_EQ(GetReal("G"), 1e-300);
}

TEST_F(ValueNodes, FloatDefaultsAreTheDoubleLimits) {
    ASSERT_EQ(Load("<Float Name=\"F\"/>", "F"), 0);
    cValue minimum, maximum;
    ASSERT_EQ(Node("F")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Real(), -DBL_MAX);
    EXPECT_EQ(maximum.Real(), DBL_MAX);
}

TEST_F(ValueNodes, BooleanReadsTrueOnlyForOnValue) {
    ASSERT_EQ(
        Load("<Boolean "
             "Name=\"B\"><pValue>R</pValue><OnValue>1</OnValue><OffValue>0</OffValue></Boolean>"
             "<Boolean "
             "Name=\"C\"><pValue>R</pValue><OnValue>5</OnValue><OffValue>9</OffValue></Boolean>" +
                 Reg("R", "0"),
             "B C"),
        0);
    mPort->PutBig(0, 7, 4);
    cValue v;
    ASSERT_EQ(Get("B", v), 0);
    EXPECT_EQ(v.Flavour(), kFlavourBool);
    EXPECT_FALSE(v.Bool());
    cValue yes;
    yes.SetBool(true);
    ASSERT_EQ(Set("C", yes), 0);
    EXPECT_EQ(mPort->GetBig(0, 4), 5u);
    EXPECT_TRUE(GetInt("C"));
    ASSERT_EQ(SetInt("C", 0), 0);
    EXPECT_EQ(mPort->GetBig(0, 4), 9u);
    EXPECT_FALSE(GetInt("C"));
    // B shares the register: C's write pokes it.
    EXPECT_EQ(Poked(), "B");
}

TEST_F(ValueNodes, BooleanDefaults) {
    ASSERT_EQ(Load("<Boolean Name=\"B\"/>", "B"), 0);
    EXPECT_FALSE(GetInt("B"));
    EXPECT_EQ(SetInt("B", 1), 0);
    EXPECT_TRUE(GetInt("B"));
}

TEST_F(ValueNodes, EnumerationByNameAndNumber) {
    ASSERT_EQ(
        Load("<Enumeration Name=\"E\"><pValue>R</pValue>"
             "<EnumEntry Name=\"Off\"><Value>0</Value><DisplayName>Switched "
             "off</DisplayName></EnumEntry>"
             "<EnumEntry Name=\"On\" NameSpace=\"Standard\"><Value>1</Value><ToolTip>tip</ToolTip>"
             "<Description>d</Description><Visibility>Expert</Visibility></EnumEntry>"
             "<EnumEntry Name=\"Five\"><Value>5</Value></EnumEntry>"
             "<EnumEntry Name=\"AlsoFive\"><Value>5</Value></EnumEntry>"
             "<EnumEntry "
             "Name=\"Gone\"><Value>6</Value><pIsImplemented>No</pIsImplemented></EnumEntry>"
             "<EnumEntry Name=\"Busy\"><Value>7</Value><pIsAvailable>No</pIsAvailable></EnumEntry>"
             "</Enumeration><Integer Name=\"No\"><Value>0</Value></Integer>" +
                 Reg("R", "0"),
             "E"),
        0);
    EXPECT_EQ(GetText("E"), "Off");
    EXPECT_EQ(SetText("E", "On"), 0);
    EXPECT_EQ(mPort->GetBig(0, 4), 1u);
    EXPECT_EQ(GetText("E"), "On");
    EXPECT_EQ(SetInt("E", 5), 0);
    // Two entries of value 5: the first one's name.
    EXPECT_EQ(GetText("E"), "Five");
    EXPECT_EQ(SetText("E", "Nope"), 15);
    EXPECT_EQ(SetText("E", "Gone"), 15);
    EXPECT_EQ(SetText("E", "Busy"), 15); // unavailable
    mPort->PutBig(0, 42, 4);
    Node("R")->Invalidate(mRuntime); // the device changed it
    llk::i4 status = 0;
    GetText("E", &status);
    EXPECT_EQ(status, 108);

    auto* e = static_cast<cEnumNode*>(Node("E"));
    llk::cObjectList* range = nullptr;
    ASSERT_EQ(e->GetRange(mRuntime, range, nullptr), 0);
    std::string names;
    for (llk::u4 i = 0; i < range->Count(); ++i)
        names += std::string(static_cast<cValue*>(range->AtIndex(i))->String()->Chars()) + " ";
    EXPECT_EQ(names, "Off On Five AlsoFive Busy "); // unavailable is still listed

    cValue busy;
    busy.SetText("Busy");
    bool available = true;
    ASSERT_EQ(e->IsValueAvailable(mRuntime, busy, available), 0);
    EXPECT_FALSE(available);
    cValue on;
    on.SetText("On");
    llk::i8 number = 0;
    ASSERT_EQ(e->GetValueAsInteger(mRuntime, on, number), 0);
    EXPECT_EQ(number, 1);
    cValue one;
    one.SetSigned(1);
    llk::cString* text = nullptr;
    ASSERT_EQ(e->GetValueAsString(mRuntime, one, text), 0);
    EXPECT_STREQ(text->Chars(), "On");
    llk::cString *name = nullptr, *description = nullptr, *display = nullptr;
    ASSERT_EQ(e->GetValueNames(mRuntime, on, name, description, display), 0);
    EXPECT_STREQ(description->Chars(), "d");
    EXPECT_STREQ(display->Chars(), "On"); // no display name reads as the name
    cValue off;
    off.SetText("Off");
    ASSERT_EQ(e->GetValueNames(mRuntime, off, name, description, display), 0);
    EXPECT_STREQ(display->Chars(), "Switched off");
    EXPECT_EQ(description, nullptr);
    pNode::tVisibility visibility;
    llk::cString *tip = nullptr, *space = nullptr;
    ASSERT_EQ(e->GetValueInfo(mRuntime, on, visibility, tip, space), 0);
    EXPECT_EQ(visibility, pNode::kVisibilityExpert);
    EXPECT_STREQ(tip->Chars(), "tip");
    EXPECT_STREQ(space->Chars(), "Standard");
    cValue nope;
    nope.SetText("Nope");
    EXPECT_EQ(e->IsValueAvailable(mRuntime, nope, available), 15);
}

TEST_F(ValueNodes, EnumerationWithoutEntriesIsNeverImplemented) {
    ASSERT_EQ(Load("<Enumeration Name=\"E\"><Value>0</Value></Enumeration>"
                   "<Enumeration Name=\"F\"><Value>0</Value><EnumEntry "
                   "Name=\"X\"><Value>0</Value></EnumEntry>"
                   "</Enumeration>",
                   "E F"),
              0);
    EXPECT_EQ(Features(), "F");
}

TEST_F(ValueNodes, EnumerationUnreadableEntryValueIs104) {
    EXPECT_EQ(Load("<Enumeration Name=\"E\"><EnumEntry "
                   "Name=\"X\"><Value>zz</Value></EnumEntry></Enumeration>",
                   "E"),
              101);
}

TEST_F(ValueNodes, CommandExecutesAndCompletes) {
    ASSERT_EQ(
        Load("<Command Name=\"C\"><pValue>R</pValue><CommandValue>1</CommandValue></Command>" +
                 Reg("R", "0x20"),
             "C"),
        0);
    auto* c = static_cast<cCommandNode*>(Node("C"));
    ASSERT_EQ(c->Execute(mRuntime), 0);
    EXPECT_EQ(mPort->GetBig(0x20, 4), 1u);
    bool done = true;
    ASSERT_EQ(c->Completed(mRuntime, done), 0);
    EXPECT_FALSE(done); // the cache holds what was written
    // The device clears the register; once the cache is gone it reads done.
    mPort->PutBig(0x20, 0, 4);
    Node("R")->Invalidate(mRuntime);
    ASSERT_EQ(c->Completed(mRuntime, done), 0);
    EXPECT_TRUE(done);
}

TEST_F(ValueNodes, CommandWithNothingToCompareIs7) {
    ASSERT_EQ(Load("<Command Name=\"C\"><pValue>K</pValue><CommandValue>1</CommandValue></Command>"
                   "<IntSwissKnife Name=\"K\"><Formula>1/0</Formula></IntSwissKnife>",
                   "C"),
              0);
    bool done = false;
    EXPECT_NE(static_cast<cCommandNode*>(Node("C"))->Completed(mRuntime, done), 0);
}

TEST_F(ValueNodes, StringNodeOverAConstantAndARegister) {
    ASSERT_EQ(
        Load("<String Name=\"S\"><Value>hello</Value></String>"
             "<String Name=\"T\"><pValue>SR</pValue></String>"
             "<StringReg "
             "Name=\"SR\"><Address>0x40</Address><Length>8</Length><AccessMode>RW</AccessMode>"
             "<pPort>Device</pPort></StringReg>",
             "S T"),
        0);
    EXPECT_EQ(GetText("S"), "hello");
    EXPECT_EQ(SetText("S", "world"), 0);
    EXPECT_EQ(GetText("S"), "world");
    EXPECT_EQ(SetText("T", "abc"), 0);
    EXPECT_EQ(GetText("T"), "abc");
    EXPECT_EQ(SetText("T", "12345678"), 9);
}
