// The real devices' documents: in the strict reading each loads or is
// refused as the kernel's rules say; in the wide reading every one loads.
// Every feature of those that load is listed and every readable one read
// over a zero-filled port, failing only where zero bytes or an unattached
// port leave it nothing to give.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "Fixture.h"
#include "ZipEntry.h"
#include "gik/CommandNode.h"
#include "gik/EnumNode.h"
#include "gik/MemoryNode.h"

using namespace gik;

namespace {

struct tReadSummary {
    int features = 0;
    int readable = 0;
    int read = 0;
    int failed = 0;
    // The features whose read failed, with the status.
    std::vector<std::pair<std::string, llk::i4>> failures;
};

// Reads one feature as the layer above does: a command by asking whether it
// is done, a raw block by fetching its length, anything else by its value.
llk::i4 ReadFeature(cRuntime* aRuntime, pNode* aNode) {
    cValue value;
    switch (aNode->ClassType()) {
    case pNode::kTagCommand: {
        bool done = false;
        return static_cast<cCommandNode*>(aNode)->Completed(aRuntime, done);
    }
    case pNode::kTagMemory: {
        auto* block = static_cast<cMemoryNode*>(aNode);
        std::vector<llk::u1> bytes(block->Length(aRuntime));
        llk::u4 done = 0;
        return block->Fetch(aRuntime, static_cast<llk::u4>(bytes.size()), bytes.data(), done);
    }
    default:
        return aNode->GetValue(aRuntime, value, nullptr);
    }
}

tReadSummary ReadEverything(cRuntime* aRuntime) {
    tReadSummary s;
    llk::cObjectList* nodes = aRuntime->Nodes();
    for (llk::u4 i = 0; i < nodes->Count(); ++i) {
        auto* node = static_cast<pNode*>(nodes->AtIndex(i));
        ++s.features;
        EXPECT_NE(node->Name(false), nullptr);
        EXPECT_NE(node->GetPath(), nullptr);
        node->Name(true);
        node->Help(true);
        node->Help(false);
        node->Unit();
        node->NameSpace();
        node->Representation();
        node->Visibility();
        node->PollingTime();
        node->IsWriteable(aRuntime);
        node->IsNoCache(aRuntime);
        node->IsWriteAround(aRuntime);
        node->HasInvalidators(aRuntime);
        node->IsStreamable(aRuntime);
        llk::uAutoreleasePool pool;
        llk::cObjectList* affected = llk::cObjectList::New(32, false);
        EXPECT_EQ(node->Affected(aRuntime, affected), 0);
        llk::cObjectList* selected = llk::cObjectList::New(32, false);
        EXPECT_EQ(node->Selected(aRuntime, selected), 0);
        if (!node->IsReadable(aRuntime)) continue;
        ++s.readable;
        llk::i4 status = ReadFeature(aRuntime, node);
        if (status == 0) {
            ++s.read;
        } else {
            ++s.failed;
            s.failures.emplace_back(node->NameText(), status);
            if (getenv("GIK_VERBOSE"))
                printf("  %s (%s): %d\n", node->NameText(), node->ClassName(), status);
        }
        cValue minimum, maximum, increment;
        node->GetRange(aRuntime, minimum, maximum, nullptr);
        node->GetIncrement(aRuntime, increment, nullptr);
        if (node->ClassType() == pNode::kTagEnumeration) {
            llk::cObjectList* entries = nullptr;
            auto* e = static_cast<cEnumNode*>(node);
            EXPECT_EQ(e->GetRange(aRuntime, entries, nullptr), 0);
            for (llk::u4 k = 0; entries && k < entries->Count(); ++k) {
                auto* name = static_cast<cValue*>(entries->AtIndex(k));
                llk::i8 asInteger = 0;
                bool available = false;
                e->GetValueAsInteger(aRuntime, *name, asInteger);
                e->IsValueAvailable(aRuntime, *name, available);
            }
        }
    }
    return s;
}

// True when aNode is an enumeration none of whose entries has the value 0:
// over zero bytes it can only answer that the value is no entry's (108).
bool NoEntryForZero(cRuntime* aRuntime, pNode* aNode) {
    if (!aNode || aNode->ClassType() != pNode::kTagEnumeration) return false;
    cValue zero;
    zero.SetSigned(0);
    llk::cString* name = nullptr;
    return static_cast<cEnumNode*>(aNode)->GetValueAsString(aRuntime, zero, name) == 15;
}

class RealDocuments : public ::testing::Test {
protected:
    void SetUp() override {
        if (!std::filesystem::is_directory(test::TestDataDir()))
            GTEST_SKIP() << "no real devices' documents: " << test::TestDataDir()
                         << " is absent (the shared test data lies beside the source tree)";
    }
    // The path of a document that must be there.
    static std::string Existing(const char* aFile) {
        std::string path = test::TestDataDir() + aFile;
        EXPECT_TRUE(std::filesystem::is_regular_file(path)) << "missing " << path;
        return path;
    }

