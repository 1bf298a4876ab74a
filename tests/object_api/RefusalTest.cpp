// What each object answers when the library below refuses (not started, or
// no such device), and for arguments it can judge itself. Every answer is a
// status; nothing throws.
#include "ObjectFixture.h"

namespace {

using namespace QRX::TvkAPI;

class Quiet : public ICameraListObserver {
public:
    void CameraListChanged(CameraPtr, UpdateTriggerType) override {}
};

class QuietInterfaces : public IInterfaceListObserver {
public:
    void InterfaceListChanged(InterfacePtr, UpdateTriggerType) override {}
};

class RefusalTest : public test::ObjectFixture {
protected:
    TavikSystem& mSystem = TavikSystem::GetInstance();
};

TEST_F(RefusalTest, TheSystemBeforeStartupPassesTheLibrarysAnswerOn) {
    uint32_t size = 7;
    EXPECT_EQ(mSystem.GetCameras(nullptr, size), TvkErrorApiNotStarted);
    EXPECT_EQ(size, 7u);
    std::vector<CameraPtr> cameras;
    EXPECT_EQ(mSystem.GetCameras(cameras), TvkErrorApiNotStarted);
    std::vector<InterfacePtr> interfaces;
    EXPECT_EQ(mSystem.GetInterfaces(interfaces), TvkErrorApiNotStarted);
    CameraPtr camera;
    InterfacePtr iface;
    EXPECT_EQ(mSystem.GetCameraByID("SimCam-Mono", camera), TvkErrorApiNotStarted);
    EXPECT_EQ(mSystem.GetInterfaceByID("SimGEV-0", iface), TvkErrorApiNotStarted);
    EXPECT_EQ(mSystem.OpenCameraByID("SimCam-Mono", TvkAccessModeFull, camera),
              TvkErrorApiNotStarted);
    EXPECT_TRUE(camera.IsNull());
    EXPECT_TRUE(mSystem.GetCameraPtrByHandle(reinterpret_cast<void*>(0x1234)).IsNull());
}

TEST_F(RefusalTest, TheSystemJudgesNullArgumentsItself) {
    CameraPtr camera;
    InterfacePtr iface;
    EXPECT_EQ(mSystem.GetCameraByID(nullptr, camera), TvkErrorBadParameter);
    EXPECT_EQ(mSystem.OpenCameraByID(nullptr, TvkAccessModeFull, camera), TvkErrorBadParameter);
    EXPECT_EQ(mSystem.GetInterfaceByID(nullptr, iface), TvkErrorBadParameter);
    EXPECT_EQ(mSystem.OpenInterfaceByID(nullptr, iface), TvkErrorBadParameter);
    EXPECT_EQ(mSystem.RegisterCameraListObserver(ICameraListObserverPtr()), TvkErrorBadParameter);
    EXPECT_EQ(mSystem.UnregisterCameraListObserver(ICameraListObserverPtr()), TvkErrorBadParameter);
    EXPECT_EQ(mSystem.RegisterInterfaceListObserver(IInterfaceListObserverPtr()),
              TvkErrorBadParameter);
    EXPECT_EQ(mSystem.RegisterCameraFactory(ICameraFactoryPtr()), TvkErrorBadParameter);
    EXPECT_EQ(mSystem.UnregisterCameraFactory(), TvkErrorSuccess);
    TvkVersionInfo_t version{};
    EXPECT_EQ(mSystem.QueryVersion(version), TvkErrorSuccess);
    EXPECT_EQ(version.major * 100 + version.minor * 10 + version.patch, 130u);
}

// An observer whose notification could not be switched on is not kept.
TEST_F(RefusalTest, AListObserverTheLibraryRefusesIsNotKept) {
    ICameraListObserverPtr observer(new Quiet());
    EXPECT_EQ(mSystem.RegisterCameraListObserver(observer), TvkErrorApiNotStarted);
    EXPECT_EQ(mSystem.RegisterCameraListObserver(observer), TvkErrorApiNotStarted);
    EXPECT_EQ(mSystem.UnregisterCameraListObserver(observer), TvkErrorNotFound);
    EXPECT_EQ(observer.UseCount(), 1u);
    IInterfaceListObserverPtr interfaces(new QuietInterfaces());
    EXPECT_EQ(mSystem.RegisterInterfaceListObserver(interfaces), TvkErrorApiNotStarted);
    EXPECT_EQ(mSystem.UnregisterInterfaceListObserver(interfaces), TvkErrorNotFound);
    const std::string log = NewLog();
    EXPECT_NE(log.find(": Could not register camera list observer in function: "
                       "QRX::TvkAPI::TavikSystem::RegisterCameraListObserver\n"),
              std::string::npos);
    EXPECT_NE(log.find(": Could not register interface list observer in function: "
                       "QRX::TvkAPI::TavikSystem::RegisterInterfaceListObserver\n"),
              std::string::npos);
}

TEST_F(RefusalTest, StartupWithoutProducersAndShutdownWithoutStartup) {
    EXPECT_EQ(mSystem.Shutdown(), TvkErrorSuccess);
    EXPECT_EQ(mSystem.Startup(), TvkErrorNoTL);
    EXPECT_EQ(mSystem.Shutdown(), TvkErrorSuccess);
    SearchSimulator();
    EXPECT_EQ(mSystem.Startup(), TvkErrorSuccess);
    EXPECT_EQ(mSystem.Startup(), TvkErrorSuccess);
    EXPECT_EQ(mSystem.Shutdown(), TvkErrorSuccess);
}

TEST_F(RefusalTest, AClosedCameraRefusesWhatNeedsItsHandle) {
    CameraPtr camera(
        new Camera("SimCam-Mono", nullptr, nullptr, nullptr, nullptr, TvkInterfaceUnknown));
    EXPECT_EQ(camera->Open(TvkAccessModeFull), TvkErrorApiNotStarted);
    EXPECT_EQ(camera->GetHandle(), nullptr);
    EXPECT_EQ(camera->Close(), TvkErrorSuccess);
    TvkAccessModeType access = TvkAccessModeFull;
    EXPECT_EQ(camera->GetPermittedAccess(access), TvkErrorApiNotStarted);
    FeaturePtr feature;
    std::vector<FeaturePtr> features;
    EXPECT_EQ(camera->GetFeatureByName(nullptr, feature), TvkErrorBadParameter);
    EXPECT_EQ(camera->GetFeatureByName("Width", feature), TvkErrorDeviceNotOpen);
    EXPECT_EQ(camera->GetFeatures(features), TvkErrorDeviceNotOpen);

    FramePtr frame(new Frame(int64_t{64}));
    EXPECT_EQ(camera->AnnounceFrame(FramePtr()), TvkErrorBadParameter);
    EXPECT_EQ(camera->QueueFrame(FramePtr()), TvkErrorBadParameter);
    EXPECT_EQ(camera->RevokeFrame(FramePtr()), TvkErrorBadParameter);
    EXPECT_EQ(camera->AnnounceFrame(frame), TvkErrorApiNotStarted);
    EXPECT_EQ(camera->QueueFrame(frame), TvkErrorApiNotStarted);
    EXPECT_EQ(camera->RevokeFrame(frame), TvkErrorApiNotStarted);
    EXPECT_EQ(camera->RevokeAllFrames(), TvkErrorApiNotStarted);
    EXPECT_EQ(camera->FlushQueue(), TvkErrorApiNotStarted);
    EXPECT_EQ(camera->StartCapture(), TvkErrorApiNotStarted);
    EXPECT_EQ(frame.UseCount(), 1u);
    const std::string log = NewLog();
    EXPECT_NE(log.find(": Could not revoke frames in function: QRX::TvkAPI::Camera::RevokeFrame\n"),
              std::string::npos);
    EXPECT_NE(log.find(": Could not flush frame queue in function: "
                       "QRX::TvkAPI::Camera::FlushQueue\n"),
              std::string::npos);
}

TEST_F(RefusalTest, RegisterAndMemoryFormsCheckTheirVectorsFirst) {
    Camera camera("SimCam-Mono", nullptr, nullptr, nullptr, nullptr, TvkInterfaceUnknown);
    std::vector<uint64_t> four(4), five(5), none;
    std::vector<uint8_t> bytes(16), noBytes;
    uint32_t done = 0;
    EXPECT_EQ(camera.ReadRegisters(none, five), TvkErrorBadParameter);
    EXPECT_EQ(camera.ReadRegisters(four, none), TvkErrorBadParameter);
    EXPECT_EQ(camera.ReadRegisters(five, four), TvkErrorBadParameter);
    EXPECT_EQ(camera.WriteRegisters(four, five), TvkErrorBadParameter);
    EXPECT_EQ(camera.WriteRegisters(none, none, done), TvkErrorBadParameter);
    EXPECT_EQ(camera.ReadMemory(0x1000, noBytes), TvkErrorBadParameter);
    EXPECT_EQ(camera.WriteMemory(0x1000, noBytes, done), TvkErrorBadParameter);
    // Well-formed calls go on to the library.
    EXPECT_EQ(camera.ReadRegisters(four, five, done), TvkErrorApiNotStarted);
    EXPECT_EQ(camera.WriteRegisters(four, four), TvkErrorApiNotStarted);
    EXPECT_EQ(camera.ReadMemory(0x1000, bytes), TvkErrorApiNotStarted);
    EXPECT_EQ(camera.WriteMemory(0x1000, bytes), TvkErrorApiNotStarted);
}

TEST_F(RefusalTest, AcquisitionsOnAClosedCameraStopAtThePayloadSize) {
    CameraPtr camera(
        new Camera("SimCam-Mono", nullptr, nullptr, nullptr, nullptr, TvkInterfaceUnknown));
    FramePtr frame;
    EXPECT_EQ(camera->AcquireSingleImage(frame, 100), TvkErrorDeviceNotOpen);
    EXPECT_TRUE(frame.IsNull());
    FramePtr frames[2];
    uint32_t completed = 9;
    EXPECT_EQ(camera->AcquireMultipleImages(nullptr, 2, 100, &completed), TvkErrorBadParameter);
    EXPECT_EQ(camera->AcquireMultipleImages(frames, 0, 100, &completed), TvkErrorBadParameter);
    EXPECT_EQ(camera->AcquireMultipleImages(frames, 2, 100, &completed), TvkErrorDeviceNotOpen);
    EXPECT_EQ(completed, 0u);
    EXPECT_EQ(camera->StartContinuousImageAcquisition(3, IFrameObserverPtr()),
              TvkErrorDeviceNotOpen);
    // Stopping runs every step; the library's answer to ending the capture decides.
    EXPECT_EQ(camera->StopContinuousImageAcquisition(), TvkErrorApiNotStarted);
    const std::string log = NewLog();
    for (const char* line :
         {": Could not get feature by name for PayloadSize in function: "
          "QRX::TvkAPI::GetFeatureValueInt\n",
          ": Could not get payload size in function: QRX::TvkAPI::Camera::AcquireSingleImage\n",
          ": Could not get feature by name for AcquisitionStop in function: "
          "QRX::TvkAPI::RunFeatureCommand\n",
          ": Could not run feature AcquisitionStop in function: "
          "QRX::TvkAPI::Camera::StopContinuousImageAcquisition\n",
          ": Could not stop capture, unable to revoke frames in function: "
          "QRX::TvkAPI::Camera::StopContinuousImageAcquisition\n"})
        EXPECT_NE(log.find(line), std::string::npos) << line;
}

TEST_F(RefusalTest, AnInterfaceNeverOpenedClosesWithoutTheLibrary) {
    TvkInterfaceInfo_t info{"SimGEV-0", TvkInterfaceEthernet, "GEV", "1", TvkAccessModeFull};
    Interface iface(&info);
    EXPECT_EQ(iface.Close(), TvkErrorSuccess);
    EXPECT_EQ(iface.Close(), TvkErrorSuccess);
    EXPECT_EQ(iface.Open(), TvkErrorApiNotStarted);
    EXPECT_EQ(iface.GetHandle(), nullptr);
}

} // namespace
