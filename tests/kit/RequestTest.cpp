#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Probe.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"
#include "kit/ObjectWorks.h"
#include "kit/Request.h"

using namespace llk;

namespace {

class RequestTest : public ::testing::Test {
protected:
    uAutoreleasePool mPool;
};

TEST_F(RequestTest, RequestAndMessageCarryTheirFields) {
    cRequest* request = cRequest::New(10, 14);
    request->SetOutcome(-3);
    test::cProbe* probe = test::cProbe::New();
    request->SetObject(probe);
    request->SetObject(probe);
    EXPECT_EQ(probe->RetainCount(), 2u);
    cRequest* copy = cRequest::New();
    copy->CopyFrom(*request);
    EXPECT_EQ(copy->GetTag(), 14u);
    EXPECT_EQ(copy->GetOutcome(), -3);
    request->Retarget(11, 15);
    EXPECT_EQ(request->GetOutcome(), 0);
    request->Clear();
    copy->Clear();
    EXPECT_EQ(probe->RetainCount(), 1u);

    cMessage* message = cMessage::New(257, 1, 8, 0.0f);
    message->StoreUint("what", u4{2});
    EXPECT_EQ(message->GetUid(), 257u);
    message->Clear();
    EXPECT_EQ(message->GetUid(), 0u);
    EXPECT_FALSE(message->Contains("what"));
}

pObject* Echo(pObject* aContext, pObject* aArgument) {
    (void)aContext;
    return aArgument;
}

TEST_F(RequestTest, FunctionRunsWaitsAndResets) {
    cFunction* plain = cFunction::New(false, &Echo);
    EXPECT_EQ(plain->Wait(10), kNotAllowed);
    test::cProbe* fallback = test::cProbe::New();
    cFunction* function = cFunction::New(true, &Echo, nullptr, fallback);
    EXPECT_EQ(function->Wait(5), kTimedOut);
    std::thread runner([&] { function->Run(nullptr); });
    EXPECT_EQ(function->Wait(0), kOk);
    runner.join();
    EXPECT_TRUE(function->IsDone());
    EXPECT_EQ(function->Result(), fallback);
    function->Clear();
    EXPECT_FALSE(function->IsDone());
    EXPECT_EQ(function->Result(), nullptr);

    cFunction* empty = cFunction::New(true);
    EXPECT_EQ(empty->Run(nullptr), nullptr);
    EXPECT_TRUE(empty->IsDone());
    EXPECT_EQ(empty->Wait(10), kOk);
}

TEST_F(RequestTest, WorksHandsObjectsThroughItsThreeStations) {
    cObjectWorks* works = cObjectWorks::New(2);
    cRequest* a = cRequest::New(1, 0);
    cRequest* b = cRequest::New(2, 0);
    EXPECT_EQ(works->Return(a), kNotFound);
    EXPECT_EQ(works->Expect(a, 10), kNotFound);
    works->Submit(a, 0);
    works->Submit(b, 9);
    EXPECT_EQ(works->Count(), 2u);
    pObject* accepted = nullptr;
    ASSERT_EQ(works->Accept(accepted), kOk);
    EXPECT_EQ(accepted, b);              // higher priority first
    EXPECT_EQ(works->Cancel(a, 0), kOk); // still waiting: taken back at once
    EXPECT_EQ(works->Accept(accepted), kEmpty);
    EXPECT_EQ(works->Expect(b, 5), kTimedOut);
    EXPECT_EQ(works->Return(b), kOk);
    EXPECT_EQ(works->Expect(b, 5), kOk);

    works->Submit(a, 0);
    works->Disable(true);
    EXPECT_EQ(works->Submit(b, 0), kRefused);
    works->RejectAll();
    EXPECT_EQ(works->Expect(a, 0), kOk); // returned by the rejection
}

TEST_F(RequestTest, ClientsOnOtherThreadsCollectTheirOwnAnswers) {
    cObjectWorks* works = cObjectWorks::New(8);
    std::atomic<bool> stop{false};
    std::thread server([&] {
        uAutoreleasePool pool;
        while (!stop.load()) {
            pObject* object = nullptr;
            if (works->Accept(object, 20) != kOk) continue;
            auto* request = static_cast<cRequest*>(object);
            request->SetOutcome(static_cast<i4>(request->GetUid()) * 2);
            works->Return(request);
            pool.Sink();
        }
    });
    std::vector<std::thread> clients;
    std::atomic<int> wrong{0};
    for (int c = 0; c < 4; ++c)
        clients.emplace_back([&, c] {
            uAutoreleasePool pool;
            cRequest* request = cRequest::New();
            for (int i = 0; i < 500; ++i) {
                request->Retarget(static_cast<u4>(c * 1000 + i), 0);
                works->Submit(request, 0);
                if (works->Expect(request, 0) != kOk || request->GetOutcome() != (c * 1000 + i) * 2)
                    ++wrong;
            }
        });
    for (auto& t : clients)
        t.join();
    stop = true;
    server.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
