// Tests of the XML parser: the constructs, how a damaged document is read, and the status of
// the last construct as the result.
#include "xmldocument.h"

#include "kernel/xml/xmltesttree.h"

#include <gtest/gtest.h>

using namespace tq::test;

namespace {

struct Case
{
    const char* name;
    std::string input;
    HRESULT status;
    const wchar_t* tree;
};

void Check(const Case& c)
{
    ParsedDoc d(c.input);
    ASSERT_EQ(d.opened, S_OK) << c.name;
    EXPECT_EQ(d.parsed, c.status) << c.name;
    EXPECT_EQ(d.Tree(), c.tree) << c.name;
}

} // namespace

TEST(XmlParser, WellFormedConstructs)
{
    const Case cases[] = {
        {"nesting and attributes", R"(<a x="1" y="two"><b/><c>text</c></a>)", S_OK,
         L"a{x=1,y=two}(b/c(\"text\"))"},
        {"declaration, comment, CDATA",
         "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n"
         "<a><!-- note --><![CDATA[x < y]]></a>",
         S_OK, L"a(# note #[x < y])"},
        {"layout blanks make no text; a text's own blanks stay at its end",
         "<a>\r\n  <b>t </b>\r\n  <c/>\r\n</a>\r\n", S_OK, L"a(b(\"t \")c/)"},
        {"entities are left for the reader", "<a v=\"&amp;\">a &lt; b</a>", S_OK,
         L"a{v=&amp;}(\"a &lt; b\")"},
        {"a comment runs to the > behind --", "<a><!-- x > y -- z --></a>", S_OK,
         L"a(# x > y -- z #)"},
        {"empty comment", "<a><!----></a>", S_OK, L"a(##)"},
        {"a comment whose first run is empty", "<a><!-->x--></a>", S_OK, L"a(#>x#)"},
        {"unknown elements stay in their place",
         "<r><k>1</k><odd z=\"q\"><deep>2</deep></odd><k2/></r>", S_OK,
         L"r(k(\"1\")odd{z=q}(deep(\"2\"))k2/)"},
        {"mixed content in order", "<p>one<b>two</b>three<!--c--></p>", S_OK,
         L"p(\"one\"b(\"two\")\"three\"#c#)"},
        {"a blank in an end tag is part of its name", "<a  >t</a >", E_FAIL, L"a(\"t\")"},
        {"attributes need no blank between them", "<a x=\"1\"y=\"2\"/>", S_OK, L"a{x=1,y=2}/"},
        {"empty tag with attributes", "<a><b k=\"v\" /></a>", S_OK, L"a(b{k=v}/)"},
        {"processing instruction inside an element is skipped", "<a><?pi x?y?>t</a>", S_OK,
         L"a(\"t\")"},
        {"document type is stepped over", "<!DOCTYPE a><a/>", S_OK, L"a/"},
        {"text outside every element is dropped", "lead<a/>tail", S_OK, L"a/"},
        {"further top-level elements follow the root", "<a/><b/>", S_OK, L"a/ b/"},
        {"a < before no construct is passed over", "<a>< b</a>", S_OK, L"a(\"b\")"},
        {"CDATA ends at its first >", "<a><![CDATA[p>q]]></a>", S_OK, L"a([p]\"q]]>\")"},
    };
    for (const Case& c : cases)
        Check(c);
}

TEST(XmlParser, ApostropheValueRunsToTheNextQuotationMark)
{
    // The value reads past its own closing mark; the next attribute then has no "=" before
    // the ">", so it fails, and the element keeps the attribute read so far.
    Check({"apostrophes", "<a x='1' y=\"2\">t</a>", S_OK, L"a{x=1' y=}(\"t\")"});
}

TEST(XmlParser, OnlyTheLastConstructsStatusComesBack)
{
    // The end tag that does not match keeps <b> open, so whatever follows lands inside it.
    Check({"mismatch at the end", "<a><b></a>", E_FAIL, L"a(b)"});
    Check({"mismatch overwritten", "<a><b></a><c/>", S_OK, L"a(b(c/))"});
    Check({"broken declaration overwritten", "<?xml version=1.0?><a/>", S_OK, L"a/"});
    // A construct that fails leaves the cursor in front of text, which is read on.
    Check({"comment with one dash", "<a><!-x></a>", S_OK, L"a(\"-x>\")"});
    Check({"bad attribute", "<a x=1>t</a>", S_OK, L"a(\"1>t\")"});
}

