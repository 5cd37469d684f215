// TqFormatFileSize: a byte count in the largest unit that keeps it below 999, three digits at most.
#include "tqprintf.h"

#include "tqlang.h"
#include "tqnumtext.h"
#include "tqstrings.h"

#include <math.h>

namespace tq::printing {
namespace {

struct SizeUnit
{
    LONGLONG limit; // sizes below this use the unit: 999 of it
    int shift;      // the unit is 2 to this power
    const wchar_t* word;
};

const SizeUnit kSizeUnits[] = {
    {0xF9C00, 10, TQS(FileSizeKB)},           {0x3E700000, 20, TQS(FileSizeMB)},
    {0xF9C0000000, 30, TQS(FileSizeGB)},      {0x3E70000000000, 40, TQS(FileSizeTB)},
    {0xF9C000000000000, 50, TQS(FileSizePB)}, {0x7000000000000000, 60, TQS(FileSizeEB)},
};

constexpr int kNumberChars = 32;

// Three significant digits at most. The truncated value gets a little added before printing only
// so that binary rounding cannot turn 0.97 into 0.96.
void ThreeDigits(double value, wchar_t* number)
{
    if (value >= 100.0)
        TqCchPrintF(number, kNumberChars, nullptr, L"$.0f", value);
    else if (value >= 10.0)
        TqCchPrintF(number, kNumberChars, nullptr, L"$.4g", floor(value * 10.0) / 10.0 + 0.01);
    else
        TqCchPrintF(number, kNumberChars, nullptr, L"$.4g", floor(value * 100.0) / 100.0 + 0.001);
    // A locale without a leading zero starts with its separator, which takes a digit's place.
    const int keep = number[0] >= L'0' && number[0] <= L'9' ? 4 : 3;
    if (lstrlenW(number) > keep) number[keep] = L'\0';
}

int CopyAlone(const wchar_t* text, wchar_t* buffer, int capacity)
{
    const int length = lstrlenW(text);
    if (length >= capacity) return 0;
    lstrcpynW(buffer, text, capacity);
    return length;
}

} // namespace
} // namespace tq::printing

using namespace tq::printing;

TQKERNEL_API int TqFormatFileSize(LONGLONG size, wchar_t* buffer, int capacity, BOOL longBytes)
{
    if (!buffer || capacity < 1) return 0;
    buffer[0] = L'\0';
    if (size < 0) size = 0;

    wchar_t number[kNumberChars];
    const wchar_t* word = nullptr;
    if (size < 999)
    {
        TqLongLongToTextN(size, number, kNumberChars, FALSE);
        word = longBytes ? TQS(FileSizeBytesLong) : TQS(FileSizeBytes);
    }
    else
    {
        const SizeUnit* unit = kSizeUnits;
        const SizeUnit* const last = kSizeUnits + sizeof(kSizeUnits) / sizeof(kSizeUnits[0]);
        while (unit != last && size >= unit->limit)
            ++unit;
        if (unit == last) return CopyAlone(TqGetString(TQS(FileSizeHuge)), buffer, capacity);
        // Exabytes divide in two steps, by 2^50 as integers and then by 1024; what the first
        // step drops lies far below the three digits shown.
        const double value =
            unit->shift == 60 ? static_cast<double>(size >> 50) / 1024.0
                              : static_cast<double>(size) / static_cast<double>(1LL << unit->shift);
        ThreeDigits(value, number);
        word = unit->word;
    }
    return TqComposeStr(buffer, capacity, TqGetString(word), number);
}
