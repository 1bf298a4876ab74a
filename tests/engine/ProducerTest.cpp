// Loading producers: the full simulator, and variants that each lack a piece.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "engine/Aggregate.h"
#include "engine/Producer.h"
#include "kit/AutoreleasePool.h"

using namespace tvk;

namespace {

std::string Variant(const char* aName) {
    return std::string(TAVIK_SIM_VARIANTS) + "/" + aName;
}

std::string Text(cProducer* aProducer, gc::TL_INFO_CMD aCommand) {
    char text[64] = {};
    size_t size = sizeof(text);
    gc::INFO_DATATYPE type = 0;
    return aProducer->Info(aCommand, &type, text, &size, nullptr) ? text : "";
}

class ProducerTest : public ::testing::Test {
protected:
    void SetUp() override { unsetenv("TAVIK_SIM_CONFIG"); }
    llk::uAutoreleasePool mPool;
};

TEST_F(ProducerTest, FullProducerLoadsWithItsExtensions) {
    cProducer* producer = cProducer::New(TAVIK_SIM_PRODUCER);
    ASSERT_NE(producer, nullptr);
    EXPECT_TRUE(producer->IsQRX());
    EXPECT_TRUE(producer->HasUnion());
    EXPECT_NE(producer->System(), nullptr);
    EXPECT_EQ(Text(producer, gc::TL_INFO_TLTYPE), "GEV");

    // Statuses pass through unchanged; a null aError is fine.
    gc::GC_ERROR error = 0;
    gc::IF_HANDLE interface = nullptr;
    EXPECT_FALSE(producer->InterfaceOpen("NoSuchInterface", &interface, &error));
    EXPECT_EQ(error, gc::GC_ERR_INVALID_ID);
    EXPECT_FALSE(producer->InterfaceOpen("NoSuchInterface", &interface, nullptr));
    EXPECT_TRUE(producer->InterfacesUpdate(nullptr, 100, &error));
    EXPECT_EQ(producer->InterfacesCount(&error), 2u);
    gc::UNION_HANDLE group = nullptr;
    EXPECT_TRUE(producer->UnionCreate(&group, &error));
    EXPECT_TRUE(producer->UnionDelete(group, &error));
}

TEST_F(ProducerTest, StandardOnlyProducerGetsTheFallbacks) {
    cProducer* producer = cProducer::New(Variant("TavikSimStandard.cti").c_str());
    ASSERT_NE(producer, nullptr);
    EXPECT_FALSE(producer->IsQRX());
    EXPECT_FALSE(producer->HasUnion());
    gc::GC_ERROR error = 0;
    gc::UNION_HANDLE group = nullptr;
    EXPECT_FALSE(producer->UnionCreate(&group, &error));
    EXPECT_EQ(error, gc::GC_ERR_NOT_IMPLEMENTED);

    // Announce-and-queue and info-and-revoke work without the extensions.
    ASSERT_TRUE(producer->InterfacesUpdate(nullptr, 0, &error));
    char id[64];
    size_t size = sizeof(id);
    ASSERT_TRUE(producer->InterfacesAtIndex(0, id, &size, &error));
    gc::IF_HANDLE interface = nullptr;
    ASSERT_TRUE(producer->InterfaceOpen(id, &interface, &error));
    ASSERT_TRUE(producer->InterfaceUpdate(interface, nullptr, 0, &error));
    size = sizeof(id);
    ASSERT_TRUE(producer->InterfaceGetSerial(interface, 0, id, &size, &error));
    gc::DEV_HANDLE device = nullptr;
    ASSERT_TRUE(producer->DeviceOpen(interface, id, gc::DEVICE_ACCESS_CONTROL, &device, &error));
    gc::DS_HANDLE stream = nullptr;
    ASSERT_TRUE(producer->StreamOpen(device, "Stream0", &stream, &error));
    std::vector<uint8_t> memory(640 * 480);
    gc::BUFFER_HANDLE buffer = nullptr;
    ASSERT_TRUE(producer->StreamBufferDeclareAndEnqueue(stream, memory.data(), memory.size(),
                                                        nullptr, &buffer, &error));
    gc::bool8_t queued = 0;
    gc::INFO_DATATYPE type = 0;
    size = sizeof(queued);
    ASSERT_TRUE(producer->StreamBufferGetInfo(stream, buffer, gc::BUFFER_INFO_IS_QUEUED, &type,
                                              &queued, &size, &error));
    EXPECT_TRUE(queued);
    ASSERT_TRUE(producer->StreamBufferDequeue(stream, gc::ACQ_QUEUE_ALL_DISCARD, &error));
    gc::S_BUFFER_INFO_BUNDLE bundle{};
    EXPECT_TRUE(producer->StreamBufferGetInfoAndDismiss(stream, buffer, &bundle, &error));
    EXPECT_FALSE(producer->StreamBufferDismiss(stream, buffer, nullptr, nullptr, &error)); // gone
    EXPECT_EQ(error, gc::GC_ERR_INVALID_HANDLE);
    producer->DeviceClose(device, nullptr);
}

TEST_F(ProducerTest, ProducersLackingWhatTheLoaderNeedsAreRefused) {
    EXPECT_EQ(cProducer::New(Variant("TavikSimNoPort.cti").c_str()), nullptr);
    EXPECT_EQ(cProducer::New(Variant("TavikSimNoOpen.cti").c_str()), nullptr);
    EXPECT_EQ(cProducer::New("/no/such/producer.cti"), nullptr);
    auto text = std::filesystem::temp_directory_path() /
                ("tavik-not-a-library-" + std::to_string(getpid()) + ".cti");
    std::ofstream(text) << "not a shared library";
    EXPECT_EQ(cProducer::New(text.c_str()), nullptr);
    std::filesystem::remove(text);
}

TEST_F(ProducerTest, OptionalPiecesMayBeMissing) {
    cProducer* noChunks = cProducer::New(Variant("TavikSimNoChunks.cti").c_str());
    ASSERT_NE(noChunks, nullptr);
    gc::GC_ERROR error = 0;
    size_t count = 0;
    EXPECT_FALSE(noChunks->StreamBufferGetChunks(nullptr, nullptr, nullptr, &count, &error));
    EXPECT_EQ(error, gc::GC_ERR_NOT_IMPLEMENTED);
    // A producer with TLClose but no GCCloseLib loads, and unloads without either.
    cProducer* noCloseLib =
        llk::Retained(cProducer::New(Variant("TavikSimNoCloseLib.cti").c_str()));
    ASSERT_NE(noCloseLib, nullptr);
    noCloseLib->Release();
}

} // namespace

