// The control entry point that tests and demos reach with dlsym.
#include <sstream>

#include "Entry.h"
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
        device->SetPlugged(verb == "plug");
        // Interface events carry the camera's id and what happened.
        std::vector<uint8_t> data(8 + name.size() + 1, 0);
        uint32_t id = EVENT_DEVICE_LIST_CHANGED_QRX;
        uint32_t what = verb == "plug" ? IFCHANGE_DEVICE_ARRIVED : IFCHANGE_DEVICE_LEFT;
        memcpy(data.data(), &id, 4);
        memcpy(data.data() + 4, &what, 4);
        memcpy(data.data() + 8, name.c_str(), name.size());
        device->Parent()->DeviceListChanged()->Push(data.data(), data.size());
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
        std::vector<uint8_t> data(8 + feature.size() + 1, 0);
        memcpy(data.data() + 8, feature.c_str(), feature.size());
        device->Invalidations()->Push(data.data(), data.size());
        return 0;
    }
    if (verb == "event") {
        uint32_t id = 0;
        words >> id;
        uint8_t data[16] = {};
        memcpy(data, &id, 4);
        device->RemoteEvents()->Push(data, sizeof(data));
        return 0;
    }
    return -1;
}

} // extern "C"
