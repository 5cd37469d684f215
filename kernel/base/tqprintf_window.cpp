// Formatted text for windows and dialog controls.
#include "tqprintf.h"

namespace tq::printing {
namespace {

// Control texts are short; longer results are cut.
constexpr size_t kWindowTextChars = 1024;

struct WindowText
{
    wchar_t text[kWindowTextChars];
    WindowText(const wchar_t* format, va_list args)
    {
        TqNVPrintF(text, kWindowTextChars, nullptr, format, args);
    }
};

// Leaves a control whose text is already the same alone, so that it does not repaint.
BOOL SetIfChanged(HWND dialog, int control, const wchar_t* text)
{
    const HWND item = GetDlgItem(dialog, control);
    if (!item) return FALSE;
    const int length = GetWindowTextLengthW(item);
    if (length == lstrlenW(text) && static_cast<size_t>(length) < kWindowTextChars)
    {
        wchar_t current[kWindowTextChars];
        GetWindowTextW(item, current, kWindowTextChars);
        if (lstrcmpW(current, text) == 0) return TRUE;
    }
    return SetWindowTextW(item, text);
}

// Multi-line edit controls break lines only at CR LF.
BOOL SetEditText(HWND edit, const wchar_t* text)
{
    wchar_t converted[2 * kWindowTextChars];
    wchar_t* out = converted;
    for (const wchar_t* c = text; *c; ++c)
    {
        if (*c == L'\n' && (c == text || c[-1] != L'\r')) *out++ = L'\r';
        *out++ = *c;
    }
    *out = L'\0';
    return SetWindowTextW(edit, converted);
}

} // namespace
} // namespace tq::printing

using tq::printing::WindowText;

TQKERNEL_API BOOL TqSetWindowTextF(HWND window, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const WindowText text(format, args);
    va_end(args);
    return SetWindowTextW(window, text.text);
}

TQKERNEL_API BOOL TqSetDlgItemTextF(HWND dialog, int control, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const WindowText text(format, args);
    va_end(args);
    return SetDlgItemTextW(dialog, control, text.text);
}

TQKERNEL_API BOOL TqSetDlgItemTextNoFlashF(HWND dialog, int control, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const WindowText text(format, args);
    va_end(args);
    return tq::printing::SetIfChanged(dialog, control, text.text);
}

TQKERNEL_API BOOL TqMEditPrintF(HWND edit, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    const WindowText text(format, args);
    va_end(args);
    return tq::printing::SetEditText(edit, text.text);
}

TQKERNEL_API BOOL TqSetWindowTextNoF(HWND window, const wchar_t* text)
{
    return SetWindowTextW(window, text ? text : L"");
}

TQKERNEL_API BOOL TqSetDlgItemTextNoF(HWND dialog, int control, const wchar_t* text)
{
    return SetDlgItemTextW(dialog, control, text ? text : L"");
}

TQKERNEL_API BOOL TqSetDlgItemTextNoFlashNoF(HWND dialog, int control, const wchar_t* text)
{
    return tq::printing::SetIfChanged(dialog, control, text ? text : L"");
}
