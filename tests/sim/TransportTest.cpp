// Transport types: every module says the type of the interface it hangs
// from, and a transport layer holding several kinds says "Mixed".
#include "SimFixture.h"

using namespace test;

namespace {

std::string LayerType(GenTL& aGenTL, TL_HANDLE aTL) {
    return aGenTL.Text([&](char* b, size_t* s) {
        INFO_DATATYPE t;
        return aGenTL.TLGetInfo(aTL, TL_INFO_TLTYPE, &t, b, s);
    });
}

class MixedTransportTest : public SimulatorTest {
protected:
    std::string Configuration() override {
        return R"(<TavikSim>
  <Interface id="IF-GEV" type="GEV"><Camera id="CamG"/></Interface>
  <Interface id="IF-U3V" type="U3V"><Camera id="CamU"/></Interface>
</TavikSim>)";
    }
};

TEST_F(MixedTransportTest, ModulesOfAUsbCameraSayU3VAndTheLayerSaysMixed) {
    EXPECT_EQ(LayerType(*mGenTL, mTL), "Mixed");
    EXPECT_EQ(mGenTL->Text([&](char* b, size_t* s) {
        INFO_DATATYPE t;
        return mGenTL->GCGetInfo(TL_INFO_TLTYPE, &t, b, s);
    }),
              "Mixed");
    InterfaceIds();
    ASSERT_EQ(mGenTL->TLOpenInterface(mTL, "IF-U3V", &mInterface), GC_ERR_SUCCESS);
    DeviceIds(mInterface);
    ASSERT_EQ(mGenTL->IFOpenDevice(mInterface, "CamU", DEVICE_ACCESS_CONTROL, &mDevice),
              GC_ERR_SUCCESS);
    ASSERT_EQ(mGenTL->DevGetPort(mDevice, &mPort), GC_ERR_SUCCESS);
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    GrabOne(stream);
    INFO_DATATYPE t;
    EXPECT_EQ(mGenTL->Text([&](char* b, size_t* s) {
        return mGenTL->IFGetInfo(mInterface, INTERFACE_INFO_TLTYPE, &t, b, s);
    }),
              "U3V");
    EXPECT_EQ(mGenTL->Text([&](char* b, size_t* s) {
        return mGenTL->DevGetInfo(mDevice, DEVICE_INFO_TLTYPE, &t, b, s);
    }),
              "U3V");
    EXPECT_EQ(mGenTL->Text([&](char* b, size_t* s) {
        return mGenTL->GCGetPortInfo(mPort, PORT_INFO_TLTYPE, &t, b, s);
    }),
              "U3V");
    EXPECT_EQ(mGenTL->Text([&](char* b, size_t* s) {
        return mGenTL->DSGetInfo(stream, STREAM_INFO_TLTYPE, &t, b, s);
    }),
              "U3V");
    EXPECT_EQ(mGenTL->Text([&](char* b, size_t* s) {
        return mGenTL->DSGetBufferInfo(stream, mBuffer, BUFFER_INFO_TLTYPE, &t, b, s);
    }),
              "U3V");
    StopAndClose(stream);
}

TEST(TransportTypeTest, OneKindNamesTheLayerAndAConfiguredTypeStands) {
    const std::pair<const char*, const char*> kCases[] = {
        {"<TavikSim><Interface type=\"U3V\"/><Interface type=\"U3V\"/></TavikSim>", "U3V"},
        {"<TavikSim><Interface type=\"GEV\"/></TavikSim>", "GEV"},
        {"<TavikSim tlType=\"USB3\"><Interface type=\"U3V\"/></TavikSim>", "USB3"},
        {"", "GEV"}, // the default topology
    };
    for (const auto& [text, expected] : kCases) {
        ScopedConfig config(text);
        GenTL gentl(TAVIK_SIM_PRODUCER);
        ASSERT_EQ(gentl.GCInitLib(), GC_ERR_SUCCESS);
        TL_HANDLE tl = nullptr;
        ASSERT_EQ(gentl.TLOpen(&tl), GC_ERR_SUCCESS);
        EXPECT_EQ(LayerType(gentl, tl), expected) << text;
        gentl.TLClose(tl);
        gentl.GCCloseLib();
    }
}

} // namespace
