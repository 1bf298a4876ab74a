// Features of one number, one truth value, or one action.
#pragma once

#include "BaseFeature.h"

namespace QRX::TvkAPI {

class IntFeature : public BaseFeature {
public:
    using BaseFeature::BaseFeature;
    TvkErrorType GetValue(int64_t& value) const override;
    TvkErrorType SetValue(const int64_t& value) override;
    TvkErrorType GetRange(int64_t& minimum, int64_t& maximum) const override;
    TvkErrorType GetIncrement(int64_t& increment) const override;
    using BaseFeature::GetRange;
    using BaseFeature::GetValue;
    using BaseFeature::SetValue;
};

class FloatFeature : public BaseFeature {
public:
    using BaseFeature::BaseFeature;
    TvkErrorType GetValue(double& value) const override;
    TvkErrorType SetValue(const double& value) override;
    TvkErrorType GetRange(double& minimum, double& maximum) const override;
    using BaseFeature::GetRange;
    using BaseFeature::GetValue;
    using BaseFeature::SetValue;
};

class BoolFeature : public BaseFeature {
public:
    using BaseFeature::BaseFeature;
    TvkErrorType GetValue(bool& value) const override;
    TvkErrorType SetValue(bool value) override;
    using BaseFeature::GetValue;
    using BaseFeature::SetValue;
};

class CommandFeature : public BaseFeature {
public:
    using BaseFeature::BaseFeature;
    TvkErrorType RunCommand() override;
    TvkErrorType IsCommandDone(bool& isDone) const override;
};

} // namespace QRX::TvkAPI
