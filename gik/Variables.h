// gik::cVariables: the named values a formula is evaluated over.
// A variable is found by the CRC-32 of its name, and the name itself is
// compared as well, so that two names with one checksum never mix.
#pragma once

#include "gik/Object.h"
#include "gik/Scalar.h"

namespace llk {
class cString;
}

namespace gik {

class cValue;

class cVariables : public pObject {
public:
    // Room for aCount variables (plus 2).
    static cVariables* New(u4 aCount) { return Make<cVariables>(aCount); }
    i4 Initialize(u4 aCount);
    ~cVariables() override;
    u4 ClassCode() const override { return 0x10000001; }
    const char* ClassName() const override { return "cVariables"; }

    // The name hash: CRC-32, reflected 0xEDB88320, start
    // 0xFFFFFFFF, no final inversion.
    static u4 Hash(const char* aName);

    // Stores a copy of the value (the text is retained); an absent value
    // unsets the variable. kNoMemory when no room is left.
    i4 Set(const char* aName, const cValue& aValue);
    i4 Set(const char* aName, const tScalar& aScalar);
    // The value of a set variable, or null.
    const tScalar* Find(u4 aHash, const char* aName) const;
    void Unset(const char* aName);
    void UnsetAll();
    u4 Count() const { return mCount; }

private:
    struct tEntry;
    tEntry* Slot(u4 aHash, const char* aName, bool aMake);

    tEntry* mEntries = nullptr;
    u4 mCount = 0;
    u4 mCapacity = 0;
};

} // namespace gik
