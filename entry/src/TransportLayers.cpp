#include "TransportLayers.h"

#include <cstring>
#include <string>

#include "SupervisorStart.h"
#include "engine/Aggregate.h"
#include "engine/Global.h"
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
    llk::ReleaseAndClear(mAggregate);
    llk::ReleaseAndClear(mPath);
}

void cGenTL::SetAggregate(tvk::cAggregate* aAggregate) {
    llk::Assign(mAggregate, aAggregate);
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
// Releasing an aggregate stops its threads and closes and unloads its producer.
void ReleaseAggregates(llk::cObjectMap* aMap) {
    for (llk::u4 i = 0; i < aMap->Count(); ++i)
        static_cast<cGenTL*>(aMap->AtIndex(i))->SetAggregate(nullptr);
}
} // namespace

TvkError_t StartTransportLayers(tLocalData& aLocal) {
    char* searchPath = llk::sEnv::GetEnvVariable(kSearchPathVariable);
    aLocal.global->Disable(false);
    ScanTLs(aLocal.transportLayers, ".");
    if (searchPath) {
        llk::cObjectList* entries = SplitPaths(searchPath);
        for (llk::u4 i = 0; entries && i < entries->Count(); ++i)
            ScanTLs(aLocal.transportLayers,
                    static_cast<llk::cString*>(entries->AtIndex(i))->Chars());
    }
    llk::sEnv::Free(searchPath);
    TvkError_t status =
        MakeTLs(aLocal.transportLayers, aLocal.global) ? StartSupervisor(aLocal) : TvkErrorNoTL;
    if (status != TvkErrorSuccess) {
        ReleaseAggregates(aLocal.transportLayers);
        aLocal.global->Disable(true);
    }
    return status;
}

void StopTransportLayers(tLocalData& aLocal, llk::uAutoreleasePool& aPool) {
    aLocal.global->Disable(true);
    aLocal.global->RemoveAll();
    tvk::pProxy* supervisor = StopSupervisor(aLocal);
    aPool.Sink();
    // The mutex is left while the Supervisor ends and the aggregates stop:
    // their threads may still be finishing calls that need it.
    aLocal.mutex->Unlock();
    // Calls inside may still hold the Supervisor, some from its own
    // callbacks; it ends once they are out, on this thread.
    aLocal.junction->Wait(0);
    llk::ReleaseAndClear(supervisor);
    ReleaseAggregates(aLocal.transportLayers);
    llk::ReleaseAndClear(aLocal.supervisorAggregate);
    aPool.Sink();
    aLocal.mutex->Lock();
}
