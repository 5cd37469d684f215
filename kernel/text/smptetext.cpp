// Reading timecode text: any separators, packed digits, and the last number always the frames.
#include "tqsmpte.h"

#include "smpteformat.h"

#include <wchar.h>
#include <wctype.h>

namespace tq::smpte {
namespace {

constexpr int kFields = 4;

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

// The four time fields filled from the right: each new number enters as the frames and moves the
// earlier ones up, so that "12:05" is 12 seconds and 5 frames.
class Fields
{
public:
    bool Full() const { return m_count == kFields; }
    void Enter(UINT32 number)
    {
        if (Full()) return;
        for (int i = 0; i < kFields - 1; ++i)
            m_values[i] = m_values[i + 1];
        m_values[kFields - 1] = number;
        ++m_count;
    }
    void Store(_smpteval* value) const
    {
        value->hours = m_values[0];
        value->minutes = m_values[1];
        value->seconds = m_values[2];
        value->frames = m_values[3];
    }

private:
    UINT32 m_values[kFields] = {};
    int m_count = 0;
};

// A run of digits enters as numbers of at most two digits, paired from the right: "010203" is
// 01 02 03, "12345" is 1 23 45.
const wchar_t* EnterDigitRun(const wchar_t* run, const wchar_t* end, Fields& fields)
{
    const wchar_t* stop = run;
    while (stop < end && IsDigit(*stop))
        ++stop;
    const wchar_t* c = run;
    if ((stop - run) % 2 != 0 && stop - run > 2)
    {
        fields.Enter(static_cast<UINT32>(*c - L'0'));
        ++c;
    }
    while (c < stop && !fields.Full())
    {
        UINT32 number = static_cast<UINT32>(*c++ - L'0');
        if (c < stop) number = number * 10 + static_cast<UINT32>(*c++ - L'0');
        fields.Enter(number);
    }
    return stop;
}

void Carry(_smpteval* value)
{
    if (IsValidType(value->type))
    {
        const UINT32 fps = FormatOf(value->type).fps;
        value->seconds += value->frames / fps;
        value->frames %= fps;
    }
    value->minutes += value->seconds / 60;
    value->seconds %= 60;
    value->hours += value->minutes / 60;
    value->minutes %= 60;
    value->hours %= 24;
}

} // namespace
} // namespace tq::smpte

using namespace tq::smpte;

TQKERNEL_API HRESULT TQSMPTE_TextToSMPTE(const wchar_t* text, _smpteval* value)
{
    if (!text || !value) return E_POINTER;
    // Behind the last digit, blanks are dropped and every other character is a separator with
    // nothing behind it yet: it stands for a zero field, so "01:02:" reads as 01:02:00.
    const wchar_t* end = text + wcslen(text);
    int zeroFields = 0;
    while (end > text && !IsDigit(end[-1]))
    {
        --end;
        if (!iswspace(*end)) ++zeroFields;
    }

    Fields fields;
    for (const wchar_t* c = text; c < end && !fields.Full();)
    {
        if (IsDigit(*c))
            c = EnterDigitRun(c, end, fields);
        else
            ++c;
    }
    for (; zeroFields > 0; --zeroFields)
        fields.Enter(0);
    fields.Store(value);
    Carry(value);
    return S_OK;
}
