#include <gtest/gtest.h>

#include <vector>

#include "Probe.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"
#include "kit/ObjectHeap.h"
#include "kit/ObjectList.h"
#include "kit/ObjectMap.h"
#include "kit/ObjectPile.h"
#include "kit/ObjectPool.h"
#include "kit/ObjectQueue.h"

using namespace llk;
using test::cProbe;

namespace {

class ContainersTest : public ::testing::Test {
protected:
    void SetUp() override { test::gProbesDestroyed = 0; }
    uAutoreleasePool mPool;
};

int ValueOf(pObject* aObject) {
    return static_cast<cProbe*>(aObject)->mValue;
}

TEST_F(ContainersTest, ListRetainsGrowsOnlyWhenAllowedAndKeepsItsCursorRight) {
    cObjectList* fixed = cObjectList::New(0, true);
    EXPECT_EQ(fixed->Append(nullptr, false), kOk);
    EXPECT_EQ(fixed->Count(), 0u);
    EXPECT_EQ(fixed->Append(cProbe::New(), false), kNoCapacity);

    cObjectList* list = cObjectList::New(2, true);
    std::vector<cProbe*> probes;
    for (int i = 0; i < 10; ++i) {
        probes.push_back(cProbe::New(i));
        ASSERT_EQ(list->Append(probes.back()), kOk);
    }
    EXPECT_EQ(probes[3]->RetainCount(), 2u);
    EXPECT_EQ(ValueOf(list->AtIndex(5)), 5); // cursor at 5
    EXPECT_EQ(list->Remove(5u), kOk);        // cursor moves to the next
    EXPECT_EQ(ValueOf(list->AtIndex(5)), 6);
    EXPECT_EQ(list->Remove(probes[1]), kOk); // before the cursor: index shifts
    EXPECT_EQ(ValueOf(list->AtIndex(4)), 6);
    EXPECT_EQ(ValueOf(list->AtIndex(3)), 4);
    EXPECT_EQ(list->AtIndex(8), nullptr);
    EXPECT_EQ(list->InsertBefore(cProbe::New(42), 8), kOutOfRange);
    EXPECT_EQ(list->InsertBefore(cProbe::New(42), 0), kOk);
    EXPECT_EQ(ValueOf(list->First()), 42);

    list->Remove([](pObject* o, void*) { return ValueOf(o) % 2 == 0; }, nullptr);
    std::vector<int> left;
    for (u4 i = 0; i < list->Count(); ++i)
        left.push_back(ValueOf(list->AtIndex(i)));
    EXPECT_EQ(left, (std::vector<int>{3, 7, 9}));
    EXPECT_EQ(probes[2]->RetainCount(), 1u);
    list->Clear();
    EXPECT_EQ(list->GetCapacity(), 10u); // nodes kept as spares
    EXPECT_EQ(list->SetCapacity(4), kOk);
    EXPECT_EQ(list->GetCapacity(), 4u);
}

TEST_F(ContainersTest, SortedInsertKeepsArrivalOrderAndDropsATieWithTheTail) {
    cObjectList* list = cObjectList::New(4, true);
    auto byValue = [](pObject* a, pObject* b) { return ValueOf(a) - ValueOf(b); };
    for (int v : {5, 1, 9, 3, 5})
        list->InsertSorted(cProbe::New(v), byValue);
    std::vector<int> order;
    for (u4 i = 0; i < list->Count(); ++i)
        order.push_back(ValueOf(list->AtIndex(i)));
    EXPECT_EQ(order, (std::vector<int>{1, 3, 5, 5, 9}));
    cProbe* tie = cProbe::New(9);
    list->InsertSorted(tie, byValue);
    EXPECT_EQ(list->Count(), 5u); // equal to the tail: not inserted
}

TEST_F(ContainersTest, MapKeepsFirstInsertionOrderAndSwapsValues) {
    cObjectMap* map = cObjectMap::New(4, 0.5f, true);
    cProbe* a = cProbe::New(1);
    cProbe* b = cProbe::New(2);
    map->Store("alpha", a);
    map->Store("beta", b);
    map->Store("alpha", b); // swaps the value, keeps the place
    EXPECT_EQ(a->RetainCount(), 1u);
    cObjectMap::tKey key = 0;
    EXPECT_EQ(map->AtIndex(0, &key), b);
    EXPECT_EQ(key, cObjectMap::KeyOf("alpha"));
    EXPECT_TRUE(map->Contains(b, &key));
    EXPECT_TRUE(map->Remove(static_cast<pObject*>(b), true));
    EXPECT_EQ(map->Count(), 0u);
}

TEST_F(ContainersTest, MapStaysCorrectUnderRebuildsWithAnyFactor) {
    for (float factor : {-1.0f, 0.0f, 0.3f, 0.5f, 2.0f}) {
        cObjectMap* map = cObjectMap::New(8, factor, true);
        sEnv::SeedRandom(5);
        std::vector<u4> keys;
        for (int i = 0; i < 400; ++i) {
            u4 key = sEnv::Random(0, 1000000);
            if (map->Contains(cObjectMap::tKey{key})) continue;
            keys.push_back(key);
            ASSERT_EQ(map->Store(cObjectMap::tKey{key}, cProbe::New(static_cast<int>(key))), kOk);
        }
        // Remove most: the count falls below half its peak, forcing rebuilds.
        for (size_t i = 0; i < keys.size(); ++i)
            if (i % 5 != 0) {
                ASSERT_TRUE(map->Remove(cObjectMap::tKey{keys[i]}));
            }
        for (size_t i = 0; i < keys.size(); ++i) {
            pObject* found = map->Fetch(cObjectMap::tKey{keys[i]});
            if (i % 5 == 0) {
                ASSERT_NE(found, nullptr) << factor;
                EXPECT_EQ(static_cast<u4>(ValueOf(found)), keys[i]);
            } else {
                ASSERT_EQ(found, nullptr);
            }
        }
        // Insertion order survives the rebuilds.
        for (u4 i = 0; i < map->Count(); ++i)
            EXPECT_EQ(static_cast<u4>(ValueOf(map->AtIndex(i))), keys[i * 5]);
    }
}

TEST_F(ContainersTest, UnhashedMapIsAStringSet) {
    cObjectMap* set = cObjectMap::New(0, 0.0f, false);
    set->Store(cString::New("b", false));
    set->Store(cString::New("a", false));
    set->Store(cString::New("b", false));
    EXPECT_EQ(set->Count(), 2u);
    EXPECT_NE(set->Fetch("a"), nullptr);
    EXPECT_EQ(set->Fetch("c"), nullptr);
    EXPECT_TRUE(set->Remove("a"));
    EXPECT_EQ(set->Fetch("a"), nullptr);
}

TEST_F(ContainersTest, QueueServesHighPriorityFirstAndBoundsItsSpares) {
    cObjectQueue* queue = cObjectQueue::New(0);
    queue->Push(cProbe::New(1), 5);
    queue->Push(cProbe::New(2), 200);
    queue->Push(cProbe::New(3), 200);
    u1 level = 0;
    EXPECT_EQ(ValueOf(queue->Peek(&level)), 2);
    EXPECT_EQ(level, 200);
    EXPECT_EQ(ValueOf(queue->Pop(true)), 2);
    EXPECT_EQ(ValueOf(queue->Pop(true)), 3);
    EXPECT_EQ(ValueOf(queue->Pop(true)), 1);
    EXPECT_EQ(queue->Pop(true), nullptr);
    EXPECT_EQ(queue->Push(nullptr, 0), kNoMemory);

    for (int i = 0; i < 100; ++i)
        queue->Push(cProbe::New(i), static_cast<u1>(i));
    queue->Filter([](pObject* o, void*) { return ValueOf(o) >= 50; }, nullptr);
    EXPECT_EQ(queue->Count(), 50u);
    EXPECT_TRUE(queue->Contains(queue->Peek(u1{49})));
    queue->Empty();
    EXPECT_EQ(queue->Count(), 0u);
    mPool.Sink();
    EXPECT_EQ(test::gProbesDestroyed, 103);
}

TEST_F(ContainersTest, PoolLimitRefusesWithoutRetaining) {
    cObjectPool* unlimited = cObjectPool::New(8, 0);
    EXPECT_EQ(unlimited->Limit(), 0u);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(unlimited->Push(cProbe::New(i)), kOk);

    cObjectPool* pool = cObjectPool::New(2, 2);
    pool->Push(cProbe::New(1));
    pool->Push(cProbe::New(2));
    cProbe* third = cProbe::New(3);
    EXPECT_EQ(pool->Push(third), kNoCapacity);
    EXPECT_EQ(third->RetainCount(), 1u);
    EXPECT_EQ(ValueOf(pool->Pop()), 1);
    pool->Push(third);
    pool->SetLimit(1);
    EXPECT_EQ(ValueOf(pool->Pop()), 3);

    cTaggedPool* tagged = cTaggedPool::New();
    EXPECT_EQ(tagged->Pop("none"), nullptr);
    EXPECT_EQ(tagged->Count("none"), 0u);
    EXPECT_EQ(tagged->Remove("none", third), kNotFound);
    tagged->Push("cRequest", third);
    EXPECT_EQ(tagged->Pop("cRequest"), third);
}

TEST_F(ContainersTest, HeapIdsStayInRangeAndSnapshotHoldsAll) {
    tRangeWord range{100, 110};
    cObjectHeap* heap = cObjectHeap::New(4, &range);
    for (int i = 0; i < 11; ++i) {
        u4 id = 0;
        ASSERT_EQ(heap->Store(cProbe::New(i), &id), kOk);
        EXPECT_GE(id, 100u);
        EXPECT_LE(id, 110u);
    }
    EXPECT_EQ(heap->Count(), 11u);
    cObjectList* all = heap->Snapshot();
    EXPECT_EQ(all->Count(), 11u);
    u4 id = 0;
    pObject* first = heap->AtIndex(0, &id);
    EXPECT_EQ(heap->Fetch(id), first);
    EXPECT_TRUE(heap->Remove(id));
    EXPECT_FALSE(heap->Contains(id));
}

TEST_F(ContainersTest, PileGridAndTuple) {
    cObjectPile* pile = cObjectPile::New();
    cProbe* p = cProbe::New();
    EXPECT_EQ(pile->Store(p), kOk);
    EXPECT_EQ(pile->Store(p), kOk);
    EXPECT_EQ(pile->Count(), 1u);
    EXPECT_EQ(pile->Remove(p), kOk);
    EXPECT_EQ(pile->Remove(p), kNotFound);

    cObjectGrid* grid = cObjectGrid::New();
    EXPECT_EQ(grid->Store("Gain", 1, nullptr), kNoMemory);
    grid->Store("Gain", 1, p);
    grid->Store("Gain", 2, p);
    grid->Store("Width", 1, p);
    EXPECT_EQ(grid->Count(), 3u);
    EXPECT_EQ(grid->Count("Gain"), 2u);
    cObjectGrid::tKey outer = 0, inner = 0;
    EXPECT_EQ(grid->AtIndex(2, &outer, &inner), p);
    EXPECT_EQ(outer, cObjectMap::KeyOf("Width"));
    EXPECT_TRUE(grid->Remove("Width", 1));
    EXPECT_EQ(grid->Count("Width"), 0u);
    EXPECT_EQ(grid->AtIndex(2, &outer, &inner), nullptr); // the inner map went too

    cObjectTuple* tuple = cObjectTuple::New(2);
    EXPECT_EQ(tuple->Assign(2, p), kOutOfRange);
    u4 before = p->RetainCount();
    tuple->Assign(0, p);
    tuple->Assign(0, p); // same object: no change
    EXPECT_EQ(p->RetainCount(), before + 1);
    EXPECT_EQ(tuple->Count(), 1u);
    tuple->Assign(0, nullptr);
    EXPECT_EQ(p->RetainCount(), before);
}

} // namespace
