// The colour-correcting transform: demosaic or copy, then a 3x3 matrix.
#pragma once

#include "TavikImageTransform.h"

namespace img {

// Transforms aSource into aDestination through aMatrix (nine coefficients);
// TvkErrorBadParameter for a pairing of formats it has no routine for.
TvkError_t ImageTransform__CC(const TvkImage& aSource, TvkImage& aDestination,
                              const float* aMatrix);

} // namespace img
