// The simulator's documents as a GenICam consumer uses them: loaded into
// Tavik's feature kernel over the producer's own ports, reading and writing
// features, and reading chunk data through the documents' chunk ports.
#include <arpa/inet.h>

#include <map>
#include <set>
#include <type_traits>

#include "SimFixture.h"
#include "engine/BuiltinDocuments.h"
#include "gik/MemoryPort.h"
#include "gik/Node.h"
#include "gik/Port.h"
#include "gik/Runtime.h"
#include "gik/Value.h"
#include "kit/AutoreleasePool.h"
#include "kit/ObjectList.h"

using namespace test;

namespace {

// A GenTL port as the kernel's address space, through standard calls only.
class cGenTLPort : public gik::pPort {
public:
    static cGenTLPort* New(GenTL* aGenTL, PORT_HANDLE aHandle) {
        return Make<cGenTLPort>(aGenTL, aHandle);
    }
    llk::i4 Initialize(GenTL* aGenTL, PORT_HANDLE aHandle) {
        mGenTL = aGenTL;
        mHandle = aHandle;
        return 0;
    }
    bool IsWriteable() override { return true; }
    llk::i4 Fetch(llk::u8 aAddress, llk::u4 aLength, void* aBuffer, llk::u4& aFetched) override {
        size_t size = aLength;
        GC_ERROR status = mGenTL->GCReadPort(mHandle, aAddress, aBuffer, &size);
        aFetched = status == GC_ERR_SUCCESS ? aLength : 0;
        return status;
    }
    llk::i4 Store(llk::u8 aAddress, llk::u4 aLength, const void* aBuffer,
                  llk::u4& aStored) override {
        size_t size = aLength;
        GC_ERROR status = mGenTL->GCWritePort(mHandle, aAddress, aBuffer, &size);
        aStored = status == GC_ERR_SUCCESS ? aLength : 0;
        return status;
    }
    llk::i4 QueryXML(void*, llk::u4, llk::u4&, llk::u4, llk::u4) override { return 8; }
    llk::i4 FetchXML(void*, llk::u4, llk::u4&, llk::u4) override { return 8; }

private:
    GenTL* mGenTL = nullptr;
    PORT_HANDLE mHandle = nullptr;
};

class DocumentsTest : public SimulatorTest {
protected:
    void TearDown() override {
        for (gik::cRuntime* runtime : mRuntimes)
            runtime->Release();
        mPool.Sink();
        SimulatorTest::TearDown();
    }

    // The document a port's first URL names, read from the port at the
    // address and size the standard's URL infos give.
    std::string Document(PORT_HANDLE aPort) {
        uint64_t address = 0, length = 0;
        size_t size = sizeof(address);
        INFO_DATATYPE type = 0;
        EXPECT_EQ(mGenTL->GCGetPortURLInfo(aPort, 0, URL_INFO_FILE_REGISTER_ADDRESS, &type,
                                           &address, &size),
                  GC_ERR_SUCCESS);
        size = sizeof(length);
        EXPECT_EQ(mGenTL->GCGetPortURLInfo(aPort, 0, URL_INFO_FILE_SIZE, &type, &length, &size),
                  GC_ERR_SUCCESS);
        std::string text(length, '\0');
        size = length;
        EXPECT_EQ(mGenTL->GCReadPort(aPort, address, text.data(), &size), GC_ERR_SUCCESS);
        return text;
    }

