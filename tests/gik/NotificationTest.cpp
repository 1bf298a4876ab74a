// Notification and invalidation: a write tells exactly which nodes changed.
#include <gtest/gtest.h>

#include "Fixture.h"
#include "gik/IntRegNode.h"
#include "gik/Notification.h"

using namespace gik;

namespace {

class Notifications : public test::KernelTest {};

std::string IntReg(const char* aName, const char* aAddress, const char* aExtra = "") {
    return std::string("<IntReg Name=\"") + aName + "\"><Address>" + aAddress +
           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + aExtra +
           "</IntReg>";
}

// A counts what it hears.
class cListener : public pNode {
public:
    i4 Initialize(cRuntime*, const TiXmlElement*) { return 0; }
    void OnInvalidate(cRuntime*, cNotification* aNotification) override {
        ++mInvalidations;
        mLastSource = aNotification->Source();
    }
    void OnBroadcast(cRuntime*, cNotification* aNotification) override {
        ++mBroadcasts;
        mLastType = aNotification->Type();
    }
    int mInvalidations = 0;
    int mBroadcasts = 0;
    u4 mLastType = 0;
    pNode* mLastSource = nullptr;
};

} // namespace

TEST_F(Notifications, ASetPokesTheDependentsNotTheNode) {
    ASSERT_EQ(Load("<Integer Name=\"Width\"><pValue>WR</pValue></Integer>" + IntReg("WR", "0") +
                       "<IntSwissKnife Name=\"Payload\"><pVariable "
                       "Name=\"W\">Width</pVariable><Formula>W * 2"
                       "</Formula></IntSwissKnife>"
                       "<IntSwissKnife Name=\"Twice\"><pVariable "
                       "Name=\"P\">Payload</pVariable><Formula>P * 2"
                       "</Formula></IntSwissKnife>"
                       "<Integer Name=\"Other\"><pValue>OR</pValue></Integer>" +
                       IntReg("OR", "4"),
                   "Width Payload Twice Other"),
              0);
    ASSERT_EQ(SetInt("Width", 8), 0);
    EXPECT_EQ(Poked(), "Payload Twice");
}

TEST_F(Notifications, CyclesEndAndSharedNodesAreToldOnce) {
    // A -> B -> C -> A through invalidators, and D reached on two paths.
    ASSERT_EQ(
        Load("<Integer Name=\"A\"><pInvalidator>C</pInvalidator><Value>0</Value></Integer>"
             "<Integer Name=\"B\"><pInvalidator>A</pInvalidator><Value>0</Value></Integer>"
             "<Integer Name=\"C\"><pInvalidator>B</pInvalidator><Value>0</Value></Integer>"
             "<Integer Name=\"D\"><pInvalidator>A</pInvalidator><pInvalidator>B</pInvalidator>"
             "<Value>0</Value></Integer>",
             "A B C D"),
        0);
    ASSERT_EQ(SetInt("A", 1), 0);
    // The walk ends at the visited set; around the cycle A itself is
    // reached again (only the node just before is left out), D once.
    EXPECT_EQ(Poked(), "B C A D");
}

TEST_F(Notifications, InvalidateStartsAtTheNodeItself) {
    ASSERT_EQ(
        Load("<Integer Name=\"A\"><pValue>R</pValue></Integer>" + IntReg("R", "0") +
                 "<Integer Name=\"B\"><pInvalidator>A</pInvalidator><pValue>BR</pValue></Integer>" +
                 IntReg("BR", "4"),
             "A B"),
        0);
    EXPECT_EQ(GetInt("A"), 0);
    EXPECT_EQ(GetInt("B"), 0);
    mPort->PutBig(0, 3, 4);
    mRuntime->ClearPoked();
    Node("R")->Invalidate(mRuntime);
    EXPECT_EQ(Poked(), "A B"); // R itself is no feature
    EXPECT_EQ(GetInt("A"), 3);
    EXPECT_FALSE(static_cast<cIntRegNode*>(Node("R"))->HasCache() == false);
}

