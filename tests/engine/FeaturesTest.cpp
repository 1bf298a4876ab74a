// The feature container over an in-memory port: lifecycle, types, the road
// of a set with its invalidations, buffers and lists, documents served by a
// port.
#include <gtest/gtest.h>

#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "engine/Features.h"
#include "engine/Global.h"
#include "gik/MemoryPort.h"
#include "kit/AutoreleasePool.h"

using namespace tvk;

namespace {

const char* kDocument = R"(<RegisterDescription>
  <Category Name="Root"><pFeature>Values</pFeature><pFeature>Hidden</pFeature></Category>
  <Category Name="Values"><pFeature>Gain</pFeature><pFeature>Exposure</pFeature>
    <pFeature>Mode</pFeature><pFeature>Label</pFeature><pFeature>Enabled</pFeature>
    <pFeature>Start</pFeature><pFeature>Blob</pFeature><pFeature>GainTimesTwo</pFeature>
    <pFeature>Fixed</pFeature><pFeature>Temperature</pFeature></Category>
  <Category Name="Hidden"><pFeature>Secret</pFeature></Category>
  <Integer Name="Gain"><DisplayName>Gain (dB)</DisplayName><pValue>RegGain</pValue>
    <Min>1</Min><Max>21</Max><Inc>2</Inc><pSelected>Exposure</pSelected></Integer>
  <IntReg Name="RegGain"><Address>0x10</Address><Length>4</Length><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess></IntReg>
  <Float Name="Exposure"><Unit>us</Unit><pValue>RegExposure</pValue><Min>0.5</Min><Max>100.0</Max></Float>
  <FloatReg Name="RegExposure"><Address>0x20</Address><Length>8</Length><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess></FloatReg>
  <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="On"><DisplayName>Switched on</DisplayName><Description>Runs</Description>
      <Value>1</Value></EnumEntry>
    <EnumEntry Name="Blocked"><pIsAvailable>Enabled</pIsAvailable><Value>2</Value></EnumEntry>
    <pValue>RegMode</pValue></Enumeration>
  <IntReg Name="RegMode"><Address>0x30</Address><Length>4</Length><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess></IntReg>
  <StringReg Name="Label"><Address>0x40</Address><Length>16</Length><pPort>Device</pPort></StringReg>
  <Boolean Name="Enabled"><pValue>RegEnabled</pValue><OnValue>1</OnValue><OffValue>0</OffValue></Boolean>
  <IntReg Name="RegEnabled"><Address>0x50</Address><Length>4</Length><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess></IntReg>
  <Command Name="Start"><pValue>RegStart</pValue><CommandValue>1</CommandValue></Command>
  <IntReg Name="RegStart"><Address>0x60</Address><Length>4</Length><pPort>Device</pPort>
    <Endianess>LittleEndian</Endianess><Cachable>NoCache</Cachable></IntReg>
  <Register Name="Blob"><Address>0x80</Address><Length>8</Length><pPort>Device</pPort></Register>
  <IntSwissKnife Name="GainTimesTwo"><pVariable Name="G">Gain</pVariable><Formula>G * 2</Formula></IntSwissKnife>
  <Integer Name="Fixed"><Value>7</Value><ImposedAccessMode>RO</ImposedAccessMode></Integer>
  <Integer Name="Temperature"><pValue>RegTemperature</pValue><PollingTime>250</PollingTime></Integer>
  <IntReg Name="RegTemperature"><Address>0x70</Address><Length>4</Length><AccessMode>RO</AccessMode>
    <pPort>Device</pPort><Endianess>LittleEndian</Endianess><Cachable>NoCache</Cachable></IntReg>
  <Integer Name="Secret"><Visibility>Invisible</Visibility><Value>1</Value></Integer>
  <Port Name="Device"/></RegisterDescription>)";

// Records what the container tells its delegate.
class cRecorder : public cFeatures::pDelegate {
public:
    void OnFeatureInvalidated(llk::cString* aName, bool aNotify) override {
        if (!mNames.empty()) mNames += ' ';
        mNames += aName->Chars();
        mAllNotify = mAllNotify && aNotify;
    }
    std::string mNames;
    bool mAllNotify = true;
};