TEST(XmlParser, BrokenConstructAtTheEndFails)
{
    const Case cases[] = {
        {"stray end tag", "<a/></b>", E_FAIL, L"a/"},
        {"end tag without >", "<a></a", E_FAIL, L"a"},
        {"start tag cut after its name", "<a/><b", E_FAIL, L"a/"},
        {"start tag with a bad character", "<a/><b =", E_FAIL, L"a/"},
        {"attribute without =", "<a x", E_FAIL, L"a"},
        {"attribute without a quote", "<a x=", E_FAIL, L"a"},
        {"value never closed", "<a k=\"v\" x=\"1", E_FAIL, L"a{k=v}"},
        {"comment never closed", "<a/><!-- open > still", E_FAIL, L"a/"},
        {"CDATA never closed", "<a><![CDATA[abc", E_FAIL, L"a"},
        {"CDATA misspelt", "<a/><![", E_FAIL, L"a/"},
        {"markup declaration never closed", "<a/><!DOCTYPE", E_FAIL, L"a/"},
        {"declaration without xml", "<a/><?", E_FAIL, L"a/"},
        {"declaration cut in a value", "<a/><?xml version=", E_FAIL, L"a/"},
        {"declaration never closed", "<a/><?xml version=\"1.0\"", E_FAIL, L"a/"},
        {"processing instruction never closed", "<a><?pi", E_FAIL, L"a"},
    };
    for (const Case& c : cases)
        Check(c);
}

TEST(XmlParser, EncodingsWithAndWithoutByteOrderMark)
{
    // UTF-16 behind FF FE carries any character; its declaration changes nothing.
    const std::wstring text =
        L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><a x=\"\u00e9\">\u20ac 5<b/></a>";
    Check({"UTF-16", Utf16(text), S_OK, L"a{x=\u00e9}(\"\u20ac 5\"b/)"});
    // Without the mark, the same text in single bytes; a UTF-8 mark before the document is
    // text outside every element.
    const std::string ascii = R"(<?xml version="1.0" encoding="UTF-8"?><a x="1">t</a>)";
    Check({"bytes", ascii, S_OK, L"a{x=1}(\"t\")"});
    Check({"bytes behind a UTF-8 mark", "\xEF\xBB\xBF" + ascii, S_OK, L"a{x=1}(\"t\")"});
    // UTF-16 without its mark is read byte by byte, so its zero bytes break every name.
    ParsedDoc d(Utf16(L"<a/>").substr(2));
    EXPECT_EQ(d.parsed, S_OK);
    EXPECT_EQ(d.Tree(), L"");
}

TEST(XmlParser, DeepNestingIsParsedAndFreedWithoutRecursion)
{
    constexpr int kDepth = 100000;
    std::string text;
    for (int i = 0; i < kDepth; ++i)
        text += "<a>";
    text += "x";
    for (int i = 0; i < kDepth; ++i)
        text += "</a>";
    ParsedDoc d(text);
    ASSERT_EQ(d.parsed, S_OK);
    int depth = 0;
    tagTQXML_CONTENT* c = d.Root();
    while (c && c->type == XML_CONTENT_ELEMENT)
    {
        ++depth;
        tagTQXML_ELEMENT& e = c->data.element;
        c = e.children.count ? static_cast<tagTQXML_CONTENT**>(e.children.items)[0] : nullptr;
    }
    EXPECT_EQ(depth, kDepth);
    ASSERT_NE(c, nullptr);
    EXPECT_STREQ(c->data.text, L"x");
    // Parsing again frees the first tree; unclosed elements are freed with the document.
    EXPECT_EQ(d.doc.ParseFile(), S_OK);
    ParsedDoc unclosed(text.substr(0, kDepth * 3));
    EXPECT_EQ(unclosed.parsed, S_OK);
}
