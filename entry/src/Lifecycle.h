// The module's way from loaded to started and back. Start-up and shutdown may
// be called from any thread at once: while a shutdown tears down, the module
// is stopping, and later start-ups and shutdowns wait until it has finished.
#pragma once

#include "Module.h"
#include "kit/AutoreleasePool.h"

// With the module mutex held: returns once no shutdown is under way.
void WaitWhileStopping(tLocalData& aLocal);

// With the module mutex held and the module not started: finds and loads the
// producers and builds what runs on them, waits until each system has listed
// its interfaces, then marks the module started. 0,
// or the status that failed the start, which leaves nothing running.
TvkError_t StartModule(tLocalData& aLocal);

// Takes the module mutex. A started module is stopped: the gate closes, the
// actors end, and without the mutex the calls still inside finish, then the
// aggregates stop and the producers unload; then the gate opens again to refuse calls as not started. aPool is
// the caller's, sunk as each stage's objects die.
void StopModule(tLocalData& aLocal, llk::uAutoreleasePool& aPool);
