// The chunk data of one frame, with its features. It must not outlive its
// Frame; the user opens and closes it.
#pragma once

#include <cstdint>

#include "TavikCPP/FeatureContainer.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT AncillaryData : public FeatureContainer {
public:
    explicit AncillaryData(TvkFrame_t* pFrame);
    // Does not close: the user does.
    ~AncillaryData() override;

    TvkErrorType Open();
    TvkErrorType Close();

    // The chunk data, behind the image and its chunk header.
    TvkErrorType GetBuffer(uint8_t*& pBuffer);
    TvkErrorType GetBuffer(const uint8_t*& pBuffer) const;
    TvkErrorType GetSize(uint32_t& size) const;

private:
    struct Impl;
    Impl* m_pImpl;
};

} // namespace QRX::TvkAPI
