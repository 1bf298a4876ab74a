// Finding the producers (".cti" files) at start-up and tearing them down at
// shutdown.
#pragma once

#include "Module.h"
#include "kit/AutoreleasePool.h"
#include "kit/String.h"

namespace llk {
class cObjectList;
}

// One ".cti" file and what was built from it.
class cGenTL : public llk::pObject {
public:
    static cGenTL* New(const char* aPath) { return Make<cGenTL>(aPath); }
    llk::i4 Initialize(const char* aPath);
    ~cGenTL() override;

    llk::cString* GetPath() const { return mPath; }

private:
    llk::cString* mPath = nullptr;
};

// Adds every ".cti" of aDirectory that is not yet in the map, by file name.
void ScanTLs(llk::cObjectMap* aMap, const char* aDirectory);
// The entries of a search path, split at ";" (and ":"), in order.
llk::cObjectList* SplitPaths(const char* aPath);

// With the module mutex held: scans, loads the producers and starts their
// systems. 0, or the status that failed the start.
TvkError_t StartTransportLayers(tLocalData& aLocal);
// With the module mutex held: ends everything the start built.
void StopTransportLayers(tLocalData& aLocal, llk::uAutoreleasePool& aPool);
