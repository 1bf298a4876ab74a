// The feature kernel on the real devices' documents in the wide reading,
// over a zero-filled in-memory port: loading the largest document (and the largest that loads)
// with the peak memory of a process doing it, timed in real time since a
// parse may run on a helper thread; a cached and an uncached integer read;
// a SwissKnife read; a write with its invalidation walk. And documents with
// ever new formulas, loaded and dropped, against the formula table's budget.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <unordered_map>

#include "gik/Node.h"
#include "gik/Notification.h"
#include "gik/Port.h"
#include "gik/Runtime.h"
#include "gik/Shared.h"
#include "gik/Value.h"
#include "kit/AutoreleasePool.h"
#include "kit/ObjectList.h"

namespace {

using llk::i4;
using llk::u1;
using llk::u4;
using llk::u8;

// A sparse, zero-filled address space in 4 KiB pages, counting transfers.
class cPagePort : public gik::pPort {
public:
    static cPagePort* New() { return Make<cPagePort>(); }

    bool IsWriteable() override { return true; }
    i4 Fetch(u8 aAddress, u4 aLength, void* aBuffer, u4& aFetched) override {
        ++mFetches;
        auto* out = static_cast<u1*>(aBuffer);
        for (u4 done = 0; done < aLength;) {
            u8 at = aAddress + done;
            u4 n = Chunk(at, aLength - done);
            auto page = mPages.find(at / kPage);
            if (page == mPages.end())
                memset(out + done, 0, n);
            else
                memcpy(out + done, page->second.bytes + at % kPage, n);
            done += n;
        }
        aFetched = aLength;
        return 0;
    }
    i4 Store(u8 aAddress, u4 aLength, const void* aBuffer, u4& aStored) override {
        ++mStores;
        auto* in = static_cast<const u1*>(aBuffer);
        for (u4 done = 0; done < aLength;) {
            u8 at = aAddress + done;
            u4 n = Chunk(at, aLength - done);
            memcpy(mPages[at / kPage].bytes + at % kPage, in + done, n);
            done += n;
        }
        aStored = aLength;
        return 0;
    }
    i4 QueryXML(void*, u4, u4&, u4, u4) override { return 8; }
    i4 FetchXML(void*, u4, u4&, u4) override { return 8; }

