// Finding the producers (".cti" files) at start-up and tearing them down at
// shutdown.
#pragma once

#include "Module.h"
#include "kit/AutoreleasePool.h"
#include "kit/String.h"

namespace llk {
class cObjectList;
}
namespace tvk {
class cAggregate;
}

// One ".cti" file and what was built from it.
class cGenTL : public llk::pObject {
public:
    static cGenTL* New(const char* aPath) { return Make<cGenTL>(aPath); }
    llk::i4 Initialize(const char* aPath);
    ~cGenTL() override;

    llk::cString* GetPath() const { return mPath; }
    // Absent when the producer did not load; such an entry is skipped.
    tvk::cAggregate* GetAggregate() const { return mAggregate; }
    // Retains the new aggregate before it releases the old one.
    void SetAggregate(tvk::cAggregate* aAggregate);

private:
    llk::cString* mPath = nullptr;
    tvk::cAggregate* mAggregate = nullptr;
};

// Adds every ".cti" of aDirectory that is not yet in the map, by file name.
void ScanTLs(llk::cObjectMap* aMap, const char* aDirectory);
// The entries of a search path, split at ";" (and ":"), in order.
llk::cObjectList* SplitPaths(const char* aPath);

// Builds each producer's aggregate, in map order, replacing any old one; true
// when at least one producer loaded.
bool MakeTLs(llk::cObjectMap* aMap, tvk::cGlobal* aGlobal);

// With the module mutex held: scans, loads the producers and starts their
// systems. 0, or the status that failed the start.
TvkError_t StartTransportLayers(tLocalData& aLocal);
// With the module mutex held: ends everything the start built.
void StopTransportLayers(tLocalData& aLocal, llk::uAutoreleasePool& aPool);
