#include "kit/LogFile.h"

#include <sys/time.h>

#include <ctime>

namespace llk {

i4 cLogFile::Initialize(const char* aPath, bool aAppend) {
    if (!aPath) return kBadArgument;
    mMutex = Retained(cMutex::New());
    if (!mMutex) return kNoMemory;
    mFile = fopen(aPath, aAppend ? "a" : "w");
    return mFile ? kOk : kBadArgument;
}

cLogFile::~cLogFile() {
    if (mFile) fclose(mFile);
    ReleaseAndClear(mMutex);
}

void cLogFile::LogTagged(const char* aTag, const char* aFormat, va_list aArgs) {
    struct timeval now {};
    gettimeofday(&now, nullptr);
    struct tm local {};
    localtime_r(&now.tv_sec, &local);
    uLock hold(mMutex);
    // The line is cut at 1023 characters, line break included.
    char text[1024];
    int head =
        snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d.%03u: %s ",
                 local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                 local.tm_sec, static_cast<unsigned>(now.tv_usec / 1000), aTag);
    if (head < 0) return;
    size_t used = static_cast<size_t>(head);
    if (used < sizeof(text)) {
        int body = vsnprintf(text + used, sizeof(text) - used, aFormat, aArgs);
        if (body > 0) used += static_cast<size_t>(body);
        if (used < sizeof(text) - 1) {
            text[used++] = '\n';
            text[used] = '\0';
        }
    }
    fputs(text, mFile);
}

#define TAVIK_LOG_VARIANT(name, tag)                                                               \
    void cLogFile::name(const char* aFormat, ...) {                                                \
        va_list args;                                                                              \
        va_start(args, aFormat);                                                                   \
        LogTagged(tag, aFormat, args);                                                             \
        va_end(args);                                                                              \
    }
TAVIK_LOG_VARIANT(LogMessage, "")
TAVIK_LOG_VARIANT(LogPlain, "[ ]")
TAVIK_LOG_VARIANT(LogError, "[E]")
TAVIK_LOG_VARIANT(LogDebug, "[D]")
TAVIK_LOG_VARIANT(LogWarning, "[W]")
TAVIK_LOG_VARIANT(LogIndented, "   ")
#undef TAVIK_LOG_VARIANT

} // namespace llk
