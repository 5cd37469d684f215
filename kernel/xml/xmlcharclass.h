// Character classes the XML parser steers by, and the byte table behind them.
#pragma once

#include <windows.h>

namespace tq::xml {

// The numbers are the ones the parser's loop tests; the classes 6 to 9 and 18 only say that a
// character may begin character data.
enum CharClass : int
{
    kClassOther = 0, // control characters: skipped where a construct could begin
    kClassSpace = 1,
    kClassBang = 4,
    kClassQuote = 5, // both the quotation mark and the apostrophe
    kClassDigit = 6,
    kClassAmpersand = 7,
    kClassDot = 8,
    kClassPunctuation = 9,
    kClassDash = 16,
    kClassSlash = 17,
    kClassCloseBracket = 18,
    kClassOpen = 21, // "<"
    kClassEquals = 22,
    kClassClose = 23, // ">"
    kClassQuestion = 24,
    kClassNameStart = 26,
    kClassOpenBracket = 27,
    kClassEnd = 29, // no character: the end of the data
};

// The class of one byte, or of a UTF-16 unit below 256; every unit above is a name start.
CharClass ClassOfByte(BYTE b) noexcept;
CharClass ClassOfUnit(WCHAR unit) noexcept;

// Classes from which the main loop starts character data.
bool StartsCharData(int charClass) noexcept;

} // namespace tq::xml
