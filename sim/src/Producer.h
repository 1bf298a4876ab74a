// The one producer instance behind the exported entry points.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "Bootstrap.h"
#include "Faults.h"
#include "Transport.h"

namespace sim {

// Who the producer is, as its infos and its transport layer's document say.
constexpr const char* kProducerId = "TavikSim";
constexpr const char* kProducerVendor = "Tavik";
constexpr const char* kProducerModel = "TavikSim camera simulator";
constexpr const char* kProducerVersion = "1.0";

// The path this module was loaded from.
std::string ModulePath();

struct tProducer {
    std::mutex lock;
    std::atomic<bool> initialised{false}; // read without the lock by every entry
    std::unique_ptr<System> system;
    Handles handles;
    Faults faults;
    gev::NetworkMemory networks;
    std::set<std::unique_ptr<Event>> madeEvents;
    std::set<std::unique_ptr<Union>> unions;
    GC_ERROR lastError = GC_ERR_SUCCESS;
    std::string lastText;
};

tProducer& Producer();

} // namespace sim
