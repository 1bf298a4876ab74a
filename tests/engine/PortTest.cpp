// Ports onto the simulator's device, and compressed documents.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "TavikSimControl.h"
#include "engine/Port.h"
#include "engine/ZipDocument.h"
#include "kit/AutoreleasePool.h"

using namespace tvk;

namespace {

// Opens the first camera of the first interface of a producer.
class PortTest : public ::testing::Test {
protected:
    void SetUp() override {
        unsetenv("TAVIK_SIM_CONFIG");
        Open();
    }
    void TearDown() override { Close(); }

    void Open() {
        mProducer = llk::Retained(cProducer::New(TAVIK_SIM_PRODUCER));
        ASSERT_NE(mProducer, nullptr);
        gc::GC_ERROR error = 0;
        char id[64];
        size_t size = sizeof(id);
        ASSERT_TRUE(mProducer->InterfacesUpdate(nullptr, 0, &error));
        ASSERT_TRUE(mProducer->InterfacesAtIndex(0, id, &size, &error));
        ASSERT_TRUE(mProducer->InterfaceOpen(id, &mInterface, &error));
        ASSERT_TRUE(mProducer->InterfaceUpdate(mInterface, nullptr, 0, &error));
        size = sizeof(id);
        ASSERT_TRUE(mProducer->InterfaceGetSerial(mInterface, 0, id, &size, &error));
        mCamera = id;
        ASSERT_TRUE(
            mProducer->DeviceOpen(mInterface, id, gc::DEVICE_ACCESS_CONTROL, &mDevice, &error));
        ASSERT_TRUE(mProducer->DevicePort(mDevice, &mHandle, &error));
        mPort = llk::Retained(cDirectPort::New(mProducer, mHandle, false));
    }
    void Close() {
        llk::ReleaseAndClear(mPort);
        if (mProducer && mDevice) mProducer->DeviceClose(mDevice, nullptr);
        mDevice = nullptr;
        llk::ReleaseAndClear(mProducer);
        mPool.Sink(); // the last reference: the producer closes and unloads
    }
    TavikSimControl_t Control() {
        void* self = dlopen(TAVIK_SIM_PRODUCER, RTLD_NOW | RTLD_NOLOAD);
        auto control = reinterpret_cast<TavikSimControl_t>(dlsym(self, "TavikSimControl"));
        dlclose(self);
        return control;
    }
    // The document as the producer serves it, read straight from the register space.
    std::vector<char> Document(cDirectPort* aPort) {
        llk::u4 size = 0, length = 0;
        EXPECT_EQ(aPort->QueryXML(&size, sizeof(size), length, gc::URL_INFO_DOCUMENT_SIZE_QRX, 0),
                  llk::kOk);
        std::vector<char> text(size);
        EXPECT_EQ(aPort->FetchXML(text.data(), size, length, 0), llk::kOk);
        EXPECT_EQ(length + 1, size);
        return text;
    }

    llk::uAutoreleasePool mPool;
    cProducer* mProducer = nullptr;
    gc::IF_HANDLE mInterface = nullptr;
    gc::DEV_HANDLE mDevice = nullptr;
    gc::PORT_HANDLE mHandle = nullptr;
    cDirectPort* mPort = nullptr;
    std::string mCamera;
};

TEST_F(PortTest, PlainAndStackedAccessKeepTheirByteOrder) {
    llk::u4 width = 0, done = 0;
    ASSERT_EQ(mPort->Fetch(0x1000, 4, &width, done), llk::kOk);
    EXPECT_EQ(done, 4u);
    EXPECT_EQ(width, 640u);
    llk::u4 newWidth = 320;
    ASSERT_EQ(mPort->Store(0x1000, 4, &newWidth, done), llk::kOk);

    // Stacked words travel in network order: what goes out swapped comes back swapped.
    llk::u8 addresses[2] = {0x1080, 0x1090};
    llk::u8 data[2] = {0x11223344, 0x55667788};
    ASSERT_EQ(mPort->Store(addresses, data, 2, done), llk::kOk);
    EXPECT_EQ(done, 2u);
    EXPECT_EQ(data[0], 0x11223344u); // the caller's array is unchanged
    llk::u4 raw = 0;
    ASSERT_EQ(mPort->Fetch(0x1080, 4, &raw, done), llk::kOk);
    EXPECT_EQ(raw, 0x44332211u);
    llk::u8 back[2] = {};
    ASSERT_EQ(mPort->Fetch(addresses, back, 2, done), llk::kOk);
    EXPECT_EQ(back[0], 0x11223344u);
    EXPECT_EQ(back[1], 0x55667788u);
    EXPECT_TRUE(mPort->IsWriteable());
    cDirectPort* readOnly = cDirectPort::New(mProducer, mHandle, true);
    EXPECT_FALSE(readOnly->IsWriteable());
}

TEST_F(PortTest, DocumentArrivesWholeAndTerminated) {
    std::vector<char> text = Document(mPort);
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.back(), '\0');
    std::string document(text.data());
    EXPECT_EQ(document.size(), text.size() - 1); // every byte delivered
    EXPECT_EQ(document.rfind("<?xml", 0), 0u);
    EXPECT_NE(document.find("</RegisterDescription>"), std::string::npos);
    llk::u4 length = 0;
    EXPECT_EQ(mPort->FetchXML(text.data(), 10, length, 0), 18);
}

