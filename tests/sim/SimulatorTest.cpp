// The simulator as any GenTL consumer sees it: topology, documents, frames,
// events, faults and plugging, through standard calls only.
#include <gtest/gtest.h>

#include <zlib.h>

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "SimFixture.h"

using namespace test;

namespace {

TEST_F(SimulatorTest, DefaultTopologyHasTwoGigEInterfacesAndThreeCameras) {
    std::string type = mGenTL->Text([&](char* b, size_t* s) {
        INFO_DATATYPE t;
        return mGenTL->GCGetInfo(TL_INFO_TLTYPE, &t, b, s);
    });
    EXPECT_EQ(type, "GEV");
    std::vector<std::string> interfaces = InterfaceIds();
    ASSERT_EQ(interfaces.size(), 2u);
    std::vector<std::string> kinds;
    size_t cameras = 0;
    for (const std::string& id : interfaces) {
        kinds.push_back(mGenTL->Text([&](char* b, size_t* s) {
            INFO_DATATYPE t;
            return mGenTL->TLGetInterfaceInfo(mTL, id.c_str(), INTERFACE_INFO_TLTYPE, &t, b, s);
        }));
        IF_HANDLE handle = nullptr;
        ASSERT_EQ(mGenTL->TLOpenInterface(mTL, id.c_str(), &handle), GC_ERR_SUCCESS);
        for (const std::string& device : DeviceIds(handle)) {
            ++cameras;
            std::string serial = mGenTL->Text([&](char* b, size_t* s) {
                INFO_DATATYPE t;
                return mGenTL->IFGetDeviceInfo(handle, device.c_str(), DEVICE_INFO_SERIAL_NUMBER,
                                               &t, b, s);
            });
            EXPECT_FALSE(serial.empty());
        }
        mGenTL->IFClose(handle);
    }
    EXPECT_EQ(kinds, std::vector<std::string>({"GEV", "GEV"}));
    EXPECT_EQ(cameras, 3u);
}

TEST_F(SimulatorTest, DocumentIsServedThroughThePortAndCarriesItsFeatures) {
    OpenFirstCamera();
    std::string name;
    std::vector<uint8_t> document = FetchDocument(&name);
    EXPECT_EQ(name, "TavikSim.xml");
    std::string text(document.begin(), document.end());
    EXPECT_EQ(text.rfind("<?xml", 0), 0u);
    for (const char* node : {"<Integer ", "<Float ", "<Enumeration ", "<Boolean ", "<Command ",
                             "<StringReg ", "<Register ", "<MaskedIntReg ", "<StructReg ",
                             "<SwissKnife ", "<IntSwissKnife ", "<Converter ", "<IntConverter ",
                             "<pSelected>", "<pInvalidator>", "<ChunkID>", "<EventID>"})
        EXPECT_NE(text.find(node), std::string::npos) << node;
    // The register space behind it answers the document's addresses.
    EXPECT_EQ(ReadU32(0x1000), 640u);
    EXPECT_EQ(ReadU32(0x1014), 640u * 480u); // PayloadSize follows Width
    WriteU32(0x1000, 320);
    EXPECT_EQ(ReadU32(0x1014), 320u * 480u);
    char vendor[32] = {};
    size_t size = sizeof(vendor);
    ASSERT_EQ(mGenTL->GCReadPort(mPort, 0x0048, vendor, &size), GC_ERR_SUCCESS);
    EXPECT_STREQ(vendor, "Tavik");
    uint8_t byte = 0;
    size = 1;
    EXPECT_EQ(mGenTL->GCReadPort(mPort, 0x10000000, &byte, &size), GC_ERR_INVALID_ADDRESS);
}

TEST_F(SimulatorTest, ReadOnlyRegistersAndTheDocumentRefuseWrites) {
    OpenFirstCamera();
    const uint32_t payload = ReadU32(0x1014);
    auto write = [&](uint64_t aAddress, uint32_t aValue) {
        size_t size = sizeof(aValue);
        return mGenTL->GCWritePort(mPort, aAddress, &aValue, &size);
    };
    // SensorWidth, SensorHeight, PayloadSize, FrameCounter, the vendor name.
    for (uint64_t address : {0x1018u, 0x101Cu, 0x1014u, 0x104Cu, 0x0048u})
        EXPECT_EQ(write(address, 12345), GC_ERR_ACCESS_DENIED) << std::hex << address;
    EXPECT_EQ(ReadU32(0x1018), 1280u);
    EXPECT_EQ(ReadU32(0x1014), payload);
    // A write that reaches into a read-only register is refused whole.
    uint32_t both[2] = {320, 1};
    size_t size = sizeof(both);
    EXPECT_EQ(mGenTL->GCWritePort(mPort, 0x1010, both, &size), GC_ERR_ACCESS_DENIED);
    EXPECT_EQ(ReadU32(0x1010), 0x01080001u);
    // Stacked writes stop at the refused one.
    uint32_t width = 320, sensor = 1;
    PORT_REGISTER_STACK_ENTRY entries[2] = {{0x1000, &width, 4}, {0x1018, &sensor, 4}};
    size_t count = 2;
    EXPECT_EQ(mGenTL->GCWritePortStacked(mPort, entries, &count), GC_ERR_ACCESS_DENIED);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(ReadU32(0x1000), 320u);
    // The document's space.
    uint64_t address = 0;
    size = sizeof(address);
    INFO_DATATYPE type = 0;
    ASSERT_EQ(
        mGenTL->GCGetPortURLInfo(mPort, 0, URL_INFO_FILE_REGISTER_ADDRESS, &type, &address, &size),
        GC_ERR_SUCCESS);
    EXPECT_EQ(write(address, 0), GC_ERR_ACCESS_DENIED);
    EXPECT_EQ(FetchDocument()[0], '<');
}

TEST_F(SimulatorTest, ThousandFramesCarryThePatternAndConsecutiveCounters) {
    OpenFirstCamera();
    std::string streamId = mGenTL->Text(
        [&](char* b, size_t* s) { return mGenTL->DevGetDataStreamID(mDevice, 0, b, s); });
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, streamId.c_str(), &stream), GC_ERR_SUCCESS);
    double noLimit = 0.0;
    size_t eight = 8;
    ASSERT_EQ(mGenTL->GCWritePort(mPort, 0x1028, &noLimit, &eight), GC_ERR_SUCCESS);
    size_t payload = 0, size = sizeof(payload);
    INFO_DATATYPE type;
    ASSERT_EQ(mGenTL->DSGetInfo(stream, STREAM_INFO_PAYLOAD_SIZE, &type, &payload, &size),
              GC_ERR_SUCCESS);
    ASSERT_EQ(payload, 640u * 480u);

    std::vector<std::vector<uint8_t>> memory(4, std::vector<uint8_t>(payload));
    std::vector<BUFFER_HANDLE> buffers(4);
    for (size_t i = 0; i < 4; ++i) {
        ASSERT_EQ(
            mGenTL->DSAnnounceBuffer(stream, memory[i].data(), payload, &memory[i], &buffers[i]),
            GC_ERR_SUCCESS);
        ASSERT_EQ(mGenTL->DSQueueBuffer(stream, buffers[i]), GC_ERR_SUCCESS);
    }
    EVENT_HANDLE event = nullptr;
    ASSERT_EQ(mGenTL->GCRegisterEvent(stream, EVENT_NEW_BUFFER, &event), GC_ERR_SUCCESS);
    ASSERT_EQ(mGenTL->DSStartAcquisition(stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE),
              GC_ERR_SUCCESS);
    WriteU32(0x1020, 1); // AcquisitionStart

    uint64_t previous = 0;
    int wrongPixels = 0;
    for (int frame = 0; frame < 1000; ++frame) {
        EVENT_NEW_BUFFER_DATA data{};
        size_t dataSize = sizeof(data);
        ASSERT_EQ(mGenTL->EventGetData(event, &data, &dataSize, 5000), GC_ERR_SUCCESS) << frame;
        auto* bytes = static_cast<std::vector<uint8_t>*>(data.pUserPointer)->data();
        uint64_t id = 0, stamped = 0;
        size = sizeof(id);
        ASSERT_EQ(mGenTL->DSGetBufferInfo(stream, data.BufferHandle, BUFFER_INFO_FRAMEID, &type,
                                          &id, &size),
                  GC_ERR_SUCCESS);
        memcpy(&stamped, bytes, 8);
        EXPECT_EQ(stamped, id);
        if (previous) {
            EXPECT_EQ(id, previous + 1);
        }
        previous = id;
        // Sample rows across the frame against v = x + y + n.
        for (uint32_t y : {0u, 1u, 239u, 479u})
            for (uint32_t x : {8u, 100u, 639u})
                if (y > 0 || x >= 8)
                    wrongPixels += bytes[y * 640 + x] != static_cast<uint8_t>(x + y + id);
        ASSERT_EQ(mGenTL->DSQueueBuffer(stream, data.BufferHandle), GC_ERR_SUCCESS);
    }
    EXPECT_EQ(wrongPixels, 0);
    WriteU32(0x1024, 1); // AcquisitionStop
    EXPECT_EQ(mGenTL->DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT), GC_ERR_SUCCESS);
    EXPECT_EQ(mGenTL->DSFlushQueue(stream, ACQ_QUEUE_ALL_DISCARD), GC_ERR_SUCCESS);
    for (BUFFER_HANDLE b : buffers)
        EXPECT_EQ(mGenTL->DSRevokeBuffer(stream, b, nullptr, nullptr), GC_ERR_SUCCESS);
    EXPECT_EQ(mGenTL->GCUnregisterEvent(stream, EVENT_NEW_BUFFER), GC_ERR_SUCCESS);
    EXPECT_EQ(mGenTL->DSClose(stream), GC_ERR_SUCCESS);
}

