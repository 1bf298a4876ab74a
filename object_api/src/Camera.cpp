#include "TavikCPP/Camera.h"

#include "CameraImpl.h"
#include "LockGuards.h"
#include "Log.h"
#include "Text.h"

namespace QRX::TvkAPI {

namespace {
std::string TextOf(const char* aText) {
    return aText ? aText : "";
}
} // namespace

IRegisterDevice::~IRegisterDevice() = default;

Camera::Impl::Impl(const char* pID, const char* pName, const char* pModel,
                   const char* pSerialNumber, const char* pInterfaceID,
                   TvkInterfaceType interfaceType)
    : m_CameraInfo{TextOf(pID),           TextOf(pName),        TextOf(pModel),
                   TextOf(pSerialNumber), TextOf(pInterfaceID), interfaceType},
      m_pQueueFrameMutex(new Mutex()) {}

Camera::Camera(const char* pID, const char* pName, const char* pModel, const char* pSerialNumber,
               const char* pInterfaceID, TvkInterfaceType interfaceType)
    : m_pImpl(new Impl(pID, pName, pModel, pSerialNumber, pInterfaceID, interfaceType)) {}

Camera::~Camera() {
    Camera::Close();
    delete m_pImpl;
}

TvkErrorType Camera::Open(TvkAccessModeType accessMode) {
    TvkHandle_t handle = nullptr;
    const auto status = static_cast<TvkErrorType>(
        TvkCameraOpen(m_pImpl->m_CameraInfo.id.c_str(), accessMode, &handle));
    if (status == TvkErrorSuccess) SetHandle(handle);
    return status;
}

TvkErrorType Camera::Close() {
    const TvkHandle_t handle = GetHandle();
    if (!handle) return TvkErrorSuccess;
    bool framesKnown;
    {
        // A gate that can't be entered may hide frames: take it as not empty.
        ReadLockGuard reading(m_pImpl->m_frameHandlersConditionHelper, m_pImpl->m_frameHandlers);
        framesKnown = !reading || !m_pImpl->m_frameHandlers.Vector.empty();
    }
    if (framesKnown) {
        auto status = static_cast<TvkErrorType>(TvkCaptureEnd(handle));
        if (status == TvkErrorSuccess) status = FlushQueue();
        if (status == TvkErrorSuccess) status = RevokeAllFrames();
        if (status != TvkErrorSuccess)
            LogFailure("Could not successfully revoke all frames", "QRX::TvkAPI::Camera::Close");
    }
    Reset();
    const auto status = static_cast<TvkErrorType>(TvkCameraClose(handle));
    RevokeHandle();
    return status;
}

TvkErrorType Camera::ReadRegisters(const uint64_t* pAddressArray, uint32_t addressSize,
                                   uint64_t* pDataArray, uint32_t* pCompletedReads) {
    return static_cast<TvkErrorType>(
        TvkRegistersRead(GetHandle(), addressSize, pAddressArray, pDataArray, pCompletedReads));
}

TvkErrorType Camera::WriteRegisters(const uint64_t* pAddressArray, uint32_t addressSize,
                                    const uint64_t* pDataArray, uint32_t* pCompletedWrites) {
    return static_cast<TvkErrorType>(
        TvkRegistersWrite(GetHandle(), addressSize, pAddressArray, pDataArray, pCompletedWrites));
}

TvkErrorType Camera::ReadMemory(uint64_t address, uint8_t* pBuffer, uint32_t bufferSize,
                                uint32_t* pSizeComplete) {
    return static_cast<TvkErrorType>(TvkMemoryRead(
        GetHandle(), address, bufferSize, reinterpret_cast<char*>(pBuffer), pSizeComplete));
}

TvkErrorType Camera::WriteMemory(uint64_t address, const uint8_t* pBuffer, uint32_t bufferSize,
                                 uint32_t* pSizeComplete) {
    return static_cast<TvkErrorType>(TvkMemoryWrite(
        GetHandle(), address, bufferSize, reinterpret_cast<const char*>(pBuffer), pSizeComplete));
}

TvkErrorType Camera::ReadRegisters(const std::vector<uint64_t>& addresses,
                                   std::vector<uint64_t>& buffer) {
    uint32_t completedReads = 0;
    return ReadRegisters(addresses, buffer, completedReads);
}

TvkErrorType Camera::ReadRegisters(const std::vector<uint64_t>& addresses,
                                   std::vector<uint64_t>& buffer, uint32_t& completedReads) {
    if (addresses.empty() || buffer.empty() || addresses.size() > buffer.size())
        return TvkErrorBadParameter;
    return ReadRegisters(addresses.data(), static_cast<uint32_t>(addresses.size()), buffer.data(),
                         &completedReads);
}

TvkErrorType Camera::WriteRegisters(const std::vector<uint64_t>& addresses,
                                    const std::vector<uint64_t>& buffer) {
    uint32_t completedWrites = 0;
    return WriteRegisters(addresses, buffer, completedWrites);
}

TvkErrorType Camera::WriteRegisters(const std::vector<uint64_t>& addresses,
                                    const std::vector<uint64_t>& buffer,
                                    uint32_t& completedWrites) {
    if (addresses.empty() || buffer.empty() || addresses.size() != buffer.size())
        return TvkErrorBadParameter;
    return WriteRegisters(addresses.data(), static_cast<uint32_t>(addresses.size()), buffer.data(),
                          &completedWrites);
}

TvkErrorType Camera::ReadMemory(const uint64_t& address, std::vector<uint8_t>& buffer) {
    uint32_t completeReads = 0;
    return ReadMemory(address, buffer, completeReads);
}

TvkErrorType Camera::ReadMemory(const uint64_t& address, std::vector<uint8_t>& buffer,
                                uint32_t& completeReads) {
    if (buffer.empty()) return TvkErrorBadParameter;
    return ReadMemory(address, buffer.data(), static_cast<uint32_t>(buffer.size()), &completeReads);
}

TvkErrorType Camera::WriteMemory(const uint64_t& address, const std::vector<uint8_t>& buffer) {
    uint32_t sizeComplete = 0;
    return WriteMemory(address, buffer, sizeComplete);
}

TvkErrorType Camera::WriteMemory(const uint64_t& address, const std::vector<uint8_t>& buffer,
                                 uint32_t& sizeComplete) {
    if (buffer.empty()) return TvkErrorBadParameter;
    return WriteMemory(address, buffer.data(), static_cast<uint32_t>(buffer.size()), &sizeComplete);
}

TvkErrorType Camera::GetID(char* pID, uint32_t& length) const {
    return CopyText(m_pImpl->m_CameraInfo.id, pID, length, true);
}
TvkErrorType Camera::GetName(char* pName, uint32_t& length) const {
    return CopyText(m_pImpl->m_CameraInfo.name, pName, length, true);
}
TvkErrorType Camera::GetModel(char* pModelName, uint32_t& length) const {
    return CopyText(m_pImpl->m_CameraInfo.model, pModelName, length, true);
}
TvkErrorType Camera::GetSerialNumber(char* pSerial, uint32_t& length) const {
    return CopyText(m_pImpl->m_CameraInfo.serialNumber, pSerial, length, true);
}
TvkErrorType Camera::GetInterfaceID(char* pInterfaceID, uint32_t& length) const {
    return CopyText(m_pImpl->m_CameraInfo.interfaceID, pInterfaceID, length, true);
}

TvkErrorType Camera::GetID(std::string& cameraID) const {
    return ReadText(cameraID,
                    [this](char* pText, uint32_t& rLength) { return GetID(pText, rLength); });
}
TvkErrorType Camera::GetName(std::string& name) const {
    return ReadText(name,
                    [this](char* pText, uint32_t& rLength) { return GetName(pText, rLength); });
}
TvkErrorType Camera::GetModel(std::string& model) const {
    return ReadText(model,
                    [this](char* pText, uint32_t& rLength) { return GetModel(pText, rLength); });
}
TvkErrorType Camera::GetSerialNumber(std::string& serial) const {
    return ReadText(
        serial, [this](char* pText, uint32_t& rLength) { return GetSerialNumber(pText, rLength); });
}
TvkErrorType Camera::GetInterfaceID(std::string& interfaceID) const {
    return ReadText(interfaceID, [this](char* pText, uint32_t& rLength) {
        return GetInterfaceID(pText, rLength);
    });
}

TvkErrorType Camera::GetInterfaceType(TvkInterfaceType& interfaceType) const {
    interfaceType = m_pImpl->m_CameraInfo.interfaceType;
    return TvkErrorSuccess;
}

TvkErrorType Camera::GetPermittedAccess(TvkAccessModeType& permittedAccess) const {
    TvkCameraInfo_t info{};
    const auto status = static_cast<TvkErrorType>(
        TvkCameraInfoQuery(m_pImpl->m_CameraInfo.id.c_str(), &info, sizeof(info)));
    if (status == TvkErrorSuccess)
        permittedAccess = static_cast<TvkAccessModeType>(info.permittedAccess);
    return status;
}

TvkErrorType Camera::StartCapture() {
    return static_cast<TvkErrorType>(TvkCaptureStart(GetHandle()));
}

TvkErrorType Camera::EndCapture() {
    return static_cast<TvkErrorType>(TvkCaptureEnd(GetHandle()));
}

} // namespace QRX::TvkAPI
