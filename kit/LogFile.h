// Stamped lines in a text file; any thread may log, lines never interleave.
#pragma once

#include <cstdarg>
#include <cstdio>

#include "kit/Mutex.h"

namespace llk {

class cLogFile : public pObject {
public:
    // aAppend false empties an existing file. Null when it cannot be opened.
    static cLogFile* New(const char* aPath, bool aAppend) { return Make<cLogFile>(aPath, aAppend); }
    i4 Initialize(const char* aPath, bool aAppend);
    ~cLogFile() override;
    u4 ClassCode() const override { return 71; }
    const char* ClassName() const override { return "cLogFile"; }

    void LogMessage(const char* aFormat, ...) __attribute__((format(printf, 2, 3)));
    void LogPlain(const char* aFormat, ...) __attribute__((format(printf, 2, 3)));
    void LogError(const char* aFormat, ...) __attribute__((format(printf, 2, 3)));
    void LogDebug(const char* aFormat, ...) __attribute__((format(printf, 2, 3)));
    void LogWarning(const char* aFormat, ...) __attribute__((format(printf, 2, 3)));
    void LogIndented(const char* aFormat, ...) __attribute__((format(printf, 2, 3)));
    void LogTagged(const char* aTag, const char* aFormat, va_list aArgs);

private:
    FILE* mFile = nullptr;
    cMutex* mMutex = nullptr;
};

} // namespace llk
