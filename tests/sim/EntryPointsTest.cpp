// The calls a consumer of the reported GenTL version binds: all present, and
// the parent and buffer-part calls of 1.4 and 1.5 answering.
#include <numeric>

#include "SimFixture.h"

using namespace test;

namespace {

std::string Joined(const std::vector<std::string>& aNames) {
    return std::accumulate(aNames.begin(), aNames.end(), std::string(),
                           [](std::string a, const std::string& b) { return a + b + " "; });
}

TEST(EntryPointsTest, EveryCallOfTheReportedVersionIsExported) {
    GenTL gentl(TAVIK_SIM_PRODUCER);
    ASSERT_NE(gentl.library, nullptr) << dlerror();
    EXPECT_TRUE(gentl.missing.empty()) << Joined(gentl.missing);
    ASSERT_EQ(gentl.GCInitLib(), GC_ERR_SUCCESS);
    uint32_t major = 0, minor = 0;
    size_t size = sizeof(major);
    INFO_DATATYPE type = 0;
    ASSERT_EQ(gentl.GCGetInfo(TL_INFO_GENTL_VER_MAJOR, &type, &major, &size), GC_ERR_SUCCESS);
    size = sizeof(minor);
    ASSERT_EQ(gentl.GCGetInfo(TL_INFO_GENTL_VER_MINOR, &type, &minor, &size), GC_ERR_SUCCESS);
    EXPECT_EQ(major * 100 + minor, 105u); // the list bound above is that of 1.5
    gentl.GCCloseLib();
}

TEST(EntryPointsTest, LoaderVariantsLackOnlyWhatTheirNamesSay) {
    const std::pair<const char*, std::vector<std::string>> kVariants[] = {
        {"TavikSimStandard.cti", {}},
        {"TavikSimNoPort.cti", {"DevGetPort"}},
        {"TavikSimNoOpen.cti", {"TLOpen"}},
        {"TavikSimNoCloseLib.cti", {"GCCloseLib"}},
        {"TavikSimNoChunks.cti", {"DSGetBufferChunkData"}},
    };
    for (const auto& [file, lacking] : kVariants) {
        GenTL gentl((std::string(TAVIK_SIM_VARIANTS) + "/" + file).c_str());
        ASSERT_NE(gentl.library, nullptr) << file;
        EXPECT_EQ(gentl.missing, lacking) << file;
    }
}

TEST_F(SimulatorTest, ParentsAreTheHandlesTheModulesWereOpenedFrom) {
    OpenFirstCamera();
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    TL_HANDLE system = nullptr;
    IF_HANDLE interface = nullptr;
    DEV_HANDLE device = nullptr;
    ASSERT_EQ(mGenTL->IFGetParentTL(mInterface, &system), GC_ERR_SUCCESS);
    ASSERT_EQ(mGenTL->DevGetParentIF(mDevice, &interface), GC_ERR_SUCCESS);
    ASSERT_EQ(mGenTL->DSGetParentDev(stream, &device), GC_ERR_SUCCESS);
    EXPECT_EQ(system, mTL);
    EXPECT_EQ(interface, mInterface);
    EXPECT_EQ(device, mDevice);
    EXPECT_EQ(mGenTL->IFGetParentTL(mInterface, nullptr), GC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(mGenTL->DSGetParentDev(mDevice, &device), GC_ERR_INVALID_HANDLE);
    EXPECT_EQ(mGenTL->DSClose(stream), GC_ERR_SUCCESS);
}

TEST_F(SimulatorTest, AnImageBufferIsOnePartDescribingTheImage) {
    OpenFirstCamera();
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    GrabOne(stream);
    uint32_t parts = 0;
    ASSERT_EQ(mGenTL->DSGetNumBufferParts(stream, mBuffer, &parts), GC_ERR_SUCCESS);
    EXPECT_EQ(parts, 1u);
    auto part = [&](BUFFER_PART_INFO_CMD aCommand, INFO_DATATYPE aExpected) {
        uint64_t value = 0; // every fixed-size answer here fits in 8 bytes
        size_t size = sizeof(value);
        INFO_DATATYPE type = 0;
        EXPECT_EQ(mGenTL->DSGetBufferPartInfo(stream, mBuffer, 0, aCommand, &type, &value, &size),
                  GC_ERR_SUCCESS)
            << aCommand;
        EXPECT_EQ(type, aExpected) << aCommand;
        return value;
    };
    EXPECT_EQ(part(BUFFER_PART_INFO_BASE, INFO_DATATYPE_PTR),
              reinterpret_cast<uint64_t>(mMemory.data()));
    EXPECT_EQ(part(BUFFER_PART_INFO_DATA_SIZE, INFO_DATATYPE_SIZET), 640u * 480u);
    EXPECT_EQ(part(BUFFER_PART_INFO_DATA_TYPE, INFO_DATATYPE_SIZET),
              static_cast<uint64_t>(PART_DATATYPE_2D_IMAGE));
    EXPECT_EQ(part(BUFFER_PART_INFO_DATA_FORMAT, INFO_DATATYPE_UINT64), 0x01080001u);
    EXPECT_EQ(part(BUFFER_PART_INFO_DATA_FORMAT_NAMESPACE, INFO_DATATYPE_UINT64),
              static_cast<uint64_t>(PIXELFORMAT_NAMESPACE_PFNC_32BIT));
    EXPECT_EQ(part(BUFFER_PART_INFO_WIDTH, INFO_DATATYPE_SIZET), 640u);
    EXPECT_EQ(part(BUFFER_PART_INFO_HEIGHT, INFO_DATATYPE_SIZET), 480u);
    EXPECT_EQ(part(BUFFER_PART_INFO_XOFFSET, INFO_DATATYPE_SIZET), 0u);
    EXPECT_EQ(part(BUFFER_PART_INFO_YOFFSET, INFO_DATATYPE_SIZET), 0u);
    EXPECT_EQ(part(BUFFER_PART_INFO_XPADDING, INFO_DATATYPE_SIZET), 0u);
    EXPECT_EQ(part(BUFFER_PART_INFO_SOURCE_ID, INFO_DATATYPE_UINT64), 0u);
    EXPECT_EQ(part(BUFFER_PART_INFO_DELIVERED_IMAGEHEIGHT, INFO_DATATYPE_SIZET), 480u);
    uint64_t value = 0;
    size_t size = sizeof(value);
    INFO_DATATYPE type = 0;
    EXPECT_EQ(mGenTL->DSGetBufferPartInfo(stream, mBuffer, 1, BUFFER_PART_INFO_WIDTH, &type, &value,
                                          &size),
              GC_ERR_INVALID_INDEX);
    StopAndClose(stream);
}

} // namespace
