// The simulator opened as any GenTL consumer opens it: transport layer,
// interfaces, a camera and its remote port, through standard calls only.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "GenTLConsumer.h"
#include "TavikSimControl.h"

namespace test {

// A configuration file named by TAVIK_SIM_CONFIG for as long as it lives.
class ScopedConfig {
public:
    explicit ScopedConfig(const std::string& aText) {
        unsetenv("TAVIK_SIM_CONFIG");
        if (aText.empty()) return;
        mPath = std::filesystem::temp_directory_path() /
                ("tavik-sim-" + std::to_string(getpid()) + ".xml");
        std::ofstream(mPath) << aText;
        setenv("TAVIK_SIM_CONFIG", mPath.c_str(), 1);
    }
    ~ScopedConfig() {
        unsetenv("TAVIK_SIM_CONFIG");
        if (!mPath.empty()) std::filesystem::remove(mPath);
    }

private:
    std::filesystem::path mPath;
};

class SimulatorTest : public ::testing::Test {
protected:
    // The configuration the producer is opened with; none gives the default topology.
    virtual std::string Configuration() { return {}; }

    void SetUp() override {
        unsetenv("TAVIK_SIM_CONFIG");
        mConfig = std::make_unique<ScopedConfig>(Configuration());
        mGenTL = std::make_unique<GenTL>(TAVIK_SIM_PRODUCER);
        ASSERT_NE(mGenTL->library, nullptr) << dlerror();
        // A consumer of version 1.5 refuses a producer that lacks one of its calls.
        ASSERT_TRUE(mGenTL->missing.empty()) << mGenTL->missing.front();
        ASSERT_EQ(mGenTL->GCInitLib(), GC_ERR_SUCCESS);
        ASSERT_EQ(mGenTL->TLOpen(&mTL), GC_ERR_SUCCESS);
    }
    void TearDown() override {
        if (mDevice) mGenTL->DevClose(mDevice);
        if (mTL) mGenTL->TLClose(mTL);
        mGenTL->GCCloseLib();
        mGenTL.reset();
        mConfig.reset();
    }

    std::vector<std::string> InterfaceIds() {
        bool8_t changed = 0;
        EXPECT_EQ(mGenTL->TLUpdateInterfaceList(mTL, &changed, 100), GC_ERR_SUCCESS);
        uint32_t count = 0;
        mGenTL->TLGetNumInterfaces(mTL, &count);
        std::vector<std::string> ids;
        for (uint32_t i = 0; i < count; ++i)
            ids.push_back(mGenTL->Text(
                [&](char* b, size_t* s) { return mGenTL->TLGetInterfaceID(mTL, i, b, s); }));
        return ids;
    }

    std::vector<std::string> DeviceIds(IF_HANDLE aInterface) {
        EXPECT_EQ(mGenTL->IFUpdateDeviceList(aInterface, nullptr, 100), GC_ERR_SUCCESS);
        uint32_t count = 0;
        mGenTL->IFGetNumDevices(aInterface, &count);
        std::vector<std::string> ids;
        for (uint32_t i = 0; i < count; ++i)
            ids.push_back(mGenTL->Text(
                [&](char* b, size_t* s) { return mGenTL->IFGetDeviceID(aInterface, i, b, s); }));
        return ids;
    }

    // Opens the first camera of the first interface.
    void OpenFirstCamera() {
        std::vector<std::string> interfaces = InterfaceIds();
        ASSERT_FALSE(interfaces.empty());
        ASSERT_EQ(mGenTL->TLOpenInterface(mTL, interfaces[0].c_str(), &mInterface), GC_ERR_SUCCESS);
        std::vector<std::string> devices = DeviceIds(mInterface);
        ASSERT_FALSE(devices.empty());
        ASSERT_EQ(
            mGenTL->IFOpenDevice(mInterface, devices[0].c_str(), DEVICE_ACCESS_CONTROL, &mDevice),
            GC_ERR_SUCCESS);
        ASSERT_EQ(mGenTL->DevGetPort(mDevice, &mPort), GC_ERR_SUCCESS);
    }

