// What every node shares: names and texts, access modes, visibility,
// caching choices, availability, locks, selectors and invalidators.
#include <gtest/gtest.h>

#include "Fixture.h"

using namespace gik;

namespace {

class Nodes : public test::KernelTest {};

std::string Reg(const char* aName, const char* aAddress, const char* aExtra = "") {
    return std::string("<IntReg Name=\"") + aName + "\"><Address>" + aAddress +
           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + aExtra +
           "</IntReg>";
}

} // namespace

TEST_F(Nodes, TextsAndNamespace) {
    ASSERT_EQ(Load("<Integer Name=\"A\" NameSpace=\"Standard\"><ToolTip>tip</ToolTip>"
                   "<Description>desc</Description><DisplayName>Shown</DisplayName><Unit>ms</Unit>"
                   "<Representation>Linear</Representation><PollingTime>0x10</PollingTime>"
                   "<Value>1</Value></Integer><Integer Name=\"B\"><Value>1</Value></Integer>",
                   "A B"),
              0);
    pNode* a = Node("A");
    EXPECT_STREQ(a->Name(false)->Chars(), "A");
    EXPECT_STREQ(a->Name(true)->Chars(), "Shown");
    EXPECT_STREQ(a->Help(true)->Chars(), "tip");
    EXPECT_STREQ(a->Help(false)->Chars(), "desc");
    EXPECT_STREQ(a->Unit()->Chars(), "ms");
    EXPECT_STREQ(a->Representation()->Chars(), "Linear");
    EXPECT_STREQ(a->NameSpace()->Chars(), "Standard");
    EXPECT_EQ(a->PollingTime(), 16u);
    pNode* b = Node("B");
    EXPECT_EQ(b->Name(true), nullptr);
    EXPECT_EQ(b->Help(true), nullptr);
    EXPECT_STREQ(b->NameSpace()->Chars(), "Custom");
    EXPECT_EQ(b->Visibility(), pNode::kVisibilityBeginner);
}

TEST_F(Nodes, VisibilityTexts) {
    ASSERT_EQ(Load("<Integer Name=\"A\"><Visibility>Expert</Visibility></Integer>"
                   "<Integer Name=\"B\"><Visibility>Guru</Visibility></Integer>"
                   "<Integer Name=\"C\"><Visibility>Invisible</Visibility></Integer>"
                   "<Integer Name=\"D\"><Visibility>beginner</Visibility></Integer>",
                   "A B C D"),
              0);
    EXPECT_EQ(Node("A")->Visibility(), pNode::kVisibilityExpert);
    EXPECT_EQ(Node("B")->Visibility(), pNode::kVisibilityGuru);
    EXPECT_EQ(Node("C")->Visibility(), pNode::kVisibilityInvisible);
    // Lower case is no known visibility, yet the node is a feature like any.
    EXPECT_EQ(Node("D")->Visibility(), pNode::kVisibilityUnknown);
    EXPECT_EQ(Features(), "A B C D");
}

TEST_F(Nodes, AccessModesNarrowEachOther) {
    ASSERT_EQ(Load("<Integer "
                   "Name=\"A\"><AccessMode>RO</AccessMode><ImposedAccessMode>WO</ImposedAccessMode>"
                   "</Integer>"
                   "<Integer Name=\"B\"><AccessMode>RO</AccessMode></Integer>"
                   "<Integer Name=\"C\"><ImposedAccessMode>WO</ImposedAccessMode></Integer>"
                   "<Integer Name=\"D\"/>",
                   "A B C D"),
              0);
    EXPECT_FALSE(Node("A")->CanRead());
    EXPECT_FALSE(Node("A")->CanWrite());
    EXPECT_TRUE(Node("B")->CanRead());
    EXPECT_FALSE(Node("B")->CanWrite());
    EXPECT_FALSE(Node("C")->CanRead());
    EXPECT_TRUE(Node("C")->CanWrite());
    EXPECT_TRUE(Node("D")->CanRead());
    EXPECT_TRUE(Node("D")->CanWrite());
    llk::i4 status = 0;
    GetInt("A", &status);
    EXPECT_EQ(status, 106);
    EXPECT_EQ(SetInt("B", 1), 106);
}

TEST_F(Nodes, BadAccessModeTextIs101) {
    EXPECT_EQ(Load("<Integer Name=\"A\"><AccessMode>RX</AccessMode></Integer>", "A"), 101);
    EXPECT_EQ(Load("<Integer Name=\"B\"><ImposedAccessMode>ro</ImposedAccessMode></Integer>", "B"),
              101);
}

TEST_F(Nodes, AValueNodeIsNeverMoreOpenThanItsRegister) {
    ASSERT_EQ(
        Load("<Integer Name=\"A\"><pValue>R</pValue></Integer>"
             "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode>"
             "<pPort>Device</pPort></IntReg>",
             "A"),
        0);
    EXPECT_TRUE(Node("A")->CanRead());
    EXPECT_FALSE(Node("A")->CanWrite());
    EXPECT_EQ(SetInt("A", 1), 106);
}

