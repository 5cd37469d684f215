// Level texts such as "-6.0 dB": fixed-point or float values with a label, and a word for silence.
#include "tqnumtext.h"

#include "tqlang.h"
#include "tqprintf.h"
#include "tqstrings.h"

namespace tq::text {
namespace {

// Each text takes this many characters of the kernel language's temporary ring.
constexpr UINT kLevelChars = 24;
constexpr int kMaxDecimals = 9;

wchar_t* LevelBuffer()
{
    return TqGetTempStringBuffer(TqLang_GetKernelLang(), kLevelChars);
}

// The label goes behind the number, cut to what the block holds.
const wchar_t* Labeled(wchar_t* buffer, const wchar_t* label)
{
    if (label)
    {
        const int length = lstrlenW(buffer);
        lstrcpynW(buffer + length, label, kLevelChars - length);
    }
    return buffer;
}

// "$.2z" or "$.2f": decimals are 1 to 9, one digit.
struct DecimalFormat
{
    wchar_t text[5];
    DecimalFormat(int decimals, wchar_t conversion)
        : text{L'$', L'.', static_cast<wchar_t>(L'0' + decimals), conversion, L'\0'}
    {
    }
};

const wchar_t* LabeledFixed(int value, int decimals, int floor, const wchar_t* label)
{
    if (floor != 0 && value <= floor) return TqGetString(TQS(LevelSilence));
    wchar_t* buffer = LevelBuffer();
    if (!buffer) return L"";
    if (decimals <= 0)
        TqCchPrintF(buffer, kLevelChars, nullptr, L"$d", value);
    else
        TqCchPrintF(buffer, kLevelChars, nullptr, DecimalFormat(decimals, L'z').text, value);
    return Labeled(buffer, label);
}

const wchar_t* LabeledFloat(double value, int decimals, double floor, const wchar_t* label)
{
    if (floor != 0.0 && value <= floor) return TqGetString(TQS(LevelSilence));
    wchar_t* buffer = LevelBuffer();
    if (!buffer) return L"";
    if (decimals <= 0)
        TqCchPrintF(buffer, kLevelChars, nullptr, L"$d", static_cast<int>(value));
    else
        TqCchPrintF(buffer, kLevelChars, nullptr, DecimalFormat(decimals, L'f').text, value);
    return Labeled(buffer, label);
}

int LimitDecimals(int decimals)
{
    return decimals > kMaxDecimals ? kMaxDecimals : decimals;
}

const wchar_t* DecibelLabel(BOOL withUnit)
{
    return withUnit ? TqGetString(TQS(LevelUnitDecibel)) : nullptr;
}

} // namespace
} // namespace tq::text

using namespace tq::text;

TQKERNEL_API const wchar_t* TqGetLabeledStringFixed(int value, int decimals, int floor,
                                                    const wchar_t* label)
{
    return LabeledFixed(value, LimitDecimals(decimals), floor, label);
}

TQKERNEL_API const wchar_t* TqGetLabeledStringFloat(double value, int decimals, double floor,
                                                    const wchar_t* label)
{
    return LabeledFloat(value, LimitDecimals(decimals), floor, label);
}

TQKERNEL_API const wchar_t* TqGetdBStringFixed(int value, int decimals, int silence, BOOL withUnit)
{
    return LabeledFixed(value, LimitDecimals(decimals), silence, DecibelLabel(withUnit));
}

TQKERNEL_API const wchar_t* TqGetdBStringFloat(double value, int decimals, double silence,
                                               BOOL withUnit)
{
    return LabeledFloat(value, LimitDecimals(decimals), silence, DecibelLabel(withUnit));
}