    // A runtime with the documents of the given ports, in order, each port
    // attached under its name; other ports (chunk, event) as given; the
    // categories named hidden.
    gik::cRuntime* Load(const std::vector<std::pair<const char*, PORT_HANDLE>>& aPorts,
                        const std::map<std::string, gik::pPort*>& aOthers = {},
                        const std::vector<const char*>& aHidden = {}) {
        gik::cRuntime* runtime = llk::Retained(gik::cRuntime::New(false));
        mRuntimes.push_back(runtime);
        EXPECT_EQ(runtime->Prepare(), 0);
        for (const auto& [name, handle] : aPorts) {
            EXPECT_EQ(runtime->AttachPort(name, cGenTLPort::New(mGenTL.get(), handle)), 0);
            EXPECT_EQ(runtime->Process(Document(handle).c_str(), false, nullptr, false), 0) << name;
        }
        for (const auto& [name, port] : aOthers)
            EXPECT_EQ(runtime->AttachPort(name.c_str(), port), 0);
        for (const char* path : aHidden)
            runtime->HideAllNodes(path);
        EXPECT_EQ(runtime->Finalize(), 0);
        return runtime;
    }

    // A feature's value as a number, its text, or what kind it is.
    template <class T> static T Get(gik::cRuntime* aRuntime, const char* aName) {
        gik::cValue value;
        gik::pNode* node = aRuntime->SeekNode(aName, false);
        EXPECT_NE(node, nullptr) << aName;
        if (node) {
            EXPECT_EQ(node->GetValue(aRuntime, value, nullptr), 0) << aName;
        }
        if constexpr (std::is_same_v<T, double>) {
            return value.Real();
        } else if constexpr (std::is_same_v<T, std::string>) {
            const char* text = nullptr;
            return value.Get(text) && text ? std::string(text) : std::string("<none>");
        } else {
            return static_cast<T>(value.Sint());
        }
    }
    static void Set(gik::cRuntime* aRuntime, const char* aName, const gik::cValue& aValue) {
        gik::pNode* node = aRuntime->SeekNode(aName, false);
        ASSERT_NE(node, nullptr) << aName;
        aRuntime->ClearPoked();
        EXPECT_EQ(node->SetValue(aRuntime, &aValue, nullptr), 0) << aName;
    }

    // The features a consumer lists, each read once: their names, and those
    // that could not be read.
    struct tListed {
        std::set<std::string> names, unread;
    };
    static tListed ReadAll(gik::cRuntime* aRuntime) {
        tListed listed;
        llk::cObjectList* features = aRuntime->Nodes();
        for (llk::u4 i = 0; i < features->Count(); ++i) {
            auto* node = static_cast<gik::pNode*>(features->AtIndex(i));
            listed.names.insert(node->NameText());
            gik::cValue value;
            if (node->IsReadable(aRuntime) && node->GetValue(aRuntime, value, nullptr) != 0)
                listed.unread.insert(node->NameText());
        }
        return listed;
    }

