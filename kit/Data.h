// A byte buffer.
#pragma once

#include "kit/Object.h"

namespace llk {

class cData : public pObject {
public:
    static cData* New(u4 aCapacity = 64) { return Make<cData>(aCapacity); }
    static cData* New(const void* aBytes, u4 aLength) { return Make<cData>(aBytes, aLength); }

    i4 Initialize() override { return Initialize(64u); }
    i4 Initialize(u4 aCapacity);
    i4 Initialize(const void* aBytes, u4 aLength);
    ~cData() override;
    u4 ClassCode() const override { return 7; }
    const char* ClassName() const override { return "cData"; }

    // Zeroes the used bytes; length 0.
    void Clear();
    u1* Bytes() const { return mBytes; }
    u4 GetLength() const { return mLength; }
    u4 GetCapacity() const { return mCapacity; }
    // A smaller capacity cuts the length; kNoMemory keeps the data.
    i4 SetCapacity(u4 aCapacity);
    // Takes aLength, or the capacity when that is smaller.
    void SetLength(u4 aLength);
    // False when aLength exceeds the capacity.
    bool Store(const void* aBytes, u4 aLength);
    // False when aLength exceeds the length.
    bool Read(void* aDest, u4 aLength) const;

private:
    u1* mBytes = nullptr;
    u4 mLength = 0;
    u4 mCapacity = 0;
};

} // namespace llk
