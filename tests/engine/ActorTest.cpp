#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "Eventually.h"
#include "engine/Actor.h"
#include "engine/Global.h"
#include "engine/Proxy.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"

using namespace tvk;

namespace {

using test::Eventually;

constexpr llk::u4 kEcho = 99;

// Doubles the int its request points at; can be told to hold a request in
// service until released, or to defer.
class cEchoActor : public pActor {
public:
    static cEchoActor* New(pProxy* aProxy, cAggregate* aAggregate) {
        return Make<cEchoActor>(aProxy, aAggregate);
    }
    bool OnRequest(llk::cRequest* aRequest) override {
        if (aRequest->GetUid() != kEcho) return pActor::OnRequest(aRequest);
        mInService = true;
        while (mHold.load())
            llk::sEnv::Snooze(1);
        if (mDefer.load()) return false;
        auto* value = static_cast<int*>(aRequest->GetPointer());
        *value *= 2;
        aRequest->SetOutcome(0);
        return true;
    }
    bool OnMessage(llk::cMessage* aMessage) override {
        llk::u4 value = 0;
        aMessage->FetchUint("value", value);
        mMessageSum += value;
        return true;
    }
    void OnFlashFired(llk::u4 aUid, llk::u4 aArgument) override {
        mFlash = aUid * 1000 + aArgument;
    }
    void OnTimerFired(llk::u4 aUid, llk::u4) override {
        if (aUid == 5) ++mTicks;
    }
    std::atomic<bool> mHold{false}, mInService{false};
    std::atomic<bool> mDefer{false};
    std::atomic<llk::u4> mMessageSum{0}, mFlash{0}, mTicks{0}, mOffloaded{0};
};

class cEchoProxy : public pProxy {
public:
    static cEchoProxy* New(cAggregate* aAggregate) { return Make<cEchoProxy>(aAggregate); }
    llk::i4 Initialize(cAggregate* aAggregate) {
        SetAggregate(aAggregate);
        mActor = llk::Retained(cEchoActor::New(this, aAggregate));
        return mActor ? StartActor(mActor) : llk::kNoMemory;
    }
    ~cEchoProxy() override {
        EndActor(mActor);
        llk::ReleaseAndClear(mActor);
    }
    llk::u4 ClassType() const override { return kTypeCameraProxy; }
    pActor* Actor() const override { return mActor; }
    cEchoActor* Echo() const { return mActor; }

private:
    cEchoActor* mActor = nullptr;
};

class ActorTest : public ::testing::Test {
protected:
    void SetUp() override {
        mGlobal = llk::Retained(cGlobal::New(nullptr));
        mAggregate = llk::Retained(cAggregate::New(mGlobal));
        mProxy = llk::Retained(cEchoProxy::New(mAggregate));
        ASSERT_NE(mProxy, nullptr);
    }
    void TearDown() override {
        // Proxies end before the aggregate whose threads their actors use.
        llk::ReleaseAndClear(mProxy);
        mPool.Sink();
        llk::ReleaseAndClear(mAggregate);
        llk::ReleaseAndClear(mGlobal);
    }
    llk::uAutoreleasePool mPool;
    cGlobal* mGlobal = nullptr;
    cAggregate* mAggregate = nullptr;
    cEchoProxy* mProxy = nullptr;
};

TEST_F(ActorTest, ProxyCallsTravelToTheActorAndBackFromManyThreads) {
    int value = 21;
    EXPECT_EQ(mProxy->SendRequest(kEcho, 0, &value, 0), llk::kOk);
    EXPECT_EQ(value, 42);
    // Any other uid is refused with the preset outcome.
    EXPECT_EQ(mProxy->SendRequest(12, 14, &value, 0), llk::kRefused);

    std::vector<std::thread> callers;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 4; ++t)
        callers.emplace_back([&, t] {
            llk::uAutoreleasePool pool;
            for (int i = 0; i < 300; ++i) {
                int v = t * 1000 + i;
                if (mProxy->SendRequest(kEcho, 0, &v, 0) != llk::kOk || v != 2 * (t * 1000 + i))
                    ++wrong;
            }
        });
    for (auto& c : callers)
        c.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(ActorTest, TimeoutWhileTheActorIsBusyWaitsForTheRequestInService) {
    cEchoActor* actor = mProxy->Echo();
    actor->mHold = true;
    int value = 1;
    std::atomic<llk::i4> status{-1};
    std::thread caller([&] {
        llk::uAutoreleasePool pool;
        status = mProxy->SendRequest(kEcho, 0, &value, 0, 20);
    });
    ASSERT_TRUE(Eventually([&] { return actor->mInService.load(); }));
    // Long past its timeout, the caller still waits for the request in
    // service, so its context is not left behind on its stack.
    EXPECT_FALSE(Eventually([&] { return status != -1; }, 0.3));
    actor->mHold = false;
    caller.join();
    EXPECT_EQ(status, llk::kTimedOut);
    EXPECT_EQ(value, 2);
}

TEST_F(ActorTest, DeferredRequestsFinishWhenDrained) {
    mProxy->Echo()->mDefer = true;
    int value = 5;
    std::atomic<llk::i4> status{-1};
    std::thread caller([&] {
        llk::uAutoreleasePool pool;
        status = mProxy->SendRequest(kEcho, 0, &value, 0, 0);
    });
    llk::sEnv::Snooze(30);
    EXPECT_EQ(status, -1);
    mProxy->Echo()->mDefer = false;
    // Draining happens on the actor's thread, as after a callback.
    mProxy->PostFlash(1, 0, 0);
    ASSERT_TRUE(Eventually([&] { return mProxy->Echo()->mFlash == 1000; }));
    mProxy->Echo()->RequestsDrain();
    caller.join();
    EXPECT_EQ(status, llk::kOk);
    EXPECT_EQ(value, 10);
}

TEST_F(ActorTest, MessagesFlashesAndTimersReachTheActor) {
    for (llk::u4 i = 1; i <= 10; ++i) {
        llk::cMessage* message = llk::cMessage::New(257, 0, 4, 0.0f);
        message->StoreUint("value", i);
        EXPECT_EQ(mProxy->PostMessage(message, 0), llk::kOk);
    }
    EXPECT_EQ(mProxy->PostFlash(3, 7, 0), llk::kOk);
    EXPECT_EQ(mAggregate->Helper()->TimerStart(mProxy->Echo(), 5, 0, 20, true), llk::kOk);
    ASSERT_TRUE(Eventually([&] {
        return mProxy->Echo()->mMessageSum == 55 && mProxy->Echo()->mFlash == 3007 &&
               mProxy->Echo()->mTicks >= 2;
    }));
}

TEST_F(ActorTest, RequestsToADeadActorAreRefused) {
    cEchoActor* actor = mProxy->Echo();
    actor->RequestsDisable(true);
    int value = 1;
    EXPECT_EQ(mProxy->SendRequest(kEcho, 0, &value, 0), llk::kRefused);
    actor->RequestsDisable(false);
    EXPECT_EQ(mProxy->SendRequest(kEcho, 0, &value, 0), llk::kOk);
    // Once detached, the actor is never entered again: refused at once.
    EXPECT_EQ(mAggregate->Helper()->Detach(actor), llk::kOk);
    EXPECT_EQ(mProxy->SendRequest(kEcho, 0, &value, 0), llk::kRefused);
    EXPECT_EQ(mAggregate->Helper()->Detach(actor), llk::kNotFound);
    EXPECT_EQ(value, 2);
}

// The ticker and the offloader are made on first use, from any thread, while
// other threads already ask the helper for them.
TEST_F(ActorTest, TickerAndOffloaderAreMadeWhileOtherThreadsLookForThem) {
    cHelper* helper = mAggregate->Helper();
    cEchoActor* actor = mProxy->Echo();
    // The looker asks after a timer and a function that are never started.
    llk::cFunction* never = llk::cFunction::New(false);
    std::atomic<bool> made{false};
    std::thread looker([&] {
        llk::uAutoreleasePool pool;
        while (!made.load()) {
            helper->TimerCease(actor, 6);
            helper->TimerReset(actor, 6, 20);
            helper->Discard(actor, never);
        }
    });
    EXPECT_EQ(helper->TimerStart(actor, 5, 0, 20, true), llk::kOk);
    llk::cFunction* function = llk::cFunction::New(
        false,
        [](llk::pObject* aActor, llk::pObject*) -> llk::pObject* {
            ++static_cast<cEchoActor*>(aActor)->mOffloaded;
            return nullptr;
        },
        actor);
    EXPECT_EQ(helper->Offload(actor, function, 255), llk::kOk);
    made = true;
    looker.join();
    ASSERT_TRUE(Eventually([&] { return actor->mOffloaded == 1 && actor->mTicks >= 1; }));
    EXPECT_EQ(helper->TimerCease(actor, 5), llk::kOk);
    EXPECT_EQ(helper->Kill(actor, false), llk::kOk);
    EXPECT_EQ(helper->Detach(actor), llk::kOk);
}

TEST(HelperTest, SetupIsClampedAndAHelperWithoutProducerHasNoListener) {
    llk::cActiveScheduler::tSetup setup{40, 2, 1, 1000, 3};
    cHelper::Clamp(setup);
    EXPECT_EQ(setup.concurrencyMin, 2u);
    EXPECT_EQ(setup.concurrencyMax, 32u);
    EXPECT_EQ(setup.stride, 5u);
    EXPECT_EQ(setup.timeout, 200u);
    setup = {0, 0, 100, 1, 3};
    cHelper::Clamp(setup);
    EXPECT_EQ(setup.concurrencyMin, 1u);
    EXPECT_EQ(setup.stride, 32u);
    EXPECT_EQ(setup.timeout, 10u);

    llk::uAutoreleasePool pool;
    cHelper* helper = cHelper::New(nullptr, nullptr);
    EXPECT_EQ(helper->EventListen(nullptr, 1, nullptr), llk::kNotAllowed);
    EXPECT_EQ(helper->AsyncCall(nullptr, 1, 10, 0), llk::kNotImplemented);
    cHelper::tSetup defaults{};
    helper->GetSetup(defaults);
    EXPECT_EQ(defaults.concurrencyMin, 1u);
    EXPECT_EQ(defaults.concurrencyMax, 6u);
    EXPECT_EQ(defaults.stride, 5u);
}

} // namespace
