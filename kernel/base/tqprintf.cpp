// The format scanner of TqPrintF and its family: introducers, tokens and every conversion.
#include "tqprintf.h"

#include "numberlocale.h"
#include "scratchtext.h"
#include "tqnumtext.h"
#include "tqprintf_tokens.h"

#include <stdio.h>
#include <string.h>
#include <wchar.h>

namespace tq::printing {
namespace {

using tq::text::LocaleItem;
using tq::text::LocaleText;
using tq::text::ScratchText;

// Longest conversion text, and the size of the temporaries C formatting writes into first.
constexpr size_t kConversionChars = 260;
// "%.Nz" prints at most this many decimals; more are refused rather than cut.
constexpr size_t kMaxFixedDecimals = kConversionChars - 1;
constexpr size_t kMaxCapacity = 0x7FFFFFFE;
// What a C formatting that overflowed reports.
constexpr HRESULT kFormatOverflow = HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);

// The characters that end a conversion's text.
constexpr wchar_t kTerminators[] = L"!&*,:EGXcdefgiosuxz";

bool IsTerminator(wchar_t c)
{
    for (const wchar_t* t = kTerminators; *t; ++t)
        if (*t == c) return true;
    return false;
}

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

// The destination with its remaining room. The unbounded forms have room without end.
class Output
{
public:
    Output(wchar_t* dest, size_t capacity, bool bounded)
        : m_begin(dest), m_cursor(dest), m_room(bounded ? capacity - 1 : ~size_t{0}),
          m_bounded(bounded)
    {
    }

    bool Bounded() const { return m_bounded; }
    // The most characters of one conversion worth making: the unbounded forms take them all.
    size_t Limit() const { return m_bounded ? m_room : ~size_t{0} - 1; }
    bool Full() const { return m_room == 0; }
    size_t Room() const { return m_room; }
    // The capacity the locale formatters take: room plus the terminator.
    int FormatterCapacity() const
    {
        return m_room < kMaxCapacity ? static_cast<int>(m_room + 1) : 0x7FFFFFFF;
    }
    wchar_t* Cursor() const { return m_cursor; }

