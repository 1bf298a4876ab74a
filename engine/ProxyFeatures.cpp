// pProxy's feature forms: each packs its arguments into a context on the
// caller's stack and sends uid 10 with the tag of the operation.
#include <algorithm>
#include <cstring>

#include "engine/FeatureRequests.h"
#include "engine/Proxy.h"
#include "engine/RequestIds.h"

namespace tvk {

namespace {
template <class T> void CopyOut(T* aTo, const T& aValue) {
    if (aTo) *aTo = aValue;
}
} // namespace

namespace {
llk::i4 SendList(pProxy* aProxy, const char* aName, bool aSelected, tFeatureInfo* aArray,
                 llk::u4 aStructSize, llk::u4 aLength, llk::u4* aFound) {
    tFAccessListCtx context{aName, aSelected, aArray, aStructSize, aLength};
    llk::i4 status = aProxy->SendRequest(request::kFeature, request::kFeatureList, &context, 0);
    if (status == llk::kOk) CopyOut(aFound, context.count);
    return status;
}
} // namespace

llk::i4 pProxy::ListFeatures(tFeatureInfo* aArray, llk::u4 aStructSize, llk::u4 aLength,
                             llk::u4* aFound) {
    return SendList(this, nullptr, false, aArray, aStructSize, aLength, aFound);
}

llk::i4 pProxy::ListAffectedFeatures(const char* aName, tFeatureInfo* aArray, llk::u4 aStructSize,
                                     llk::u4 aLength, llk::u4* aFound) {
    return SendList(this, aName, false, aArray, aStructSize, aLength, aFound);
}

llk::i4 pProxy::ListSelectedFeatures(const char* aName, tFeatureInfo* aArray, llk::u4 aStructSize,
                                     llk::u4 aLength, llk::u4* aFound) {
    return SendList(this, aName, true, aArray, aStructSize, aLength, aFound);
}

llk::i4 pProxy::InfoFeature(const char* aName, tFeatureInfo* aInfo, llk::u4 aSize) {
    tFeatureInfo info{};
    tFAccessInfoCtx context{aName, &info, aSize};
    llk::i4 status = SendRequest(request::kFeature, request::kFeatureInfo, &context, 0);
    if (status == llk::kOk && aInfo)
        std::memcpy(aInfo, &info, std::min<size_t>(aSize, sizeof(info)));
    return status;
}

llk::i4 pProxy::StatFeature(const char* aName, bool* aReadable, bool* aWriteable) {
    tFAccessStatCtx context{aName, false, false};
    llk::i4 status = SendRequest(request::kFeature, request::kFeatureAccess, &context, 0);
    if (status == llk::kOk) {
        CopyOut(aReadable, context.readable);
        CopyOut(aWriteable, context.writeable);
    }
    return status;
}

llk::i4 pProxy::SizeFeature(const char* aName, tFeatureData aType, llk::u4* aSize) {
    tFAccessSizeCtx context{aName, aType, 0};
    llk::i4 status = SendRequest(request::kFeature, request::kFeatureSize, &context, 0);
    if (status == llk::kOk) CopyOut(aSize, context.size);
    return status;
}

llk::i4 pProxy::PeekFeature(const char* aName, tFeatureData aType, void* aValue, llk::u4 aLength,
                            llk::u4* aFilled) {
    tFAccessPeekCtx context{aName, aType, aValue, aLength};
    llk::i4 status = SendRequest(request::kFeature, request::kFeaturePeek, &context, 0);
    if (status == llk::kOk) CopyOut(aFilled, context.length);
    return status;
}

llk::i4 pProxy::PokeFeature(const char* aName, tFeatureData aType, const void* aValue,
                            llk::u4 aLength) {
    tFAccessPokeCtx context{aName, aType, aValue, aLength};
    return SendRequest(request::kFeature, request::kFeaturePoke, &context, 0);
}

llk::i4 pProxy::RngeFeature(const char* aName, tFeatureData aType, void* aMin, void* aMax) {
    tFAccessRngeCtx context{aName, aType, aMin, aMax, nullptr, 0};
    return SendRequest(request::kFeature, request::kFeatureRange, &context, 0);
}

llk::i4 pProxy::RngeFeature(const char* aName, const char** aArray, llk::u4 aLength,
                            llk::u4* aFilled) {
    tFAccessRngeCtx context{aName, kFeatureEnum, nullptr, nullptr, aArray, aLength};
    llk::i4 status = SendRequest(request::kFeature, request::kFeatureRange, &context, 0);
    if (status == llk::kOk) CopyOut(aFilled, context.length);
    return status;
}

llk::i4 pProxy::QIncFeature(const char* aName, tFeatureData aType, void* aValue, bool* aGotOne) {
    tFAccessQIncCtx context{aName, aType, aValue, false};
    llk::i4 status = SendRequest(request::kFeature, request::kFeatureIncrement, &context, 0);
    if (status == llk::kOk) CopyOut(aGotOne, context.gotOne);
    return status;
}

llk::i4 pProxy::IsEnumValueAvailable(const char* aName, const char* aValue, bool* aAvailable) {
    tFAccessEnumCtx context{aName, aValue, false, nullptr, nullptr};
    llk::i4 status = SendRequest(request::kFeature, request::kFeatureEnumQuery, &context, 0);
    if (status == llk::kOk) CopyOut(aAvailable, context.available);
    return status;
}

llk::i4 pProxy::GetEnumValueAsInteger(const char* aName, const char* aValue, llk::i8* aInteger) {
    llk::i8 integer = 0;
    tFAccessEnumCtx context{aName, aValue, false, &integer, nullptr};
    llk::i4 status = SendRequest(request::kFeature, request::kFeatureEnumQuery, &context, 0);
    if (status == llk::kOk) CopyOut(aInteger, integer);
    return status;
}

llk::i4 pProxy::GetEnumValueAsString(const char* aName, llk::i8 aValue, const char** aString) {
    tFAccessEnum2Ctx context{aName, aValue, nullptr};
    llk::i4 status = SendRequest(request::kFeature, request::kFeatureEnumAsString, &context, 0);
    if (status == llk::kOk) CopyOut(aString, context.string);
    return status;
}

llk::i4 pProxy::GetEnumValueInfo(const char* aName, const char* aValue, tFeatureEnumEntry* aEntry) {
    tFeatureEnumEntry entry{};
    tFAccessEnumCtx context{aName, aValue, false, nullptr, &entry};
    llk::i4 status = SendRequest(request::kFeature, request::kFeatureEnumQuery, &context, 0);
    if (status == llk::kOk) CopyOut(aEntry, entry);
    return status;
}

llk::i4 pProxy::RegisterCBFeature(const char* aName, tFCallback aCallback, void* aContext) {
    tFAccessICBMCtx context{aName, true, aCallback, aContext};
    return SendRequest(request::kFeature, request::kFeatureCallback, &context, 0);
}

llk::i4 pProxy::UnregisterCBFeature(const char* aName, tFCallback aCallback) {
    tFAccessICBMCtx context{aName, false, aCallback, nullptr};
    return SendRequest(request::kFeature, request::kFeatureCallback, &context, 0);
}

} // namespace tvk
