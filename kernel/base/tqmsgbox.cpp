// Message boxes. The user-interface kit is not part of this system, so these are plain
// MessageBoxW boxes, with the details and the link written below the text.
#include "tqmsgbox.h"

#include <stdarg.h>
#include <wchar.h>

#include <memory>
#include <new>

#include "tqprintf.h"

namespace {

constexpr size_t kTextChars = 8192;
constexpr wchar_t kParagraph[] = L"\r\n\r\n";

using OwnedText = std::unique_ptr<wchar_t[]>;

// The application names itself by the token its messages use; a process that defined none is
// shown by its file name.
void ApplicationTitle(wchar_t (&title)[MAX_PATH])
{
    static constexpr wchar_t kToken[] = L"$(AppName)";
    TqCchPrintF(title, MAX_PATH, nullptr, kToken);
    if (title[0] && wcscmp(title, kToken) != 0) return;
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    title[0] = L'\0';
    if (length == 0 || length >= MAX_PATH) return;
    const wchar_t* name = wcsrchr(path, L'\\');
    name = name ? name + 1 : path;
    wcscpy_s(title, MAX_PATH, name);
    if (wchar_t* dot = wcsrchr(title, L'.')) *dot = L'\0';
}

void Append(wchar_t*& at, const wchar_t* text)
{
    const size_t length = wcslen(text);
    at = wmemcpy(at, text, length) + length;
}

int Show(HWND window, UINT flags, const wchar_t* details, const wchar_t* linkAddress,
         const wchar_t* linkText, const wchar_t* format, va_list args)
{
    if (!format) return 0;
    OwnedText text(new (std::nothrow) wchar_t[kTextChars]);
    if (!text) return 0;
    text[0] = L'\0';
    TqNVPrintF(text.get(), kTextChars, nullptr, format, args);
    const size_t length = wcslen(text.get());

    const size_t paragraph = ARRAYSIZE(kParagraph) - 1;
    if (!(flags & TQMB_DETAILS)) details = nullptr;
    if (!linkAddress) linkText = nullptr;
    const size_t detailsLength = details ? paragraph + wcslen(details) : 0;
    const size_t linkLength =
        linkAddress ? paragraph + (linkText ? wcslen(linkText) + 2 : 0) + wcslen(linkAddress) : 0;
    OwnedText shown(new (std::nothrow) wchar_t[length + detailsLength + linkLength + 1]);
    if (!shown) return 0;
    wchar_t* at = wmemcpy(shown.get(), text.get(), length) + length;
    if (details)
    {
        Append(at, kParagraph);
        Append(at, details);
    }
    if (linkAddress)
    {
        Append(at, kParagraph);
        if (linkText)
        {
            Append(at, linkText);
            Append(at, L"\r\n");
        }
        Append(at, linkAddress);
    }
    *at = L'\0';

    wchar_t title[MAX_PATH];
    ApplicationTitle(title);
    // The details bits mean a pane to a richer box; to MessageBoxW they would be MB_HELP.
    return MessageBoxW(window, shown.get(), title, flags & ~TQMB_DETAILS);
}

} // namespace

TQKERNEL_API int TqMsgBox_CustomF(HWND window, UINT flags, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const int answer = Show(window, flags, nullptr, nullptr, nullptr, format, args);
    va_end(args);
    return answer;
}

TQKERNEL_API int TqMsgBox_CustomExLinkF(HWND window, UINT flags, const wchar_t* details,
                                        const wchar_t* linkAddress, const wchar_t* linkText,
                                        const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const int answer = Show(window, flags, details, linkAddress, linkText, format, args);
    va_end(args);
    return answer;
}