    // Cuts what does not fit, without complaint.
    void Append(const wchar_t* text, size_t length)
    {
        if (length > m_room) length = m_room;
        memcpy(m_cursor, text, length * sizeof(wchar_t));
        Advance(length);
    }
    void Append(const LocaleText& text) { Append(text.text, static_cast<size_t>(text.length)); }
    void Advance(size_t length)
    {
        m_cursor += length;
        m_room -= length;
    }
    size_t Finish()
    {
        *m_cursor = L'\0';
        return static_cast<size_t>(m_cursor - m_begin);
    }

private:
    wchar_t* m_begin;
    wchar_t* m_cursor;
    size_t m_room;
    bool m_bounded;
};

// The width of an integer argument, from the size prefix of its conversion: "I64" and "ll" are
// 64-bit, "I32" and none 32-bit, and any other "I" form is as wide as a pointer.
enum class IntegerSize
{
    Bits32,
    Bits64,
    Pointer,
};

IntegerSize SizeOf(const wchar_t* conversion)
{
    const wchar_t* size = wcschr(conversion, L'I');
    if (!size) return wcsstr(conversion, L"ll") ? IntegerSize::Bits64 : IntegerSize::Bits32;
    if (wcsncmp(size, L"I64", 3) == 0) return IntegerSize::Bits64;
    if (wcsncmp(size, L"I32", 3) == 0) return IntegerSize::Bits32;
    return IntegerSize::Pointer;
}

// The text of one C conversion, whole however long the format makes it: a width or precision of
// hundreds is rare, but must not make the number vanish. A text longer than limit is cut to
// limit + 1 characters, so that a bounded destination never costs more memory than its own size
// and the cut still shows. Returns the length, or -1.
using FormattedText = ScratchText<kConversionChars>;

template <class Value>
int FormatC(FormattedText& text, size_t limit, const wchar_t* conversion, Value value)
{
    const int written = _snwprintf(text.Get(), text.Capacity(), conversion, value);
    if (written >= 0 && static_cast<size_t>(written) < text.Capacity()) return written;
    const int needed = _scwprintf(conversion, value);
    if (needed < 0) return -1;
    const size_t kept =
        static_cast<size_t>(needed) <= limit ? static_cast<size_t>(needed) : limit + 1;
    if (kept > 0x7FFFFFFE || !text.Reserve(kept + 1)) return -1;
    _snwprintf(text.Get(), kept, conversion, value);
    text.Get()[kept] = L'\0';
    return static_cast<int>(kept);
}

// The character behind "%!" or "%&" that picks a separator.
struct Selector
{
    wchar_t character;
    LocaleItem item;
};

constexpr Selector kSmpteSelectors[] = {{L':', LocaleItem::SmpteWhole},
                                        {L'.', LocaleItem::SmpteNonDrop},
                                        {L',', LocaleItem::SmpteDrop}};
constexpr Selector kMusicSelectors[] = {{L':', LocaleItem::Measure}, {L'.', LocaleItem::Beat}};

// One run of the scanner over a format, with its arguments.
class Printer
{
public:
    Printer(Output& out, va_list args) : m_out(out) { va_copy(m_args, args); }
    ~Printer() { va_end(m_args); }
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    HRESULT Run(const wchar_t* format);

private:
    const wchar_t* Parenthesis(const wchar_t* p);
    const wchar_t* Conversion(const wchar_t* p, bool dollar);
    const wchar_t* Convert(wchar_t* conversion, size_t length, bool dollar, const wchar_t* p);
    void Separator(LocaleItem item);
    template <size_t N>
    const wchar_t* SelectedSeparator(const wchar_t* p, const Selector (&selectors)[N]);
    void Integer(const wchar_t* conversion, size_t length, bool dollar);
    void Float(const wchar_t* conversion, wchar_t terminator, bool dollar);
    void FixedPoint(wchar_t* conversion, size_t length, bool dollar);
    void Platform(const wchar_t* conversion, size_t length);

    template <class Formatter>
    void Localize(Formatter formatter, const wchar_t* text);
    template <class Formatter>
    void LocalizeFormatted(Formatter formatter, const wchar_t* text, int length);
    void CopyFormatted(const wchar_t* text, size_t length);

