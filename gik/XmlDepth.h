// gik::sXmlDepth: how deeply tinyxml will nest the elements of a text,
// found before it parses. tinyxml parses by recursion, one level per element
// level, so this depth is what its stack must hold.
//
// The text is read the way tinyxml reads it, not the way XML is meant to be
// read: tinyxml steps through text and quoted values one character at a time,
// where a character is a whole UTF-8 sequence once the document is UTF-8 (a
// lead byte takes the bytes after it along, even a "<" or a quote), and where
// a numeric character reference runs to the next ";", wherever that is. The
// character mode is decided by a byte order mark, or else by the first
// declaration at the top; after an undecided declaration both modes are read
// and the deeper counts. Where tinyxml stops at an error, the reading goes on,
// which can only find more.
#pragma once

#include <cstddef>

#include "gik/Status.h"

namespace gik {

class sXmlDepth {
public:
    // The deepest element nesting tinyxml can reach in aText (aLength bytes,
    // no zero byte inside); stops counting past aLimit.
    static u4 Measure(const char* aText, size_t aLength, u4 aLimit);
};

} // namespace gik
