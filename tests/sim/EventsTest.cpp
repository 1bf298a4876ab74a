// Events as a consumer reads them: through waits and unions, with the data
// types the standard gives each kind, clean after re-registration, and the
// device-change news that Tavik's Supervisor reads.
#include <chrono>
#include <thread>

#include "SimFixture.h"

using namespace test;

namespace {

class EventsTest : public SimulatorTest {
protected:
    void SetUp() override {
        SimulatorTest::SetUp();
        mControl = reinterpret_cast<TavikSimControl_t>(mGenTL->Symbol("TavikSimControl"));
        ASSERT_NE(mControl, nullptr);
        OpenFirstCamera();
        mCameras = DeviceIds(mInterface);
    }
    void Control(const std::string& aCommand) { ASSERT_EQ(mControl(aCommand.c_str()), 0); }

    // The next data of an event, within five seconds.
    std::vector<uint8_t> Next(EVENT_HANDLE aEvent) {
        std::vector<uint8_t> data(1024);
        size_t size = data.size();
        EXPECT_EQ(mGenTL->EventGetData(aEvent, data.data(), &size, 5000), GC_ERR_SUCCESS);
        data.resize(size);
        return data;
    }
    // One item of event data: its type and bytes (after a size query, as consumers do).
    std::pair<INFO_DATATYPE, std::vector<uint8_t>>
    Item(EVENT_HANDLE aEvent, const std::vector<uint8_t>& aData, EVENT_DATA_INFO_CMD aCommand) {
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        size_t size = 0;
        EXPECT_EQ(mGenTL->EventGetDataInfo(aEvent, aData.data(), aData.size(), aCommand, &type,
                                           nullptr, &size),
                  GC_ERR_SUCCESS)
            << aCommand;
        std::vector<uint8_t> bytes(size);
        EXPECT_EQ(mGenTL->EventGetDataInfo(aEvent, aData.data(), aData.size(), aCommand, &type,
                                           bytes.data(), &size),
                  GC_ERR_SUCCESS)
            << aCommand;
        bytes.resize(size);
        return {type, bytes};
    }
    static std::string Text(const std::vector<uint8_t>& aBytes) {
        return aBytes.empty() || aBytes.back() != 0 ? "<not terminated>"
                                                    : std::string(aBytes.begin(), aBytes.end() - 1);
    }
    static uint32_t BigEndian(const std::vector<uint8_t>& aBytes, size_t aAt, size_t aWidth) {
        uint32_t value = 0;
        for (size_t i = 0; i < aWidth; ++i)
            value = value << 8 | aBytes.at(aAt + i);
        return value;
    }

