// The token scanner shared by all number parsers.
#include "numberscanner.h"

#include "numberlocale.h"

#include <wctype.h>

namespace tq::text {
namespace {

// Keeps what fits; the text it fills starts zeroed, so it is always terminated.
class Collector
{
public:
    explicit Collector(wchar_t* text) : m_text(text) {}
    void Add(wchar_t c)
    {
        if (m_length < kScannedChars - 1) m_text[m_length++] = c;
    }

private:
    wchar_t* m_text;
    int m_length = 0;
};

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

const wchar_t* ScanPlain(const wchar_t* c, Collector& out)
{
    if (*c == L'-')
    {
        out.Add(L'-');
        ++c;
    }
    for (;; ++c)
    {
        if (IsDigit(*c) || *c == L'.')
            out.Add(*c);
        else if (*c != L',')
            return c;
    }
}

const wchar_t* ScanLocale(const wchar_t* c, Collector& out)
{
    const NumberLocale locale = CurrentNumberLocale();
    const LocaleText& negative = locale.Get(LocaleItem::NegativeSign);
    const LocaleText& thousand = locale.Get(LocaleItem::Thousand);
    const LocaleText& decimal = locale.Get(LocaleItem::Decimal);
    // The system itself writes a plain "-", so that reads as a sign under any locale.
    if (negative.IsAt(c))
    {
        out.Add(L'-');
        c += negative.length;
    }
    else if (*c == L'-')
    {
        out.Add(L'-');
        ++c;
    }
    for (;;)
    {
        if (thousand.IsAt(c))
        {
            c += thousand.length;
        }
        else if (decimal.IsAt(c))
        {
            out.Add(L'.');
            c += decimal.length;
        }
        else if (IsDigit(*c))
        {
            out.Add(*c++);
        }
        else
        {
            return c;
        }
    }
}

} // namespace

ScannedNumber ScanNumber(const wchar_t* text, bool useLocale)
{
    ScannedNumber number;
    if (!text)
    {
        number.end = text;
        return number;
    }
    const wchar_t* c = text;
    while (iswspace(*c))
        ++c;
    Collector out(number.text);
    number.end = useLocale ? ScanLocale(c, out) : ScanPlain(c, out);
    return number;
}

bool IsUnreadable(const wchar_t* end)
{
    return end && *end != L'\0' && !iswspace(*end);
}

} // namespace tq::text
