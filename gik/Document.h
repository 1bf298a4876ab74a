// Register description documents before they become nodes:
// parsing with tinyxml, and the two expansion passes that rewrite embedded
// IntSwissKnifes and address sums into nodes of their own.
//
// tinyxml parses and destroys by recursion, one level per element level, and
// has no limit of its own; it also takes time in proportion to the depth for
// every element. So a text is first measured, and refused when plainly too
// deep; what passes is parsed on a helper thread whose stack is sized for the
// deepest nesting the text could hold, and only documents of at most
// kMaxNesting levels come back. The text is handed over with trailing zero
// bytes, so that a multi-byte character cut off at the very end cannot lead
// tinyxml past it.
#pragma once

#include <string>

#include "gik/Status.h"

class TiXmlDocument;
class TiXmlElement;

namespace gik {

class sDocument {
public:
    static constexpr u4 kMaxNesting = 256;

    // The deepest element nesting of aText as a plain reading of XML sees
    // it (comments, CDATA sections, declarations and quoted attribute values
    // hold no elements); tinyxml's own reading of odd texts may differ.
    // Stops counting past aLimit.
    static u4 Measure(const char* aText, size_t aLength, u4 aLimit);
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