TEST_F(Notifications, TwoChangesShareOneVisitedSet) {
    ASSERT_EQ(
        Load("<Integer Name=\"A\"><Value>0</Value></Integer>"
             "<Integer Name=\"B\"><Value>0</Value></Integer>"
             "<Integer Name=\"Both\"><pInvalidator>A</pInvalidator><pInvalidator>B</pInvalidator>"
             "<Value>0</Value></Integer>"
             "<Integer Name=\"After\"><pInvalidator>Both</pInvalidator><Value>0</Value></Integer>",
             "A B Both After"),
        0);
    mRuntime->ClearPoked();
    cValue one;
    one.SetSigned(1);
    ASSERT_EQ(Node("A")->SetValue(mRuntime, &one, nullptr), 0);
    ASSERT_EQ(Node("B")->SetValue(mRuntime, &one, nullptr), 0);
    EXPECT_EQ(Poked(), "Both After");
    // Cleared from outside, the visited set goes with the list.
    mRuntime->Poked()->Clear();
    ASSERT_EQ(Node("B")->SetValue(mRuntime, &one, nullptr), 0);
    EXPECT_EQ(Poked(), "Both After");
}

TEST_F(Notifications, AFailedSetPokesNothing) {
    ASSERT_EQ(Load("<Integer Name=\"A\"><Max>5</Max></Integer>"
                   "<Integer Name=\"B\"><pInvalidator>A</pInvalidator></Integer>",
                   "A B"),
              0);
    EXPECT_EQ(SetInt("A", 9), 15);
    EXPECT_EQ(Poked(), "");
}

TEST_F(Notifications, BroadcastReachesTheMaskedClassesButTheSender) {
    ASSERT_EQ(Load(IntReg("R", "0"), "R"), 0);
    auto* a = new cListener();
    auto* b = new cListener();
    // Hand-made nodes are told like any other when walked or broadcast to.
    mRuntime->Broadcast(0, 2, nullptr, Node("R"));
    Node("R")->AddDependent(a);
    a->AddDependent(b);
    b->AddDependent(a);
    mRuntime->ClearPoked();
    mRuntime->Propagate(1, nullptr, nullptr, Node("R"));
    EXPECT_EQ(a->mInvalidations, 1);
    EXPECT_EQ(b->mInvalidations, 1);
    EXPECT_EQ(b->mLastSource, a);
    EXPECT_EQ(a->mLastSource, Node("R"));
    a->Release();
    b->Release();
}

TEST_F(Notifications, WritingAnAddressNodeMovesTheRegister) {
    ASSERT_EQ(
        Load("<Integer Name=\"Base\"><pValue>BaseReg</pValue></Integer>" +
                 IntReg("BaseReg", "0x10") +
                 "<IntReg "
                 "Name=\"R\"><pAddress>Base</pAddress><Length>4</Length><AccessMode>RO</AccessMode>"
                 "<pPort>Device</pPort></IntReg><Integer Name=\"A\"><pValue>R</pValue></Integer>",
             "Base A"),
        0);
    mPort->PutBig(0x100, 1, 4);
    mPort->PutBig(0x200, 2, 4);
    ASSERT_EQ(SetInt("Base", 0x100), 0);
    EXPECT_EQ(GetInt("A"), 1);
    ASSERT_EQ(SetInt("Base", 0x200), 0);
    EXPECT_EQ(Poked(), "A");
    EXPECT_EQ(GetInt("A"), 2);
}

TEST_F(Notifications, WriteOrderIsValidateStoreWalkBroadcastDrop) {
    // Two aliases, one write-around: after the write the writer re-reads,
    // the alias was dropped by the broadcast.
    ASSERT_EQ(Load(IntReg("W", "0x80", "<Cachable>WriteAround</Cachable>") +
                       IntReg("Alias", "0x80") +
                       "<Integer Name=\"A\"><pValue>Alias</pValue></Integer>",
                   "W A"),
              0);
    EXPECT_EQ(GetInt("A"), 0);
    mPort->ResetCounts();
    ASSERT_EQ(SetInt("W", 6), 0);
    ASSERT_EQ(mPort->mLog.size(), 1u);
    EXPECT_TRUE(mPort->mLog[0].write);
    EXPECT_EQ(Poked(), "A");
    EXPECT_EQ(GetInt("W"), 6);
    EXPECT_EQ(GetInt("A"), 6);
    ASSERT_EQ(mPort->mLog.size(), 3u);
    EXPECT_FALSE(mPort->mLog[1].write);
    EXPECT_FALSE(mPort->mLog[2].write);
}