    TavikSimControl_t mControl = nullptr;
    std::vector<std::string> mCameras;
};

TEST_F(EventsTest, EventsReachWaitersAlsoThroughAUnion) {
    auto unionCreate = reinterpret_cast<decltype(&UnionCreate)>(mGenTL->Symbol("UnionCreate"));
    auto unionLinkup = reinterpret_cast<decltype(&UnionLinkup)>(mGenTL->Symbol("UnionLinkup"));
    auto unionWait = reinterpret_cast<decltype(&UnionWait)>(mGenTL->Symbol("UnionWait"));
    auto unionDelete = reinterpret_cast<decltype(&UnionDelete)>(mGenTL->Symbol("UnionDelete"));
    ASSERT_TRUE(unionCreate && unionLinkup && unionWait && unionDelete);
    EVENT_HANDLE remote = nullptr, listChanged = nullptr;
    ASSERT_EQ(mGenTL->GCRegisterEvent(mDevice, EVENT_REMOTE_DEVICE, &remote), GC_ERR_SUCCESS);
    EXPECT_EQ(mGenTL->GCRegisterEvent(mDevice, EVENT_REMOTE_DEVICE, &remote),
              GC_ERR_RESOURCE_IN_USE);
    ASSERT_EQ(mGenTL->GCRegisterEvent(mInterface, EVENT_DEVICE_LIST_CHANGED_QRX, &listChanged),
              GC_ERR_SUCCESS);
    UNION_HANDLE group = nullptr;
    ASSERT_EQ(unionCreate(&group), GC_ERR_SUCCESS);
    ASSERT_EQ(unionLinkup(group, remote), GC_ERR_SUCCESS);
    ASSERT_EQ(unionLinkup(group, listChanged), GC_ERR_SUCCESS);

    EVENT_HANDLE fired = nullptr;
    EXPECT_EQ(unionWait(group, &fired, 10), GC_ERR_TIMEOUT);
    Control("unplug " + mCameras[1]);
    ASSERT_EQ(unionWait(group, &fired, 5000), GC_ERR_SUCCESS);
    EXPECT_EQ(fired, listChanged);
    EXPECT_EQ(Text(Item(listChanged, Next(listChanged), EVENT_DATA_DEVICE_ID_QRX).second),
              mCameras[1]);

    Control("event " + mCameras[0] + " 40001");
    ASSERT_EQ(unionWait(group, &fired, 5000), GC_ERR_SUCCESS);
    EXPECT_EQ(fired, remote);
    auto [type, id] = Item(remote, Next(remote), EVENT_DATA_NUMID);
    ASSERT_EQ(id.size(), 8u);
    uint64_t number = 0;
    memcpy(&number, id.data(), 8);
    EXPECT_EQ(number, 40001u);
    // A kill wakes a blocked reader.
    std::thread killer([&] { mGenTL->EventKill(remote); });
    std::vector<uint8_t> data(64);
    size_t size = data.size();
    EXPECT_EQ(mGenTL->EventGetData(remote, data.data(), &size, GENTL_INFINITE), GC_ERR_ABORT);
    killer.join();
    EXPECT_EQ(unionDelete(group), GC_ERR_SUCCESS);
}

TEST_F(EventsTest, EventDataHasTheTypesTheStandardGivesEachKind) {
    EVENT_HANDLE invalidations = nullptr, remote = nullptr;
    ASSERT_EQ(mGenTL->GCRegisterEvent(mDevice, EVENT_FEATURE_INVALIDATE, &invalidations),
              GC_ERR_SUCCESS);
    ASSERT_EQ(mGenTL->GCRegisterEvent(mDevice, EVENT_REMOTE_DEVICE, &remote), GC_ERR_SUCCESS);

    // A feature invalidation names the feature.
    Control("invalidate " + mCameras[0] + " ExposureTime");
    auto [nameType, name] = Item(invalidations, Next(invalidations), EVENT_DATA_ID);
    EXPECT_EQ(nameType, INFO_DATATYPE_STRING);
    EXPECT_EQ(Text(name), "ExposureTime");

    // A remote device event: its id as text (hexadecimal, as documents write
    // EventID) and as a number, and its data as a GigE Vision event block.
    const auto before = std::chrono::steady_clock::now().time_since_epoch();
    Control("event " + mCameras[0] + " 40000 7");
    std::vector<uint8_t> data = Next(remote);
    auto [idType, id] = Item(remote, data, EVENT_DATA_ID);
    EXPECT_EQ(idType, INFO_DATATYPE_STRING);
    EXPECT_EQ(Text(id), "9C40");
    auto [numberType, number] = Item(remote, data, EVENT_DATA_NUMID);
    EXPECT_EQ(numberType, INFO_DATATYPE_UINT64);
    EXPECT_EQ(number.size(), 8u);
    auto [valueType, block] = Item(remote, data, EVENT_DATA_VALUE);
    EXPECT_EQ(valueType, INFO_DATATYPE_BUFFER);
    ASSERT_GE(block.size(), 16u);
    EXPECT_EQ(BigEndian(block, 2, 2), 40000u); // event identifier
    EXPECT_EQ(BigEndian(block, 6, 2), 7u);     // block identifier
    const uint64_t stamp =
        static_cast<uint64_t>(BigEndian(block, 8, 4)) << 32 | BigEndian(block, 12, 4);
    EXPECT_GE(stamp, static_cast<uint64_t>(
                         std::chrono::duration_cast<std::chrono::nanoseconds>(before).count()));
    size_t most = 0, size = sizeof(most);
    INFO_DATATYPE type = 0;
    ASSERT_EQ(mGenTL->EventGetInfo(remote, EVENT_INFO_DATA_SIZE_MAX, &type, &most, &size),
              GC_ERR_SUCCESS);
    EXPECT_GE(most, block.size());

    // A new buffer: its handle and the user pointer given at its announcement.
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    GrabOne(stream);
    EVENT_NEW_BUFFER_DATA fresh{mBuffer, nullptr};
    std::vector<uint8_t> raw(reinterpret_cast<uint8_t*>(&fresh),
                             reinterpret_cast<uint8_t*>(&fresh) + sizeof(fresh));
    auto [handleType, handle] = Item(mNewBuffer, raw, EVENT_DATA_ID);
    EXPECT_EQ(handleType, INFO_DATATYPE_PTR);
    EXPECT_EQ(handle.size(), sizeof(void*));
    StopAndClose(stream);
}

TEST_F(EventsTest, FramesSendTheEventsWhoseNotificationIsOn) {
    WriteU32(0x1060, 40000); // EventSelector: ExposureEnd
    WriteU32(0x1200, 1);     // its EventNotification: On
    EVENT_HANDLE remote = nullptr;
    ASSERT_EQ(mGenTL->GCRegisterEvent(mDevice, EVENT_REMOTE_DEVICE, &remote), GC_ERR_SUCCESS);
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    GrabOne(stream);
    uint64_t frameId = 0;
    size_t size = sizeof(frameId);
    INFO_DATATYPE type = 0;
    ASSERT_EQ(mGenTL->DSGetBufferInfo(stream, mBuffer, BUFFER_INFO_FRAMEID, &type, &frameId, &size),
              GC_ERR_SUCCESS);
    std::vector<uint8_t> data = Next(remote);
    EXPECT_EQ(Text(Item(remote, data, EVENT_DATA_ID).second), "9C40");
    std::vector<uint8_t> block = Item(remote, data, EVENT_DATA_VALUE).second;
    EXPECT_EQ(BigEndian(block, 6, 2), frameId & 0xFFFF);
    // FrameStart stays off.
    size = data.size();
    EXPECT_EQ(mGenTL->EventGetData(remote, data.data(), &size, 10), GC_ERR_TIMEOUT);
    StopAndClose(stream);
}

TEST_F(EventsTest, ARegistrationAfterAnUnregisterStartsClean) {
    EVENT_HANDLE remote = nullptr;
    ASSERT_EQ(mGenTL->GCRegisterEvent(mDevice, EVENT_REMOTE_DEVICE, &remote), GC_ERR_SUCCESS);
    // Unregistering kills the event, with nobody waiting.
    ASSERT_EQ(mGenTL->GCUnregisterEvent(mDevice, EVENT_REMOTE_DEVICE), GC_ERR_SUCCESS);
    Control("event " + mCameras[0] + " 40000"); // fired while nobody listens
    ASSERT_EQ(mGenTL->GCRegisterEvent(mDevice, EVENT_REMOTE_DEVICE, &remote), GC_ERR_SUCCESS);
    std::vector<uint8_t> data(64);
    size_t size = data.size();
    EXPECT_EQ(mGenTL->EventGetData(remote, data.data(), &size, 10), GC_ERR_TIMEOUT);
    Control("event " + mCameras[0] + " 40001");
    size = data.size();
    EXPECT_EQ(mGenTL->EventGetData(remote, data.data(), &size, 5000), GC_ERR_SUCCESS);
}

TEST_F(EventsTest, DeviceChangesReportPresenceInWhatAndData) {
    EVENT_HANDLE changes = nullptr;
    ASSERT_EQ(mGenTL->GCRegisterEvent(mInterface, EVENT_DEVICE_LIST_CHANGED_QRX, &changes),
              GC_ERR_SUCCESS);
    auto number = [&](const std::vector<uint8_t>& aData, EVENT_DATA_INFO_CMD aCommand) {
        auto [type, bytes] = Item(changes, aData, aCommand);
        EXPECT_EQ(type, INFO_DATATYPE_UINT32) << aCommand;
        uint32_t value = 0;
        EXPECT_EQ(bytes.size(), 4u) << aCommand;
        memcpy(&value, bytes.data(), std::min<size_t>(bytes.size(), 4));
        return value;
    };
    Control("unplug " + mCameras[1]);
    std::vector<uint8_t> left = Next(changes);
    auto [idType, id] = Item(changes, left, EVENT_DATA_DEVICE_ID_QRX);
    EXPECT_EQ(idType, INFO_DATATYPE_STRING);
    EXPECT_EQ(Text(id), mCameras[1]);
    EXPECT_EQ(number(left, EVENT_DATA_WHAT_QRX), uint32_t{IFCHANGE_DEVICE_PRESENCE});
    EXPECT_EQ(number(left, EVENT_DATA_DATA_QRX) & IFCHANGE_DATA_PRESENT, 0u);

    Control("plug " + mCameras[1]);
    std::vector<uint8_t> arrived = Next(changes);
    EXPECT_EQ(number(arrived, EVENT_DATA_WHAT_QRX), uint32_t{IFCHANGE_DEVICE_PRESENCE});
    EXPECT_EQ(number(arrived, EVENT_DATA_DATA_QRX),
              uint32_t{IFCHANGE_DATA_PRESENT | IFCHANGE_DATA_REACHABLE});
}

} // namespace
