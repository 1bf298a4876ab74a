#include "TavikCPP/AncillaryData.h"

namespace QRX::TvkAPI {

namespace {
// The chunk data begin behind the image, past an 8-byte chunk header.
constexpr uint32_t kChunkHeaderSize = 8;
} // namespace

struct [[gnu::visibility("hidden")]] AncillaryData::Impl {
    TvkFrame_t* m_pFrame;
};

AncillaryData::AncillaryData(TvkFrame_t* pFrame) : m_pImpl(new Impl{pFrame}) {}

AncillaryData::~AncillaryData() {
    delete m_pImpl;
}

TvkErrorType AncillaryData::Open() {
    TvkHandle_t handle = nullptr;
    const auto status = static_cast<TvkErrorType>(TvkAncillaryDataOpen(m_pImpl->m_pFrame, &handle));
    if (status == TvkErrorSuccess) SetHandle(handle);
    return status;
}

// The flat handle closes first, so that its features are detached from a
// handle already gone.
TvkErrorType AncillaryData::Close() {
    const auto status = static_cast<TvkErrorType>(TvkAncillaryDataClose(GetHandle()));
    Reset();
    RevokeHandle();
    return status;
}

TvkErrorType AncillaryData::GetBuffer(uint8_t*& pBuffer) {
    const uint8_t* buffer = nullptr;
    const TvkErrorType status = static_cast<const AncillaryData*>(this)->GetBuffer(buffer);
    if (status == TvkErrorSuccess) pBuffer = const_cast<uint8_t*>(buffer);
    return status;
}

TvkErrorType AncillaryData::GetBuffer(const uint8_t*& pBuffer) const {
    const TvkFrame_t* frame = m_pImpl->m_pFrame;
    if (!frame || frame->ancillarySize == 0) return TvkErrorNotSupported;
    pBuffer = static_cast<const uint8_t*>(frame->buffer) + frame->imageSize + kChunkHeaderSize;
    return TvkErrorSuccess;
}

TvkErrorType AncillaryData::GetSize(uint32_t& size) const {
    size = m_pImpl->m_pFrame ? m_pImpl->m_pFrame->ancillarySize : 0;
    return TvkErrorSuccess;
}

} // namespace QRX::TvkAPI
