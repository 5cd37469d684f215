// The three character entities of XML text.
#include "xmlescapes.h"

#include <cwchar>

namespace {

struct EntityPair
{
    WCHAR character;
    const WCHAR* entity;
    size_t length;
};

constexpr EntityPair kEscapes[] = {
    {L'&', L"&amp;", 5},
    {L'<', L"&lt;", 4},
    {L'>', L"&gt;", 4},
};

// The escape whose entity begins at text, or null.
const EntityPair* EntityAt(const WCHAR* text) noexcept
{
    for (const EntityPair& e : kEscapes)
        if (wcsncmp(text, e.entity, e.length) == 0) return &e;
    return nullptr;
}

// The escape text's first character needs, or null.
const EntityPair* NeededAt(const WCHAR* text) noexcept
{
    if (*text == L'&') return EntityAt(text) ? nullptr : &kEscapes[0];
    for (const EntityPair& e : kEscapes)
        if (*text == e.character) return &e;
    return nullptr;
}

} // namespace

TQKERNEL_API BOOL TqXML_DoesStringHaveEscapes(const WCHAR* text)
{
    if (!text) return FALSE;
    for (; *text; ++text)
        if (*text == L'&' && EntityAt(text)) return TRUE;
    return FALSE;
}

TQKERNEL_API BOOL TqXML_DoesStringNeedEscapes(const WCHAR* text)
{
    if (!text) return FALSE;
    for (; *text; ++text)
        if (NeededAt(text)) return TRUE;
    return FALSE;
}

TQKERNEL_API DWORD TqXML_RemoveEscapes(WCHAR* text)
{
    if (!text) return 0;
    WCHAR* out = text;
    for (const WCHAR* in = text; *in;)
    {
        const EntityPair* e = *in == L'&' ? EntityAt(in) : nullptr;
        *out++ = e ? e->character : *in;
        in += e ? e->length : 1;
    }
    *out = L'\0';
    return static_cast<DWORD>(out - text);
}

TQKERNEL_API HRESULT TqXML_AddEscapes(WCHAR* buffer, DWORD capacity, const WCHAR* text)
{
    if (!buffer || capacity == 0 || !text) return E_INVALIDARG;
    // Intended: after the first entity the later ones only move the output on, leaving what
    // the buffer held there; callers pass text with one such character or a cleared buffer.
    bool entityWritten = false;
    SIZE_T out = 0;
    SIZE_T cutAt = capacity; // where the first piece that did not fit would have gone
    for (; *text; ++text)
    {
        const EntityPair* e = NeededAt(text);
        const SIZE_T length = e ? e->length : 1;
        if (out + length >= capacity)
        {
            if (cutAt == capacity) cutAt = out;
        }
        else if (!e)
            buffer[out] = *text;
        else if (!entityWritten)
            wmemcpy(buffer + out, e->entity, length);
        if (e) entityWritten = true;
        out += length;
    }
    const bool cut = cutAt < capacity;
    buffer[cut ? cutAt : out] = L'\0';
    return cut ? TQ_E_BUFFERTOOSMALL : S_OK;
}
