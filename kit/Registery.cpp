#include "kit/Registery.h"

namespace llk {

i4 cRegistery::Initialize(const tRegister* aTable, u4 aCount, pDelegate* aDelegate) {
    if (!aDelegate || (!aTable && aCount)) return kNoMemory;
    mTable = aTable;
    mCount = aCount;
    mDelegate = aDelegate;
    return kOk;
}

u4 cRegistery::RowOf(u8 aAddress) const {
    // The last row whose base is not above the address.
    u4 low = 0;
    u4 high = mCount;
    while (low < high) {
        u4 middle = low + (high - low) / 2;
        if (mTable[middle].base <= aAddress)
            low = middle + 1;
        else
            high = middle;
    }
    if (low == 0) return mCount;
    const tRegister& row = mTable[low - 1];
    return aAddress - row.base < row.length ? low - 1 : mCount;
}

i4 cRegistery::Access(u8 aAddress, void* aInto, const void* aFrom, u4& aLength) const {
    u4 wanted = aLength;
    aLength = 0;
    if (mCount == 0) return kOutOfRange;
    const tRegister& last = mTable[mCount - 1];
    if (aAddress < mTable[0].base || (aAddress >= last.base && aAddress - last.base >= last.length))
        return kOutOfRange;
    if (!aInto && !aFrom) return kNoMatch;
    u4 row = RowOf(aAddress);
    if (row == mCount) return kNoMatch;

    i4 status = kOk;
    u4 done = 0;
    u8 address = aAddress;
    while (done < wanted) {
        const tRegister& r = mTable[row];
        u4 offset = static_cast<u4>(address - r.base);
        u4 left = r.length - offset;
        u4 take = wanted - done < left ? wanted - done : left;
        if (aInto)
            status =
                mDelegate->OnRegisterFetch(r.base, offset, static_cast<u1*>(aInto) + done, take);
        else
            status = mDelegate->OnRegisterStore(r.base, offset,
                                                static_cast<const u1*>(aFrom) + done, take);
        // The bytes of a refused register count as passed on; the status
        // tells the caller the access failed there.
        done += take;
        address += take;
        if (status != kOk || done == wanted) break;
        // Only an adjoining register carries the access on; empty rows at
        // the same address hold nothing and are stepped over.
        do
            ++row;
        while (row < mCount && mTable[row].base == address && mTable[row].length == 0);
        if (row == mCount || mTable[row].base != address) break;
    }
    aLength = done;
    return status;
}

} // namespace llk
