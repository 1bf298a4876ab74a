// Told when a feature may have changed.
#pragma once

#include "TavikCPP/TavikCPPTypes.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT IFeatureObserver : public virtual ReferenceCounted {
public:
    // Runs on a library thread, with the feature's observer list held for
    // reading: it may read features (writes are refused there), but must not
    // register or unregister observers of this feature.
    virtual void FeatureChanged(const FeaturePtr& pFeature) = 0;
    ~IFeatureObserver() override;
};

} // namespace QRX::TvkAPI
