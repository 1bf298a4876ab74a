// What every example shares: stop with the library's own text for a status.
#pragma once

#include <TavikCPP/TavikCPP.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

// Ends the program when a call failed, saying what was being done.
inline void Check(TvkErrorType aStatus, const char* aWhat) {
    if (aStatus == TvkErrorSuccess) return;
    char text[128] = {};
    TvkGetErrorInfo(aStatus, text, sizeof(text));
    std::fprintf(stderr, "%s failed: %s (%d)\n", aWhat, text, aStatus);
    QRX::TvkAPI::TavikSystem::GetInstance().Shutdown();
    std::exit(1);
}

// The camera named on the command line, or else the first one found, opened.
inline QRX::TvkAPI::CameraPtr OpenCamera(int argc, char** argv, TvkAccessModeType aAccess) {
    using namespace QRX::TvkAPI;
    TavikSystem& system = TavikSystem::GetInstance();
    CameraPtr camera;
    if (argc > 1) {
        Check(system.OpenCameraByID(argv[1], aAccess, camera), "Opening the camera");
        return camera;
    }
    std::vector<CameraPtr> cameras;
    Check(system.GetCameras(cameras), "Listing the cameras");
    if (cameras.empty()) Check(TvkErrorNotFound, "Finding a camera");
    Check(cameras.front()->Open(aAccess), "Opening the camera");
    return cameras.front();
}
