// The settings file under libFuzzer: any bytes as libTavikC.xml, read with
// every key the library looks up when it loads and when it starts.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>

#include "kit/AutoreleasePool.h"
#include "kit/String.h"
#include "kit/XMLBundle.h"

namespace {
// The bundle reads a path; a memory file gives the input one without a disk.
int gFile = -1;
char gPath[64];
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    gFile = memfd_create("settings", 0);
    snprintf(gPath, sizeof(gPath), "/proc/self/fd/%d", gFile);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* aData, size_t aSize) {
    if (gFile < 0 || ftruncate(gFile, 0) != 0 || pwrite(gFile, aData, aSize, 0) < 0) return 0;
    llk::uAutoreleasePool pool;
    llk::cXMLBundle* settings = llk::cXMLBundle::New(gPath);
    if (!settings) return 0;
    bool flag = false;
    llk::u4 number = 0;
    llk::cString* text = nullptr;
    for (const char* key : {"Settings/LogFileName", "Settings/Log/FileName"})
        if (settings->FetchText(key, text) && text) (void)text->Length();
    for (const char* key : {"Settings/AppendLog", "Settings/Log/Enable", "Settings/Log/Append",
                            "Settings/Producer/Union", "Settings/Kernel/WideReading"})
        settings->FetchBool(key, flag);
    for (const char* key :
         {"Settings/Scheduler/Concurrency/Min", "Settings/Scheduler/Concurrency/Max",
          "Settings/Scheduler/Stride", "Settings/Scheduler/Timeout"})
        settings->FetchUint(key, number);
    settings->Probe("Settings/Log", nullptr);
    return 0;
}