TEST_F(PortTest, MisreportedDocumentsFailCleanlyAndWriteNothingPastTheBuffer) {
    TavikSimControl_t control = Control();
    llk::u4 size = 0, length = 0;
    ASSERT_EQ(mPort->QueryXML(&size, sizeof(size), length, gc::URL_INFO_DOCUMENT_SIZE_QRX, 0),
              llk::kOk);
    auto report = [&](const char* aWhere) {
        ASSERT_EQ(control(("document " + mCamera + " " + aWhere).c_str()), 0);
    };
    std::vector<char> buffer(4096, 'x');
    auto fetch = [&] {
        std::fill(buffer.begin(), buffer.end(), 'x');
        length = 7;
        return mPort->FetchXML(buffer.data(), static_cast<llk::u4>(buffer.size()), length, 0);
    };

    report("100000 0"); // an empty document is an empty text
    EXPECT_EQ(fetch(), llk::kOk);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(buffer[1], 'x');

    report("100000 ffffffff"); // wraps with its terminator
    EXPECT_EQ(fetch(), 18);
    report("100000 1000"); // one byte more than the buffer holds with the terminator
    EXPECT_EQ(fetch(), 18);
    EXPECT_EQ(buffer[0], 'x');

    // Outside the register space, or running past its end: the producer's status.
    report("ffffff00 10");
    EXPECT_EQ(fetch(), gc::GC_ERR_INVALID_ADDRESS);
    report("3fff00 200");
    EXPECT_EQ(fetch(), gc::GC_ERR_INVALID_ADDRESS);
    EXPECT_EQ(buffer[0], 'x');

    // None of that closes the port.
    char where[64];
    snprintf(where, sizeof(where), "100000 %x", size - 1);
    report(where);
    EXPECT_EQ(Document(mPort).size(), size);
}

TEST_F(PortTest, OneTimeoutClosesThePortForGood) {
    TavikSimControl_t control = Control();
    ASSERT_NE(control, nullptr);
    ASSERT_EQ(control("fail GCReadPort -1011 1"), 0);
    llk::u4 value = 0, done = 0;
    EXPECT_EQ(mPort->Fetch(0x1000, 4, &value, done), gc::GC_ERR_TIMEOUT);
    // The fault is spent, yet the port stays dead without asking the device.
    EXPECT_EQ(mPort->Fetch(0x1000, 4, &value, done), gc::GC_ERR_TIMEOUT);
    EXPECT_EQ(mPort->Store(0x1000, 4, &value, done), gc::GC_ERR_TIMEOUT);
    EXPECT_TRUE(mPort->IsDead());
    // Other failures pass through and do not close it.
    cDirectPort* fresh = cDirectPort::New(mProducer, mHandle, false);
    ASSERT_EQ(control("fail GCReadPort -1010 1"), 0);
    EXPECT_EQ(fresh->Fetch(0x1000, 4, &value, done), gc::GC_ERR_IO);
    EXPECT_EQ(fresh->Fetch(0x1000, 4, &value, done), llk::kOk);
    EXPECT_EQ(fresh->Fetch(0x10000000, 4, &value, done), gc::GC_ERR_INVALID_ADDRESS);
}

