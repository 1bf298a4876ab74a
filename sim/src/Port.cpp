#include "Port.h"

#include <cstring>
#include <memory>
#include <mutex>

#include "Info.h"
#include "Sha1.h"

namespace sim {

std::string LocalUrl(const Port::tDocument& aDocument) {
    char url[256];
    snprintf(url, sizeof(url), "Local:%s;%llx;%x", aDocument.fileName.c_str(),
             static_cast<unsigned long long>(aDocument.address), aDocument.size);
    return url;
}

std::string Port::Url() {
    return LocalUrl(Document());
}

GC_ERROR Port::Info(PORT_INFO_CMD aCommand, INFO_DATATYPE* aType, void* aBuffer, size_t* aSize) {
    const tIdentity identity = Identity();
    auto flag = [&](bool aValue) {
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{aValue}, aType, aBuffer, aSize);
    };
    switch (aCommand) {
    case PORT_INFO_ID:
        return ReplyText(identity.id, aType, aBuffer, aSize);
    case PORT_INFO_VENDOR:
        return ReplyText(identity.vendor, aType, aBuffer, aSize);
    case PORT_INFO_MODEL:
        return ReplyText(identity.model, aType, aBuffer, aSize);
    case PORT_INFO_TLTYPE:
        return ReplyText(identity.tlType, aType, aBuffer, aSize);
    case PORT_INFO_MODULE:
        return ReplyText(identity.module, aType, aBuffer, aSize);
    case PORT_INFO_LITTLE_ENDIAN:
    case PORT_INFO_ACCESS_READ:
    case PORT_INFO_ACCESS_WRITE:
        return flag(true);
    case PORT_INFO_BIG_ENDIAN:
    case PORT_INFO_ACCESS_NA:
    case PORT_INFO_ACCESS_NI:
        return flag(false);
    case PORT_INFO_VERSION:
        return ReplyText("1.0", aType, aBuffer, aSize);
    case PORT_INFO_PORTNAME:
        return ReplyText(identity.name, aType, aBuffer, aSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

GC_ERROR Port::UrlInfo(uint32_t aIndex, URL_INFO_CMD aCommand, INFO_DATATYPE* aType, void* aBuffer,
                       size_t* aSize) {
    if (aIndex != 0) return GC_ERR_INVALID_INDEX;
    const tDocument d = Document();
    auto version = [&](int32_t aValue) {
        return ReplyValue(INFO_DATATYPE_INT32, aValue, aType, aBuffer, aSize);
    };
    switch (aCommand) {
    case URL_INFO_URL:
        return ReplyText(Url(), aType, aBuffer, aSize);
    case URL_INFO_SCHEMA_VER_MAJOR: // the documents follow schema 1.1, and are version 1.0.0
    case URL_INFO_SCHEMA_VER_MINOR:
    case URL_INFO_FILE_VER_MAJOR:
        return version(1);
    case URL_INFO_FILE_VER_MINOR:
    case URL_INFO_FILE_VER_SUBMINOR:
        return version(0);
    case URL_INFO_FILE_SHA1_HASH:
        return Reply(INFO_DATATYPE_BUFFER, d.sha1.data(), d.sha1.size(), aType, aBuffer, aSize);
    case URL_INFO_FILE_REGISTER_ADDRESS:
    case URL_INFO_DOCUMENT_ADDRESS_QRX:
        return ReplyValue(INFO_DATATYPE_UINT64, d.address, aType, aBuffer, aSize);
    case URL_INFO_FILE_SIZE:
        return ReplyValue(INFO_DATATYPE_UINT64, uint64_t{d.size}, aType, aBuffer, aSize);
    case URL_INFO_DOCUMENT_SIZE_QRX:
        return ReplyValue(INFO_DATATYPE_UINT32, d.size, aType, aBuffer, aSize);
    case URL_INFO_DOCUMENT_ZIPPED_QRX:
        return ReplyValue(INFO_DATATYPE_BOOL8, bool8_t{d.zipped}, aType, aBuffer, aSize);
    case URL_INFO_SCHEME:
        return ReplyValue(INFO_DATATYPE_INT32, int32_t{URL_SCHEME_LOCAL}, aType, aBuffer, aSize);
    case URL_INFO_FILENAME:
        return ReplyText(d.fileName, aType, aBuffer, aSize);
    default:
        return GC_ERR_NOT_IMPLEMENTED;
    }
}

GC_ERROR Port::Stacked(PORT_REGISTER_STACK_ENTRY* aEntries, size_t* aCount, bool aWrite) {
    if (!aEntries || !aCount) return GC_ERR_INVALID_PARAMETER;
    size_t done = 0;
    GC_ERROR status = GC_ERR_SUCCESS;
    for (; done < *aCount; ++done) {
        size_t size = aEntries[done].Size;
        status = aWrite ? Write(aEntries[done].Address, aEntries[done].pBuffer, &size)
                        : Read(aEntries[done].Address, aEntries[done].pBuffer, &size);
        if (status != GC_ERR_SUCCESS) break;
    }
    *aCount = done;
    return status;
}

ModulePort::ModulePort(tIdentity aIdentity, const char* aFileName, const char* aDocument)
    : mIdentity(std::move(aIdentity)), mText(aDocument, aDocument + strlen(aDocument)) {
    mDocument.address = kDocumentAddress;
    mDocument.size = static_cast<uint32_t>(mText.size());
    mDocument.fileName = aFileName;
    mDocument.sha1 = Sha1(mText);
}

void ModulePort::Number(uint64_t aAddress, uint32_t aLength, tNumberRead aRead,
                        tNumberWrite aWrite) {
    tRegister r{aAddress, aLength,
                [aRead, aLength](uint8_t* aOut) {
                    const uint64_t value = aRead();
                    memcpy(aOut, &value, aLength); // little-endian: the low bytes
                },
                nullptr};
    if (aWrite)
        r.write = [aWrite, aLength](size_t, const uint8_t* aIn, size_t) {
            uint64_t value = 0;
            memcpy(&value, aIn, aLength);
            return aWrite(value);
        };
    mRegisters.push_back(std::move(r));
}

void ModulePort::Text(uint64_t aAddress, uint32_t aLength, std::function<std::string()> aRead) {
    mRegisters.push_back({aAddress, aLength,
                          [aRead, aLength](uint8_t* aOut) {
                              const std::string text = aRead();
                              memset(aOut, 0, aLength);
                              memcpy(aOut, text.data(), std::min<size_t>(text.size(), aLength - 1));
                          },
                          nullptr});
}

void ModulePort::Command(uint64_t aAddress, std::function<void()> aRun) {
    Number(
        aAddress, 4, [] { return uint64_t{0}; },
        [aRun](uint64_t) {
            aRun();
            return GC_ERR_SUCCESS;
        });
}

void ModulePort::Scratch(uint64_t aAddress, uint32_t aLength) {
    struct tBytes {
        std::mutex lock;
        std::vector<uint8_t> bytes;
    };
    auto held = std::make_shared<tBytes>();
    held->bytes.assign(aLength, 0);
    mRegisters.push_back({aAddress, aLength,
                          [held](uint8_t* aOut) {
                              std::lock_guard<std::mutex> hold(held->lock);
                              memcpy(aOut, held->bytes.data(), held->bytes.size());
                          },
                          [held](size_t aOffset, const uint8_t* aIn, size_t aSize) {
                              std::lock_guard<std::mutex> hold(held->lock);
                              memcpy(held->bytes.data() + aOffset, aIn, aSize);
                              return GC_ERR_SUCCESS;
                          },
                          true});
}

ModulePort::tRegister* ModulePort::Find(uint64_t aAddress, size_t aSize) {
    for (tRegister& r : mRegisters)
        if (r.address <= aAddress && aAddress + aSize <= r.address + r.length) return &r;
    return nullptr;
}

GC_ERROR ModulePort::Read(uint64_t aAddress, void* aBuffer, size_t* aSize) {
    if (!aBuffer || !aSize) return GC_ERR_INVALID_PARAMETER;
    if (aAddress >= kDocumentAddress && aAddress + *aSize <= kDocumentAddress + mText.size()) {
        memcpy(aBuffer, mText.data() + (aAddress - kDocumentAddress), *aSize);
        return GC_ERR_SUCCESS;
    }
    tRegister* r = Find(aAddress, *aSize);
    if (!r) return GC_ERR_INVALID_ADDRESS;
    std::vector<uint8_t> value(r->length);
    r->read(value.data());
    memcpy(aBuffer, value.data() + (aAddress - r->address), *aSize);
    return GC_ERR_SUCCESS;
}

GC_ERROR ModulePort::Write(uint64_t aAddress, const void* aBuffer, size_t* aSize) {
    if (!aBuffer || !aSize) return GC_ERR_INVALID_PARAMETER;
    tRegister* r = Find(aAddress, *aSize);
    if (!r) {
        const bool document =
            aAddress < kDocumentAddress + mText.size() && kDocumentAddress < aAddress + *aSize;
        return document ? GC_ERR_ACCESS_DENIED : GC_ERR_INVALID_ADDRESS;
    }
    if (!r->write) return GC_ERR_ACCESS_DENIED;
    if (!r->partial && (aAddress != r->address || *aSize != r->length))
        return GC_ERR_INVALID_PARAMETER;
    return r->write(aAddress - r->address, static_cast<const uint8_t*>(aBuffer), *aSize);
}

} // namespace sim
