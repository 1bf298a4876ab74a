#include "Producers.h"

#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <strings.h>

#include "TavikGenTL.h"

namespace tool {

namespace {

namespace gc = GenICam::Client;

// The transport layer information worth showing, with its label.
constexpr std::pair<gc::TL_INFO_CMD, const char*> kInfo[] = {
    {gc::TL_INFO_ID, "ID"},
    {gc::TL_INFO_VENDOR, "Vendor"},
    {gc::TL_INFO_MODEL, "Model"},
    {gc::TL_INFO_VERSION, "Version"},
    {gc::TL_INFO_TLTYPE, "Transport type"},
    {gc::TL_INFO_NAME, "File name"},
    {gc::TL_INFO_DISPLAYNAME, "Display name"},
    {gc::TL_INFO_GENTL_VER_MAJOR, "GenTL major"},
    {gc::TL_INFO_GENTL_VER_MINOR, "GenTL minor"},
};

bool IsProducer(const std::string& aPath) {
    return aPath.size() > 4 && strcasecmp(aPath.c_str() + aPath.size() - 4, ".cti") == 0;
}

// One information as text, or empty when the producer does not answer it.
std::string InfoText(decltype(&gc::GCGetInfo) aGetInfo, gc::TL_INFO_CMD aCommand) {
    gc::INFO_DATATYPE type = 0;
    size_t size = 0;
    if (aGetInfo(aCommand, &type, nullptr, &size) != gc::GC_ERR_SUCCESS || size == 0) return "";
    std::vector<char> bytes(size);
    if (aGetInfo(aCommand, &type, bytes.data(), &size) != gc::GC_ERR_SUCCESS) return "";
    switch (type) {
    case gc::INFO_DATATYPE_STRING:
        return std::string(bytes.data(), strnlen(bytes.data(), size));
    case gc::INFO_DATATYPE_INT32:
    case gc::INFO_DATATYPE_UINT32:
        if (size == sizeof(uint32_t)) {
            uint32_t value = 0;
            memcpy(&value, bytes.data(), sizeof(value));
            return type == gc::INFO_DATATYPE_INT32 ? std::to_string(int32_t(value))
                                                   : std::to_string(value);
        }
        return "";
    default:
        return "";
    }
}

} // namespace

std::vector<tProducer> LoadedProducers() {
    std::vector<std::string> paths;
    dl_iterate_phdr(
        [](dl_phdr_info* aInfo, size_t, void* aPaths) {
            if (aInfo->dlpi_name && IsProducer(aInfo->dlpi_name))
                static_cast<std::vector<std::string>*>(aPaths)->push_back(aInfo->dlpi_name);
            return 0;
        },
        &paths);
    std::vector<tProducer> producers;
    for (const std::string& path : paths) {
        // The library's own handle stays; this one only finds the entry point.
        void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (!library) continue;
        tProducer producer{path, {}};
        if (auto getInfo = reinterpret_cast<decltype(&gc::GCGetInfo)>(dlsym(library, "GCGetInfo")))
            for (const auto& [command, label] : kInfo)
                if (std::string text = InfoText(getInfo, command); !text.empty())
                    producer.info.emplace_back(label, text);
        dlclose(library);
        producers.push_back(producer);
    }
    return producers;
}

} // namespace tool