TEST_F(Nodes, AvailabilityAndLockFollowTheirNodes) {
    ASSERT_EQ(
        Load("<Integer Name=\"A\"><pIsAvailable>Avail</pIsAvailable><pIsLocked>Lock</pIsLocked>"
             "<pValue>R</pValue></Integer>" +
                 Reg("R", "0") + "<Integer Name=\"Avail\"><pValue>AR</pValue></Integer>" +
                 Reg("AR", "4") + "<Integer Name=\"Lock\"><pValue>LR</pValue></Integer>" +
                 Reg("LR", "8"),
             "A Avail Lock"),
        0);
    pNode* a = Node("A");
    EXPECT_FALSE(a->IsAvailable(mRuntime));
    EXPECT_FALSE(a->IsReadable(mRuntime));
    EXPECT_EQ(SetInt("Avail", 1), 0);
    EXPECT_TRUE(a->IsAvailable(mRuntime));
    EXPECT_TRUE(a->IsWriteable(mRuntime));
    EXPECT_EQ(SetInt("Lock", 1), 0);
    // The lock and availability nodes are linked: their change pokes A.
    EXPECT_EQ(Poked(), "A");
    EXPECT_FALSE(a->IsWriteable(mRuntime));
    EXPECT_EQ(SetInt("A", 3), 106);
}

TEST_F(Nodes, UnresolvedAvailabilityIs102) {
    EXPECT_EQ(Load("<Integer Name=\"A\"><pIsAvailable>Missing</pIsAvailable></Integer>", "A"), 102);
}

TEST_F(Nodes, CachableAndStreamable) {
    ASSERT_EQ(
        Load(Reg("A", "0", "<Cachable>NoCache</Cachable><Streamable>Yes</Streamable>") +
                 Reg("B", "4", "<Cachable>WriteAround</Cachable><Streamable>No</Streamable>") +
                 Reg("C", "8", "<Cachable>WriteThrough</Cachable>"),
             "A B C"),
        0);
    EXPECT_TRUE(Node("A")->IsNoCache(mRuntime));
    EXPECT_TRUE(Node("A")->IsStreamable(mRuntime));
    EXPECT_TRUE(Node("B")->IsWriteAround(mRuntime));
    EXPECT_FALSE(Node("B")->IsStreamable(mRuntime));
    EXPECT_FALSE(Node("C")->IsNoCache(mRuntime));
    EXPECT_FALSE(Node("C")->IsWriteAround(mRuntime));
}

TEST_F(Nodes, InvalidatorNamingNothingStillCounts) {
    ASSERT_EQ(
        Load("<Integer Name=\"A\"><pInvalidator>Missing</pInvalidator><Value>1</Value></Integer>"
             "<Integer Name=\"B\"><Value>1</Value></Integer>",
             "A B"),
        0);
    EXPECT_TRUE(Node("A")->HasInvalidators(mRuntime));
    EXPECT_FALSE(Node("B")->HasInvalidators(mRuntime));
}

TEST_F(Nodes, InvalidatorsAndSelectorsAreDependents) {
    ASSERT_EQ(Load("<Integer Name=\"Sel\"><pSelected>A</pSelected><pSelected>Missing</pSelected>"
                   "<pValue>SR</pValue></Integer>" +
                       Reg("SR", "0") +
                       "<Integer "
                       "Name=\"A\"><pInvalidator>Sel</pInvalidator><pValue>AR</pValue></Integer>" +
                       Reg("AR", "4"),
                   "Sel A"),
              0);
    llk::cObjectList* selected = llk::cObjectList::New(8, false);
    ASSERT_EQ(Node("Sel")->Selected(mRuntime, selected), 0);
    ASSERT_EQ(selected->Count(), 1u);
    EXPECT_EQ(selected->AtIndex(0), Node("A"));
    llk::cObjectList* affected = llk::cObjectList::New(8, false);
    ASSERT_EQ(Node("Sel")->Affected(mRuntime, affected), 0);
    EXPECT_TRUE(affected->Contains(Node("A")));
    EXPECT_EQ(SetInt("Sel", 2), 0);
    EXPECT_EQ(Poked(), "A");
}

TEST_F(Nodes, HiddenNodesAreWalkedThroughNotListed) {
    std::string nodes = "<Integer Name=\"A\"><pValue>AR</pValue></Integer>" + Reg("AR", "0") +
                        "<Integer Name=\"B\"><pValue>A</pValue></Integer>"
                        "<Integer Name=\"C\"><pValue>B</pValue></Integer>"
                        "<Category Name=\"Secret\"><pFeature>B</pFeature></Category>";
    ASSERT_EQ(mRuntime->Process(test::Document(nodes, "A Secret C").c_str(), false, nullptr, false),
              0);
    mRuntime->HideAllNodes("/Secret");
    ASSERT_EQ(mRuntime->Finalize(), 0);
    llk::cObjectList* affected = llk::cObjectList::New(8, false);
    ASSERT_EQ(Node("A")->Affected(mRuntime, affected), 0);
    ASSERT_EQ(affected->Count(), 1u);
    EXPECT_EQ(affected->AtIndex(0), Node("C"));
}

TEST_F(Nodes, LootIsRetained) {
    ASSERT_EQ(Load("<Integer Name=\"A\"/>", "A"), 0);
    llk::cString* loot = llk::cString::New("loot", false);
    llk::u4 before = loot->RetainCount();
    Node("A")->SetLoot(loot);
    EXPECT_EQ(Node("A")->GetLoot(), loot);
    EXPECT_EQ(loot->RetainCount(), before + 1);
    Node("A")->SetLoot(nullptr);
    EXPECT_EQ(loot->RetainCount(), before);
}

TEST_F(Nodes, AbsentAccessEvaluationsReadFalse) {
    // An availability over a knife that has no value reads as false.
    ASSERT_EQ(Load("<Integer Name=\"A\"><pIsAvailable>K</pIsAvailable><Value>1</Value></Integer>"
                   "<IntSwissKnife Name=\"K\"><Formula>1/0</Formula></IntSwissKnife>",
                   "A"),
              0);
    EXPECT_FALSE(Node("A")->IsAvailable(mRuntime));
}
