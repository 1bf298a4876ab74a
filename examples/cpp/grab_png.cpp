// Grabs one frame and saves it as a PNG file: the acquisition helper does
// the announce, start, queue, wait and teardown; the image transform turns
// the camera's pixel format into RGB.
#include "ExampleSupport.h"
#include "PngFile.h"

#include <vector>

using namespace QRX::TvkAPI;

int main(int argc, char** argv) {
    const char* path = argc > 2 ? argv[2] : "frame.png";
    TavikSystem& system = TavikSystem::GetInstance();
    Check(system.Startup(), "Starting Tavik");
    CameraPtr camera = OpenCamera(argc, argv, TvkAccessModeFull);

    FramePtr frame; // the helper makes one of the payload's size
    Check(camera->AcquireSingleImage(frame, 2000), "Grabbing a frame");
    uint32_t width = 0, height = 0;
    TvkPixelFormatType format = TvkPixelFormatMono8;
    uint64_t id = 0;
    uint8_t* buffer = nullptr;
    frame->GetWidth(width);
    frame->GetHeight(height);
    frame->GetPixelFormat(format);
    frame->GetFrameID(id);
    frame->GetImage(buffer);

    std::vector<uint8_t> rgb(static_cast<size_t>(width) * height * 3);
    TvkImage source{sizeof(TvkImage), buffer, {}};
    TvkImage destination{sizeof(TvkImage), rgb.data(), {}};
    Check(static_cast<TvkErrorType>(TvkSetImageInfoFromPixelFormat(format, width, height, &source)),
          "Describing the frame");
    Check(static_cast<TvkErrorType>(
              TvkSetImageInfoOutput(TvkSimpleImageFormatRGB24, width, height, &destination)),
          "Describing the picture");
    Check(static_cast<TvkErrorType>(TvkImageTransform(&source, &destination, nullptr, 0)),
          "Converting to RGB");
    if (!WritePngRgb(path, rgb.data(), width, height)) Check(TvkErrorOther, "Writing the file");
    std::printf("frame %llu, %ux%u, saved to %s\n", static_cast<unsigned long long>(id), width,
                height, path);

    camera->Close();
    system.Shutdown();
    return 0;
}
