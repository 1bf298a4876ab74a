#include "DiscoveryCommands.h"

#include <algorithm>
#include <cctype>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Common.h"
#include "FeatureCommands.h"

namespace {

const char* InterfaceTypeName(TvkInterface_t aType) {
    switch (aType) {
    case TvkInterfaceFirewire:
        return "FireWire";
    case TvkInterfaceEthernet:
        return "GigE";
    case TvkInterfaceUsb:
        return "USB";
    default:
        return "unknown";
    }
}

// The access modes as letters: Full, Read, Config, Lite; "-" for none.
std::string AccessText(TvkAccessMode_t aAccess) {
    std::string text;
    const std::pair<TvkAccessMode_t, char> modes[] = {{TvkAccessModeFull, 'F'},
                                                      {TvkAccessModeRead, 'R'},
                                                      {TvkAccessModeConfig, 'C'},
                                                      {TvkAccessModeLite, 'L'}};
    for (const auto& [mode, letter] : modes)
        if (aAccess & mode) text += letter;
    return text.empty() ? "-" : text;
}

const char* Or(const char* aText) {
    return aText ? aText : "";
}

bool Cameras(std::vector<TvkCameraInfo_t>& aCameras) {
    uint32_t count = 0;
    TvkError_t status = TvkCamerasList(nullptr, 0, &count, sizeof(TvkCameraInfo_t));
    aCameras.resize(count);
    // The list may grow between the two calls; what fits is enough.
    if (status == TvkErrorSuccess && count)
        status = TvkCamerasList(aCameras.data(), count, &count, sizeof(TvkCameraInfo_t));
    if (status != TvkErrorSuccess && status != TvkErrorMoreData) {
        fprintf(stderr, "tavik: cannot list the cameras: %s (%d)\n", ErrorText(status), status);
        return false;
    }
    aCameras.resize(std::min<size_t>(count, aCameras.size()));
    return true;
}

bool Interfaces(std::vector<TvkInterfaceInfo_t>& aInterfaces) {
    uint32_t count = 0;
    TvkError_t status = TvkInterfacesList(nullptr, 0, &count, sizeof(TvkInterfaceInfo_t));
    aInterfaces.resize(count);
    if (status == TvkErrorSuccess && count)
        status = TvkInterfacesList(aInterfaces.data(), count, &count, sizeof(TvkInterfaceInfo_t));
    if (status != TvkErrorSuccess) {
        fprintf(stderr, "tavik: cannot list the interfaces: %s (%d)\n", ErrorText(status), status);
        return false;
    }
    aInterfaces.resize(std::min<size_t>(count, aInterfaces.size()));
    return true;
}

// Rows under a heading, each column as wide as its widest cell.
void PrintTable(const std::vector<std::vector<std::string>>& aRows) {
    std::vector<size_t> widths;
    for (const auto& row : aRows)
        for (size_t c = 0; c < row.size(); ++c) {
            if (widths.size() <= c) widths.push_back(0);
            widths[c] = std::max(widths[c], row[c].size());
        }
    for (const auto& row : aRows) {
        std::string line = " ";
        for (size_t c = 0; c < row.size(); ++c)
            line +=
                " " + row[c] + std::string(c + 1 < row.size() ? widths[c] - row[c].size() : 0, ' ');
        puts(line.c_str());
    }
}

bool PrintTables() {
    std::vector<TvkInterfaceInfo_t> interfaces;
    std::vector<TvkCameraInfo_t> cameras;
    if (!Interfaces(interfaces) || !Cameras(cameras)) return false;
    printf("%zu interface(s)\n", interfaces.size());
    std::vector<std::vector<std::string>> rows = {{"ID", "TYPE", "NAME", "SERIAL"}};
    for (const TvkInterfaceInfo_t& i : interfaces)
        rows.push_back(
            {Or(i.idString), InterfaceTypeName(i.interfaceType), Or(i.name), Or(i.serialNumber)});
    if (!interfaces.empty()) PrintTable(rows);
    printf("%zu camera(s)\n", cameras.size());
    rows = {{"#", "ID", "MODEL", "NAME", "SERIAL", "ACCESS", "INTERFACE"}};
    for (size_t n = 0; n < cameras.size(); ++n) {
        const TvkCameraInfo_t& c = cameras[n];
        rows.push_back({std::to_string(n), Or(c.idString), Or(c.model), Or(c.name),
                        Or(c.serialNumber), AccessText(c.permittedAccess), Or(c.interfaceID)});
    }
    if (!cameras.empty()) PrintTable(rows);
    return true;
}

bool IsIndex(const char* aWord) {
    if (!*aWord) return false;
    for (const char* c = aWord; *c; ++c)
        if (!isdigit(static_cast<unsigned char>(*c))) return false;
    return true;
}

// The description of the camera a word names.
bool FindCamera(const char* aWord, TvkCameraInfo_t& aInfo) {
    std::vector<TvkCameraInfo_t> cameras;
    if (!Cameras(cameras)) return false;
    for (const TvkCameraInfo_t& c : cameras)
        if (strcmp(Or(c.idString), aWord) == 0) return aInfo = c, true;
    for (const TvkCameraInfo_t& c : cameras)
        if (strcmp(Or(c.serialNumber), aWord) == 0) return aInfo = c, true;
    if (IsIndex(aWord) && strtoul(aWord, nullptr, 10) < cameras.size())
        return aInfo = cameras[strtoul(aWord, nullptr, 10)], true;
    // A form of identifier the producer recognises but does not list.
    if (TvkCameraInfoQuery(aWord, &aInfo, sizeof(aInfo)) == TvkErrorSuccess) return true;
    fprintf(stderr,
            "tavik: no camera '%s' (an identifier, serial number or number of "
            "`tavik list`)\n",
            aWord);
    return false;
}

int Started(bool (*aWork)(char**), char** aWords) {
    if (Start() != TvkErrorSuccess) return 1;
    bool done = aWork(aWords);
    TvkShutdown();
    return done ? 0 : 1;
}

bool PrintInfo(char** aWords) {
    TvkCameraInfo_t info{};
    if (!FindCamera(aWords[0], info)) return false;
    printf("ID         %s\n", Or(info.idString));
    printf("Name       %s\n", Or(info.name));
    printf("Model      %s\n", Or(info.model));
    printf("Serial     %s\n", Or(info.serialNumber));
    printf("Access     %s\n", AccessText(info.permittedAccess).c_str());
    printf("Interface  %s\n", Or(info.interfaceID));
    return true;
}

} // namespace

