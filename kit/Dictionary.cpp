#include "kit/Dictionary.h"

#include <cstring>

#include "kit/Env.h"

namespace llk {

namespace {
u8 KeyOf(const char* aLabel) {
    return sEnv::Crc32(aLabel);
}

template <class E> auto ByKey(u8 aKey) {
    return [aKey](const E* e) { return aKey < e->key ? -1 : (aKey > e->key ? 1 : 0); };
}
} // namespace

i4 cDictionary::Initialize(u4 aCapacity, float aFactor) {
    mTree.SetFactor(aFactor);
    for (u4 i = 0; i < aCapacity; ++i) {
        auto* entry = static_cast<tEntry*>(sEnv::Malloc(sizeof(tEntry), true));
        if (!entry) return kNoMemory;
        entry->spareNext = mSpare;
        mSpare = entry;
        ++mSpareCount;
    }
    return kOk;
}

cDictionary::~cDictionary() {
    Clear();
    while (mSpare) {
        tEntry* next = mSpare->spareNext;
        sEnv::Free(mSpare);
        mSpare = next;
    }
}

cDictionary::tEntry* cDictionary::Find(const char* aLabel) const {
    return mTree.Find(ByKey<tEntry>(KeyOf(aLabel)));
}

// Frees what an entry holds: a block, or a reference.
void cDictionary::Empty(tEntry* aEntry) {
    if (aEntry->type == kBlock)
        sEnv::Free(aEntry->block);
    else if (aEntry->type == kObject && aEntry->object)
        aEntry->object->Release();
    aEntry->number = 0;
    aEntry->size = 0;
}

// The entry of a label, made when absent.
cDictionary::tEntry* cDictionary::Slot(const char* aLabel) {
    if (tEntry* entry = Find(aLabel)) return entry;
    tEntry* entry = mSpare;
    if (entry) {
        mSpare = entry->spareNext;
        --mSpareCount;
    } else if (!(entry = static_cast<tEntry*>(sEnv::Malloc(sizeof(tEntry), true)))) {
        return nullptr;
    }
    entry->type = kUnsigned;
    entry->number = 0;
    entry->size = 0;
    entry->key = KeyOf(aLabel);
    mTree.Insert(entry, ByKey<tEntry>(entry->key));
    return entry;
}

bool cDictionary::Put(const char* aLabel, u4 aType, u8 aValue) {
    tEntry* entry = Slot(aLabel);
    if (!entry) return false;
    Empty(entry);
    entry->type = aType;
    entry->size = 8;
    entry->number = aValue;
    return true;
}

bool cDictionary::StoreBlock(const char* aLabel, const void* aBytes, u4 aLength) {
    tEntry* entry = Slot(aLabel);
    if (!entry) return false;
    void* copy = nullptr;
    if (entry->type == kBlock && entry->size == aLength) {
        copy = entry->block; // same length: reuse the block
    } else {
        copy = sEnv::Malloc(aLength, true);
        if (!copy) return false;
        Empty(entry);
    }
    if (aBytes && aLength) memcpy(copy, aBytes, aLength);
    entry->type = kBlock;
    entry->size = aLength;
    entry->block = copy;
    return true;
}

bool cDictionary::StoreObject(const char* aLabel, pObject* aObject) {
    if (!aObject) return false;
    tEntry* entry = Slot(aLabel);
    if (!entry) return false;
    aObject->Retain();
    Empty(entry);
    entry->type = kObject;
    entry->size = sizeof(void*);
    entry->object = aObject;
    return true;
}

bool cDictionary::Get(const char* aLabel, u4 aType, u8& aValue) const {
    tEntry* entry = Find(aLabel);
    if (!entry || entry->type != aType) return false;
    aValue = entry->number;
    return true;
}

bool cDictionary::FetchBool(const char* aLabel, bool& aValue) const {
    u8 value;
    if (!Get(aLabel, kUnsigned, value)) return false;
    aValue = value != 0;
    return true;
}
bool cDictionary::FetchUint(const char* aLabel, u2& aValue) const {
    u8 value;
    if (!Get(aLabel, kUnsigned, value)) return false;
    aValue = static_cast<u2>(value);
    return true;
}
bool cDictionary::FetchUint(const char* aLabel, u4& aValue) const {
    u8 value;
    if (!Get(aLabel, kUnsigned, value)) return false;
    aValue = static_cast<u4>(value);
    return true;
}
bool cDictionary::FetchUint(const char* aLabel, u8& aValue) const {
    return Get(aLabel, kUnsigned, aValue);
}
bool cDictionary::FetchInt(const char* aLabel, i4& aValue) const {
    u8 value;
    if (!Get(aLabel, kSigned, value)) return false;
    aValue = static_cast<i4>(static_cast<i8>(value));
    return true;
}
bool cDictionary::FetchInt(const char* aLabel, i8& aValue) const {
    u8 value;
    if (!Get(aLabel, kSigned, value)) return false;
    aValue = static_cast<i8>(value);
    return true;
}

bool cDictionary::FetchBlock(const char* aLabel, void* aDest, u4& aSize) const {
    tEntry* entry = Find(aLabel);
    if (!entry || entry->type != kBlock) return false;
    u4 n = aSize < entry->size ? aSize : entry->size;
    if (n && aDest) memcpy(aDest, entry->block, n);
    aSize = n;
    return true;
}

bool cDictionary::FetchObject(const char* aLabel, pObject*& aObject) const {
    tEntry* entry = Find(aLabel);
    if (!entry || entry->type != kObject) return false;
    aObject = entry->object;
    return true;
}

bool cDictionary::Contains(const char* aLabel) const {
    return Find(aLabel) != nullptr;
}

bool cDictionary::TypeAndSize(const char* aLabel, u4& aType, u4& aSize) const {
    tEntry* entry = Find(aLabel);
    if (!entry) return false;
    aType = entry->type;
    aSize = entry->size;
    return true;
}

void cDictionary::Clear() {
    tEntry* e = mTree.head;
    mTree.Reset();
    while (e) {
        tEntry* next = e->nextOrder;
        Empty(e);
        e->spareNext = mSpare;
        mSpare = e;
        ++mSpareCount;
        e = next;
    }
}

} // namespace llk
