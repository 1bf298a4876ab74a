#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

#include "kit/AutoreleasePool.h"
#include "kit/Env.h"
#include "kit/String.h"

using namespace llk;

namespace {

std::atomic<int> gDestroyed{0};

class cProbe : public pObject {
public:
    static cProbe* New(i4 aFail = kOk) { return Make<cProbe>(aFail); }
    i4 Initialize(i4 aFail) { return aFail; }
    ~cProbe() override { ++gDestroyed; }
    const char* ClassName() const override { return "cProbe"; }
};

class ObjectTest : public ::testing::Test {
protected:
    void SetUp() override { gDestroyed = 0; }
};

TEST_F(ObjectTest, NewAutoreleasesAndAFailedSecondPhaseDestroys) {
    {
        uAutoreleasePool pool;
        cProbe* kept = cProbe::New();
        ASSERT_NE(kept, nullptr);
        EXPECT_EQ(kept->RetainCount(), 1u);
        EXPECT_EQ(pool.Count(), 1u);
        kept->Retain();
        EXPECT_EQ(cProbe::New(kBadArgument), nullptr);
        EXPECT_EQ(gDestroyed, 1); // the failed one, at once
        pool.Sink();
        EXPECT_EQ(gDestroyed, 1); // the kept one survives the pool
        EXPECT_EQ(kept->RetainCount(), 1u);
        kept->Release();
        EXPECT_EQ(gDestroyed, 2);
    }
}

TEST_F(ObjectTest, PoolGrowsByBlocksAndStaysUsableAfterSink) {
    uAutoreleasePool pool;
    for (int i = 0; i < 65; ++i)
        ASSERT_NE(cProbe::New(), nullptr);
    EXPECT_EQ(pool.Count(), 65u);
    pool.Sink();
    EXPECT_EQ(gDestroyed, 65);
    EXPECT_EQ(pool.Count(), 0u);
    ASSERT_NE(cProbe::New(), nullptr);
    EXPECT_EQ(pool.Count(), 1u);
}

TEST_F(ObjectTest, NestedPoolsTakeObjectsOnTheTop) {
    uAutoreleasePool outer;
    cProbe::New();
    {
        uAutoreleasePool inner;
        EXPECT_EQ(uAutoreleasePool::Top(), &inner);
        cProbe::New();
        EXPECT_EQ(inner.Count(), 1u);
    }
    EXPECT_EQ(gDestroyed, 1);
    EXPECT_EQ(uAutoreleasePool::Top(), &outer);
    EXPECT_EQ(outer.Count(), 1u);
}

TEST_F(ObjectTest, PoolDeletedOutOfOrderReleasesButKeepsTheStack) {
    // On a thread of its own: the thread's pool stack is left broken on purpose.
    std::thread([] {
        auto* first = new uAutoreleasePool;
        auto* second = new uAutoreleasePool;
        cProbe::New(); // lands in second
        testing::internal::CaptureStdout();
        delete first;
        std::string out = testing::internal::GetCapturedStdout();
        EXPECT_NE(out.find("Autorelease pool deleted without being the top!"), std::string::npos);
        EXPECT_EQ(uAutoreleasePool::Top(), second);
        delete second;
        EXPECT_EQ(gDestroyed, 1);
    }).join();
}

TEST(ObjectDeathTest, AutoreleaseWithoutAPoolStopsTheProcess) {
    EXPECT_DEATH(
        {
            dup2(2, 1); // the kit traces to standard output
            std::thread([] { cProbe::New(); }).join();
        },
        "Object autoreleased without a pool!");
}

TEST_F(ObjectTest, ConcurrentRetainAndReleaseNeverLoseACount) {
    uAutoreleasePool pool;
    cProbe* shared = Retained(cProbe::New());
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([shared] {
            for (int i = 0; i < 20000; ++i) {
                shared->Retain();
                shared->Release();
            }
        });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(shared->RetainCount(), 2u);
    EXPECT_EQ(gDestroyed, 0);
    shared->Release();
    pool.Sink();
    EXPECT_EQ(gDestroyed, 1);
}

TEST_F(ObjectTest, LastReleaseRacesDestroyExactlyOnce) {
    uAutoreleasePool pool;
    for (int round = 0; round < 200; ++round) {
        cProbe* object = Retained(cProbe::New());
        pool.Sink();
        object->Retain();
        std::thread a([object] { object->Release(); });
        std::thread b([object] { object->Release(); });
        a.join();
        b.join();
    }
    EXPECT_EQ(gDestroyed, 200);
}

TEST_F(ObjectTest, DescriptionNamesClassAndAddress) {
    uAutoreleasePool pool;
    cProbe* probe = cProbe::New();
    cString* text = probe->Description();
    ASSERT_NE(text, nullptr);
    char expected[64];
    snprintf(expected, sizeof(expected), "<cProbe: 0x%lX>", reinterpret_cast<unsigned long>(probe));
    EXPECT_STREQ(text->Chars(), expected);
}

} // namespace
