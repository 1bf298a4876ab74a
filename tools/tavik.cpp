// tavik: list cameras and interfaces, read and write features, grab frames.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "Common.h"
#include "FeatureCommands.h"

namespace {

int Version() {
    TvkVersionInfo_t version{};
    TvkVersionQuery(&version, sizeof(version));
    printf("Tavik %u.%u.%u\n", version.major, version.minor, version.patch);
    return 0;
}

// Prints why a list call failed; true when it succeeded.
bool Listed(const char* aWhat, TvkError_t aStatus) {
    if (aStatus == TvkErrorSuccess) return true;
    printf("%s: %s (%d)\n", aWhat, ErrorText(aStatus), aStatus);
    return false;
}

int List() {
    if (Start() != TvkErrorSuccess) return 1;
    uint32_t count = 0;
    if (Listed("interfaces", TvkInterfacesList(nullptr, 0, &count, sizeof(TvkInterfaceInfo_t)))) {
        std::vector<TvkInterfaceInfo_t> interfaces(count);
        if (count) TvkInterfacesList(interfaces.data(), count, &count, sizeof(TvkInterfaceInfo_t));
        printf("%u interface(s)\n", count);
        for (uint32_t i = 0; i < count; ++i)
            printf("  %s  %s\n", interfaces[i].idString, interfaces[i].name);
    }
    count = 0;
    if (Listed("cameras", TvkCamerasList(nullptr, 0, &count, sizeof(TvkCameraInfo_t)))) {
        std::vector<TvkCameraInfo_t> cameras(count);
        if (count) TvkCamerasList(cameras.data(), count, &count, sizeof(TvkCameraInfo_t));
        printf("%u camera(s)\n", count);
        for (uint32_t i = 0; i < count; ++i)
            printf("  %s  %s %s (serial %s) on %s\n", cameras[i].idString, cameras[i].name,
                   cameras[i].model, cameras[i].serialNumber, cameras[i].interfaceID);
    }
    TvkShutdown();
    return 0;
}

int Demo() {
    Version();
    printf("starting up...\n");
    TvkError_t status = TvkStartup();
    printf("TvkStartup: %s (%d)\n", ErrorText(status), status);
    if (status == TvkErrorSuccess) {
        TvkShutdown();
        int listed = List();
        return FeatureDemo() != 0 ? 1 : listed;
    }
    return 0;
}

void Usage() {
    puts("usage: tavik <command>\n"
         "  version   print the library version\n"
         "  list      list interfaces and cameras\n"
         "  features TARGET           the tree of a target's features (TARGET: system)\n"
         "  get TARGET NAME           one feature's value\n"
         "  set TARGET NAME [VALUE]   write a feature (a command runs without a value)\n"
         "  demo      version, start-up and what it found");
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        Usage();
        return 2;
    }
    std::string command = argv[1];
    if (command == "version") return Version();
    if (command == "list") return List();
    if (command == "demo") return Demo();
    if (command == "features") return FeaturesCommand(argc - 2, argv + 2);
    if (command == "get") return GetCommand(argc - 2, argv + 2);
    if (command == "set") return SetCommand(argc - 2, argv + 2);
    Usage();
    return 2;
}
