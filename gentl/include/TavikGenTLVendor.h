/*
 * Vendor extensions of the GenTL interface that our producers offer and our
 * consumer uses when present: library init with flags, events made by hand,
 * unions (one thread waits on many events), one-call buffer queueing and
 * buffer information bundles, and extra info commands.
 */
#ifndef TAVIK_GENTL_VENDOR_H
#define TAVIK_GENTL_VENDOR_H

#include "TavikGenTL.h"

#ifdef __cplusplus
extern "C" {
namespace GenICam {
namespace Client {
#endif

typedef void* UNION_HANDLE;

enum TL_INIT_FLAGS_LIST_QRX { TL_INIT_FLAGS_DEFAULT_QRX = 1 };

enum EVENT_TYPE_LIST_QRX {
    EVENT_INTERFACE_LIST_CHANGED_QRX = 1000, /* on the transport layer handle */
    EVENT_DEVICE_LIST_CHANGED_QRX = 1001     /* on an interface handle */
};

enum EVENT_DATA_INFO_CMD_LIST_QRX {
    EVENT_DATA_DEVICE_ID_QRX = 1001, /* string, up to 256 bytes */
    EVENT_DATA_WHAT_QRX = 1002,      /* 32-bit IFCHANGE_WHAT_LIST */
    EVENT_DATA_DATA_QRX = 1003       /* 32-bit */
};

/* What a device-list-changed event reports (EVENT_DATA_WHAT_QRX), read with
 * the bits of its data (EVENT_DATA_DATA_QRX). */
enum IFCHANGE_WHAT_LIST {
    IFCHANGE_DEVICE_PRESENCE = 1,     /* data bit 0: the device arrived (set) or left (clear) */
    IFCHANGE_DEVICE_REACHABILITY = 2, /* data bit 1: the device can be reached (set) or not */
    IFCHANGE_DEVICE_UPDATED = 3       /* a listed device changed; data bit 0 as for presence */
};

enum IFCHANGE_DATA_LIST { IFCHANGE_DATA_PRESENT = 0x1, IFCHANGE_DATA_REACHABLE = 0x2 };

enum INTERFACE_INFO_CMD_LIST_QRX { INTERFACE_INFO_SERIAL_QRX = 1000 };
enum DEVICE_INFO_CMD_LIST_QRX { DEVICE_INFO_SERIAL_QRX = 1000 };
enum DEVICE_ACCESS_FLAGS_LIST_QRX { DEVICE_ACCESS_CONFIG_QRX = 1000 };
enum DEVICE_ACCESS_STATUS_LIST_QRX { DEVICE_ACCESS_STATUS_CONFIG_QRX = 1000 };
enum BUFFER_INFO_CMD_LIST_QRX { BUFFER_INFO_BUNDLE_QRX = 1001 };

enum BUFFER_VALID_FLAG_LIST_QRX {
    BUFFER_VALID_TIMESTAMP_QRX = 0x8,
    BUFFER_VALID_WIDTH_QRX = 0x1000,
    BUFFER_VALID_HEIGHT_QRX = 0x2000,
    BUFFER_VALID_XOFFSET_QRX = 0x4000,
    BUFFER_VALID_YOFFSET_QRX = 0x8000
};

enum BUFFER_FLAG_LIST_QRX { BUFFER_FLAG_NONE_QRX = 0 };
enum PAYLOADTYPE_INFO_IDS_QRX { PAYLOAD_TYPE_NONE_QRX = 1000 };

enum GC_ERROR_LIST_QRX { GC_ERR_BUFFER_TOO_SMALL_QRX = -10001 };

enum URL_INFO_CMD_LIST_QRX {
    URL_INFO_DOCUMENT_ADDRESS_QRX = 1001, /* 64-bit */
    URL_INFO_DOCUMENT_SIZE_QRX = 1002,    /* 32-bit */
    URL_INFO_DOCUMENT_ZIPPED_QRX = 1003   /* 8-bit */
};

#pragma pack(push, 1)

/* Everything the consumer needs of a finished buffer, in one call. */
typedef struct S_BUFFER_INFO_BUNDLE {
    uint64_t ValidFlags;    /* 0: BUFFER_VALID_FLAG_LIST_QRX */
    uint8_t Reserved0[12];  /* 8 */
    uint64_t Timestamp;     /* 20 */
    uint64_t FrameID;       /* 28 */
    uint8_t Reserved1[4];   /* 36 */
    int32_t Status;         /* 40: 0 complete, -10001 too small, else incomplete */
    uint8_t Reserved2[4];   /* 44 */
    uint32_t Width;         /* 48 */
    uint32_t Height;        /* 52 */
    uint32_t XOffset;       /* 56 */
    uint32_t YOffset;       /* 60 */
    uint8_t Reserved3[12];  /* 64 */
    uint32_t ImageSize;     /* 76 */
    uint8_t Reserved4[4];   /* 80 */
    uint64_t PixelFormat;   /* 84 */
    uint8_t Reserved5[12];  /* 92 */
    uint32_t AncillarySize; /* 104 */
    uint8_t Reserved6[8];   /* 108 */
} S_BUFFER_INFO_BUNDLE;

typedef struct S_EVENT_DATA_STACK_ENTRY {
    EVENT_HANDLE hEvent;
    uint32_t Size;
} S_EVENT_DATA_STACK_ENTRY;

typedef struct S_UNION_DATA_STACK_ENTRY {
    EVENT_HANDLE hEvent;
    void* pBuffer;
} S_UNION_DATA_STACK_ENTRY;

#pragma pack(pop)

GC_API GCInitLibEx(uint32_t iFlags);
GC_API EventCreate(EVENT_TYPE iEventID, EVENT_HANDLE* phEvent);
GC_API EventDelete(EVENT_HANDLE hEvent);
GC_API EventSetData(EVENT_HANDLE hEvent, const void* pBuffer, size_t iSize);
GC_API EventGetDataStacked(EVENT_HANDLE hEvent, void* pBuffer, size_t* piSize,
                           S_EVENT_DATA_STACK_ENTRY* pEntries, size_t* piNumEntries,
                           uint64_t iTimeout);
GC_API EventWait(EVENT_HANDLE hEvent, uint64_t iTimeout);
GC_API UnionCreate(UNION_HANDLE* phUnion);
GC_API UnionDelete(UNION_HANDLE hUnion);
GC_API UnionLinkup(UNION_HANDLE hUnion, EVENT_HANDLE hEvent);
GC_API UnionUnlink(UNION_HANDLE hUnion, EVENT_HANDLE hEvent);
GC_API UnionGetData(UNION_HANDLE hUnion, EVENT_HANDLE* phEvent, void* pBuffer, size_t* piSize,
                    uint64_t iTimeout);
GC_API UnionGetDataStacked(UNION_HANDLE hUnion, S_UNION_DATA_STACK_ENTRY* pEntries,
                           size_t* piNumEntries, uint64_t iTimeout);
GC_API UnionGetDataInfo(UNION_HANDLE hUnion, EVENT_HANDLE hEvent, const void* pInBuffer,
                        size_t iInSize, EVENT_DATA_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                        void* pOutBuffer, size_t* piOutSize);
GC_API UnionFlush(UNION_HANDLE hUnion);
GC_API UnionKill(UNION_HANDLE hUnion);
/* Waits for any linked event; writes the one that fired. */
GC_API UnionWait(UNION_HANDLE hUnion, EVENT_HANDLE* phEvent, uint64_t iTimeout);
/* DSAnnounceBuffer and DSQueueBuffer in one call. */
GC_API DSAnnounceAndQueueBuffer(DS_HANDLE hDataStream, void* pBuffer, size_t iSize, void* pPrivate,
                                BUFFER_HANDLE* phBuffer);
/* The buffer's bundle, then DSRevokeBuffer, in one call. */
GC_API DSGetBufferInfoAndRevoke(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer,
                                S_BUFFER_INFO_BUNDLE* pBundle, void** pBuffer, void** pPrivate);

#ifdef __cplusplus
} /* namespace Client */
} /* namespace GenICam */
} /* extern "C" */

