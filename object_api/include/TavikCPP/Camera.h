// One camera: its identity as discovery reported it, its open handle, its
// registers and memory, and the frames it captures into.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "TavikCPP/FeatureContainer.h"
#include "TavikCPP/IRegisterDevice.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT Camera : public FeatureContainer, public IRegisterDevice {
public:
    // Null texts become empty.
    Camera(const char* pID, const char* pName, const char* pModel, const char* pSerialNumber,
           const char* pInterfaceID, TvkInterfaceType interfaceType);
    // Closes the camera.
    ~Camera() override;

    virtual TvkErrorType Open(TvkAccessModeType accessMode);
    // Ends a capture, gives back every frame, detaches the features, closes.
    virtual TvkErrorType Close();

    virtual TvkErrorType ReadRegisters(const uint64_t* pAddressArray, uint32_t addressSize,
                                       uint64_t* pDataArray, uint32_t* pCompletedReads);
    virtual TvkErrorType WriteRegisters(const uint64_t* pAddressArray, uint32_t addressSize,
                                        const uint64_t* pDataArray, uint32_t* pCompletedWrites);
    virtual TvkErrorType ReadMemory(uint64_t address, uint8_t* pBuffer, uint32_t bufferSize,
                                    uint32_t* pSizeComplete);
    virtual TvkErrorType WriteMemory(uint64_t address, const uint8_t* pBuffer, uint32_t bufferSize,
                                     uint32_t* pSizeComplete);
    TvkErrorType ReadRegisters(const std::vector<uint64_t>& addresses,
                               std::vector<uint64_t>& buffer) override;
    TvkErrorType ReadRegisters(const std::vector<uint64_t>& addresses,
                               std::vector<uint64_t>& buffer, uint32_t& completedReads) override;
    TvkErrorType WriteRegisters(const std::vector<uint64_t>& addresses,
                                const std::vector<uint64_t>& buffer) override;
    TvkErrorType WriteRegisters(const std::vector<uint64_t>& addresses,
                                const std::vector<uint64_t>& buffer,
                                uint32_t& completedWrites) override;
    TvkErrorType ReadMemory(const uint64_t& address, std::vector<uint8_t>& buffer) override;
    TvkErrorType ReadMemory(const uint64_t& address, std::vector<uint8_t>& buffer,
                            uint32_t& completeReads) override;
    TvkErrorType WriteMemory(const uint64_t& address, const std::vector<uint8_t>& buffer) override;
    TvkErrorType WriteMemory(const uint64_t& address, const std::vector<uint8_t>& buffer,
                             uint32_t& sizeComplete) override;

    // Two steps: a null buffer asks the length; a buffer must hold the
    // length + 1 bytes, for the terminating NUL.
    TvkErrorType GetID(char* pID, uint32_t& length) const;
    TvkErrorType GetName(char* pName, uint32_t& length) const;
    TvkErrorType GetModel(char* pModelName, uint32_t& length) const;
    TvkErrorType GetSerialNumber(char* pSerial, uint32_t& length) const;
    TvkErrorType GetInterfaceID(char* pInterfaceID, uint32_t& length) const;
    TvkErrorType GetID(std::string& cameraID) const;
    TvkErrorType GetName(std::string& name) const;
    TvkErrorType GetModel(std::string& model) const;
    TvkErrorType GetSerialNumber(std::string& serial) const;
    TvkErrorType GetInterfaceID(std::string& interfaceID) const;
    TvkErrorType GetInterfaceType(TvkInterfaceType& interfaceType) const;
    // Asks the library afresh each time.
    TvkErrorType GetPermittedAccess(TvkAccessModeType& permittedAccess) const;

    // Capture step by step: announce frames, start, queue, take them from
    // each frame's observer and queue them again, end, flush, revoke.
    TvkErrorType StartCapture();
    TvkErrorType EndCapture();
    TvkErrorType AnnounceFrame(const FramePtr& pFrame);
    TvkErrorType RevokeFrame(const FramePtr& pFrame);
    TvkErrorType RevokeAllFrames();
    TvkErrorType QueueFrame(const FramePtr& pFrame);
    TvkErrorType FlushQueue();

    // Whole acquisitions in one call. A frame too small for the payload is
    // replaced by a new one. Timeouts are in milliseconds.
    TvkErrorType AcquireSingleImage(FramePtr& pFrame, uint32_t timeout);
    TvkErrorType AcquireMultipleImages(FramePtr* pFrames, uint32_t size, uint32_t nTimeout,
                                       uint32_t* pNumFramesCompleted = nullptr);
    // bufferCount frames, each delivered to the observer, which queues it
    // again when done with it.
    TvkErrorType StartContinuousImageAcquisition(int32_t bufferCount,
                                                 const IFrameObserverPtr& pObserver);
    TvkErrorType StopContinuousImageAcquisition();

private:
    class Impl;
    Impl* m_pImpl;
};

} // namespace QRX::TvkAPI
