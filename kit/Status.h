// Status codes returned by every kit operation that returns a signed status.
#pragma once

#include "kit/Types.h"

namespace llk {

constexpr i4 kOk = 0;
constexpr i4 kFailed = 1;         // unclassified failure
constexpr i4 kNoMemory = 2;       // allocation failed, or a mandatory object was null
constexpr i4 kNoResources = 3;    // the system lacks resources
constexpr i4 kNotAllowed = 4;     // not available on this object
constexpr i4 kNotFound = 5;       // key, object, record or file absent
constexpr i4 kTimedOut = 6;       // a timed wait ran out
constexpr i4 kBadArgument = 7;    // bad argument, or a refused system call
constexpr i4 kNotImplemented = 8; // default of an optional virtual operation
constexpr i4 kNoCapacity = 9;     // a fixed pool or no-grow container is full
constexpr i4 kEmpty = 10;         // nothing to take
constexpr i4 kRefused = 11;       // closed, disabled or shutting down
constexpr i4 kNoMatch = 12;       // no register matches the address
constexpr i4 kExists = 13;        // a metronome tick is already registered
constexpr i4 kCancelled = 14;     // a wait released by a cancel
constexpr i4 kOutOfRange = 15;    // index or address out of range
constexpr i4 kAborted = 16;       // the system aborted the operation
constexpr i4 kDuplicate = 17;     // already attached, already started
constexpr i4 kPending = 19;       // pending in the system

} // namespace llk
