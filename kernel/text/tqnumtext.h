// Numbers and colours to text and back under the user's locale.
#pragma once

#include "tqkernelapi.h"

// Integer output. Each returns the length written; grouped inserts the locale's thousands
// separators. The N forms take a capacity including the terminator and return 0, with an empty
// string when capacity allows, when the text does not fit.
TQKERNEL_API int TqDWordToText(DWORD value, wchar_t* buffer, BOOL grouped);
TQKERNEL_API int TqDWordToTextN(DWORD value, wchar_t* buffer, int capacity, BOOL grouped);
TQKERNEL_API int TqDWordLongToText(ULONGLONG value, wchar_t* buffer, BOOL grouped);
TQKERNEL_API int TqDWordLongToTextN(ULONGLONG value, wchar_t* buffer, int capacity, BOOL grouped);
TQKERNEL_API int TqLongToText(LONG value, wchar_t* buffer, BOOL grouped);
TQKERNEL_API int TqLongToTextN(LONG value, wchar_t* buffer, int capacity, BOOL grouped);
TQKERNEL_API int TqLongLongToText(LONGLONG value, wchar_t* buffer, BOOL grouped);
TQKERNEL_API int TqLongLongToTextN(LONGLONG value, wchar_t* buffer, int capacity, BOOL grouped);

// A double rounded to a fixed number of decimals (at most 9). Plain "1234.5" form, or with grouped
// the locale's grouping and decimal separator. "-0" never appears.
TQKERNEL_API int TqDoubleToText(wchar_t* buffer, double value, int decimals, BOOL grouped);
TQKERNEL_API int TqDoubleToTextN(wchar_t* buffer, int capacity, double value, int decimals,
                                 BOOL grouped);

// Locale formatting of the plain digits in a text ("-1234.5", "  1234 B"): the characters around
// the number stay as they are, and the sign is always a plain "-". Return the length written, 0
// when it does not fit.
// Grouping, no decimals.
TQKERNEL_API int TqFormatNumber(const wchar_t* text, wchar_t* buffer, int capacity);
// The decimals of the text with the locale's separator, no grouping.
TQKERNEL_API int TqFormatDecimalNumber(const wchar_t* text, wchar_t* buffer, int capacity);
// Grouping and the locale's separator; decimals of -1 or -2 takes them from the text.
TQKERNEL_API int TqFormatGroupDecimalNumber(const wchar_t* text, wchar_t* buffer, int capacity,
                                            int decimals);

// Colour styles: 0 "RGB(r,g,b)", 1 "#rrggbb", 2 "0x00bbggrr". Values above 0xFFFFFF always use 2.
#define TQCOLORTEXT_RGB 0
#define TQCOLORTEXT_HTML 1
#define TQCOLORTEXT_HEX 2
// What the colour parsers give for the raw value 0xFFFFFFFF, which is no colour.
#define TQCOLORREF_INVALID ((COLORREF)0xF000F0)
TQKERNEL_API int TqColorrefToText(wchar_t* buffer, int capacity, COLORREF color, int style);
// S_OK, TQ_E_BUFFERTOOSMALL or E_INVALIDARG; outLength, when given, receives the length.
TQKERNEL_API HRESULT TqColorrefToTextEx(wchar_t* buffer, int capacity, int* outLength,
                                        COLORREF color, int style);

// Four bytes, lowest first, as four characters; non-printable bytes show as ".". The buffer holds
// five characters. Returns 4.
TQKERNEL_API int TqFourCCToString(DWORD value, wchar_t* buffer);

// Level texts, in a short-lived buffer of the kernel language (use the text at once). The fixed
// forms take the value scaled by 10 to the decimals; at or below a non-zero floor (silence) the
// text is the localised word for silence. The dB forms append the localised unit when asked.
TQKERNEL_API const wchar_t* TqGetdBStringFixed(int value, int decimals, int silence, BOOL withUnit);
TQKERNEL_API const wchar_t* TqGetdBStringFloat(double value, int decimals, double silence,
                                               BOOL withUnit);
TQKERNEL_API const wchar_t* TqGetLabeledStringFixed(int value, int decimals, int floor,
                                                    const wchar_t* label);
TQKERNEL_API const wchar_t* TqGetLabeledStringFloat(double value, int decimals, double floor,
                                                    const wchar_t* label);

// Parsers. They skip leading white space, tolerate the locale's grouping, and store where they
// stopped in end when it is given. The Ex forms return the default only for a text that could
// not be read as a number, and clamp the result to min and max.
TQKERNEL_API DWORD TqTextToDWordToken(const wchar_t* text, const wchar_t** end);
TQKERNEL_API DWORD TqTextToDWordTokenEx(const wchar_t* text, DWORD defaultValue, DWORD minValue,
                                        DWORD maxValue, const wchar_t** end);
TQKERNEL_API ULONGLONG TqTextToDWordLongToken(const wchar_t* text, const wchar_t** end);
TQKERNEL_API ULONGLONG TqTextToDWordLongTokenEx(const wchar_t* text, ULONGLONG defaultValue,
                                                ULONGLONG minValue, ULONGLONG maxValue,
                                                const wchar_t** end);
TQKERNEL_API LONG TqTextToLongToken(const wchar_t* text, const wchar_t** end);
TQKERNEL_API LONG TqTextToLongTokenEx(const wchar_t* text, LONG defaultValue, LONG minValue,
                                      LONG maxValue, const wchar_t** end);
TQKERNEL_API LONGLONG TqTextToLongLongToken(const wchar_t* text, const wchar_t** end);
TQKERNEL_API LONGLONG TqTextToLongLongTokenEx(const wchar_t* text, LONGLONG defaultValue,
                                              LONGLONG minValue, LONGLONG maxValue,
                                              const wchar_t** end);

// Hex, with or without "0x" in any case.
TQKERNEL_API DWORD TqHexToDWordToken(const wchar_t* text, const wchar_t** end);
TQKERNEL_API DWORD TqHexToDWordTokenEx(const wchar_t* text, DWORD defaultValue, DWORD minValue,
                                       DWORD maxValue, const wchar_t** end);
TQKERNEL_API ULONGLONG TqHexToDWordLongToken(const wchar_t* text, const wchar_t** end);
TQKERNEL_API ULONGLONG TqHexToDWordLongTokenEx(const wchar_t* text, ULONGLONG defaultValue,
                                               ULONGLONG minValue, ULONGLONG maxValue,
                                               const wchar_t** end);

// useLocale reads the locale's decimal and thousands separators; without it "." is the decimal
// point and "," is skipped.
TQKERNEL_API double TqTextToDoubleToken(const wchar_t* text, const wchar_t** end, BOOL useLocale);
TQKERNEL_API double TqTextToDoubleTokenEx(const wchar_t* text, double defaultValue, double minValue,
                                          double maxValue, const wchar_t** end, BOOL useLocale);

// Colours in any of the three text styles, or a bare hex value.
TQKERNEL_API COLORREF TqTextToColorrefToken(const wchar_t* text, const wchar_t** end);
TQKERNEL_API COLORREF TqTextToColorrefTokenEx(const wchar_t* text, COLORREF defaultValue,
                                              const wchar_t** end);
TQKERNEL_API COLORREF TqTextToColorref(const wchar_t* text);
