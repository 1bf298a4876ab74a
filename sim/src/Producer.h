// The one producer instance behind the exported entry points.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "Faults.h"
#include "Transport.h"

namespace sim {

// The remote port of a device, a handle of its own.
struct tPort {
    Device* device;
};

struct tProducer {
    std::mutex lock;
    std::atomic<bool> initialised{false}; // read without the lock by every entry
    std::unique_ptr<System> system;
    std::map<Device*, std::unique_ptr<tPort>> ports;
    Handles handles;
    Faults faults;
    std::set<std::unique_ptr<Event>> madeEvents;
    std::set<std::unique_ptr<Union>> unions;
    GC_ERROR lastError = GC_ERR_SUCCESS;
    std::string lastText;
};

tProducer& Producer();

} // namespace sim
