// Hexadecimal parsers, with or without a "0x" prefix.
#include "tqnumtext.h"

#include "numberscanner.h"

#include <limits>
#include <wctype.h>

namespace tq::text {
namespace {

int HexDigit(wchar_t c)
{
    if (c >= L'0' && c <= L'9') return c - L'0';
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    return -1;
}

// Values too large for the type saturate at its maximum.
template <class T>
T ParseHex(const wchar_t* text, const wchar_t** end)
{
    if (!text)
    {
        ReportEnd(end, text);
        return 0;
    }
    const wchar_t* c = text;
    while (iswspace(*c))
        ++c;
    if (c[0] == L'0' && (c[1] == L'x' || c[1] == L'X')) c += 2;
    T value = 0;
    bool saturated = false;
    for (int digit; (digit = HexDigit(*c)) >= 0; ++c)
    {
        if (value > (std::numeric_limits<T>::max() >> 4)) saturated = true;
        value = static_cast<T>(value << 4 | digit);
    }
    ReportEnd(end, c);
    return saturated ? std::numeric_limits<T>::max() : value;
}

template <class T>
T ParseHexEx(const wchar_t* text, T defaultValue, T minValue, T maxValue, const wchar_t** end)
{
    const wchar_t* stop = nullptr;
    const T value = ParseHex<T>(text, &stop);
    ReportEnd(end, stop);
    return ApplyExRules(value, stop, defaultValue, minValue, maxValue);
}

} // namespace
} // namespace tq::text

using tq::text::ParseHex;
using tq::text::ParseHexEx;

TQKERNEL_API DWORD TqHexToDWordToken(const wchar_t* text, const wchar_t** end)
{
    return ParseHex<DWORD>(text, end);
}

TQKERNEL_API DWORD TqHexToDWordTokenEx(const wchar_t* text, DWORD defaultValue, DWORD minValue,
                                       DWORD maxValue, const wchar_t** end)
{
    return ParseHexEx<DWORD>(text, defaultValue, minValue, maxValue, end);
}

TQKERNEL_API ULONGLONG TqHexToDWordLongToken(const wchar_t* text, const wchar_t** end)
{
    return ParseHex<ULONGLONG>(text, end);
}

TQKERNEL_API ULONGLONG TqHexToDWordLongTokenEx(const wchar_t* text, ULONGLONG defaultValue,
                                               ULONGLONG minValue, ULONGLONG maxValue,
                                               const wchar_t** end)
{
    return ParseHexEx<ULONGLONG>(text, defaultValue, minValue, maxValue, end);
}
