// The depth measured before parsing against the depth tinyxml reaches:
// texts that tinyxml reads otherwise than XML is meant to be read.
#include <gtest/gtest.h>

#include <string>
#include <tinyxml.h>

#include "gik/Document.h"
#include "gik/XmlDepth.h"

using namespace gik;

namespace {

// The nesting tinyxml builds (or had built when it stopped at an error).
u4 TinyDepth(const std::string& aText) {
    std::string padded = aText + std::string(16, '\0');
    TiXmlDocument document;
    document.Parse(padded.c_str(), nullptr, TIXML_DEFAULT_ENCODING);
    return sDocument::Nesting(&document);
}

u4 Measured(const std::string& aText) {
    return sXmlDepth::Measure(aText.c_str(), aText.size(), 1000);
}

const std::string kUtf8 = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
// In UTF-8, "\xE0" takes the quote and the blank after it along: the value
// of "a" runs on to the quote after "b=", and the "<a>"s are elements.
const std::string kSwallowedQuote = "<r><q a=\"x\xE0\" b=\"><a><a><a></a></a></a></q></r>";

} // namespace

TEST(XmlDepth, ReadsAsTinyxmlReads) {
    struct tCase {
        std::string text;
        u4 depth; // what tinyxml builds
    } cases[] = {
        {"<r><a><b/></a><a></a></r>", 3},
        {"<r a=\"<b><b><b>\" c='</r>'/>", 1},
        {"<r><!-- <a><a> --><![CDATA[<a><a>]]><!DOCTYPE <a>><? <a>><a/></r>", 2},
        // A quoted version may hold ">"; the declaration ends after it.
        {"<?xml version=\"><x y=\"?><a><a><a></a></a></a>", 3},
        // Other words of a declaration are no values: their quotes are text.
        {"<?xml foo=\"><a x=\"?>\"><a><a/></a></a>", 3},
        // A character reference runs to the next ";" when all back to the
        // "x" (or "#") are digits, over any markup.
        {"<r>&#x<q a=\"x41;<a><a><a></a></a></a>\"/></r>", 4},
        {"<r>&#<q a=\"#65;<a><a></a></a>\"/></r>", 3},
        {kUtf8 + kSwallowedQuote, 5},
        {"\xEF\xBB\xBF" + kSwallowedQuote, 5},
        // The first declaration at the top decides, wherever it stands.
        {"<x/>" + kUtf8 + kSwallowedQuote, 5},
        {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + kSwallowedQuote, 2},
        {kUtf8 + "<r>\xE0<a \"<c><c><c>\"</c></c></c></r>", 4},
    };
    for (const tCase& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(TinyDepth(c.text), c.depth);
        EXPECT_GE(Measured(c.text), c.depth);
        EXPECT_LE(Measured(c.text), c.depth + 3); // and not wildly more
    }
}

TEST(XmlDepth, StackComesFromTheDepthNotTheSize) {
    // Four megabytes of shallow elements, as real documents are.
    std::string big = "<?xml version=\"1.0\" encoding=\"utf-8\"?><RegisterDescription>";
    while (big.size() < (4u << 20))
        big += "<Integer Name=\"N\"><Value>1</Value><pIsAvailable>A</pIsAvailable></Integer>";
    big += "</RegisterDescription>";
    size_t shallow = sDocument::StackFor(big.c_str(), big.size());
    EXPECT_GT(shallow, 0u);
    EXPECT_LE(shallow, 2u << 20);

    std::string deep;
    for (u4 i = 0; i < sDocument::kMaxNesting; ++i)
        deep += "<a>";
    EXPECT_GT(sDocument::StackFor(deep.c_str(), deep.size()), shallow);
    deep += "<a>";
    EXPECT_EQ(sDocument::StackFor(deep.c_str(), deep.size()), 0u);
}
