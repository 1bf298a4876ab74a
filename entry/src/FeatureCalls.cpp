// Reading, writing and watching the features of a system, interface or camera.
#include "CallFrame.h"
#include "engine/Proxy.h"

namespace {

// Every feature call goes to the handle's proxy; a handle without one is bad.
template <class Call> TvkError_t OnFeatures(TvkHandle_t aHandle, Call&& aCall) {
    return WithProxy(aHandle, TvkErrorBadHandle, std::forward<Call>(aCall));
}

// The getters of one value share their frame: name and output required.
template <class T, class Call>
TvkError_t Get(const char* aFunction, TvkHandle_t aHandle, const char* aName, T* aValue,
               void (uCallTrace::*aOut)(const char*, const T*), const char* aOutName,
               Call&& aCall) {
    uCallTrace trace(aFunction);
    trace.InHandle("handle", aHandle).InString("name", aName);
    TvkError_t status = RunGated(trace, 0, FirstFailure({Require(aName), Require(aValue)}),
                                 [&] { return OnFeatures(aHandle, aCall); });
    (trace.*aOut)(aOutName, aValue);
    return status;
}

// A value read by type, straight into the caller's variable.
template <class T>
TvkError_t Peek(const char* aFunction, TvkHandle_t aHandle, const char* aName, T* aValue,
                void (uCallTrace::*aOut)(const char*, const T*), const char* aOutName,
                tvk::tFeatureData aType) {
    return Get(aFunction, aHandle, aName, aValue, aOut, aOutName, [&](tvk::pProxy* aProxy) {
        return aProxy->PeekFeature(aName, aType, aValue, 0, nullptr);
    });
}

// The setters share theirs; callbacks may not write features.
TvkError_t Poke(uCallTrace& aTrace, TvkHandle_t aHandle, TvkError_t aCheck, const char* aName,
                tvk::tFeatureData aType, const void* aValue, uint32_t aLength = 0) {
    return RunGated(aTrace, kTagFeatureSet, aCheck, [&] {
        return OnFeatures(aHandle, [&](tvk::pProxy* aProxy) {
            return aProxy->PokeFeature(aName, aType, aValue, aLength);
        });
    });
}

// All features, or those one feature affects or selects.
enum class tList { kAll, kAffected, kSelected };

TvkError_t InfoList(const char* aFunction, TvkHandle_t aHandle, const char* aName, tList aList,
                    TvkFeatureInfo_t* aArray, uint32_t aLength, uint32_t* aNumFound,
                    uint32_t aSize) {
    uCallTrace trace(aFunction);
    trace.InHandle("handle", aHandle);
    bool named = aList != tList::kAll;
    if (named) trace.InString("name", aName);
    trace.InPointer("pFeatureInfoList", aArray)
        .InU32("listLength", aLength)
        .InU32("sizeofFeatureInfo", aSize);
    TvkError_t status = RunGated(
        trace, 0,
        FirstFailure({Require(!named || aName), Require(aArray || aNumFound),
                      RequireSize(aSize, sizeof(TvkFeatureInfo_t))}),
        [&] {
            return OnFeatures(aHandle, [&](tvk::pProxy* aProxy) {
                switch (aList) {
                case tList::kAffected:
                    return aProxy->ListAffectedFeatures(aName, aArray, aSize, aLength, aNumFound);
                case tList::kSelected:
                    return aProxy->ListSelectedFeatures(aName, aArray, aSize, aLength, aNumFound);
                default:
                    return aProxy->ListFeatures(aArray, aSize, aLength, aNumFound);
                }
            });
        });
    trace.OutU32("pNumFound", aNumFound);
    return status;
}

// The answer of a yes-or-no query, as the public bool.
void SetBool(TvkBool_t* aTo, bool aValue) {
    if (aTo) *aTo = aValue ? 1 : 0;
}

} // namespace