class FeaturesTest : public ::testing::Test {
protected:
    void SetUp() override {
        mFeatures = llk::Retained(cFeatures::New(false));
        mPort = llk::Retained(test::cMemoryPort::New(true));
        ASSERT_NE(mFeatures, nullptr);
    }
    void TearDown() override {
        llk::ReleaseAndClear(mFeatures);
        llk::ReleaseAndClear(mPort);
    }
    void Load(const char* aDocument = kDocument) {
        ASSERT_EQ(mFeatures->Prepare(), 0);
        ASSERT_EQ(mFeatures->Connect("Device", mPort, aDocument, false, false, nullptr, nullptr),
                  0);
        ASSERT_EQ(mFeatures->Realize(), 0);
        mFeatures->SetDelegate(&mRecorder);
    }

    llk::uAutoreleasePool mPool;
    cFeatures* mFeatures = nullptr;
    test::cMemoryPort* mPort = nullptr;
    cRecorder mRecorder;
};

TEST_F(FeaturesTest, EveryOperationWaitsForRealize) {
    llk::i8 value = 0;
    EXPECT_EQ(mFeatures->FeatureIntGet("Gain", &value), llk::kRefused);
    llk::u4 found = 0;
    EXPECT_EQ(mFeatures->FeaturesList(nullptr, sizeof(tFeatureInfo), 0, found), llk::kRefused);
    // Documents load only between Prepare and Realize.
    EXPECT_EQ(mFeatures->Inject(kDocument, false), llk::kNotAllowed);
    EXPECT_EQ(mFeatures->Realize(), llk::kNotAllowed);
    Load();
    EXPECT_TRUE(mFeatures->IsRealized());
    EXPECT_EQ(mFeatures->Inject(kDocument, false), llk::kNotAllowed);
    EXPECT_EQ(mFeatures->FeatureIntGet("Gain", &value), 0);
    EXPECT_EQ(mFeatures->Dismiss(), 0);
    EXPECT_EQ(mFeatures->FeatureIntGet("Gain", &value), llk::kRefused);
}

TEST_F(FeaturesTest, PrepareChoosesTheReadingOfTheDocumentsToCome) {
    // An IntReg of one byte: only the wide reading takes it.
    const char* document = R"(<RegisterDescription><Category Name="Root"><pFeature>Small</pFeature>
      </Category><IntReg Name="Small"><Address>0x10</Address><Length>1</Length>
      <pPort>Device</pPort></IntReg><Port Name="Device"/></RegisterDescription>)";
    setenv(cGlobal::kWideReadingVariable, "1", 1);
    ASSERT_EQ(mFeatures->Prepare(), 0);
    EXPECT_TRUE(mFeatures->Runtime()->Reading().IsWide());
    EXPECT_EQ(mFeatures->Connect("Device", mPort, document, false, false, nullptr, nullptr), 0);
    ASSERT_EQ(mFeatures->Realize(), 0);
    mPort->mBytes[0x10] = 0xAB;
    llk::i8 value = 0;
    EXPECT_EQ(mFeatures->FeatureIntGet("Small", &value), 0);
    EXPECT_EQ(value, 0xAB);
    ASSERT_EQ(mFeatures->Dismiss(), 0);

    setenv(cGlobal::kWideReadingVariable, "0", 1);
    ASSERT_EQ(mFeatures->Prepare(), 0);
    EXPECT_FALSE(mFeatures->Runtime()->Reading().IsWide());
    EXPECT_EQ(mFeatures->Connect("Device", mPort, document, false, false, nullptr, nullptr), 101);
    unsetenv(cGlobal::kWideReadingVariable);
}

