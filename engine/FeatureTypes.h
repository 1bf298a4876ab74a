// The words the engine speaks about features: their types, the records
// that describe them, and the invalidation callback.
#pragma once

#include "TavikC.h"
#include "kit/Types.h"

namespace tvk {

// The type of a feature, as the flat interface numbers it.
enum tFeatureData : llk::u4 {
    kFeatureUnknown = TvkFeatureDataUnknown,
    kFeatureInt = TvkFeatureDataInt,
    kFeatureFloat = TvkFeatureDataFloat,
    kFeatureEnum = TvkFeatureDataEnum,
    kFeatureString = TvkFeatureDataString,
    kFeatureBool = TvkFeatureDataBool,
    kFeatureCommand = TvkFeatureDataCommand,
    kFeatureRaw = TvkFeatureDataRaw,
};

// The records a feature is described by are the public ones: the flat layer
// hands them out as they are.
using tFeatureInfo = TvkFeatureInfo_t;
using tFeatureEnumEntry = TvkFeatureEnumEntry_t;
using tFCallback = TvkInvalidationCallback;

// Public statuses the container answers itself; the kernel has no words for
// them.
constexpr llk::i4 kFeatureWrongType = TvkErrorWrongType;
constexpr llk::i4 kFeatureNullOutput = TvkErrorBadParameter;

} // namespace tvk
