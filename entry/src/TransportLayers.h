// Finding the producers (".cti" files) at start-up and tearing them down at
// shutdown.
#pragma once

#include "kit/String.h"

namespace llk {
class cObjectList;
class cObjectMap;
} // namespace llk
namespace tvk {
class cAggregate;
class cGlobal;
class cSystemProxy;
} // namespace tvk

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
    // The producer's system, while started.
    tvk::cSystemProxy* GetSystem() const { return mSystem; }
    void SetSystem(tvk::cSystemProxy* aSystem);

private:
    llk::cString* mPath = nullptr;
    tvk::cAggregate* mAggregate = nullptr;
    tvk::cSystemProxy* mSystem = nullptr;
};

// Adds every ".cti" of aDirectory that is not yet in the map, by file name.
void ScanTLs(llk::cObjectMap* aMap, const char* aDirectory);
// The entries of a search path, split at ";" (and ":"), in order.
llk::cObjectList* SplitPaths(const char* aPath);
// Scans the current directory, then each directory of the producer search
// path from left to right.
void ScanSearchPath(llk::cObjectMap* aMap);

// Builds each producer's aggregate, in map order, replacing any old one; true
// when at least one producer loaded.
bool MakeTLs(llk::cObjectMap* aMap, tvk::cGlobal* aGlobal);
// Makes each loaded producer's system, in map order, and puts it in the
// handle table; each is made once the one before has listed its interfaces,
// so that interfaces are listed in the producers' order. A system that
// cannot be made leaves its producer without interfaces.
void MakeSystems(llk::cObjectMap* aMap, tvk::cGlobal* aGlobal);
// Takes every system out of the handle table and ends it.
void EndSystems(llk::cObjectMap* aMap, tvk::cGlobal* aGlobal);
// Releases each producer's aggregate, which stops its threads and closes and
// unloads the producer; the map keeps its entries.
void ReleaseTLs(llk::cObjectMap* aMap);
