// The real devices' documents: each loads or is refused as the kernel's
// rules say, and for those that load every feature can be listed and every
// readable one read over a zero-filled port without a crash.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>
#include <zlib.h>

#include "Fixture.h"
#include "gik/EnumNode.h"

using namespace gik;

namespace {

struct tReadSummary {
    int features = 0;
    int readable = 0;
    int read = 0;
    int failed = 0;
};

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
        cValue value, minimum, maximum, increment;
        llk::i4 status = node->GetValue(aRuntime, value, nullptr);
        if (status == 0) {
            ++s.read;
        } else {
            ++s.failed;
            // Over zero bytes only these may fail: commands and raw blocks
            // have no value (8), an enumeration without an entry for 0 (108),
            // and chunk and event features whose port is not attached (5),
            // and what reads them.
            EXPECT_TRUE(status == 8 || status == 108 || status == 5)
                << node->NameText() << ": " << status;
            if (getenv("GIK_VERBOSE"))
                printf("  %s (%s): %d\n", node->NameText(), node->ClassName(), status);
        }
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

// The first entry of a ZIP archive that is not "__MACOSX/" junk, stored or
// deflated; empty when there is none. The local headers suffice: a raw
// inflate finds the end of its stream itself.
std::string FirstZipEntry(const std::string& aPath) {
    FILE* file = fopen(aPath.c_str(), "rb");
    if (!file) return std::string();
    std::string zip;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof(buffer), file)) > 0)
        zip.append(buffer, n);
    fclose(file);
    auto u16 = [&](size_t at) {
        return unsigned(uint8_t(zip[at])) | unsigned(uint8_t(zip[at + 1])) << 8;
    };
    for (size_t at = 0; at + 30 <= zip.size() && u16(at) == 0x4b50 && u16(at + 2) == 0x0403;) {
        unsigned method = u16(at + 8), nameLength = u16(at + 26), extraLength = u16(at + 28);
        size_t packed = u16(at + 18) | size_t(u16(at + 20)) << 16;
        std::string name = zip.substr(at + 30, nameLength);
        size_t data = at + 30 + nameLength + extraLength;
        if (name.rfind("__MACOSX/", 0) == 0 || method != 8) {
            if (method == 0 && name.rfind("__MACOSX/", 0) != 0) return zip.substr(data, packed);
            at = data + packed;
            continue;
        }
        z_stream z{};
        if (inflateInit2(&z, -MAX_WBITS) != Z_OK) return std::string();
        z.next_in = reinterpret_cast<Bytef*>(&zip[data]);
        z.avail_in = static_cast<uInt>(zip.size() - data);
        std::string text;
        int status = Z_OK;
        while (status == Z_OK) {
            char out[16384];
            z.next_out = reinterpret_cast<Bytef*>(out);
            z.avail_out = sizeof(out);
            status = inflate(&z, Z_NO_FLUSH);
            text.append(out, sizeof(out) - z.avail_out);
        }
        inflateEnd(&z);
        return status == Z_STREAM_END ? text : std::string();
    }
    return std::string();
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
    }
}

TEST_F(RealDocuments, EachLoadsInTheWideReading) {
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
        llk::i4 status = runtime->Process(path.c_str(), true, nullptr, false);
        EXPECT_EQ(status, 0);
        if (status != 0) continue;
        EXPECT_EQ(runtime->Finalize(), 0);
        tReadSummary s = ReadEverything(runtime);
        printf("%s: %d features, %d readable, %d read, %d failed reads\n", e.file, s.features,
               s.readable, s.read, s.failed);
        EXPECT_GT(s.features, 0);
    }
}

TEST_F(RealDocuments, TheZippedDocumentLoads) {
    std::string text = FirstZipEntry(Existing("tlsimu_altered.zip"));
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
