// The built-in documents, loaded in the kernel over an in-memory port: every
// feature has its type and access, and reads and writes the register the
// engine's register maps expect.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/BuiltinDocuments.h"
#include "engine/Features.h"
#include "gik/MemoryPort.h"
#include "kit/AutoreleasePool.h"

using namespace tvk;

namespace {

struct tRegister {
    const char* feature;
    tFeatureData type;
    bool writeable;
    llk::u8 address;
    llk::u4 length;
};

class BuiltinDocumentsTest : public ::testing::Test {
protected:
    void TearDown() override {
        llk::ReleaseAndClear(mFeatures);
        llk::ReleaseAndClear(mPort);
    }

    // Loads aDocument over an in-memory port called aPort; aNoCache makes
    // every read reach the port. aSetUp fills the port before the load.
    template <class SetUp = void (*)(test::cMemoryPort*)>
    void Load(
        const char* aDocument, const char* aPort, bool aNoCache,
        SetUp aSetUp = [](test::cMemoryPort*) {}) {
        mFeatures = llk::Retained(cFeatures::New(aNoCache));
        mPort = llk::Retained(test::cMemoryPort::New(true));
        aSetUp(mPort);
        ASSERT_EQ(mFeatures->Prepare(), 0);
        ASSERT_EQ(mFeatures->Connect(aPort, mPort, aDocument, false, false, nullptr, nullptr), 0);
        ASSERT_EQ(mFeatures->Realize(), 0);
    }

    // Reads the feature by its type; the last transfer is what it touched.
    void Read(const char* aName, tFeatureData aType) {
        llk::i8 integer;
        double real;
        bool flag;
        const char* text;
        char buffer[256];
        llk::u4 size = sizeof(buffer);
        switch (aType) {
        case kFeatureInt:
            mFeatures->FeatureIntGet(aName, &integer);
            break;
        case kFeatureFloat:
            mFeatures->FeatureFloatGet(aName, &real);
            break;
        case kFeatureEnum:
            mFeatures->FeatureEnumGet(aName, text);
            break;
        case kFeatureString:
            mFeatures->FeatureStringGet(aName, buffer, size);
            break;
        case kFeatureBool:
            mFeatures->FeatureBoolGet(aName, &flag);
            break;
        case kFeatureCommand:
            mFeatures->FeatureCommandIsDone(aName, &flag);
            break;
        default:
            FAIL() << aName;
        }
    }

    // Writes a value the feature accepts: its minimum, its first entry.
    llk::i4 Write(const char* aName, tFeatureData aType) {
        switch (aType) {
        case kFeatureInt: {
            llk::i8 min = 0;
            mFeatures->FeatureIntRange(aName, &min, nullptr);
            return mFeatures->FeatureIntSet(aName, min);
        }
        case kFeatureEnum: {
            const char* first = nullptr;
            llk::u4 one = 1;
            mFeatures->FeatureEnumRange(aName, &first, one);
            return mFeatures->FeatureEnumSet(aName, first);
        }
        case kFeatureCommand:
            return mFeatures->FeatureCommandExecute(aName);
        case kFeatureBool:
            return mFeatures->FeatureBoolSet(aName, true);
        default:
            return -1;
        }
    }

    void CheckMap(const std::vector<tRegister>& aMap) {
        for (const tRegister& r : aMap) {
            SCOPED_TRACE(r.feature);
            tFeatureInfo info{};
            ASSERT_EQ(mFeatures->FeatureQuery(r.feature, info), 0);
            EXPECT_EQ(info.featureDataType, r.type);
            EXPECT_TRUE(info.featureFlags & TvkFeatureFlagsRead);
            EXPECT_EQ((info.featureFlags & TvkFeatureFlagsWrite) != 0, r.writeable);

            mPort->ResetCounts();
            Read(r.feature, r.type);
            ASSERT_FALSE(mPort->mLog.empty());
            EXPECT_FALSE(mPort->mLog.back().write);
            EXPECT_EQ(mPort->mLog.back().address, r.address);
            EXPECT_EQ(mPort->mLog.back().length, r.length);

            mPort->ResetCounts();
            llk::i4 written = Write(r.feature, r.type);
            if (!r.writeable) {
                EXPECT_NE(written, 0);
                EXPECT_EQ(mPort->mStores, 0);
                continue;
            }
            EXPECT_EQ(written, 0);
            ASSERT_EQ(mPort->mStores, 1);
            EXPECT_EQ(mPort->mLog.back().address, r.address);
            EXPECT_EQ(mPort->mLog.back().length, r.length);
        }
    }

