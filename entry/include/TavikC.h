/*
 * Tavik: the flat C interface of the camera access library (libTavikC.so).
 *
 * Every function returns a TvkError_t. Handles are opaque; the value 1
 * (TVK_SYSTEM_HANDLE) stands for the system as a whole. Texts handed out by
 * the library stay valid until the library is unloaded.
 */
#ifndef TAVIK_C_H
#define TAVIK_C_H

#include <stddef.h>
#include <stdint.h>

#include "TavikCommon.h"

#ifdef __cplusplus
extern "C" {
#endif

#define TVK_SYSTEM_HANDLE ((TvkHandle_t)1)

/* ---- Version ---------------------------------------------------------- */

typedef struct TvkVersionInfo_t {
    uint32_t major;
    uint32_t minor;
    uint32_t patch;
} TvkVersionInfo_t;

/* ---- Cameras and interfaces ------------------------------------------- */

typedef enum TvkAccessModeType {
    TvkAccessModeNone = 0,
    TvkAccessModeFull = 1,
    TvkAccessModeRead = 2,
    TvkAccessModeConfig = 4,
    TvkAccessModeLite = 8
} TvkAccessModeType;
typedef uint32_t TvkAccessMode_t;

typedef enum TvkInterfaceType {
    TvkInterfaceUnknown = 0,
    TvkInterfaceFirewire = 1,
    TvkInterfaceEthernet = 2,
    TvkInterfaceUsb = 3
} TvkInterfaceType;
typedef uint32_t TvkInterface_t;

typedef struct TvkCameraInfo_t {
    const char* idString;
    const char* name;
    const char* model;
    const char* serialNumber;
    TvkAccessMode_t permittedAccess;
    const char* interfaceID;
} TvkCameraInfo_t;

typedef struct TvkInterfaceInfo_t {
    const char* idString;
    TvkInterface_t interfaceType;
    const char* name;
    const char* serialNumber;
    TvkAccessMode_t permittedAccess;
} TvkInterfaceInfo_t;

/* ---- Features ----------------------------------------------------------- */

typedef enum TvkFeatureDataType {
    TvkFeatureDataUnknown = 0,
    TvkFeatureDataInt = 1,
    TvkFeatureDataFloat = 2,
    TvkFeatureDataEnum = 3,
    TvkFeatureDataString = 4,
    TvkFeatureDataBool = 5,
    TvkFeatureDataCommand = 6,
    TvkFeatureDataRaw = 7,
    TvkFeatureDataNone = 8
} TvkFeatureDataType;
typedef uint32_t TvkFeatureData_t;

typedef enum TvkFeatureFlagsType {
    TvkFeatureFlagsNone = 0,
    TvkFeatureFlagsRead = 1,
    TvkFeatureFlagsWrite = 2,
    TvkFeatureFlagsConst = 4,
    TvkFeatureFlagsVolatile = 8,
    TvkFeatureFlagsModifyWrite = 16
} TvkFeatureFlagsType;
typedef uint32_t TvkFeatureFlags_t;

typedef enum TvkFeatureVisibilityType {
    TvkFeatureVisibilityUnknown = 0,
    TvkFeatureVisibilityBeginner = 1,
    TvkFeatureVisibilityExpert = 2,
    TvkFeatureVisibilityGuru = 3,
    TvkFeatureVisibilityInvisible = 4
} TvkFeatureVisibilityType;
typedef uint32_t TvkFeatureVisibility_t;

typedef struct TvkFeatureInfo {
    const char* name;
    TvkFeatureData_t featureDataType;
    TvkFeatureFlags_t featureFlags;
    const char* category;
    const char* displayName;
    uint32_t pollingTime;
    const char* unit;
    const char* representation;
    TvkFeatureVisibility_t visibility;
    const char* tooltip;
    const char* description;
    const char* sfncNamespace;
    TvkBool_t isStreamable;
    TvkBool_t hasAffectedFeatures;
    TvkBool_t hasSelectedFeatures;
} TvkFeatureInfo;
typedef TvkFeatureInfo TvkFeatureInfo_t;

typedef struct TvkFeatureEnumEntry {
    const char* name;
    const char* displayName;
    TvkFeatureVisibility_t visibility;
    const char* tooltip;
    const char* description;
    const char* sfncNamespace;
    int64_t intValue;
} TvkFeatureEnumEntry;
typedef TvkFeatureEnumEntry TvkFeatureEnumEntry_t;

/* Called on a library thread when a feature may have changed. */
typedef void (*TvkInvalidationCallback)(const TvkHandle_t handle, const char* name,
                                        void* userContext);

/* ---- Frames ------------------------------------------------------------- */

typedef enum TvkFrameStatusType {
    TvkFrameStatusComplete = 0,
    TvkFrameStatusIncomplete = -1,
    TvkFrameStatusTooSmall = -2,
    TvkFrameStatusInvalid = -3,
    TvkFrameStatusFault = -4
} TvkFrameStatusType;
typedef int32_t TvkFrameStatus_t;

typedef enum TvkFrameFlagsType {
    TvkFrameFlagsNone = 0,
    TvkFrameFlagsDimension = 1,
    TvkFrameFlagsOffset = 2,
    TvkFrameFlagsFrameID = 4,
    TvkFrameFlagsTimestamp = 8
} TvkFrameFlagsType;
typedef uint32_t TvkFrameFlags_t;

typedef struct TvkFrame_t {
    void* buffer;        /* image memory, set by the caller */
    uint32_t bufferSize; /* set by the caller */
    void* context[4];    /* the caller's; never touched */
    TvkFrameStatus_t receiveStatus;
    TvkFrameFlags_t receiveFlags;
    uint32_t imageSize;
    uint32_t ancillarySize;
    uint32_t pixelFormat;
    uint32_t width;
    uint32_t height;
    uint32_t offsetX;
    uint32_t offsetY;
    uint64_t frameID;
    uint64_t timestamp;
} TvkFrame_t;

/* Called on a library thread when a queued frame is done. */
typedef void (*TvkFrameCallback)(const TvkHandle_t cameraHandle, TvkFrame_t* pFrame);

/* ---- Frame of every call ------------------------------------------------ */

TVK_EXPORT TvkError_t TvkVersionQuery(TvkVersionInfo_t* pVersionInfo, uint32_t sizeofVersionInfo);
TVK_EXPORT TvkError_t TvkStartup(void);
TVK_EXPORT void TvkShutdown(void);
/* The text of a status; truncation gives TvkErrorMoreData. */
TVK_EXPORT TvkError_t TvkGetErrorInfo(TvkError_t nErrCode, char* pszInfoString,
                                      uint32_t nMaxStrLen);

/* ---- Discovery and open -------------------------------------------------- */

TVK_EXPORT TvkError_t TvkCamerasList(TvkCameraInfo_t* pCameraInfo, uint32_t listLength,
                                     uint32_t* pNumFound, uint32_t sizeofCameraInfo);
TVK_EXPORT TvkError_t TvkCameraInfoQuery(const char* idString, TvkCameraInfo_t* pInfo,
                                         uint32_t sizeofCameraInfo);
TVK_EXPORT TvkError_t TvkCameraOpen(const char* idString, TvkAccessMode_t accessMode,
                                    TvkHandle_t* pCameraHandle);
TVK_EXPORT TvkError_t TvkCameraClose(const TvkHandle_t cameraHandle);
TVK_EXPORT TvkError_t TvkInterfacesList(TvkInterfaceInfo_t* pInterfaceInfo, uint32_t listLength,
                                        uint32_t* pNumFound, uint32_t sizeofInterfaceInfo);
TVK_EXPORT TvkError_t TvkInterfaceOpen(const char* idString, TvkHandle_t* pInterfaceHandle);
TVK_EXPORT TvkError_t TvkInterfaceClose(const TvkHandle_t interfaceHandle);

/* ---- Features ------------------------------------------------------------ */

TVK_EXPORT TvkError_t TvkFeaturesList(const TvkHandle_t handle, TvkFeatureInfo_t* pFeatureInfoList,
                                      uint32_t listLength, uint32_t* pNumFound,
                                      uint32_t sizeofFeatureInfo);
TVK_EXPORT TvkError_t TvkFeatureInfoQuery(const TvkHandle_t handle, const char* name,
                                          TvkFeatureInfo_t* pFeatureInfo,
                                          uint32_t sizeofFeatureInfo);
TVK_EXPORT TvkError_t TvkFeatureListAffected(const TvkHandle_t handle, const char* name,
                                             TvkFeatureInfo_t* pFeatureInfoList,
                                             uint32_t listLength, uint32_t* pNumFound,
                                             uint32_t sizeofFeatureInfo);
TVK_EXPORT TvkError_t TvkFeatureListSelected(const TvkHandle_t handle, const char* name,
                                             TvkFeatureInfo_t* pFeatureInfoList,
                                             uint32_t listLength, uint32_t* pNumFound,
                                             uint32_t sizeofFeatureInfo);
TVK_EXPORT TvkError_t TvkFeatureAccessQuery(const TvkHandle_t handle, const char* name,
                                            TvkBool_t* pIsReadable, TvkBool_t* pIsWriteable);

TVK_EXPORT TvkError_t TvkFeatureIntGet(const TvkHandle_t handle, const char* name, int64_t* pValue);
TVK_EXPORT TvkError_t TvkFeatureIntSet(const TvkHandle_t handle, const char* name, int64_t value);
TVK_EXPORT TvkError_t TvkFeatureIntRangeQuery(const TvkHandle_t handle, const char* name,
                                              int64_t* pMin, int64_t* pMax);
TVK_EXPORT TvkError_t TvkFeatureIntIncrementQuery(const TvkHandle_t handle, const char* name,
                                                  int64_t* pValue);

TVK_EXPORT TvkError_t TvkFeatureFloatGet(const TvkHandle_t handle, const char* name,
                                         double* pValue);
TVK_EXPORT TvkError_t TvkFeatureFloatSet(const TvkHandle_t handle, const char* name, double value);
TVK_EXPORT TvkError_t TvkFeatureFloatRangeQuery(const TvkHandle_t handle, const char* name,
                                                double* pMin, double* pMax);

TVK_EXPORT TvkError_t TvkFeatureEnumGet(const TvkHandle_t handle, const char* name,
                                        const char** pValue);
TVK_EXPORT TvkError_t TvkFeatureEnumSet(const TvkHandle_t handle, const char* name,
                                        const char* value);
TVK_EXPORT TvkError_t TvkFeatureEnumRangeQuery(const TvkHandle_t handle, const char* name,
                                               const char** pNameArray, uint32_t arrayLength,
                                               uint32_t* pSizeFilled);
TVK_EXPORT TvkError_t TvkFeatureEnumIsAvailable(const TvkHandle_t handle, const char* name,
                                                const char* value, TvkBool_t* pIsAvailable);
TVK_EXPORT TvkError_t TvkFeatureEnumAsInt(const TvkHandle_t handle, const char* name,
                                          const char* value, int64_t* pIntVal);
TVK_EXPORT TvkError_t TvkFeatureEnumAsString(const TvkHandle_t handle, const char* name,
                                             int64_t intValue, const char** pStringValue);
TVK_EXPORT TvkError_t TvkFeatureEnumEntryGet(const TvkHandle_t handle, const char* featureName,
                                             const char* entryName,
                                             TvkFeatureEnumEntry_t* pFeatureEnumEntry,
                                             uint32_t sizeofFeatureEnumEntry);

TVK_EXPORT TvkError_t TvkFeatureStringGet(const TvkHandle_t handle, const char* name, char* buffer,
                                          uint32_t bufferSize, uint32_t* pSizeFilled);
TVK_EXPORT TvkError_t TvkFeatureStringSet(const TvkHandle_t handle, const char* name,
                                          const char* value);
TVK_EXPORT TvkError_t TvkFeatureStringMaxlengthQuery(const TvkHandle_t handle, const char* name,
                                                     uint32_t* pMaxLength);

TVK_EXPORT TvkError_t TvkFeatureBoolGet(const TvkHandle_t handle, const char* name,
                                        TvkBool_t* pValue);
TVK_EXPORT TvkError_t TvkFeatureBoolSet(const TvkHandle_t handle, const char* name,
                                        TvkBool_t value);

TVK_EXPORT TvkError_t TvkFeatureCommandRun(const TvkHandle_t handle, const char* name);
TVK_EXPORT TvkError_t TvkFeatureCommandIsDone(const TvkHandle_t handle, const char* name,
                                              TvkBool_t* pIsDone);

TVK_EXPORT TvkError_t TvkFeatureRawGet(const TvkHandle_t handle, const char* name, char* pBuffer,
                                       uint32_t bufferSize, uint32_t* pSizeFilled);
TVK_EXPORT TvkError_t TvkFeatureRawSet(const TvkHandle_t handle, const char* name,
                                       const char* pBuffer, uint32_t bufferSize);
TVK_EXPORT TvkError_t TvkFeatureRawLengthQuery(const TvkHandle_t handle, const char* name,
                                               uint32_t* pLength);

TVK_EXPORT TvkError_t TvkFeatureInvalidationRegister(const TvkHandle_t handle, const char* name,
                                                     TvkInvalidationCallback callback,
                                                     void* userContext);
TVK_EXPORT TvkError_t TvkFeatureInvalidationUnregister(const TvkHandle_t handle, const char* name,
                                                       TvkInvalidationCallback callback);

/* ---- Capture ------------------------------------------------------------- */

TVK_EXPORT TvkError_t TvkFrameAnnounce(const TvkHandle_t cameraHandle, const TvkFrame_t* pFrame,
                                       uint32_t sizeofFrame);
TVK_EXPORT TvkError_t TvkFrameRevoke(const TvkHandle_t cameraHandle, const TvkFrame_t* pFrame);
TVK_EXPORT TvkError_t TvkFrameRevokeAll(const TvkHandle_t cameraHandle);
TVK_EXPORT TvkError_t TvkCaptureStart(const TvkHandle_t cameraHandle);
TVK_EXPORT TvkError_t TvkCaptureEnd(const TvkHandle_t cameraHandle);
TVK_EXPORT TvkError_t TvkCaptureFrameQueue(const TvkHandle_t cameraHandle, const TvkFrame_t* pFrame,
                                           TvkFrameCallback callback);
TVK_EXPORT TvkError_t TvkCaptureFrameWait(const TvkHandle_t cameraHandle, const TvkFrame_t* pFrame,
                                          uint32_t timeout);
TVK_EXPORT TvkError_t TvkCaptureQueueFlush(const TvkHandle_t cameraHandle);

/* ---- Registers, memory and ancillary data --------------------------------- */

TVK_EXPORT TvkError_t TvkMemoryRead(const TvkHandle_t handle, uint64_t address, uint32_t bufferSize,
                                    char* dataBuffer, uint32_t* pSizeComplete);
TVK_EXPORT TvkError_t TvkMemoryWrite(const TvkHandle_t handle, uint64_t address,
                                     uint32_t bufferSize, const char* dataBuffer,
                                     uint32_t* pSizeComplete);
TVK_EXPORT TvkError_t TvkRegistersRead(const TvkHandle_t handle, uint32_t readCount,
                                       const uint64_t* pAddressArray, uint64_t* pDataArray,
                                       uint32_t* pNumCompleteReads);
TVK_EXPORT TvkError_t TvkRegistersWrite(const TvkHandle_t handle, uint32_t writeCount,
                                        const uint64_t* pAddressArray, const uint64_t* pDataArray,
                                        uint32_t* pNumCompleteWrites);
TVK_EXPORT TvkError_t TvkAncillaryDataOpen(TvkFrame_t* pFrame, TvkHandle_t* pAncillaryDataHandle);
TVK_EXPORT TvkError_t TvkAncillaryDataClose(TvkHandle_t ancillaryDataHandle);

#ifdef __cplusplus
} /* extern "C" */

static_assert(sizeof(TvkVersionInfo_t) == 12, "TvkVersionInfo_t layout");
static_assert(sizeof(TvkCameraInfo_t) == 48, "TvkCameraInfo_t layout");
static_assert(sizeof(TvkInterfaceInfo_t) == 40, "TvkInterfaceInfo_t layout");
static_assert(sizeof(TvkFeatureInfo) == 96, "TvkFeatureInfo layout");
static_assert(sizeof(TvkFeatureEnumEntry) == 56, "TvkFeatureEnumEntry layout");
static_assert(sizeof(TvkFrame_t) == 104, "TvkFrame_t layout");
static_assert(offsetof(TvkFrame_t, frameID) % 8 == 0, "TvkFrame_t frameID alignment");
#endif

#endif /* TAVIK_C_H */
