// The one shared object of the engine: the handle table that turns handles
// into proxies, pools of reusable small objects, interned strings and the
// settings read from the file beside the library.
#pragma once

#include "engine/Proxy.h"
#include "kit/Mutex.h"

namespace llk {
class cObjectHeap;
class cObjectList;
class cStringCache;
class cTaggedPool;
class cXMLBundle;
} // namespace llk

namespace tvk {

class cGlobal : public llk::pObject {
public:
    // aAddressInLibrary locates the library file, and so its settings file.
    static cGlobal* New(const void* aAddressInLibrary) { return Make<cGlobal>(aAddressInLibrary); }
    static cGlobal* Shared();

    llk::i4 Initialize(const void* aAddressInLibrary);
    ~cGlobal() override;
    llk::u4 ClassType() const { return kTypeGlobal; }

    // The settings, or null when there is no readable settings file.
    llk::cXMLBundle* Settings() const { return mSettings; }
    // Whether device documents are read in the kernel's wide reading:
    // kWideReadingVariable when it is "1" or "0", else the setting
    // "Settings/Kernel/WideReading" (default false). Asked each time a
    // feature container is prepared, so a change applies to the next.
    static bool WideReading();
    // The same choice over aSettings (may be null).
    static bool WideReading(llk::cXMLBundle* aSettings);
    static constexpr const char* kWideReadingVariable = "TAVIK_WIDE_READING";

    // Pools of reusable objects by tag.
    llk::i4 Discard(const char* aTag, llk::pObject* aObject);
    llk::pObject* Recycle(const char* aTag);
    // A message for an actor: a pooled one, or a new one; autoreleased.
    llk::cMessage* NewMessage(llk::u4 aUid, llk::u4 aTag);
    // The one interned copy of a text; valid for the life of the global.
    llk::cString* Cache(const char* aText);

    // A disabled table refuses inserts.
    void Disable(bool aDisable);
    // kOk, kRefused when disabled, kDuplicate when already in. Writes the
    // handle to aHandle (may be null) and to the proxy.
    llk::i4 Insert(pProxy* aProxy, llk::u4* aHandle);
    // kOk or kNotFound; the table's reference is released unlocked.
    llk::i4 Remove(pProxy* aProxy);
    llk::i4 Remove(llk::u4 aType, llk::u4 aHandle);
    void RemoveAll();
    void RemoveAll(llk::u4 aType);

    // Retained proxies, or null.
    pProxy* Search(llk::u4 aHandle);
    pProxy* Search(llk::u4 aType, llk::u4 aHandle);
    pProxy* Search(llk::u4 aType, const pProxy* aParent);
    pProxy* Search(llk::u4 aType, const char* aIdString, llk::u4* aHandle);
    // Appends matching proxies to aList, which retains them.
    void Enumerate(llk::cObjectList* aList);
    void Enumerate(llk::u4 aType, llk::cObjectList* aList);
    void Enumerate(llk::u4 aType, const pProxy* aParent, llk::cObjectList* aList);

    // The settings file for a library path: "x.so" reads "x.xml" beside it;
    // any other name reads "./TavikC.xml".
    static bool SettingsPath(const char* aLibraryPath, char* aPath, size_t aSize);

private:
    template <class Match> pProxy* Find(Match&& aMatch, llk::u4* aHandle = nullptr);
    template <class Match> void Collect(Match&& aMatch, llk::cObjectList* aList);
    llk::i4 Take(pProxy* aProxy, llk::u4 aHandle);

    llk::cMutex* mMutex = nullptr;
    llk::cObjectHeap* mTable = nullptr;
    llk::cStringCache* mCache = nullptr;
    llk::cTaggedPool* mPools = nullptr;
    llk::cXMLBundle* mSettings = nullptr;
    bool mDisabled = false;
};

} // namespace tvk
