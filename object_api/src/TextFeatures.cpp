#include "TextFeatures.h"

namespace QRX::TvkAPI {

TvkErrorType StringFeature::GetValue(char* pValue, uint32_t& length) const {
    return OnDevice([&](TvkHandle_t aHandle) {
        if (!pValue) return TvkFeatureStringMaxlengthQuery(aHandle, Name(), &length);
        return TvkFeatureStringGet(aHandle, Name(), pValue, length, &length);
    });
}

TvkErrorType StringFeature::SetValue(const char* pValue) {
    return OnDevice(
        [&](TvkHandle_t aHandle) { return TvkFeatureStringSet(aHandle, Name(), pValue); });
}

TvkErrorType RawFeature::GetValue(uint8_t* pValue, uint32_t& size, uint32_t& sizeFilled) const {
    return OnDevice([&](TvkHandle_t aHandle) {
        uint32_t length = 0;
        const TvkError_t status = TvkFeatureRawLengthQuery(aHandle, Name(), &length);
        if (!pValue) {
            size = length;
            return status;
        }
        if (size < length) {
            size = length;
            return static_cast<TvkError_t>(TvkErrorMoreData);
        }
        if (status != TvkErrorSuccess) return status;
        return TvkFeatureRawGet(aHandle, Name(), reinterpret_cast<char*>(pValue), size,
                                &sizeFilled);
    });
}

TvkErrorType RawFeature::SetValue(const uint8_t* pValue, uint32_t size) {
    return OnDevice([&](TvkHandle_t aHandle) {
        if (!pValue) return static_cast<TvkError_t>(TvkErrorBadParameter);
        return TvkFeatureRawSet(aHandle, Name(), reinterpret_cast<const char*>(pValue), size);
    });
}

} // namespace QRX::TvkAPI
