// A GEV camera's GigE Vision bootstrap registers, read and written as a
// GigE Vision consumer does: through the remote port, in network byte order,
// at the addresses the GigE Vision bootstrap map gives.
#include <arpa/inet.h>

#include <string>
#include <vector>

#include "SimFixture.h"

using namespace test;

namespace {

constexpr uint32_t Ip(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
    return a << 24 | b << 16 | c << 8 | d;
}

class BootstrapTest : public SimulatorTest {
protected:
    uint32_t Network(uint64_t aAddress) { return ntohl(ReadU32(aAddress)); }
    GC_ERROR WriteNetwork(uint64_t aAddress, uint32_t aValue) {
        const uint32_t raw = htonl(aValue);
        size_t size = sizeof(raw);
        return mGenTL->GCWritePort(mPort, aAddress, &raw, &size);
    }
    std::string ReadText(uint64_t aAddress, size_t aLength) {
        std::string text(aLength, '\0');
        size_t size = aLength;
        EXPECT_EQ(mGenTL->GCReadPort(mPort, aAddress, text.data(), &size), GC_ERR_SUCCESS);
        return text.substr(0, text.find('\0'));
    }
    std::string Info(DEVICE_INFO_CMD aCommand) {
        return mGenTL->Text([&](char* b, size_t* s) {
            INFO_DATATYPE type;
            return mGenTL->DevGetInfo(mDevice, aCommand, &type, b, s);
        });
    }
    // Closes the camera and the transport layer, then opens both again.
    void Reopen() {
        ASSERT_EQ(mGenTL->DevClose(mDevice), GC_ERR_SUCCESS);
        mDevice = nullptr;
        ASSERT_EQ(mGenTL->TLClose(mTL), GC_ERR_SUCCESS);
        ASSERT_EQ(mGenTL->TLOpen(&mTL), GC_ERR_SUCCESS);
        OpenFirstCamera();
    }
};

TEST_F(BootstrapTest, IdentificationStringsStandWhereGigEVisionKeepsThem) {
    OpenFirstCamera();
    EXPECT_EQ(Network(0x0000) >> 16, 2u);         // GigE Vision 2.x
    EXPECT_NE(Network(0x0004) & 0x80000000u, 0u); // a big-endian device
    EXPECT_EQ(ReadText(0x0048, 32), Info(DEVICE_INFO_VENDOR));
    EXPECT_EQ(ReadText(0x0048, 32), "Tavik");
    EXPECT_EQ(ReadText(0x0068, 32), Info(DEVICE_INFO_MODEL));
    EXPECT_EQ(ReadText(0x0088, 32), Info(DEVICE_INFO_VERSION));
    EXPECT_FALSE(ReadText(0x00A8, 48).empty());
    EXPECT_EQ(ReadText(0x00D8, 16), Info(DEVICE_INFO_SERIAL_NUMBER));
    EXPECT_EQ(ReadText(0x00D8, 16), "SIM0001");
    // The user-defined name is the consumer's, and the device info follows it.
    EXPECT_EQ(ReadText(0x00E8, 16), "");
    char name[16] = "Left bench";
    size_t size = sizeof(name);
    ASSERT_EQ(mGenTL->GCWritePort(mPort, 0x00E8, name, &size), GC_ERR_SUCCESS);
    EXPECT_EQ(Info(DEVICE_INFO_USER_DEFINED_NAME), "Left bench");
    // Version, MAC, current IP, a string, the URL, a reserved word; and a
    // write that runs from a writable register into a reserved one.
    for (uint64_t address : {0x0000u, 0x000Cu, 0x0024u, 0x0048u, 0x0200u, 0x0018u})
        EXPECT_EQ(WriteNetwork(address, 1), GC_ERR_ACCESS_DENIED) << std::hex << address;
    uint32_t two[2] = {htonl(6), 0};
    size = sizeof(two);
    EXPECT_EQ(mGenTL->GCWritePort(mPort, 0x0014, two, &size), GC_ERR_ACCESS_DENIED);
    EXPECT_EQ(ReadText(0x0048, 32), "Tavik");
}

TEST_F(BootstrapTest, EveryCameraHasAnAddressOfItsOwnOnItsInterfacesNetwork) {
    std::vector<uint32_t> addresses;
    for (const std::string& id : InterfaceIds()) {
        ASSERT_EQ(mGenTL->TLOpenInterface(mTL, id.c_str(), &mInterface), GC_ERR_SUCCESS);
        for (const std::string& camera : DeviceIds(mInterface)) {
            ASSERT_EQ(
                mGenTL->IFOpenDevice(mInterface, camera.c_str(), DEVICE_ACCESS_CONTROL, &mDevice),
                GC_ERR_SUCCESS);
            ASSERT_EQ(mGenTL->DevGetPort(mDevice, &mPort), GC_ERR_SUCCESS);
            const uint32_t ip = Network(0x0024), mask = Network(0x0034);
            EXPECT_EQ(mask, Ip(255, 255, 255, 0)) << camera;
            EXPECT_EQ(Network(0x0044), (ip & mask) | 1) << camera; // the gateway
            addresses.push_back(ip);
            ASSERT_EQ(mGenTL->DevClose(mDevice), GC_ERR_SUCCESS);
            mDevice = nullptr;
        }
        mGenTL->IFClose(mInterface);
    }
    // Two cameras on the first interface's network, one on the second's.
    EXPECT_EQ(addresses, std::vector<uint32_t>(
                             {Ip(192, 168, 1, 10), Ip(192, 168, 1, 11), Ip(192, 168, 2, 10)}));
}

TEST_F(BootstrapTest, IpConfigurationAndPersistentAddressOutliveTheTransportLayer) {
    OpenFirstCamera();
    const uint32_t current = Network(0x0024);
    EXPECT_EQ(Network(0x0010), 0x7u); // persistent IP, DHCP and link-local supported
    EXPECT_EQ(Network(0x0014), 0x6u); // DHCP and link-local on
    EXPECT_EQ(Network(0x064C), current);
    ASSERT_EQ(WriteNetwork(0x064C, Ip(10, 0, 0, 42)), GC_ERR_SUCCESS);
    ASSERT_EQ(WriteNetwork(0x065C, Ip(255, 0, 0, 0)), GC_ERR_SUCCESS);
    ASSERT_EQ(WriteNetwork(0x066C, Ip(10, 0, 0, 1)), GC_ERR_SUCCESS);
    // Link-local addressing cannot be switched off; pause bits are not supported.
    ASSERT_EQ(WriteNetwork(0x0014, 0xC0000000u), GC_ERR_SUCCESS);
    EXPECT_EQ(Network(0x0014), 0x4u);
    ASSERT_EQ(WriteNetwork(0x0014, 0x5), GC_ERR_SUCCESS);
    EXPECT_EQ(Network(0x0014), 0x5u);
    // A device-specific word past the bootstrap takes a write, as Tavik's
    // engine writes 2 there to apply an IP configuration.
    EXPECT_EQ(WriteNetwork(0x10008, 2), GC_ERR_SUCCESS);
    EXPECT_EQ(Network(0x0024), current); // the camera stays where it is

    WriteU32(0x107C, 1); // DeviceReset
    EXPECT_EQ(Network(0x0014), 0x5u);
    Reopen();
    EXPECT_EQ(Network(0x0014), 0x5u);
    EXPECT_EQ(Network(0x064C), Ip(10, 0, 0, 42));
    EXPECT_EQ(Network(0x065C), Ip(255, 0, 0, 0));
    EXPECT_EQ(Network(0x066C), Ip(10, 0, 0, 1));
    EXPECT_EQ(Network(0x0024), current);
    // Back as it came, for whoever loads this producer next.
    EXPECT_EQ(WriteNetwork(0x0014, 0x6), GC_ERR_SUCCESS);
    EXPECT_EQ(WriteNetwork(0x064C, current), GC_ERR_SUCCESS);
    EXPECT_EQ(WriteNetwork(0x065C, Ip(255, 255, 255, 0)), GC_ERR_SUCCESS);
    EXPECT_EQ(WriteNetwork(0x066C, (current & 0xFFFFFF00u) | 1), GC_ERR_SUCCESS);
}

TEST_F(BootstrapTest, FirstUrlIsThePortsUrlAndFollowsWhereTheDocumentIsSaidToLie) {
    OpenFirstCamera();
    auto urlInfo = [&] {
        return mGenTL->Text([&](char* b, size_t* s) {
            INFO_DATATYPE type;
            return mGenTL->GCGetPortURLInfo(mPort, 0, URL_INFO_URL, &type, b, s);
        });
    };
    EXPECT_EQ(ReadText(0x0200, 512), urlInfo());
    EXPECT_EQ(ReadText(0x0200, 512).rfind("Local:TavikSim.xml;100000;", 0), 0u);
    EXPECT_EQ(ReadText(0x0400, 512), ""); // no second URL
    auto control = reinterpret_cast<TavikSimControl_t>(mGenTL->Symbol("TavikSimControl"));
    ASSERT_NE(control, nullptr);
    ASSERT_EQ(control(("document " + DeviceIds(mInterface)[0] + " 200000 10").c_str()), 0);
    EXPECT_EQ(ReadText(0x0200, 512), "Local:TavikSim.xml;200000;10");
    EXPECT_EQ(ReadText(0x0200, 512), urlInfo());
}

TEST_F(BootstrapTest, StreamChannelPacketSizeIsTheStreamModulesPacketSize) {
    OpenFirstCamera();
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    auto modulePacketSize = [&] {
        uint32_t value = 0;
        size_t size = sizeof(value);
        EXPECT_EQ(mGenTL->GCReadPort(stream, 0x0108, &value, &size), GC_ERR_SUCCESS);
        return value;
    };
    EXPECT_EQ(Network(0x0904), 1u); // one stream channel
    EXPECT_EQ(Network(0x0D04) & 0xFFFF, modulePacketSize());
    // Do-not-fragment with 1400 bytes; the module's write keeps the flag.
    ASSERT_EQ(WriteNetwork(0x0D04, 0x40000000u | 1400), GC_ERR_SUCCESS);
    EXPECT_EQ(modulePacketSize(), 1400u);
    uint32_t size = 8000;
    size_t length = sizeof(size);
    ASSERT_EQ(mGenTL->GCWritePort(stream, 0x0108, &size, &length), GC_ERR_SUCCESS);
    EXPECT_EQ(Network(0x0D04), 0x40000000u | 8000);
    EXPECT_EQ(mGenTL->DSClose(stream), GC_ERR_SUCCESS);
}

} // namespace
