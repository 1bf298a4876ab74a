// Splits an image's lines into bands that the pool's threads work on at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "TavikCommon.h"

namespace img {

// Runs aWork(first, end) over the lines [0, aLines), in bands on several
// threads when the image has enough pixels to pay for the hand-off, else on
// the caller's thread. Returns when every band is done: TvkErrorSuccess, or
// TvkErrorResources when a band could not be written (its work threw, as a
// failed allocation does).
TvkError_t ForEachBand(uint32_t aLines, size_t aPixels,
                       const std::function<void(uint32_t, uint32_t)>& aWork);

// The smallest number of pixels per band, and the number of threads (0: one
// per processor, or TAVIK_IMAGE_THREADS when set). Tests use it to force bands.
void SetBandLimits(size_t aPixelsPerBand, uint32_t aThreads);

} // namespace img
