// gik::cNotification: what a change tells the nodes that depend on it.
// The walks themselves are cRuntime::Invalidate, Propagate and
// Broadcast, in Notification.cpp.
#pragma once

#include "gik/Object.h"

namespace gik {

class pNode;

class cNotification : public pObject {
public:
    enum tType : u4 { kValueChanged = 1, kMemoryChanged = 2 };

    static cNotification* New(u4 aType, void* aOriginator, llk::pObject* aValue) {
        return Make<cNotification>(aType, aOriginator, aValue);
    }
    // Also usable on the stack, as the walks do; nothing may retain it then.
    cNotification() = default;
    cNotification(u4 aType, void* aOriginator, llk::pObject* aValue) {
        Initialize(aType, aOriginator, aValue);
    }
    i4 Initialize(u4 aType, void* aOriginator, llk::pObject* aValue);
    ~cNotification() override;
    u4 ClassCode() const override { return 0x10000009; }
    const char* ClassName() const override { return "cNotification"; }

    u4 Type() const { return mType; }
    void* Originator() const { return mOriginator; }
    pNode* Source() const { return mSource; }
    void SetSource(pNode* aSource) { mSource = aSource; }
    // The new value for type 1, the computed address (a gik::cValue) for type 2.
    llk::pObject* Value() const { return mValue; }

private:
    u4 mType = kValueChanged;
    void* mOriginator = nullptr; // not retained
    pNode* mSource = nullptr;    // not retained
    llk::pObject* mValue = nullptr;
};

} // namespace gik
