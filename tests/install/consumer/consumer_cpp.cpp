// An application of the object API built against an installed Tavik.
#include <TavikCPP/TavikCPP.h>

#include <cstdio>

int main() {
    using namespace QRX::TvkAPI;
    TavikSystem& system = TavikSystem::GetInstance();
    TvkVersionInfo_t version{};
    if (system.QueryVersion(version) != TvkErrorSuccess || !system.GetLogger()) return 1;
    // The object API stands on the flat library, which reports the same version.
    TvkVersionInfo_t flat{};
    if (TvkVersionQuery(&flat, sizeof flat) != TvkErrorSuccess || flat.minor != version.minor)
        return 2;
    std::printf("Tavik %u.%u.%u\n", version.major, version.minor, version.patch);
    return 0;
}
