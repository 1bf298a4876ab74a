// Features whose value is a text or a block of bytes.
#pragma once

#include "BaseFeature.h"

namespace QRX::TvkAPI {

class StringFeature : public BaseFeature {
public:
    using BaseFeature::BaseFeature;
    // A null buffer asks the longest text the feature can hold.
    TvkErrorType GetValue(char* pValue, uint32_t& length) const override;
    TvkErrorType SetValue(const char* pValue) override;
    using BaseFeature::GetValue;
    using BaseFeature::SetValue;
};

class RawFeature : public BaseFeature {
public:
    using BaseFeature::BaseFeature;
    TvkErrorType GetValue(uint8_t* pValue, uint32_t& size, uint32_t& sizeFilled) const override;
    TvkErrorType SetValue(const uint8_t* pValue, uint32_t size) override;
    using BaseFeature::GetValue;
    using BaseFeature::SetValue;
};

} // namespace QRX::TvkAPI