    Output& m_out;
    va_list m_args;
    HRESULT m_status = S_OK;
};

HRESULT Printer::Run(const wchar_t* format)
{
    const wchar_t* p = format;
    while (*p && !m_out.Full())
    {
        // Ordinary characters go out as one run.
        const wchar_t* introducer = p;
        while (*introducer && *introducer != L'$' && *introducer != L'%')
            ++introducer;
        m_out.Append(p, static_cast<size_t>(introducer - p));
        p = introducer;
        if (!*p || m_out.Full()) break;
        const wchar_t c = *p;
        if (p[1] == c)
        {
            m_out.Append(p, 1);
            p += 2;
        }
        else if (c == L'$' && p[1] == L'(')
        {
            p = Parenthesis(p + 2);
        }
        else
        {
            p = Conversion(p + 1, c == L'$');
        }
    }
    return m_status;
}

// Behind "$(": a number to format, or a token name to expand.
const wchar_t* Printer::Parenthesis(const wchar_t* p)
{
    const wchar_t* end = p;
    const bool number = IsDigit(*p) || *p == L'-' || *p == L'.';
    if (number)
    {
        ++end;
        while ((IsDigit(*end) || *end == L',' || *end == L'.') &&
               static_cast<size_t>(end - p) < kConversionChars)
            ++end;
    }
    else
    {
        while (*end && *end != L')' && static_cast<size_t>(end - p) < kMaxTokenName)
            ++end;
    }
    const size_t length = static_cast<size_t>(end - p);
    if (*end != L')')
    {
        // Unfinished: the text stands as it is, and scanning goes on behind it.
        m_out.Append(L"$(", 2);
        m_out.Append(p, length);
        return end;
    }

    wchar_t text[kConversionChars + 1];
    memcpy(text, p, length * sizeof(wchar_t));
    text[length] = L'\0';
    if (number)
    {
        Localize([](const wchar_t* t, wchar_t* b,
                    int c) { return TqFormatGroupDecimalNumber(t, b, c, -1); },
                 text);
        return end + 1;
    }
    size_t copied = 0;
    if (CopyTokenValue(text, m_out.Cursor(), m_out.Room(), &copied))
    {
        m_out.Advance(copied);
    }
    else
    {
        m_out.Append(L"$(", 2);
        m_out.Append(text, length);
        m_out.Append(L")", 1);
    }
    return end + 1;
}

// Behind "%" or "$": collects the conversion text, always starting with "%", up to its
// terminator.
const wchar_t* Printer::Conversion(const wchar_t* p, bool dollar)
{
    wchar_t conversion[kConversionChars + 1];
    conversion[0] = L'%';
    size_t length = 1;
    while (*p && length < kConversionChars)
    {
        const wchar_t c = *p++;
        conversion[length++] = c;
        if (IsTerminator(c))
        {
            conversion[length] = L'\0';
            return Convert(conversion, length, dollar, p);
        }
    }
    m_out.Append(conversion, length);
    return p;
}

const wchar_t* Printer::Convert(wchar_t* conversion, size_t length, bool dollar, const wchar_t* p)
{
    const wchar_t terminator = conversion[length - 1];
    switch (terminator)
    {
    case L'*':
        Separator(LocaleItem::Decimal);
        return p;
    case L',':
        Separator(LocaleItem::List);
        return p;
    case L':':
        Separator(LocaleItem::Time);
        return p;
    case L'!':
        return SelectedSeparator(p, kSmpteSelectors);
    case L'&':
        return SelectedSeparator(p, kMusicSelectors);
    case L'd':
    case L'i':
    case L'u':
    case L'X':
    case L'o':
    case L'x':
        Integer(conversion, length, dollar);
        return p;
    case L'E':
    case L'e':
    case L'f':
    case L'G':
    case L'g':
        Float(conversion, terminator, dollar);
        return p;
    case L'z':
        FixedPoint(conversion, length, dollar);
        return p;
    default:
        Platform(conversion, length);
        return p;
    }
}

// Separators are locale text, and like plain text they are cut without complaint.
void Printer::Separator(LocaleItem item)
{
    m_out.Append(tq::text::CurrentNumberLocale().Get(item));
    m_status = S_OK;
}

// "%!:" and its kind: the character behind the conversion picks the separator, and is used up
// only when the separator is not empty. Any other character stays in the format.
template <size_t N>
const wchar_t* Printer::SelectedSeparator(const wchar_t* p, const Selector (&selectors)[N])
{
    for (const Selector& selector : selectors)
    {
        if (*p != selector.character) continue;
        const LocaleText text = tq::text::CurrentNumberLocale().Get(selector.item);
        m_status = S_OK;
        if (text.length == 0) return p;
        m_out.Append(text);
        return p + 1;
    }
    return p;
}

// Runs a locale formatter straight into the destination; one that does not fit writes nothing.
template <class Formatter>
void Printer::Localize(Formatter formatter, const wchar_t* text)
{
    const int written = formatter(text, m_out.Cursor(), m_out.FormatterCapacity());
    if (written == 0 && *text)
    {
        m_status = TQ_E_BUFFERTOOSMALL;
        return;
    }
    m_out.Advance(static_cast<size_t>(written));
    m_status = S_OK;
}

// A C formatting result for a locale formatter. One that was cut to the room cannot fit once
// localised, and is no number to localise.
template <class Formatter>
void Printer::LocalizeFormatted(Formatter formatter, const wchar_t* text, int length)
{
    if (static_cast<size_t>(length) > m_out.Room())
    {
        m_status = TQ_E_BUFFERTOOSMALL;
        return;
    }
    Localize(formatter, text);
}

// A C formatting result: what does not fit is cut, and fills the destination.
void Printer::CopyFormatted(const wchar_t* text, size_t length)
{
    m_status = length > m_out.Room() ? kFormatOverflow : S_OK;
    m_out.Append(text, length);
}

void Printer::Integer(const wchar_t* conversion, size_t length, bool dollar)
{
    const wchar_t terminator = conversion[length - 1];
    const bool decimal = terminator == L'd' || terminator == L'i' || terminator == L'u';

    // The bare forms skip C formatting altogether.
    if (length == 2 && decimal)
    {
        int written;
        const int capacity = m_out.FormatterCapacity();
        if (terminator == L'u')
        {
            const DWORD value = va_arg(m_args, DWORD);
            written = m_out.Bounded() ? TqDWordToTextN(value, m_out.Cursor(), capacity, dollar)
                                      : TqDWordToText(value, m_out.Cursor(), dollar);
        }
        else
        {
            const LONG value = va_arg(m_args, LONG);
            written = m_out.Bounded() ? TqLongToTextN(value, m_out.Cursor(), capacity, dollar)
                                      : TqLongToText(value, m_out.Cursor(), dollar);
        }
        if (written == 0)
        {
            m_status = TQ_E_BUFFERTOOSMALL;
            return;
        }
        m_out.Advance(static_cast<size_t>(written));
        m_status = S_OK;
        return;
    }

    FormattedText text;
    int written;
    switch (SizeOf(conversion))
    {
    case IntegerSize::Bits64:
        written = FormatC(text, m_out.Limit(), conversion, va_arg(m_args, LONGLONG));
        break;
    case IntegerSize::Pointer:
        written = FormatC(text, m_out.Limit(), conversion, va_arg(m_args, INT_PTR));
        break;
    default:
        written = FormatC(text, m_out.Limit(), conversion, va_arg(m_args, int));
        break;
    }
    if (written < 0)
    {
        m_status = kFormatOverflow;
        return;
    }
    if (dollar && decimal)
        LocalizeFormatted(TqFormatNumber, text.Get(), written);
    else
        CopyFormatted(text.Get(), static_cast<size_t>(written));
}

void Printer::Float(const wchar_t* conversion, wchar_t terminator, bool dollar)
{
    FormattedText text;
    const int written = FormatC(text, m_out.Limit(), conversion, va_arg(m_args, double));
    if (written < 0)
    {
        m_status = kFormatOverflow;
        return;
    }
    if (dollar && terminator == L'f')
    {
        LocalizeFormatted([](const wchar_t* t, wchar_t* b,
                             int c) { return TqFormatGroupDecimalNumber(t, b, c, -1); },
                          text.Get(), written);
    }
    else if (dollar && (terminator == L'g' || terminator == L'G') && !wcspbrk(text.Get(), L"Ee"))
    {
        LocalizeFormatted(TqFormatDecimalNumber, text.Get(), written);
    }
    else
    {
        CopyFormatted(text.Get(), static_cast<size_t>(written));
    }
}

// "%.Nz": a 32-bit integer shown divided by 10 to the N, with N decimals.
void Printer::FixedPoint(wchar_t* conversion, size_t length, bool dollar)
{
    size_t decimals = 0;
    bool fixed = length > 3 && conversion[1] == L'.';
    for (size_t i = 2; fixed && i < length - 1; ++i)
    {
        fixed = IsDigit(conversion[i]);
        // Counting stops past the limit, so that no count of digits can wrap it.
        if (decimals <= kMaxFixedDecimals) decimals = decimals * 10 + (conversion[i] - L'0');
    }
    if (!fixed || decimals == 0)
    {
        // Anything else prints the integer; "%.0z" as a bare "%d", so that 0 still shows.
        if (fixed) length = 2;
        conversion[length - 1] = L'd';
        conversion[length] = L'\0';
        Integer(conversion, length, dollar);
        return;
    }

    // Exact decimal shifting of the digits, which no binary division could promise.
    const LONG value = va_arg(m_args, LONG);
    if (decimals > kMaxFixedDecimals)
    {
        m_status = TQ_E_BUFFERTOOSMALL;
        return;
    }
    wchar_t digits[16];
    const ULONGLONG magnitude =
        value < 0 ? 0 - static_cast<ULONGLONG>(static_cast<LONGLONG>(value)) : value;
    const size_t digitCount = static_cast<size_t>(TqDWordLongToText(magnitude, digits, FALSE));
    // Sign, "0." and the decimals.
    wchar_t text[kMaxFixedDecimals + 4];
    wchar_t* out = text;
    if (value < 0) *out++ = L'-';
    const size_t whole = digitCount > decimals ? digitCount - decimals : 0;
    if (whole == 0)
        *out++ = L'0';
    else
        out = wmemcpy(out, digits, whole) + whole;
    *out++ = L'.';
    const size_t zeros = decimals - (digitCount - whole);
    out = wmemset(out, L'0', zeros) + zeros;
    out = wmemcpy(out, digits + whole, digitCount - whole) + (digitCount - whole);
    *out = L'\0';

    if (dollar)
    {
        const int places = static_cast<int>(decimals);
        Localize([places](const wchar_t* t, wchar_t* b,
                          int c) { return TqFormatGroupDecimalNumber(t, b, c, places); },
                 text);
    }
    else
    {
        Localize(TqFormatDecimalNumber, text);
    }
}

// "c", "s": the platform's formatter, with one argument. The unbounded forms use wsprintfW, with
// its own limit of 1024 characters.
void Printer::Platform(const wchar_t* conversion, size_t length)
{
    const bool text = conversion[length - 1] == L's';
    const void* pointer = nullptr;
    int value = 0;
    if (text)
        pointer = va_arg(m_args, const void*);
    else
        value = va_arg(m_args, int);

    if (!m_out.Bounded())
    {
        const int written = text ? wsprintfW(m_out.Cursor(), conversion, pointer)
                                 : wsprintfW(m_out.Cursor(), conversion, value);
        // At its limit wsprintfW may count more than it stored.
        const size_t stored = wcslen(m_out.Cursor());
        m_out.Advance(written > 0 && static_cast<size_t>(written) < stored
                          ? static_cast<size_t>(written)
                          : stored);
        m_status = S_OK;
        return;
    }
    const size_t room = m_out.Room();
    const int written = text ? _snwprintf(m_out.Cursor(), room, conversion, pointer)
                             : _snwprintf(m_out.Cursor(), room, conversion, value);
    // Cut to the room, which it filled. The terminator a "%c" of 0 writes is not counted, as in
    // the unbounded forms: the next text goes over it and the length stays the string's.
    m_out.Advance(wcsnlen(m_out.Cursor(), written < 0 ? room : static_cast<size_t>(written)));
    m_status = written < 0 ? kFormatOverflow : S_OK;
}

} // namespace
} // namespace tq::printing

