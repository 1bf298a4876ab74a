#include "gik/Variables.h"

#include <cstring>

#include "gik/Value.h"
#include "kit/Env.h"
#include "kit/String.h"

namespace gik {

struct cVariables::tEntry {
    u4 hash;
    bool set;
    char* name;
    tScalar value;
    llk::cString* text; // retained holder of a text value
};

i4 cVariables::Initialize(u4 aCount) {
    if (aCount > 0x00FFFFFFu) return kNoMemory;
    mCapacity = aCount + 2;
    mEntries = static_cast<tEntry*>(llk::sEnv::Malloc(sizeof(tEntry) * mCapacity, true));
    return mEntries ? kOk : kNoMemory;
}

cVariables::~cVariables() {
    for (u4 i = 0; i < mCount; ++i) {
        llk::sEnv::Free(mEntries[i].name);
        llk::ReleaseAndClear(mEntries[i].text);
    }
    llk::sEnv::Free(mEntries);
}

u4 cVariables::Hash(const char* aName) {
    return llk::sEnv::Crc32(aName ? aName : "", aName ? strlen(aName) : 0);
}

cVariables::tEntry* cVariables::Slot(u4 aHash, const char* aName, bool aMake) {
    for (u4 i = 0; i < mCount; ++i)
        if (mEntries[i].hash == aHash && strcmp(mEntries[i].name, aName) == 0) return &mEntries[i];
    if (!aMake) return nullptr;
    if (mCount == mCapacity) {
        u4 capacity = mCapacity * 2;
        auto* grown = static_cast<tEntry*>(
            llk::sEnv::Resize(mEntries, sizeof(tEntry) * capacity, sizeof(tEntry) * mCapacity));
        if (!grown) return nullptr;
        mEntries = grown;
        mCapacity = capacity;
    }
    size_t length = strlen(aName);
    char* name = static_cast<char*>(llk::sEnv::Malloc(length + 1, false));
    if (!name) return nullptr;
    memcpy(name, aName, length + 1);
    tEntry* e = &mEntries[mCount++];
    e->hash = aHash;
    e->set = false;
    e->name = name;
    e->value = tScalar();
    e->text = nullptr;
    return e;
}

i4 cVariables::Set(const char* aName, const tScalar& aScalar) {
    if (!aName) return kNothing;
    tEntry* e = Slot(Hash(aName), aName, true);
    if (!e) return kNoMemory;
    llk::ReleaseAndClear(e->text);
    e->value = aScalar;
    e->value.text = nullptr;
    if (aScalar.number) {
        e->set = true;
    } else if (aScalar.flavour == kFlavourText && aScalar.text) {
        e->text = llk::Retained(const_cast<llk::cString*>(aScalar.text));
        e->value.text = e->text;
        e->set = true;
    } else {
        e->set = false;
    }
    return kOk;
}

i4 cVariables::Set(const char* aName, const cValue& aValue) {
    return Set(aName, aValue.Scalar());
}

const tScalar* cVariables::Find(u4 aHash, const char* aName) const {
    for (u4 i = 0; i < mCount; ++i) {
        const tEntry& e = mEntries[i];
        if (e.hash == aHash && strcmp(e.name, aName) == 0) return e.set ? &e.value : nullptr;
    }
    return nullptr;
}

void cVariables::Unset(const char* aName) {
    if (!aName) return;
    if (tEntry* e = Slot(Hash(aName), aName, false)) {
        llk::ReleaseAndClear(e->text);
        e->set = false;
    }
}

void cVariables::UnsetAll() {
    for (u4 i = 0; i < mCount; ++i) {
        llk::ReleaseAndClear(mEntries[i].text);
        mEntries[i].set = false;
    }
}

} // namespace gik
