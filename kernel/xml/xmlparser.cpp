// The XML parser: a loop driven by the class of the character at the cursor, one routine per
// construct.
#include "xmldocument.h"

#include "xmlcharclass.h"
#include "xmlencoding.h"
#include "xmltext.h"
#include "xmltree.h"

#include <cwchar>

using namespace tq::xml;

namespace {

// A GlobalAlloc text that is freed unless handed on.
class OwnedText
{
public:
    OwnedText() noexcept = default;
    OwnedText(const OwnedText&) = delete;
    OwnedText& operator=(const OwnedText&) = delete;
    ~OwnedText()
    {
        if (m_text) GlobalFree(m_text);
    }
    WCHAR** Put() noexcept { return &m_text; }
    const WCHAR* Get() const noexcept { return m_text; }
    WCHAR* Release() noexcept
    {
        WCHAR* t = m_text;
        m_text = nullptr;
        return t;
    }

private:
    WCHAR* m_text = nullptr;
};

} // namespace

HRESULT CTqXML_Document::ParseFile() noexcept
{
    if (!m_encoding) return E_UNEXPECTED;
    ClearCursors();
    ClearTree();
    // A fresh cursor at the start of the data.
    ITqXMLEncoding* encoding = CreateEncoding(m_data, m_size);
    if (!encoding) return E_OUTOFMEMORY;
    m_encoding->Release();
    m_encoding = encoding;

    HRESULT status = S_OK;
    for (;;)
    {
        const int charClass = m_encoding->CharClass();
        if (charClass == kClassEnd) break;
        if (StartsCharData(charClass))
            status = ParseCharData();
        else if (charClass == kClassOpen)
        {
            m_encoding->Advance();
            switch (m_encoding->CharClass())
            {
            case kClassBang:
                status = ParseMarkupDeclaration();
                break;
            case kClassSlash:
                status = ParseEndTag();
                break;
            case kClassQuestion:
                status = m_current ? ParsePI() : ParseXMLDeclaration();
                break;
            case kClassNameStart:
                status = ParseStartTag();
                break;
            default:
                status = S_OK;
                break;
            }
        }
        else
            m_encoding->Advance();
        // Only the status of the last construct counts: a damaged stretch is passed over and
        // the parse goes on. Running out of memory is no construct's fault, and ends it.
        if (status == E_OUTOFMEMORY) break;
    }
    m_current = nullptr;
    return status;
}

void CTqXML_Document::SkipSpace() noexcept
{
    while (m_encoding->CharClass() == kClassSpace)
        m_encoding->Advance();
}

tagTQXML_CONTENT* CTqXML_Document::AllocContent(tagXML_CONTENT_TYPE type, WCHAR* text) noexcept
{
    return NewContent(Siblings(m_current), m_current, type, text);
}

HRESULT CTqXML_Document::StoreText(tagXML_CONTENT_TYPE type, WCHAR* text) noexcept
{
    if (!m_current)
    {
        GlobalFree(text);
        return S_OK;
    }
    return AllocContent(type, text) ? S_OK : E_OUTOFMEMORY;
}

// At the first character of the name.
HRESULT CTqXML_Document::ParseStartTag() noexcept
{
    OwnedText name;
    if (FAILED(m_encoding->ReadUntil(" \t\r\n/>", name.Put(), nullptr))) return E_OUTOFMEMORY;
    tagTQXML_ELEMENT* parent = m_current;
    tagTQXML_CONTENT* content = AllocContent(XML_CONTENT_ELEMENT, name.Release());
    if (!content) return E_OUTOFMEMORY;
    tagTQXML_ELEMENT* element = &content->data.element;
    m_current = element;
    SkipSpace();
    switch (m_encoding->CharClass())
    {
    case kClassSlash:
        element->isEmptyTag = 1;
        m_current = parent;
        m_encoding->Advance();
        m_encoding->Advance();
        return S_OK;
    case kClassClose:
        m_encoding->Advance();
        return S_OK;
    case kClassNameStart:
        return ParseAttributes(element);
    default:
        m_current = parent;
        FreeBranch(Siblings(parent), content);
        return E_FAIL;
    }
}

// At the first attribute's name. A broken attribute leaves the element current with the
// attributes before it.
HRESULT CTqXML_Document::ParseAttributes(tagTQXML_ELEMENT* element) noexcept
{
    for (;;)
    {
        SkipSpace();
        switch (m_encoding->CharClass())
        {
        case kClassClose:
            m_encoding->Advance();
            return S_OK;
        case kClassSlash:
            element->isEmptyTag = 1;
            m_current = element->content->parent;
            m_encoding->Advance();
            return S_OK;
        case kClassEnd:
            return E_FAIL;
        default:
            break;
        }
        OwnedText name, value;
        // A name cannot hold ">": stopping there keeps a bare word from swallowing the rest
        // of the document.
        if (FAILED(m_encoding->ReadUntil("=>", name.Put(), nullptr))) return E_OUTOFMEMORY;
        if (m_encoding->CharClass() != kClassEquals) return E_FAIL;
        m_encoding->Advance();
        if (m_encoding->CharClass() != kClassQuote) return E_FAIL;
        m_encoding->Advance();
        // Only a quotation mark closes a value, also one opened by an apostrophe: documents
        // of this system never quote otherwise, and one that did is read as it always was.
        if (FAILED(m_encoding->ReadUntil("\"", value.Put(), nullptr))) return E_OUTOFMEMORY;
        if (m_encoding->CharClass() != kClassQuote) return E_FAIL;
        m_encoding->Advance();

        const tagTQXML_ATTRIBUTE initial = {element, nullptr, nullptr};
        INT32 index = -1;
        if (FAILED(TqList_AllocAndInsertItem(&element->attributes, &initial, sizeof initial, -1,
                                             &index)))
            return E_OUTOFMEMORY;
        auto* attribute = ItemAt<tagTQXML_ATTRIBUTE>(&element->attributes, index);
        attribute->name = name.Release();
        attribute->value = value.Release();
    }
}