TEST_F(PortTest, ZippedDocumentInflatesToThePlainOne) {
    std::vector<char> plain = Document(mPort);
    Close();
    auto config =
        std::filesystem::temp_directory_path() / ("tavik-zip-" + std::to_string(getpid()) + ".xml");
    std::ofstream(config) << "<TavikSim><Interface id=\"IF\"><Camera id=\"Cam\" "
                             "zip=\"true\"/></Interface></TavikSim>";
    setenv("TAVIK_SIM_CONFIG", config.c_str(), 1);
    Open();
    llk::u1 zipped = 0;
    llk::u4 length = 0;
    ASSERT_EQ(mPort->QueryXML(&zipped, 1, length, gc::URL_INFO_DOCUMENT_ZIPPED_QRX, 0), llk::kOk);
    EXPECT_EQ(zipped, 1);
    std::vector<char> image = Document(mPort);
    const auto* bytes = reinterpret_cast<const llk::u1*>(image.data());
    const llk::u4 size = static_cast<llk::u4>(image.size() - 1);
    tZIPStream stream{};
    ASSERT_EQ(ZIPScanBuffer(bytes, size, stream), 0);
    std::vector<llk::u1> text(stream.unpackedSize);
    ASSERT_EQ(ZIPPuffBuffer(bytes, stream, text.data()), 0);
    EXPECT_EQ(std::string(text.begin(), text.end()), std::string(plain.data()));

    // Cut short, corrupt, or no ZIP at all: a clear failure.
    EXPECT_EQ(ZIPScanBuffer(bytes, 20, stream), 1);
    EXPECT_EQ(ZIPScanBuffer(bytes, stream.offset + stream.packedSize - 1, stream), 1);
    EXPECT_EQ(ZIPScanBuffer(reinterpret_cast<const llk::u1*>(plain.data()), 100, stream), 1);
    std::vector<llk::u1> broken(bytes, bytes + size);
    ASSERT_EQ(ZIPScanBuffer(broken.data(), size, stream), 0);
    for (llk::u4 i = stream.offset; i < stream.offset + 16; ++i)
        broken[i] ^= 0xA5;
    EXPECT_EQ(ZIPPuffBuffer(broken.data(), stream, text.data()), 1);
    unsetenv("TAVIK_SIM_CONFIG");
    std::filesystem::remove(config);
}

TEST(ZipDocumentTest, StoredEntriesAreCopied) {
    // A local file header of method 0 (stored) around "<Doc/>".
    const std::string text = "<Doc/>";
    std::vector<llk::u1> image(30, 0);
    const llk::u1 header[] = {0x50, 0x4B, 0x03, 0x04};
    std::copy(std::begin(header), std::end(header), image.begin());
    image[18] = image[22] = static_cast<llk::u1>(text.size());
    image.insert(image.end(), text.begin(), text.end());
    tZIPStream stream{};
    ASSERT_EQ(ZIPScanBuffer(image.data(), static_cast<llk::u4>(image.size()), stream), 0);
    std::vector<llk::u1> out(stream.unpackedSize);
    ASSERT_EQ(ZIPPuffBuffer(image.data(), stream, out.data()), 0);
    EXPECT_EQ(std::string(out.begin(), out.end()), text);
    // A stored entry whose two sizes differ is no document.
    image[22] = 9;
    ASSERT_EQ(ZIPScanBuffer(image.data(), static_cast<llk::u4>(image.size()), stream), 0);
    out.resize(stream.unpackedSize);
    EXPECT_EQ(ZIPPuffBuffer(image.data(), stream, out.data()), 1);
}

// A delegate with a small register block, as chunk data are served.
class cBlock : public pPortDelegate {
public:
    llk::i4 OnPortQueryXML(llk::u4, void*, llk::u4, llk::u4&, llk::u4, llk::u4) override {
        return llk::kNotImplemented;
    }
    llk::i4 OnPortFetchXML(llk::u4, void*, llk::u4, llk::u4&, llk::u4) override {
        return llk::kNotImplemented;
    }
    llk::i4 OnPortFetch(llk::u4 aUid, llk::u8 aAddress, llk::u4 aLength, void* aBuffer,
                        llk::u4& aFetched) override {
        lastUid = aUid;
        if (aAddress + aLength > sizeof(bytes)) return llk::kNoCapacity;
        memcpy(aBuffer, bytes + aAddress, aLength);
        aFetched = aLength;
        return llk::kOk;
    }
    llk::i4 OnPortStore(llk::u4, llk::u8, llk::u4, const void*, llk::u4&) override {
        return llk::kNotImplemented;
    }
    llk::u1 bytes[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    llk::u4 lastUid = 0;
};

TEST(DelegatePortTest, CallsGoToTheDelegateWithTheUid) {
    llk::uAutoreleasePool pool;
    cBlock block;
    cChunkPort* port = cChunkPort::New(7, &block, true);
    EXPECT_FALSE(port->IsWriteable());
    llk::u4 value = 0, done = 0;
    EXPECT_EQ(port->Fetch(8, 4, &value, done), llk::kOk);
    EXPECT_EQ(block.lastUid, 7u);
    EXPECT_EQ(value, 0x0C0B0A09u);
    EXPECT_EQ(port->Fetch(10, 4, &value, done), llk::kNoCapacity);
    EXPECT_EQ(port->Store(0, 4, &value, done), llk::kNotImplemented);
    EXPECT_TRUE(cPseudoPort::New(1, &block, false)->IsWriteable());
    EXPECT_EQ(cPseudoPort::New(1, nullptr, false), nullptr);
}

} // namespace
