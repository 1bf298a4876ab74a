#include "DeviceMap.h"

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
        for (llk::u4 d = 0; d < count; ++d) {
            TvkCameraInfo_t info{};
            llk::u4 one = 1;
            if (interface->DeviceListQuery(d, &info, one) != llk::kOk || one != 1) continue;
            // A camera seen on several interfaces keeps the first that
            // gives real access.
            const TvkCameraInfo_t* known = InfoOf(map->Fetch(info.idString));
            if (known && (GivesAccess(*known) || !GivesAccess(info))) continue;
            llk::cData* entry = llk::cData::New(&info, sizeof(info));
            if (!entry || map->Store(info.idString, entry) != llk::kOk) return llk::kNoMemory;
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