namespace {

TEST(AggregateTest, TransportKindComesFromTheProducersTypeText) {
    llk::uAutoreleasePool pool;
    namespace fs = std::filesystem;
    auto config =
        fs::temp_directory_path() / ("tavik-aggregate-" + std::to_string(getpid()) + ".xml");
    for (auto [text, kind] : {std::pair<const char*, int>{"GEV", kInterfaceEthernet},
                              {"USB3", kInterfaceUsb},
                              {"IIDC", kInterfaceFirewire},
                              {"Mixed", -1}}) {
        std::ofstream(config) << "<TavikSim tlType=\"" << text << "\"/>";
        setenv("TAVIK_SIM_CONFIG", config.c_str(), 1);
        cAggregate* aggregate = llk::Retained(cAggregate::New(TAVIK_SIM_PRODUCER, nullptr));
        if (kind < 0) {
            EXPECT_EQ(aggregate, nullptr) << text;
        } else {
            ASSERT_NE(aggregate, nullptr) << text;
            EXPECT_EQ(aggregate->Type(), kind);
            EXPECT_NE(aggregate->Producer(), nullptr);
            aggregate->Release();
        }
        pool.Sink();
    }
    unsetenv("TAVIK_SIM_CONFIG");
    fs::remove(config);
    EXPECT_EQ(cAggregate::New(Variant("TavikSimNoOpen.cti").c_str(), nullptr), nullptr);
}

} // namespace
