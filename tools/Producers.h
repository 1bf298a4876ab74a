// The producers (".cti" files) that libTavikC has loaded, and what each says
// about its transport layer through GenTL's GCGetInfo.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tool {

struct tProducer {
    std::string path;
    // Label and value of each transport layer information the producer
    // answers, in the order of the GenTL TL_INFO commands.
    std::vector<std::pair<std::string, std::string>> info;
};

// The producers loaded in this process, in load order.
std::vector<tProducer> LoadedProducers();

} // namespace tool
