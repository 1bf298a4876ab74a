// The object API's own locks: a recursive mutex, its guard, the semaphore
// condition, and the reader/writer gate with an exclusive mode.
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ObjectFixture.h"

namespace {

using namespace QRX::TvkAPI;
using test::Eventually;

// What happened, in order, across threads.
class Journal {
public:
    void Note(const std::string& aEvent) {
        std::lock_guard<std::mutex> hold(m_Mutex);
        m_Events.push_back(aEvent);
    }
    std::vector<std::string> Events() {
        std::lock_guard<std::mutex> hold(m_Mutex);
        return m_Events;
    }

private:
    std::mutex m_Mutex;
    std::vector<std::string> m_Events;
};

// A thread that has come this far may still be on its way into the gate: let
// it run ahead, so that one wrongly let through would be seen.
void LetOthersRun() {
    for (int i = 0; i < 2000; ++i)
        std::this_thread::yield();
}

TEST(MutexTest, ItsOwnerMayTakeItAgainAndOthersWaitForTheLastUnlock) {
    MutexPtr mutex(new Mutex(true));
    mutex->Lock();
    std::atomic<bool> taken{false};
    std::thread other([&] {
        mutex->Lock();
        taken = true;
        mutex->Unlock();
    });
    mutex->Unlock();
    LetOthersRun();
    EXPECT_FALSE(taken);
    mutex->Unlock();
    other.join();
    EXPECT_TRUE(taken);
}

TEST(MutexGuardTest, AGuardThatReleasedMayProtectAgain) {
    MutexPtr mutex(new Mutex());
    MutexGuard guard;
    EXPECT_FALSE(guard.Release());
    guard.Protect(mutex);
    guard.Protect(mutex); // held already: still one lock
    EXPECT_TRUE(guard.Release());
    EXPECT_FALSE(guard.Release());
    std::thread([&] { MutexGuard other(mutex); }).join();
    guard.Protect(mutex);
    std::atomic<bool> taken{false};
    std::thread waiting([&] {
        MutexGuard other(mutex);
        taken = true;
    });
    LetOthersRun();
    EXPECT_FALSE(taken);
    EXPECT_TRUE(guard.Release());
    waiting.join();
}

TEST(MutexGuardTest, AnotherLockReleasesTheOneHeldAndEveryFormTakesALockable) {
    BasicLockablePtr first(new BasicLockable());
    LockableVector<int> second;
    MutexGuard guard(first);
    guard.Protect(second);
    // The first is free again.
    std::thread([&] { MutexGuard other(*first); }).join();
    EXPECT_TRUE(guard.Release());
    std::thread([&] { MutexGuard other(second.GetMutex()); }).join();
}

class MutexGuardLogTest : public test::ObjectFixture {};

TEST_F(MutexGuardLogTest, ANullMutexIsLoggedAndNothingIsHeld) {
    MutexPtr mutex(new Mutex());
    MutexGuard guard(MutexPtr{});
    EXPECT_FALSE(guard.Release());
    guard.Protect(mutex);
    guard.Protect(BasicLockablePtr{});
    EXPECT_FALSE(guard.Release());
    std::thread([&] { MutexGuard other(mutex); }).join();
    const std::string log = NewLog();
    EXPECT_NE(log.find(": No mutex passed. in function: QRX::TvkAPI::MutexGuard::MutexGuard\n"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find(": No mutex passed. in function: QRX::TvkAPI::MutexGuard::Protect\n"),
              std::string::npos)
        << log;
}

TEST(SemaphoreTest, CountsUpToItsMaximum) {
    Semaphore semaphore(1, 2);
    semaphore.Acquire();
    semaphore.Release();
    semaphore.Release();
    semaphore.Release(); // at the maximum: no third count
    semaphore.Acquire();
    semaphore.Acquire();
    std::atomic<bool> acquired{false};
    std::thread waiting([&] {
        semaphore.Acquire();
        acquired = true;
    });
    LetOthersRun();
    EXPECT_FALSE(acquired);
    semaphore.Release();
    waiting.join();
    EXPECT_THROW(Semaphore(2, 1), std::bad_alloc);
}

// Waiters on one condition, woken one at a time or all at once.
TEST(ConditionTest, ASingleSignalWakesOneWaiterAndABroadcastWakesTheRest) {
    MutexPtr mutex(new Mutex());
    Condition condition;
    int tickets = 0, waiting = 0;
    std::atomic<int> woken{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            MutexGuard guard(mutex);
            ++waiting;
            while (tickets == 0)
                condition.Wait(mutex);
            --tickets;
            ++woken;
        });
    }
    ASSERT_TRUE(Eventually([&] {
        MutexGuard guard(mutex);
        return waiting == 3;
    }));
    {
        MutexGuard guard(mutex);
        tickets = 1;
        condition.Signal(true);
    }
    ASSERT_TRUE(Eventually([&] { return woken == 1; }));
    {
        MutexGuard guard(mutex);
        tickets = 2;
        condition.Signal(false);
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(woken, 3);
}

class ConditionHelperTest : public ::testing::Test {
protected:
    LockableVector<int> mList;
    ConditionHelper mGate;
};

TEST_F(ConditionHelperTest, AWriterWaitsForTheReadersAndLaterReadersWaitForIt) {
    Journal journal;
    ASSERT_TRUE(mGate.EnterReadLock(mList));
    ASSERT_TRUE(mGate.EnterReadLock(mList));
    std::atomic<bool> writerComing{false}, writerIn{false};
    std::thread writer([&] {
        writerComing = true;
        ASSERT_TRUE(mGate.EnterWriteLock(mList, false));
        writerIn = true;
        journal.Note("writer in");
        LetOthersRun();
        journal.Note("writer out");
        mGate.ExitWriteLock(mList);
    });
    ASSERT_TRUE(Eventually([&] { return writerComing.load(); }));
    LetOthersRun();
    journal.Note("reader 1 out");
    mGate.ExitReadLock(mList);
    LetOthersRun();
    journal.Note("reader 2 out");
    mGate.ExitReadLock(mList);
    ASSERT_TRUE(Eventually([&] { return writerIn.load(); }));
    // A reader that comes while the writer is in waits for it.
    std::thread reader([&] {
        ASSERT_TRUE(mGate.EnterReadLock(mList));
        journal.Note("reader 3 in");
        mGate.ExitReadLock(mList);
    });
    writer.join();
    reader.join();
    EXPECT_EQ(journal.Events(),
              (std::vector<std::string>{"reader 1 out", "reader 2 out", "writer in", "writer out",
                                        "reader 3 in"}));
}

TEST_F(ConditionHelperTest, AnExclusiveWriterMakesOtherEntriesFailAtOnce) {
    ASSERT_TRUE(mGate.EnterWriteLock(mList, true));
    std::thread([&] {
        EXPECT_FALSE(mGate.EnterReadLock(mList));
        EXPECT_FALSE(mGate.EnterWriteLock(mList, false));
        EXPECT_FALSE(mGate.EnterWriteLock(mList, true));
    }).join();
    mGate.ExitWriteLock(mList);
    // Left, the gate admits again; the exclusive mode ended with the writer.
    EXPECT_TRUE(mGate.EnterReadLock(mList));
    mGate.ExitReadLock(mList);
    EXPECT_TRUE(mGate.EnterWriteLock(mList, false));
    std::thread waiting([&] {
        EXPECT_TRUE(mGate.EnterReadLock(mList.GetMutex()));
        mGate.ExitReadLock(mList.GetMutex());
    });
    mGate.ExitWriteLock(mList);
    waiting.join();
}

TEST_F(ConditionHelperTest, TheLastReaderOutWakesAWaitingExclusiveWriter) {
    ASSERT_TRUE(mGate.EnterReadLock(mList));
    std::atomic<bool> writerIn{false};
    std::thread writer([&] {
        EXPECT_TRUE(mGate.EnterWriteLock(mList, true));
        writerIn = true;
        mGate.ExitWriteLock(mList);
    });
    LetOthersRun();
    EXPECT_FALSE(writerIn);
    mGate.ExitReadLock(mList);
    writer.join();
    EXPECT_TRUE(writerIn);
}

// Readers and writers from several threads: writers are alone, readers
// share, and the counts come out exact (the sanitizers see every access).
TEST_F(ConditionHelperTest, ReadersShareAndWritersAreAlone) {
    std::atomic<int> readersIn{0}, writersIn{0}, maxReaders{0};
    std::atomic<bool> overlap{false};
    int guarded = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 300; ++i) {
                if ((i + t) % 3 == 0) {
                    ASSERT_TRUE(mGate.EnterWriteLock(mList, false));
                    if (++writersIn != 1 || readersIn != 0) overlap = true;
                    ++guarded;
                    mList.Vector.push_back(i);
                    --writersIn;
                    mGate.ExitWriteLock(mList);
                } else {
                    ASSERT_TRUE(mGate.EnterReadLock(mList));
                    const int now = ++readersIn;
                    int seen = maxReaders;
                    while (now > seen && !maxReaders.compare_exchange_weak(seen, now)) {
                    }
                    if (writersIn != 0) overlap = true;
                    EXPECT_EQ(static_cast<size_t>(guarded), mList.Vector.size());
                    --readersIn;
                    mGate.ExitReadLock(mList);
                }
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_FALSE(overlap);
    EXPECT_EQ(guarded, 400);
}

} // namespace
