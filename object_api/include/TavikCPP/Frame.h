// One image buffer, owned or borrowed, with the record the capture engine
// fills. A frame is announced to and queued at a Camera; its observer hears
// of each fill.
#pragma once

#include <cstdint>

#include <TavikImageTransform.h>

#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT Frame : public virtual ReferenceCounted {
public:
    // Allocates bufferSize bytes (at most 4 GiB - 1).
    explicit Frame(int64_t bufferSize);
    // Uses the caller's memory, which must outlive the frame. A null buffer
    // leaves a frame without one.
    Frame(uint8_t* pBuffer, int64_t bufferSize);
    ~Frame() override;
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    // One observer at a time; a new one replaces the old.
    TvkErrorType RegisterObserver(const IFrameObserverPtr& pObserver);
    TvkErrorType UnregisterObserver();
    bool GetObserver(IFrameObserverPtr& observer) const;

    // The chunk data that came with the image, as a feature container of its
    // own, which the caller opens and closes. It must not outlive the frame.
    TvkErrorType GetAncillaryData(AncillaryDataPtr& pAncillaryData);
    TvkErrorType GetAncillaryData(ConstAncillaryDataPtr& pAncillaryData) const;

    // The start of the buffer; the image starts there too.
    TvkErrorType GetBuffer(uint8_t*& pBuffer);
    TvkErrorType GetBuffer(const uint8_t*& pBuffer) const;
    TvkErrorType GetImage(uint8_t*& pImage);
    TvkErrorType GetImage(const uint8_t*& pImage) const;

    TvkErrorType GetReceiveStatus(TvkFrameStatusType& status) const;
    TvkErrorType GetImageSize(uint32_t& imageSize) const;
    TvkErrorType GetAncillarySize(uint32_t& ancillarySize) const;
    TvkErrorType GetBufferSize(uint32_t& bufferSize) const;
    TvkErrorType GetPixelFormat(TvkPixelFormatType& pixelFormat) const;
    TvkErrorType GetWidth(uint32_t& width) const;
    TvkErrorType GetHeight(uint32_t& height) const;
    TvkErrorType GetOffsetX(uint32_t& offsetX) const;
    TvkErrorType GetOffsetY(uint32_t& offsetY) const;
    TvkErrorType GetFrameID(uint64_t& frameID) const;
    TvkErrorType GetTimestamp(uint64_t& timestamp) const;

    // Defined inside the library only.
    class Impl;

private:
    friend struct FrameAccess;
    Impl* m_pImpl;
};

} // namespace QRX::TvkAPI
