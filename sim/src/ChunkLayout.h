// Chunk data as GigE Vision cameras lay it out: the image is the first chunk,
// and every chunk's data is followed by a tag of its id and length (32-bit
// big-endian each), so that a reader walks the payload from its end. After
// the image comes the simulator's own chunk, whose first five words are what
// Tavik's engine reads as its "ChunkData" block, followed by the standard
// chunk values. All its fields are big-endian.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sim::chunk {

constexpr uint32_t kImageId = 0xA5A5A5A5;
constexpr uint32_t kSimId = 0x5A5A0001;
constexpr size_t kTag = 8;

// Offsets in the simulator's chunk.
constexpr size_t kFrameCount = 0x00; // FrameCounter when the frame was taken
constexpr size_t kUserValue = 0x04;
constexpr size_t kExposure = 0x08;  // microseconds
constexpr size_t kGain = 0x0C;      // dB
constexpr size_t kLevels = 0x10;    // input lines in the high half, outputs in the low half
constexpr size_t kFrameId = 0x18;   // 64-bit
constexpr size_t kTimestamp = 0x20; // 64-bit, ns
constexpr size_t kSimLength = 0x28;

// What chunks add to an image: its tag, the simulator's chunk and its tag.
constexpr size_t kOverhead = kTag + kSimLength + kTag;

// ChunkSelector entries: Image, FrameID, Timestamp, ExposureTime, Gain, LineStatusAll.
constexpr uint32_t kSelectors = 6;

// The camera's values that ride in a frame's chunk.
struct tValues {
    uint32_t frameCount = 0;
    uint32_t userValue = 0;
    uint32_t exposure = 0;
    uint32_t gain = 0;
    uint32_t levels = 0;
};

} // namespace sim::chunk