static_assert(sizeof(GenICam::Client::S_BUFFER_INFO_BUNDLE) == 116, "bundle size");
static_assert(offsetof(GenICam::Client::S_BUFFER_INFO_BUNDLE, Timestamp) == 20, "bundle");
static_assert(offsetof(GenICam::Client::S_BUFFER_INFO_BUNDLE, FrameID) == 28, "bundle");
static_assert(offsetof(GenICam::Client::S_BUFFER_INFO_BUNDLE, Status) == 40, "bundle");
static_assert(offsetof(GenICam::Client::S_BUFFER_INFO_BUNDLE, Width) == 48, "bundle");
static_assert(offsetof(GenICam::Client::S_BUFFER_INFO_BUNDLE, ImageSize) == 76, "bundle");
static_assert(offsetof(GenICam::Client::S_BUFFER_INFO_BUNDLE, PixelFormat) == 84, "bundle");
static_assert(offsetof(GenICam::Client::S_BUFFER_INFO_BUNDLE, AncillarySize) == 104, "bundle");
static_assert(sizeof(GenICam::Client::S_EVENT_DATA_STACK_ENTRY) == 12, "event stack entry");
static_assert(sizeof(GenICam::Client::S_UNION_DATA_STACK_ENTRY) == 16, "union stack entry");
#endif

#endif /* TAVIK_GENTL_VENDOR_H */
