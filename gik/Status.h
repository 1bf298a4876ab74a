// Statuses of the feature kernel. Positive and internal: the
// entry layer normalises them. Port failures pass through as GenTL statuses,
// which are negative.
#pragma once

#include "kit/Status.h"

namespace gik {

using llk::i1;
using llk::i2;
using llk::i4;
using llk::i8;
using llk::u1;
using llk::u2;
using llk::u4;
using llk::u8;

constexpr i4 kOk = 0;
constexpr i4 kFailed = 1;         // an assignment that could not be made
constexpr i4 kNoMemory = 2;       // out of memory; also a formula that does not parse
constexpr i4 kRewriteFailed = 4;  // the document could not be rewritten
constexpr i4 kNothing = 5;        // null argument, or a value with nothing behind it
constexpr i4 kNoValue = 7;        // an expression produced no value
constexpr i4 kNotProvided = 8;    // operation not provided by this class
constexpr i4 kTooLong = 9;        // string too long for its register
constexpr i4 kRejected = 15;      // value rejected: range, increment, enum name
constexpr i4 kFormatFailed = 18;  // text formatting failed
constexpr i4 kUnacceptable = 101; // the document is not acceptable
constexpr i4 kDangling = 102;     // a reference names a node that does not exist
constexpr i4 kNoArguments = 103;  // function with no arguments
constexpr i4 kBadNumber = 104;    // unreadable number, or unacceptable register length
constexpr i4 kNoProperty = 105;   // no such property for this class
constexpr i4 kAccessDenied = 106; // refused by the node's access mode
constexpr i4 kUnmappedEnum = 108; // register holds a value that no enum entry has

// Not a status of its own: a chain of node references deeper than the
// kernel follows (a reference cycle, or an absurd chain). Reported as
// "the document is not acceptable".
constexpr i4 kTooDeep = kUnacceptable;

} // namespace gik
