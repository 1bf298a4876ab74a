// The control entry point that tests and demos reach with dlsym.
#include <sstream>

#include "Entry.h"
#include "EventData.h"
#include "Stream.h"
#include "TavikSimControl.h"

using namespace sim;

extern "C" {

__attribute__((visibility("default"))) int TavikSimControl(const char* command) {
    tProducer& p = Producer();
    if (!command) return -1;
    std::istringstream words(command);
    std::string verb, name;
    words >> verb;
    if (verb == "clear") {
        p.faults.Clear();
        return 0;
    }
    words >> name;
    if (verb == "fail") {
        int32_t status = 0;
        uint32_t count = 0;
        if (!(words >> status)) return -1;
        words >> count;
        p.faults.Fail(name, status, count);
        return 0;
    }
    if (verb == "delay") {
        uint32_t ms = 0;
        if (!(words >> ms)) return -1;
        p.faults.Delay(name, ms);
        return 0;
    }
    std::lock_guard<std::mutex> hold(p.lock);
    Device* device = p.system ? p.system->FindDevice(name) : nullptr;
    if (!device) return -1;
    if (verb == "plug" || verb == "unplug") {
        const bool plugged = verb == "plug";
        device->SetPlugged(plugged);
        const uint32_t data = plugged ? IFCHANGE_DATA_PRESENT | IFCHANGE_DATA_REACHABLE : 0;
        device->Parent()->DeviceListChanged()->Push(
            DeviceChangeData(IFCHANGE_DEVICE_PRESENCE, data, name));
        return 0;
    }
    if (verb == "document") {
        uint64_t address = 0;
        uint32_t size = 0;
        if (!(words >> std::hex >> address >> size)) return -1;
        device->ReportDocument(address, size);
        return 0;
    }
    if (verb == "incomplete") {
        uint32_t count = 0;
        words >> count;
        device->GetStream()->MakeIncomplete(count);
        return 0;
    }
    if (verb == "invalidate") {
        std::string feature;
        words >> feature;
        device->Invalidations()->Push(InvalidationData(feature));
        return 0;
    }
    if (verb == "event") {
        uint32_t id = 0, block = 0;
        words >> id >> block;
        device->RemoteEvents()->Push(RemoteEventData(id, block, TimestampNs()));
        return 0;
    }
    return -1;
}

} // extern "C"