TEST_F(FeaturesTest, NamesTypesAndRequiredOutputs) {
    Load();
    const std::pair<const char*, tFeatureData> types[] = {
        {"Gain", kFeatureInt},     {"Exposure", kFeatureFloat},   {"Mode", kFeatureEnum},
        {"Label", kFeatureString}, {"Enabled", kFeatureBool},     {"Start", kFeatureCommand},
        {"Blob", kFeatureRaw},     {"GainTimesTwo", kFeatureInt},
    };
    for (auto [name, type] : types) {
        tFeatureData found = kFeatureUnknown;
        EXPECT_EQ(mFeatures->FeatureType(name, found), 0) << name;
        EXPECT_EQ(found, type) << name;
    }
    llk::i8 integer = 0;
    double real = 0.0;
    EXPECT_EQ(mFeatures->FeatureIntGet("Exposure", &integer), kFeatureWrongType);
    EXPECT_EQ(mFeatures->FeatureFloatGet("Gain", &real), kFeatureWrongType);
    EXPECT_EQ(mFeatures->FeatureIntSet("Mode", 1), kFeatureWrongType);
    EXPECT_EQ(mFeatures->FeatureIntGet("Gain", nullptr), kFeatureNullOutput);
    EXPECT_EQ(mFeatures->FeatureRawLen("Blob", nullptr), kFeatureNullOutput);
    // Unknown names, categories, register nodes that are no features, nothing.
    for (const char* name : {"Nope", "Values", "RegGain", "", static_cast<const char*>(nullptr)})
        EXPECT_EQ(mFeatures->FeatureIntGet(name, &integer), llk::kNotFound);
    std::string longName(100000, 'G');
    EXPECT_EQ(mFeatures->FeatureIntGet(longName.c_str(), &integer), llk::kNotFound);
    // The node family sees nodes that are no features.
    EXPECT_TRUE(mFeatures->NodeExists("RegGain"));
    EXPECT_EQ(mFeatures->NodeIntSet("RegGain", 9), 0);
    EXPECT_EQ(mFeatures->NodeIntGet("RegGain", integer), 0);
    EXPECT_EQ(integer, 9);
}

TEST_F(FeaturesTest, SetTellsTheDelegateOfWhatItReachedAndItselfLast) {
    Load();
    EXPECT_EQ(mFeatures->FeatureIntSet("Gain", 5), 0);
    EXPECT_EQ(mPort->GetLittle(0x10, 4), 5u);
    EXPECT_EQ(mRecorder.mNames, "Exposure GainTimesTwo Gain");
    EXPECT_TRUE(mRecorder.mAllNotify);
    // A refused value: no write, no word to the delegate.
    mRecorder.mNames.clear();
    mPort->ResetCounts();
    EXPECT_EQ(mFeatures->FeatureIntSet("Gain", 6), llk::kOutOfRange); // off the increment
    EXPECT_EQ(mFeatures->FeatureIntSet("Gain", 23), llk::kOutOfRange);
    EXPECT_EQ(mFeatures->FeatureFloatSet("Exposure", 0.1), llk::kOutOfRange);
    EXPECT_EQ(mFeatures->FeatureEnumSet("Mode", "Sideways"), llk::kOutOfRange);
    EXPECT_EQ(mFeatures->FeatureIntSet("Fixed", 7), 106);
    EXPECT_EQ(mPort->mStores, 0);
    EXPECT_EQ(mRecorder.mNames, "");
    llk::i8 value = 0;
    EXPECT_EQ(mFeatures->FeatureIntGet("GainTimesTwo", &value), 0);
    EXPECT_EQ(value, 10);
}

TEST_F(FeaturesTest, TrackedInvalidationsReachTheDelegateAsAGroup) {
    Load();
    mFeatures->TrackInvalidations(true);
    EXPECT_EQ(mFeatures->FeatureInvalidate("RegGain"), 0);
    EXPECT_EQ(mFeatures->FeatureInvalidate("RegMode"), 0);
    EXPECT_EQ(mRecorder.mNames, "");
    mFeatures->TrackInvalidations(false);
    EXPECT_EQ(mRecorder.mNames, "Gain Exposure GainTimesTwo Mode");
    EXPECT_EQ(mFeatures->FeatureInvalidate("Nothing"), llk::kNotFound);
}

