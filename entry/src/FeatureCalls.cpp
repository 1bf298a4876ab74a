// Reading, writing and watching the features of a system, interface or camera.
#include "CallFrame.h"

namespace {

// Every feature call goes to the handle's proxy; a handle without one is bad.
template <class Call> TvkError_t OnFeatures(TvkHandle_t aHandle, Call&& aCall) {
    return WithProxy(aHandle, TvkErrorBadHandle, std::forward<Call>(aCall));
}

TvkError_t Unwired(tvk::pProxy*) {
    return TvkErrorNotImplemented;
}

// The getters of one scalar share their frame.
template <class T>
TvkError_t ScalarGet(const char* aFunction, TvkHandle_t aHandle, const char* aName, T* aValue,
                     void (uCallTrace::*aOut)(const char*, const T*), const char* aOutName) {
    uCallTrace trace(aFunction);
    trace.InHandle("handle", aHandle).InString("name", aName);
    TvkError_t status = RunGated(trace, 0, FirstFailure({Require(aName), Require(aValue)}),
                                 [&] { return OnFeatures(aHandle, Unwired); });
    (trace.*aOut)(aOutName, aValue);
    return status;
}

// The setters share theirs; callbacks may not write features.
TvkError_t Set(uCallTrace& aTrace, TvkHandle_t aHandle, TvkError_t aCheck) {
    return RunGated(aTrace, kTagFeatureSet, aCheck, [&] { return OnFeatures(aHandle, Unwired); });
}

TvkError_t InfoList(const char* aFunction, TvkHandle_t aHandle, const char* aName,
                    bool aNameRequired, TvkFeatureInfo_t* aList, uint32_t aLength,
                    uint32_t* aNumFound, uint32_t aSize) {
    uCallTrace trace(aFunction);
    trace.InHandle("handle", aHandle);
    if (aNameRequired) trace.InString("name", aName);
    trace.InPointer("pFeatureInfoList", aList)
        .InU32("listLength", aLength)
        .InU32("sizeofFeatureInfo", aSize);
    TvkError_t status =
        RunGated(trace, 0,
                 FirstFailure({Require(!aNameRequired || aName), Require(aList || aNumFound),
                               RequireSize(aSize, sizeof(TvkFeatureInfo_t))}),
                 [&] { return OnFeatures(aHandle, Unwired); });
    trace.OutU32("pNumFound", aNumFound);
    return status;
}

} // namespace

extern "C" {

TVK_EXPORT TvkError_t TvkFeaturesList(const TvkHandle_t handle, TvkFeatureInfo_t* pFeatureInfoList,
                                      uint32_t listLength, uint32_t* pNumFound,
                                      uint32_t sizeofFeatureInfo) {
    return InfoList("TvkFeaturesList", handle, nullptr, false, pFeatureInfoList, listLength,
                    pNumFound, sizeofFeatureInfo);
}

TVK_EXPORT TvkError_t TvkFeatureListAffected(const TvkHandle_t handle, const char* name,
                                             TvkFeatureInfo_t* pFeatureInfoList,
                                             uint32_t listLength, uint32_t* pNumFound,
                                             uint32_t sizeofFeatureInfo) {
    return InfoList("TvkFeatureListAffected", handle, name, true, pFeatureInfoList, listLength,
                    pNumFound, sizeofFeatureInfo);
}

TVK_EXPORT TvkError_t TvkFeatureListSelected(const TvkHandle_t handle, const char* name,
                                             TvkFeatureInfo_t* pFeatureInfoList,
                                             uint32_t listLength, uint32_t* pNumFound,
                                             uint32_t sizeofFeatureInfo) {
    return InfoList("TvkFeatureListSelected", handle, name, true, pFeatureInfoList, listLength,
                    pNumFound, sizeofFeatureInfo);
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
                    [&] { return OnFeatures(handle, Unwired); });
}

