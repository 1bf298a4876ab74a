#include "engine/Port.h"

#include "TavikC.h"

#include <algorithm>

#include <cstring>
#include <vector>

#include "kit/Env.h"

namespace tvk {

namespace {
constexpr llk::i4 kBufferTooSmall = 18;
constexpr llk::i4 kNoAccess = TvkErrorInvalidAccess;
} // namespace

llk::i4 cDirectPort::Initialize(cProducer* aProducer, gc::PORT_HANDLE aHandle, bool aReadOnly) {
    if (!aProducer) return llk::kNoMemory;
    mProducer = llk::Retained(aProducer);
    mHandle = aHandle;
    mReadOnly = aReadOnly;
    return llk::kOk;
}

cDirectPort::~cDirectPort() {
    llk::ReleaseAndClear(mProducer);
}

llk::i4 cDirectPort::Fetch(llk::u8 aAddress, llk::u4 aLength, void* aBuffer, llk::u4& aFetched) {
    if (mDead) return gc::GC_ERR_TIMEOUT;
    size_t size = aLength;
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    mProducer->PortRead(mHandle, aAddress, aBuffer, &size, &error);
    aFetched = static_cast<llk::u4>(size);
    if (error == gc::GC_ERR_TIMEOUT) mDead = true;
    return error;
}

llk::i4 cDirectPort::Store(llk::u8 aAddress, llk::u4 aLength, const void* aBuffer,
                           llk::u4& aStored) {
    if (mDead) return gc::GC_ERR_TIMEOUT;
    size_t size = aLength;
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    mProducer->PortWrite(mHandle, aAddress, aBuffer, &size, &error);
    aStored = static_cast<llk::u4>(size);
    if (error == gc::GC_ERR_TIMEOUT) mDead = true;
    return error;
}

llk::i4 cDirectPort::Stacked(const llk::u8* aAddresses, llk::u8* aData, llk::u4 aCount,
                             llk::u4& aDone, bool aWrite) {
    aDone = 0;
    if (mDead) return gc::GC_ERR_TIMEOUT;
    std::vector<gc::PORT_REGISTER_STACK_ENTRY> entries(aCount);
    // Registers are 32-bit words in network order; the caller's array is
    // left as it was given.
    std::vector<llk::u4> words(aCount);
    for (llk::u4 i = 0; i < aCount; ++i) {
        words[i] = static_cast<llk::u4>(aData[i]);
        if (aWrite) llk::sNet::SwapToNet(words[i]);
        entries[i] = {aAddresses[i], &words[i], 4};
    }
    size_t count = aCount;
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    if (aWrite)
        mProducer->PortWrite(mHandle, entries.data(), &count, &error);
    else
        mProducer->PortRead(mHandle, entries.data(), &count, &error);
    if (!aWrite)
        for (llk::u4 i = 0; i < aCount; ++i) {
            llk::sNet::SwapToHost(words[i]);
            aData[i] = words[i];
        }
    aDone = static_cast<llk::u4>(count);
    if (error == gc::GC_ERR_TIMEOUT) mDead = true;
    return error;
}

llk::i4 cDirectPort::Fetch(const llk::u8* aAddresses, llk::u8* aData, llk::u4 aCount,
                           llk::u4& aFetched) {
    return Stacked(aAddresses, aData, aCount, aFetched, false);
}

llk::i4 cDirectPort::Store(const llk::u8* aAddresses, llk::u8* aData, llk::u4 aCount,
                           llk::u4& aStored) {
    return Stacked(aAddresses, aData, aCount, aStored, true);
}

llk::i4 cDirectPort::QueryXML(void* aBuffer, llk::u4 aSize, llk::u4& aLength, llk::u4 aInfo,
                              llk::u4 aIndex) {
    gc::INFO_DATATYPE type = 0;
    size_t size = aSize;
    gc::GC_ERROR error = gc::GC_ERR_SUCCESS;
    if (!mProducer->PortQueryURLInfo(mHandle, aIndex, static_cast<gc::URL_INFO_CMD>(aInfo), &type,
                                     aBuffer, &size, &error))
        return error;
    aLength = static_cast<llk::u4>(size);
    // Room for the terminator the fetch writes.
    if (aInfo == gc::URL_INFO_DOCUMENT_SIZE_QRX && aBuffer && size >= 4) {
        llk::u4 documentSize;
        memcpy(&documentSize, aBuffer, 4);
        ++documentSize;
        memcpy(aBuffer, &documentSize, 4);
    }
    return llk::kOk;
}

llk::i4 cDirectPort::FetchXML(void* aBuffer, llk::u4 aSize, llk::u4& aLength, llk::u4 aIndex) {
    (void)aIndex; // the first URL always
    llk::u8 address = 0;
    llk::u4 size = 0, length = 0;
    llk::i4 status =
        QueryXML(&address, sizeof(address), length, gc::URL_INFO_DOCUMENT_ADDRESS_QRX, 0);
    if (status == llk::kOk)
        status = QueryXML(&size, sizeof(size), length, gc::URL_INFO_DOCUMENT_SIZE_QRX, 0);
    if (status != llk::kOk) return status;
    // The size counts the terminator, so 0 means the producer's answer wrapped.
    if (size == 0 || size > aSize) return kBufferTooSmall;
    // The whole document, and a terminator behind it.
    llk::u4 fetched = 0;
    status = Fetch(address, size - 1, aBuffer, fetched);
    if (status != llk::kOk) return status;
    fetched = std::min(fetched, size - 1); // a producer may not claim more than was asked
    static_cast<char*>(aBuffer)[fetched] = '\0';
    aLength = fetched;
    return llk::kOk;
}

llk::i4 cDelegatePort::Initialize(llk::u4 aUid, pPortDelegate* aDelegate, bool aReadOnly) {
    if (!aDelegate) return llk::kNoMemory;
    mUid = aUid;
    mDelegate = aDelegate;
    mReadOnly = aReadOnly;
    return llk::kOk;
}

llk::i4 cDelegatePort::Fetch(llk::u8 aAddress, llk::u4 aLength, void* aBuffer, llk::u4& aFetched) {
    return mDelegate->OnPortFetch(mUid, aAddress, aLength, aBuffer, aFetched);
}

llk::i4 cDelegatePort::Store(llk::u8 aAddress, llk::u4 aLength, const void* aBuffer,
                             llk::u4& aStored) {
    return mDelegate->OnPortStore(mUid, aAddress, aLength, aBuffer, aStored);
}

llk::i4 cDelegatePort::QueryXML(void* aBuffer, llk::u4 aSize, llk::u4& aLength, llk::u4 aInfo,
                                llk::u4 aIndex) {
    return mDelegate->OnPortQueryXML(mUid, aBuffer, aSize, aLength, aInfo, aIndex);
}

llk::i4 cDelegatePort::FetchXML(void* aBuffer, llk::u4 aSize, llk::u4& aLength, llk::u4 aIndex) {
    return mDelegate->OnPortFetchXML(mUid, aBuffer, aSize, aLength, aIndex);
}

llk::i4 pRegisterMapDelegate::OnPortQueryXML(llk::u4, void*, llk::u4, llk::u4&, llk::u4, llk::u4) {
    return llk::kNotImplemented;
}

llk::i4 pRegisterMapDelegate::OnPortFetchXML(llk::u4, void*, llk::u4, llk::u4&, llk::u4) {
    return llk::kNotImplemented;
}

llk::i4 pRegisterMapDelegate::OnPortFetch(llk::u4, llk::u8 aAddress, llk::u4 aLength, void* aBuffer,
                                          llk::u4& aFetched) {
    aFetched = aLength;
    llk::i4 status = RegisterMap()->Fetch(static_cast<llk::u4>(aAddress), aBuffer, aFetched);
    return status == llk::kOutOfRange || status == llk::kNoMatch ? kNoAccess : status;
}

llk::i4 pRegisterMapDelegate::OnPortStore(llk::u4, llk::u8 aAddress, llk::u4 aLength,
                                          const void* aBuffer, llk::u4& aStored) {
    aStored = aLength;
    llk::i4 status = RegisterMap()->Store(static_cast<llk::u4>(aAddress), aBuffer, aStored);
    return status == llk::kOutOfRange || status == llk::kNoMatch ? kNoAccess : status;
}

} // namespace tvk
