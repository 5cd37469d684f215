// TqComposeStr: numbered inserts through FormatMessageW, for texts whose word order translators
// change.
#include "tqprintf.h"

TQKERNEL_API int TqComposeStr(wchar_t* buffer, int capacity, const wchar_t* format, ...)
{
    if (!buffer || capacity < 1) return 0;
    buffer[0] = L'\0';
    if (!format) return 0;
    va_list args;
    va_start(args, format);
    const DWORD written = FormatMessageW(FORMAT_MESSAGE_FROM_STRING, format, 0, 0, buffer,
                                         static_cast<DWORD>(capacity), &args);
    va_end(args);
    if (written == 0) buffer[0] = L'\0';
    return static_cast<int>(written);
}
