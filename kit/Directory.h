// Walks the regular files of a directory.
#pragma once

#include "kit/String.h"

namespace llk {

class cDirectory : public pObject {
public:
    // Null (kNotFound) when the directory cannot be opened.
    static cDirectory* New(const char* aPath) { return Make<cDirectory>(aPath); }
    i4 Initialize(const char* aPath);
    ~cDirectory() override;
    u4 ClassCode() const override { return 70; }
    const char* ClassName() const override { return "cDirectory"; }

    // The next regular file's name, autoreleased, or null at the end. With
    // aExtension, only names ending in it, compared without case.
    cString* Next(const char* aExtension = nullptr);
    void Rewind();

private:
    cString* mPath = nullptr;
    void* mHandle = nullptr;
};

} // namespace llk
