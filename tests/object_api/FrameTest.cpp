// Frames without a camera: their buffer, their record, their observer.
#include "ObjectFixture.h"

namespace {

using namespace QRX::TvkAPI;

class Counting : public IFrameObserver {
public:
    Counting() : IFrameObserver(CameraPtr()) {}
    void FrameReceived(const FramePtr) override {}
};

TEST(FrameTest, AnOwnedBufferIsDescribedByTheRecord) {
    FramePtr frame(new Frame(int64_t{4096}));
    uint8_t* buffer = nullptr;
    const uint8_t* image = nullptr;
    uint32_t size = 0, imageSize = 1, ancillarySize = 1, width = 1;
    uint64_t id = 1;
    TvkFrameStatusType status = TvkFrameStatusComplete;
    EXPECT_EQ(frame->GetBuffer(buffer), TvkErrorSuccess);
    EXPECT_NE(buffer, nullptr);
    EXPECT_EQ(static_cast<const Frame&>(*frame).GetImage(image), TvkErrorSuccess);
    EXPECT_EQ(image, buffer);
    EXPECT_EQ(frame->GetBufferSize(size), TvkErrorSuccess);
    EXPECT_EQ(size, 4096u);
    // A frame nobody filled: an invalid status and zeros.
    EXPECT_EQ(frame->GetReceiveStatus(status), TvkErrorSuccess);
    EXPECT_EQ(status, TvkFrameStatusInvalid);
    frame->GetImageSize(imageSize);
    frame->GetAncillarySize(ancillarySize);
    frame->GetWidth(width);
    frame->GetFrameID(id);
    EXPECT_EQ(imageSize + ancillarySize + width + id, 0u);
    buffer[4095] = 1; // the whole buffer is the frame's
}

TEST(FrameTest, ACallersBufferIsUsedAndNotFreed) {
    uint8_t memory[256];
    {
        FramePtr frame(new Frame(memory, sizeof(memory)));
        uint8_t* buffer = nullptr;
        uint32_t size = 0;
        frame->GetBuffer(buffer);
        frame->GetBufferSize(size);
        EXPECT_EQ(buffer, memory);
        EXPECT_EQ(size, sizeof(memory));
    }
    FramePtr none(new Frame(nullptr, 256));
    uint8_t* buffer = memory;
    uint32_t size = 1;
    none->GetBuffer(buffer);
    none->GetBufferSize(size);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(size, 0u);
}

TEST(FrameTest, OneObserverAtATime) {
    FramePtr frame(new Frame(int64_t{16}));
    IFrameObserverPtr first(new Counting()), second(new Counting()), seen;
    EXPECT_FALSE(frame->GetObserver(seen));
    EXPECT_EQ(frame->UnregisterObserver(), TvkErrorNotFound);
    EXPECT_EQ(frame->RegisterObserver(IFrameObserverPtr()), TvkErrorBadParameter);
    EXPECT_EQ(frame->RegisterObserver(first), TvkErrorSuccess);
    EXPECT_EQ(frame->RegisterObserver(second), TvkErrorSuccess);
    ASSERT_TRUE(frame->GetObserver(seen));
    EXPECT_TRUE(seen.IsEqualTo(second));
    EXPECT_EQ(first.UseCount(), 1u);
    seen.Reset();
    frame.Reset();
    // The frame let its observer go.
    EXPECT_EQ(second.UseCount(), 1u);
}

TEST(FrameTest, AFrameWithoutChunkDataHasNoAncillaryData) {
    FramePtr frame(new Frame(int64_t{16}));
    AncillaryDataPtr data;
    EXPECT_EQ(frame->GetAncillaryData(data), TvkErrorNotFound);
    EXPECT_TRUE(data.IsNull());
    ConstAncillaryDataPtr constData;
    EXPECT_EQ(static_cast<const Frame&>(*frame).GetAncillaryData(constData), TvkErrorNotFound);
}

TEST(AncillaryDataTest, TheChunkDataLieBehindTheImageAndItsHeader) {
    uint8_t memory[64] = {};
    TvkFrame_t record{};
    record.buffer = memory;
    record.bufferSize = sizeof(memory);
    AncillaryData none(&record);
    const uint8_t* chunk = nullptr;
    uint32_t size = 1;
    EXPECT_EQ(none.GetBuffer(chunk), TvkErrorNotSupported);
    EXPECT_EQ(none.GetSize(size), TvkErrorSuccess);
    EXPECT_EQ(size, 0u);

    record.imageSize = 32;
    record.ancillarySize = 24;
    AncillaryData data(&record);
    uint8_t* writable = nullptr;
    EXPECT_EQ(data.GetBuffer(writable), TvkErrorSuccess);
    EXPECT_EQ(writable, memory + 32 + 8);
    EXPECT_EQ(data.GetSize(size), TvkErrorSuccess);
    EXPECT_EQ(size, 24u);
    EXPECT_EQ(data.GetHandle(), nullptr);
}

} // namespace