TEST_F(SimulatorTest, InjectedFaultsAndUnpluggedCamerasFailAsTold) {
    auto control = reinterpret_cast<TavikSimControl_t>(mGenTL->Symbol("TavikSimControl"));
    ASSERT_NE(control, nullptr);
    OpenFirstCamera();
    EXPECT_EQ(control("fail GCReadPort -1010 1"), 0);
    uint32_t value = 0;
    size_t size = 4;
    EXPECT_EQ(mGenTL->GCReadPort(mPort, 0x1000, &value, &size), GC_ERR_IO);
    EXPECT_EQ(mGenTL->GCReadPort(mPort, 0x1000, &value, &size), GC_ERR_SUCCESS);
    EXPECT_EQ(control("no such command"), -1);

    std::vector<std::string> before = DeviceIds(mInterface);
    EXPECT_EQ(control(("unplug " + before[1]).c_str()), 0);
    bool8_t changed = 0;
    ASSERT_EQ(mGenTL->IFUpdateDeviceList(mInterface, &changed, 100), GC_ERR_SUCCESS);
    EXPECT_TRUE(changed);
    EXPECT_EQ(DeviceIds(mInterface).size(), before.size() - 1);
    EXPECT_EQ(control(("plug " + before[1]).c_str()), 0);
    EXPECT_EQ(DeviceIds(mInterface), before);
    // A second open of an open camera is refused.
    DEV_HANDLE again = nullptr;
    EXPECT_EQ(mGenTL->IFOpenDevice(mInterface, before[0].c_str(), DEVICE_ACCESS_CONTROL, &again),
              GC_ERR_RESOURCE_IN_USE);
}