extern "C" {

TVK_EXPORT TvkError_t TvkFeaturesList(const TvkHandle_t handle, TvkFeatureInfo_t* pFeatureInfoList,
                                      uint32_t listLength, uint32_t* pNumFound,
                                      uint32_t sizeofFeatureInfo) {
    return InfoList("TvkFeaturesList", handle, nullptr, tList::kAll, pFeatureInfoList, listLength,
                    pNumFound, sizeofFeatureInfo);
}

TVK_EXPORT TvkError_t TvkFeatureListAffected(const TvkHandle_t handle, const char* name,
                                             TvkFeatureInfo_t* pFeatureInfoList,
                                             uint32_t listLength, uint32_t* pNumFound,
                                             uint32_t sizeofFeatureInfo) {
    return InfoList("TvkFeatureListAffected", handle, name, tList::kAffected, pFeatureInfoList,
                    listLength, pNumFound, sizeofFeatureInfo);
}

TVK_EXPORT TvkError_t TvkFeatureListSelected(const TvkHandle_t handle, const char* name,
                                             TvkFeatureInfo_t* pFeatureInfoList,
                                             uint32_t listLength, uint32_t* pNumFound,
                                             uint32_t sizeofFeatureInfo) {
    return InfoList("TvkFeatureListSelected", handle, name, tList::kSelected, pFeatureInfoList,
                    listLength, pNumFound, sizeofFeatureInfo);
}

TVK_EXPORT TvkError_t TvkFeatureInfoQuery(const TvkHandle_t handle, const char* name,
                                          TvkFeatureInfo_t* pFeatureInfo,
                                          uint32_t sizeofFeatureInfo) {
    uCallTrace trace("TvkFeatureInfoQuery");
    trace.InHandle("handle", handle)
        .InString("name", name)
        .InU32("sizeofFeatureInfo", sizeofFeatureInfo);
    return RunGated(trace, 0,
                    FirstFailure({Require(name), Require(pFeatureInfo),
                                  RequireSize(sizeofFeatureInfo, sizeof(TvkFeatureInfo_t))}),
                    [&] {
                        return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
                            return aProxy->InfoFeature(name, pFeatureInfo, sizeofFeatureInfo);
                        });
                    });
}

TVK_EXPORT TvkError_t TvkFeatureAccessQuery(const TvkHandle_t handle, const char* name,
                                            TvkBool_t* pIsReadable, TvkBool_t* pIsWriteable) {
    uCallTrace trace("TvkFeatureAccessQuery");
    trace.InHandle("handle", handle).InString("name", name);
    TvkError_t status = RunGated(trace, 0, Require(name), [&] {
        return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
            bool readable = false, writeable = false;
            llk::i4 result = aProxy->StatFeature(name, &readable, &writeable);
            if (result == llk::kOk) {
                SetBool(pIsReadable, readable);
                SetBool(pIsWriteable, writeable);
            }
            return result;
        });
    });
    trace.OutBool("pIsReadable", pIsReadable);
    trace.OutBool("pIsWriteable", pIsWriteable);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureIntGet(const TvkHandle_t handle, const char* name,
                                       int64_t* pValue) {
    return Peek("TvkFeatureIntGet", handle, name, pValue, &uCallTrace::OutI64, "pValue",
                tvk::kFeatureInt);
}

TVK_EXPORT TvkError_t TvkFeatureFloatGet(const TvkHandle_t handle, const char* name,
                                         double* pValue) {
    return Peek("TvkFeatureFloatGet", handle, name, pValue, &uCallTrace::OutDouble, "pValue",
                tvk::kFeatureFloat);
}

TVK_EXPORT TvkError_t TvkFeatureBoolGet(const TvkHandle_t handle, const char* name,
                                        TvkBool_t* pValue) {
    return Peek("TvkFeatureBoolGet", handle, name, pValue, &uCallTrace::OutBool, "pValue",
                tvk::kFeatureBool);
}

