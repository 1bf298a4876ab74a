// The Supervisor's steps of start-up and shutdown, and the systems it
// forwards to.
#pragma once

#include "Module.h"

// With the module mutex held, after the producers are loaded: makes the
// Supervisor behind handle 1 and gets it going. 0, or the status that failed.
TvkError_t StartSupervisor(tLocalData& aLocal);
// With the module mutex held, after the handle table was emptied: lets go of
// the Supervisor; its aggregate goes with the producers'.
void StopSupervisor(tLocalData& aLocal);
