// The byte table of character classes, shared by every encoding.
#include "xmlcharclass.h"

#include <array>

namespace tq::xml {

namespace {

constexpr std::array<BYTE, 256> MakeTable()
{
    std::array<BYTE, 256> t{};
    for (int c = 0x21; c < 0x7F; ++c)
        t[c] = kClassPunctuation;
    for (int c = 0x80; c < 0x100; ++c)
        t[c] = kClassNameStart; // letters of the code page
    for (int c = 'A'; c <= 'Z'; ++c)
        t[c] = t[c + ('a' - 'A')] = kClassNameStart;
    for (int c = '0'; c <= '9'; ++c)
        t[c] = kClassDigit;
    t['_'] = t[':'] = kClassNameStart;
    t[' '] = t['\t'] = t['\r'] = t['\n'] = kClassSpace;
    t['!'] = kClassBang;
    t['"'] = t['\''] = kClassQuote;
    t['&'] = kClassAmpersand;
    t['.'] = kClassDot;
    t['-'] = kClassDash;
    t['/'] = kClassSlash;
    t[']'] = kClassCloseBracket;
    t['<'] = kClassOpen;
    t['='] = kClassEquals;
    t['>'] = kClassClose;
    t['?'] = kClassQuestion;
    t['['] = kClassOpenBracket;
    return t;
}

constexpr std::array<BYTE, 256> kTable = MakeTable();

} // namespace

CharClass ClassOfByte(BYTE b) noexcept
{
    return static_cast<CharClass>(kTable[b]);
}

CharClass ClassOfUnit(WCHAR unit) noexcept
{
    return unit < 256 ? ClassOfByte(static_cast<BYTE>(unit)) : kClassNameStart;
}

bool StartsCharData(int charClass) noexcept
{
    switch (charClass)
    {
    case kClassDigit:
    case kClassAmpersand:
    case kClassDot:
    case kClassPunctuation:
    case kClassDash:
    case kClassCloseBracket:
    case kClassNameStart:
        return true;
    default:
        return false;
    }
}

} // namespace tq::xml