TVK_EXPORT TvkError_t TvkFeatureEnumGet(const TvkHandle_t handle, const char* name,
                                        const char** pValue) {
    return Peek<const char*>("TvkFeatureEnumGet", handle, name, pValue, &uCallTrace::OutString,
                             "pValue", tvk::kFeatureEnum);
}

TVK_EXPORT TvkError_t TvkFeatureCommandIsDone(const TvkHandle_t handle, const char* name,
                                              TvkBool_t* pIsDone) {
    return Peek("TvkFeatureCommandIsDone", handle, name, pIsDone, &uCallTrace::OutBool, "pIsDone",
                tvk::kFeatureCommand);
}

TVK_EXPORT TvkError_t TvkFeatureIntIncrementQuery(const TvkHandle_t handle, const char* name,
                                                  int64_t* pValue) {
    return Get("TvkFeatureIntIncrementQuery", handle, name, pValue, &uCallTrace::OutI64, "pValue",
               [&](tvk::pProxy* aProxy) {
                   bool stated = false;
                   llk::i4 result = aProxy->QIncFeature(name, tvk::kFeatureInt, pValue, &stated);
                   // Without a stated increment any step will do.
                   if (result == llk::kOk && !stated) *pValue = 1;
                   return result;
               });
}

TVK_EXPORT TvkError_t TvkFeatureStringMaxlengthQuery(const TvkHandle_t handle, const char* name,
                                                     uint32_t* pMaxLength) {
    return Get("TvkFeatureStringMaxlengthQuery", handle, name, pMaxLength, &uCallTrace::OutU32,
               "pMaxLength", [&](tvk::pProxy* aProxy) {
                   return aProxy->SizeFeature(name, tvk::kFeatureString, pMaxLength);
               });
}

TVK_EXPORT TvkError_t TvkFeatureRawLengthQuery(const TvkHandle_t handle, const char* name,
                                               uint32_t* pLength) {
    return Get(
        "TvkFeatureRawLengthQuery", handle, name, pLength, &uCallTrace::OutU32, "pLength",
        [&](tvk::pProxy* aProxy) { return aProxy->SizeFeature(name, tvk::kFeatureRaw, pLength); });
}

TVK_EXPORT TvkError_t TvkFeatureStringGet(const TvkHandle_t handle, const char* name, char* buffer,
                                          uint32_t bufferSize, uint32_t* pSizeFilled) {
    uCallTrace trace("TvkFeatureStringGet");
    trace.InHandle("handle", handle).InString("name", name).InU32("bufferSize", bufferSize);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(name), Require(buffer || pSizeFilled)}), [&] {
            return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
                return aProxy->PeekFeature(name, tvk::kFeatureString, buffer, bufferSize,
                                           pSizeFilled);
            });
        });
    trace.OutPointer("buffer", buffer);
    trace.OutU32("pSizeFilled", pSizeFilled);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureRawGet(const TvkHandle_t handle, const char* name, char* pBuffer,
                                       uint32_t bufferSize, uint32_t* pSizeFilled) {
    uCallTrace trace("TvkFeatureRawGet");
    trace.InHandle("handle", handle).InString("name", name).InU32("bufferSize", bufferSize);
    TvkError_t status = RunGated(
        trace, 0, FirstFailure({Require(name), Require(pBuffer), Require(pSizeFilled)}), [&] {
            return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
                return aProxy->PeekFeature(name, tvk::kFeatureRaw, pBuffer, bufferSize,
                                           pSizeFilled);
            });
        });
    trace.OutU32("pSizeFilled", pSizeFilled);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureIntSet(const TvkHandle_t handle, const char* name, int64_t value) {
    uCallTrace trace("TvkFeatureIntSet");
    trace.InHandle("handle", handle).InString("name", name).InI64("value", value);
    return Poke(trace, handle, Require(name), name, tvk::kFeatureInt, &value);
}

