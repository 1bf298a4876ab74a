// What every entry point does first: the library must be initialised, an
// injected fault may answer instead, and handles are checked against the
// live ones. Failures are remembered for GCGetLastError.
#pragma once

#include <cstring>
#include <string>

#include "Producer.h"

namespace sim {

inline GC_ERROR Fail(GC_ERROR aStatus, const char* aText) {
    tProducer& p = Producer();
    std::lock_guard<std::mutex> hold(p.lock);
    p.lastError = aStatus;
    p.lastText = aText;
    return aStatus;
}

// A text into a caller's buffer, or its size (with the terminator) when the buffer is null.
inline GC_ERROR CopyText(const std::string& aText, char* aBuffer, size_t* aSize) {
    if (!aSize) return GC_ERR_INVALID_PARAMETER;
    if (!aBuffer) {
        *aSize = aText.size() + 1;
        return GC_ERR_SUCCESS;
    }
    if (*aSize < aText.size() + 1) return GC_ERR_BUFFER_TOO_SMALL;
    memcpy(aBuffer, aText.c_str(), aText.size() + 1);
    *aSize = aText.size() + 1;
    return GC_ERR_SUCCESS;
}

} // namespace sim

// Every entry but the library's own init: initialised, and no injected fault.
#define ENTER(name)                                                                                \
    if (!sim::Producer().initialised)                                                              \
        return sim::Fail(GC_ERR_NOT_INITIALIZED, "library not initialised");                       \
    if (GC_ERROR injected = sim::Producer().faults.Check(name))                                    \
    return sim::Fail(injected, "injected fault")

#define CHECK(handle, kind)                                                                        \
    if (!sim::Producer().handles.Is(handle, kind))                                                 \
    return sim::Fail(GC_ERR_INVALID_HANDLE, "invalid handle")
