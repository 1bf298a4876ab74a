// The base of every object with a flat handle: it maps feature names to
// Feature objects, made on demand, and cuts them loose when the device closes.
#pragma once

#include <cstdint>
#include <vector>

#include "TavikCPP/BasicLockable.h"

namespace QRX::TvkAPI {

class TVKCPP_EXPORT FeatureContainer : public virtual BasicLockable {
public:
    ~FeatureContainer() override;
    FeatureContainer(const FeatureContainer&) = delete;
    FeatureContainer& operator=(const FeatureContainer&) = delete;

    // The same name gives the same Feature, with its observers, until the
    // container closes; an invisible feature is made anew at each lookup.
    TvkErrorType GetFeatureByName(const char* pName, FeaturePtr& pFeature);
    // Two steps: a null array asks the count.
    TvkErrorType GetFeatures(FeaturePtr* pFeatures, uint32_t& size);
    TvkErrorType GetFeatures(std::vector<FeaturePtr>& features);

    // The flat handle, null while closed.
    TvkHandle_t GetHandle() const;

protected:
    FeatureContainer();
    // A null handle resets the container.
    void SetHandle(const TvkHandle_t handle);
    // Forgets the handle and nothing else.
    void RevokeHandle();
    // Detaches every feature handed out, while the handle is still valid.
    void Reset();

private:
    class Impl;
    Impl* m_pImpl;
};

} // namespace QRX::TvkAPI
