// Bad input: malformed and deep documents, reference cycles, absurd chains
// and graphs. Each gets a status; none crashes, hangs or recurses without
// bound.
#include <gtest/gtest.h>

#include <pthread.h>

#include <cstring>
#include <string>
#include <unordered_set>

#include "Fixture.h"
#include "gik/Document.h"
#include "gik/Formula.h"
#include "gik/Nesting.h"
#include "gik/Shared.h"
#include "gik/XmlDepth.h"

using namespace gik;

namespace {

class BadInput : public test::KernelTest {};

std::string IntReg(const char* aName, const char* aAddress) {
    return std::string("<IntReg Name=\"") + aName + "\"><Address>" + aAddress +
           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>";
}

} // namespace

TEST_F(BadInput, DeeplyNestedXmlIsRefused) {
    std::string deep = "<RegisterDescription>";
    for (int i = 0; i < 200000; ++i)
        deep += "<a>";
    for (int i = 0; i < 200000; ++i)
        deep += "</a>";
    deep += "</RegisterDescription>";
    EXPECT_EQ(mRuntime->Process(deep.c_str(), false, nullptr, false), 101);
    // Unclosed, too, and empty elements inside quotes do not hide the depth.
    std::string open(300000, '<');
    for (size_t i = 1; i < open.size(); i += 2)
        open[i] = 'b';
    EXPECT_EQ(mRuntime->Process(open.c_str(), false, nullptr, false), 101);
    std::string quoted;
    for (int i = 0; i < 1000; ++i)
        quoted += "<a b=\"/>\" c='<x/>'>";
    EXPECT_EQ(mRuntime->Process(quoted.c_str(), false, nullptr, false), 101);
    // tinyxml takes "<a" into a UTF-8 character, and so reads the "<c>"s as
    // elements, not as a quoted value: so does the measure.
    std::string swallowed =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><RegisterDescription>\xE0<a \"";
    for (int i = 0; i < 1000; ++i)
        swallowed += "<c>";
    swallowed += "\"";
    for (int i = 0; i < 1000; ++i)
        swallowed += "</c>";
    swallowed += "</RegisterDescription>";
    EXPECT_EQ(sXmlDepth::Measure(swallowed.c_str(), swallowed.size(), 2000), 1001u);
    EXPECT_EQ(mRuntime->Process(swallowed.c_str(), false, nullptr, false), 101);
}

namespace {

// Levels of elements: the description, aGroups groups, an Integer and its
// Value.
std::string Nested(u4 aGroups) {
    std::string text =
        "<RegisterDescription><Category Name=\"Root\"><pFeature>Deep</pFeature></Category>";
    for (u4 i = 0; i < aGroups; ++i)
        text += "<Group><!-- <a><b><c> --><![CDATA[<d><e>]]>";
    text += "<Integer Name=\"Deep\"><Value>4</Value></Integer>";
    for (u4 i = 0; i < aGroups; ++i)
        text += "</Group>";
    return text + "</RegisterDescription>";
}

} // namespace

TEST_F(BadInput, NestingUpToTheLimitIsParsed) {
    std::string text = Nested(sDocument::kMaxNesting - 3);
    EXPECT_EQ(sXmlDepth::Measure(text.c_str(), text.size(), 1000), sDocument::kMaxNesting);
    ASSERT_EQ(mRuntime->Process(text.c_str(), false, nullptr, false), 0);
    ASSERT_EQ(mRuntime->Finalize(), 0);
    EXPECT_EQ(GetInt("Deep"), 4);
    text = Nested(sDocument::kMaxNesting - 2);
    EXPECT_EQ(mRuntime->Process(text.c_str(), false, nullptr, false), 101);
}

TEST_F(BadInput, AThreadWithASmallStackParsesOnAHelper) {
    // 256 KiB hold no parse of the deepest documents: a helper thread
    // with a stack of their size does it.
    struct tJob {
        cRuntime* runtime;
        std::string text;
        llk::i4 status = -1;
    } job{mRuntime, Nested(sDocument::kMaxNesting - 3)};
    ASSERT_GT(sDocument::StackFor(job.text.c_str(), job.text.size()), 256u << 10);
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256u << 10), 0);
    pthread_t thread;
    auto run = [](void* aJob) -> void* {
        auto* j = static_cast<tJob*>(aJob);
        llk::uAutoreleasePool pool;
        j->status = j->runtime->Process(j->text.c_str(), false, nullptr, false);
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &job), 0);
    pthread_attr_destroy(&attributes);
    pthread_join(thread, nullptr);
    EXPECT_EQ(job.status, 0);
    ASSERT_EQ(mRuntime->Finalize(), 0);
    EXPECT_EQ(GetInt("Deep"), 4);
}

