// Public statuses: normalisation of internal ones.
#pragma once

#include "TavikC.h"

// Internal statuses (kit, feature kernel, GenTL) to the public table.
TvkError_t TvkAPINormalizeError(TvkError_t aCode);
