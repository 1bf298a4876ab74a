#include "DeviceMap.h"

#include <vector>

#include "engine/Global.h"
#include "engine/Interface.h"
#include "kit/Data.h"
#include "kit/ObjectList.h"
#include "kit/ObjectMap.h"

namespace {

const TvkCameraInfo_t* InfoOf(llk::pObject* aEntry) {
    return aEntry
               ? reinterpret_cast<const TvkCameraInfo_t*>(static_cast<llk::cData*>(aEntry)->Bytes())
               : nullptr;
}

// A camera seen on several interfaces keeps the first that gives real
// access. False when the map cannot take it.
bool Keep(llk::cObjectMap* aMap, const TvkCameraInfo_t& aInfo) {
    const TvkCameraInfo_t* known = InfoOf(aMap->Fetch(aInfo.idString));
    if (known && (GivesAccess(*known) || !GivesAccess(aInfo))) return true;
    llk::cData* entry = llk::cData::New(&aInfo, sizeof(aInfo));
    return entry && aMap->Store(aInfo.idString, entry) == llk::kOk;
}

} // namespace

uDeviceMap::~uDeviceMap() {
    llk::ReleaseAndClear(mMap);
}

llk::i4 uDeviceMap::Renew(tvk::cGlobal* aGlobal, llk::cObjectList* aInterfaces) {
    llk::ReleaseAndClear(mMap);
    llk::cObjectMap* map = mMap = llk::Retained(llk::cObjectMap::New(16, 0.0f, true));
    llk::cObjectList* interfaces = aInterfaces ? aInterfaces : llk::cObjectList::New(8, true);
    if (!map || !interfaces) return llk::kNoMemory;
    aGlobal->Enumerate(tvk::kTypeInterfaceProxy, interfaces);
    for (llk::u4 i = 0; i < interfaces->Count(); ++i) {
        auto* interface = static_cast<tvk::cInterfaceProxy*>(interfaces->AtIndex(i));
        llk::u4 count = 0;
        if (interface->DeviceListRenew() != llk::kOk ||
            interface->DeviceListCount(count) != llk::kOk)
            continue;
        // All of the interface's devices in one request; one that cannot be
        // described ends it, is left out, and the rest are asked after it.
        std::vector<TvkCameraInfo_t> infos(count);
        for (llk::u4 d = 0; d < count;) {
            llk::u4 filled = count - d;
            const llk::i4 status = interface->DeviceListQuery(d, &infos[d], filled);
            for (llk::u4 i = d; i < d + filled; ++i)
                if (!Keep(map, infos[i])) return llk::kNoMemory;
            d += filled + (status != llk::kOk);
        }
    }
    return llk::kOk;
}

llk::u4 uDeviceMap::Count() const {
    return mMap ? mMap->Count() : 0;
}

const TvkCameraInfo_t* uDeviceMap::At(llk::u4 aIndex) const {
    return mMap ? InfoOf(mMap->AtIndex(aIndex)) : nullptr;
}

const TvkCameraInfo_t* uDeviceMap::Find(const char* aIdentifier) const {
    return mMap ? InfoOf(mMap->Fetch(aIdentifier)) : nullptr;
}

bool FindOnInterfaces(llk::cObjectList* aInterfaces, const char* aIdentifier,
                      TvkCameraInfo_t& aInfo, tvk::cInterfaceProxy** aWhere) {
    bool found = false;
    for (llk::u4 i = 0; i < aInterfaces->Count(); ++i) {
        auto* interface = static_cast<tvk::cInterfaceProxy*>(aInterfaces->AtIndex(i));
        TvkCameraInfo_t info{};
        if (interface->DeviceListRenew() != llk::kOk ||
            interface->DeviceFind(aIdentifier, info) != llk::kOk)
            continue;
        aInfo = info;
        found = true;
        if (aWhere) llk::Assign(*aWhere, interface);
        if (GivesAccess(info)) break;
    }
    return found;
}
