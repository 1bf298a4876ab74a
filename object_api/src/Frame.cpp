#include "TavikCPP/Frame.h"

#include <new>

#include "FrameImpl.h"
#include "LockGuards.h"
#include "Log.h"
#include "TavikCPP/AncillaryData.h"
#include "TavikCPP/IFrameObserver.h"

namespace QRX::TvkAPI {

namespace {
const char kLockFailure[] = "Could not lock frame observer.";
} // namespace

Frame::Impl::Impl() : m_Frame{}, m_pObserverMutex(new Mutex()) {
    m_Frame.receiveStatus = TvkFrameStatusInvalid;
}

Frame::Frame(int64_t bufferSize) : m_pImpl(new Impl()) {
    // The record holds 32 bits of size.
    const auto size = static_cast<uint32_t>(bufferSize < 0 ? 0 : bufferSize);
    try {
        m_pImpl->m_pBuffer = new uint8_t[size];
    } catch (...) {
        delete m_pImpl;
        throw;
    }
    m_pImpl->m_Frame.buffer = m_pImpl->m_pBuffer;
    m_pImpl->m_Frame.bufferSize = size;
}

Frame::Frame(uint8_t* pBuffer, int64_t bufferSize) : m_pImpl(new Impl()) {
    m_pImpl->m_bIsUserBuffer = true;
    if (!pBuffer) {
        LogFailure("No valid buffer passed when constructing frame.", "QRX::TvkAPI::Frame::Frame");
        return;
    }
    m_pImpl->m_pBuffer = pBuffer;
    m_pImpl->m_Frame.buffer = pBuffer;
    m_pImpl->m_Frame.bufferSize = static_cast<uint32_t>(bufferSize < 0 ? 0 : bufferSize);
}

Frame::~Frame() {
    UnregisterObserver();
    if (!m_pImpl->m_bIsUserBuffer) delete[] m_pImpl->m_pBuffer;
    delete m_pImpl;
}

TvkErrorType Frame::RegisterObserver(const IFrameObserverPtr& pObserver) {
    if (!pObserver) return TvkErrorBadParameter;
    WriteLockGuard writing(m_pImpl->m_observerConditionHelper, m_pImpl->m_pObserverMutex, true);
    if (!writing) {
        LogFailure(kLockFailure, "QRX::TvkAPI::Frame::RegisterObserver");
        return TvkErrorResources;
    }
    m_pImpl->m_pObserver = pObserver;
    return TvkErrorSuccess;
}

TvkErrorType Frame::UnregisterObserver() {
    IFrameObserverPtr released;
    WriteLockGuard writing(m_pImpl->m_observerConditionHelper, m_pImpl->m_pObserverMutex, true);
    if (!writing) {
        LogFailure(kLockFailure, "QRX::TvkAPI::Frame::UnregisterObserver");
        return TvkErrorResources;
    }
    if (!m_pImpl->m_pObserver) return TvkErrorNotFound;
    released.Swap(m_pImpl->m_pObserver);
    return TvkErrorSuccess;
}

bool Frame::GetObserver(IFrameObserverPtr& observer) const {
    ReadLockGuard reading(m_pImpl->m_observerConditionHelper, m_pImpl->m_pObserverMutex);
    if (!reading) {
        LogFailure(kLockFailure, "QRX::TvkAPI::Frame::GetObserver");
        return false;
    }
    if (!m_pImpl->m_pObserver) return false;
    observer = m_pImpl->m_pObserver;
    return true;
}

TvkErrorType Frame::GetAncillaryData(AncillaryDataPtr& pAncillaryData) {
    if (m_pImpl->m_Frame.ancillarySize == 0) return TvkErrorNotFound;
    try {
        pAncillaryData.Reset(new AncillaryData(&m_pImpl->m_Frame));
    } catch (const std::bad_alloc&) {
        return TvkErrorResources;
    }
    return TvkErrorSuccess;
}

TvkErrorType Frame::GetAncillaryData(ConstAncillaryDataPtr& pAncillaryData) const {
    AncillaryDataPtr data;
    const TvkErrorType status = const_cast<Frame*>(this)->GetAncillaryData(data);
    if (status == TvkErrorSuccess) pAncillaryData = data;
    return status;
}

TvkErrorType Frame::GetBuffer(uint8_t*& pBuffer) {
    pBuffer = m_pImpl->m_pBuffer;
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetBuffer(const uint8_t*& pBuffer) const {
    pBuffer = m_pImpl->m_pBuffer;
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetImage(uint8_t*& pImage) {
    return GetBuffer(pImage);
}
TvkErrorType Frame::GetImage(const uint8_t*& pImage) const {
    return GetBuffer(pImage);
}

TvkErrorType Frame::GetReceiveStatus(TvkFrameStatusType& status) const {
    status = static_cast<TvkFrameStatusType>(m_pImpl->m_Frame.receiveStatus);
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetImageSize(uint32_t& imageSize) const {
    imageSize = m_pImpl->m_Frame.imageSize;
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetAncillarySize(uint32_t& ancillarySize) const {
    ancillarySize = m_pImpl->m_Frame.ancillarySize;
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetBufferSize(uint32_t& bufferSize) const {
    bufferSize = m_pImpl->m_Frame.bufferSize;
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetPixelFormat(TvkPixelFormatType& pixelFormat) const {
    pixelFormat = static_cast<TvkPixelFormatType>(m_pImpl->m_Frame.pixelFormat);
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetWidth(uint32_t& width) const {
    width = m_pImpl->m_Frame.width;
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetHeight(uint32_t& height) const {
    height = m_pImpl->m_Frame.height;
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetOffsetX(uint32_t& offsetX) const {
    offsetX = m_pImpl->m_Frame.offsetX;
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetOffsetY(uint32_t& offsetY) const {
    offsetY = m_pImpl->m_Frame.offsetY;
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetFrameID(uint64_t& frameID) const {
    frameID = m_pImpl->m_Frame.frameID;
    return TvkErrorSuccess;
}
TvkErrorType Frame::GetTimestamp(uint64_t& timestamp) const {
    timestamp = m_pImpl->m_Frame.timestamp;
    return TvkErrorSuccess;
}

} // namespace QRX::TvkAPI
