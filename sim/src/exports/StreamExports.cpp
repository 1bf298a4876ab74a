// The data stream module and its buffers.
#include "Entry.h"
#include "Stream.h"

using namespace sim;

extern "C" {

#define STREAM(handle)                                                                             \
    CHECK(handle, tKind::kStream);                                                                 \
    Stream* stream = static_cast<Stream*>(handle)

GC_API DSAnnounceBuffer(DS_HANDLE hDataStream, void* pBuffer, size_t iSize, void* pPrivate,
                        BUFFER_HANDLE* phBuffer) {
    ENTER("DSAnnounceBuffer");
    STREAM(hDataStream);
    return stream->Announce(pBuffer, iSize, pPrivate, false, phBuffer);
}

GC_API DSAllocAndAnnounceBuffer(DS_HANDLE hDataStream, size_t iSize, void* pPrivate,
                                BUFFER_HANDLE* phBuffer) {
    ENTER("DSAllocAndAnnounceBuffer");
    STREAM(hDataStream);
    void* memory = iSize ? calloc(1, iSize) : nullptr;
    if (!memory) return GC_ERR_INVALID_PARAMETER;
    GC_ERROR status = stream->Announce(memory, iSize, pPrivate, true, phBuffer);
    if (status != GC_ERR_SUCCESS) free(memory);
    return status;
}

GC_API DSRevokeBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, void** pBuffer,
                      void** pPrivate) {
    ENTER("DSRevokeBuffer");
    STREAM(hDataStream);
    return stream->Revoke(hBuffer, pBuffer, pPrivate);
}

GC_API DSQueueBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer) {
    ENTER("DSQueueBuffer");
    STREAM(hDataStream);
    return stream->Queue(hBuffer);
}

GC_API DSFlushQueue(DS_HANDLE hDataStream, ACQ_QUEUE_TYPE iOperation) {
    ENTER("DSFlushQueue");
    STREAM(hDataStream);
    return stream->Flush(iOperation);
}

GC_API DSStartAcquisition(DS_HANDLE hDataStream, ACQ_START_FLAGS iStartFlags,
                          uint64_t iNumToAcquire) {
    (void)iStartFlags;
    ENTER("DSStartAcquisition");
    STREAM(hDataStream);
    return stream->Start(iNumToAcquire);
}

GC_API DSStopAcquisition(DS_HANDLE hDataStream, ACQ_STOP_FLAGS iStopFlags) {
    (void)iStopFlags;
    ENTER("DSStopAcquisition");
    STREAM(hDataStream);
    return stream->Stop();
}

GC_API DSGetInfo(DS_HANDLE hDataStream, STREAM_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                 void* pBuffer, size_t* piSize) {
    ENTER("DSGetInfo");
    STREAM(hDataStream);
    return stream->Info(iInfoCmd, piType, pBuffer, piSize);
}

GC_API DSGetBufferID(DS_HANDLE hDataStream, uint32_t iIndex, BUFFER_HANDLE* phBuffer) {
    ENTER("DSGetBufferID");
    STREAM(hDataStream);
    return stream->BufferAt(iIndex, phBuffer);
}

GC_API DSGetBufferInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, BUFFER_INFO_CMD iInfoCmd,
                       INFO_DATATYPE* piType, void* pBuffer, size_t* piSize) {
    ENTER("DSGetBufferInfo");
    STREAM(hDataStream);
    return stream->BufferInfo(hBuffer, iInfoCmd, piType, pBuffer, piSize);
}

#ifndef TAVIK_SIM_NO_CHUNKDATA
GC_API DSGetBufferChunkData(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer,
                            SINGLE_CHUNK_DATA* pChunkData, size_t* piNumChunks) {
    ENTER("DSGetBufferChunkData");
    STREAM(hDataStream);
    return stream->Chunks(hBuffer, pChunkData, piNumChunks);
}
#endif

GC_API DSGetParentDev(DS_HANDLE hDataStream, DEV_HANDLE* phDevice) {
    ENTER("DSGetParentDev");
    STREAM(hDataStream);
    if (!phDevice) return GC_ERR_INVALID_PARAMETER;
    *phDevice = stream->Parent();
    return GC_ERR_SUCCESS;
}

GC_API DSGetNumBufferParts(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t* piNumParts) {
    ENTER("DSGetNumBufferParts");
    STREAM(hDataStream);
    return stream->PartCount(hBuffer, piNumParts);
}

GC_API DSGetBufferPartInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t iPartIndex,
                           BUFFER_PART_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                           size_t* piSize) {
    ENTER("DSGetBufferPartInfo");
    STREAM(hDataStream);
    return stream->PartInfo(hBuffer, iPartIndex, iInfoCmd, piType, pBuffer, piSize);
}

GC_API DSClose(DS_HANDLE hDataStream) {
    ENTER("DSClose");
    STREAM(hDataStream);
    Producer().handles.Remove(stream);
    stream->Close();
    return GC_ERR_SUCCESS;
}

#ifndef TAVIK_SIM_STANDARD_ONLY
GC_API DSAnnounceAndQueueBuffer(DS_HANDLE hDataStream, void* pBuffer, size_t iSize, void* pPrivate,
                                BUFFER_HANDLE* phBuffer) {
    ENTER("DSAnnounceAndQueueBuffer");
    STREAM(hDataStream);
    GC_ERROR status = stream->Announce(pBuffer, iSize, pPrivate, false, phBuffer);
    if (status != GC_ERR_SUCCESS) return status;
    status = stream->Queue(*phBuffer);
    if (status != GC_ERR_SUCCESS) stream->Revoke(*phBuffer, nullptr, nullptr);
    return status;
}

GC_API DSGetBufferInfoAndRevoke(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer,
                                S_BUFFER_INFO_BUNDLE* pBundle, void** pBuffer, void** pPrivate) {
    ENTER("DSGetBufferInfoAndRevoke");
    STREAM(hDataStream);
    if (!pBundle) return GC_ERR_INVALID_PARAMETER;
    GC_ERROR status = stream->Bundle(hBuffer, pBundle);
    return status != GC_ERR_SUCCESS ? status : stream->Revoke(hBuffer, pBuffer, pPrivate);
}
#endif

} // extern "C"
