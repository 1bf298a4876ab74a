#include "Producer.h"

#include <dlfcn.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace sim {

namespace {
// A consumer that exits with the transport layer still open may have threads
// waiting in our events while static destructors run: its state then stays.
struct tProducerKeeper {
    tProducer* producer = new tProducer;
    ~tProducerKeeper() {
        if (!producer->system) {
            delete producer;
            return;
        }
#if defined(__SANITIZE_ADDRESS__)
        __lsan_ignore_object(producer); // kept on purpose, not lost
#endif
    }
};
} // namespace

std::string ModulePath() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&ModulePath), &info) && info.dli_fname)
        return info.dli_fname;
    return "TavikSim.cti";
}

tProducer& Producer() {
    static tProducerKeeper keeper;
    return *keeper.producer;
}

} // namespace sim
