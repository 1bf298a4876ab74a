#include "engine/Listener.h"

#include "engine/Helper.h"
#include "engine/Proxy.h"
#include "kit/AutoreleasePool.h"
#include "kit/Data.h"
#include "kit/ObjectMap.h"
#include "kit/ObjectPool.h"
#include "kit/Thread.h"

namespace tvk {

namespace {
constexpr llk::u4 kMinimumDataSize = 96;
llk::cObjectMap::tKey KeyOf(const void* aPointer) {
    return reinterpret_cast<uintptr_t>(aPointer);
}
} // namespace

// ---- pListener ---------------------------------------------------------------

llk::i4 pListener::Initialize(llk::cActiveScheduler* aScheduler, cProducer* aProducer) {
    if (!aScheduler || !aProducer) return llk::kNoMemory;
    mScheduler = llk::Retained(aScheduler);
    mProducer = llk::Retained(aProducer);
    mMutex = llk::Retained(llk::cMutex::New());
    mBlocks = llk::Retained(llk::cObjectPool::New(32, 0));
    return mMutex && mBlocks ? llk::kOk : llk::kNoMemory;
}

pListener::~pListener() {
    llk::ReleaseAndClear(mBlocks);
    llk::ReleaseAndClear(mMutex);
    llk::ReleaseAndClear(mProducer);
    llk::ReleaseAndClear(mScheduler);
}

llk::cData* pListener::TakeBlock(llk::u4 aSize) {
    llk::cData* block = nullptr;
    {
        llk::uLock hold(mMutex);
        block = static_cast<llk::cData*>(mBlocks->Pop());
    }
    if (block) {
        if (block->GetCapacity() < aSize && block->SetCapacity(aSize) != llk::kOk) block = nullptr;
    } else {
        block = llk::cData::New(aSize);
    }
    return llk::Retained(block);
}

void pListener::Recycle(llk::pObject* aData) {
    auto* block = static_cast<llk::cData*>(aData);
    if (!block) return;
    block->Clear();
    llk::uLock hold(mMutex);
    mBlocks->Push(block);
}

llk::u4 pListener::DataSize(gc::EVENT_HANDLE aEvent) {
    size_t size = 0, length = sizeof(size);
    gc::INFO_DATATYPE type = 0;
    if (!mProducer->EventInfo(aEvent, gc::EVENT_SIZE_MAX, &type, &size, &length, nullptr)) size = 0;
    return size > kMinimumDataSize ? static_cast<llk::u4>(size) : kMinimumDataSize;
}

// ---- cEventListener ------------------------------------------------------------

class cEventListener::cEventThread : public llk::pThread {
public:
    static cEventThread* New(cEventListener* aOwner, llk::pActiveObject* aObject, llk::u4 aUid,
                             gc::EVENT_HANDLE aEvent) {
        return Make<cEventThread>(aOwner, aObject, aUid, aEvent);
    }
    llk::i4 Initialize(cEventListener* aOwner, llk::pActiveObject* aObject, llk::u4 aUid,
                       gc::EVENT_HANDLE aEvent) {
        mOwner = aOwner;
        mObject = llk::Retained(aObject);
        mUid = aUid;
        mEvent = aEvent;
        mSize = aOwner->DataSize(aEvent);
        return pThread::Initialize();
    }
    ~cEventThread() override { llk::ReleaseAndClear(mObject); }

    llk::i4 Stop() override {
        mStop.store(true);
        // Wakes the blocking read.
        mOwner->mProducer->EventKill(mEvent, nullptr);
        return llk::kOk;
    }

