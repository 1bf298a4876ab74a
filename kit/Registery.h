// A virtual register space: a caller's table of registers, sorted by
// address, each access handed on register by register to a delegate.
#pragma once

#include "kit/Object.h"

namespace llk {

class cRegistery : public pObject {
public:
    struct tRegister {
        u8 base;
        u4 length;
        u4 spare; // free for the owner of the table
    };
    static_assert(sizeof(tRegister) == 16, "a register row is 16 bytes");

    // Answers for one register at a time: aBase names the register, aOffset
    // is the place inside it, aCount never runs past its end. Any status but
    // 0 ends the access and is its result.
    class pDelegate {
    public:
        virtual ~pDelegate() = default;
        virtual i4 OnRegisterFetch(u8 aBase, u4 aOffset, void* aBytes, u4 aCount) = 0;
        virtual i4 OnRegisterStore(u8 aBase, u4 aOffset, const void* aBytes, u4 aCount) = 0;
    };

    // The table and the delegate stay the caller's and must outlive the
    // registery. kNoMemory for a null delegate or a null table with rows.
    static cRegistery* New(const tRegister* aTable, u4 aCount, pDelegate* aDelegate) {
        return Make<cRegistery>(aTable, aCount, aDelegate);
    }
    i4 Initialize(const tRegister* aTable, u4 aCount, pDelegate* aDelegate);
    u4 ClassCode() const override { return 56; }
    const char* ClassName() const override { return "cRegistery"; }

    // kOutOfRange outside the table's span, kNoMatch for a null buffer or an
    // address no register holds; otherwise the last delegate status.
    // aLength goes in as the bytes wanted and comes back as the bytes passed
    // on; an access stops at a gap between registers.
    i4 Fetch(u8 aAddress, void* aBytes, u4& aLength) const {
        return Access(aAddress, aBytes, nullptr, aLength);
    }
    i4 Store(u8 aAddress, const void* aBytes, u4& aLength) const {
        return Access(aAddress, nullptr, aBytes, aLength);
    }

    const tRegister* Table() const { return mTable; }
    u4 Count() const { return mCount; }

private:
    // The row holding aAddress, or mCount.
    u4 RowOf(u8 aAddress) const;
    i4 Access(u8 aAddress, void* aInto, const void* aFrom, u4& aLength) const;

    const tRegister* mTable = nullptr;
    u4 mCount = 0;
    pDelegate* mDelegate = nullptr;
};

} // namespace llk