    std::string Path(const char* aName) {
        tFeatureInfo info{};
        mFeatures->FeatureQuery(aName, info);
        return info.category ? info.category : "<none>";
    }

    llk::uAutoreleasePool mPool;
    cFeatures* mFeatures = nullptr;
    test::cMemoryPort* mPort = nullptr;
};

// Every transport present, so that the GigE Vision features exist.
void AllTransports(test::cMemoryPort* aPort) {
    aPort->PutLittle(0x08, 7, 4);
}

TEST_F(BuiltinDocumentsTest, SystemRegisterMap) {
    Load(g_XMLSupervisor, "Pseudo", true, AllTransports);
    CheckMap({
        {"Elapsed", kFeatureFloat, false, 0x00, 8},
        {"GeVTLIsPresent", kFeatureBool, false, 0x08, 4},
        {"FiWTLIsPresent", kFeatureBool, false, 0x08, 4},
        {"UsbTLIsPresent", kFeatureBool, false, 0x08, 4},
        {"GeVDiscoveryAllOff", kFeatureCommand, true, 0x0C, 4},
        {"GeVDiscoveryAllAuto", kFeatureCommand, true, 0x0C, 4},
        {"GeVDiscoveryAllOnce", kFeatureCommand, true, 0x0C, 4},
        {"GeVDiscoveryAllDuration", kFeatureInt, true, 0x154, 8},
        {"DiscoveryCameraEvent", kFeatureEnum, false, 0x10, 4},
        {"DiscoveryCameraIdent", kFeatureString, false, 0x14, 128},
        {"DiscoveryInterfaceEvent", kFeatureEnum, false, 0x94, 4},
        {"DiscoveryInterfaceIdent", kFeatureString, false, 0x98, 128},
        {"TLSchedulerSelector", kFeatureEnum, true, 0x138, 4},
        {"TLSchedulerConcurrencyMin", kFeatureInt, true, 0x118, 4},
        {"TLSchedulerConcurrencyMax", kFeatureInt, true, 0x11C, 4},
        {"TLSchedulerStride", kFeatureInt, true, 0x120, 4},
        {"TLSchedulerStatBusy", kFeatureInt, false, 0x124, 4},
        {"TLSchedulerStatIdle", kFeatureInt, false, 0x128, 4},
        {"TLSchedulerStatBusyMax", kFeatureInt, false, 0x12C, 4},
        {"TLSchedulerStatIdleMax", kFeatureInt, false, 0x130, 4},
        {"TLSchedulerStatObjects", kFeatureInt, false, 0x134, 4},
        {"GeVForceIPAddressMAC", kFeatureInt, true, 0x13C, 8},
        {"GeVForceIPAddressIP", kFeatureInt, true, 0x144, 4},
        {"GeVForceIPAddressSubnetMask", kFeatureInt, true, 0x148, 4},
        {"GeVForceIPAddressGateway", kFeatureInt, true, 0x14C, 4},
        {"GeVForceIPAddressSend", kFeatureCommand, true, 0x150, 4},
    });
}

TEST_F(BuiltinDocumentsTest, SystemFeaturesBitsEntriesAndCategories) {
    Load(g_XMLSupervisor, "Pseudo", false, [](test::cMemoryPort* aPort) {
        aPort->PutLittle(0x08, 4, 4); // USB only
        aPort->PutLittle(0x10, 3, 4);
        aPort->PutText(0x14, "cam-7");
    });
    bool present = true;
    EXPECT_EQ(mFeatures->FeatureBoolGet("GeVTLIsPresent", &present), 0);
    EXPECT_FALSE(present);
    EXPECT_EQ(mFeatures->FeatureBoolGet("UsbTLIsPresent", &present), 0);
    EXPECT_TRUE(present);
    // Without GigE Vision its features do not exist.
    tFeatureData type;
    EXPECT_EQ(mFeatures->FeatureType("GeVDiscoveryAllOff", type), llk::kNotFound);
    EXPECT_EQ(mFeatures->FeatureType("GeVForceIPAddressMAC", type), llk::kNotFound);

    const char* event = nullptr;
    EXPECT_EQ(mFeatures->FeatureEnumGet("DiscoveryCameraEvent", event), 0);
    EXPECT_STREQ(event, "Unreachable");
    char ident[32];
    llk::u4 size = sizeof(ident);
    EXPECT_EQ(mFeatures->FeatureStringGet("DiscoveryCameraIdent", ident, size), 0);
    EXPECT_STREQ(ident, "cam-7");
    llk::i8 number = -1;
    for (auto [name, value] : {std::pair{"Missing", 0}, {"Detected", 1}, {"Reachable", 2}}) {
        EXPECT_EQ(mFeatures->FeatureEnumValueAsInteger("DiscoveryCameraEvent", name, number), 0);
        EXPECT_EQ(number, value);
    }
    EXPECT_EQ(mFeatures->FeatureEnumValueAsInteger("DiscoveryInterfaceEvent", "Available", number),
              0);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(mFeatures->FeatureEnumValueAsInteger("TLSchedulerSelector", "Usb", number), 0);
    EXPECT_EQ(number, 2);

    EXPECT_EQ(Path("Elapsed"), "/Info");
    EXPECT_EQ(Path("DiscoveryInterfaceIdent"), "/Discovery");
    EXPECT_EQ(Path("TLSchedulerStride"), "/Scheduler");

    tFeatureInfo info{};
    ASSERT_EQ(mFeatures->FeatureQuery("TLSchedulerStatIdle", info), 0);
    EXPECT_EQ(info.pollingTime, 500u);
    EXPECT_EQ(info.visibility, TvkFeatureVisibilityInvisible);
    EXPECT_TRUE(info.featureFlags & TvkFeatureFlagsVolatile);
    ASSERT_EQ(mFeatures->FeatureQuery("Elapsed", info), 0);
    EXPECT_TRUE(info.featureFlags & TvkFeatureFlagsVolatile);
    ASSERT_EQ(mFeatures->FeatureQuery("TLSchedulerSelector", info), 0);
    EXPECT_TRUE(info.hasSelectedFeatures);
    llk::u4 count = 0;
    ASSERT_EQ(
        mFeatures->SelectedFeaturesList("TLSchedulerSelector", nullptr, sizeof(info), 0, count), 0);
    EXPECT_EQ(count, 8u);
    // Invisible features are not listed.
    std::vector<tFeatureInfo> listed(64);
    ASSERT_EQ(mFeatures->FeaturesList(listed.data(), sizeof(tFeatureInfo), 64, count), 0);
    for (llk::u4 i = 0; i < count; ++i) {
        EXPECT_NE(listed[i].visibility, TvkFeatureVisibilityInvisible) << listed[i].name;
        EXPECT_STRNE(listed[i].name, "UsbTLIsPresent");
    }
}

TEST_F(BuiltinDocumentsTest, ChunkDataRegisterMap) {
    Load(g_XMLChunkData, "ChunkPort", true);
    CheckMap({
        {"ChunkAcquisitionFrameCount", kFeatureInt, false, 0x0, 4},
        {"ChunkUserValue", kFeatureInt, false, 0x4, 4},
        {"ChunkExposureTime", kFeatureFloat, false, 0x8, 4},
        {"ChunkExposureTimeAbs", kFeatureFloat, false, 0x8, 4},
        {"ChunkGain", kFeatureFloat, false, 0xC, 4},
        {"ChunkSyncInLevels", kFeatureInt, false, 0x10, 4},
        {"ChunkSyncOutLevels", kFeatureInt, false, 0x10, 4},
    });
}

TEST_F(BuiltinDocumentsTest, ChunkDataDecodesBigEndianFields) {
    Load(g_XMLChunkData, "ChunkPort", true, [](test::cMemoryPort* aPort) {
        aPort->PutBig(0x4, 0x01020304, 4);
        aPort->PutBig(0x8, 1500, 4);
        aPort->PutBig(0x10, 0xAAAA5555, 4);
    });
    llk::i8 value = 0;
    EXPECT_EQ(mFeatures->FeatureIntGet("ChunkUserValue", &value), 0);
    EXPECT_EQ(value, 0x01020304);
    double exposure = 0.0;
    EXPECT_EQ(mFeatures->FeatureFloatGet("ChunkExposureTime", &exposure), 0);
    EXPECT_EQ(exposure, 1500.0);
    // LSB 15 MSB 0 of a big-endian register are the upper half.
    EXPECT_EQ(mFeatures->FeatureIntGet("ChunkSyncInLevels", &value), 0);
    EXPECT_EQ(value, 0xAAAA);
    EXPECT_EQ(mFeatures->FeatureIntGet("ChunkSyncOutLevels", &value), 0);
    EXPECT_EQ(value, 0x5555);
    tFeatureInfo info{};
    ASSERT_EQ(mFeatures->FeatureQuery("ChunkExposureTime", info), 0);
    EXPECT_STREQ(info.representation, "Logarithmic");
    EXPECT_EQ(info.visibility, TvkFeatureVisibilityBeginner);
    ASSERT_EQ(mFeatures->FeatureQuery("ChunkExposureTimeAbs", info), 0);
    EXPECT_EQ(info.visibility, TvkFeatureVisibilityInvisible);
    EXPECT_EQ(Path("ChunkGain"), "/ChunkData");
}

TEST_F(BuiltinDocumentsTest, EventsRegisterMap) {
    Load(g_XMLCEvents, "CameraPort", true);
    CheckMap({
        {"EventOverflowTimestamp", kFeatureInt, false, 0x20, 8},
        {"EventOverflowFrameID", kFeatureInt, false, 0x28, 4},
        {"EventErrorTimestamp", kFeatureInt, false, 0x2C, 8},
        {"EventErrorFrameID", kFeatureInt, false, 0x34, 4},
    });
    EXPECT_EQ(Path("EventErrorFrameID"), "/EventControl/EventData");
}

TEST_F(BuiltinDocumentsTest, EventsAreInvalidatedByTheirEventNodes) {
    // The camera's document names the event nodes; here a stand-in does.
    const char* events = R"(<RegisterDescription><Category Name="Root"/>
        <Integer Name="EventOverflow"><Value>0</Value></Integer>
        <Integer Name="EventError"><Value>0</Value></Integer></RegisterDescription>)";
    mFeatures = llk::Retained(cFeatures::New(false));
    mPort = llk::Retained(test::cMemoryPort::New(true));
    ASSERT_EQ(mFeatures->Prepare(), 0);
    ASSERT_EQ(mFeatures->Connect("CameraPort", mPort, g_XMLCEvents, false, false, nullptr, nullptr),
              0);
    ASSERT_EQ(mFeatures->Inject(events, false), 0);
    ASSERT_EQ(mFeatures->Realize(), 0);
    mPort->PutBig(0x28, 5, 4);
    llk::i8 frame = 0;
    EXPECT_EQ(mFeatures->FeatureIntGet("EventOverflowFrameID", &frame), 0);
    EXPECT_EQ(frame, 5);
    mPort->PutBig(0x28, 6, 4);
    EXPECT_EQ(mFeatures->FeatureIntGet("EventOverflowFrameID", &frame), 0);
    EXPECT_EQ(frame, 5); // cached
    EXPECT_EQ(mFeatures->FeatureInvalidate("EventOverflow"), 0);
    EXPECT_EQ(mFeatures->FeatureIntGet("EventOverflowFrameID", &frame), 0);
    EXPECT_EQ(frame, 6);
}

