// Test helpers for the XML document: documents parsed from bytes, and a compact text of a tree.
#pragma once

#include "xmldocument.h"

#include <gtest/gtest.h>

#include <string>

namespace tq::test {

inline std::wstring Widen(const std::string& s)
{
    return std::wstring(s.begin(), s.end());
}

// Bytes of a UTF-16 document with its byte-order mark.
inline std::string Utf16(const std::wstring& text)
{
    std::string bytes = "\xFF\xFE";
    for (wchar_t c : text)
    {
        bytes += static_cast<char>(c & 0xFF);
        bytes += static_cast<char>(c >> 8);
    }
    return bytes;
}

// The tree as text, walked through the document's own cursors: an element is its name, its
// attributes in braces, "/" when written empty, and its children in parentheses; text is
// quoted, CDATA bracketed, comments between hashes. Top-level elements are joined by spaces.
class TreeText
{
public:
    explicit TreeText(CTqXML_Document& doc) : m_doc(doc) {}

    std::wstring Of(tagTQXML_ELEMENT* element)
    {
        std::wstring out;
        tagTQXML_CONTENT* c = nullptr;
        const TQXML_FINDCURSOR cursor = m_doc.FindContentFirst(element, &c);
        if (cursor == TQXML_NOCURSOR) return out;
        do
        {
            if (!out.empty() && !element) out += L' ';
            out += Content(c);
        } while (m_doc.FindContentNext(cursor, &c) == S_OK);
        EXPECT_EQ(m_doc.FindContentClose(cursor), S_OK);
        return out;
    }

private:
    std::wstring Content(tagTQXML_CONTENT* c)
    {
        switch (c->type)
        {
        case XML_CONTENT_CHARDATA:
            return L"\"" + std::wstring(c->data.text) + L"\"";
        case XML_CONTENT_CDATA:
            return L"[" + std::wstring(c->data.text) + L"]";
        case XML_CONTENT_COMMENT:
            return L"#" + std::wstring(c->data.text) + L"#";
        case XML_CONTENT_ELEMENT:
            break;
        }
        tagTQXML_ELEMENT& e = c->data.element;
        EXPECT_EQ(e.content, c);
        std::wstring out = e.name;
        if (e.attributes.count)
        {
            out += L'{';
            for (INT32 i = 0; i < e.attributes.count; ++i)
            {
                auto* a = static_cast<tagTQXML_ATTRIBUTE**>(e.attributes.items)[i];
                EXPECT_EQ(a->element, &e);
                out += (i ? L"," : L"") + std::wstring(a->name) + L"=" + a->value;
            }
            out += L'}';
        }
        if (e.isEmptyTag) out += L'/';
        if (e.children.count)
        {
            for (INT32 i = 0; i < e.children.count; ++i)
                EXPECT_EQ(static_cast<tagTQXML_CONTENT**>(e.children.items)[i]->parent, &e);
            out += L"(" + Of(&e) + L")";
        }
        return out;
    }

    CTqXML_Document& m_doc;
};

// A document parsed from bytes held by the object.
struct ParsedDoc
{
    explicit ParsedDoc(std::string text) : bytes(std::move(text))
    {
        opened = doc.OpenMemory(bytes.data(), static_cast<DWORD>(bytes.size()));
        parsed = SUCCEEDED(opened) ? doc.ParseFile() : opened;
    }
    std::wstring Tree() { return TreeText(doc).Of(nullptr); }
    tagTQXML_CONTENT* Root()
    {
        tagTQXML_CONTENT* root = nullptr;
        const TQXML_FINDCURSOR cursor = doc.FindContentFirst(nullptr, &root);
        if (cursor != TQXML_NOCURSOR) doc.FindContentClose(cursor);
        return root;
    }

    std::string bytes;
    CTqXML_Document doc;
    HRESULT opened = E_FAIL;
    HRESULT parsed = E_FAIL;
};

} // namespace tq::test