TEST_F(BadInput, GarbageAndCutDocuments) {
    const char* inputs[] = {
        "\xEF\xBB\xBF",
        "<RegisterDescription",
        "<RegisterDescription><Integer Name=\"A\"><Value>1</Value></Integer>\xE0",
        "<RegisterDescription a=\"\xF0\"></RegisterDescription>",
        "<RegisterDescription><![CDATA[",
        "<RegisterDescription><!-- never closed",
        "<?xml version=\"1.0\" encoding=\"latin1\"?><RegisterDescription "
        "x=\"&#x12345678901234567890;\"/>",
        "<RegisterDescription>&#xFFFFFFFF;&#0;&amp</RegisterDescription>",
        "<RegisterDescription/><RegisterDescription/>",
    };
    for (const char* input : inputs) {
        SCOPED_TRACE(input);
        llk::i4 status = mRuntime->Process(input, false, nullptr, false);
        EXPECT_TRUE(status == 101 || status == 0) << status;
    }
    std::string binary;
    for (int i = 0; i < 4096; ++i)
        binary += static_cast<char>((i * 7919) % 255 + 1);
    EXPECT_EQ(mRuntime->Process(binary.c_str(), false, nullptr, false), 101);
}

TEST_F(BadInput, ValueReferenceCyclesFailTheirReadsOnly) {
    ASSERT_EQ(
        Load("<Integer Name=\"A\"><pValue>B</pValue></Integer>"
             "<Integer Name=\"B\"><pValue>A</pValue></Integer>"
             "<Integer Name=\"Self\"><pIsAvailable>Self</pIsAvailable><Value>1</Value></Integer>"
             "<IntSwissKnife Name=\"K\"><pVariable Name=\"K\">K</pVariable><Formula>K + 1</Formula>"
             "</IntSwissKnife>"
             "<Integer Name=\"Fine\"><Value>3</Value></Integer>",
             "A B Self K Fine"),
        0);
    llk::i4 status = 0;
    GetInt("A", &status);
    EXPECT_EQ(status, kTooDeep);
    EXPECT_EQ(SetInt("A", 1), 106); // a writeable target is never found
    EXPECT_FALSE(Node("Self")->IsAvailable(mRuntime));
    GetInt("K", &status);
    EXPECT_NE(status, 0);
    EXPECT_EQ(GetInt("Fine"), 3);
    EXPECT_EQ(uNest::Depth(), 0u);
    EXPECT_FALSE(Node("A")->IsNoCache(mRuntime));
    Node("A")->Target(mRuntime);
    Node("A")->HasInvalidators(mRuntime);
}

TEST_F(BadInput, LongChainsAreBounded) {
    // 20000 Integers, each the value of the next, and each the invalidator
    // of the next: reads stop at the depth bound, walks keep their own stack.
    std::string nodes = "<Integer Name=\"N0\"><Value>5</Value></Integer>";
    for (int i = 1; i < 20000; ++i)
        nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>N" + std::to_string(i - 1) +
                 "</pValue><pInvalidator>N" + std::to_string(i - 1) + "</pInvalidator></Integer>";
    ASSERT_EQ(Load(nodes, "N0 N19999"), 0);
    llk::i4 status = 0;
    EXPECT_EQ(GetInt("N100"), 5);
    GetInt("N19999", &status);
    EXPECT_EQ(status, kTooDeep);
    ASSERT_EQ(SetInt("N0", 6), 0);
    EXPECT_EQ(mRuntime->Poked()->Count(), 1u); // only N19999 is a feature
    llk::cObjectList* affected = llk::cObjectList::New(32, false);
    ASSERT_EQ(Node("N0")->Affected(mRuntime, affected), 0);
    EXPECT_EQ(affected->Count(), 19999u);
}

