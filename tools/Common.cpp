#include "Common.h"

#include <cstdio>

const char* ErrorText(TvkError_t aStatus) {
    static char text[256];
    TvkGetErrorInfo(aStatus, text, sizeof(text));
    return text;
}

TvkError_t Start() {
    TvkError_t status = TvkStartup();
    if (status != TvkErrorSuccess)
        fprintf(stderr, "start-up: %s (%d)\n", ErrorText(status), status);
    return status;
}
