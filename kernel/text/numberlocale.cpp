// Where the formatters get their locale values: the internationals record, or a thread's override.
#include "numberlocale.h"

#include "tqlang.h"

#include <string.h>

namespace tq::text {
namespace {

thread_local const NumberLocale* t_override = nullptr;

template <class Source>
LocaleText FromRecordText(const Source& source)
{
    LocaleText text;
    const UINT32 length = source.length < 8 ? source.length : 7;
    memcpy(text.text, source.text, length * sizeof(wchar_t));
    text.length = static_cast<int>(length);
    return text;
}

LocaleText FromLiteral(const wchar_t* literal)
{
    LocaleText text;
    text.length = lstrlenW(literal);
    memcpy(text.text, literal, text.length * sizeof(wchar_t));
    return text;
}

LocaleText FromLocaleInfo(LCID lcid, LCTYPE type)
{
    LocaleText text;
    const int written = GetLocaleInfoW(lcid, type, text.text, 8);
    text.length = written > 0 ? written - 1 : 0;
    text.text[text.length] = L'\0';
    return text;
}

UINT LocaleNumber(LCID lcid, LCTYPE type)
{
    DWORD value = 0;
    GetLocaleInfoW(lcid, type | LOCALE_RETURN_NUMBER, reinterpret_cast<wchar_t*>(&value),
                   sizeof(value) / sizeof(wchar_t));
    return value;
}

// "3;0" is 3, "3;2;0" is 32, and a pattern that does not end in ";0" repeats no group: "3" is 30.
UINT GroupingFromPattern(const wchar_t* pattern)
{
    UINT grouping = 0;
    const wchar_t* last = pattern;
    for (const wchar_t* c = pattern; *c; ++c)
    {
        if (*c < L'0' || *c > L'9') continue;
        grouping = grouping * 10 + (*c - L'0');
        last = c;
    }
    if (*last == L'0' && last != pattern) return grouping / 10;
    return grouping * 10;
}

// The record keeps the two separators apart; a locale read directly must get the same repair.
void SeparateDecimalFromThousand(NumberLocale& locale)
{
    const LocaleText& thousand = locale.Get(LocaleItem::Thousand);
    LocaleText& decimal = locale.Get(LocaleItem::Decimal);
    if (thousand.length == 0 || !thousand.IsAt(decimal.text)) return;
    decimal = FromLiteral(thousand.text[0] == L'.' ? L"," : L".");
}

} // namespace

NumberLocale NumberLocaleFromLcid(LCID lcid)
{
    NumberLocale locale;
    locale.Get(LocaleItem::NegativeSign) = FromLocaleInfo(lcid, LOCALE_SNEGATIVESIGN);
    locale.Get(LocaleItem::Thousand) = FromLocaleInfo(lcid, LOCALE_STHOUSAND);
    locale.Get(LocaleItem::Decimal) = FromLocaleInfo(lcid, LOCALE_SDECIMAL);
    locale.Get(LocaleItem::List) = FromLocaleInfo(lcid, LOCALE_SLIST);
    locale.Get(LocaleItem::Time) = FromLocaleInfo(lcid, LOCALE_STIME);
    locale.Get(LocaleItem::SmpteWhole) = FromLiteral(L":");
    locale.Get(LocaleItem::SmpteNonDrop) = FromLiteral(L".");
    locale.Get(LocaleItem::SmpteDrop) = FromLiteral(L",");
    locale.Get(LocaleItem::Measure) = FromLiteral(L".");
    locale.Get(LocaleItem::Beat) = FromLiteral(L".");
    wchar_t pattern[16] = {};
    GetLocaleInfoW(lcid, LOCALE_SGROUPING, pattern, 16);
    locale.grouping = GroupingFromPattern(pattern);
    locale.leadingZero = LocaleNumber(lcid, LOCALE_ILZERO);
    SeparateDecimalFromThousand(locale);
    return locale;
}

NumberLocale CurrentNumberLocale()
{
    if (t_override) return *t_override;
    TQINTERNATIONALS record = {};
    TqLang_GetInternationals(&record, sizeof(record));

    NumberLocale locale;
    locale.Get(LocaleItem::NegativeSign) = FromRecordText(record.negativeSign);
    locale.Get(LocaleItem::Thousand) = FromRecordText(record.thousandSeparator);
    locale.Get(LocaleItem::Decimal) = FromRecordText(record.decimalSeparator);
    locale.Get(LocaleItem::List) = FromRecordText(record.listSeparator);
    locale.Get(LocaleItem::Time) = FromRecordText(record.timeSeparator);
    locale.Get(LocaleItem::SmpteWhole) = FromRecordText(record.smpteWholeSeparator);
    locale.Get(LocaleItem::SmpteNonDrop) = FromRecordText(record.smpteNonDropSeparator);
    locale.Get(LocaleItem::SmpteDrop) = FromRecordText(record.smpteDropSeparator);
    locale.Get(LocaleItem::Measure) = FromRecordText(record.measureSeparator);
    locale.Get(LocaleItem::Beat) = FromRecordText(record.beatSeparator);
    locale.grouping = record.grouping;
    locale.leadingZero = record.leadingZero;
    return locale;
}

ScopedNumberLocale::ScopedNumberLocale(const NumberLocale& locale)
    : m_locale(locale), m_previous(t_override)
{
    t_override = &m_locale;
}

ScopedNumberLocale::~ScopedNumberLocale()
{
    t_override = m_previous;
}

} // namespace tq::text
