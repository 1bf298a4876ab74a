#include "engine/Global.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kit/Env.h"
#include "kit/ObjectHeap.h"
#include "kit/ObjectList.h"
#include "kit/ObjectPool.h"
#include "kit/StringCache.h"
#include "kit/XMLBundle.h"

namespace tvk {

namespace {
std::atomic<cGlobal*> gShared{nullptr};
constexpr llk::tRangeWord kHandleRange{100, 10000};
} // namespace

cGlobal* cGlobal::Shared() {
    return gShared.load(std::memory_order_acquire);
}

bool cGlobal::SettingsPath(const char* aLibraryPath, char* aPath, size_t aSize) {
    if (!aLibraryPath) return false;
    const char* dot = strrchr(aLibraryPath, '.');
    const char* slash = strrchr(aLibraryPath, '/');
    if (dot && slash && dot < slash) dot = nullptr;
    int n;
    if (!dot)
        n = snprintf(aPath, aSize, "%s", aLibraryPath);
    else if (strcmp(dot, ".so") == 0)
        n = snprintf(aPath, aSize, "%.*s.xml", static_cast<int>(dot - aLibraryPath), aLibraryPath);
    else
        n = snprintf(aPath, aSize, "./TavikC.xml");
    return n > 0 && static_cast<size_t>(n) < aSize;
}

bool cGlobal::WideReading() {
    cGlobal* global = Shared();
    return WideReading(global ? global->mSettings : nullptr);
}

bool cGlobal::WideReading(llk::cXMLBundle* aSettings) {
    if (const char* chosen = getenv(kWideReadingVariable)) {
        if (strcmp(chosen, "1") == 0) return true;
        if (strcmp(chosen, "0") == 0) return false;
    }
    bool wide = false;
    if (aSettings) aSettings->FetchBool("Settings/Kernel/WideReading", wide);
    return wide;
}

llk::i4 cGlobal::Initialize(const void* aAddressInLibrary) {
    cGlobal* expected = nullptr;
    if (!gShared.compare_exchange_strong(expected, this)) return llk::kDuplicate;
    mMutex = llk::Retained(llk::cMutex::New());
    mTable = llk::Retained(llk::cObjectHeap::New(64, &kHandleRange));
    mCache = llk::Retained(llk::cStringCache::New());
    mPools = llk::Retained(llk::cTaggedPool::New());
    if (!mMutex || !mTable || !mCache || !mPools) return llk::kNoMemory;

    // Settings are optional: a missing or unreadable file leaves defaults.
    char* library = llk::sEnv::GetLibPath(aAddressInLibrary);
    char path[4096];
    if (library && SettingsPath(library, path, sizeof(path)))
        mSettings = llk::Retained(llk::cXMLBundle::New(path, mMutex));
    llk::sEnv::Free(library);
    return llk::kOk;
}

cGlobal::~cGlobal() {
    cGlobal* self = this;
    gShared.compare_exchange_strong(self, nullptr);
    llk::ReleaseAndClear(mMutex);
    llk::ReleaseAndClear(mTable);
    llk::ReleaseAndClear(mCache);
    llk::ReleaseAndClear(mPools);
    llk::ReleaseAndClear(mSettings);
}

llk::i4 cGlobal::Discard(const char* aTag, llk::pObject* aObject) {
    llk::uLock hold(mMutex);
    return mPools->Push(aTag, aObject);
}

llk::pObject* cGlobal::Recycle(const char* aTag) {
    llk::uLock hold(mMutex);
    return mPools->Pop(aTag);
}

llk::cMessage* cGlobal::NewMessage(llk::u4 aUid, llk::u4 aTag) {
    auto* message = static_cast<llk::cMessage*>(Recycle("cMessage"));
    if (!message && !(message = llk::cMessage::New())) return nullptr;
    message->SetUid(aUid);
    message->SetTag(aTag);
    return message;
}

llk::cString* cGlobal::Cache(const char* aText) {
    llk::uLock hold(mMutex);
    return mCache->Store(aText);
}

void cGlobal::Disable(bool aDisable) {
    llk::uLock hold(mMutex);
    mDisabled = aDisable;
}

llk::i4 cGlobal::Insert(pProxy* aProxy, llk::u4* aHandle) {
    if (!aProxy) return llk::kNoMemory;
    llk::uLock hold(mMutex);
    if (mDisabled) return llk::kRefused;
    llk::u4 handle = 0;
    if (mTable->Contains(aProxy, &handle)) return llk::kDuplicate;
    llk::i4 status = mTable->Store(aProxy, &handle);
    if (status != llk::kOk) return status;
    aProxy->SetHandle(handle);
    if (aHandle) *aHandle = handle;
    return llk::kOk;
}

// Takes the entry out with the mutex held; the caller releases unlocked.
llk::i4 cGlobal::Take(pProxy* aProxy, llk::u4 aHandle) {
    if (!mTable->Remove(aHandle, false)) return llk::kNotFound;
    aProxy->SetHandle(0);
    return llk::kOk;
}

llk::i4 cGlobal::Remove(pProxy* aProxy) {
    if (!aProxy) return llk::kNotFound;
    llk::i4 status;
    {
        llk::uLock hold(mMutex);
        llk::u4 handle = 0;
        if (!mTable->Contains(aProxy, &handle)) return llk::kNotFound;
        status = Take(aProxy, handle);
    }
    // A release can run a whole actor's shutdown, which uses the table.
    if (status == llk::kOk) aProxy->Release();
    return status;
}

llk::i4 cGlobal::Remove(llk::u4 aType, llk::u4 aHandle) {
    pProxy* proxy;
    {
        llk::uLock hold(mMutex);
        proxy = static_cast<pProxy*>(mTable->Fetch(aHandle));
        if (!proxy || proxy->ClassType() != aType) return llk::kNotFound;
        Take(proxy, aHandle);
    }
    proxy->Release();
    return llk::kOk;
}

void cGlobal::RemoveAll() {
    for (;;) {
        pProxy* proxy;
        {
            llk::uLock hold(mMutex);
            llk::u4 handle = 0;
            proxy = static_cast<pProxy*>(mTable->AtIndex(0, &handle));
            if (!proxy) return;
            Take(proxy, handle);
        }
        proxy->Release();
    }
}

void cGlobal::RemoveAll(llk::u4 aType) {
    llk::u4 index = 0;
    for (;;) {
        pProxy* proxy;
        {
            llk::uLock hold(mMutex);
            llk::u4 handle = 0;
            proxy = static_cast<pProxy*>(mTable->AtIndex(index, &handle));
            if (!proxy) return;
            if (proxy->ClassType() != aType) {
                ++index; // the index only moves past entries that stay
                continue;
            }
            Take(proxy, handle);
        }
        proxy->Release();
    }
}

template <class Match> pProxy* cGlobal::Find(Match&& aMatch, llk::u4* aHandle) {
    llk::uLock hold(mMutex);
    llk::u4 handle = 0;
    for (llk::u4 i = 0; auto* proxy = static_cast<pProxy*>(mTable->AtIndex(i, &handle)); ++i) {
        if (aHandle) *aHandle = handle;
        if (aMatch(proxy)) return llk::Retained(proxy);
    }
    return nullptr;
}

template <class Match> void cGlobal::Collect(Match&& aMatch, llk::cObjectList* aList) {
    if (!aList) return;
    llk::uLock hold(mMutex);
    for (llk::u4 i = 0; auto* proxy = static_cast<pProxy*>(mTable->AtIndex(i, nullptr)); ++i)
        if (aMatch(proxy)) aList->Append(proxy, true);
}

pProxy* cGlobal::Search(llk::u4 aHandle) {
    llk::uLock hold(mMutex);
    return llk::Retained(static_cast<pProxy*>(mTable->Fetch(aHandle)));
}

pProxy* cGlobal::Search(llk::u4 aType, llk::u4 aHandle) {
    llk::uLock hold(mMutex);
    auto* proxy = static_cast<pProxy*>(mTable->Fetch(aHandle));
    return proxy && proxy->ClassType() == aType ? llk::Retained(proxy) : nullptr;
}

pProxy* cGlobal::Search(llk::u4 aType, const pProxy* aParent) {
    return Find([&](pProxy* p) { return p->ClassType() == aType && p->Parent() == aParent; });
}

pProxy* cGlobal::Search(llk::u4 aType, const char* aIdString, llk::u4* aHandle) {
    if (!aIdString) return nullptr;
    return Find(
        [&](pProxy* p) {
            return p->ClassType() == aType && p->Identifier() &&
                   strcmp(p->Identifier()->Chars(), aIdString) == 0;
        },
        aHandle);
}

void cGlobal::Enumerate(llk::cObjectList* aList) {
    Collect([](pProxy*) { return true; }, aList);
}

void cGlobal::Enumerate(llk::u4 aType, llk::cObjectList* aList) {
    Collect([&](pProxy* p) { return p->ClassType() == aType; }, aList);
}

void cGlobal::Enumerate(llk::u4 aType, const pProxy* aParent, llk::cObjectList* aList) {
    Collect([&](pProxy* p) { return p->ClassType() == aType && p->Parent() == aParent; }, aList);
}

} // namespace tvk
