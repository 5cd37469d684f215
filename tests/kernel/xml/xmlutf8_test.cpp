// Tests of opening a document on UTF-8 text.
#include "xmldocument.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The text of the first top-level element, or a note of what failed.
std::wstring RootText(const std::string& bytes, HRESULT* opened = nullptr)
{
    CTqXML_Document doc;
    // A copy that is gone before the parse: the document must have kept its own.
    auto* block = new std::string(bytes);
    const HRESULT hr = doc.OpenMemoryUtf8(block->data(), static_cast<DWORD>(block->size()));
    std::fill(block->begin(), block->end(), 'x');
    delete block;
    if (opened) *opened = hr;
    if (FAILED(hr)) return L"(not opened)";
    doc.ParseFile();
    tagTQXML_CONTENT* root = nullptr;
    const TQXML_FINDCURSOR cursor = doc.FindContentFirst(nullptr, &root);
    if (cursor == TQXML_NOCURSOR) return L"(no root)";
    doc.FindContentClose(cursor);
    WCHAR text[64] = {};
    doc.GetContentString(&root->data.element, text, 64);
    return text;
}

} // namespace

TEST(XmlUtf8, CharactersPastAsciiSurvive)
{
    const struct
    {
        const char* name;
        std::string bytes;
        std::wstring text;
    } cases[] = {
        {"two-byte and four-byte sequences", "<a>Caf\xC3\xA9 \xF0\x9D\x84\x9E</a>",
         L"Caf\u00E9 \U0001D11E"},
        {"byte-order mark dropped", "\xEF\xBB\xBF<a>\xC3\xBC</a>", L"\u00FC"},
        {"zero padding of a chunk ends the text", std::string("<a>x</a>\0\0<b>y</b>", 16), L"x"},
        {"bytes that are no UTF-8 stand as replacement characters", "<a>\xFF!</a>", L"\uFFFD!"},
        {"UTF-16 taken as it is", std::string("\xFF\xFE<\0a\0>\0\xE9\0<\0/\0a\0>\0", 18),
         L"\u00E9"},
    };
    for (const auto& c : cases)
    {
        HRESULT hr = E_FAIL;
        EXPECT_EQ(RootText(c.bytes, &hr), c.text) << c.name;
        EXPECT_EQ(hr, S_OK) << c.name;
    }
}

TEST(XmlUtf8, NoTextIsRefused)
{
    CTqXML_Document doc;
    EXPECT_EQ(doc.OpenMemoryUtf8("", 0), TQ_E_CORRUPTFILE);
    EXPECT_EQ(doc.OpenMemoryUtf8("\0\0\0", 3), TQ_E_CORRUPTFILE);
    EXPECT_EQ(doc.OpenMemoryUtf8("\xEF\xBB\xBF", 3), TQ_E_CORRUPTFILE);
    EXPECT_EQ(doc.OpenMemoryUtf8(nullptr, 4), E_INVALIDARG);
    // A failed open leaves the document closed and usable again.
    ASSERT_EQ(doc.OpenMemoryUtf8("<a>b</a>", 8), S_OK);
    EXPECT_EQ(doc.ParseFile(), S_OK);
}