using tq::printing::Output;
using tq::printing::Printer;

TQKERNEL_API int TqVPrintF(wchar_t* dest, const wchar_t* format, va_list args)
{
    if (!dest) return 0;
    Output out(dest, 0, false);
    if (format) Printer(out, args).Run(format);
    return static_cast<int>(out.Finish());
}

TQKERNEL_API int TqPrintF(wchar_t* dest, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const int length = TqVPrintF(dest, format, args);
    va_end(args);
    return length;
}

TQKERNEL_API HRESULT TqNVPrintF(wchar_t* dest, size_t capacity, size_t* outLength,
                                const wchar_t* format, va_list args)
{
    if (outLength) *outLength = 0;
    if (!dest || capacity == 0 || capacity > tq::printing::kMaxCapacity) return E_INVALIDARG;
    Output out(dest, capacity, true);
    const HRESULT hr = format ? Printer(out, args).Run(format) : E_INVALIDARG;
    const size_t length = out.Finish();
    if (outLength) *outLength = length;
    return hr;
}

TQKERNEL_API HRESULT TqCchPrintF(wchar_t* dest, size_t capacity, size_t* outLength,
                                 const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const HRESULT hr = TqNVPrintF(dest, capacity, outLength, format, args);
    va_end(args);
    return hr;
}