TVK_EXPORT TvkError_t TvkFeatureAccessQuery(const TvkHandle_t handle, const char* name,
                                            TvkBool_t* pIsReadable, TvkBool_t* pIsWriteable) {
    uCallTrace trace("TvkFeatureAccessQuery");
    trace.InHandle("handle", handle).InString("name", name);
    TvkError_t status =
        RunGated(trace, 0, Require(name), [&] { return OnFeatures(handle, Unwired); });
    trace.OutBool("pIsReadable", pIsReadable);
    trace.OutBool("pIsWriteable", pIsWriteable);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureIntGet(const TvkHandle_t handle, const char* name,
                                       int64_t* pValue) {
    return ScalarGet("TvkFeatureIntGet", handle, name, pValue, &uCallTrace::OutI64, "pValue");
}

TVK_EXPORT TvkError_t TvkFeatureFloatGet(const TvkHandle_t handle, const char* name,
                                         double* pValue) {
    return ScalarGet("TvkFeatureFloatGet", handle, name, pValue, &uCallTrace::OutDouble, "pValue");
}

TVK_EXPORT TvkError_t TvkFeatureBoolGet(const TvkHandle_t handle, const char* name,
                                        TvkBool_t* pValue) {
    return ScalarGet("TvkFeatureBoolGet", handle, name, pValue, &uCallTrace::OutBool, "pValue");
}

TVK_EXPORT TvkError_t TvkFeatureEnumGet(const TvkHandle_t handle, const char* name,
                                        const char** pValue) {
    return ScalarGet<const char*>("TvkFeatureEnumGet", handle, name, pValue, &uCallTrace::OutString,
                                  "pValue");
}

TVK_EXPORT TvkError_t TvkFeatureCommandIsDone(const TvkHandle_t handle, const char* name,
                                              TvkBool_t* pIsDone) {
    return ScalarGet("TvkFeatureCommandIsDone", handle, name, pIsDone, &uCallTrace::OutBool,
                     "pIsDone");
}

TVK_EXPORT TvkError_t TvkFeatureIntIncrementQuery(const TvkHandle_t handle, const char* name,
                                                  int64_t* pValue) {
    return ScalarGet("TvkFeatureIntIncrementQuery", handle, name, pValue, &uCallTrace::OutI64,
                     "pValue");
}

TVK_EXPORT TvkError_t TvkFeatureStringMaxlengthQuery(const TvkHandle_t handle, const char* name,
                                                     uint32_t* pMaxLength) {
    return ScalarGet("TvkFeatureStringMaxlengthQuery", handle, name, pMaxLength,
                     &uCallTrace::OutU32, "pMaxLength");
}

TVK_EXPORT TvkError_t TvkFeatureRawLengthQuery(const TvkHandle_t handle, const char* name,
                                               uint32_t* pLength) {
    return ScalarGet("TvkFeatureRawLengthQuery", handle, name, pLength, &uCallTrace::OutU32,
                     "pLength");
}

TVK_EXPORT TvkError_t TvkFeatureStringGet(const TvkHandle_t handle, const char* name, char* buffer,
                                          uint32_t bufferSize, uint32_t* pSizeFilled) {
    uCallTrace trace("TvkFeatureStringGet");
    trace.InHandle("handle", handle).InString("name", name).InU32("bufferSize", bufferSize);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(name), Require(buffer || pSizeFilled)}),
                 [&] { return OnFeatures(handle, Unwired); });
    trace.OutPointer("buffer", buffer);
    trace.OutU32("pSizeFilled", pSizeFilled);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureRawGet(const TvkHandle_t handle, const char* name, char* pBuffer,
                                       uint32_t bufferSize, uint32_t* pSizeFilled) {
    uCallTrace trace("TvkFeatureRawGet");
    trace.InHandle("handle", handle).InString("name", name).InU32("bufferSize", bufferSize);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(name), Require(pBuffer), Require(pSizeFilled)}),
                 [&] { return OnFeatures(handle, Unwired); });
    trace.OutU32("pSizeFilled", pSizeFilled);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureIntSet(const TvkHandle_t handle, const char* name, int64_t value) {
    uCallTrace trace("TvkFeatureIntSet");
    trace.InHandle("handle", handle).InString("name", name).InI64("value", value);
    return Set(trace, handle, Require(name));
}

TVK_EXPORT TvkError_t TvkFeatureFloatSet(const TvkHandle_t handle, const char* name, double value) {
    uCallTrace trace("TvkFeatureFloatSet");
    trace.InHandle("handle", handle).InString("name", name).InDouble("value", value);
    return Set(trace, handle, Require(name));
}

TVK_EXPORT TvkError_t TvkFeatureBoolSet(const TvkHandle_t handle, const char* name,
                                        TvkBool_t value) {
    uCallTrace trace("TvkFeatureBoolSet");
    trace.InHandle("handle", handle).InString("name", name).InBool("value", value != 0);
    return Set(trace, handle, Require(name));
}

TVK_EXPORT TvkError_t TvkFeatureEnumSet(const TvkHandle_t handle, const char* name,
                                        const char* value) {
    uCallTrace trace("TvkFeatureEnumSet");
    trace.InHandle("handle", handle).InString("name", name).InString("value", value);
    return Set(trace, handle, FirstFailure({Require(name), Require(value)}));
}

TVK_EXPORT TvkError_t TvkFeatureStringSet(const TvkHandle_t handle, const char* name,
                                          const char* value) {
    uCallTrace trace("TvkFeatureStringSet");
    trace.InHandle("handle", handle).InString("name", name).InString("value", value);
    return Set(trace, handle, FirstFailure({Require(name), Require(value)}));
}

