// The XML document under the fuzz program: parse, then every lookup over the whole tree.
#include "fuzztarget.h"

#include "xmldocument.h"
#include "xmlescapes.h"

#include <cwchar>

namespace tqfuzz {

namespace {

Bytes FromText(const std::string& s)
{
    return Bytes(s.begin(), s.end());
}

Bytes Utf16(const std::wstring& s)
{
    Bytes b = {0xFF, 0xFE};
    for (wchar_t c : s)
    {
        b.push_back(static_cast<BYTE>(c));
        b.push_back(static_cast<BYTE>(c >> 8));
    }
    return b;
}

const char kIxml[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<BWFXML>
  <IXML_VERSION>1.52</IXML_VERSION>
  <PROJECT>Night &amp; Day</PROJECT>
  <SPEED><MASTER_SPEED>25/1</MASTER_SPEED><TIMECODE_RATE>25/1</TIMECODE_RATE></SPEED>
  <TRACK_LIST><TRACK_COUNT>2</TRACK_COUNT>
    <TRACK><CHANNEL_INDEX>1</CHANNEL_INDEX><NAME>Boom</NAME></TRACK>
    <TRACK><CHANNEL_INDEX>2</CHANNEL_INDEX><NAME>Lav</NAME></TRACK>
  </TRACK_LIST>
  <VENDOR_THING a="1" b='2'><![CDATA[raw <data>]]><!-- kept --></VENDOR_THING>
</BWFXML>
)";

const char kPreset[] = R"(<?xml version="1.0"?>
<!DOCTYPE preset>
<preset name="Warm" version="2"><?editor hint?>
  <param id="1">0.5</param><param id="2"/>
  <text>a &lt; b</text>
</preset>)";

// Every text of an element through the lookups, into buffers one character too small and just
// big enough.
void Probe(CTqXML_Document& doc, FuzzContext& context, tagTQXML_CONTENT* content)
{
    if (content->type != XML_CONTENT_ELEMENT)
    {
        const size_t length = wcslen(content->data.text);
        WCHAR* copy = context.Out<WCHAR>(length + 1, 2);
        wmemcpy(copy, content->data.text, length + 1);
        TqXML_DoesStringNeedEscapes(copy);
        TqXML_RemoveEscapes(copy);
        WCHAR* escaped = context.Out<WCHAR>(length * 5 + 1, 3);
        TqXML_AddEscapes(escaped, static_cast<DWORD>(length * 5 + 1), content->data.text);
        return;
    }
    tagTQXML_ELEMENT* e = &content->data.element;
    DWORD chars = 0;
    if (SUCCEEDED(doc.GetContentStringReqLen(e, &chars)))
    {
        doc.GetContentString(e, context.Out<WCHAR>(chars), chars);
        if (chars > 1) doc.GetContentString(e, context.Out<WCHAR>(chars - 1), chars - 1);
    }
    for (INT32 i = 0; i < e->attributes.count; ++i)
    {
        auto* a = static_cast<tagTQXML_ATTRIBUTE**>(e->attributes.items)[i];
        const DWORD length = static_cast<DWORD>(wcslen(a->value));
        doc.GetAttributeString(e, a->name, context.Out<WCHAR>(length + 1), length + 1);
    }
    if (e->children.count)
    {
        auto* first = static_cast<tagTQXML_CONTENT**>(e->children.items)[0];
        if (first->type == XML_CONTENT_ELEMENT)
            doc.GetChildContentString(content, first->data.element.name, context.Out<WCHAR>(8), 8);
    }
}

} // namespace

std::vector<Bytes> XmlSeeds()
{
    return {FromText(kIxml), FromText(kPreset), FromText("\xEF\xBB\xBF" + std::string(kPreset)),
            Utf16(std::wstring(kIxml, kIxml + sizeof kIxml - 1)),
            Utf16(L"<a x=\"\u00e9\">\u20ac<b/></a>")};
}

HRESULT RunXml(FuzzContext& context)
{
    CTqXML_Document doc;
    // Every 64th input goes through a file, for the mapping.
    const bool viaFile = context.Size() % 64 == 0;
    const HRESULT opened = viaFile
                               ? doc.OpenFile(context.FilePath())
                               : doc.OpenMemory(context.Data(), static_cast<DWORD>(context.Size()));
    if (FAILED(opened)) return opened;
    const HRESULT parsed = doc.ParseFile();

    // Walk the whole tree through the cursors, depth first with a stack of open cursors.
    std::vector<TQXML_FINDCURSOR> open;
    tagTQXML_CONTENT* c = nullptr;
    TQXML_FINDCURSOR cursor = doc.FindContentFirst(nullptr, &c);
    if (cursor != TQXML_NOCURSOR) open.push_back(cursor);
    while (!open.empty())
    {
        Probe(doc, context, c);
        tagTQXML_CONTENT* child = nullptr;
        if (c->type == XML_CONTENT_ELEMENT &&
            (cursor = doc.FindContentFirst(&c->data.element, &child)) != TQXML_NOCURSOR)
        {
            open.push_back(cursor);
            c = child;
            continue;
        }
        while (!open.empty() && doc.FindContentNext(open.back(), &c) != S_OK)
        {
            doc.FindContentClose(open.back());
            open.pop_back();
        }
    }
    return parsed;
}

} // namespace tqfuzz
