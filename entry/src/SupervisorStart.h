// The Supervisor's steps of start-up and shutdown, and the systems it
// forwards to.
#pragma once

#include "Module.h"

// With the module mutex held, after the producers are loaded: makes the
// Supervisor behind handle 1 and gets it going. 0, or the status that failed.
TvkError_t StartSupervisor(tLocalData& aLocal);
// With the module mutex held, after the handle table was emptied: takes the
// Supervisor out of the module state. The caller releases it with the mutex
// unlocked, since its callbacks may still be calling in.
tvk::pProxy* StopSupervisor(tLocalData& aLocal);
