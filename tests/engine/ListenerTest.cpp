// Device events reach an actor through either listener kind.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <atomic>
#include <cstring>
#include <string>
#include <vector>

#include "Eventually.h"
#include "TavikSimControl.h"
#include "engine/Actor.h"
#include "engine/Global.h"
#include "engine/Producer.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"

using namespace tvk;
using test::Eventually;

namespace {

class cEventActor : public pActor {
public:
    static cEventActor* New(cAggregate* aAggregate) {
        return Make<cEventActor>(nullptr, aAggregate);
    }
    void OnEventFired(llk::u4 aUid, const void* aData, llk::u4 aLength) override {
        llk::u4 id = 0;
        if (aLength >= 4) memcpy(&id, aData, 4);
        last.store(aUid * 100000 + id);
        ++count;
    }
    std::atomic<llk::u4> last{0};
    std::atomic<int> count{0};
};

void ListenTwice(const char* aProducer) {
    llk::uAutoreleasePool pool;
    unsetenv("TAVIK_SIM_CONFIG");
    cAggregate* aggregate = llk::Retained(cAggregate::New(aProducer, nullptr));
    ASSERT_NE(aggregate, nullptr);
    cProducer* producer = aggregate->Producer();
    gc::GC_ERROR error = 0;
    char id[64];
    size_t size = sizeof(id);
    ASSERT_TRUE(producer->InterfacesUpdate(nullptr, 0, &error));
    ASSERT_TRUE(producer->InterfacesAtIndex(0, id, &size, &error));
    gc::IF_HANDLE interface = nullptr;
    ASSERT_TRUE(producer->InterfaceOpen(id, &interface, &error));
    ASSERT_TRUE(producer->InterfaceUpdate(interface, nullptr, 0, &error));
    size = sizeof(id);
    ASSERT_TRUE(producer->InterfaceGetSerial(interface, 0, id, &size, &error));
    std::string camera = id;
    gc::DEV_HANDLE device = nullptr;
    ASSERT_TRUE(producer->DeviceOpen(interface, id, gc::DEVICE_ACCESS_CONTROL, &device, &error));
    gc::EVENT_HANDLE event = nullptr;
    ASSERT_TRUE(producer->EventRegister(device, gc::EVENT_REMOTE_DEVICE, &event, &error));

    cEventActor* actor = llk::Retained(cEventActor::New(aggregate));
    cHelper* helper = aggregate->Helper();
    ASSERT_EQ(helper->Attach(actor, 0), llk::kOk);
    ASSERT_EQ(helper->EventListen(actor, 7, event), llk::kOk);
    EXPECT_EQ(helper->EventListen(actor, 7, event), llk::kDuplicate);

    void* self = dlopen(aProducer, RTLD_NOW | RTLD_NOLOAD);
    auto control = reinterpret_cast<TavikSimControl_t>(dlsym(self, "TavikSimControl"));
    ASSERT_NE(control, nullptr);
    for (int i = 1; i <= 20; ++i)
        ASSERT_EQ(control(("event " + camera + " " + std::to_string(9000 + i)).c_str()), 0);
    EXPECT_TRUE(Eventually([&] { return actor->count == 20; }));
    EXPECT_EQ(actor->last.load(), 7u * 100000 + 9020);

    // Forgetting returns once the read is left; later events go nowhere.
    EXPECT_EQ(helper->EventForget(actor, 7), llk::kOk);
    control(("event " + camera + " 1").c_str());
    llk::sEnv::Snooze(30);
    EXPECT_EQ(actor->count, 20);
    helper->Kill(actor, true);
    helper->Detach(actor);
    actor->Release();
    producer->DeviceClose(device, nullptr);
    dlclose(self);
    aggregate->Release();
}

TEST(ListenerTest, UnionListenerDeliversDeviceEvents) {
    ListenTwice(TAVIK_SIM_PRODUCER);
}

TEST(ListenerTest, EventThreadsServeProducersWithoutUnions) {
    ListenTwice((std::string(TAVIK_SIM_VARIANTS) + "/TavikSimStandard.cti").c_str());
}

} // namespace
