// Integers to text: digits from the right, then the locale's grouping on request.
#include "tqnumtext.h"

#include <string.h>

namespace tq::text {
namespace {

// Room enough for a 64-bit magnitude and its sign.
constexpr int kDigitsRoom = 24;
// The unbounded forms trust the caller's buffer to hold the text, separators and all.
constexpr int kUnbounded = 0x7FFFFFFF;

int WriteInteger(bool negative, ULONGLONG magnitude, wchar_t* buffer, int capacity, BOOL grouped)
{
    if (!buffer || capacity < 1) return 0;
    wchar_t digits[kDigitsRoom];
    wchar_t* first = digits + kDigitsRoom - 1;
    *first = L'\0';
    do
    {
        *--first = static_cast<wchar_t>(L'0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude);
    if (negative) *--first = L'-';

    // A lone "0" has nothing to group.
    if (grouped && !(first[0] == L'0' && first[1] == L'\0'))
        return TqFormatNumber(first, buffer, capacity);

    const int length = static_cast<int>(digits + kDigitsRoom - 1 - first);
    if (length >= capacity)
    {
        buffer[0] = L'\0';
        return 0;
    }
    memcpy(buffer, first, (length + 1) * sizeof(wchar_t));
    return length;
}

ULONGLONG Magnitude(LONGLONG value)
{
    // Negating in unsigned arithmetic keeps the most negative value.
    return value < 0 ? 0 - static_cast<ULONGLONG>(value) : static_cast<ULONGLONG>(value);
}

} // namespace
} // namespace tq::text

using tq::text::kUnbounded;
using tq::text::Magnitude;
using tq::text::WriteInteger;

TQKERNEL_API int TqDWordToText(DWORD value, wchar_t* buffer, BOOL grouped)
{
    return WriteInteger(false, value, buffer, kUnbounded, grouped);
}

TQKERNEL_API int TqDWordToTextN(DWORD value, wchar_t* buffer, int capacity, BOOL grouped)
{
    return WriteInteger(false, value, buffer, capacity, grouped);
}

TQKERNEL_API int TqDWordLongToText(ULONGLONG value, wchar_t* buffer, BOOL grouped)
{
    return WriteInteger(false, value, buffer, kUnbounded, grouped);
}

TQKERNEL_API int TqDWordLongToTextN(ULONGLONG value, wchar_t* buffer, int capacity, BOOL grouped)
{
    return WriteInteger(false, value, buffer, capacity, grouped);
}

TQKERNEL_API int TqLongToText(LONG value, wchar_t* buffer, BOOL grouped)
{
    return WriteInteger(value < 0, Magnitude(value), buffer, kUnbounded, grouped);
}

TQKERNEL_API int TqLongToTextN(LONG value, wchar_t* buffer, int capacity, BOOL grouped)
{
    return WriteInteger(value < 0, Magnitude(value), buffer, capacity, grouped);
}

TQKERNEL_API int TqLongLongToText(LONGLONG value, wchar_t* buffer, BOOL grouped)
{
    return WriteInteger(value < 0, Magnitude(value), buffer, kUnbounded, grouped);
}

TQKERNEL_API int TqLongLongToTextN(LONGLONG value, wchar_t* buffer, int capacity, BOOL grouped)
{
    return WriteInteger(value < 0, Magnitude(value), buffer, capacity, grouped);
}