// At the "/".
HRESULT CTqXML_Document::ParseEndTag() noexcept
{
    m_encoding->Advance();
    OwnedText name;
    if (FAILED(m_encoding->ReadUntil(">", name.Put(), nullptr))) return E_OUTOFMEMORY;
    if (m_encoding->CharClass() != kClassClose) return E_FAIL;
    m_encoding->Advance();
    // A mismatch leaves the current element open, so that what follows still lands in it.
    if (!m_current || lstrcmpW(name.Get(), m_current->name) != 0) return E_FAIL;
    m_current = m_current->content->parent;
    return S_OK;
}

// At the "!".
HRESULT CTqXML_Document::ParseMarkupDeclaration() noexcept
{
    m_encoding->Advance();
    for (;;)
    {
        switch (m_encoding->CharClass())
        {
        case kClassDash:
            return ParseComment();
        case kClassOpenBracket:
            return ParseCDATA();
        case kClassClose:
            m_encoding->Advance();
            return S_OK;
        case kClassEnd:
            return E_FAIL;
        default:
            m_encoding->Advance();
            break;
        }
    }
}

// At the first "-". The text runs to the first ">" that follows "--".
HRESULT CTqXML_Document::ParseComment() noexcept
{
    if (!m_encoding->MatchLiteral("--", FALSE)) return E_FAIL;
    TextBuilder text;
    for (;;)
    {
        OwnedText piece;
        DWORD length = 0;
        if (FAILED(m_encoding->ReadUntil(">", piece.Put(), &length))) return E_OUTOFMEMORY;
        if (!text.Append(piece.Get(), length)) return E_OUTOFMEMORY;
        if (m_encoding->CharClass() != kClassClose) return E_FAIL;
        m_encoding->Advance();
        if (text.EndsWith(L"--")) break;
        if (!text.Append(L">", 1)) return E_OUTOFMEMORY;
    }
    text.DropLast(2);
    WCHAR* stored = text.Detach();
    if (!stored) return E_OUTOFMEMORY;
    return StoreText(XML_CONTENT_COMMENT, stored);
}

// At the "[". The section ends at its first ">"; a "]]" in front of it is not part of the text.
HRESULT CTqXML_Document::ParseCDATA() noexcept
{
    if (!m_encoding->MatchLiteral("[CDATA[", FALSE)) return E_FAIL;
    OwnedText text;
    DWORD length = 0;
    if (FAILED(m_encoding->ReadUntil(">", text.Put(), &length))) return E_OUTOFMEMORY;
    if (m_encoding->CharClass() != kClassClose) return E_FAIL;
    m_encoding->Advance();
    WCHAR* stored = text.Release();
    if (length >= 2 && stored[length - 1] == L']' && stored[length - 2] == L']')
        stored[length - 2] = L'\0';
    return StoreText(XML_CONTENT_CDATA, stored);
}

// At the "?" outside every element. The pseudo-attributes are stepped over: none of them
// changes how the data is read.
HRESULT CTqXML_Document::ParseXMLDeclaration() noexcept
{
    m_encoding->Advance();
    if (!m_encoding->MatchLiteral("xml", TRUE)) return E_FAIL;
    for (;;)
    {
        SkipSpace();
        if (m_encoding->MatchLiteral("?>", FALSE)) return S_OK;
        if (!m_encoding->MatchLiteral("version", TRUE) &&
            !m_encoding->MatchLiteral("encoding", TRUE) &&
            !m_encoding->MatchLiteral("standalone", TRUE))
            return E_FAIL;
        SkipSpace();
        if (m_encoding->CharClass() != kClassEquals) return E_FAIL;
        m_encoding->Advance();
        SkipSpace();
        if (m_encoding->CharClass() != kClassQuote) return E_FAIL;
        m_encoding->Advance();
        m_encoding->ReadUntil("\"'", nullptr, nullptr);
        if (m_encoding->CharClass() != kClassQuote) return E_FAIL;
        m_encoding->Advance();
    }
}

// At the "?" inside an element: skipped to its "?>".
HRESULT CTqXML_Document::ParsePI() noexcept
{
    m_encoding->Advance();
    for (;;)
    {
        m_encoding->ReadUntil("?", nullptr, nullptr);
        if (m_encoding->CharClass() == kClassEnd) return E_FAIL;
        m_encoding->Advance();
        if (m_encoding->CharClass() == kClassClose)
        {
            m_encoding->Advance();
            return S_OK;
        }
    }
}

// At the first character of the text, which runs to the next "<" as it stands.
HRESULT CTqXML_Document::ParseCharData() noexcept
{
    if (!m_current)
    {
        m_encoding->ReadUntil("<", nullptr, nullptr); // outside every element: dropped
        return S_OK;
    }
    OwnedText text;
    if (FAILED(m_encoding->ReadUntil("<", text.Put(), nullptr))) return E_OUTOFMEMORY;
    return StoreText(XML_CONTENT_CHARDATA, text.Release());
}