TVK_EXPORT TvkError_t TvkFeatureFloatSet(const TvkHandle_t handle, const char* name, double value) {
    uCallTrace trace("TvkFeatureFloatSet");
    trace.InHandle("handle", handle).InString("name", name).InDouble("value", value);
    return Poke(trace, handle, Require(name), name, tvk::kFeatureFloat, &value);
}

TVK_EXPORT TvkError_t TvkFeatureBoolSet(const TvkHandle_t handle, const char* name,
                                        TvkBool_t value) {
    uCallTrace trace("TvkFeatureBoolSet");
    trace.InHandle("handle", handle).InString("name", name).InBool("value", value != 0);
    return Poke(trace, handle, Require(name), name, tvk::kFeatureBool, &value);
}

TVK_EXPORT TvkError_t TvkFeatureEnumSet(const TvkHandle_t handle, const char* name,
                                        const char* value) {
    uCallTrace trace("TvkFeatureEnumSet");
    trace.InHandle("handle", handle).InString("name", name).InString("value", value);
    return Poke(trace, handle, FirstFailure({Require(name), Require(value)}), name,
                tvk::kFeatureEnum, value);
}

TVK_EXPORT TvkError_t TvkFeatureStringSet(const TvkHandle_t handle, const char* name,
                                          const char* value) {
    uCallTrace trace("TvkFeatureStringSet");
    trace.InHandle("handle", handle).InString("name", name).InString("value", value);
    return Poke(trace, handle, FirstFailure({Require(name), Require(value)}), name,
                tvk::kFeatureString, value);
}

TVK_EXPORT TvkError_t TvkFeatureRawSet(const TvkHandle_t handle, const char* name,
                                       const char* pBuffer, uint32_t bufferSize) {
    uCallTrace trace("TvkFeatureRawSet");
    trace.InHandle("handle", handle)
        .InString("name", name)
        .InPointer("pBuffer", pBuffer)
        .InU32("bufferSize", bufferSize);
    return Poke(trace, handle, Require(name), name, tvk::kFeatureRaw, pBuffer, bufferSize);
}

TVK_EXPORT TvkError_t TvkFeatureCommandRun(const TvkHandle_t handle, const char* name) {
    uCallTrace trace("TvkFeatureCommandRun");
    trace.InHandle("handle", handle).InString("name", name);
    return Poke(trace, handle, Require(name), name, tvk::kFeatureCommand, nullptr);
}

