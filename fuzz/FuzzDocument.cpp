// Document loading under libFuzzer: any bytes as a register description
// document, processed (in the strict or the wide reading, with a prefix, and
// injected a second time with replacement, depending on the input's
// length), finalized, and then every
// node asked everything a caller may ask: access, value, range, increment,
// a write of what it reads, an invalidation, its affected and selected
// nodes. Nothing may crash, leak, hang or read out of bounds. The depth
// measured before parsing must never be less than the depth tinyxml builds.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <tinyxml.h>

#include "gik/Document.h"
#include "gik/Node.h"
#include "gik/Port.h"
#include "gik/Runtime.h"
#include "gik/Scanner.h"
#include "gik/Value.h"
#include "gik/XmlDepth.h"
#include "kit/AutoreleasePool.h"
#include "kit/ObjectList.h"

namespace {

using llk::i4;
using llk::u4;
using llk::u8;

// Zero-filled and sparse; fails every transfer that touches the last page
// of the 32-bit space, so that failures travel too.
class cFuzzPort : public gik::pPort {
public:
    static cFuzzPort* New() { return Make<cFuzzPort>(); }
    bool IsWriteable() override { return true; }
    i4 Fetch(u8 aAddress, u4 aLength, void* aBuffer, u4& aFetched) override {
        aFetched = 0;
        if (Fails(aAddress, aLength)) return -1005;
        auto* out = static_cast<llk::u1*>(aBuffer);
        for (u4 i = 0; i < aLength; ++i) {
            auto it = mBytes.find(aAddress + i);
            out[i] = it == mBytes.end() ? 0 : it->second;
        }
        aFetched = aLength;
        return 0;
    }
    i4 Store(u8 aAddress, u4 aLength, const void* aBuffer, u4& aStored) override {
        aStored = 0;
        if (Fails(aAddress, aLength)) return -1005;
        auto* in = static_cast<const llk::u1*>(aBuffer);
        for (u4 i = 0; i < aLength; ++i)
            mBytes[aAddress + i] = in[i];
        aStored = aLength;
        return 0;
    }
    i4 QueryXML(void*, u4, u4&, u4, u4) override { return 8; }
    i4 FetchXML(void*, u4, u4&, u4) override { return 8; }

private:
    static bool Fails(u8 aAddress, u4 aLength) {
        return aAddress + aLength > 0xFFFFF000ull || aLength > 65536;
    }
    std::map<u8, llk::u1> mBytes;
};

void Exercise(gik::cRuntime* aRuntime, gik::pNode* aNode) {
    llk::uAutoreleasePool pool;
    aNode->IsImplemented(aRuntime);
    aNode->IsAvailable(aRuntime);
    aNode->IsLocked(aRuntime);
    aNode->IsNoCache(aRuntime);
    aNode->IsWriteAround(aRuntime);
    aNode->HasInvalidators(aRuntime);
    aNode->PollingTime();
    aNode->Target(aRuntime);
    gik::cValue value, minimum, maximum, increment;
    aNode->GetRange(aRuntime, minimum, maximum, nullptr);
    aNode->GetIncrement(aRuntime, increment, nullptr);
    i4 read = aNode->IsReadable(aRuntime) ? aNode->GetValue(aRuntime, value, nullptr) : 1;
    if (aNode->IsWriteable(aRuntime)) {
        aRuntime->ClearPoked();
        aNode->SetValue(aRuntime, read == 0 ? &value : &minimum, nullptr);
        aRuntime->Poked();
    }
    aNode->Invalidate(aRuntime);
    llk::cObjectList* list = llk::cObjectList::New(16, false);
    if (list) {
        aNode->Affected(aRuntime, list);
        aNode->Selected(aRuntime, list);
    }
}

// The parse's stack is sized from the measured depth: tinyxml must not
// nest deeper than measured (it has built a partial tree when it stops).
void CheckDepth(const std::string& aText) {
    size_t length = strnlen(aText.c_str(), aText.size());
    u4 measured = gik::sXmlDepth::Measure(aText.c_str(), length, gik::sDocument::kMaxNesting);
    if (measured > gik::sDocument::kMaxNesting) return;
    std::string padded = aText.substr(0, length) + std::string(16, '\0');
    TiXmlDocument document;
    document.Parse(padded.c_str(), nullptr, TIXML_DEFAULT_ENCODING);
    if (gik::sDocument::Nesting(&document) > measured) abort();
}

void Run(const std::string& aText) {
    size_t size = aText.size();
    gik::cRuntime* runtime = gik::cRuntime::New((size & 1) != 0);
    cFuzzPort* port = cFuzzPort::New();
    if (!runtime || !port) abort();
    runtime->SetReading((size & 8) ? gik::tReading::Wide() : gik::tReading::Strict());
    runtime->AttachPort("Device", port);
    runtime->Prepare();
    const char* prefix = (size & 2) ? "P_" : nullptr;
    i4 status = runtime->Process(aText.c_str(), false, prefix, false);
    if (status == 0 && (size & 4)) status = runtime->Process(aText.c_str(), false, prefix, true);
    if (status == 0) status = runtime->Finalize();
    if (status != 0) return;
    for (u4 i = 0; i < runtime->NodeCount(); ++i)
        Exercise(runtime, runtime->NodeAt(i));
    llk::cObjectList* features = runtime->Nodes();
    for (u4 i = 0; i < features->Count(); ++i)
        runtime->SeekNode(static_cast<gik::pNode*>(features->AtIndex(i))->NameText(), true);
    runtime->Dismiss();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    gik::cScanner::SetEcho(nullptr);
    // The kernel's error trace goes to standard output; libFuzzer reports on
    // standard error.
    if (!freopen("/dev/null", "w", stdout)) abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* aData, size_t aSize) {
    {
        llk::uAutoreleasePool pool;
        std::string text(reinterpret_cast<const char*>(aData), aSize);
        CheckDepth(text);
        Run(text);
    }
    return 0;
}
