// tavik: list cameras and interfaces, read and write features, grab frames.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "TavikC.h"

namespace {

const char* ErrorText(TvkError_t aStatus) {
    static char text[256];
    TvkGetErrorInfo(aStatus, text, sizeof(text));
    return text;
}

int Version() {
    TvkVersionInfo_t version{};
    TvkVersionQuery(&version, sizeof(version));
    printf("Tavik %u.%u.%u\n", version.major, version.minor, version.patch);
    return 0;
}

// Starts the library; prints what was found and gives the status.
TvkError_t Start() {
    TvkError_t status = TvkStartup();
    if (status != TvkErrorSuccess)
        fprintf(stderr, "start-up: %s (%d)\n", ErrorText(status), status);
    return status;
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
        return List();
    }
    return 0;
}

void Usage() {
    puts("usage: tavik <command>\n"
         "  version   print the library version\n"
         "  list      list interfaces and cameras\n"
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
    Usage();
    return 2;
}