    u8 mFetches = 0;
    u8 mStores = 0;

private:
    static constexpr u8 kPage = 4096;
    struct tPage {
        u1 bytes[kPage] = {};
    };
    static u4 Chunk(u8 aAt, u4 aLeft) {
        u8 room = kPage - aAt % kPage;
        return room < aLeft ? static_cast<u4>(room) : aLeft;
    }
    std::unordered_map<u8, tPage> mPages;
};

std::string Directory() {
    const char* dir = getenv("TAVIK_GENICAM_DIR");
    return dir ? std::string(dir) + "/" : std::string(TAVIK_GENICAM_DIR);
}

// The largest ".xml" document of the directory, or with aLoadable the
// largest one the kernel accepts.
std::string Largest(bool aLoadable);

// A runtime, retained, with the port attached under every port name the
// documents use; aStatus is the first failure of Process and Finalize.
gik::cRuntime* Load(const std::string& aPath, cPagePort* aPort, bool aNoCache, i4& aStatus) {
    gik::cRuntime* runtime = llk::Retained(gik::cRuntime::New(aNoCache));
    runtime->SetReading(gik::tReading::Wide());
    for (const char* name : {"Device", "TLDevice", "ChunkImagePort", "EventAcquisitionStartPort",
                             "EventAcquisitionStopPort", "IMX174FrameSetIdPort"})
        runtime->AttachPort(name, aPort);
    runtime->Prepare();
    aStatus = runtime->Process(aPath.c_str(), true, nullptr, false);
    if (aStatus == 0) aStatus = runtime->Finalize();
    return runtime;
}

std::string Largest(bool aLoadable) {
    std::string best;
    uintmax_t bestSize = 0;
    for (const auto& entry : std::filesystem::directory_iterator(Directory())) {
        if (entry.path().extension() != ".xml" || entry.file_size() <= bestSize) continue;
        if (aLoadable) {
            llk::uAutoreleasePool pool;
            cPagePort* port = cPagePort::New();
            i4 status = 0;
            gik::cRuntime* runtime = Load(entry.path().string(), port, false, status);
            runtime->Release();
            if (status != 0) continue;
        }
        best = entry.path().string();
        bestSize = entry.file_size();
    }
    return best;
}

// Peak resident memory, in KiB, that loading adds to a process: a child
// that loads against a child that does not.
long PeakLoadKiB(const std::string& aPath) {
    auto peak = [&](bool aLoad) -> long {
        fflush(nullptr);
        pid_t child = fork();
        if (child == 0) {
            if (aLoad) {
                llk::uAutoreleasePool pool;
                cPagePort* port = cPagePort::New();
                i4 status = 0;
                Load(aPath, port, false, status)->Release();
            }
            _exit(0);
        }
        int status = 0;
        struct rusage usage {};
        if (child < 0 || wait4(child, &status, 0, &usage) != child) return -1;
        return usage.ru_maxrss;
    };
    return peak(true) - peak(false);
}

void LoadDocument(benchmark::State& aState, bool aLoadable) {
    std::string path = Largest(aLoadable);
    if (path.empty()) {
        aState.SkipWithError("no document");
        return;
    }
    i4 status = 0;
    size_t held = 0;
    for (auto _ : aState) {
        llk::uAutoreleasePool pool;
        cPagePort* port = cPagePort::New();
        size_t before = mallinfo2().uordblks;
        gik::cRuntime* runtime = Load(path, port, false, status);
        aState.PauseTiming();
        held = mallinfo2().uordblks - before;
        runtime->Release();
        aState.ResumeTiming();
    }
    aState.SetLabel(std::filesystem::path(path).filename().string() + ", status " +
                    std::to_string(status));
    aState.counters["doc_kib"] = double(std::filesystem::file_size(path)) / 1024.0;
    aState.counters["heap_held_kib"] = double(held) / 1024.0;
    aState.counters["peak_rss_kib"] = double(PeakLoadKiB(path));
}

void BM_LoadLargestDocument(benchmark::State& aState) {
    LoadDocument(aState, false);
}
BENCHMARK(BM_LoadLargestDocument)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_LoadLargestLoadableDocument(benchmark::State& aState) {
    LoadDocument(aState, true);
}
BENCHMARK(BM_LoadLargestLoadableDocument)->Unit(benchmark::kMillisecond)->UseRealTime();

// The largest loadable document, loaded once per benchmark.
struct uLoaded {
    explicit uLoaded(bool aNoCache) {
        port = llk::Retained(cPagePort::New());
        runtime = Load(Largest(true), port, aNoCache, status);
    }
    ~uLoaded() {
        runtime->Release();
        port->Release();
    }
    gik::pNode* Node(const char* aName) { return runtime->SeekNode(aName, false); }

