#include "TransportLayers.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "engine/Aggregate.h"
#include "engine/Global.h"
#include "engine/System.h"
#include "kit/Directory.h"
#include "kit/Env.h"
#include "kit/ObjectList.h"
#include "kit/ObjectMap.h"

namespace {
// The producer search path of this build's pointer width.
constexpr const char* kSearchPathVariable =
    sizeof(void*) == 8 ? "GENICAM_GENTL64_PATH" : "GENICAM_GENTL32_PATH";
} // namespace

llk::i4 cGenTL::Initialize(const char* aPath) {
    mPath = llk::Retained(llk::cString::New(aPath, false));
    return mPath ? llk::kOk : llk::kNoMemory;
}

cGenTL::~cGenTL() {
    llk::ReleaseAndClear(mSystem);
    llk::ReleaseAndClear(mAggregate);
    llk::ReleaseAndClear(mPath);
}

void cGenTL::SetAggregate(tvk::cAggregate* aAggregate) {
    llk::Assign(mAggregate, aAggregate);
}

void cGenTL::SetSystem(tvk::cSystemProxy* aSystem) {
    llk::Assign(mSystem, aSystem);
}

void ScanTLs(llk::cObjectMap* aMap, const char* aDirectory) {
    llk::cDirectory* directory = llk::cDirectory::New(aDirectory);
    if (!directory) return;
    while (llk::cString* name = directory->Next(".cti")) {
        // The first directory that holds a file name wins.
        if (aMap->Contains(name->Chars())) continue;
        // The path is built to its full length, however deep the directory.
        llk::cString* path = llk::cString::New(aDirectory, false);
        if (!path || !path->Append("/") || !path->Append(name->Chars())) continue;
        if (cGenTL* tl = cGenTL::New(path->Chars())) aMap->Store(name->Chars(), tl);
    }
}

llk::cObjectList* SplitPaths(const char* aPath) {
    llk::cObjectList* list = llk::cObjectList::New(8, true);
    if (!list || !aPath) return list;
    const char* start = aPath;
    for (const char* c = aPath;; ++c) {
        if (*c != ';' && *c != ':' && *c != '\0') continue;
        if (c > start) {
            std::string entry(start, c);
            list->Append(llk::cString::New(entry.c_str(), false), true);
        }
        if (*c == '\0') break;
        start = c + 1;
    }
    return list;
}

void ScanSearchPath(llk::cObjectMap* aMap) {
    ScanTLs(aMap, ".");
    char* searchPath = llk::sEnv::GetEnvVariable(kSearchPathVariable);
    if (!searchPath) return;
    llk::cObjectList* entries = SplitPaths(searchPath);
    for (llk::u4 i = 0; entries && i < entries->Count(); ++i)
        ScanTLs(aMap, static_cast<llk::cString*>(entries->AtIndex(i))->Chars());
    llk::sEnv::Free(searchPath);
}

bool MakeTLs(llk::cObjectMap* aMap, tvk::cGlobal* aGlobal) {
    bool any = false;
    for (llk::u4 i = 0; i < aMap->Count(); ++i) {
        auto* tl = static_cast<cGenTL*>(aMap->AtIndex(i));
        tl->SetAggregate(tvk::cAggregate::New(tl->GetPath()->Chars(), aGlobal));
        any = any || tl->GetAggregate();
    }
    return any;
}

namespace {

// Returns once the system has made its first interface list, or failed. The
// scan takes a few milliseconds: look often at first, then every 50 ms for
// as long as it takes.
void WaitReady(tvk::cSystemProxy* aSystem) {
    llk::u4 pause = 1;
    bool ready = false;
    while (aSystem->IsReady(ready) == llk::kOk && !ready) {
        llk::sEnv::Snooze(pause);
        pause = std::min(pause * 2, 50u);
    }
}

} // namespace

void MakeSystems(llk::cObjectMap* aMap, tvk::cGlobal* aGlobal) {
    for (llk::u4 i = 0; i < aMap->Count(); ++i) {
        auto* tl = static_cast<cGenTL*>(aMap->AtIndex(i));
        if (!tl->GetAggregate()) continue;
        tvk::cSystemProxy* system =
            tvk::cSystemProxy::New(tl->GetPath()->Chars(), tl->GetAggregate());
        if (!system || aGlobal->Insert(system, nullptr) != llk::kOk) continue;
        tl->SetSystem(system);
        WaitReady(system);
    }
}

void EndSystems(llk::cObjectMap* aMap, tvk::cGlobal* aGlobal) {
    for (llk::u4 i = 0; i < aMap->Count(); ++i) {
        auto* tl = static_cast<cGenTL*>(aMap->AtIndex(i));
        if (!tl->GetSystem()) continue;
        aGlobal->Remove(tl->GetSystem());
        tl->SetSystem(nullptr);
    }
}

void ReleaseTLs(llk::cObjectMap* aMap) {
    for (llk::u4 i = 0; i < aMap->Count(); ++i)
        static_cast<cGenTL*>(aMap->AtIndex(i))->SetAggregate(nullptr);
}
