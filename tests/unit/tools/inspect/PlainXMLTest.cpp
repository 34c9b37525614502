#include "PlainXML.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Inspect::plainXML;
using Inspect::XMLLimits;

/// The plain form, or the refusal.
std::string plain(const std::string& document, const XMLLimits& limits = {}) {
    std::string refusal;
    const std::optional<std::string> text = plainXML(document, refusal, limits);
    EXPECT_EQ(text.has_value(), refusal.empty()) << document;
    return text.value_or(refusal);
}

TEST(PlainXML, KeepsTagsAndText) {
    EXPECT_EQ(plain(""), "");
    EXPECT_EQ(plain("text &amp; \"more\" > '"), "text &amp; \"more\" > '");
    EXPECT_EQ(plain("<plist>\n\t<array>a</array>\r\n<true/> b</plist>\n"),
              "<plist>\n\t<array>a</array>\r\n<true/> b</plist>\n");
    EXPECT_EQ(plain("<azAZ></azAZ>"), "<azAZ></azAZ>");
}

TEST(PlainXML, DropsAttributesAndBlanksInTags) {
    EXPECT_EQ(plain("<plist version=\"1.0\"><a b='>' c=\"'/>\" ></a\t></plist\n>"), "<plist><a></a></plist>");
    EXPECT_EQ(plain("<a b=\"/\"/><c\r\n/><d e='\"'/>"), "<a/><c/><d/>");
    EXPECT_EQ(plain("<a b=\"/\"></a>"), "<a></a>");
    // A slash closes the element only right before the end of the tag.
    EXPECT_EQ(plain("<a / ></a>"), "<a></a>");
}

TEST(PlainXML, DropsWhatIsNeitherTagNorText) {
    EXPECT_EQ(
        plain("\xEF\xBB\xBF<?xml version=\"1.0\"?><!DOCTYPE plist PUBLIC \"a\" \"b\">x<!-- <a> -- > -->y"),
        "xy");
    EXPECT_EQ(plain("a<?b?>c<? ?>d<!---->e<!-- -->f"), "acdef");
    EXPECT_EQ(plain("<!-->-->x"), "x");
    EXPECT_EQ(plain("<!--->-->x"), "x");
    // Only at the front is it a byte-order mark.
    EXPECT_EQ(plain("x\xEF\xBB\xBFy"), "x\xEF\xBB\xBFy");
}

TEST(PlainXML, EscapesCharacterData) {
    EXPECT_EQ(plain("<a>x<![CDATA[<b> & ]] > \"c\"]]>y</a>"), "<a>x&lt;b&gt; &amp; ]] &gt; \"c\"y</a>");
    EXPECT_EQ(plain("<![CDATA[]]><![CDATA[]]]>"), "]");
}

TEST(PlainXML, RefusesOtherBytes) {
    EXPECT_EQ(plain("<a>\xFF</a>"), "the XML form is not UTF-8");
    EXPECT_EQ(plain("\t\n\r \x7F\n"), "\t\n\r \x7F\n");
    EXPECT_EQ(plain("a\nb\x1F"), "line 2 of the XML form holds a control character");
    EXPECT_EQ(plain(std::string("a\n\nb\0", 5)), "line 3 of the XML form holds a control character");
}

TEST(PlainXML, RefusesWhatDoesNotEnd) {
    EXPECT_EQ(plain("\n<!-- "), "line 2 of the XML form begins a comment or instruction that does not end");
    for (const char* document : {"<!--", "<!-->", "<!--->", "<!-- ->", "<?", "<?>", "<? ? >"}) {
        EXPECT_EQ(plain(document), "line 1 of the XML form begins a comment or instruction that does not end")
            << document;
    }
    EXPECT_EQ(plain("<a>\n<![CDATA[ ]>"), "line 2 of the XML form begins a CDATA section that does not end");
    EXPECT_EQ(plain("<a>\n\n<b></b>\n"), "line 4 of the XML form ends within an element");
}

TEST(PlainXML, RefusesADocumentTypeOfItsOwn) {
    for (const char* document : {"<!DOCTYPE a [<!ENTITY b \"c\">]>", "<!DOCTYPE a", "<!DOCTYPE["}) {
        EXPECT_EQ(plain(document), "line 1 of the XML form declares its own document type") << document;
    }
    EXPECT_EQ(plain("<!DOCTYPE a>["), "[");
}

TEST(PlainXML, RefusesABrokenTag) {
    for (const char* document : {"<", "<>", "< a>", "</>", "<a", "<a b", "<a b=\"c>", "<a b='c\">", "<a <b>",
                                 "<a1></a1>", "<a-b/>", "<!a>", "<a:b/>", "<1/>", "</a<"}) {
        EXPECT_EQ(plain(document), "line 1 of the XML form holds a broken tag") << document;
    }
}

TEST(PlainXML, RefusesToCloseWhatIsNotOpen) {
    for (const char* document : {"</a>", "<a></a></a>", "<a/></a>", "<a></a/>"}) {
        EXPECT_EQ(plain(document), "line 1 of the XML form closes an element that is not open") << document;
    }
}

TEST(PlainXML, CountsElementsAndTheirDepth) {
    const XMLLimits limits{2, 4};
    EXPECT_EQ(plain("<a><b></b><b><c/></b></a>", limits), "<a><b></b><b><c/></b></a>");
    EXPECT_EQ(plain("<a><b></b><b><c/></b></a>\n<d/>", limits),
              "line 2 of the XML form is beyond the limit of 4 elements");
    EXPECT_EQ(plain("<a><b></b>\n<b><c></c></b></a>", limits),
              "line 2 of the XML form nests deeper than 2 elements");
}

}  // namespace
