// Tests of colour texts in every style, their parser, and four-character codes.
#include "tqnumtext.h"

#include "testlocales.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::wstring Text(COLORREF color, int style)
{
    wchar_t buffer[32];
    const int length = TqColorrefToText(buffer, 32, color, style);
    EXPECT_EQ(static_cast<size_t>(length), wcslen(buffer));
    return buffer;
}

TEST(ColorText, EveryStyle)
{
    const COLORREF color = RGB(1, 20, 255);
    EXPECT_EQ(Text(color, TQCOLORTEXT_RGB), L"RGB(1,20,255)");
    EXPECT_EQ(Text(color, TQCOLORTEXT_HTML), L"#0114ff");
    EXPECT_EQ(Text(color, TQCOLORTEXT_HEX), L"0x00ff1401");
    EXPECT_EQ(Text(0, TQCOLORTEXT_HEX), L"0x00000000");
    // Values beyond 24 bits always show raw.
    EXPECT_EQ(Text(0x01000000, TQCOLORTEXT_RGB), L"0x01000000");
    EXPECT_EQ(Text(0x01000000, TQCOLORTEXT_HTML), L"0x01000000");
}

TEST(ColorText, ExFormReportsItsFailures)
{
    wchar_t buffer[17] = L"keep";
    int length = 99;
    EXPECT_EQ(TqColorrefToTextEx(buffer, 16, &length, 0, 3), E_INVALIDARG);
    EXPECT_EQ(TqColorrefToTextEx(buffer, 16, &length, 0, -1), E_INVALIDARG);
    EXPECT_EQ(TqColorrefToTextEx(buffer, 16, &length, RGB(255, 255, 255), TQCOLORTEXT_RGB),
              TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(length, 0);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(TqColorrefToTextEx(buffer, 17, &length, RGB(255, 255, 255), TQCOLORTEXT_RGB), S_OK);
    EXPECT_EQ(length, 16);
    EXPECT_EQ(TqColorrefToTextEx(nullptr, 14, &length, 0, TQCOLORTEXT_RGB), E_INVALIDARG);
    EXPECT_EQ(TqColorrefToText(buffer, 0, 0, TQCOLORTEXT_RGB), 0);
}

TEST(ColorText, EveryStyleReadsBack)
{
    // A comma as thousands separator must not swallow the commas between the components.
    tq::text::ScopedNumberLocale locale(tq::test::English());
    const COLORREF colors[] = {0, RGB(1, 20, 255), RGB(255, 255, 255), RGB(128, 0, 64)};
    for (COLORREF color : colors)
        for (int style = TQCOLORTEXT_RGB; style <= TQCOLORTEXT_HEX; ++style)
            EXPECT_EQ(TqTextToColorref(Text(color, style).c_str()), color) << style;
}

TEST(ColorText, ParserAcceptsWhatPeopleType)
{
    const wchar_t* text = L"  rgb( 10 , 20 ,30 ) rest";
    const wchar_t* end = nullptr;
    EXPECT_EQ(TqTextToColorrefToken(text, &end), RGB(10, 20, 30));
    EXPECT_EQ(end, text + 20);
    EXPECT_EQ(TqTextToColorref(L"#FFa000"), RGB(255, 160, 0));
    EXPECT_EQ(TqTextToColorref(L"ff8000"), 0xFF8000u);
}

TEST(ColorText, InvalidColours)
{
    EXPECT_EQ(TqTextToColorref(L"0xFFFFFFFF"), TQCOLORREF_INVALID);
    // The default of the Ex form is not consulted.
    const wchar_t* end = nullptr;
    EXPECT_EQ(TqTextToColorrefTokenEx(L"zz", 0x123456, &end), 0u);
    // Malformed styled forms are no colour: nothing is read.
    const wchar_t* bad[] = {L"RGB(256,0,0)", L"RGB(1,2)", L"#12345", L"#1234567", L"#0x1234"};
    for (const wchar_t* text : bad)
    {
        EXPECT_EQ(TqTextToColorrefToken(text, &end), 0u) << text;
        EXPECT_EQ(end, text) << text;
    }
}

TEST(FourCC, PrintableBytesLowestFirst)
{
    wchar_t buffer[5];
    EXPECT_EQ(TqFourCCToString(0x46464952, buffer), 4);
    EXPECT_STREQ(buffer, L"RIFF");
    TqFourCCToString(0x7F464900, buffer);
    EXPECT_STREQ(buffer, L".IF.");
    EXPECT_EQ(TqFourCCToString(0, nullptr), 0);
}

} // namespace