bool OpenCamera(const char* aWord, TvkHandle_t& aCamera) {
    TvkCameraInfo_t info{};
    if (!FindCamera(aWord, info)) return false;
    TvkError_t status = TvkCameraOpen(info.idString, TvkAccessModeFull, &aCamera);
    if (status == TvkErrorSuccess) return true;
    fprintf(stderr, "tavik: cannot open camera '%s': %s (%d)\n", info.idString, ErrorText(status),
            status);
    return false;
}

int ListCommand(int aCount, char** aWords) {
    if (aCount != 0) {
        fprintf(stderr, "usage: tavik list\n");
        return 2;
    }
    return Started([](char**) { return PrintTables(); }, aWords);
}

int InfoCommand(int aCount, char** aWords) {
    if (aCount != 1) {
        fprintf(stderr, "usage: tavik info CAMERA\n");
        return 2;
    }
    return Started(&PrintInfo, aWords);
}

int CameraDemo() {
    return Started(
        [](char**) {
            if (!PrintTables()) return false;
            std::vector<TvkCameraInfo_t> cameras;
            if (!Cameras(cameras) || cameras.empty()) return true;
            TvkHandle_t camera = nullptr;
            if (!OpenCamera(cameras[0].idString, camera)) return false;
            printf("camera %s opened; some of its features:\n", cameras[0].idString);
            bool read = true;
            for (const char* name : {"DeviceModelName", "Width", "Height", "PixelFormat"}) {
                TvkFeatureInfo_t info{};
                std::string value;
                TvkError_t status = TvkFeatureInfoQuery(camera, name, &info, sizeof(info));
                if (status == TvkErrorSuccess) status = FeatureValueText(camera, info, value);
                if (status != TvkErrorSuccess) {
                    fprintf(stderr, "tavik: cannot read '%s': %s (%d)\n", name, ErrorText(status),
                            status);
                    read = false;
                    continue;
                }
                printf("  %-16s %s\n", name, value.c_str());
            }
            TvkCameraClose(camera);
            return read;
        },
        nullptr);
}
