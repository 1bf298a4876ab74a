// What every command of the tool shares.
#pragma once

#include "TavikC.h"

// The library's text for a status.
const char* ErrorText(TvkError_t aStatus);
// Starts the library; tells why on standard error when it cannot.
TvkError_t Start();
