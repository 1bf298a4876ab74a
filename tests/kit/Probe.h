// A kit object that counts its destructions, for tests of reference rules.
#pragma once

#include <atomic>

#include "kit/Object.h"

namespace test {

inline std::atomic<int> gProbesDestroyed{0};

class cProbe : public llk::pObject {
public:
    static cProbe* New(int aValue = 0) { return Make<cProbe>(aValue); }
    llk::i4 Initialize(int aValue) {
        mValue = aValue;
        return llk::kOk;
    }
    ~cProbe() override { ++gProbesDestroyed; }
    int mValue = 0;
};

} // namespace test