TVK_EXPORT TvkError_t TvkFeatureRawSet(const TvkHandle_t handle, const char* name,
                                       const char* pBuffer, uint32_t bufferSize) {
    uCallTrace trace("TvkFeatureRawSet");
    trace.InHandle("handle", handle)
        .InString("name", name)
        .InPointer("pBuffer", pBuffer)
        .InU32("bufferSize", bufferSize);
    return Set(trace, handle, Require(name));
}

TVK_EXPORT TvkError_t TvkFeatureCommandRun(const TvkHandle_t handle, const char* name) {
    uCallTrace trace("TvkFeatureCommandRun");
    trace.InHandle("handle", handle).InString("name", name);
    return Set(trace, handle, Require(name));
}

TVK_EXPORT TvkError_t TvkFeatureIntRangeQuery(const TvkHandle_t handle, const char* name,
                                              int64_t* pMin, int64_t* pMax) {
    uCallTrace trace("TvkFeatureIntRangeQuery");
    trace.InHandle("handle", handle).InString("name", name);
    TvkError_t status = RunGated(trace, 0, FirstFailure({Require(name), Require(pMin || pMax)}),
                                 [&] { return OnFeatures(handle, Unwired); });
    trace.OutI64("pMin", pMin);
    trace.OutI64("pMax", pMax);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureFloatRangeQuery(const TvkHandle_t handle, const char* name,
                                                double* pMin, double* pMax) {
    uCallTrace trace("TvkFeatureFloatRangeQuery");
    trace.InHandle("handle", handle).InString("name", name);
    TvkError_t status = RunGated(trace, 0, FirstFailure({Require(name), Require(pMin || pMax)}),
                                 [&] { return OnFeatures(handle, Unwired); });
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
        RunGated(trace, 0, FirstFailure({Require(name), Require(pNameArray || pSizeFilled)}),
                 [&] { return OnFeatures(handle, Unwired); });
    trace.OutU32("pSizeFilled", pSizeFilled);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureEnumIsAvailable(const TvkHandle_t handle, const char* name,
                                                const char* value, TvkBool_t* pIsAvailable) {
    uCallTrace trace("TvkFeatureEnumIsAvailable");
    trace.InHandle("handle", handle).InString("name", name).InString("value", value);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(name), Require(value), Require(pIsAvailable)}),
                 [&] { return OnFeatures(handle, Unwired); });
    trace.OutBool("pIsAvailable", pIsAvailable);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureEnumAsInt(const TvkHandle_t handle, const char* name,
                                          const char* value, int64_t* pIntVal) {
    uCallTrace trace("TvkFeatureEnumAsInt");
    trace.InHandle("handle", handle).InString("name", name).InString("value", value);
    TvkError_t status =
        RunGated(trace, 0, FirstFailure({Require(name), Require(value), Require(pIntVal)}),
                 [&] { return OnFeatures(handle, Unwired); });
    trace.OutI64("pIntVal", pIntVal);
    return status;
}

TVK_EXPORT TvkError_t TvkFeatureEnumAsString(const TvkHandle_t handle, const char* name,
                                             int64_t intValue, const char** pStringValue) {
    uCallTrace trace("TvkFeatureEnumAsString");
    trace.InHandle("handle", handle).InString("name", name).InI64("intValue", intValue);
    TvkError_t status = RunGated(trace, 0, FirstFailure({Require(name), Require(pStringValue)}),
                                 [&] { return OnFeatures(handle, Unwired); });
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
        [&] { return OnFeatures(handle, Unwired); });
}

TVK_EXPORT TvkError_t TvkFeatureInvalidationRegister(const TvkHandle_t handle, const char* name,
                                                     TvkInvalidationCallback callback,
                                                     void* userContext) {
    uCallTrace trace("TvkFeatureInvalidationRegister");
    trace.InHandle("handle", handle)
        .InString("name", name)
        .InPointer("callback", reinterpret_cast<const void*>(callback))
        .InPointer("userContext", userContext);
    return RunGated(trace, 0, Require(callback), [&] { return OnFeatures(handle, Unwired); });
}

TVK_EXPORT TvkError_t TvkFeatureInvalidationUnregister(const TvkHandle_t handle, const char* name,
                                                       TvkInvalidationCallback callback) {
    uCallTrace trace("TvkFeatureInvalidationUnregister");
    trace.InHandle("handle", handle)
        .InString("name", name)
        .InPointer("callback", reinterpret_cast<const void*>(callback));
    return RunGated(trace, 0, Require(callback), [&] { return OnFeatures(handle, Unwired); });
}

} // extern "C"
