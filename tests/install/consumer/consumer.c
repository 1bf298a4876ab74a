/* An application built against an installed Tavik: both libraries load and answer. */
#include <TavikC.h>
#include <TavikImageTransform.h>
#include <stdio.h>

int main(void) {
    TvkVersionInfo_t version;
    uint32_t imageVersion = 0;
    if (TvkVersionQuery(&version, sizeof version) != TvkErrorSuccess) return 1;
    if (TvkGetVersion(&imageVersion) != TvkErrorSuccess) return 2;
    printf("Tavik %u.%u.%u\n", version.major, version.minor, version.patch);
    return 0;
}
