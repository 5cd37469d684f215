// The locale values the number and printing formatters read, and a per-thread override of them.
#pragma once

#include <windows.h>

namespace tq::text {

// A separator or sign as the locale gives it: short, and possibly more than one character.
struct LocaleText
{
    wchar_t text[8] = {};
    int length = 0;

    bool IsAt(const wchar_t* position) const
    {
        return length > 0 && wcsncmp(position, text, length) == 0;
    }
};

// Which locale text a conversion asks for.
enum class LocaleItem
{
    NegativeSign,
    Thousand,
    Decimal,
    List,
    Time,
    SmpteWhole,
    SmpteNonDrop,
    SmpteDrop,
    Measure,
    Beat,
    Count
};

struct NumberLocale
{
    LocaleText texts[static_cast<int>(LocaleItem::Count)];
    UINT grouping = 3;    // in the form NUMBERFMT takes: 3 for "3;0", 32 for "3;2;0"
    UINT leadingZero = 1; // 1: "0.5", 0: ".5"

    const LocaleText& Get(LocaleItem item) const { return texts[static_cast<int>(item)]; }
    LocaleText& Get(LocaleItem item) { return texts[static_cast<int>(item)]; }
};

// The values of the process-wide internationals record, or the calling thread's override.
NumberLocale CurrentNumberLocale();

// The values a given locale has, with the record's fixed separators for SMPTE and music time.
NumberLocale NumberLocaleFromLcid(LCID lcid);

// Makes the calling thread format and parse with the given values while it lives; used where text
// must be produced for a locale other than the user's, and by tests that must not depend on the
// machine's settings. Nesting restores the outer values.
class ScopedNumberLocale
{
public:
    explicit ScopedNumberLocale(const NumberLocale& locale);
    ~ScopedNumberLocale();
    ScopedNumberLocale(const ScopedNumberLocale&) = delete;
    ScopedNumberLocale& operator=(const ScopedNumberLocale&) = delete;

private:
    NumberLocale m_locale;
    const NumberLocale* m_previous;
};

} // namespace tq::text
