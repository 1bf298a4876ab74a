// An address space in memory for the kernel's tests: sparse, zero-filled,
// counting its transfers, logging them in order, and failing on request.
#pragma once

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "gik/Port.h"

namespace test {

class cMemoryPort : public gik::pPort {
public:
    static cMemoryPort* New(bool aWriteable = true) { return Make<cMemoryPort>(aWriteable); }
    llk::i4 Initialize(bool aWriteable) {
        mWriteable = aWriteable;
        return 0;
    }

    struct tTransfer {
        bool write;
        llk::u8 address;
        llk::u4 length;
    };

    bool IsWriteable() override { return mWriteable; }
    llk::i4 Fetch(llk::u8 aAddress, llk::u4 aLength, void* aBuffer, llk::u4& aFetched) override {
        ++mFetches;
        mLog.push_back({false, aAddress, aLength});
        aFetched = 0;
        if (mFailFetch != 0) return mFailFetch;
        auto* out = static_cast<llk::u1*>(aBuffer);
        for (llk::u4 i = 0; i < aLength; ++i)
            out[i] = Byte(aAddress + i);
        aFetched = aLength;
        return 0;
    }
    llk::i4 Store(llk::u8 aAddress, llk::u4 aLength, const void* aBuffer,
                  llk::u4& aStored) override {
        ++mStores;
        mLog.push_back({true, aAddress, aLength});
        aStored = 0;
        if (mFailStore != 0) return mFailStore;
        auto* in = static_cast<const llk::u1*>(aBuffer);
        for (llk::u4 i = 0; i < aLength; ++i)
            mBytes[aAddress + i] = in[i];
        aStored = aLength;
        return 0;
    }
    llk::i4 QueryXML(void*, llk::u4, llk::u4&, llk::u4, llk::u4) override { return 8; }
    llk::i4 FetchXML(void*, llk::u4, llk::u4&, llk::u4) override { return 8; }

    llk::u1 Byte(llk::u8 aAddress) const {
        auto it = mBytes.find(aAddress);
        return it == mBytes.end() ? 0 : it->second;
    }
    // Big-endian (network order) and little-endian helpers.
    void PutBig(llk::u8 aAddress, llk::u8 aValue, llk::u4 aLength) {
        for (llk::u4 i = 0; i < aLength; ++i)
            mBytes[aAddress + i] = static_cast<llk::u1>(aValue >> (8 * (aLength - 1 - i)));
    }
    void PutLittle(llk::u8 aAddress, llk::u8 aValue, llk::u4 aLength) {
        for (llk::u4 i = 0; i < aLength; ++i)
            mBytes[aAddress + i] = static_cast<llk::u1>(aValue >> (8 * i));
    }
    llk::u8 GetBig(llk::u8 aAddress, llk::u4 aLength) const {
        llk::u8 v = 0;
        for (llk::u4 i = 0; i < aLength; ++i)
            v = (v << 8) | Byte(aAddress + i);
        return v;
    }
    llk::u8 GetLittle(llk::u8 aAddress, llk::u4 aLength) const {
        llk::u8 v = 0;
        for (llk::u4 i = aLength; i-- > 0;)
            v = (v << 8) | Byte(aAddress + i);
        return v;
    }
    void PutText(llk::u8 aAddress, const char* aText) {
        for (size_t i = 0; aText[i]; ++i)
            mBytes[aAddress + i] = static_cast<llk::u1>(aText[i]);
    }
    void ResetCounts() {
        mFetches = mStores = 0;
        mLog.clear();
    }

    bool mWriteable = true;
    llk::i4 mFailFetch = 0;
    llk::i4 mFailStore = 0;
    int mFetches = 0;
    int mStores = 0;
    std::vector<tTransfer> mLog;
    std::map<llk::u8, llk::u1> mBytes;
};

} // namespace test
