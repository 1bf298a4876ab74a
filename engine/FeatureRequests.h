// The contexts of the feature requests (uid 10): records on the caller's
// stack that the actor reads its arguments from and writes its answers to.
#pragma once

#include "engine/Features.h"

namespace tvk {

// Tag 10: all features (no name), or those one feature affects or selects.
struct tFAccessListCtx {
    const char* name;
    bool selected;
    tFeatureInfo* array;
    llk::u4 structSize;
    llk::u4 count; // in: records the array holds; out: features found
};

// Tag 11.
struct tFAccessInfoCtx {
    const char* name;
    tFeatureInfo* data;
    llk::u4 size;
};

// Tag 12: bounds of an integer or float, or the entries of an enumeration.
struct tFAccessRngeCtx {
    const char* name;
    tFeatureData type;
    void* min;
    void* max;
    const char** array;
    llk::u4 length; // in: the array's length; out: names given
};

// Tag 13.
struct tFAccessStatCtx {
    const char* name;
    bool readable;
    bool writeable;
};

// Tag 14. Strings and raw bytes: length in is the buffer's size, out what
// was filled (for strings without a buffer: what is needed).
struct tFAccessPeekCtx {
    const char* name;
    tFeatureData type;
    void* value;
    llk::u4 length;
};

// Tag 15.
struct tFAccessPokeCtx {
    const char* name;
    tFeatureData type;
    const void* value;
    llk::u4 length;
};

// Tag 16: an entry's description when entry is set, else its number when
// integer is set, else whether it is available.
struct tFAccessEnumCtx {
    const char* name;
    const char* value;
    bool available;
    llk::i8* integer;
    tFeatureEnumEntry* entry;
};

// Tag 17.
struct tFAccessEnum2Ctx {
    const char* name;
    llk::i8 value;
    const char* string;
};

// Tag 18.
struct tFAccessICBMCtx {
    const char* name;
    bool enroll; // register, or unregister
    tFCallback callback;
    void* context;
};

// Tag 19.
struct tFAccessSizeCtx {
    const char* name;
    tFeatureData type;
    llk::u4 size;
};

// Tag 20.
struct tFAccessQIncCtx {
    const char* name;
    tFeatureData type;
    void* value;
    bool gotOne;
};

} // namespace tvk
