// The numbers of a time text such as "hh:mm:ss.mmm" or "12:3.480", read one after the other.
#pragma once

#include <windows.h>

namespace tq::nanotime {

// One number of a text of several.
struct Field
{
    double value = 0;               // a decimal field, with the locale's separators read
    ULONGLONG integer = 0;          // an integer field: its digits, saturated
    int digits = 0;                 // digits of an integer field
    const wchar_t* start = nullptr; // its first digit
    const wchar_t* end = nullptr;   // behind it
};

// The first digit at or behind text, or null. Whatever stands in front, a label, a unit or a
// separator, is passed over.
const wchar_t* FirstDigit(const wchar_t* text);

// The next number at or behind text, as the number parsers read it: thousands separators
// skipped, the decimal separator as the point. False when no digit follows.
bool NextDecimalField(const wchar_t* text, Field* field);

// The next run of digits at or behind text: every other character separates. False when no
// digit follows.
bool NextIntegerField(const wchar_t* text, Field* field);

} // namespace tq::nanotime