TEST_F(BuiltinDocumentsTest, IpConfigurationRegisterMaps) {
    const std::vector<tRegister> configuration = {
        {"GevCurrentIPAddress", kFeatureInt, false, 0x00, 4},
        {"GevCurrentSubnetMask", kFeatureInt, false, 0x04, 4},
        {"GevCurrentDefaultGateway", kFeatureInt, false, 0x08, 4},
        {"GevPersistentIPAddress", kFeatureInt, true, 0x0C, 4},
        {"GevPersistentSubnetMask", kFeatureInt, true, 0x10, 4},
        {"GevPersistentDefaultGateway", kFeatureInt, true, 0x14, 4},
        {"GevIPConfigurationMode", kFeatureEnum, true, 0x18, 4},
        {"GevIPConfigurationApply", kFeatureCommand, true, 0x1C, 4},
    };
    Load(g_XMLCIPConf, "CameraPort", true);
    CheckMap(configuration);
    llk::i8 max = 0, mode = 0;
    EXPECT_EQ(mFeatures->FeatureIntRange("GevPersistentIPAddress", nullptr, &max), 0);
    EXPECT_EQ(max, 0xFFFFFFFF);
    for (auto [name, value] : {std::pair{"LLA", 4}, {"DHCP", 6}, {"Persistent", 5}}) {
        EXPECT_EQ(mFeatures->FeatureEnumValueAsInteger("GevIPConfigurationMode", name, mode), 0);
        EXPECT_EQ(mode, value);
    }
    EXPECT_EQ(Path("GevIPConfigurationApply"), "/GigE/Configuration");
    EXPECT_EQ(Path("GevPersistentSubnetMask"), "/GigE/Persistent");
    TearDown();

    // The read variant: the same registers, none writeable, no apply.
    Load(g_XMLCIPRead, "CameraPort", true);
    std::vector<tRegister> read = configuration;
    read.pop_back();
    for (tRegister& r : read)
        r.writeable = false;
    CheckMap(read);
    tFeatureData type;
    EXPECT_EQ(mFeatures->FeatureType("GevIPConfigurationApply", type), llk::kNotFound);
}

