// The gate every flat entry passes: counts callers inside and can be closed,
// so that shutdown refuses new callers at once.
#pragma once

#include "kit/Whistle.h"

namespace llk {

class cJunction : public pObject {
public:
    static cJunction* New() { return Make<cJunction>(); }

    i4 Initialize() override;
    ~cJunction() override;
    u4 ClassCode() const override { return 44; }
    const char* ClassName() const override { return "cJunction"; }

    // Open: one more user, kOk. Closed with aTimeoutMs 0: kRefused at once.
    // Otherwise waits for the gate to open.
    i4 Enter(u4 aTimeoutMs);
    // One user fewer (never below 0); at 0 wakes every waiter.
    void Leave();
    // Opens or closes; closing does not wait for users.
    void Latch(bool aOpen);
    void CloseAndLeave();
    // Closes and waits while users remain.
    i4 CloseAndWait(u4 aTimeoutMs);
    // Waits while users remain and the gate stays closed.
    i4 Wait(u4 aTimeoutMs);
    u4 Users();
    bool IsOpen();

private:
    i4 WaitForUsers(u4 aTimeoutMs);

    cMutex* mMutex = nullptr;
    cWhistle* mWhistle = nullptr;
    bool mOpen = true;
    u4 mUsers = 0;
};

} // namespace llk
