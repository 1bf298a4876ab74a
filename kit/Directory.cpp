#include "kit/Directory.h"

#include <dirent.h>
#include <strings.h>
#include <sys/stat.h>

#include <cstring>
#include <string>

namespace llk {

i4 cDirectory::Initialize(const char* aPath) {
    if (!aPath) return kNotFound;
    mPath = Retained(cString::New(aPath, false));
    if (!mPath) return kNoMemory;
    mHandle = opendir(aPath);
    return mHandle ? kOk : kNotFound;
}

cDirectory::~cDirectory() {
    if (mHandle) closedir(static_cast<DIR*>(mHandle));
    ReleaseAndClear(mPath);
}

cString* cDirectory::Next(const char* aExtension) {
    size_t extension = aExtension ? strlen(aExtension) : 0;
    while (struct dirent* entry = readdir(static_cast<DIR*>(mHandle))) {
        const char* name = entry->d_name;
        if (strcmp(name, ".") == 0 || strcmp(name, "..") == 0) continue;
        size_t length = strlen(name);
        if (extension &&
            (length < extension || strcasecmp(name + length - extension, aExtension) != 0))
            continue;
        // Only regular files count (links to them too).
        std::string full = std::string(mPath->Chars()) + "/" + name;
        struct stat info {};
        if (stat(full.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) continue;
        return cString::New(name, false);
    }
    return nullptr;
}

void cDirectory::Rewind() {
    rewinddir(static_cast<DIR*>(mHandle));
}

} // namespace llk
