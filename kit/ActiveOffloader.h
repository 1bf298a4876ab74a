// A worker thread for blocking calls that must not sit on a scheduler runner:
// it runs a function, then may report to an object through an event.
#pragma once

#include "kit/ActiveScheduler.h"
#include "kit/Request.h"

namespace llk {

class cObjectQueue;
class cWhistle;

class cActiveOffloader : public pObject {
public:
    struct tSetup {
        u4 priority;
    };
    class pDelegate {
    public:
        virtual ~pDelegate() = default;
        // aScheduled: an event with the function as data went to the object.
        virtual void OnOffloaderDidExecute(cFunction* aFunction, bool aScheduled) {
            (void)aFunction, (void)aScheduled;
        }
        virtual void OnOffloaderDidCancel(cFunction* aFunction, bool aScheduled) {
            (void)aFunction, (void)aScheduled;
        }
    };
    using tFilter = bool (*)(cFunction* aFunction, void* aContext);

    // Starts the worker thread at once.
    static cActiveOffloader* New(const tSetup& aSetup, cActiveScheduler* aScheduler,
                                 pDelegate* aDelegate) {
        return Make<cActiveOffloader>(aSetup, aScheduler, aDelegate);
    }
    i4 Initialize(const tSetup& aSetup, cActiveScheduler* aScheduler, pDelegate* aDelegate);
    ~cActiveOffloader() override;
    u4 ClassCode() const override { return 54; }
    const char* ClassName() const override { return "cActiveOffloader"; }

    // Runs the function; only the delegate hears of it.
    i4 Submit(pActiveObject* aObject, cFunction* aFunction, u1 aPriority);
    // Runs the function, then schedules aCode on the object with it as data.
    i4 Submit(pActiveObject* aObject, cFunction* aFunction, const tActiveCode& aCode, u1 aPriority);
    // Takes back waiting jobs of the object (a null function: all of them);
    // aWait also waits for the one running, unless that is the caller.
    i4 Cancel(pActiveObject* aObject, cFunction* aFunction, bool aWait);
    i4 Cancel(pActiveObject* aObject, tFilter aFilter, void* aContext, bool aWait);
    // Stops the worker; later submits are refused.
    void Close();

private:
    class cPeon;
    class cShore;
    friend class cPeon;
    void PeonLoop();
    template <class Match> i4 CancelWhere(pActiveObject* aObject, Match aMatch, bool aWait);

    std::atomic<bool> mClosing{false};
    cMutex* mMutex = nullptr;
    cObjectQueue* mJobs = nullptr;
    cWhistle* mWork = nullptr;
    cWhistle* mDone = nullptr;
    cPeon* mPeon = nullptr;
    cShore* mCurrent = nullptr;
    cActiveScheduler* mScheduler = nullptr;
    pDelegate* mDelegate = nullptr;
};

} // namespace llk
