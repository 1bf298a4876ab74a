// The reference-counted root of kit, kernel and engine objects.
//
// A class-level New() constructs, runs the second construction phase
// (Initialize) and hands the object to the calling thread's autorelease pool,
// so a caller who keeps it must Retain it.
#pragma once

#include <atomic>
#include <new>
#include <utility>

#include "kit/Status.h"

namespace llk {

class cString;

class pObject {
public:
    pObject() = default;
    pObject(const pObject&) = delete;
    pObject& operator=(const pObject&) = delete;
    virtual ~pObject() = default;

    // Second construction phase; a failure makes New destroy the object.
    virtual i4 Initialize() { return kOk; }
    virtual u4 ClassCode() const { return 0; }
    virtual const char* ClassName() const { return "pObject"; }
    // A new autoreleased "<name: 0xaddress>" text.
    virtual cString* Description() const;

    pObject* Retain();
    // Destroys at a count of 1; the count is never seen at 0.
    void Release();
    // Hands one reference to the calling thread's top pool.
    pObject* Autorelease();
    u4 RetainCount() const { return mRetainCount.load(std::memory_order_acquire); }

    u4 GetStamp() const { return mStamp; }
    void SetStamp(u4 aStamp) { mStamp = aStamp; }

    // Every kit object starts zero-filled.
    static void* operator new(size_t aSize);
    static void* operator new(size_t aSize, const std::nothrow_t&) noexcept;
    static void operator delete(void* aPtr) noexcept;

protected:
    // Builds an object of class T with the second phase taking aArgs, and
    // autoreleases it; null when memory or Initialize fails.
    template <class T, class... A> static T* Make(A&&... aArgs) {
        T* object = new (std::nothrow) T();
        if (!object) return nullptr;
        if (object->Initialize(std::forward<A>(aArgs)...) != kOk) {
            delete object;
            return nullptr;
        }
        object->Autorelease();
        return object;
    }

private:
    std::atomic<u4> mRetainCount{1};
    u4 mStamp = 0;
};

// Retains aObject if non-null and returns it, typed.
template <class T> inline T* Retained(T* aObject) {
    if (aObject) aObject->Retain();
    return aObject;
}

// Releases *aSlot if set and clears it.
template <class T> inline void ReleaseAndClear(T*& aSlot) {
    if (aSlot) {
        T* object = aSlot;
        aSlot = nullptr;
        object->Release();
    }
}

// Replaces *aSlot by aObject, retaining the new and releasing the old.
template <class T> inline void Assign(T*& aSlot, T* aObject) {
    if (aSlot == aObject) return;
    if (aObject) aObject->Retain();
    T* old = aSlot;
    aSlot = aObject;
    if (old) old->Release();
}

} // namespace llk