TVK_EXPORT TvkError_t TvkFeatureIntRangeQuery(const TvkHandle_t handle, const char* name,
                                              int64_t* pMin, int64_t* pMax) {
    uCallTrace trace("TvkFeatureIntRangeQuery");
    trace.InHandle("handle", handle).InString("name", name);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(name), Require(pMin || pMax)}), [&] {
            return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
                return aProxy->RngeFeature(name, tvk::kFeatureInt, pMin, pMax);
            });
        });
    trace.OutI64("pMin", pMin);
    trace.OutI64("pMax", pMax);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureFloatRangeQuery(const TvkHandle_t handle, const char* name,
                                                double* pMin, double* pMax) {
    uCallTrace trace("TvkFeatureFloatRangeQuery");
    trace.InHandle("handle", handle).InString("name", name);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(name), Require(pMin || pMax)}), [&] {
            return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
                return aProxy->RngeFeature(name, tvk::kFeatureFloat, pMin, pMax);
            });
        });
    trace.OutDouble("pMin", pMin);
    trace.OutDouble("pMax", pMax);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureEnumRangeQuery(const TvkHandle_t handle, const char* name,
                                               const char** pNameArray, uint32_t arrayLength,
                                               uint32_t* pSizeFilled) {
    uCallTrace trace("TvkFeatureEnumRangeQuery");
    trace.InHandle("handle", handle)
        .InString("name", name)
        .InPointer("pNameArray", pNameArray)
        .InU32("arrayLength", arrayLength);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(name), Require(pNameArray || pSizeFilled)}), [&] {
            return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
                return aProxy->RngeFeature(name, pNameArray, arrayLength, pSizeFilled);
            });
        });
    trace.OutU32("pSizeFilled", pSizeFilled);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureEnumIsAvailable(const TvkHandle_t handle, const char* name,
                                                const char* value, TvkBool_t* pIsAvailable) {
    uCallTrace trace("TvkFeatureEnumIsAvailable");
    trace.InHandle("handle", handle).InString("name", name).InString("value", value);
    TvkError_t status = RunGated(
        trace, 0, FirstFailure({Require(name), Require(value), Require(pIsAvailable)}), [&] {
            return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
                bool available = false;
                llk::i4 result = aProxy->IsEnumValueAvailable(name, value, &available);
                if (result == llk::kOk) SetBool(pIsAvailable, available);
                return result;
            });
        });
    trace.OutBool("pIsAvailable", pIsAvailable);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureEnumAsInt(const TvkHandle_t handle, const char* name,
                                          const char* value, int64_t* pIntVal) {
    uCallTrace trace("TvkFeatureEnumAsInt");
    trace.InHandle("handle", handle).InString("name", name).InString("value", value);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(name), Require(value), Require(pIntVal)}), [&] {
            return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
                return aProxy->GetEnumValueAsInteger(name, value, pIntVal);
            });
        });
    trace.OutI64("pIntVal", pIntVal);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureEnumAsString(const TvkHandle_t handle, const char* name,
                                             int64_t intValue, const char** pStringValue) {
    uCallTrace trace("TvkFeatureEnumAsString");
    trace.InHandle("handle", handle).InString("name", name).InI64("intValue", intValue);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(name), Require(pStringValue)}), [&] {
            return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
                return aProxy->GetEnumValueAsString(name, intValue, pStringValue);
            });
        });
    trace.OutString("pStringValue", pStringValue);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureEnumEntryGet(const TvkHandle_t handle, const char* featureName,
                                             const char* entryName,
                                             TvkFeatureEnumEntry_t* pFeatureEnumEntry,
                                             uint32_t sizeofFeatureEnumEntry) {
    uCallTrace trace("TvkFeatureEnumEntryGet");
    trace.InHandle("handle", handle)
        .InString("featureName", featureName)
        .InString("entryName", entryName)
        .InU32("sizeofFeatureEnumEntry", sizeofFeatureEnumEntry);
    return RunGated(
        trace, 0,
        FirstFailure({Require(featureName), Require(entryName), Require(pFeatureEnumEntry),
                      RequireSize(sizeofFeatureEnumEntry, sizeof(TvkFeatureEnumEntry_t))}),
        [&] {
            return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
                return aProxy->GetEnumValueInfo(featureName, entryName, pFeatureEnumEntry);
            });
        });
}

TVK_EXPORT TvkError_t TvkFeatureInvalidationRegister(const TvkHandle_t handle, const char* name,
                                                     TvkInvalidationCallback callback,
                                                     void* userContext) {
    uCallTrace trace("TvkFeatureInvalidationRegister");
    trace.InHandle("handle", handle)
        .InString("name", name)
        .InPointer("callback", reinterpret_cast<const void*>(callback))
        .InPointer("userContext", userContext);
    return RunGated(trace, 0, Require(callback), [&] {
        return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
            return aProxy->RegisterCBFeature(name, callback, userContext);
        });
    });
}

TVK_EXPORT TvkError_t TvkFeatureInvalidationUnregister(const TvkHandle_t handle, const char* name,
                                                       TvkInvalidationCallback callback) {
    uCallTrace trace("TvkFeatureInvalidationUnregister");
    trace.InHandle("handle", handle)
        .InString("name", name)
        .InPointer("callback", reinterpret_cast<const void*>(callback));
    return RunGated(trace, 0, Require(callback), [&] {
        return OnFeatures(handle, [&](tvk::pProxy* aProxy) {
            return aProxy->UnregisterCBFeature(name, callback);
        });
    });
}

} // extern "C"
