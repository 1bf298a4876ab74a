#include "Producer.h"

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

tProducer& Producer() {
    static tProducerKeeper keeper;
    return *keeper.producer;
}

} // namespace sim
