// Decimal number parsers: integers of both widths and signs, and doubles.
#include "tqnumtext.h"

#include "numberscanner.h"

#include <limits>
#include <wchar.h>

namespace tq::text {
namespace {

// The digits of a scanned number up to its decimal point, saturated at limit.
ULONGLONG DigitsValue(const wchar_t* digits, ULONGLONG limit)
{
    ULONGLONG value = 0;
    for (; *digits >= L'0' && *digits <= L'9'; ++digits)
    {
        const unsigned digit = *digits - L'0';
        if (value > (limit - digit) / 10) return limit;
        value = value * 10 + digit;
    }
    return value;
}

// Unsigned forms read nothing from a text that starts with a sign or a point.
template <class T>
T ParseUnsigned(const wchar_t* text, const wchar_t** end)
{
    const ScannedNumber number = ScanNumber(text, true);
    ReportEnd(end, number.end);
    return static_cast<T>(DigitsValue(number.text, std::numeric_limits<T>::max()));
}

template <class T>
T ParseSigned(const wchar_t* text, const wchar_t** end)
{
    const ScannedNumber number = ScanNumber(text, true);
    ReportEnd(end, number.end);
    const bool negative = number.text[0] == L'-';
    const ULONGLONG positiveLimit = std::numeric_limits<T>::max();
    const ULONGLONG magnitude =
        DigitsValue(number.text + (negative ? 1 : 0), positiveLimit + (negative ? 1 : 0));
    return negative ? static_cast<T>(0 - magnitude) : static_cast<T>(magnitude);
}

template <class T, T (*Parse)(const wchar_t*, const wchar_t**)>
T ParseEx(const wchar_t* text, T defaultValue, T minValue, T maxValue, const wchar_t** end)
{
    const wchar_t* stop = nullptr;
    const T value = Parse(text, &stop);
    ReportEnd(end, stop);
    return ApplyExRules(value, stop, defaultValue, minValue, maxValue);
}

double ParseDouble(const wchar_t* text, const wchar_t** end, BOOL useLocale)
{
    const ScannedNumber number = ScanNumber(text, useLocale != FALSE);
    ReportEnd(end, number.end);
    return wcstod(number.text, nullptr);
}

} // namespace
} // namespace tq::text

using namespace tq::text;

TQKERNEL_API DWORD TqTextToDWordToken(const wchar_t* text, const wchar_t** end)
{
    return ParseUnsigned<DWORD>(text, end);
}

TQKERNEL_API DWORD TqTextToDWordTokenEx(const wchar_t* text, DWORD defaultValue, DWORD minValue,
                                        DWORD maxValue, const wchar_t** end)
{
    return ParseEx<DWORD, ParseUnsigned<DWORD>>(text, defaultValue, minValue, maxValue, end);
}

TQKERNEL_API ULONGLONG TqTextToDWordLongToken(const wchar_t* text, const wchar_t** end)
{
    return ParseUnsigned<ULONGLONG>(text, end);
}

TQKERNEL_API ULONGLONG TqTextToDWordLongTokenEx(const wchar_t* text, ULONGLONG defaultValue,
                                                ULONGLONG minValue, ULONGLONG maxValue,
                                                const wchar_t** end)
{
    return ParseEx<ULONGLONG, ParseUnsigned<ULONGLONG>>(text, defaultValue, minValue, maxValue,
                                                        end);
}

TQKERNEL_API LONG TqTextToLongToken(const wchar_t* text, const wchar_t** end)
{
    return ParseSigned<LONG>(text, end);
}

TQKERNEL_API LONG TqTextToLongTokenEx(const wchar_t* text, LONG defaultValue, LONG minValue,
                                      LONG maxValue, const wchar_t** end)
{
    return ParseEx<LONG, ParseSigned<LONG>>(text, defaultValue, minValue, maxValue, end);
}

TQKERNEL_API LONGLONG TqTextToLongLongToken(const wchar_t* text, const wchar_t** end)
{
    return ParseSigned<LONGLONG>(text, end);
}

TQKERNEL_API LONGLONG TqTextToLongLongTokenEx(const wchar_t* text, LONGLONG defaultValue,
                                              LONGLONG minValue, LONGLONG maxValue,
                                              const wchar_t** end)
{
    return ParseEx<LONGLONG, ParseSigned<LONGLONG>>(text, defaultValue, minValue, maxValue, end);
}

TQKERNEL_API double TqTextToDoubleToken(const wchar_t* text, const wchar_t** end, BOOL useLocale)
{
    return ParseDouble(text, end, useLocale);
}

TQKERNEL_API double TqTextToDoubleTokenEx(const wchar_t* text, double defaultValue, double minValue,
                                          double maxValue, const wchar_t** end, BOOL useLocale)
{
    const wchar_t* stop = nullptr;
    const double value = ParseDouble(text, &stop, useLocale);
    ReportEnd(end, stop);
    return ApplyExRules(value, stop, defaultValue, minValue, maxValue);
}
