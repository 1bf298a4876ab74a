// Register description documents before they become nodes:
// parsing with tinyxml, and the two expansion passes that rewrite embedded
// IntSwissKnifes and address sums into nodes of their own.
//
// tinyxml parses and destroys by recursion, one level per element level, and
// has no limit of its own; it also takes time in proportion to the depth for
// every element. So a text is first measured as tinyxml will read it
// (gik::sXmlDepth), and refused when too deep; what passes is parsed with a
// stack sized from that depth: the caller's own when enough of it is left,
// else a helper thread's. Only documents of at most kMaxNesting levels come
// back. The text is handed over with trailing zero bytes, so that a
// multi-byte character cut off at the very end cannot lead tinyxml past it.
#pragma once

#include <string>

#include "gik/Status.h"

class TiXmlDocument;
class TiXmlElement;
class TiXmlNode;

namespace gik {

class sDocument {
public:
    static constexpr u4 kMaxNesting = 256;

    // The deepest element nesting of a tree tinyxml built (a partial one
    // too, when it stopped at an error), walked without recursion.
    static u4 Nesting(const TiXmlNode* aRoot);
    // The stack a parse of aText needs, from the depth tinyxml will nest
    // its elements to; 0 when that is more than kMaxNesting.
    static size_t StackFor(const char* aText, size_t aLength);
    // Room to leave after a text that Parse is to take, so that its padding
    // needs no new buffer.
    static constexpr size_t kPadding = 16;

    // Parses aText (a zero byte ends it early), which it pads in place. On
    // success aDocument is a new document the caller deletes. On failure
    // aError is the parser's message and the result is kUnacceptable (or
    // kNoMemory).
    static i4 Parse(std::string& aText, TiXmlDocument*& aDocument, std::string& aError);
    // Reads a whole file, with room for the padding; false when it cannot
    // be read.
    static bool ReadFile(const char* aPath, std::string& aText);

    // Pass "EmbeddedIntSwissKnifes" over every RegisterDescription of the
    // document: kOk, kUnacceptable (a knife without a name) or
    // kRewriteFailed.
    static i4 ExpandEmbedded(TiXmlDocument* aDocument, std::string& aError);
    // Pass "AddressSwissKnifes": a register with two or more address
    // elements gets a generated IntSwissKnife that sums them.
    static i4 ExpandAddresses(TiXmlDocument* aDocument, std::string& aError);

    // True for the element names whose address elements the passes rewrite.
    static bool IsRegisterElement(const char* aName);
};

} // namespace gik