    uint32_t ReadU32(uint64_t aAddress) {
        uint32_t value = 0;
        size_t size = 4;
        EXPECT_EQ(mGenTL->GCReadPort(mPort, aAddress, &value, &size), GC_ERR_SUCCESS);
        return value;
    }
    void WriteU32(uint64_t aAddress, uint32_t aValue) {
        size_t size = 4;
        EXPECT_EQ(mGenTL->GCWritePort(mPort, aAddress, &aValue, &size), GC_ERR_SUCCESS);
    }

    // The document the port's URL names, read from the register space.
    std::vector<uint8_t> FetchDocument(std::string* aName = nullptr) {
        std::string url =
            mGenTL->Text([&](char* b, size_t* s) { return mGenTL->GCGetPortURL(mPort, b, s); });
        // "Local:<name>;<hex address>;<hex length>"
        EXPECT_EQ(url.rfind("Local:", 0), 0u) << url;
        size_t first = url.find(';'), second = url.find(';', first + 1);
        if (aName) *aName = url.substr(6, first - 6);
        uint64_t address = strtoull(url.substr(first + 1, second - first - 1).c_str(), nullptr, 16);
        size_t length = strtoull(url.substr(second + 1).c_str(), nullptr, 16);
        std::vector<uint8_t> document(length);
        EXPECT_EQ(mGenTL->GCReadPort(mPort, address, document.data(), &length), GC_ERR_SUCCESS);
        return document;
    }

    // One frame into mMemory (PayloadSize bytes), its buffer handle in mBuffer.
    void GrabOne(DS_HANDLE aStream) {
        size_t payload = 0, size = sizeof(payload);
        INFO_DATATYPE type = 0;
        ASSERT_EQ(mGenTL->DSGetInfo(aStream, STREAM_INFO_PAYLOAD_SIZE, &type, &payload, &size),
                  GC_ERR_SUCCESS);
        mMemory.assign(payload, 0);
        ASSERT_EQ(mGenTL->DSAnnounceBuffer(aStream, mMemory.data(), payload, nullptr, &mBuffer),
                  GC_ERR_SUCCESS);
        ASSERT_EQ(mGenTL->GCRegisterEvent(aStream, EVENT_NEW_BUFFER, &mNewBuffer), GC_ERR_SUCCESS);
        ASSERT_EQ(mGenTL->DSQueueBuffer(aStream, mBuffer), GC_ERR_SUCCESS);
        ASSERT_EQ(mGenTL->DSStartAcquisition(aStream, ACQ_START_FLAGS_DEFAULT, 1), GC_ERR_SUCCESS);
        WriteU32(0x1020, 1); // AcquisitionStart
        EVENT_NEW_BUFFER_DATA data{};
        size = sizeof(data);
        ASSERT_EQ(mGenTL->EventGetData(mNewBuffer, &data, &size, 5000), GC_ERR_SUCCESS);
        ASSERT_EQ(data.BufferHandle, mBuffer);
    }
    // Undoes GrabOne and closes the stream.
    void StopAndClose(DS_HANDLE aStream) {
        WriteU32(0x1024, 1); // AcquisitionStop
        mGenTL->DSStopAcquisition(aStream, ACQ_STOP_FLAGS_DEFAULT);
        mGenTL->DSFlushQueue(aStream, ACQ_QUEUE_ALL_DISCARD);
        EXPECT_EQ(mGenTL->DSRevokeBuffer(aStream, mBuffer, nullptr, nullptr), GC_ERR_SUCCESS);
        EXPECT_EQ(mGenTL->GCUnregisterEvent(aStream, EVENT_NEW_BUFFER), GC_ERR_SUCCESS);
        EXPECT_EQ(mGenTL->DSClose(aStream), GC_ERR_SUCCESS);
    }

    std::unique_ptr<ScopedConfig> mConfig;
    std::unique_ptr<GenTL> mGenTL;
    TL_HANDLE mTL = nullptr;
    IF_HANDLE mInterface = nullptr;
    DEV_HANDLE mDevice = nullptr;
    PORT_HANDLE mPort = nullptr;
    std::vector<uint8_t> mMemory;
    BUFFER_HANDLE mBuffer = nullptr;
    EVENT_HANDLE mNewBuffer = nullptr;
};

} // namespace test
