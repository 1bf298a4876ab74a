// Listeners turn a producer's blocking event reads into scheduled events:
// each event's data arrives at its actor as OnEventFired on a scheduler thread.
#pragma once

#include "engine/Producer.h"
#include "kit/ActiveScheduler.h"
#include "kit/Mutex.h"

namespace llk {
class cData;
class cObjectMap;
class cObjectPool;
} // namespace llk

namespace tvk {

class pListener : public llk::pObject {
public:
    virtual llk::i4 Initialize(llk::cActiveScheduler* aScheduler, cProducer* aProducer);
    ~pListener() override;
    // kDuplicate for a uid the object listens on already.
    virtual llk::i4 Start(llk::pActiveObject* aObject, llk::u4 aUid, gc::EVENT_HANDLE aEvent) = 0;
    // A uid of 0 ceases all the object's events; returns when no read is left.
    virtual llk::i4 Cease(llk::pActiveObject* aObject, llk::u4 aUid) = 0;
    // Gives a delivered data block back for reuse.
    void Recycle(llk::pObject* aData);

protected:
    // A block of at least aSize bytes, retained, or null.
    llk::cData* TakeBlock(llk::u4 aSize);
    // The data size of an event: at least 96, or what the producer says.
    llk::u4 DataSize(gc::EVENT_HANDLE aEvent);

    llk::cActiveScheduler* mScheduler = nullptr;
    cProducer* mProducer = nullptr;
    llk::cMutex* mMutex = nullptr;
    llk::cObjectPool* mBlocks = nullptr;
};

// One thread for each event, blocked in its read.
class cEventListener : public pListener {
public:
    static cEventListener* New(llk::cActiveScheduler* aScheduler, cProducer* aProducer) {
        return Make<cEventListener>(aScheduler, aProducer);
    }
    llk::i4 Initialize(llk::cActiveScheduler* aScheduler, cProducer* aProducer) override;
    ~cEventListener() override;
    llk::u4 ClassType() const;
    llk::i4 Start(llk::pActiveObject* aObject, llk::u4 aUid, gc::EVENT_HANDLE aEvent) override;
    llk::i4 Cease(llk::pActiveObject* aObject, llk::u4 aUid) override;

private:
    class cEventThread;
    friend class cEventThread;
    void StopThread(llk::pObject* aThread);

    llk::cObjectMap* mThreads = nullptr; // object to (uid to thread)
};

// One thread for all events, through the producer's union extension.
class cUnionListener : public pListener {
public:
    static cUnionListener* New(llk::cActiveScheduler* aScheduler, cProducer* aProducer) {
        return Make<cUnionListener>(aScheduler, aProducer);
    }
    llk::i4 Initialize(llk::cActiveScheduler* aScheduler, cProducer* aProducer) override;
    ~cUnionListener() override;
    llk::u4 ClassType() const;
    llk::i4 Start(llk::pActiveObject* aObject, llk::u4 aUid, gc::EVENT_HANDLE aEvent) override;
    llk::i4 Cease(llk::pActiveObject* aObject, llk::u4 aUid) override;

private:
    class cEntry;
    class cUnionThread;
    friend class cUnionThread;
    void Drop(llk::cObjectMap* aInner, llk::u8 aUid);

    gc::UNION_HANDLE mUnion = nullptr;
    llk::u4 mDataSize = 96;
    llk::cObjectMap* mEvents = nullptr;  // event to entry
    llk::cObjectMap* mObjects = nullptr; // object to (uid to entry)
    cUnionThread* mThread = nullptr;
};

} // namespace tvk
