// Colours to text in three styles, and the parser that reads all of them back.
#include "tqnumtext.h"

#include "numberscanner.h"

#include <stdio.h>
#include <string.h>
#include <wctype.h>

namespace tq::text {
namespace {

HRESULT WriteColor(wchar_t* buffer, int capacity, int* outLength, COLORREF color, int style)
{
    if (outLength) *outLength = 0;
    if (!buffer || capacity < 1) return E_INVALIDARG;
    buffer[0] = L'\0';
    if (style < TQCOLORTEXT_RGB || style > TQCOLORTEXT_HEX) return E_INVALIDARG;
    // Values beyond 24 bits carry flags that only the raw form can show.
    if (color > 0xFFFFFF) style = TQCOLORTEXT_HEX;

    wchar_t text[32];
    switch (style)
    {
    case TQCOLORTEXT_RGB:
        _snwprintf(text, 32, L"RGB(%d,%d,%d)", GetRValue(color), GetGValue(color),
                   GetBValue(color));
        break;
    case TQCOLORTEXT_HTML:
        _snwprintf(text, 32, L"#%02x%02x%02x", GetRValue(color), GetGValue(color),
                   GetBValue(color));
        break;
    default:
        // "%#010x" writes no prefix for zero.
        _snwprintf(text, 32, L"0x%08x", static_cast<unsigned>(color));
        break;
    }
    text[31] = L'\0';
    const int length = lstrlenW(text);
    if (length >= capacity) return TQ_E_BUFFERTOOSMALL;
    memcpy(buffer, text, (length + 1) * sizeof(wchar_t));
    if (outLength) *outLength = length;
    return S_OK;
}

const wchar_t* SkipSpace(const wchar_t* c)
{
    while (iswspace(*c))
        ++c;
    return c;
}

// One colour component of "RGB(r, g, b)": plain decimal digits, since a locale's thousands
// separator may be the comma between the components. Null when there are none or above 255.
const wchar_t* ReadComponent(const wchar_t* c, int* component)
{
    c = SkipSpace(c);
    if (*c < L'0' || *c > L'9') return nullptr;
    int value = 0;
    for (; *c >= L'0' && *c <= L'9'; ++c)
    {
        value = value * 10 + (*c - L'0');
        if (value > 255) return nullptr;
    }
    *component = value;
    return SkipSpace(c);
}

// "RGB(r,g,b)": returns the character behind ")" or null.
const wchar_t* ReadRgb(const wchar_t* c, COLORREF* color)
{
    if (_wcsnicmp(c, L"RGB", 3) != 0) return nullptr;
    c = SkipSpace(c + 3);
    if (*c++ != L'(') return nullptr;
    int parts[3];
    for (int i = 0; i < 3; ++i)
    {
        c = ReadComponent(c, &parts[i]);
        if (!c || *c++ != (i < 2 ? L',' : L')')) return nullptr;
    }
    *color = RGB(parts[0], parts[1], parts[2]);
    return c;
}

// "#rrggbb": returns the character behind the six digits or null.
const wchar_t* ReadHtml(const wchar_t* c, COLORREF* color)
{
    if (*c++ != L'#') return nullptr;
    wchar_t digits[7] = {};
    for (int i = 0; i < 6; ++i)
    {
        if (!iswxdigit(c[i])) return nullptr;
        digits[i] = c[i];
    }
    if (iswxdigit(c[6])) return nullptr;
    const DWORD value = TqHexToDWordToken(digits, nullptr);
    *color = RGB(value >> 16 & 0xFF, value >> 8 & 0xFF, value & 0xFF);
    return c + 6;
}

COLORREF ParseColor(const wchar_t* text, const wchar_t** end)
{
    if (!text)
    {
        ReportEnd(end, text);
        return 0;
    }
    const wchar_t* c = SkipSpace(text);
    COLORREF color = 0;
    const wchar_t* stop = ReadRgb(c, &color);
    if (!stop) stop = ReadHtml(c, &color);
    if (!stop)
    {
        // The raw form, and whatever else: the hex parser takes it or stops at once.
        color = TqHexToDWordToken(c, &stop);
        if (color == 0xFFFFFFFF) color = TQCOLORREF_INVALID;
    }
    ReportEnd(end, stop);
    return color;
}

} // namespace
} // namespace tq::text

TQKERNEL_API HRESULT TqColorrefToTextEx(wchar_t* buffer, int capacity, int* outLength,
                                        COLORREF color, int style)
{
    return tq::text::WriteColor(buffer, capacity, outLength, color, style);
}

TQKERNEL_API int TqColorrefToText(wchar_t* buffer, int capacity, COLORREF color, int style)
{
    int length = 0;
    tq::text::WriteColor(buffer, capacity, &length, color, style);
    return length;
}

TQKERNEL_API COLORREF TqTextToColorrefToken(const wchar_t* text, const wchar_t** end)
{
    return tq::text::ParseColor(text, end);
}

// Intended: the default is not consulted. A text that is no colour reads as the hex parser leaves
// it, and only the raw value 0xFFFFFFFF gives TQCOLORREF_INVALID.
TQKERNEL_API COLORREF TqTextToColorrefTokenEx(const wchar_t* text, COLORREF, const wchar_t** end)
{
    return tq::text::ParseColor(text, end);
}

TQKERNEL_API COLORREF TqTextToColorref(const wchar_t* text)
{
    return TqTextToColorrefTokenEx(text, TQCOLORREF_INVALID, nullptr);
}
