// The cameras the interfaces list, by identifier, each with the first
// interface that gives real access to it. Every discovery call makes its own,
// so that a slow interface holds up no other call longer than its requests
// may wait.
#pragma once

#include "TavikC.h"
#include "kit/Types.h"

namespace llk {
class cObjectList;
class cObjectMap;
} // namespace llk
namespace tvk {
class cGlobal;
class cInterfaceProxy;
} // namespace tvk

// The map of one call.
class uDeviceMap {
public:
    uDeviceMap() = default;
    ~uDeviceMap();
    uDeviceMap(const uDeviceMap&) = delete;
    uDeviceMap& operator=(const uDeviceMap&) = delete;

    // Asks every interface for its devices; an interface that fails is
    // skipped, and so is a device that cannot be described. The interfaces
    // come back in aInterfaces when it is given.
    llk::i4 Renew(tvk::cGlobal* aGlobal, llk::cObjectList* aInterfaces = nullptr);
    llk::u4 Count() const;
    // In the order the interfaces listed them.
    const TvkCameraInfo_t* At(llk::u4 aIndex) const;
    const TvkCameraInfo_t* Find(const char* aIdentifier) const;

private:
    llk::cObjectMap* mMap = nullptr; // camera identifier to cData of TvkCameraInfo_t
};

// Whether bit 0 or 1 of the access says the camera can really be used.
inline bool GivesAccess(const TvkCameraInfo_t& aInfo) {
    return (aInfo.permittedAccess & (TvkAccessModeFull | TvkAccessModeRead)) != 0;
}

// A device by any identifier one of aInterfaces recognises: the last that
// knows it, or the first that gives access. The interface comes back
// retained in aWhere when asked for; false when none knows it.
bool FindOnInterfaces(llk::cObjectList* aInterfaces, const char* aIdentifier,
                      TvkCameraInfo_t& aInfo, tvk::cInterfaceProxy** aWhere);
