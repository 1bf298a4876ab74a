// A flag that threads wait on to reach a wanted value (not counting).
#pragma once

#include "kit/Whistle.h"

namespace llk {

class cSemaphore : public pObject {
public:
    static cSemaphore* New(bool aState = false) { return Make<cSemaphore>(aState); }

    i4 Initialize(bool aState);
    ~cSemaphore() override;
    u4 ClassCode() const override { return 42; }
    const char* ClassName() const override { return "cSemaphore"; }

    // Waits until the state equals aValue. A timeout of 0 on entry returns
    // kOk at once without testing the state.
    i4 Wait(bool aValue, u4& aTimeoutMs);
    i4 Wait(bool aValue);
    void Signal(bool aValue);
    void Cancel();
    bool State();

private:
    cMutex* mMutex = nullptr;
    cWhistle* mWhistle = nullptr;
    bool mState = false;
};

} // namespace llk
