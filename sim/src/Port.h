// A port: an address space with a register description document of its
// own. The remote device's port and each module's (system, interface,
// device, stream) answer the port calls and the port and URL infos alike.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "TavikGenTLVendor.h"

namespace sim {

using namespace GenICam::Client;

class Port {
public:
    struct tIdentity {
        std::string id, vendor, model, tlType;
        std::string module; // "TLSystem", "TLInterface", "TLDevice", "TLDataStream", "Device"
        std::string name;   // as the document's Port node is named
    };
    // Where the document lies in the port's space, as the port reports it.
    struct tDocument {
        uint64_t address = 0;
        uint32_t size = 0;
        bool zipped = false;
        std::string fileName;
        std::array<uint8_t, 20> sha1{};
    };

    virtual ~Port() = default;
    virtual GC_ERROR Read(uint64_t aAddress, void* aBuffer, size_t* aSize) = 0;
    virtual GC_ERROR Write(uint64_t aAddress, const void* aBuffer, size_t* aSize) = 0;
    virtual tIdentity Identity() = 0;
    virtual tDocument Document() = 0;

    std::string Url();
    GC_ERROR Info(PORT_INFO_CMD aCommand, INFO_DATATYPE* aType, void* aBuffer, size_t* aSize);
    GC_ERROR UrlInfo(uint32_t aIndex, URL_INFO_CMD aCommand, INFO_DATATYPE* aType, void* aBuffer,
                     size_t* aSize);
    // Entries one after another, up to the first failure; the count says how many.
    GC_ERROR Stacked(PORT_REGISTER_STACK_ENTRY* aEntries, size_t* aCount, bool aWrite);
};

// A document's URL: "Local:<file>;<address>;<size>", hexadecimal.
std::string LocalUrl(const Port::tDocument& aDocument);

// The registers of a module, each answered by a function, and its document.
// Registers are little-endian; a write must fill a whole register.
class ModulePort : public Port {
public:
    static constexpr uint64_t kDocumentAddress = 0x100000;

    ModulePort(tIdentity aIdentity, const char* aFileName, const char* aDocument);

    using tNumberRead = std::function<uint64_t()>;
    using tNumberWrite = std::function<GC_ERROR(uint64_t)>;
    void Number(uint64_t aAddress, uint32_t aLength, tNumberRead aRead,
                tNumberWrite aWrite = nullptr);
    void Text(uint64_t aAddress, uint32_t aLength, std::function<std::string()> aRead);
    // A command: reads 0, and a write of any value runs it.
    void Command(uint64_t aAddress, std::function<void()> aRun);
    // Bytes a consumer may write and read back in any part.
    void Scratch(uint64_t aAddress, uint32_t aLength);

    GC_ERROR Read(uint64_t aAddress, void* aBuffer, size_t* aSize) override;
    GC_ERROR Write(uint64_t aAddress, const void* aBuffer, size_t* aSize) override;
    tIdentity Identity() override { return mIdentity; }
    tDocument Document() override { return mDocument; }

private:
    struct tRegister {
        uint64_t address;
        uint32_t length;
        std::function<void(uint8_t*)> read;
        // From an offset in the register, so many bytes.
        std::function<GC_ERROR(size_t, const uint8_t*, size_t)> write;
        bool partial = false; // any part may be written
    };
    tRegister* Find(uint64_t aAddress, size_t aSize);

    tIdentity mIdentity;
    tDocument mDocument;
    std::vector<uint8_t> mText;
    std::vector<tRegister> mRegisters;
};

} // namespace sim
