// Reading the numbers of a time text one after the other.
#include "timefields.h"

#include "numberscanner.h"

#include <wchar.h>

namespace tq::nanotime {

namespace {

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

} // namespace

const wchar_t* FirstDigit(const wchar_t* text)
{
    if (!text) return nullptr;
    while (*text && !IsDigit(*text))
        ++text;
    return *text ? text : nullptr;
}

bool NextDecimalField(const wchar_t* text, Field* field)
{
    const wchar_t* start = FirstDigit(text);
    if (!start) return false;
    const text::ScannedNumber number = text::ScanNumber(start, true);
    field->value = wcstod(number.text, nullptr);
    field->start = start;
    field->end = number.end;
    return true;
}

bool NextIntegerField(const wchar_t* text, Field* field)
{
    const wchar_t* start = FirstDigit(text);
    if (!start) return false;
    constexpr ULONGLONG kLimit = ~0ull;
    ULONGLONG value = 0;
    const wchar_t* c = start;
    for (; IsDigit(*c); ++c)
    {
        const unsigned digit = static_cast<unsigned>(*c - L'0');
        value = value > (kLimit - digit) / 10 ? kLimit : value * 10 + digit;
    }
    field->integer = value;
    field->digits = static_cast<int>(c - start);
    field->start = start;
    field->end = c;
    return true;
}

} // namespace tq::nanotime