TEST_F(FeaturesTest, StringBuffersNeverOverflow) {
    Load();
    EXPECT_EQ(mFeatures->FeatureStringSet("Label", "camera-one"), 0);
    llk::u4 size = 0;
    EXPECT_EQ(mFeatures->FeatureStringGet("Label", nullptr, size), 0);
    EXPECT_EQ(size, 11u);
    char buffer[16];
    std::memset(buffer, 'x', sizeof(buffer));
    size = 4;
    EXPECT_EQ(mFeatures->FeatureStringGet("Label", buffer, size), 0);
    EXPECT_STREQ(buffer, "cam");
    EXPECT_EQ(buffer[4], 'x');
    EXPECT_EQ(size, 4u);
    size = 0;
    EXPECT_EQ(mFeatures->FeatureStringGet("Label", buffer, size), 0);
    EXPECT_EQ(buffer[0], 'c');
    size = sizeof(buffer);
    EXPECT_EQ(mFeatures->FeatureStringGet("Label", buffer, size), 0);
    EXPECT_STREQ(buffer, "camera-one");
    EXPECT_EQ(size, 11u);
    // Longer than the register, terminator included.
    EXPECT_EQ(mFeatures->FeatureStringSet("Label", "0123456789abcdef"), 9);
}

TEST_F(FeaturesTest, EnumerationsByNameNumberAndEntry) {
    Load();
    const char* names[2] = {};
    llk::u4 length = 0;
    EXPECT_EQ(mFeatures->FeatureEnumRange("Mode", nullptr, length), 0);
    EXPECT_EQ(length, 3u);
    length = 2;
    EXPECT_EQ(mFeatures->FeatureEnumRange("Mode", names, length), 0);
    EXPECT_EQ(length, 2u);
    EXPECT_STREQ(names[1], "On");
    EXPECT_EQ(mFeatures->FeatureEnumSet("Mode", "On"), 0);
    const char* current = nullptr;
    EXPECT_EQ(mFeatures->FeatureEnumGet("Mode", current), 0);
    EXPECT_STREQ(current, "On");
    bool available = true;
    EXPECT_EQ(mFeatures->FeatureEnumValueIsAvailable("Mode", "Blocked", available), 0);
    EXPECT_FALSE(available);
    EXPECT_EQ(mFeatures->FeatureEnumSet("Mode", "Blocked"), llk::kOutOfRange);
    EXPECT_EQ(mFeatures->FeatureBoolSet("Enabled", true), 0);
    EXPECT_EQ(mFeatures->FeatureEnumSet("Mode", "Blocked"), 0);
    llk::i8 number = 0;
    EXPECT_EQ(mFeatures->FeatureEnumValueAsInteger("Mode", "Blocked", number), 0);
    EXPECT_EQ(number, 2);
    const char* text = nullptr;
    EXPECT_EQ(mFeatures->FeatureEnumValueAsString("Mode", 1, text), 0);
    EXPECT_STREQ(text, "On");
    EXPECT_EQ(mFeatures->FeatureEnumValueAsString("Mode", 9, text), llk::kOutOfRange);
    tFeatureEnumEntry entry{};
    EXPECT_EQ(mFeatures->FeatureEnumValueInfo("Mode", "On", entry), 0);
    EXPECT_STREQ(entry.name, "On");
    EXPECT_STREQ(entry.displayName, "Switched on");
    EXPECT_STREQ(entry.description, "Runs");
    EXPECT_STREQ(entry.sfncNamespace, "Custom");
    EXPECT_EQ(entry.visibility, TvkFeatureVisibilityBeginner);
    EXPECT_EQ(entry.intValue, 1);
    EXPECT_EQ(mFeatures->FeatureEnumValueInfo("Mode", "Nope", entry), llk::kOutOfRange);
    // A register value no entry has.
    EXPECT_EQ(mFeatures->NodeIntSet("RegMode", 7), 0);
    EXPECT_EQ(mFeatures->FeatureEnumGet("Mode", current), 108);
}

