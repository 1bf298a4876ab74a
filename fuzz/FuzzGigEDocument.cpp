// A GigE Vision camera's documents as the engine edits them on their way in,
// under libFuzzer: any bytes as the camera's own document, and again as the
// stream module's, with the additions and the packet size bounds the edits
// make, processed and finalized by the kernel. Nothing may crash, leak or
// read out of bounds, and every event kept has its two features.
#include <cstdlib>
#include <string>
#include <tinyxml.h>

#include "engine/GigEDocument.h"
#include "gik/Port.h"
#include "gik/Runtime.h"
#include "kit/AutoreleasePool.h"

namespace {

// Zeros: the camera port and the device both.
class cZeros : public gik::pPort {
public:
    static cZeros* New() { return Make<cZeros>(); }
    bool IsWriteable() override { return false; }
    llk::i4 Fetch(llk::u8, llk::u4 aLength, void* aBuffer, llk::u4& aFetched) override {
        std::fill_n(static_cast<llk::u1*>(aBuffer), aLength, 0);
        aFetched = aLength;
        return 0;
    }
    llk::i4 Store(llk::u8, llk::u4, const void*, llk::u4& aStored) override {
        aStored = 0;
        return -1005;
    }
    llk::i4 QueryXML(void*, llk::u4, llk::u4&, llk::u4, llk::u4) override { return 8; }
    llk::i4 FetchXML(void*, llk::u4, llk::u4&, llk::u4) override { return 8; }
};

tvk::tGigEDocument gFound;

int Tweak(gik::cRuntime*, TiXmlNode* aDescription, void*) {
    if (TiXmlElement* description = aDescription ? aDescription->ToElement() : nullptr)
        tvk::TweakGigEDeviceDocument(description, gFound);
    return 0;
}

int Patch(gik::cRuntime*, TiXmlNode* aDescription, void*) {
    if (TiXmlElement* description = aDescription ? aDescription->ToElement() : nullptr)
        tvk::PatchGigEStreamDocument(description, gFound);
    return 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* aData, size_t aSize) {
    llk::uAutoreleasePool pool;
    const std::string text(reinterpret_cast<const char*>(aData), aSize);
    gFound = {};
    gik::cRuntime* runtime = gik::cRuntime::New(false);
    if (!runtime) return 0;
    cZeros* zeros = cZeros::New();
    runtime->AttachPort("Device", zeros);
    runtime->AttachPort("CameraPort", zeros);
    runtime->AttachPort("StreamPort", zeros);
    runtime->Prepare();
    runtime->SetProcessCallback(&Tweak, nullptr);
    const bool processed = runtime->Process(text.c_str(), false, nullptr, false) == 0;
    runtime->SetProcessCallback(&Patch, nullptr);
    runtime->Process(text.c_str(), false, "Stream", false);
    runtime->SetProcessCallback(nullptr, nullptr);
    runtime->Finalize();
    if (!processed) return 0;
    for (const std::string& event : gFound.events)
        if (!event.empty() && (!runtime->SeekNode((event + "Timestamp").c_str(), false) ||
                               !runtime->SeekNode((event + "FrameID").c_str(), false)))
            abort();
    return 0;
}
