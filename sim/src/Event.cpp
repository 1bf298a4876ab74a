#include "Event.h"

#include <chrono>
#include <cstring>

namespace sim {

namespace {
// Waits on aCondition until aReady() or the timeout; false on timeout.
template <class F>
bool WaitFor(std::condition_variable& aCondition, std::unique_lock<std::mutex>& aHold,
             uint64_t aTimeoutMs, F aReady) {
    if (aTimeoutMs == GENTL_INFINITE) {
        aCondition.wait(aHold, aReady);
        return true;
    }
    return aCondition.wait_for(aHold, std::chrono::milliseconds(aTimeoutMs), aReady);
}
} // namespace

bool Event::Register() {
    std::lock_guard<std::mutex> hold(mLock);
    if (mRegistered) return false;
    mRegistered = true;
    mKilled = false;
    mQueue.clear();
    return true;
}

bool Event::Unregister() {
    {
        std::lock_guard<std::mutex> hold(mLock);
        if (!mRegistered) return false;
        mRegistered = false;
        mKilled = true;
        mQueue.clear();
    }
    mChanged.notify_all();
    return true;
}

void Event::Push(const void* aData, size_t aSize) {
    std::set<Union*> unions;
    {
        std::lock_guard<std::mutex> hold(mLock);
        ++mFired;
        if (!mRegistered) return;
        const auto* bytes = static_cast<const uint8_t*>(aData);
        mQueue.emplace_back(bytes, bytes + aSize);
        unions = mUnions;
    }
    mChanged.notify_all();
    for (Union* u : unions)
        u->Notify();
}

GC_ERROR Event::Get(void* aBuffer, size_t* aSize, uint64_t aTimeoutMs) {
    if (!aSize) return GC_ERR_INVALID_PARAMETER;
    std::unique_lock<std::mutex> hold(mLock);
    if (!WaitFor(mChanged, hold, aTimeoutMs, [&] { return mKilled || !mQueue.empty(); }))
        return GC_ERR_TIMEOUT;
    if (mKilled && mQueue.empty()) {
        mKilled = false; // a kill wakes one wait
        return GC_ERR_ABORT;
    }
    std::vector<uint8_t>& front = mQueue.front();
    if (!aBuffer || *aSize < front.size()) {
        *aSize = front.size();
        return GC_ERR_BUFFER_TOO_SMALL;
    }
    memcpy(aBuffer, front.data(), front.size());
    *aSize = front.size();
    mQueue.pop_front();
    return GC_ERR_SUCCESS;
}

GC_ERROR Event::Wait(uint64_t aTimeoutMs) {
    std::unique_lock<std::mutex> hold(mLock);
    if (!WaitFor(mChanged, hold, aTimeoutMs, [&] { return mKilled || !mQueue.empty(); }))
        return GC_ERR_TIMEOUT;
    if (mKilled && mQueue.empty()) {
        mKilled = false;
        return GC_ERR_ABORT;
    }
    return GC_ERR_SUCCESS;
}

void Event::Kill() {
    {
        std::lock_guard<std::mutex> hold(mLock);
        mKilled = true;
    }
    mChanged.notify_all();
}

void Event::Flush() {
    std::lock_guard<std::mutex> hold(mLock);
    mQueue.clear();
}

size_t Event::Queued() {
    std::lock_guard<std::mutex> hold(mLock);
    return mQueue.size();
}

uint64_t Event::Fired() {
    std::lock_guard<std::mutex> hold(mLock);
    return mFired;
}

Union::~Union() {
    std::lock_guard<std::mutex> hold(mLock);
    for (Event* e : mEvents) {
        std::lock_guard<std::mutex> eventHold(e->mLock);
        e->mUnions.erase(this);
    }
}

GC_ERROR Union::Link(Event* aEvent) {
    std::lock_guard<std::mutex> hold(mLock);
    if (!mEvents.insert(aEvent).second) return GC_ERR_RESOURCE_IN_USE;
    std::lock_guard<std::mutex> eventHold(aEvent->mLock);
    aEvent->mUnions.insert(this);
    return GC_ERR_SUCCESS;
}

GC_ERROR Union::Unlink(Event* aEvent) {
    std::lock_guard<std::mutex> hold(mLock);
    if (mEvents.erase(aEvent) == 0) return GC_ERR_INVALID_HANDLE;
    std::lock_guard<std::mutex> eventHold(aEvent->mLock);
    aEvent->mUnions.erase(this);
    return GC_ERR_SUCCESS;
}

Event* Union::Ready() {
    for (Event* e : mEvents)
        if (e->Queued() != 0) return e;
    return nullptr;
}

GC_ERROR Union::Wait(Event** aEvent, uint64_t aTimeoutMs) {
    std::unique_lock<std::mutex> hold(mLock);
    Event* ready = nullptr;
    bool woke = WaitFor(mChanged, hold, aTimeoutMs, [&] {
        ready = mKilled ? nullptr : Ready();
        return mKilled || ready != nullptr;
    });
    if (mKilled) {
        mKilled = false;
        return GC_ERR_ABORT;
    }
    if (!woke || !ready) return GC_ERR_TIMEOUT;
    if (aEvent) *aEvent = ready;
    return GC_ERR_SUCCESS;
}

void Union::Kill() {
    {
        std::lock_guard<std::mutex> hold(mLock);
        mKilled = true;
    }
    mChanged.notify_all();
}

void Union::Notify() {
    // Taking the lock orders this after a waiter's test of its events.
    { std::lock_guard<std::mutex> hold(mLock); }
    mChanged.notify_all();
}

} // namespace sim
