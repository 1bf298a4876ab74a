// Loading register description documents: the elements accepted, the
// rejections with their statuses, prefixes, injection and replacement, and
// the rewriting of embedded knives and address sums.
#include <gtest/gtest.h>

#include <string>

#include "Fixture.h"
#include "gik/Formula.h"
#include "gik/IntRegNode.h"
#include "gik/Shared.h"
#include "gik/SwissKnifeNode.h"

#include <tinyxml.h>

using namespace gik;

namespace {

class Documents : public test::KernelTest {};

const char* kWidth =
    "<Integer Name=\"Width\"><pValue>WidthReg</pValue></Integer>"
    "<IntReg "
    "Name=\"WidthReg\"><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode>"
    "<pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>";

} // namespace

TEST_F(Documents, ASmallDocumentBuildsItsFeatureList) {
    ASSERT_EQ(Load(kWidth, "Width"), 0);
    EXPECT_EQ(Features(), "Width");
    EXPECT_TRUE(mRuntime->IsFinalized());
    EXPECT_NE(mRuntime->SeekNode("Width", true), nullptr);
    // A node without a path is no feature.
    EXPECT_EQ(mRuntime->SeekNode("WidthReg", true), nullptr);
    EXPECT_NE(mRuntime->SeekNode("WidthReg", false), nullptr);
    EXPECT_STREQ(Node("Width")->GetPath()->Chars(), "");
    EXPECT_EQ(Node("Width")->ClassType(), 0x1000020eu);
    EXPECT_EQ(Node("WidthReg")->ClassType(), 0x1000010au);
    EXPECT_EQ(Node("Device")->ClassType(), 0u);
}

TEST_F(Documents, MalformedXmlIs101) {
    EXPECT_EQ(mRuntime->Process("<RegisterDescription><Integer Name=\"A\">", false, nullptr, false),
              101);
    EXPECT_EQ(mRuntime->Process("not xml at all", false, nullptr, false), 101);
    EXPECT_EQ(mRuntime->Process("", false, nullptr, false), 101);
    EXPECT_EQ(mRuntime->Process("/no/such/file.xml", true, nullptr, false), 101);
}

TEST_F(Documents, WithoutRegisterDescriptionIs101) {
    EXPECT_EQ(mRuntime->Process("<Other/>", false, nullptr, false), 101);
}

TEST_F(Documents, WithoutRootFailsAfterBuildingItsNodes) {
    std::string text = "<RegisterDescription>" + std::string(kWidth) +
                       "<Port Name=\"Device\"/><Category Name=\"NotRoot\"/></RegisterDescription>";
    EXPECT_EQ(mRuntime->Process(text.c_str(), false, nullptr, false), 101);
    EXPECT_NE(Node("Width"), nullptr);
    EXPECT_NE(Node("WidthReg"), nullptr);
}

TEST_F(Documents, UnknownElementWithANameIs101WithoutOneSkipped) {
    EXPECT_EQ(Load(std::string(kWidth) + "<Widget Name=\"W\"/>", "Width"), 101);
}

TEST_F(Documents, UnnamedUnknownElementsAreSkipped) {
    EXPECT_EQ(Load(std::string(kWidth) + "<Widget/><Extension><X/></Extension>", "Width"), 0);
}

TEST_F(Documents, CommentStandsInForName) {
    ASSERT_EQ(Load("<Integer Comment=\"Gain\"><Value>3</Value></Integer>", "Gain"), 0);
    EXPECT_EQ(GetInt("Gain"), 3);
}

TEST_F(Documents, GroupsAreEnteredAndCategoriesGivePaths) {
    std::string nodes =
        "<Group Comment=\"G\"><Integer Name=\"A\"><Value>1</Value></Integer>"
        "<Group><Integer Name=\"B\"><Value>2</Value></Integer></Group></Group>"
        "<Category Name=\"Info\"><pFeature>B</pFeature><pFeature>Sub</pFeature></Category>"
        "<Group><Category Name=\"Sub\"><pFeature>C</pFeature></Category></Group>"
        "<Integer Name=\"C\"><Value>3</Value></Integer>";
    ASSERT_EQ(Load(nodes, "A Info"), 0);
    EXPECT_EQ(Features(), "A B C");
    EXPECT_STREQ(Node("A")->GetPath()->Chars(), "");
    EXPECT_STREQ(Node("B")->GetPath()->Chars(), "/Info");
    EXPECT_STREQ(Node("C")->GetPath()->Chars(), "/Info/Sub");
}

TEST_F(Documents, FeatureNamingNothingIs101) {
    EXPECT_EQ(Load(kWidth, "Width Nothing"), 101);
}