TEST_F(SimulatorTest, IncompleteAndTooSmallBuffersAreReported) {
    auto control = reinterpret_cast<TavikSimControl_t>(mGenTL->Symbol("TavikSimControl"));
    OpenFirstCamera();
    std::string camera = DeviceIds(mInterface)[0];
    WriteU32(0x1048, 1); // ChunkModeActive
    const size_t payload = ReadU32(0x1014);
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    std::vector<uint8_t> big(payload), small(1000);
    BUFFER_HANDLE bigBuffer = nullptr, smallBuffer = nullptr;
    ASSERT_EQ(mGenTL->DSAnnounceBuffer(stream, big.data(), big.size(), nullptr, &bigBuffer),
              GC_ERR_SUCCESS);
    ASSERT_EQ(mGenTL->DSAnnounceBuffer(stream, small.data(), small.size(), nullptr, &smallBuffer),
              GC_ERR_SUCCESS);
    EVENT_HANDLE event = nullptr;
    ASSERT_EQ(mGenTL->GCRegisterEvent(stream, EVENT_NEW_BUFFER, &event), GC_ERR_SUCCESS);
    ASSERT_EQ(control(("incomplete " + camera + " 1").c_str()), 0);
    ASSERT_EQ(mGenTL->DSQueueBuffer(stream, bigBuffer), GC_ERR_SUCCESS);
    ASSERT_EQ(mGenTL->DSQueueBuffer(stream, smallBuffer), GC_ERR_SUCCESS);
    ASSERT_EQ(mGenTL->DSStartAcquisition(stream, ACQ_START_FLAGS_DEFAULT, 3), GC_ERR_SUCCESS);
    WriteU32(0x1020, 1);
    auto next = [&] {
        EVENT_NEW_BUFFER_DATA data{};
        size_t size = sizeof(data);
        EXPECT_EQ(mGenTL->EventGetData(event, &data, &size, 5000), GC_ERR_SUCCESS);
        S_BUFFER_INFO_BUNDLE bundle{};
        size = sizeof(bundle);
        INFO_DATATYPE type;
        EXPECT_EQ(mGenTL->DSGetBufferInfo(stream, data.BufferHandle, BUFFER_INFO_BUNDLE_QRX, &type,
                                          &bundle, &size),
                  GC_ERR_SUCCESS);
        return std::make_pair(data.BufferHandle, bundle);
    };
    // The bundle is packed: its fields are copied out before use.
    auto [first, incomplete] = next();
    EXPECT_EQ(first, bigBuffer);
    int32_t status = incomplete.Status;
    EXPECT_NE(status, 0);
    auto [second, tooSmall] = next();
    EXPECT_EQ(second, smallBuffer);
    status = tooSmall.Status;
    EXPECT_EQ(status, GC_ERR_BUFFER_TOO_SMALL_QRX);
    ASSERT_EQ(mGenTL->DSQueueBuffer(stream, bigBuffer), GC_ERR_SUCCESS);
    auto [third, complete] = next();
    const int32_t completeStatus = complete.Status;
    const uint32_t width = complete.Width;
    const uint64_t format = complete.PixelFormat;
    EXPECT_EQ(third, bigBuffer);
    EXPECT_EQ(completeStatus, 0);
    EXPECT_EQ(width, 640u);
    EXPECT_EQ(format, 0x01080001u);
    EXPECT_EQ(mGenTL->DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT), GC_ERR_SUCCESS);
    EXPECT_EQ(mGenTL->DSClose(stream), GC_ERR_SUCCESS);
}