    llk::uAutoreleasePool mPool;
    std::vector<gik::cRuntime*> mRuntimes;
};

// Copies aLength bytes of the buffer from aOffset into a port of its own.
cMemoryPort* ChunkPort(const std::vector<uint8_t>& aMemory, size_t aOffset, size_t aLength) {
    cMemoryPort* port = cMemoryPort::New(false);
    for (size_t i = 0; i < aLength; ++i)
        port->mBytes[i] = aMemory.at(aOffset + i);
    return port;
}

TEST_F(DocumentsTest, ChunkFeaturesReadTheFramesChunksAndTheEnginesBlock) {
    OpenFirstCamera();
    cMemoryPort* chunks = llk::Retained(cMemoryPort::New(false));
    gik::cRuntime* device = Load({{"Device", mPort}}, {{"ChunkPort", chunks}});
    gik::cValue on, selector, off;
    on.SetBool(true);
    off.SetBool(false);
    Set(device, "ChunkModeActive", on);
    selector.SetText("Gain");
    Set(device, "ChunkSelector", selector);
    Set(device, "ChunkEnable", off); // one chunk off leaves the others on
    gik::cValue userValue;
    userValue.SetSigned(42);
    Set(device, "UserValue", userValue);

    gik::cValue output;
    output.SetBool(true);
    Set(device, "UserOutput1", output);
    WriteU32(0x1090, 0x5); // input lines 0 and 2 high
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    GrabOne(stream);
    uint64_t frameId = 0;
    size_t size = sizeof(frameId);
    INFO_DATATYPE type = 0;
    ASSERT_EQ(mGenTL->DSGetBufferInfo(stream, mBuffer, BUFFER_INFO_FRAMEID, &type, &frameId, &size),
              GC_ERR_SUCCESS);
    SINGLE_CHUNK_DATA found[4];
    size_t count = 4;
    ASSERT_EQ(mGenTL->DSGetBufferChunkData(stream, mBuffer, found, &count), GC_ERR_SUCCESS);
    const SINGLE_CHUNK_DATA* sim = nullptr;
    for (size_t i = 0; i < count; ++i)
        if (found[i].ChunkID == 0x5A5A0001) sim = &found[i];
    ASSERT_NE(sim, nullptr);
    for (size_t i = 0; i < sim->ChunkLength; ++i)
        chunks->mBytes[i] = mMemory.at(sim->ChunkOffset + i);
    EXPECT_EQ(Get<uint64_t>(device, "ChunkFrameID"), frameId);
    EXPECT_EQ(Get<double>(device, "ChunkExposureTime"), 10000.0);

    // The engine's block: from the bundle's image size, its ancillary size.
    S_BUFFER_INFO_BUNDLE bundle{};
    size = sizeof(bundle);
    ASSERT_EQ(
        mGenTL->DSGetBufferInfo(stream, mBuffer, BUFFER_INFO_BUNDLE_QRX, &type, &bundle, &size),
        GC_ERR_SUCCESS);
    cMemoryPort* block = llk::Retained(ChunkPort(mMemory, bundle.ImageSize, bundle.AncillarySize));
    gik::cRuntime* ancillary = llk::Retained(gik::cRuntime::New(false));
    mRuntimes.push_back(ancillary);
    ASSERT_EQ(ancillary->Prepare(), 0);
    ASSERT_EQ(ancillary->AttachPort("ChunkPort", block), 0);
    ASSERT_EQ(ancillary->Process(tvk::g_XMLChunkData, false, nullptr, false), 0);
    ASSERT_EQ(ancillary->Finalize(), 0);
    EXPECT_EQ(Get<int64_t>(ancillary, "ChunkAcquisitionFrameCount"),
              Get<int64_t>(device, "FrameCounter"));
    EXPECT_EQ(Get<int64_t>(ancillary, "ChunkUserValue"), 42);
    EXPECT_EQ(Get<double>(ancillary, "ChunkExposureTime"), 10000.0);
    EXPECT_EQ(Get<int64_t>(ancillary, "ChunkSyncInLevels"), 0x5);
    EXPECT_EQ(Get<int64_t>(ancillary, "ChunkSyncOutLevels"), 0x2);
    StopAndClose(stream);
    chunks->Release();
    block->Release();
}

// What a module's port says it is: its module, port name and one URL.
void ExpectModulePort(GenTL& aGenTL, PORT_HANDLE aPort, const char* aModule, const char* aName) {
    INFO_DATATYPE type = 0;
    EXPECT_EQ(aGenTL.Text([&](char* b, size_t* s) {
        return aGenTL.GCGetPortInfo(aPort, PORT_INFO_MODULE, &type, b, s);
    }),
              aModule);
    EXPECT_EQ(aGenTL.Text([&](char* b, size_t* s) {
        return aGenTL.GCGetPortInfo(aPort, PORT_INFO_PORTNAME, &type, b, s);
    }),
              aName);
    uint32_t urls = 0;
    EXPECT_EQ(aGenTL.GCGetNumPortURLs(aPort, &urls), GC_ERR_SUCCESS);
    EXPECT_EQ(urls, 1u);
}

TEST_F(DocumentsTest, EveryModuleIsAPortWithADocumentOfItsOwn) {
    OpenFirstCamera();
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    ExpectModulePort(*mGenTL, mTL, "TLSystem", "TLPort");
    ExpectModulePort(*mGenTL, mInterface, "TLInterface", "InterfacePort");
    ExpectModulePort(*mGenTL, mDevice, "TLDevice", "DevicePort");
    ExpectModulePort(*mGenTL, stream, "TLDataStream", "StreamPort");
    gik::cValue one, text;
    one.SetSigned(1);

    gik::cRuntime* system = Load({{"TLPort", mTL}});
    EXPECT_TRUE(ReadAll(system).unread.empty());
    EXPECT_EQ(Get<std::string>(system, "TLVendorName"), "Tavik");
    EXPECT_EQ(Get<std::string>(system, "TLType"), "GigEVision");
    EXPECT_EQ(Get<int64_t>(system, "GenTLVersionMinor"), 5);
    Set(system, "InterfaceUpdateList", one);
    Set(system, "InterfaceSelector", one);
    EXPECT_EQ(Get<std::string>(system, "InterfaceID"), InterfaceIds()[1]);

    gik::cRuntime* interface = Load({{"InterfacePort", mInterface}});
    EXPECT_TRUE(ReadAll(interface).unread.empty());
    EXPECT_EQ(Get<std::string>(interface, "InterfaceType"), "GigEVision");
    Set(interface, "DeviceUpdateList", one);
    EXPECT_EQ(Get<std::string>(interface, "DeviceID"), DeviceIds(mInterface)[0]);
    EXPECT_EQ(Get<std::string>(interface, "DeviceVendorName"), "Tavik");
    EXPECT_EQ(Get<std::string>(interface, "DeviceAccessStatus"), "OpenReadWrite");
    Set(interface, "DeviceSelector", one);
    EXPECT_EQ(Get<std::string>(interface, "DeviceID"), DeviceIds(mInterface)[1]);
    EXPECT_EQ(Get<std::string>(interface, "DeviceAccessStatus"), "ReadWrite");
    text.SetText("Once");
    Set(interface, "DiscoveryMode", text);
    EXPECT_EQ(Get<std::string>(interface, "DiscoveryMode"), "Once");

    gik::cRuntime* device = Load({{"DevicePort", mDevice}});
    EXPECT_TRUE(ReadAll(device).unread.empty());
    EXPECT_EQ(Get<std::string>(device, "DeviceID"), DeviceIds(mInterface)[0]);
    EXPECT_EQ(Get<std::string>(device, "DeviceType"), "GigEVision");
    EXPECT_EQ(Get<std::string>(device, "StreamID"), "Stream0");
    // The camera's MAC, as its GigE Vision bootstrap registers have it (network order).
    const uint64_t mac = uint64_t{ntohl(ReadU32(0x0008))} << 32 | ntohl(ReadU32(0x000C));
    EXPECT_NE(mac, 0u);
    EXPECT_EQ(Get<uint64_t>(device, "GevDeviceMACAddress"), mac);

    gik::cRuntime* data = Load({{"StreamPort", stream}});
    EXPECT_TRUE(ReadAll(data).unread.empty());
    EXPECT_EQ(Get<std::string>(data, "StreamID"), "Stream0");
    EXPECT_EQ(Get<int64_t>(data, "StreamPayloadSize"), ReadU32(0x1014));
    EXPECT_EQ(Get<std::string>(data, "StreamType"), "GigEVision");
    EXPECT_EQ(Get<int64_t>(data, "DeviceReadOnlyOrStreaming"), 0);
    GrabOne(stream);
    EXPECT_EQ(Get<int64_t>(data, "StreamAnnouncedBufferCount"), 1);
    EXPECT_EQ(Get<int64_t>(data, "StreamDeliveredFrameCount"), 1);
    ASSERT_EQ(mGenTL->DSStartAcquisition(stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE),
              GC_ERR_SUCCESS);
    EXPECT_EQ(Get<int64_t>(data, "DeviceReadOnlyOrStreaming"), 1);
    StopAndClose(stream);
}

TEST_F(DocumentsTest, ModulePortsRefuseWritesToTheirDocumentAndToReadOnlyRegisters) {
    OpenFirstCamera();
    uint64_t address = 0;
    size_t size = sizeof(address);
    INFO_DATATYPE type = 0;
    ASSERT_EQ(mGenTL->GCGetPortURLInfo(mDevice, 0, URL_INFO_FILE_REGISTER_ADDRESS, &type, &address,
                                       &size),
              GC_ERR_SUCCESS);
    uint32_t value = 0;
    size = sizeof(value);
    EXPECT_EQ(mGenTL->GCWritePort(mDevice, address, &value, &size), GC_ERR_ACCESS_DENIED);
    size = sizeof(value);
    EXPECT_EQ(mGenTL->GCWritePort(mDevice, 0x0180, &value, &size), GC_ERR_ACCESS_DENIED);
    // Stacked reads of a module answer like plain ones.
    uint32_t type0 = 0, count = 0;
    PORT_REGISTER_STACK_ENTRY entries[2] = {{0x0180, &type0, 4}, {0x0194, &count, 4}};
    size_t n = 2;
    ASSERT_EQ(mGenTL->GCReadPortStacked(mDevice, entries, &n), GC_ERR_SUCCESS);
    EXPECT_EQ(n, 2u);
    EXPECT_EQ(type0, 2u); // GigEVision
    EXPECT_EQ(count, 1u); // one stream
}

// The engine's feature tree of a camera: the device module's, the remote
// device's and the stream's documents in one runtime, the modules'
// categories hidden. No module node may shadow a camera's feature.
TEST_F(DocumentsTest, ACamerasMergedTreeKeepsTheCamerasFeatures) {
    OpenFirstCamera();
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    gik::cRuntime* camera =
        Load({{"DevicePort", mDevice}, {"Device", mPort}, {"StreamPort", stream}}, {},
             {"/StreamModule", "/DeviceModule", "/DeviceInformation", "/StreamEnumeration"});
    const tListed all = ReadAll(camera);
    const std::set<std::string>& listed = all.names;
    // Only what needs a frame's chunk or an event's data, and the raw user data, is not read.
    for (const std::string& name : all.unread)
        EXPECT_TRUE(name.rfind("Chunk", 0) == 0 || name.rfind("Event", 0) == 0 ||
                    name == "UserData")
            << name;
    for (const char* feature : {"Width", "PayloadSize", "DeviceVendorName", "ChunkModeActive",
                                "ChunkSelector", "EventSelector", "GevSCPSPacketSize"})
        EXPECT_EQ(listed.count(feature), 1u) << feature;
    for (const char* module : {"DeviceID", "DeviceType", "StreamID", "StreamPayloadSize"})
        EXPECT_EQ(listed.count(module), 0u) << module;
    EXPECT_EQ(Get<int64_t>(camera, "PayloadSize"), ReadU32(0x1014));
    // What the engine's GigE Vision additions refer to.
    for (const char* node : {"GVSPPacketSizeMin", "GVSPPacketSizeMax", "RegGVSPPacketSize",
                             "DeviceReadOnlyOrStreaming", "TLParamsLocked", "EventExposureEnd"})
        EXPECT_NE(camera->SeekNode(node, false), nullptr) << node;
    gik::pNode* selector = camera->SeekNode("EventSelector", false);
    ASSERT_NE(selector, nullptr);
    EXPECT_STREQ(selector->GetPath()->Chars(), "/EventControl");
    gik::cValue size;
    size.SetSigned(1200);
    Set(camera, "RegGVSPPacketSize", size);
    EXPECT_EQ(Get<int64_t>(camera, "GevSCPSPacketSize"), 1200);
    EXPECT_EQ(mGenTL->DSClose(stream), GC_ERR_SUCCESS);
}

} // namespace