TEST_F(Documents, CategoryCycleIsRefused) {
    std::string nodes =
        std::string(kWidth) +
        "<Category Name=\"A\"><pFeature>B</pFeature></Category>"
        "<Category Name=\"B\"><pFeature>A</pFeature><pFeature>Width</pFeature></Category>";
    EXPECT_EQ(Load(nodes, "A"), 101);
}

TEST_F(Documents, CategoryDiamondsDoNotExplode) {
    // Each level names the next twice: 2^40 paths if walked blindly.
    std::string nodes = "<Integer Name=\"Leaf\"><Value>1</Value></Integer>";
    for (int i = 0; i < 40; ++i) {
        std::string next = i == 39 ? "Leaf" : "C" + std::to_string(i + 1);
        nodes += "<Category Name=\"C" + std::to_string(i) + "\"><pFeature>" + next +
                 "</pFeature><pFeature>" + next + "</pFeature></Category>";
    }
    EXPECT_EQ(Load(nodes, "C0"), 101);
}

TEST_F(Documents, FirstDefinitionWinsWithoutReplace) {
    ASSERT_EQ(mRuntime->Process(
                  test::Document("<Integer Name=\"A\"><Value>1</Value></Integer>", "A").c_str(),
                  false, nullptr, false),
              0);
    ASSERT_EQ(mRuntime->Process(
                  test::Document("<Integer Name=\"A\"><Value>2</Value></Integer>", "A").c_str(),
                  false, nullptr, false),
              0);
    ASSERT_EQ(mRuntime->Finalize(), 0);
    EXPECT_EQ(GetInt("A"), 1);
}

TEST_F(Documents, ReplaceTakesTheNewNodeInTheSamePlace) {
    ASSERT_EQ(mRuntime->Process(test::Document("<Integer Name=\"A\"><Value>1</Value></Integer>"
                                               "<Integer Name=\"B\"><Value>5</Value></Integer>",
                                               "A B")
                                    .c_str(),
                                false, nullptr, false),
              0);
    pNode* first = Node("A");
    ASSERT_EQ(mRuntime->Process(
                  test::Document("<Integer Name=\"A\"><Value>2</Value></Integer>", "A").c_str(),
                  false, nullptr, true),
              0);
    ASSERT_EQ(mRuntime->Finalize(), 0);
    EXPECT_NE(Node("A"), first);
    EXPECT_EQ(GetInt("A"), 2);
    EXPECT_EQ(mRuntime->NodeAt(0), Node("A")); // same place in table order
    EXPECT_EQ(Features(), "A B");
}

TEST_F(Documents, ASecondDocumentMergesIntoTheSameRoot) {
    ASSERT_EQ(mRuntime->Process(
                  test::Document("<Integer Name=\"A\"><Value>1</Value></Integer>", "A").c_str(),
                  false, nullptr, false),
              0);
    // The second document names a feature of the first, and adds its own.
    ASSERT_EQ(
        mRuntime->Process(
            "<RegisterDescription><Category "
            "Name=\"Root\"><pFeature>A</pFeature><pFeature>Extra</pFeature>"
            "</Category><Integer Name=\"Extra\"><Value>7</Value></Integer></RegisterDescription>",
            false, nullptr, false),
        0);
    ASSERT_EQ(mRuntime->Finalize(), 0);
    EXPECT_EQ(Features(), "A Extra");
}

TEST_F(Documents, PrefixAppliesToNamesAndReferences) {
    ASSERT_EQ(mRuntime->Process(test::Document(kWidth, "Width").c_str(), false, "Cam1_", false), 0);
    // The port node is prefixed too; attach under that name.
    mRuntime->AttachPort("Cam1_Device", mPort);
    ASSERT_EQ(mRuntime->Finalize(), 0);
    EXPECT_EQ(Node("Width"), nullptr);
    ASSERT_NE(Node("Cam1_Width"), nullptr);
    mPort->PutBig(0x100, 640, 4);
    EXPECT_EQ(GetInt("Cam1_Width"), 640);
    EXPECT_EQ(Features(), "Cam1_Width");
}

TEST_F(Documents, ProcessCallbackSeesTheDescriptionAndCanStop) {
    struct tSeen {
        int calls = 0;
        std::string root;
    } seen;
    mRuntime->SetProcessCallback(
        [](cRuntime*, TiXmlNode* aDescription, void* aContext) -> int {
            auto* s = static_cast<tSeen*>(aContext);
            ++s->calls;
            s->root = aDescription ? aDescription->Value() : "";
            return s->calls == 2 ? 77 : 0;
        },
        &seen);
    EXPECT_EQ(mRuntime->Process(test::Document(kWidth, "Width").c_str(), false, nullptr, false), 0);
    EXPECT_EQ(seen.root, "RegisterDescription");
    EXPECT_EQ(mRuntime->Process(test::Document(kWidth, "Width").c_str(), false, nullptr, false),
              77);
}

