// NetPointer: the count lives in the object, so every pointer made from one
// object shares it, from any thread.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include <TavikCPP/TavikCPP.h>

namespace {

using namespace QRX::TvkAPI;

std::atomic<int> gDestroyed{0};

class Probe : public virtual ReferenceCounted {
public:
    explicit Probe(int aValue = 0) : value(aValue) {}
    ~Probe() override { ++gDestroyed; }
    int value;
};

class Derived : public Probe {};

// An application class that is two kinds of observer at once still has one count.
class BothObservers : public IFeatureObserver, public ICameraListObserver {
public:
    ~BothObservers() override { ++gDestroyed; }
    void FeatureChanged(const FeaturePtr&) override {}
    void CameraListChanged(CameraPtr, UpdateTriggerType) override {}
};

class NetPointerTest : public ::testing::Test {
protected:
    void SetUp() override { gDestroyed = 0; }
};

TEST_F(NetPointerTest, PointersMadeFromOneObjectShareItsCount) {
    Probe* raw = new Probe(7);
    {
        NetPointer<Probe> first(raw);
        NetPointer<Probe> second(raw);
        EXPECT_EQ(first.UseCount(), 2u);
        EXPECT_TRUE(first.IsEqualTo(second));
        first.Reset();
        EXPECT_EQ(gDestroyed, 0);
        EXPECT_EQ(second->value, 7);
    }
    EXPECT_EQ(gDestroyed, 1);
}

TEST_F(NetPointerTest, NullPointersAnswerWithoutFault) {
    NetPointer<Probe> empty;
    EXPECT_TRUE(empty.IsNull());
    EXPECT_FALSE(empty);
    EXPECT_EQ(empty.AccessNative(), nullptr);
    EXPECT_EQ(empty.UseCount(), 0u);
    EXPECT_TRUE(empty.IsEqualTo(NetPointer<Probe>(nullptr)));
    empty.Reset();
    EXPECT_TRUE(empty.IsNull());
}

TEST_F(NetPointerTest, AssignmentRetargetsOnlyTheLeftSide) {
    NetPointer<Probe> left(new Probe(1));
    NetPointer<Probe> copyOfLeft = left;
    NetPointer<Probe> right(new Probe(2));
    left = right;
    EXPECT_EQ(left->value, 2);
    EXPECT_EQ(copyOfLeft->value, 1);
    EXPECT_EQ(right.UseCount(), 2u);
    copyOfLeft.Reset();
    EXPECT_EQ(gDestroyed, 1);
    left = left; // to itself: nothing lost
    EXPECT_EQ(left->value, 2);
}

TEST_F(NetPointerTest, ResetTakesANewTargetAndMovesLeaveTheSourceNull) {
    NetPointer<Probe> pointer(new Probe(1));
    pointer.Reset(new Probe(2));
    EXPECT_EQ(gDestroyed, 1);
    NetPointer<Probe> moved(std::move(pointer));
    EXPECT_TRUE(pointer.IsNull());
    EXPECT_EQ(moved->value, 2);
    EXPECT_EQ(moved.UseCount(), 1u);
}

TEST_F(NetPointerTest, ADerivedPointerConvertsToItsBaseAndKeepsOneCount) {
    NetPointer<Derived> derived(new Derived());
    NetPointer<Probe> base = derived;
    EXPECT_EQ(base.UseCount(), 2u);
    EXPECT_EQ(base.AccessNative(), static_cast<Probe*>(derived.AccessNative()));

    auto* both = new BothObservers();
    IFeatureObserverPtr asFeature(both);
    ICameraListObserverPtr asCamera(both);
    EXPECT_EQ(asFeature.UseCount(), 2u);
    asFeature.Reset();
    EXPECT_EQ(gDestroyed, 0);
    asCamera.Reset();
    EXPECT_EQ(gDestroyed, 1);
}

TEST_F(NetPointerTest, BothSpellingsNameOneType) {
    NetPointer<Camera> shortForm;
    NetPointer<Camera, DefaultWrapper<Camera>> longForm = shortForm;
    static_assert(std::is_same_v<decltype(shortForm), CameraPtr>);
    EXPECT_TRUE(longForm.IsNull());
}

// Many threads copy and drop pointers to one object: the count stays exact
// and the object goes exactly once, after the last drop.
TEST_F(NetPointerTest, CopiesAndDropsFromManyThreadsDeleteOnce) {
    for (int round = 0; round < 20; ++round) {
        gDestroyed = 0;
        Probe* raw = new Probe();
        NetPointer<Probe> shared(raw);
        std::atomic<bool> go{false};
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&] {
                while (!go)
                    std::this_thread::yield();
                for (int i = 0; i < 2000; ++i) {
                    NetPointer<Probe> copy(shared);
                    NetPointer<Probe> again(raw); // made from the raw pointer
                    EXPECT_GE(again.UseCount(), 3u);
                }
            });
        }
        go = true;
        for (auto& thread : threads)
            thread.join();
        EXPECT_EQ(shared.UseCount(), 1u);
        EXPECT_EQ(gDestroyed, 0);
        shared.Reset();
        EXPECT_EQ(gDestroyed, 1);
    }
}

} // namespace
