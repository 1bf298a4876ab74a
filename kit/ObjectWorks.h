// A three-station work queue: a client submits an object, a server accepts,
// works on and returns it, and the client collects it. The client's wait
// spins briefly before it parks, since the answer usually comes quickly.
#pragma once

#include "kit/Whistle.h"

namespace llk {

class cObjectList;
class cObjectQueue;

class cObjectWorks : public pObject {
public:
    using tFilter = bool (*)(pObject* aObject, void* aContext);

    // A null mutex: the works uses one of its own.
    static cObjectWorks* New(u4 aCapacity = 8, cMutex* aMutex = nullptr) {
        return Make<cObjectWorks>(aCapacity, aMutex);
    }
    i4 Initialize(u4 aCapacity, cMutex* aMutex);
    ~cObjectWorks() override;
    u4 ClassCode() const override { return 49; }
    const char* ClassName() const override { return "cObjectWorks"; }

    // Client side.
    i4 Submit(pObject* aObject, u1 aPriority);
    // Waits until aObject is returned (0: for ever) and takes it out.
    i4 Expect(pObject* aObject, u4 aTimeoutMs);
    // Takes back an object not yet accepted; otherwise as Expect.
    i4 Cancel(pObject* aObject, u4 aTimeoutMs);

    // Server side. The accepted object sits in the current pool.
    i4 Accept(pObject*& aObject);
    i4 Accept(pObject*& aObject, u4 aTimeoutMs);
    i4 Accept(pObject*& aObject, tFilter aFilter, void* aContext);
    i4 Return(pObject* aObject);
    i4 ReturnAndAccept(pObject* aReturned, pObject*& aObject);
    i4 Drop(pObject* aObject);
    // Every active, then every waiting object is returned as it stands.
    void RejectAll();
    void Disable(bool aDisable);
    u4 Count();

private:
    i4 AcceptLocked(pObject*& aObject);
    i4 ReturnLocked(pObject* aObject);
    i4 WaitFinished(pObject* aObject, u4 aTimeoutMs);

    cMutex* mMutex = nullptr;
    cWhistle* mWork = nullptr;
    cWhistle* mDone = nullptr;
    cObjectQueue* mWaiting = nullptr;
    cObjectList* mActive = nullptr;
    cObjectList* mFinished = nullptr;
    bool mEnabled = true;
    std::atomic<u4> mReturned{0}; // bumped on every return, for spinning clients
};

} // namespace llk