TEST_F(Documents, DanglingReferenceFailsFinalizeWith102) {
    EXPECT_EQ(Load("<Integer Name=\"A\"><pValue>Missing</pValue></Integer>", "A"), 102);
}

TEST_F(Documents, IsImplementedNamingNothingHidesTheFeature) {
    ASSERT_EQ(
        Load(
            "<Integer Name=\"A\"><pIsImplemented>Missing</pIsImplemented><Value>1</Value></Integer>"
            "<Integer Name=\"B\"><Value>1</Value></Integer>",
            "A B"),
        0);
    EXPECT_EQ(Features(), "B");
    EXPECT_EQ(mRuntime->SeekNode("A", true), nullptr);
}

TEST_F(Documents, HideRemoveAndMove) {
    std::string nodes = "<Integer Name=\"A\"><Value>1</Value></Integer>"
                        "<Integer Name=\"B\"><Value>2</Value></Integer>"
                        "<Integer Name=\"C\"><Value>3</Value></Integer>"
                        "<Category Name=\"Hidden\"><pFeature>B</pFeature></Category>";
    ASSERT_EQ(mRuntime->Process(test::Document(nodes, "A Hidden C").c_str(), false, nullptr, false),
              0);
    mRuntime->HideAllNodes("/Hidden");
    EXPECT_TRUE(mRuntime->RemoveNode("C"));
    EXPECT_FALSE(mRuntime->RemoveNode("C"));
    ASSERT_EQ(mRuntime->Finalize(), 0);
    EXPECT_EQ(Features(), "A");
    // After Finalize nothing is removed, but a node can still move.
    EXPECT_FALSE(mRuntime->RemoveNode("A"));
    EXPECT_NE(Node("A"), nullptr);
    EXPECT_TRUE(mRuntime->MoveNode("A", "/Moved"));
    EXPECT_STREQ(Node("A")->GetPath()->Chars(), "/Moved");
    EXPECT_FALSE(mRuntime->MoveNode("Nobody", "/x"));
}

TEST_F(Documents, DismissEmptiesEverything) {
    ASSERT_EQ(Load(kWidth, "Width"), 0);
    EXPECT_EQ(mRuntime->Dismiss(), 0);
    EXPECT_EQ(mRuntime->NodeCount(), 0u);
    EXPECT_EQ(mRuntime->Nodes()->Count(), 0u);
    EXPECT_FALSE(mRuntime->IsAttached("Device"));
    EXPECT_TRUE(mRuntime->IsFinalized());
}

TEST_F(Documents, PortsAttachAndRemove) {
    EXPECT_TRUE(mRuntime->IsAttached("Device"));
    EXPECT_FALSE(mRuntime->IsAttached("Other"));
    EXPECT_TRUE(mRuntime->RemovePort("Device"));
    EXPECT_FALSE(mRuntime->RemovePort("Device"));
    EXPECT_FALSE(mRuntime->IsAttached("Device"));
}

TEST_F(Documents, StringsAreInternedOnce) {
    llk::cString* a = mRuntime->CacheString("Custom", false);
    llk::cString* b = mRuntime->CacheString("Custom", false);
    EXPECT_EQ(a, b);
    EXPECT_EQ(mRuntime->CacheString(nullptr, false), mRuntime->CacheString("", false));
    llk::cString* kept = mRuntime->CacheString("Kept", true);
    EXPECT_GE(kept->RetainCount(), 2u);
    kept->Release();
    ASSERT_EQ(Load(kWidth, "Width"), 0);
    EXPECT_EQ(Node("Width")->NameSpace(), mRuntime->CacheString("Custom", false));
}

// The address sum rewriting.

TEST_F(Documents, OneAddressMakesNoGeneratedNode) {
    ASSERT_EQ(Load(kWidth, "Width"), 0);
    for (llk::u4 i = 0; i < mRuntime->NodeCount(); ++i)
        EXPECT_EQ(std::string(mRuntime->NodeAt(i)->NameText()).find("GeneratedNode_"),
                  std::string::npos);
}

TEST_F(Documents, TwoAddressesMakeAGeneratedKnife) {
    std::string nodes =
        "<IntReg Name=\"R\"><Address>0x10</Address><Address>0x20</Address><Length>4</Length>"
        "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
        "<Integer Name=\"A\"><pValue>R</pValue></Integer>";
    ASSERT_EQ(Load(nodes, "A"), 0);
    cSwissKnifeNode* knife = nullptr;
    for (llk::u4 i = 0; i < mRuntime->NodeCount(); ++i)
        if (std::string(mRuntime->NodeAt(i)->NameText()).rfind("GeneratedNode_", 0) == 0)
            knife = static_cast<cSwissKnifeNode*>(mRuntime->NodeAt(i));
    ASSERT_NE(knife, nullptr);
    EXPECT_EQ(std::string(knife->NameText()).size(), 14u + 32u);
    EXPECT_STREQ(knife->Formula()->Text(), "16 + 32");
    mPort->PutBig(48, 0xABCD, 4);
    EXPECT_EQ(GetInt("A"), 0xABCD);
}

