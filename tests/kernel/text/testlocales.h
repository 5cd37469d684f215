// Number locales the printing and number-text tests run under, built by hand so that no result
// depends on the machine's settings.
#pragma once

#include "numberlocale.h"

#include <string.h>

#include <string>

namespace tq::test {

inline text::LocaleText Text(const wchar_t* value)
{
    text::LocaleText result;
    result.length = static_cast<int>(wcslen(value));
    memcpy(result.text, value, result.length * sizeof(wchar_t));
    return result;
}

inline text::NumberLocale MakeLocale(const wchar_t* thousand, const wchar_t* decimal, UINT grouping,
                                     const wchar_t* list)
{
    using text::LocaleItem;
    text::NumberLocale locale;
    locale.Get(LocaleItem::NegativeSign) = Text(L"-");
    locale.Get(LocaleItem::Thousand) = Text(thousand);
    locale.Get(LocaleItem::Decimal) = Text(decimal);
    locale.Get(LocaleItem::List) = Text(list);
    locale.Get(LocaleItem::Time) = Text(L":");
    locale.Get(LocaleItem::SmpteWhole) = Text(L":");
    locale.Get(LocaleItem::SmpteNonDrop) = Text(L".");
    locale.Get(LocaleItem::SmpteDrop) = Text(L",");
    locale.Get(LocaleItem::Measure) = Text(L".");
    locale.Get(LocaleItem::Beat) = Text(L".");
    locale.grouping = grouping;
    locale.leadingZero = 1;
    return locale;
}

// "1,234,567.5"
inline text::NumberLocale English()
{
    return MakeLocale(L",", L".", 3, L",");
}

// "1.234.567,5"
inline text::NumberLocale German()
{
    return MakeLocale(L".", L",", 3, L";");
}

// "12,34,567.5": groups of three, then of two.
inline text::NumberLocale Indian()
{
    return MakeLocale(L",", L".", 32, L",");
}

// A plain digit text grouped in threes with commas, the English form, done by hand to compare long
// results with.
inline std::wstring GroupedInThrees(const std::wstring& number)
{
    const size_t point = number.find(L'.');
    const size_t end = point == std::wstring::npos ? number.size() : point;
    const size_t first = number[0] == L'-' ? 1 : 0;
    std::wstring result = number.substr(0, first);
    for (size_t i = first; i < end; ++i)
    {
        if (i > first && (end - i) % 3 == 0) result += L',';
        result += number[i];
    }
    return result + number.substr(end);
}

} // namespace tq::test
