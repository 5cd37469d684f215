// Four-character codes as text.
#include "tqnumtext.h"

TQKERNEL_API int TqFourCCToString(DWORD value, wchar_t* buffer)
{
    if (!buffer) return 0;
    for (int i = 0; i < 4; ++i)
    {
        const unsigned byte = value >> (8 * i) & 0xFF;
        buffer[i] = byte >= 32 && byte <= 126 ? static_cast<wchar_t>(byte) : L'.';
    }
    buffer[4] = L'\0';
    return 4;
}
