// The token scanner under every number parser: what a person typed, reduced to plain digits.
#pragma once

#include <windows.h>

namespace tq::text {

// At most this many characters of a number are kept; the rest is read over and dropped.
constexpr int kScannedChars = 64;

struct ScannedNumber
{
    // "-", digits and "." only: the form _wtol, wcstod and digit loops read.
    wchar_t text[kScannedChars] = {};
    // The first character that is not part of the number.
    const wchar_t* end = nullptr;
};

// Skips white space, then reads a sign, digits and decimal points, reading over grouping. With
// useLocale the locale's signs and separators count; without it "-", "." and "," do.
ScannedNumber ScanNumber(const wchar_t* text, bool useLocale);

// True when a text that gave the value 0 was no number at all: it stopped at something other
// than its end or white space.
bool IsUnreadable(const wchar_t* end);

// The rules of the Ex forms: the default replaces only a value that could not be read (an honest
// 0 stands), then the result is clamped to the limits.
template <class T>
T ApplyExRules(T value, const wchar_t* end, T defaultValue, T minValue, T maxValue)
{
    if (value == 0 && IsUnreadable(end)) value = defaultValue;
    if (value < minValue) value = minValue;
    if (value > maxValue) value = maxValue;
    return value;
}

// Stores end into the caller's optional end pointer.
inline void ReportEnd(const wchar_t** out, const wchar_t* end)
{
    if (out) *out = end;
}

} // namespace tq::text
