// Chunk data as three kinds of reader find it: through DSGetBufferChunkData,
// by walking the GigE Vision trailers from the end of the payload, and as
// the block Tavik's engine copies from the image's end (the bundle's image
// and ancillary sizes), read as its "ChunkData" words.
#include <map>

#include "SimFixture.h"

using namespace test;

namespace {

constexpr uint64_t kSimChunkId = 0x5A5A0001;
constexpr size_t kFrameIdAt = 0x18; // in the simulator's chunk

uint64_t BigEndian(const uint8_t* aAt, size_t aWidth) {
    uint64_t value = 0;
    for (size_t i = 0; i < aWidth; ++i)
        value = value << 8 | aAt[i];
    return value;
}

class ChunksTest : public SimulatorTest {
protected:
    void SetUp() override {
        SimulatorTest::SetUp();
        OpenFirstCamera();
        ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &mStream), GC_ERR_SUCCESS);
    }
    void TearDown() override {
        if (mBuffer) StopAndClose(mStream);
        SimulatorTest::TearDown();
    }
    template <class T> T BufferInfo(BUFFER_INFO_CMD aCommand) {
        T value{};
        size_t size = sizeof(value);
        INFO_DATATYPE type = 0;
        EXPECT_EQ(mGenTL->DSGetBufferInfo(mStream, mBuffer, aCommand, &type, &value, &size),
                  GC_ERR_SUCCESS)
            << aCommand;
        return value;
    }

    DS_HANDLE mStream = nullptr;
};

TEST_F(ChunksTest, EveryKindOfReaderFindsTheFrameId) {
    WriteU32(0x1048, 1);  // ChunkModeActive
    WriteU32(0x10E0, 77); // UserValue
    double gain = 6.0;
    size_t eight = 8;
    ASSERT_EQ(mGenTL->GCWritePort(mPort, 0x1038, &gain, &eight), GC_ERR_SUCCESS);
    WriteU32(0x1090, 0x5); // input lines
    WriteU32(0x1080, 0x3); // UserOutput0 and 1
    const size_t image = 640 * 480;
    const size_t payload = ReadU32(0x1014);
    EXPECT_GT(payload, image + 8 + kFrameIdAt);
    GrabOne(mStream);
    const uint64_t frameId = BufferInfo<uint64_t>(BUFFER_INFO_FRAMEID);
    const uint8_t* base = mMemory.data();

    // Through the producer.
    size_t count = 0;
    ASSERT_EQ(mGenTL->DSGetBufferChunkData(mStream, mBuffer, nullptr, &count), GC_ERR_SUCCESS);
    std::vector<SINGLE_CHUNK_DATA> chunks(count);
    size_t tooFew = count - 1;
    EXPECT_EQ(mGenTL->DSGetBufferChunkData(mStream, mBuffer, chunks.data(), &tooFew),
              GC_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(tooFew, count);
    ASSERT_EQ(mGenTL->DSGetBufferChunkData(mStream, mBuffer, chunks.data(), &count),
              GC_ERR_SUCCESS);
    std::map<uint64_t, SINGLE_CHUNK_DATA> byId;
    for (const SINGLE_CHUNK_DATA& c : chunks)
        byId[c.ChunkID] = c;
    ASSERT_EQ(byId.count(kSimChunkId), 1u);
    EXPECT_EQ(BigEndian(base + byId[kSimChunkId].ChunkOffset + kFrameIdAt, 8), frameId);

    // From the end, trailer by trailer: each chunk's data, then its id and length.
    const size_t filled = BufferInfo<size_t>(BUFFER_INFO_SIZE_FILLED);
    EXPECT_EQ(filled, payload);
    std::map<uint64_t, std::pair<size_t, size_t>> walked; // id: offset, length
    for (size_t end = filled; end > 0;) {
        ASSERT_GE(end, 8u);
        const uint64_t id = BigEndian(base + end - 8, 4);
        const size_t length = BigEndian(base + end - 4, 4);
        ASSERT_GE(end - 8, length);
        walked[id] = {end - 8 - length, length};
        end -= 8 + length;
    }
    ASSERT_EQ(walked.count(kSimChunkId), 1u);
    EXPECT_EQ(BigEndian(base + walked[kSimChunkId].first + kFrameIdAt, 8), frameId);
    EXPECT_EQ(walked.size(), chunks.size());
    for (const auto& [id, where] : walked) {
        EXPECT_EQ(static_cast<size_t>(byId[id].ChunkOffset), where.first) << id;
        EXPECT_EQ(byId[id].ChunkLength, where.second) << id;
    }
    // The image is a chunk too, the first.
    bool imageFound = false;
    for (const auto& [id, where] : walked)
        imageFound |= where.first == 0 && where.second == image;
    EXPECT_TRUE(imageFound);

    // The engine's reading: the block after the image ends at the payload's end
    // and begins with frame count, user value, exposure, gain, line levels.
    S_BUFFER_INFO_BUNDLE bundle =
        BufferInfo<S_BUFFER_INFO_BUNDLE>(static_cast<BUFFER_INFO_CMD>(BUFFER_INFO_BUNDLE_QRX));
    const size_t imageSize = bundle.ImageSize, ancillarySize = bundle.AncillarySize;
    EXPECT_EQ(imageSize, walked[kSimChunkId].first);
    EXPECT_EQ(imageSize + ancillarySize, payload);
    const uint8_t* block = base + imageSize;
    EXPECT_EQ(BigEndian(block + 0x0, 4), ReadU32(0x104C)); // FrameCounter
    EXPECT_EQ(BigEndian(block + 0x4, 4), 77u);
    EXPECT_EQ(BigEndian(block + 0x8, 4), 10000u); // ExposureTime, microseconds
    EXPECT_EQ(BigEndian(block + 0xC, 4), 6u);
    EXPECT_EQ(BigEndian(block + 0x10, 4), 0x00050003u); // inputs high, outputs low

    EXPECT_TRUE(BufferInfo<bool8_t>(BUFFER_INFO_CONTAINS_CHUNKDATA));
    EXPECT_EQ(BufferInfo<size_t>(BUFFER_INFO_DATA_SIZE), payload);
    EXPECT_EQ(BufferInfo<size_t>(BUFFER_INFO_IMAGEOFFSET), 0u);
    EXPECT_NE(BufferInfo<uint64_t>(BUFFER_INFO_CHUNKLAYOUTID), 0u);
}

TEST_F(ChunksTest, WithEveryChunkButTheImageDisabledTheFrameHasNone) {
    WriteU32(0x1048, 1);
    const size_t image = 640 * 480;
    for (uint32_t selector = 1; selector <= 5; ++selector) {
        WriteU32(0x10B0, selector);         // ChunkSelector
        WriteU32(0x10C0 + 4 * selector, 0); // ChunkEnable
    }
    EXPECT_EQ(ReadU32(0x1014), image);
    GrabOne(mStream);
    EXPECT_FALSE(BufferInfo<bool8_t>(BUFFER_INFO_CONTAINS_CHUNKDATA));
    EXPECT_EQ(BufferInfo<size_t>(BUFFER_INFO_SIZE_FILLED), image);
    size_t count = 0;
    EXPECT_EQ(mGenTL->DSGetBufferChunkData(mStream, mBuffer, nullptr, &count), GC_ERR_NO_DATA);
}

} // namespace
