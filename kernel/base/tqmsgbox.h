// Message boxes titled with the application's name.
#pragma once

#include "tqkernelapi.h"

// Flag bits, beside the MessageBoxW flags, that ask the box to offer a details pane.
#define TQMB_DETAILS 0xC000u

// Shows the formatted text (kernel printf) and returns the box's answer, 0 on failure.
TQKERNEL_API int TqMsgBox_CustomF(HWND window, UINT flags, const wchar_t* format, ...);
// The same with a details text, offered when flags hold TQMB_DETAILS, and a link, shown when it
// has an address. Each of details, linkAddress and linkText may be null.
TQKERNEL_API int TqMsgBox_CustomExLinkF(HWND window, UINT flags, const wchar_t* details,
                                        const wchar_t* linkAddress, const wchar_t* linkText,
                                        const wchar_t* format, ...);