    llk::uAutoreleasePool mPool;
};

struct tExpectation {
    const char* file;
    llk::i4 process;  // status of Process
    llk::i4 finalize; // status of Finalize, when Process succeeded
};

const tExpectation kDocuments[] = {
    {"aravis_fake_camera.xml", 0, 0},
    {"TIS_dmk_33GX174.xml", 0, 0},
    {"Teledyne_ShadoBox.xml", 0, 0},
    // An IntReg of Length 1: one-byte registers are refused, so the node
    // cannot be made and the document is not acceptable.
    {"Sony_CVC_EH6300.xml", 101, 0},
    // An "Address" of "-4" beside a "pAddress": an address sum takes decimal
    // digits only.
    {"Baumer_HXG20.xml", 101, 0},
    // Struct entries numbering bits above 31: fields lie in a 32-bit frame.
    {"FLIR_FL3_U3_13S2C.xml", 101, 0},
};

} // namespace

TEST_F(RealDocuments, EachLoadsOrIsRefused) {
    for (const tExpectation& e : kDocuments) {
        SCOPED_TRACE(e.file);
        cRuntime* runtime = cRuntime::New(false);
        ASSERT_NE(runtime, nullptr);
        test::cMemoryPort* port = test::cMemoryPort::New(true);
        runtime->AttachPort("Device", port);
        runtime->AttachPort("TLDevice", port);
        runtime->Prepare();
        std::string path = Existing(e.file);
        llk::i4 status = runtime->Process(path.c_str(), true, nullptr, false);
        EXPECT_EQ(status, e.process);
        if (status != 0) continue;
        EXPECT_EQ(runtime->Finalize(), e.finalize);
        tReadSummary s = ReadEverything(runtime);
        printf("%s: %d features, %d readable, %d read, %d failed reads\n", e.file, s.features,
               s.readable, s.read, s.failed);
        EXPECT_GT(s.features, 0);
        // Over zero bytes only these may fail: an enumeration without an
        // entry for 0 (108), chunk and event features whose port is not
        // attached (5), and what reads them.
        for (const auto& [name, failure] : s.failures)
            EXPECT_TRUE(failure == 108 || failure == 5) << name << ": " << failure;
    }
}

// Features that have no value over zero bytes whatever the reading, and why.
const std::pair<const char*, const char*> kNoValueOverZeros[] = {
    {"AcquisitionFrameRate", "1000000 / TO, TO a register of zero"},
};

TEST_F(RealDocuments, EachLoadsAndReadsInTheWideReading) {
    for (const tExpectation& e : kDocuments) {
        SCOPED_TRACE(e.file);
        cRuntime* runtime = cRuntime::New(false);
        ASSERT_NE(runtime, nullptr);
        runtime->SetReading(tReading::Wide());
        test::cMemoryPort* port = test::cMemoryPort::New(true);
        runtime->AttachPort("Device", port);
        runtime->AttachPort("TLDevice", port);
        runtime->Prepare();
        std::string path = Existing(e.file);
        ASSERT_EQ(runtime->Process(path.c_str(), true, nullptr, false), 0);
        ASSERT_EQ(runtime->Finalize(), 0);
        tReadSummary s = ReadEverything(runtime);
        printf("%s (wide): %d features, %d readable, %d read, %d failed reads\n", e.file,
               s.features, s.readable, s.read, s.failed);
        EXPECT_GT(s.features, 0);
        for (const auto& [name, failure] : s.failures) {
            // A chunk or event port that is not attached (5); an enumeration
            // without an entry for 0, or what reads one (108).
            pNode* node = runtime->SeekNode(name.c_str(), false);
            bool explained = failure == 5;
            if (failure == 108)
                explained =
                    node->ClassType() != pNode::kTagEnumeration || NoEntryForZero(runtime, node);
            for (const auto& [known, why] : kNoValueOverZeros)
                explained = explained || (failure == 7 && name == known);
            EXPECT_TRUE(explained) << name << ": " << failure;
        }
    }
}

TEST_F(RealDocuments, TheZippedDocumentLoads) {
    std::string text = test::FirstZipEntry(Existing("tlsimu_altered.zip"));
    ASSERT_EQ(text.size(), 24983u);
    cRuntime* runtime = cRuntime::New(false);
    test::cMemoryPort* port = test::cMemoryPort::New(true);
    runtime->AttachPort("Device", port);
    runtime->AttachPort("PortEventRemoteDevice", port);
    runtime->Prepare();
    ASSERT_EQ(runtime->Process(text.c_str(), false, nullptr, false), 0);
    ASSERT_EQ(runtime->Finalize(), 0);
    tReadSummary s = ReadEverything(runtime);
    printf("tlsimu_altered.zip: %d features, %d readable, %d read, %d failed reads\n", s.features,
           s.readable, s.read, s.failed);
    EXPECT_GT(s.read, 0);
}
