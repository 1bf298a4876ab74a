#include "ScalarFeatures.h"

namespace QRX::TvkAPI {

TvkErrorType IntFeature::GetValue(int64_t& value) const {
    return OnDevice([&](TvkHandle_t aHandle) { return TvkFeatureIntGet(aHandle, Name(), &value); });
}

TvkErrorType IntFeature::SetValue(const int64_t& value) {
    return OnDevice([&](TvkHandle_t aHandle) { return TvkFeatureIntSet(aHandle, Name(), value); });
}

TvkErrorType IntFeature::GetRange(int64_t& minimum, int64_t& maximum) const {
    return OnDevice([&](TvkHandle_t aHandle) {
        return TvkFeatureIntRangeQuery(aHandle, Name(), &minimum, &maximum);
    });
}

TvkErrorType IntFeature::GetIncrement(int64_t& increment) const {
    return OnDevice([&](TvkHandle_t aHandle) {
        return TvkFeatureIntIncrementQuery(aHandle, Name(), &increment);
    });
}

TvkErrorType FloatFeature::GetValue(double& value) const {
    return OnDevice(
        [&](TvkHandle_t aHandle) { return TvkFeatureFloatGet(aHandle, Name(), &value); });
}

TvkErrorType FloatFeature::SetValue(const double& value) {
    return OnDevice(
        [&](TvkHandle_t aHandle) { return TvkFeatureFloatSet(aHandle, Name(), value); });
}

TvkErrorType FloatFeature::GetRange(double& minimum, double& maximum) const {
    return OnDevice([&](TvkHandle_t aHandle) {
        return TvkFeatureFloatRangeQuery(aHandle, Name(), &minimum, &maximum);
    });
}

TvkErrorType BoolFeature::GetValue(bool& value) const {
    return OnDevice([&](TvkHandle_t aHandle) {
        TvkBool_t flag = 0;
        const TvkError_t status = TvkFeatureBoolGet(aHandle, Name(), &flag);
        if (status == TvkErrorSuccess) value = flag != 0;
        return status;
    });
}

TvkErrorType BoolFeature::SetValue(bool value) {
    return OnDevice(
        [&](TvkHandle_t aHandle) { return TvkFeatureBoolSet(aHandle, Name(), value ? 1 : 0); });
}

TvkErrorType CommandFeature::RunCommand() {
    return OnDevice([&](TvkHandle_t aHandle) { return TvkFeatureCommandRun(aHandle, Name()); });
}

TvkErrorType CommandFeature::IsCommandDone(bool& isDone) const {
    return OnDevice([&](TvkHandle_t aHandle) {
        TvkBool_t done = 0;
        const TvkError_t status = TvkFeatureCommandIsDone(aHandle, Name(), &done);
        if (status == TvkErrorSuccess) isDone = done != 0;
        return status;
    });
}

} // namespace QRX::TvkAPI
