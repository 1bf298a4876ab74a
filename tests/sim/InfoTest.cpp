// Every info command of GenTL up to the version the producer reports (1.5),
// on every module, answers with the type and size the standard gives it:
// first asked for its size with no buffer, then read into exactly that.
#include <array>

#include "Sha1.h"
#include "SimFixture.h"

using namespace test;

namespace {

struct tCommand {
    int32_t command;
    INFO_DATATYPE type;
};

// Bytes of a fixed-size type; 0 for texts and buffers.
size_t Width(INFO_DATATYPE aType) {
    switch (aType) {
    case INFO_DATATYPE_BOOL8:
        return 1;
    case INFO_DATATYPE_INT16:
    case INFO_DATATYPE_UINT16:
        return 2;
    case INFO_DATATYPE_INT32:
    case INFO_DATATYPE_UINT32:
        return 4;
    case INFO_DATATYPE_INT64:
    case INFO_DATATYPE_UINT64:
    case INFO_DATATYPE_FLOAT64:
        return 8;
    case INFO_DATATYPE_PTR:
    case INFO_DATATYPE_SIZET:
    case INFO_DATATYPE_PTRDIFF:
        return sizeof(void*);
    default:
        return 0;
    }
}

const tCommand kTLInfo[] = {{TL_INFO_ID, INFO_DATATYPE_STRING},
                            {TL_INFO_VENDOR, INFO_DATATYPE_STRING},
                            {TL_INFO_MODEL, INFO_DATATYPE_STRING},
                            {TL_INFO_VERSION, INFO_DATATYPE_STRING},
                            {TL_INFO_TLTYPE, INFO_DATATYPE_STRING},
                            {TL_INFO_NAME, INFO_DATATYPE_STRING},
                            {TL_INFO_PATHNAME, INFO_DATATYPE_STRING},
                            {TL_INFO_DISPLAYNAME, INFO_DATATYPE_STRING},
                            {TL_INFO_CHAR_ENCODING, INFO_DATATYPE_INT32},
                            {TL_INFO_GENTL_VER_MAJOR, INFO_DATATYPE_UINT32},
                            {TL_INFO_GENTL_VER_MINOR, INFO_DATATYPE_UINT32}};

const tCommand kInterfaceInfo[] = {{INTERFACE_INFO_ID, INFO_DATATYPE_STRING},
                                   {INTERFACE_INFO_DISPLAYNAME, INFO_DATATYPE_STRING},
                                   {INTERFACE_INFO_TLTYPE, INFO_DATATYPE_STRING},
                                   {INTERFACE_INFO_SERIAL_QRX, INFO_DATATYPE_STRING}};

const tCommand kDeviceInfo[] = {{DEVICE_INFO_ID, INFO_DATATYPE_STRING},
                                {DEVICE_INFO_VENDOR, INFO_DATATYPE_STRING},
                                {DEVICE_INFO_MODEL, INFO_DATATYPE_STRING},
                                {DEVICE_INFO_TLTYPE, INFO_DATATYPE_STRING},
                                {DEVICE_INFO_DISPLAYNAME, INFO_DATATYPE_STRING},
                                {DEVICE_INFO_ACCESS_STATUS, INFO_DATATYPE_INT32},
                                {DEVICE_INFO_USER_DEFINED_NAME, INFO_DATATYPE_STRING},
                                {DEVICE_INFO_SERIAL_NUMBER, INFO_DATATYPE_STRING},
                                {DEVICE_INFO_VERSION, INFO_DATATYPE_STRING},
                                {DEVICE_INFO_TIMESTAMP_FREQUENCY, INFO_DATATYPE_UINT64},
                                {DEVICE_INFO_SERIAL_QRX, INFO_DATATYPE_STRING}};

const tCommand kStreamInfo[] = {{STREAM_INFO_ID, INFO_DATATYPE_STRING},
                                {STREAM_INFO_NUM_DELIVERED, INFO_DATATYPE_UINT64},
                                {STREAM_INFO_NUM_UNDERRUN, INFO_DATATYPE_UINT64},
                                {STREAM_INFO_NUM_ANNOUNCED, INFO_DATATYPE_SIZET},
                                {STREAM_INFO_NUM_QUEUED, INFO_DATATYPE_SIZET},
                                {STREAM_INFO_NUM_AWAIT_DELIVERY, INFO_DATATYPE_SIZET},
                                {STREAM_INFO_NUM_STARTED, INFO_DATATYPE_UINT64},
                                {STREAM_INFO_PAYLOAD_SIZE, INFO_DATATYPE_SIZET},
                                {STREAM_INFO_IS_GRABBING, INFO_DATATYPE_BOOL8},
                                {STREAM_INFO_DEFINES_PAYLOADSIZE, INFO_DATATYPE_BOOL8},
                                {STREAM_INFO_TLTYPE, INFO_DATATYPE_STRING},
                                {STREAM_INFO_NUM_CHUNKS_MAX, INFO_DATATYPE_SIZET},
                                {STREAM_INFO_BUF_ANNOUNCE_MIN, INFO_DATATYPE_SIZET},
                                {STREAM_INFO_BUF_ALIGNMENT, INFO_DATATYPE_SIZET}};

const tCommand kBufferInfo[] = {{BUFFER_INFO_BASE, INFO_DATATYPE_PTR},
                                {BUFFER_INFO_SIZE, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_USER_PTR, INFO_DATATYPE_PTR},
                                {BUFFER_INFO_TIMESTAMP, INFO_DATATYPE_UINT64},
                                {BUFFER_INFO_NEW_DATA, INFO_DATATYPE_BOOL8},
                                {BUFFER_INFO_IS_QUEUED, INFO_DATATYPE_BOOL8},
                                {BUFFER_INFO_IS_ACQUIRING, INFO_DATATYPE_BOOL8},
                                {BUFFER_INFO_IS_INCOMPLETE, INFO_DATATYPE_BOOL8},
                                {BUFFER_INFO_TLTYPE, INFO_DATATYPE_STRING},
                                {BUFFER_INFO_SIZE_FILLED, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_WIDTH, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_HEIGHT, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_XOFFSET, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_YOFFSET, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_XPADDING, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_YPADDING, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_FRAMEID, INFO_DATATYPE_UINT64},
                                {BUFFER_INFO_IMAGEPRESENT, INFO_DATATYPE_BOOL8},
                                {BUFFER_INFO_IMAGEOFFSET, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_PAYLOADTYPE, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_PIXELFORMAT, INFO_DATATYPE_UINT64},
                                {BUFFER_INFO_PIXELFORMAT_NAMESPACE, INFO_DATATYPE_UINT64},
                                {BUFFER_INFO_DELIVERED_IMAGEHEIGHT, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_CHUNKLAYOUTID, INFO_DATATYPE_UINT64},
                                {BUFFER_INFO_FILENAME, INFO_DATATYPE_STRING},
                                {BUFFER_INFO_PIXEL_ENDIANNESS, INFO_DATATYPE_INT32},
                                {BUFFER_INFO_DATA_SIZE, INFO_DATATYPE_SIZET},
                                {BUFFER_INFO_TIMESTAMP_NS, INFO_DATATYPE_UINT64},
                                {BUFFER_INFO_DATA_LARGER_THAN_BUFFER, INFO_DATATYPE_BOOL8},
                                {BUFFER_INFO_CONTAINS_CHUNKDATA, INFO_DATATYPE_BOOL8},
                                {BUFFER_INFO_BUNDLE_QRX, INFO_DATATYPE_BUFFER}};

const tCommand kPortInfo[] = {
    {PORT_INFO_ID, INFO_DATATYPE_STRING},          {PORT_INFO_VENDOR, INFO_DATATYPE_STRING},
    {PORT_INFO_MODEL, INFO_DATATYPE_STRING},       {PORT_INFO_TLTYPE, INFO_DATATYPE_STRING},
    {PORT_INFO_MODULE, INFO_DATATYPE_STRING},      {PORT_INFO_LITTLE_ENDIAN, INFO_DATATYPE_BOOL8},
    {PORT_INFO_BIG_ENDIAN, INFO_DATATYPE_BOOL8},   {PORT_INFO_ACCESS_READ, INFO_DATATYPE_BOOL8},
    {PORT_INFO_ACCESS_WRITE, INFO_DATATYPE_BOOL8}, {PORT_INFO_ACCESS_NA, INFO_DATATYPE_BOOL8},
    {PORT_INFO_ACCESS_NI, INFO_DATATYPE_BOOL8},    {PORT_INFO_VERSION, INFO_DATATYPE_STRING},
    {PORT_INFO_PORTNAME, INFO_DATATYPE_STRING}};

const tCommand kUrlInfo[] = {{URL_INFO_URL, INFO_DATATYPE_STRING},
                             {URL_INFO_SCHEMA_VER_MAJOR, INFO_DATATYPE_INT32},
                             {URL_INFO_SCHEMA_VER_MINOR, INFO_DATATYPE_INT32},
                             {URL_INFO_FILE_VER_MAJOR, INFO_DATATYPE_INT32},
                             {URL_INFO_FILE_VER_MINOR, INFO_DATATYPE_INT32},
                             {URL_INFO_FILE_VER_SUBMINOR, INFO_DATATYPE_INT32},
                             {URL_INFO_FILE_SHA1_HASH, INFO_DATATYPE_BUFFER},
                             {URL_INFO_FILE_REGISTER_ADDRESS, INFO_DATATYPE_UINT64},
                             {URL_INFO_FILE_SIZE, INFO_DATATYPE_UINT64},
                             {URL_INFO_SCHEME, INFO_DATATYPE_INT32},
                             {URL_INFO_FILENAME, INFO_DATATYPE_STRING},
                             {URL_INFO_DOCUMENT_ADDRESS_QRX, INFO_DATATYPE_UINT64},
                             {URL_INFO_DOCUMENT_SIZE_QRX, INFO_DATATYPE_UINT32},
                             {URL_INFO_DOCUMENT_ZIPPED_QRX, INFO_DATATYPE_BOOL8}};

const tCommand kEventInfo[] = {{EVENT_EVENT_TYPE, INFO_DATATYPE_INT32},
                               {EVENT_NUM_IN_QUEUE, INFO_DATATYPE_SIZET},
                               {EVENT_NUM_FIRED, INFO_DATATYPE_UINT64},
                               {EVENT_SIZE_MAX, INFO_DATATYPE_SIZET},
                               {EVENT_INFO_DATA_SIZE_MAX, INFO_DATATYPE_SIZET}};

// Checks every command of a table through one info call, given as
// f(command, type*, buffer, size*).
template <class F>
void ExpectAnswers(const char* aWhat, const tCommand* aBegin, const tCommand* aEnd, F aInfo) {
    for (const tCommand* c = aBegin; c != aEnd; ++c) {
        SCOPED_TRACE(std::string(aWhat) + " command " + std::to_string(c->command));
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        size_t size = 0;
        ASSERT_EQ(aInfo(c->command, &type, nullptr, &size), GC_ERR_SUCCESS);
        EXPECT_EQ(type, c->type);
        if (size_t width = Width(c->type)) {
            EXPECT_EQ(size, width);
        }
        ASSERT_GT(size, 0u);
        std::vector<uint8_t> value(size, 0xEE);
        size_t read = size;
        type = INFO_DATATYPE_UNKNOWN;
        ASSERT_EQ(aInfo(c->command, &type, value.data(), &read), GC_ERR_SUCCESS);
        EXPECT_EQ(type, c->type);
        EXPECT_EQ(read, size);
        if (c->type == INFO_DATATYPE_STRING) {
            EXPECT_EQ(value.back(), 0);
            EXPECT_EQ(strlen(reinterpret_cast<const char*>(value.data())), size - 1);
        }
        // One byte short is refused.
        if (size > 1) {
            read = size - 1;
            EXPECT_EQ(aInfo(c->command, &type, value.data(), &read), GC_ERR_BUFFER_TOO_SMALL);
        }
    }
}

#define ALL(table) std::begin(table), std::end(table)

TEST_F(SimulatorTest, EveryInfoCommandAnswersWithTheStandardsTypeAndSize) {
    OpenFirstCamera();
    const std::string interfaceId = InterfaceIds()[0];
    const std::string cameraId = DeviceIds(mInterface)[0];
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    GrabOne(stream);

    ExpectAnswers("GCGetInfo", ALL(kTLInfo), [&](int32_t c, INFO_DATATYPE* t, void* b, size_t* s) {
        return mGenTL->GCGetInfo(c, t, b, s);
    });
    ExpectAnswers("TLGetInfo", ALL(kTLInfo), [&](int32_t c, INFO_DATATYPE* t, void* b, size_t* s) {
        return mGenTL->TLGetInfo(mTL, c, t, b, s);
    });
    ExpectAnswers("IFGetInfo", ALL(kInterfaceInfo),
                  [&](int32_t c, INFO_DATATYPE* t, void* b, size_t* s) {
                      return mGenTL->IFGetInfo(mInterface, c, t, b, s);
                  });
    ExpectAnswers("TLGetInterfaceInfo", ALL(kInterfaceInfo),
                  [&](int32_t c, INFO_DATATYPE* t, void* b, size_t* s) {
                      return mGenTL->TLGetInterfaceInfo(mTL, interfaceId.c_str(), c, t, b, s);
                  });
    ExpectAnswers("DevGetInfo", ALL(kDeviceInfo),
                  [&](int32_t c, INFO_DATATYPE* t, void* b, size_t* s) {
                      return mGenTL->DevGetInfo(mDevice, c, t, b, s);
                  });
    ExpectAnswers("IFGetDeviceInfo", ALL(kDeviceInfo),
                  [&](int32_t c, INFO_DATATYPE* t, void* b, size_t* s) {
                      return mGenTL->IFGetDeviceInfo(mInterface, cameraId.c_str(), c, t, b, s);
                  });
    ExpectAnswers("DSGetInfo", ALL(kStreamInfo),
                  [&](int32_t c, INFO_DATATYPE* t, void* b, size_t* s) {
                      return mGenTL->DSGetInfo(stream, c, t, b, s);
                  });
    ExpectAnswers("DSGetBufferInfo", ALL(kBufferInfo),
                  [&](int32_t c, INFO_DATATYPE* t, void* b, size_t* s) {
                      return mGenTL->DSGetBufferInfo(stream, mBuffer, c, t, b, s);
                  });
    ExpectAnswers("EventGetInfo", ALL(kEventInfo),
                  [&](int32_t c, INFO_DATATYPE* t, void* b, size_t* s) {
                      return mGenTL->EventGetInfo(mNewBuffer, c, t, b, s);
                  });
    // Every port: the camera's and each module's.
    for (PORT_HANDLE port : {mPort, mTL, mInterface, mDevice, static_cast<PORT_HANDLE>(stream)}) {
        ExpectAnswers("GCGetPortInfo", ALL(kPortInfo),
                      [&](int32_t c, INFO_DATATYPE* t, void* b, size_t* s) {
                          return mGenTL->GCGetPortInfo(port, c, t, b, s);
                      });
        ExpectAnswers("GCGetPortURLInfo", ALL(kUrlInfo),
                      [&](int32_t c, INFO_DATATYPE* t, void* b, size_t* s) {
                          return mGenTL->GCGetPortURLInfo(port, 0, c, t, b, s);
                      });
    }
    StopAndClose(stream);
}

TEST_F(SimulatorTest, InfoValuesAgreeWithWhatTheyDescribe) {
    OpenFirstCamera();
    DS_HANDLE stream = nullptr;
    ASSERT_EQ(mGenTL->DevOpenDataStream(mDevice, "Stream0", &stream), GC_ERR_SUCCESS);
    GrabOne(stream);
    auto buffer = [&](BUFFER_INFO_CMD aCommand) {
        uint64_t value = 0;
        size_t size = sizeof(value);
        INFO_DATATYPE type = 0;
        EXPECT_EQ(mGenTL->DSGetBufferInfo(stream, mBuffer, aCommand, &type, &value, &size),
                  GC_ERR_SUCCESS);
        return value;
    };
    EXPECT_EQ(buffer(BUFFER_INFO_DATA_SIZE), mMemory.size());
    EXPECT_EQ(buffer(BUFFER_INFO_SIZE_FILLED), mMemory.size());
    EXPECT_EQ(buffer(BUFFER_INFO_TIMESTAMP_NS), buffer(BUFFER_INFO_TIMESTAMP));
    EXPECT_EQ(buffer(BUFFER_INFO_DATA_LARGER_THAN_BUFFER), 0u);
    EXPECT_EQ(buffer(BUFFER_INFO_CONTAINS_CHUNKDATA), 0u);
    EXPECT_EQ(buffer(BUFFER_INFO_PIXEL_ENDIANNESS), uint64_t{PIXELENDIANNESS_LITTLE});
    StopAndClose(stream);
    // The document's hash is its SHA-1.
    std::array<uint8_t, 20> hash{};
    size_t size = hash.size();
    INFO_DATATYPE type = 0;
    ASSERT_EQ(
        mGenTL->GCGetPortURLInfo(mPort, 0, URL_INFO_FILE_SHA1_HASH, &type, hash.data(), &size),
        GC_ERR_SUCCESS);
    EXPECT_EQ(hash, sim::Sha1(FetchDocument()));
}

std::string Hex(const std::array<uint8_t, 20>& aDigest) {
    std::string text;
    for (uint8_t byte : aDigest) {
        char two[3];
        snprintf(two, sizeof(two), "%02x", byte);
        text += two;
    }
    return text;
}

TEST(Sha1Test, KnownDigests) {
    auto digest = [](const std::string& aText) {
        return Hex(sim::Sha1(std::vector<uint8_t>(aText.begin(), aText.end())));
    };
    EXPECT_EQ(digest(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(digest("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
    // 56 bytes: the length no longer fits the first block.
    EXPECT_EQ(digest("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
}

} // namespace
