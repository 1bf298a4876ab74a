// Register description documents before they become nodes:
// parsing with tinyxml, and the two expansion passes that rewrite embedded
// IntSwissKnifes and address sums into nodes of their own.
//
// tinyxml parses and destroys by recursion, one level per element level,
// with no limit of its own; so a text is measured before it is parsed, and
// one nested deeper than kMaxNesting levels is refused.
#pragma once

#include <string>

#include "gik/Status.h"

class TiXmlDocument;
class TiXmlElement;

namespace gik {

class sDocument {
public:
    static constexpr u4 kMaxNesting = 256;

    // The deepest element nesting of aText as tinyxml will build it, or
    // never less: comments, CDATA sections, declarations and quoted
    // attribute values hold no elements. Stops counting past aLimit.
    static u4 Nesting(const char* aText, size_t aLength, u4 aLimit);
    // Parses aText (aLength bytes, zero bytes end it early). On success
    // aDocument is a new document the caller deletes. On failure aError is
    // the parser's message and the result is kUnacceptable (or kNoMemory).
    static i4 Parse(const char* aText, size_t aLength, TiXmlDocument*& aDocument,
                    std::string& aError);
    // Reads a whole file; false when it cannot be read.
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