TEST_F(FeaturesTest, RangesIncrementsCommandsAndRawBytes) {
    Load();
    llk::i8 min = 0, max = 0, increment = 0;
    EXPECT_EQ(mFeatures->FeatureIntRange("Gain", &min, &max), 0);
    EXPECT_EQ(min, 1);
    EXPECT_EQ(max, 21);
    bool stated = false;
    EXPECT_EQ(mFeatures->FeatureIntIncrement("Gain", &increment, stated), 0);
    EXPECT_TRUE(stated);
    EXPECT_EQ(increment, 2);
    EXPECT_EQ(mFeatures->FeatureIntIncrement("Fixed", &increment, stated), 0);
    EXPECT_FALSE(stated);
    double fmin = 0, fmax = 0, finc = 0;
    EXPECT_EQ(mFeatures->FeatureFloatRange("Exposure", &fmin, &fmax), 0);
    EXPECT_EQ(fmin, 0.5);
    EXPECT_EQ(fmax, 100.0);
    EXPECT_EQ(mFeatures->FeatureFloatIncrement("Exposure", &finc, stated), 0);
    EXPECT_FALSE(stated);

    bool done = false;
    EXPECT_EQ(mFeatures->FeatureCommandIsDone("Start", &done), 0);
    EXPECT_TRUE(done);
    EXPECT_EQ(mFeatures->FeatureCommandExecute("Start"), 0);
    EXPECT_EQ(mRecorder.mNames, "Start");
    EXPECT_EQ(mFeatures->FeatureCommandIsDone("Start", &done), 0);
    EXPECT_FALSE(done);
    mPort->PutLittle(0x60, 0, 4); // the device finished
    EXPECT_EQ(mFeatures->FeatureCommandIsDone("Start", &done), 0);
    EXPECT_TRUE(done);

    llk::u4 length = 0, moved = 0;
    EXPECT_EQ(mFeatures->FeatureRawLen("Blob", &length), 0);
    EXPECT_EQ(length, 8u);
    EXPECT_EQ(mFeatures->FeatureRawLen("Gain", &length), 0);
    EXPECT_EQ(length, 4u);
    EXPECT_EQ(mFeatures->FeatureRawLen("Fixed", &length), kFeatureWrongType);
    // Never more than the register or block holds.
    const char bytes[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    EXPECT_EQ(mFeatures->FeatureRawSet("Blob", bytes, sizeof(bytes), moved), 0);
    EXPECT_EQ(moved, 8u);
    EXPECT_EQ(mPort->Byte(0x88), 0);
    char out[12] = {};
    EXPECT_EQ(mFeatures->FeatureRawGet("Blob", out, sizeof(out), moved), 0);
    EXPECT_EQ(moved, 8u);
    EXPECT_EQ(std::memcmp(out, bytes, 8), 0);
    EXPECT_EQ(out[8], 0);
    EXPECT_EQ(mFeatures->FeatureRawGet("Gain", out, 2, moved), 0);
    EXPECT_EQ(moved, 2u);
    EXPECT_EQ(mFeatures->FeatureRawSet("Blob", nullptr, 4, moved), kFeatureNullOutput);
}

TEST_F(FeaturesTest, RecordsDescribeFeaturesAndListsSkipTheInvisible) {
    Load();
    tFeatureInfo info{};
    ASSERT_EQ(mFeatures->FeatureQuery("Gain", info), 0);
    EXPECT_STREQ(info.name, "Gain");
    EXPECT_STREQ(info.displayName, "Gain (dB)");
    EXPECT_STREQ(info.category, "/Values");
    EXPECT_EQ(info.featureDataType, kFeatureInt);
    EXPECT_EQ(info.featureFlags, TvkFeatureFlagsRead | TvkFeatureFlagsWrite);
    EXPECT_TRUE(info.hasAffectedFeatures);
    EXPECT_TRUE(info.hasSelectedFeatures);
    ASSERT_EQ(mFeatures->FeatureQuery("Exposure", info), 0);
    EXPECT_STREQ(info.displayName, "Exposure");
    EXPECT_STREQ(info.unit, "us");
    ASSERT_EQ(mFeatures->FeatureQuery("Fixed", info), 0);
    EXPECT_EQ(info.featureFlags, TvkFeatureFlagsRead | TvkFeatureFlagsConst);
    ASSERT_EQ(mFeatures->FeatureQuery("Temperature", info), 0);
    EXPECT_EQ(info.featureFlags, TvkFeatureFlagsRead | TvkFeatureFlagsVolatile);
    EXPECT_EQ(info.pollingTime, 250u);

    llk::u4 found = 0;
    ASSERT_EQ(mFeatures->AffectedFeaturesList("Gain", nullptr, sizeof(info), 0, found), 0);
    EXPECT_EQ(found, 2u); // Exposure, GainTimesTwo
    ASSERT_EQ(mFeatures->FeaturesList(nullptr, sizeof(info), 0, found), 0);
    EXPECT_EQ(found, 10u); // all but the invisible "Secret"
    std::vector<tFeatureInfo> list(4);
    ASSERT_EQ(mFeatures->FeaturesList(list.data(), sizeof(info), 4, found), 0);
    EXPECT_EQ(found, 10u);
    EXPECT_STREQ(list[0].name, "Blob");
    EXPECT_STREQ(list[3].name, "Fixed");
    EXPECT_EQ(mFeatures->FeatureQuery("Secret", info), 0);
}

TEST_F(FeaturesTest, AViewWithoutCachePollsWhatCanChange) {
    llk::ReleaseAndClear(mFeatures);
    mFeatures = llk::Retained(cFeatures::New(true));
    Load();
    tFeatureInfo info{};
    ASSERT_EQ(mFeatures->FeatureQuery("Gain", info), 0);
    EXPECT_EQ(info.pollingTime, 1000u);
    EXPECT_TRUE(info.featureFlags & TvkFeatureFlagsVolatile);
    ASSERT_EQ(mFeatures->FeatureQuery("Fixed", info), 0);
    EXPECT_EQ(info.pollingTime, 0u);
    ASSERT_EQ(mFeatures->FeatureQuery("Temperature", info), 0);
    EXPECT_EQ(info.pollingTime, 250u);
}

TEST_F(FeaturesTest, ShapingBeforeRealize) {
    ASSERT_EQ(mFeatures->Prepare(), 0);
    ASSERT_EQ(mFeatures->Connect("Device", mPort, kDocument, false, false, nullptr, nullptr), 0);
    mFeatures->HideCategory("/Hidden");
    EXPECT_TRUE(mFeatures->NodeRemove("Fixed"));
    EXPECT_TRUE(mFeatures->RelocateFeature("Label", "/Info"));
    EXPECT_FALSE(mFeatures->RelocateFeature("Nope", "/Info"));
    ASSERT_EQ(mFeatures->Realize(), 0);
    tFeatureData type = kFeatureUnknown;
    EXPECT_EQ(mFeatures->FeatureType("Secret", type), llk::kNotFound);
    EXPECT_EQ(mFeatures->FeatureType("Fixed", type), llk::kNotFound);
    EXPECT_FALSE(mFeatures->NodeExists("Fixed"));
    tFeatureInfo info{};
    ASSERT_EQ(mFeatures->FeatureQuery("Label", info), 0);
    EXPECT_STREQ(info.category, "/Info");
    // Nodes that are no features still have a type.
    EXPECT_EQ(mFeatures->NodeType("RegExposure", type), 0);
    EXPECT_EQ(type, kFeatureFloat);
    // Once realized, nothing more is removed.
    EXPECT_FALSE(mFeatures->NodeRemove("Gain"));
}

// A port that serves a document the way a producer does, plain or zipped.
class cDocumentPort : public test::cMemoryPort {
public:
    static cDocumentPort* New(const std::string& aImage, bool aCompressed) {
        return Make<cDocumentPort>(aImage, aCompressed);
    }
    llk::i4 Initialize(const std::string& aImage, bool aCompressed) {
        mImage = aImage;
        mCompressed = aCompressed;
        return test::cMemoryPort::Initialize(true);
    }
    llk::i4 QueryXML(void* aBuffer, llk::u4, llk::u4& aLength, llk::u4 aInfo, llk::u4) override {
        if (aInfo == 1002) {
            llk::u4 size = mClaimedSize ? mClaimedSize : static_cast<llk::u4>(mImage.size()) + 1;
            std::memcpy(aBuffer, &size, sizeof(size));
            aLength = sizeof(size);
        } else {
            *static_cast<llk::u1*>(aBuffer) = mCompressed;
            aLength = 1;
        }
        return 0;
    }
    llk::i4 FetchXML(void* aBuffer, llk::u4 aSize, llk::u4& aLength, llk::u4) override {
        if (aSize < mImage.size() + 1) return 18;
        std::memcpy(aBuffer, mImage.data(), mImage.size());
        static_cast<char*>(aBuffer)[mImage.size()] = '\0';
        aLength = static_cast<llk::u4>(mImage.size());
        return 0;
    }
    std::string mImage;
    bool mCompressed = false;
    llk::u4 mClaimedSize = 0; // 0: the image's own
};

// A ZIP image with one deflated entry.
std::string Zip(const std::string& aText) {
    std::vector<unsigned char> packed(compressBound(aText.size()) + 64);
    z_stream z{};
    deflateInit2(&z, 9, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(aText.data()));
    z.avail_in = static_cast<uInt>(aText.size());
    z.next_out = packed.data();
    z.avail_out = static_cast<uInt>(packed.size());
    deflate(&z, Z_FINISH);
    size_t packedSize = z.total_out;
    deflateEnd(&z);
    auto le = [](std::string& s, uint32_t v, int n) {
        for (int i = 0; i < n; ++i)
            s += static_cast<char>(v >> (8 * i));
    };
    std::string image;
    le(image, 0x04034B50, 4);
    le(image, 20, 2);
    le(image, 0, 2);
    le(image, 8, 2); // deflate
    le(image, 0, 4); // time, date
    le(image, crc32(0, reinterpret_cast<const Bytef*>(aText.data()), aText.size()), 4);
    le(image, static_cast<uint32_t>(packedSize), 4);
    le(image, static_cast<uint32_t>(aText.size()), 4);
    le(image, 5, 2); // name length
    le(image, 0, 2);
    image += "a.xml";
    image.append(reinterpret_cast<const char*>(packed.data()), packedSize);
    return image;
}

TEST_F(FeaturesTest, DocumentsServedByThePortPlainOrZipped) {
    for (bool zipped : {false, true}) {
        SCOPED_TRACE(zipped);
        llk::uAutoreleasePool pool;
        cFeatures* features = cFeatures::New(false);
        auto* port = cDocumentPort::New(zipped ? Zip(kDocument) : kDocument, zipped);
        ASSERT_EQ(features->Prepare(), 0);
        ASSERT_EQ(features->Connect("Device", port, false, nullptr, nullptr), 0);
        ASSERT_EQ(features->Realize(), 0);
        llk::u4 found = 0;
        ASSERT_EQ(features->FeaturesList(nullptr, sizeof(tFeatureInfo), 0, found), 0);
        EXPECT_EQ(found, 10u);
        EXPECT_EQ(features->FeatureIntSet("Gain", 3), 0);
        EXPECT_EQ(port->GetLittle(0x10, 4), 3u);
    }
    // Sizes no document has are not believed, claimed by the port or by the
    // ZIP header.
    auto* huge = cDocumentPort::New(kDocument, false);
    huge->mClaimedSize = 0xFFFFFFFF;
    ASSERT_EQ(mFeatures->Prepare(), 0);
    EXPECT_EQ(mFeatures->Connect("Device", huge, false, nullptr, nullptr), 18);
    std::string zipped = Zip(kDocument);
    std::memset(&zipped[22], 0xFF, 4); // the unpacked size
    EXPECT_EQ(
        mFeatures->Connect("Device", cDocumentPort::New(zipped, true), false, nullptr, nullptr),
        18);
    // A compressed flag over plain text is no ZIP image; the port is let go.
    auto* port = cDocumentPort::New(kDocument, true);
    EXPECT_EQ(mFeatures->Connect("Device", port, false, nullptr, nullptr), llk::kFailed);
    EXPECT_FALSE(mFeatures->Runtime()->IsAttached("Device"));
}

} // namespace
