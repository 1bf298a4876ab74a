// Reads and writes a camera's features: lists them with their values, sets
// the width and reads it back, and names the pixel formats it offers.
#include "ExampleSupport.h"

#include <string>
#include <vector>

using namespace QRX::TvkAPI;

// One feature's value as text, whatever its kind.
std::string ValueOf(Feature& rFeature) {
    TvkFeatureDataType type = TvkFeatureDataUnknown;
    rFeature.GetDataType(type);
    int64_t integer = 0;
    double real = 0;
    bool flag = false;
    std::string text;
    switch (type) {
    case TvkFeatureDataInt:
        if (rFeature.GetValue(integer) == TvkErrorSuccess) return std::to_string(integer);
        break;
    case TvkFeatureDataFloat:
        if (rFeature.GetValue(real) == TvkErrorSuccess) return std::to_string(real);
        break;
    case TvkFeatureDataBool:
        if (rFeature.GetValue(flag) == TvkErrorSuccess) return flag ? "true" : "false";
        break;
    case TvkFeatureDataEnum:
    case TvkFeatureDataString:
        if (rFeature.GetValue(text) == TvkErrorSuccess) return text;
        break;
    default:
        return "";
    }
    return "(not readable)";
}

int main(int argc, char** argv) {
    TavikSystem& system = TavikSystem::GetInstance();
    Check(system.Startup(), "Starting Tavik");
    CameraPtr camera = OpenCamera(argc, argv, TvkAccessModeFull);

    std::vector<FeaturePtr> features;
    Check(camera->GetFeatures(features), "Listing the features");
    std::printf("%zu features\n", features.size());
    for (const FeaturePtr& feature : features) {
        std::string name;
        feature->GetName(name);
        std::printf("  %-32s %s\n", name.c_str(), ValueOf(*feature).c_str());
    }

    // Write the smallest width the camera takes, and read it back.
    FeaturePtr width;
    Check(camera->GetFeatureByName("Width", width), "Finding Width");
    int64_t minimum = 0, maximum = 0, value = 0;
    Check(width->GetRange(minimum, maximum), "Reading the range of Width");
    Check(width->SetValue(minimum), "Writing Width");
    Check(width->GetValue(value), "Reading Width");
    std::printf("Width is now %lld (from %lld to %lld)\n", static_cast<long long>(value),
                static_cast<long long>(minimum), static_cast<long long>(maximum));
    Check(width->SetValue(maximum), "Writing Width back");

    FeaturePtr pixelFormat;
    Check(camera->GetFeatureByName("PixelFormat", pixelFormat), "Finding PixelFormat");
    std::vector<std::string> formats;
    Check(pixelFormat->GetValues(formats), "Listing the pixel formats");
    std::printf("Pixel formats:");
    for (const std::string& format : formats)
        std::printf(" %s", format.c_str());
    std::printf("\n");

    camera->Close();
    system.Shutdown();
    return 0;
}
