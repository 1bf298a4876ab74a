// An event source's queue: blocks of data waited on by consumers, killable,
// and linkable into unions so that one thread waits on many events.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <vector>

#include "TavikGenTLVendor.h"

namespace sim {

using namespace GenICam::Client;

class Union;

class Event {
public:
    Event(EVENT_TYPE aType, void* aSource, size_t aMaxSize)
        : type(aType), source(aSource), maxSize(aMaxSize) {}

    // A consumer's registration: a new one starts with no data and no kill;
    // the end of one kills the waits. False when already so.
    bool Register();
    bool Unregister();
    // Queues data for the consumer; dropped while nobody is registered.
    void Push(const void* aData, size_t aSize);
    void Push(const std::vector<uint8_t>& aData) { Push(aData.data(), aData.size()); }
    // Waits for data (aTimeoutMs may be GENTL_INFINITE); GC_ERR_ABORT when killed.
    GC_ERROR Get(void* aBuffer, size_t* aSize, uint64_t aTimeoutMs);
    // Waits for data without taking it.
    GC_ERROR Wait(uint64_t aTimeoutMs);
    void Kill();
    void Flush();
    size_t Queued();
    uint64_t Fired();

    const EVENT_TYPE type;
    void* const source;
    const size_t maxSize;

private:
    friend class Union;
    std::mutex mLock;
    std::condition_variable mChanged;
    std::deque<std::vector<uint8_t>> mQueue;
    bool mRegistered = false;
    bool mKilled = false;
    uint64_t mFired = 0;
    std::set<Union*> mUnions;
};

class Union {
public:
    ~Union();
    GC_ERROR Link(Event* aEvent);
    GC_ERROR Unlink(Event* aEvent);
    // Waits until a linked event has data; writes which.
    GC_ERROR Wait(Event** aEvent, uint64_t aTimeoutMs);
    void Kill();
    void Notify();

private:
    Event* Ready();
    std::mutex mLock;
    std::condition_variable mChanged;
    std::set<Event*> mEvents;
    bool mKilled = false;
};

} // namespace sim
