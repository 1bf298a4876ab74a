// Typed values under text labels: the payload of every message.
#pragma once

#include "kit/Object.h"
#include "kit/SearchTree.h"

namespace llk {

class cDictionary : public pObject {
public:
    enum tType : u4 { kSigned = 2, kUnsigned = 3, kBlock = 5, kObject = 7 };

    static cDictionary* New(u4 aCapacity = 8, float aFactor = 0.0f) {
        return Make<cDictionary>(aCapacity, aFactor);
    }
    i4 Initialize() override { return Initialize(8u, 0.0f); }
    i4 Initialize(u4 aCapacity, float aFactor);
    ~cDictionary() override;
    u4 ClassCode() const override { return 11; }
    const char* ClassName() const override { return "cDictionary"; }

    // False when no entry can be had; an existing label is overwritten.
    bool StoreBool(const char* aLabel, bool aValue) { return Put(aLabel, kUnsigned, aValue); }
    bool StoreUint(const char* aLabel, u2 aValue) { return Put(aLabel, kUnsigned, aValue); }
    bool StoreUint(const char* aLabel, u4 aValue) { return Put(aLabel, kUnsigned, aValue); }
    bool StoreUint(const char* aLabel, const u8& aValue) { return Put(aLabel, kUnsigned, aValue); }
    bool StoreInt(const char* aLabel, i4 aValue) {
        return Put(aLabel, kSigned, static_cast<u8>(static_cast<i8>(aValue)));
    }
    bool StoreInt(const char* aLabel, const i8& aValue) {
        return Put(aLabel, kSigned, static_cast<u8>(aValue));
    }
    bool StoreBlock(const char* aLabel, const void* aBytes, u4 aLength);
    // A null object is refused.
    bool StoreObject(const char* aLabel, pObject* aObject);

    // False for an absent label or a value of another type.
    bool FetchBool(const char* aLabel, bool& aValue) const;
    bool FetchUint(const char* aLabel, u2& aValue) const;
    bool FetchUint(const char* aLabel, u4& aValue) const;
    bool FetchUint(const char* aLabel, u8& aValue) const;
    bool FetchInt(const char* aLabel, i4& aValue) const;
    bool FetchInt(const char* aLabel, i8& aValue) const;
    // Copies min(aSize, stored length); writes the count copied.
    bool FetchBlock(const char* aLabel, void* aDest, u4& aSize) const;
    bool FetchObject(const char* aLabel, pObject*& aObject) const;

    bool Contains(const char* aLabel) const;
    bool TypeAndSize(const char* aLabel, u4& aType, u4& aSize) const;
    void Clear();
    u4 Count() const { return mTree.count; }

private:
    struct tEntry {
        u4 type;
        u8 key;
        u4 size;
        union {
            u8 number;
            void* block;
            pObject* object;
        };
        tEntry* parent;
        tEntry* left;
        tEntry* right;
        tEntry* prevOrder;
        tEntry* nextOrder;
        tEntry* sparePrev;
        tEntry* spareNext;
    };

    tEntry* Find(const char* aLabel) const;
    tEntry* Slot(const char* aLabel);
    void Empty(tEntry* aEntry);
    bool Put(const char* aLabel, u4 aType, u8 aValue);
    bool Get(const char* aLabel, u4 aType, u8& aValue) const;

    tSearchTree<tEntry> mTree;
    tEntry* mSpare = nullptr;
    u4 mSpareCount = 0;
};

} // namespace llk