    llk::i4 Run() override {
        llk::uAutoreleasePool pool;
        while (!mStop.load()) {
            llk::cData* block = mOwner->TakeBlock(mSize);
            if (!block) break;
            size_t length = block->GetCapacity();
            if (mOwner->mProducer->EventGetData(mEvent, block->Bytes(), &length, GENTL_INFINITE,
                                                nullptr) &&
                !mStop.load()) {
                block->SetLength(static_cast<llk::u4>(length));
                mOwner->mScheduler->Schedule(mObject, llk::MakeActiveCode(mUid, kKindEvent, 0),
                                             block, 0);
            } else {
                mOwner->Recycle(block);
            }
            block->Release();
            pool.Sink();
        }
        return 0;
    }

private:
    cEventListener* mOwner = nullptr;
    llk::pActiveObject* mObject = nullptr;
    llk::u4 mUid = 0;
    llk::u4 mSize = kMinimumDataSize;
    gc::EVENT_HANDLE mEvent = nullptr;
    std::atomic<bool> mStop{false};
};

llk::i4 cEventListener::Initialize(llk::cActiveScheduler* aScheduler, cProducer* aProducer) {
    llk::i4 status = pListener::Initialize(aScheduler, aProducer);
    if (status != llk::kOk) return status;
    mThreads = llk::Retained(llk::cObjectMap::New(16, 0.0f, true));
    return mThreads ? llk::kOk : llk::kNoMemory;
}

cEventListener::~cEventListener() {
    if (mThreads) {
        llk::cObjectMap::tKey object = 0;
        while (mThreads->AtIndex(0, &object))
            Cease(reinterpret_cast<llk::pActiveObject*>(object), 0);
    }
    llk::ReleaseAndClear(mThreads);
}

llk::u4 cEventListener::ClassType() const {
    return kTypeEventListener;
}

llk::i4 cEventListener::Start(llk::pActiveObject* aObject, llk::u4 aUid, gc::EVENT_HANDLE aEvent) {
    llk::uLock hold(mMutex);
    auto* inner = static_cast<llk::cObjectMap*>(mThreads->Fetch(KeyOf(aObject)));
    bool made = false;
    if (!inner) {
        inner = llk::cObjectMap::New(4, 0.0f, true);
        if (!inner || mThreads->Store(KeyOf(aObject), inner) != llk::kOk) return llk::kNoMemory;
        made = true;
    }
    if (inner->Contains(llk::cObjectMap::tKey{aUid})) return llk::kDuplicate;
    cEventThread* thread = cEventThread::New(this, aObject, aUid, aEvent);
    llk::i4 status = thread ? inner->Store(llk::cObjectMap::tKey{aUid}, thread) : llk::kNoMemory;
    if (status == llk::kOk) {
        status = thread->Start();
        if (status != llk::kOk) inner->Remove(llk::cObjectMap::tKey{aUid});
    }
    if (status != llk::kOk && made) mThreads->Remove(KeyOf(aObject));
    return status;
}

// With the lock held; joins without it, asking again until the read is left.
void cEventListener::StopThread(llk::pObject* aThread) {
    auto* thread = static_cast<cEventThread*>(aThread);
    do {
        thread->Stop();
        mMutex->Unlock();
        llk::i4 status = thread->Join(50);
        mMutex->Lock();
        if (status == llk::kOk) break;
    } while (true);
}

llk::i4 cEventListener::Cease(llk::pActiveObject* aObject, llk::u4 aUid) {
    llk::uLock hold(mMutex);
    auto* inner = llk::Retained(static_cast<llk::cObjectMap*>(mThreads->Fetch(KeyOf(aObject))));
    if (!inner) return aUid ? llk::kDuplicate : llk::kOk;
    llk::i4 status = llk::kOk;
    if (aUid != 0) {
        llk::pObject* thread = llk::Retained(inner->Fetch(llk::cObjectMap::tKey{aUid}));
        if (!thread) {
            status = llk::kDuplicate;
        } else {
            StopThread(thread);
            inner->Remove(llk::cObjectMap::tKey{aUid});
            thread->Release();
        }
    } else {
        llk::cObjectMap::tKey uid = 0;
        while (llk::pObject* thread = llk::Retained(inner->AtIndex(0, &uid))) {
            StopThread(thread);
            inner->Remove(uid);
            thread->Release();
        }
    }
    if (inner->Count() == 0) mThreads->Remove(KeyOf(aObject));
    inner->Release();
    return status;
}

// ---- cUnionListener ----------------------------------------------------------------

// What one linked event stands for: its object and uid.
class cUnionListener::cEntry : public llk::pObject {
public:
    ~cEntry() override { llk::ReleaseAndClear(object); }
    llk::pActiveObject* object = nullptr;
    llk::u4 uid = 0;
    gc::EVENT_HANDLE event = nullptr;
};

class cUnionListener::cUnionThread : public llk::pThread {
public:
    static cUnionThread* New(cUnionListener* aOwner) { return Make<cUnionThread>(aOwner); }
    llk::i4 Initialize(cUnionListener* aOwner) {
        mOwner = aOwner;
        return pThread::Initialize();
    }
    llk::i4 Stop() override {
        {
            llk::uLock hold(mOwner->mMutex);
            mStop.store(true);
        }
        mOwner->mProducer->UnionKill(mOwner->mUnion, nullptr);
        return llk::kOk;
    }
    llk::i4 Run() override {
        llk::uAutoreleasePool pool;
        while (!mStop.load()) {
            gc::EVENT_HANDLE event = nullptr;
            bool fired =
                mOwner->mProducer->UnionWait(mOwner->mUnion, GENTL_INFINITE, &event, nullptr);
            llk::uLock hold(mOwner->mMutex);
            // An event unlinked meanwhile is dropped.
            auto* entry = static_cast<cEntry*>(mOwner->mEvents->Fetch(KeyOf(event)));
            if (mStop.load() || !fired || !entry) continue;
            llk::cData* block = mOwner->TakeBlock(mOwner->mDataSize);
            if (!block) continue;
            size_t length = block->GetCapacity();
            if (mOwner->mProducer->EventGetData(event, block->Bytes(), &length, 0, nullptr)) {
                block->SetLength(static_cast<llk::u4>(length));
                mOwner->mScheduler->Schedule(
                    entry->object, llk::MakeActiveCode(entry->uid, kKindEvent, 0), block, 0);
            } else {
                mOwner->Recycle(block);
            }
            block->Release();
            pool.Sink();
        }
        return 0;
    }

private:
    cUnionListener* mOwner = nullptr;
    std::atomic<bool> mStop{false};
};

llk::i4 cUnionListener::Initialize(llk::cActiveScheduler* aScheduler, cProducer* aProducer) {
    llk::i4 status = pListener::Initialize(aScheduler, aProducer);
    if (status != llk::kOk) return status;
    mEvents = llk::Retained(llk::cObjectMap::New(16, 0.0f, true));
    mObjects = llk::Retained(llk::cObjectMap::New(16, 0.0f, true));
    if (!mEvents || !mObjects) return llk::kNoMemory;
    if (!mProducer->UnionCreate(&mUnion, nullptr)) return llk::kBadArgument;
    mThread = llk::Retained(cUnionThread::New(this));
    return mThread ? mThread->Start() : llk::kNoMemory;
}

cUnionListener::~cUnionListener() {
    if (mThread) {
        while (mThread->StopAndJoin(100) == llk::kTimedOut) {
        }
        llk::ReleaseAndClear(mThread);
    }
    if (mUnion) mProducer->UnionDelete(mUnion, nullptr);
    llk::ReleaseAndClear(mObjects);
    llk::ReleaseAndClear(mEvents);
}

llk::u4 cUnionListener::ClassType() const {
    return kTypeUnionListener;
}

llk::i4 cUnionListener::Start(llk::pActiveObject* aObject, llk::u4 aUid, gc::EVENT_HANDLE aEvent) {
    llk::uLock hold(mMutex);
    if (mEvents->Contains(KeyOf(aEvent))) return llk::kDuplicate;
    auto* inner = static_cast<llk::cObjectMap*>(mObjects->Fetch(KeyOf(aObject)));
    bool made = false;
    if (!inner) {
        inner = llk::cObjectMap::New(4, 0.0f, true);
        if (!inner || mObjects->Store(KeyOf(aObject), inner) != llk::kOk) return llk::kNoMemory;
        made = true;
    }
    if (inner->Contains(llk::cObjectMap::tKey{aUid})) return llk::kDuplicate;
    auto* entry = new (std::nothrow) cEntry();
    if (!entry) return llk::kNoMemory;
    entry->object = llk::Retained(aObject);
    entry->uid = aUid;
    entry->event = aEvent;
    llk::i4 status = mEvents->Store(KeyOf(aEvent), entry);
    if (status == llk::kOk) status = inner->Store(llk::cObjectMap::tKey{aUid}, entry);
    entry->Release();
    if (status == llk::kOk && !mProducer->UnionLinkup(mUnion, aEvent, nullptr))
        status = llk::kBadArgument;
    if (status != llk::kOk) {
        mEvents->Remove(KeyOf(aEvent));
        inner->Remove(llk::cObjectMap::tKey{aUid});
        if (made) mObjects->Remove(KeyOf(aObject));
        return status;
    }
    llk::u4 size = DataSize(aEvent);
    if (size > mDataSize) mDataSize = size; // only grows
    return llk::kOk;
}

// With the lock held.
void cUnionListener::Drop(llk::cObjectMap* aInner, llk::u8 aUid) {
    auto* entry = static_cast<cEntry*>(aInner->Fetch(aUid));
    mEvents->Remove(KeyOf(entry->event));
    mProducer->UnionUnlink(mUnion, entry->event, nullptr);
    aInner->Remove(aUid);
}

llk::i4 cUnionListener::Cease(llk::pActiveObject* aObject, llk::u4 aUid) {
    llk::uLock hold(mMutex);
    auto* inner = static_cast<llk::cObjectMap*>(mObjects->Fetch(KeyOf(aObject)));
    if (!inner) return llk::kDuplicate;
    if (aUid != 0) {
        if (!inner->Contains(llk::cObjectMap::tKey{aUid})) return llk::kNotFound;
        Drop(inner, aUid);
    } else {
        llk::cObjectMap::tKey uid = 0;
        while (inner->AtIndex(0, &uid))
            Drop(inner, uid);
    }
    if (inner->Count() == 0) mObjects->Remove(KeyOf(aObject));
    return llk::kOk;
}

} // namespace tvk