TEST_F(BadInput, SharedBranchesAreNotWalkedExponentially) {
    // Each knife reads the next one twice: 2^60 reads without a bound.
    cRuntime* runtime = cRuntime::New(true); // no cache to cut it short
    runtime->AttachPort("Device", mPort);
    std::string nodes = "<Integer Name=\"K60\"><Value>1</Value></Integer>";
    for (int i = 0; i < 60; ++i) {
        std::string next = "K" + std::to_string(i + 1);
        nodes += "<IntSwissKnife Name=\"K" + std::to_string(i) + "\"><pVariable Name=\"A\">" +
                 next + "</pVariable><pVariable Name=\"B\">" + next +
                 "</pVariable><Formula>A + B</Formula></IntSwissKnife>";
    }
    ASSERT_EQ(runtime->Process(test::Document(nodes, "K0").c_str(), false, nullptr, false), 0);
    ASSERT_EQ(runtime->Finalize(), 0);
    cValue v;
    EXPECT_NE(runtime->SeekNode("K0", false)->GetValue(runtime, v, nullptr), 0);
    runtime->SeekNode("K0", false)->IsNoCache(runtime);
    runtime->SeekNode("K0", false)->PollingTime();
    // With the cache, every knife is read once.
    ASSERT_EQ(mRuntime->Process(test::Document(nodes, "K0").c_str(), false, nullptr, false), 0);
    ASSERT_EQ(mRuntime->Finalize(), 0);
    EXPECT_EQ(GetInt("K50"), 1024);
}

TEST_F(BadInput, AbsurdNumbersInTheDocument) {
    EXPECT_EQ(Load("<Integer Name=\"A\"><Value>0x1FFFFFFFFFFFFFFFF</Value></Integer>", "A"), 101);
    EXPECT_EQ(Load("<Integer Name=\"B\"><Value>twelve</Value></Integer>", "B"), 101);
    EXPECT_EQ(Load("<Integer Name=\"C\"><PollingTime>soon</PollingTime></Integer>", "C"), 101);
    EXPECT_EQ(Load("<IntReg Name=\"D\"><Address>0</Address><pIndex "
                   "Offset=\"-1\">C</pIndex><Length>4</Length>"
                   "<pPort>Device</pPort></IntReg>",
                   "D"),
              101);
    // Saturating decimal numbers scan.
    ASSERT_EQ(Load("<Integer Name=\"E\"><Value>99999999999999999999999</Value></Integer>", "E"), 0);
    EXPECT_EQ(GetInt("E"), INT64_MAX);
}

TEST_F(BadInput, RegisterOnANodeThatIsNoPort) {
    ASSERT_EQ(
        Load("<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><pPort>A</pPort></IntReg>"
             "<Integer Name=\"A\"><pValue>R</pValue></Integer>",
             "A"),
        0);
    llk::i4 status = 0;
    GetInt("A", &status);
    EXPECT_EQ(status, 5);
}

TEST_F(BadInput, UnattachedPortFailsTransfersOnly) {
    ASSERT_TRUE(mRuntime->RemovePort("Device"));
    ASSERT_EQ(Load("<Integer Name=\"A\"><pValue>R</pValue></Integer>" + IntReg("R", "0"), "A"), 0);
    llk::i4 status = 0;
    GetInt("A", &status);
    EXPECT_EQ(status, 5);
    EXPECT_EQ(SetInt("A", 1), 106); // no port: not writeable
}

TEST_F(BadInput, FormulasOutliveTheirRuntimesWithinABudget) {
    std::string nodes;
    for (int i = 0; i < 20; ++i)
        nodes += "<IntSwissKnife Name=\"K" + std::to_string(i) + "\"><Formula>" +
                 std::to_string(i) + " + 0x600D</Formula></IntSwissKnife>";
    llk::u8 before = sShared::CompileCount();
    for (int round = 0; round < 3; ++round) {
        llk::uAutoreleasePool pool;
        cRuntime* runtime = cRuntime::New(false);
        EXPECT_EQ(runtime->Process(test::Document(nodes, "K0").c_str(), false, nullptr, false), 0);
    }
    // Compiled once, in the first round's runtime, though each round's runtime is gone.
    EXPECT_EQ(sShared::CompileCount() - before, 20u);

    // A knife in use, then three budgets' worth of formulas nobody keeps:
    // the table sheds those, never the knife's.
    ASSERT_EQ(
        Load("<IntSwissKnife Name=\"Kept\"><Formula>(7 * 6) + 0x7EE9</Formula></IntSwissKnife>",
             "Kept"),
        0);
    std::string sum = "0";
    for (int i = 0; i < 2000; ++i)
        sum += " + 1";
    size_t footprint = 0;
    for (int i = 0; footprint < 3 * sShared::kFormulaBudget; ++i) {
        cFormula* formula = sShared::Formula((std::to_string(i) + sum).c_str(), nullptr);
        ASSERT_NE(formula, nullptr);
        footprint += formula->Footprint();
        formula->Release();
        EXPECT_LE(sShared::FormulaBytes(), 2 * sShared::kFormulaBudget + formula->Footprint());
    }
    llk::u8 compiled = sShared::CompileCount();
    cFormula* kept = sShared::Formula("(7 * 6) + 0x7EE9", nullptr);
    EXPECT_EQ(sShared::CompileCount(), compiled);
    kept->Release();
    EXPECT_EQ(GetInt("Kept"), 42 + 0x7EE9);
}