TEST(SimulatorConfigTest, ConfigurationNamesTopologyFormatsAndZippedDocuments) {
    namespace fs = std::filesystem;
    fs::path dir = fs::temp_directory_path() / ("tavik-sim-" + std::to_string(getpid()));
    fs::create_directories(dir);
    std::ofstream(dir / "sim.xml") << R"(<TavikSim tlType="USB3">
  <Interface id="IF-A" type="U3V">
    <Camera id="CamZ" serial="Z1" pixelFormat="BayerRG12Packed" width="64" height="4" zip="true"/>
  </Interface>
</TavikSim>)";
    setenv("TAVIK_SIM_CONFIG", (dir / "sim.xml").c_str(), 1);
    {
        GenTL gentl(TAVIK_SIM_PRODUCER);
        ASSERT_EQ(gentl.GCInitLib(), GC_ERR_SUCCESS);
        TL_HANDLE tl = nullptr;
        ASSERT_EQ(gentl.TLOpen(&tl), GC_ERR_SUCCESS);
        ASSERT_EQ(gentl.TLUpdateInterfaceList(tl, nullptr, 0), GC_ERR_SUCCESS);
        IF_HANDLE interface = nullptr;
        ASSERT_EQ(gentl.TLOpenInterface(tl, "IF-A", &interface), GC_ERR_SUCCESS);
        ASSERT_EQ(gentl.IFUpdateDeviceList(interface, nullptr, 0), GC_ERR_SUCCESS);
        DEV_HANDLE device = nullptr;
        ASSERT_EQ(gentl.IFOpenDevice(interface, "CamZ", DEVICE_ACCESS_CONTROL, &device),
                  GC_ERR_SUCCESS);
        PORT_HANDLE port = nullptr;
        ASSERT_EQ(gentl.DevGetPort(device, &port), GC_ERR_SUCCESS);
        uint32_t format = 0;
        size_t size = 4;
        ASSERT_EQ(gentl.GCReadPort(port, 0x1010, &format, &size), GC_ERR_SUCCESS);
        EXPECT_EQ(format, 0x010C002Bu);
        // The zipped document inflates back to the text.
        uint64_t address = 0;
        uint32_t length = 0;
        INFO_DATATYPE type;
        size = sizeof(address);
        ASSERT_EQ(
            gentl.GCGetPortURLInfo(port, 0, URL_INFO_DOCUMENT_ADDRESS_QRX, &type, &address, &size),
            GC_ERR_SUCCESS);
        size = sizeof(length);
        ASSERT_EQ(
            gentl.GCGetPortURLInfo(port, 0, URL_INFO_DOCUMENT_SIZE_QRX, &type, &length, &size),
            GC_ERR_SUCCESS);
        std::vector<uint8_t> zip(length);
        size = length;
        ASSERT_EQ(gentl.GCReadPort(port, address, zip.data(), &size), GC_ERR_SUCCESS);
        ASSERT_GE(zip.size(), 30u);
        EXPECT_EQ(zip[0], 'P');
        EXPECT_EQ(zip[1], 'K');
        uint16_t nameLength = static_cast<uint16_t>(zip[26] | (zip[27] << 8));
        uint32_t packed =
            zip[18] | (zip[19] << 8) | (zip[20] << 16) | (static_cast<uint32_t>(zip[21]) << 24);
        uint32_t plain =
            zip[22] | (zip[23] << 8) | (zip[24] << 16) | (static_cast<uint32_t>(zip[25]) << 24);
        std::vector<uint8_t> text(plain);
        z_stream stream{};
        inflateInit2(&stream, -15);
        stream.next_in = zip.data() + 30 + nameLength;
        stream.avail_in = packed;
        stream.next_out = text.data();
        stream.avail_out = plain;
        EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
        inflateEnd(&stream);
        EXPECT_EQ(std::string(text.begin(), text.begin() + 5), "<?xml");
        gentl.DevClose(device);
        gentl.TLClose(tl);
        gentl.GCCloseLib();
    }
    unsetenv("TAVIK_SIM_CONFIG");
    fs::remove_all(dir);
}

} // namespace