TEST_F(Documents, AddressesAndNodesSum) {
    std::string nodes =
        "<Integer Name=\"Base\"><Value>0x1000</Value></Integer>"
        "<IntReg Name=\"R\"><Address>8</Address><pAddress>Base</pAddress><Length>4</Length>"
        "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
        "<Integer Name=\"A\"><pValue>R</pValue></Integer>";
    ASSERT_EQ(Load(nodes, "A"), 0);
    mPort->PutBig(0x1008, 99, 4);
    EXPECT_EQ(GetInt("A"), 99);
}

TEST_F(Documents, BadAddressTextIs101) {
    EXPECT_EQ(
        Load("<IntReg Name=\"R\"><Address>0x1G</Address><Address>4</Address><Length>4</Length>"
             "<pPort>Device</pPort></IntReg>",
             ""),
        101);
    EXPECT_EQ(
        Load("<IntReg Name=\"R2\"><Address>12a</Address><Address>4</Address><Length>4</Length>"
             "<pPort>Device</pPort></IntReg>",
             ""),
        101);
}

TEST_F(Documents, EmbeddedKnifeBecomesANodeOfItsOwn) {
    std::string nodes =
        "<Integer Name=\"Sel\"><Value>2</Value></Integer>"
        "<IntReg Name=\"R\"><IntSwissKnife Name=\"Addr\"><pVariable Name=\"S\">Sel</pVariable>"
        "<Formula>0x200 + S * "
        "4</Formula></IntSwissKnife><Length>4</Length><AccessMode>RO</AccessMode>"
        "<pPort>Device</pPort></IntReg><Integer Name=\"A\"><pValue>R</pValue></Integer>";
    ASSERT_EQ(Load(nodes, "A"), 0);
    ASSERT_NE(Node("Addr"), nullptr);
    EXPECT_EQ(GetInt("Addr"), 0x208);
    mPort->PutBig(0x208, 5, 4);
    EXPECT_EQ(GetInt("A"), 5);
}

TEST_F(Documents, EmbeddedKnifeWithoutNameIs101) {
    EXPECT_EQ(
        Load("<IntReg "
             "Name=\"R\"><IntSwissKnife><Formula>1</Formula></IntSwissKnife><Length>4</Length>"
             "<pPort>Device</pPort></IntReg>",
             ""),
        101);
}

TEST_F(Documents, GroupCommentsDoNotCollide) {
    // A group already called "AddressSwissKnifes" is left alone.
    std::string nodes =
        "<Group Comment=\"AddressSwissKnifes\"><Integer "
        "Name=\"X\"><Value>1</Value></Integer></Group>"
        "<IntReg Name=\"R\"><Address>1</Address><Address>2</Address><Length>4</Length>"
        "<pPort>Device</pPort></IntReg>";
    ASSERT_EQ(Load(nodes, "X"), 0);
    EXPECT_EQ(GetInt("X"), 1);
}

// Formulas are compiled once per process.

TEST_F(Documents, EachFormulaTextIsCompiledOnce) {
    std::string nodes;
    for (int i = 0; i < 5; ++i)
        nodes += "<IntSwissKnife Name=\"K" + std::to_string(i) +
                 "\"><Formula>1 + 2 * 3 + 0x7357</Formula></IntSwissKnife>";
    llk::u8 before = sShared::CompileCount();
    ASSERT_EQ(Load(nodes, "K0"), 0);
    EXPECT_EQ(sShared::CompileCount() - before, 1u);
    auto* a = static_cast<cSwissKnifeNode*>(Node("K0"));
    auto* b = static_cast<cSwissKnifeNode*>(Node("K4"));
    EXPECT_EQ(a->Formula(), b->Formula());
    EXPECT_EQ(GetInt("K3"), 7 + 0x7357);
}

TEST_F(Documents, AFormulaThatDoesNotParseFailsItsNodeAndIsNotKept) {
    llk::u8 before = sShared::CompileCount();
    EXPECT_EQ(Load("<IntSwissKnife Name=\"K\"><Formula>1 +</Formula></IntSwissKnife>", "K"), 101);
    EXPECT_EQ(Load("<IntSwissKnife Name=\"K2\"><Formula>1 +</Formula></IntSwissKnife>", "K2"), 101);
    // Reported (and compiled) again each time.
    EXPECT_EQ(sShared::CompileCount() - before, 2u);
}
