// A Feature takes the class of its data type: calls of its own kind reach
// the library (and, with no device behind it, answer that it is not open);
// calls of another kind answer TvkErrorWrongType without touching anything.
#include "ObjectFixture.h"

namespace {

using namespace QRX::TvkAPI;

class Silent : public IFeatureObserver {
public:
    void FeatureChanged(const FeaturePtr&) override {}
};

FeaturePtr Detached(TvkFeatureDataType aType, const char* aName = "Probe") {
    TvkFeatureInfo info{};
    info.name = aName;
    info.featureDataType = aType;
    return FeaturePtr(new Feature(&info, nullptr));
}

// Each value call, tried on a feature: the statuses, in a fixed order.
std::vector<TvkErrorType> TryAll(Feature& rFeature) {
    int64_t i = 0, j = 0;
    double d = 0, e = 0;
    bool b = false;
    uint32_t size = 8, filled = 0;
    uint8_t raw[8] = {};
    char text[8] = {};
    const char* names[4] = {};
    EnumEntry entry;
    return {rFeature.GetValue(i),
            rFeature.SetValue(int64_t{1}),
            rFeature.GetRange(i, j),
            rFeature.GetIncrement(i),
            rFeature.GetValue(d),
            rFeature.SetValue(1.0),
            rFeature.GetRange(d, e),
            rFeature.GetValue(b),
            rFeature.SetValue(true),
            rFeature.GetValue(text, size),
            rFeature.SetValue("x"),
            rFeature.RunCommand(),
            rFeature.IsCommandDone(b),
            rFeature.GetValue(raw, size, filled),
            rFeature.SetValue(raw, 1),
            rFeature.GetEntry(entry, "x"),
            rFeature.IsValueAvailable("x", b),
            rFeature.GetValues(names, size)};
}

constexpr TvkErrorType W = TvkErrorWrongType;
constexpr TvkErrorType N = TvkErrorDeviceNotOpen;

TEST(FeatureKindsTest, EachKindAnswersItsOwnCallsOnly) {
    using Row = std::vector<TvkErrorType>;
    EXPECT_EQ(TryAll(*Detached(TvkFeatureDataInt)),
              (Row{N, N, N, N, W, W, W, W, W, W, W, W, W, W, W, W, W, W}));
    EXPECT_EQ(TryAll(*Detached(TvkFeatureDataFloat)),
              (Row{W, W, W, W, N, N, N, W, W, W, W, W, W, W, W, W, W, W}));
    EXPECT_EQ(TryAll(*Detached(TvkFeatureDataBool)),
              (Row{W, W, W, W, W, W, W, N, N, W, W, W, W, W, W, W, W, W}));
    EXPECT_EQ(TryAll(*Detached(TvkFeatureDataString)),
              (Row{W, W, W, W, W, W, W, W, W, N, N, W, W, W, W, W, W, W}));
    EXPECT_EQ(TryAll(*Detached(TvkFeatureDataCommand)),
              (Row{W, W, W, W, W, W, W, W, W, W, W, N, N, W, W, W, W, W}));
    EXPECT_EQ(TryAll(*Detached(TvkFeatureDataRaw)),
              (Row{W, W, W, W, W, W, W, W, W, W, W, W, W, N, N, W, W, W}));
    EXPECT_EQ(TryAll(*Detached(TvkFeatureDataEnum)),
              (Row{N, N, W, W, W, W, W, W, W, N, N, W, W, W, W, N, N, N}));
}

TEST(FeatureKindsTest, AFeatureOfNoKnownTypeHasNoValueButItsDescription) {
    for (TvkFeatureDataType type : {TvkFeatureDataUnknown, TvkFeatureDataNone}) {
        FeaturePtr feature = Detached(type, "Category");
        for (TvkErrorType status : TryAll(*feature))
            EXPECT_EQ(status, W);
        std::string name;
        EXPECT_EQ(feature->GetName(name), TvkErrorSuccess);
        EXPECT_EQ(name, "Category");
        TvkFeatureDataType reported = TvkFeatureDataInt;
        EXPECT_EQ(feature->GetDataType(reported), TvkErrorSuccess);
        EXPECT_EQ(reported, type);
    }
}

TEST(FeatureKindsTest, A32BitValueReachesIntegerAndEnumerationFeatures) {
    const int32_t value = 3;
    EXPECT_EQ(Detached(TvkFeatureDataInt)->SetValue(value), N);
    EXPECT_EQ(Detached(TvkFeatureDataEnum)->SetValue(value), N);
    EXPECT_EQ(Detached(TvkFeatureDataFloat)->SetValue(value), W);
}

TEST(FeatureKindsTest, HelpersCheckTheirArgumentsFirst) {
    FeaturePtr raw = Detached(TvkFeatureDataRaw);
    EXPECT_EQ(raw->SetValue(std::vector<uint8_t>{}), TvkErrorBadParameter);
    std::vector<uint8_t> bytes;
    EXPECT_EQ(raw->GetValue(bytes), N);
    std::string text;
    EXPECT_EQ(Detached(TvkFeatureDataString)->GetValue(text), N);
    std::vector<int64_t> values{1, 2};
    EXPECT_EQ(Detached(TvkFeatureDataEnum)->GetValues(values), N);
    EXPECT_EQ(values.size(), 2u);
}

TEST(FeatureKindsTest, ObserversNeedAnAttachedFeature) {
    FeaturePtr feature = Detached(TvkFeatureDataInt);
    IFeatureObserverPtr observer(new Silent());
    EXPECT_EQ(feature->RegisterObserver(IFeatureObserverPtr()), TvkErrorBadParameter);
    EXPECT_EQ(feature->RegisterObserver(observer), N);
    EXPECT_EQ(feature->UnregisterObserver(IFeatureObserverPtr()), TvkErrorBadParameter);
    EXPECT_EQ(feature->UnregisterObserver(observer), N);
    std::vector<FeaturePtr> affected;
    EXPECT_EQ(feature->GetAffectedFeatures(affected), N);
    bool readable = false;
    EXPECT_EQ(feature->IsReadable(readable), N);
    // Nothing kept a reference.
    EXPECT_EQ(observer.UseCount(), 1u);
}

class FeatureLogTest : public test::ObjectFixture {};

TEST_F(FeatureLogTest, AFeatureWithoutRecordOrContainerIsLogged) {
    Feature feature(nullptr, nullptr);
    int64_t value = 0;
    EXPECT_EQ(feature.GetValue(value), W);
    const std::string log = NewLog();
    EXPECT_NE(log.find(": No valid feature info pointer passed in function: "
                       "QRX::TvkAPI::BaseFeature::BaseFeature\n"),
              std::string::npos);
    EXPECT_NE(log.find(": No valid feature container pointer passed in function: "
                       "QRX::TvkAPI::BaseFeature::BaseFeature\n"),
              std::string::npos);
}

} // namespace