    llk::uAutoreleasePool pool;
    cPagePort* port = nullptr;
    gik::cRuntime* runtime = nullptr;
    i4 status = 0;
};

void ReadFeature(benchmark::State& aState, bool aNoCache, const char* aName) {
    uLoaded loaded(aNoCache);
    gik::pNode* node = loaded.Node(aName);
    if (loaded.status != 0 || !node) {
        aState.SkipWithError("document or feature missing");
        return;
    }
    gik::cValue value;
    i4 status = node->GetValue(loaded.runtime, value, nullptr);
    u8 fetches = loaded.port->mFetches;
    for (auto _ : aState) {
        status |= node->GetValue(loaded.runtime, value, nullptr);
        benchmark::DoNotOptimize(value.Sint());
    }
    if (status != 0) aState.SkipWithError("read failed");
    aState.SetLabel(std::string(aName) + " (" + node->ClassName() + ")");
    aState.counters["fetches_per_read"] = double(loaded.port->mFetches - fetches) /
                                          double(aState.iterations() ? aState.iterations() : 1);
}

// "Width": an Integer over a 4-byte IntReg.
void BM_CachedIntegerRead(benchmark::State& aState) {
    ReadFeature(aState, false, "Width");
}
BENCHMARK(BM_CachedIntegerRead);

// The same on a runtime without cache: every read is a port transfer.
void BM_UncachedIntegerRead(benchmark::State& aState) {
    ReadFeature(aState, true, "Width");
}
BENCHMARK(BM_UncachedIntegerRead);

// "PayloadSize": an IntSwissKnife over four variables, three of them
// further knives and integers. Its own result is dropped before each read,
// so the formula is evaluated every time over cached variables.
void BM_SwissKnifeRead(benchmark::State& aState) {
    uLoaded loaded(false);
    gik::pNode* node = loaded.Node("PayloadSize");
    if (loaded.status != 0 || !node) {
        aState.SkipWithError("document or feature missing");
        return;
    }
    gik::cValue value;
    gik::cNotification changed(gik::cNotification::kValueChanged, nullptr, nullptr);
    i4 status = node->GetValue(loaded.runtime, value, nullptr);
    for (auto _ : aState) {
        node->OnInvalidate(loaded.runtime, &changed);
        status |= node->GetValue(loaded.runtime, value, nullptr);
        benchmark::DoNotOptimize(value.Sint());
    }
    if (status != 0) aState.SkipWithError("read failed");
}
BENCHMARK(BM_SwissKnifeRead);

// The same knife on a runtime without cache: every variable is read again,
// down to the port.
void BM_SwissKnifeReadUncached(benchmark::State& aState) {
    ReadFeature(aState, true, "PayloadSize");
}
BENCHMARK(BM_SwissKnifeReadUncached);

// A write to the writeable Integer with the most nodes depending on it:
// validation, port store, the walk through its dependents, the address
// broadcast to every node, and the filtered poked list.
void BM_WriteAndInvalidate(benchmark::State& aState) {
    uLoaded loaded(false);
    if (loaded.status != 0) {
        aState.SkipWithError("document missing");
        return;
    }
    gik::pNode* chosen = nullptr;
    u4 most = 0;
    llk::cObjectList* features = loaded.runtime->Nodes();
    for (u4 i = 0; i < features->Count(); ++i) {
        auto* node = static_cast<gik::pNode*>(features->AtIndex(i));
        if (node->ClassType() != gik::pNode::kTagInteger || !node->IsWriteable(loaded.runtime))
            continue;
        llk::uAutoreleasePool pool;
        llk::cObjectList* affected = llk::cObjectList::New(32, false);
        node->Affected(loaded.runtime, affected);
        if (!chosen || affected->Count() > most) {
            chosen = node;
            most = affected->Count();
        }
    }
    if (!chosen) {
        aState.SkipWithError("no writeable integer");
        return;
    }
    gik::cValue minimum, maximum;
    chosen->GetRange(loaded.runtime, minimum, maximum, nullptr);
    i4 status = 0;
    u8 poked = 0;
    for (auto _ : aState) {
        loaded.runtime->ClearPoked();
        status |= chosen->SetValue(loaded.runtime, &minimum, nullptr);
        poked += loaded.runtime->Poked()->Count();
    }
    if (status != 0) aState.SkipWithError("write failed");
    aState.SetLabel(std::string(chosen->NameText()) + ", " + std::to_string(most) +
                    " affected of " + std::to_string(loaded.runtime->NodeCount()) + " nodes");
    aState.counters["poked_features"] =
        double(poked) / double(aState.iterations() ? aState.iterations() : 1);
}
BENCHMARK(BM_WriteAndInvalidate);

// A document of 50 knives whose formulas no document had before, loaded
// and dropped at each step, as a process that opens camera after camera
// does: the formula table stays within twice its budget.
void BM_FreshFormulas(benchmark::State& aState) {
    u8 serial = 0;
    size_t largest = 0;
    i4 status = 0;
    for (auto _ : aState) {
        std::string text = "<RegisterDescription><Category Name=\"Root\"/>";
        for (int i = 0; i < 50; ++i)
            text += "<IntSwissKnife Name=\"K" + std::to_string(i) + "\"><Formula>" +
                    std::to_string(serial++) +
                    " + (0x10 &lt;&lt; 2) * 3 - (7 % 4) + (1 ? 2 : 3)</Formula></IntSwissKnife>";
        text += "</RegisterDescription>";
        llk::uAutoreleasePool pool;
        gik::cRuntime* runtime = gik::cRuntime::New(false);
        status |= runtime->Process(text.c_str(), false, nullptr, false);
        largest = std::max(largest, gik::sShared::FormulaBytes());
    }
    if (status != 0) aState.SkipWithError("a document failed");
    aState.counters["formulas"] = double(serial);
    aState.counters["table_max_kib"] = double(largest) / 1024.0;
    aState.counters["budget_kib"] = double(gik::sShared::kFormulaBudget) / 1024.0;
}
BENCHMARK(BM_FreshFormulas)->Unit(benchmark::kMicrosecond);

} // namespace
