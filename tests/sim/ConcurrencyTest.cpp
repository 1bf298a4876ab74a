// Several consumer threads calling the producer at once, as an engine with
// many actors and listeners does. Opens that race must give each module to
// one thread only; the thread sanitizer build checks the rest.
#include <atomic>
#include <thread>

#include "SimFixture.h"

using namespace test;

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 200;

TEST_F(SimulatorTest, ConcurrentConsumersOpenEachModuleOnceAtATime) {
    std::vector<std::string> interfaces = InterfaceIds();
    ASSERT_GE(interfaces.size(), 2u);
    ASSERT_EQ(mGenTL->TLOpenInterface(mTL, interfaces[0].c_str(), &mInterface), GC_ERR_SUCCESS);
    const std::string camera = DeviceIds(mInterface).at(0);
    std::atomic<int> interfaceHolders{0}, deviceHolders{0}, streamHolders{0}, overlaps{0};
    auto hold = [&](std::atomic<int>& aHolders) {
        if (aHolders.fetch_add(1) != 0) ++overlaps;
    };

    auto consumer = [&] {
        for (int round = 0; round < kRounds; ++round) {
            char text[64];
            size_t size = sizeof(text);
            INFO_DATATYPE type = 0;
            mGenTL->GCGetInfo(TL_INFO_TLTYPE, &type, text, &size);
            bool8_t changed = 0;
            mGenTL->TLUpdateInterfaceList(mTL, &changed, 0);
            uint32_t count = 0;
            mGenTL->TLGetNumInterfaces(mTL, &count);
            IF_HANDLE second = nullptr;
            if (mGenTL->TLOpenInterface(mTL, interfaces[1].c_str(), &second) == GC_ERR_SUCCESS) {
                hold(interfaceHolders);
                size = sizeof(text);
                mGenTL->IFGetInfo(second, INTERFACE_INFO_ID, &type, text, &size);
                --interfaceHolders;
                mGenTL->IFClose(second);
            }
            mGenTL->IFUpdateDeviceList(mInterface, &changed, 0);
            int32_t access = 0;
            size = sizeof(access);
            mGenTL->IFGetDeviceInfo(mInterface, camera.c_str(), DEVICE_INFO_ACCESS_STATUS, &type,
                                    &access, &size);
            // The interface's own port: its selected camera's access status.
            size = sizeof(access);
            mGenTL->GCReadPort(mInterface, 0x01A0, &access, &size);
            DEV_HANDLE device = nullptr;
            if (mGenTL->IFOpenDevice(mInterface, camera.c_str(), DEVICE_ACCESS_CONTROL, &device) !=
                GC_ERR_SUCCESS)
                continue;
            hold(deviceHolders);
            PORT_HANDLE port = nullptr;
            uint32_t width = 0;
            size = sizeof(width);
            if (mGenTL->DevGetPort(device, &port) == GC_ERR_SUCCESS)
                mGenTL->GCReadPort(port, 0x1000, &width, &size);
            DS_HANDLE stream = nullptr;
            if (mGenTL->DevOpenDataStream(device, "Stream0", &stream) == GC_ERR_SUCCESS) {
                hold(streamHolders);
                size_t announced = 0;
                size = sizeof(announced);
                mGenTL->DSGetInfo(stream, STREAM_INFO_NUM_ANNOUNCED, &type, &announced, &size);
                --streamHolders;
                mGenTL->DSClose(stream);
            }
            --deviceHolders;
            mGenTL->DevClose(device);
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back(consumer);
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(overlaps.load(), 0);
}

TEST_F(SimulatorTest, FramesFlowWhileOtherThreadsQueryAndAReaderIsUnregistered) {
    OpenFirstCamera();
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    double noLimit = 0.0;
    size_t eight = 8;
    ASSERT_EQ(mGenTL->GCWritePort(mPort, 0x1028, &noLimit, &eight), GC_ERR_SUCCESS);
    GrabOne(stream);
    ASSERT_EQ(mGenTL->DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT), GC_ERR_SUCCESS);
    ASSERT_EQ(mGenTL->DSQueueBuffer(stream, mBuffer), GC_ERR_SUCCESS);
    ASSERT_EQ(mGenTL->DSStartAcquisition(stream, ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE),
              GC_ERR_SUCCESS);

    std::atomic<bool> done{false};
    std::atomic<int> frames{0};
    std::thread reader([&] {
        // Reads until the event is unregistered under it.
        for (;;) {
            EVENT_NEW_BUFFER_DATA data{};
            size_t size = sizeof(data);
            if (mGenTL->EventGetData(mNewBuffer, &data, &size, GENTL_INFINITE) != GC_ERR_SUCCESS)
                return;
            ++frames;
            mGenTL->DSQueueBuffer(stream, data.BufferHandle);
        }
    });
    std::vector<std::thread> pollers;
    for (int i = 0; i < kThreads - 1; ++i)
        pollers.emplace_back([&] {
            while (!done) {
                uint64_t delivered = 0, id = 0;
                size_t size = sizeof(delivered);
                INFO_DATATYPE type = 0;
                mGenTL->DSGetInfo(stream, STREAM_INFO_NUM_DELIVERED, &type, &delivered, &size);
                size = sizeof(id);
                mGenTL->DSGetBufferInfo(stream, mBuffer, BUFFER_INFO_FRAMEID, &type, &id, &size);
                uint32_t counter = 0;
                size = sizeof(counter);
                mGenTL->GCReadPort(mPort, 0x104C, &counter, &size);
                // The stream's own port: its delivered frames.
                size = sizeof(delivered);
                mGenTL->GCReadPort(stream, 0x0068, &delivered, &size);
            }
        });
    while (frames < 50)
        std::this_thread::yield();
    EXPECT_EQ(mGenTL->GCUnregisterEvent(stream, EVENT_NEW_BUFFER), GC_ERR_SUCCESS);
    reader.join();
    done = true;
    for (std::thread& t : pollers)
        t.join();
    WriteU32(0x1024, 1);
    EXPECT_EQ(mGenTL->DSStopAcquisition(stream, ACQ_STOP_FLAGS_DEFAULT), GC_ERR_SUCCESS);
    EXPECT_EQ(mGenTL->DSClose(stream), GC_ERR_SUCCESS);
}

} // namespace