// A camera's nodes that the GigE Vision patch builds on.
const char* kCameraStandIn = R"(<RegisterDescription>
    <Category Name="Root"><pFeature>GevSCPSPacketSize</pFeature></Category>
    <Integer Name="GevSCPSPacketSize"><Value>0</Value></Integer>
    <Boolean Name="DeviceReadOnlyOrStreaming"><pValue>RegLocked</pValue></Boolean>
    <IntReg Name="RegLocked"><Address>0x100</Address><Length>4</Length><pPort>Device</pPort>
      <Endianess>LittleEndian</Endianess></IntReg>
    <Integer Name="GVSPPacketSizeMin"><Value>576</Value></Integer>
    <Integer Name="GVSPPacketSizeMax"><Value>9000</Value></Integer>
    <IntReg Name="RegGVSPPacketSize"><Address>0x200</Address><Length>4</Length>
      <pPort>Device</pPort><Endianess>LittleEndian</Endianess></IntReg>
    <Port Name="Device"/></RegisterDescription>)";

TEST_F(BuiltinDocumentsTest, PacketSizePatchReplacesTheCamerasNode) {
    mFeatures = llk::Retained(cFeatures::New(false));
    mPort = llk::Retained(test::cMemoryPort::New(true));
    ASSERT_EQ(mFeatures->Prepare(), 0);
    ASSERT_EQ(mFeatures->Connect("Device", mPort, kCameraStandIn, false, false, nullptr, nullptr),
              0);
    ASSERT_EQ(mFeatures->Inject(g_XMLTLPatch, false), 0);
    ASSERT_EQ(mFeatures->Realize(), 0);

    tFeatureInfo info{};
    ASSERT_EQ(mFeatures->FeatureQuery("GevSCPSPacketSize", info), 0);
    EXPECT_EQ(info.featureDataType, kFeatureInt);
    EXPECT_EQ(info.visibility, TvkFeatureVisibilityExpert);
    EXPECT_TRUE(info.isStreamable);
    EXPECT_STREQ(info.category, "/GigE");
    llk::i8 min = 0, max = 0;
    EXPECT_EQ(mFeatures->FeatureIntRange("GevSCPSPacketSize", &min, &max), 0);
    EXPECT_EQ(min, 576);
    EXPECT_EQ(max, 9000);
    mPort->ResetCounts();
    EXPECT_EQ(mFeatures->FeatureIntSet("GevSCPSPacketSize", 1500), 0);
    ASSERT_EQ(mPort->mStores, 1);
    EXPECT_EQ(mPort->mLog.back().address, 0x200u);
    EXPECT_EQ(mPort->GetLittle(0x200, 4), 1500u);
    EXPECT_EQ(mFeatures->FeatureIntSet("GevSCPSPacketSize", 100), llk::kOutOfRange);
    // Locked while the camera streams.
    EXPECT_EQ(mFeatures->NodeIntSet("RegLocked", 1), 0);
    bool readable = false, writeable = true;
    EXPECT_EQ(mFeatures->FeatureProbe("GevSCPSPacketSize", readable, writeable), 0);
    EXPECT_TRUE(readable);
    EXPECT_FALSE(writeable);
}

TEST_F(BuiltinDocumentsTest, ParameterLockIsAPlainBoolean) {
    mFeatures = llk::Retained(cFeatures::New(false));
    ASSERT_EQ(mFeatures->Prepare(), 0);
    ASSERT_EQ(mFeatures->Inject(g_XMLTLParam, false), 0);
    ASSERT_EQ(mFeatures->Realize(), 0);
    bool locked = true;
    EXPECT_EQ(mFeatures->FeatureBoolGet("TLParamsLocked", &locked), 0);
    EXPECT_FALSE(locked);
    EXPECT_EQ(mFeatures->FeatureBoolSet("TLParamsLocked", true), 0);
    EXPECT_EQ(mFeatures->FeatureBoolGet("TLParamsLocked", &locked), 0);
    EXPECT_TRUE(locked);
    EXPECT_EQ(Path("TLParamsLocked"), "");
}

} // namespace