namespace {

// Every node in a dependents or selected list of a table node is itself a
// node of the table.
void ExpectOnlyTableNodesLinked(cRuntime* aRuntime) {
    std::unordered_set<const pNode*> table;
    for (u4 i = 0; i < aRuntime->NodeCount(); ++i)
        table.insert(aRuntime->NodeAt(i));
    for (u4 i = 0; i < aRuntime->NodeCount(); ++i) {
        pNode* node = aRuntime->NodeAt(i);
        for (llk::cObjectList* list : {node->Dependents(), node->SelectedNodes()})
            for (u4 j = 0; list && j < list->Count(); ++j)
                EXPECT_TRUE(table.count(static_cast<pNode*>(list->AtIndex(j))))
                    << node->NameText() << " links a node outside the table";
    }
}

// Reads every node and writes back what it read, where it may.
void ReadAndWriteBack(cRuntime* aRuntime) {
    for (u4 i = 0; i < aRuntime->NodeCount(); ++i) {
        pNode* node = aRuntime->NodeAt(i);
        cValue value;
        if (node->GetValue(aRuntime, value, nullptr) != 0 || !node->IsWriteable(aRuntime)) continue;
        aRuntime->ClearPoked();
        node->SetValue(aRuntime, &value, nullptr);
    }
}

} // namespace

TEST_F(BadInput, StructEntriesOfOneNameProcessedTwiceWithReplacement) {
    // Found by the document fuzzer: two entries named "High", an Integer
    // named like the port, prefix "P_", the text processed twice.
    const char* text = "<RegisterDescription M=\"\"> <Category Name=\"Root\"></Category><StructReg "
                       "Comment=>d<Length>4</Length><pPort>Device</pPort><StructEntry "
                       "Name=\"High\"><LSB>15</LSB><MSB>8</MSB></StructEntry><StructEntry "
                       "Name=\"High\"><Bit>3</Bit></StructEntry></StructReg>\n<Integer "
                       "Name=\"Device\"/></RegisterDescription>";
    ASSERT_EQ(strlen(text), 294u);
    ASSERT_EQ(mRuntime->Process(text, false, "P_", false), 0);
    ASSERT_EQ(mRuntime->Process(text, false, "P_", true), 0);
    ASSERT_EQ(mRuntime->Finalize(), 0);
    ExpectOnlyTableNodesLinked(mRuntime);
    ReadAndWriteBack(mRuntime);
}

TEST_F(BadInput, NodesReplacedOrRemovedLeaveEveryList) {
    const std::string nodes =
        "<Integer Name=\"A\"><pValue>R</pValue><pSelected>B</pSelected></Integer>"
        "<Integer Name=\"B\"><pValue>R</pValue><pInvalidator>A</pInvalidator></Integer>" +
        IntReg("R", "0") +
        "<StructReg Comment=\"S\"><Address>8</Address><Length>4</Length><pPort>Device</pPort>"
        "<StructEntry Name=\"F\"><Bit>1</Bit></StructEntry></StructReg>";
    ASSERT_EQ(mRuntime->Process(test::Document(nodes, "A B F").c_str(), false, nullptr, false), 0);
    EXPECT_TRUE(mRuntime->RemoveNode("F")); // an entry that never enters the graph
    ASSERT_EQ(mRuntime->Finalize(), 0);
    ExpectOnlyTableNodesLinked(mRuntime);
    // Processed again once finalized: every node of the text is replaced,
    // the holder gets a second name, the old nodes leave every list.
    ASSERT_EQ(mRuntime->Process(test::Document(nodes, "A B F").c_str(), false, nullptr, true), 0);
    ExpectOnlyTableNodesLinked(mRuntime);
    EXPECT_EQ(Features(), "");
    ASSERT_EQ(mRuntime->Finalize(), 0);
    ExpectOnlyTableNodesLinked(mRuntime);
    EXPECT_EQ(Features(), "A B F");
    ASSERT_EQ(SetInt("A", 5), 0);
    EXPECT_EQ(Poked(), "B");
    ASSERT_EQ(SetInt("F", 1), 0);
    EXPECT_EQ(mPort->GetBig(8, 4), 1u << 30); // big endian: bit 1 counts from the top
    ReadAndWriteBack(mRuntime);
}
