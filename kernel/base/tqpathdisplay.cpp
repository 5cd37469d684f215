// Display forms: byte counts as text and paths and strings cut to a width with "...".
#include "tqpath.h"

#include "tqprintf.h"

#include <string>

namespace tq::path {
namespace {

constexpr wchar_t kDots[] = L"...";
constexpr int kDotsLength = 3;
constexpr int kEllipsisCopy = 1300;

// How wide a run of characters is: pixels on a device context, or characters.
class Measure
{
public:
    explicit Measure(HDC dc) : m_dc(dc) {}
    int operator()(const wchar_t* text, int length) const
    {
        if (!m_dc) return length;
        SIZE size = {};
        GetTextExtentPoint32W(m_dc, text, length, &size);
        return size.cx;
    }

private:
    HDC m_dc;
};

int Emit(const std::wstring& text, wchar_t* result, int capacity)
{
    if (!result || capacity < 1) return 0;
    lstrcpynW(result, text.c_str(), capacity);
    return lstrlenW(result);
}

// The front is shortened one character at a time, measuring each time, until front, "..." and
// the tail fit together; a tail that does not fit even alone leaves the path as it is, because a
// file name must never be cut (the control clips it instead).
int PathEllipsis(const Measure& measure, const wchar_t* path, wchar_t* result, int capacity,
                 int width)
{
    if (!path) return 0;
    const std::wstring text(path, wcsnlen(path, kEllipsisCopy));
    const size_t slash = text.find_last_of(L"\\/");
    const int length = static_cast<int>(text.size());
    if (slash == std::wstring::npos || measure(text.c_str(), length) <= width)
        return Emit(text, result, capacity);
    const wchar_t* tail = text.c_str() + slash;
    const int tailLength = length - static_cast<int>(slash);
    const int fixed = measure(tail, tailLength) + measure(kDots, kDotsLength);
    if (fixed > width) return Emit(text, result, capacity);
    int front = static_cast<int>(slash);
    while (front > 0 && measure(text.c_str(), front) + fixed > width)
        --front;
    return Emit(text.substr(0, front) + kDots + tail, result, capacity);
}

int StringEllipsis(const Measure& measure, const wchar_t* text, wchar_t* result, int capacity,
                   int width, bool keepEnd)
{
    if (!text) return 0;
    const std::wstring whole = text;
    int length = static_cast<int>(whole.size());
    if (measure(whole.c_str(), length) <= width) return Emit(whole, result, capacity);
    const int dots = measure(kDots, kDotsLength);
    while (length > 0)
    {
        --length;
        const wchar_t* start = keepEnd ? whole.c_str() + whole.size() - length : whole.c_str();
        if (measure(start, length) + dots <= width) break;
    }
    if (keepEnd) return Emit(kDots + whole.substr(whole.size() - length), result, capacity);
    return Emit(whole.substr(0, length) + kDots, result, capacity);
}

// Runs fn with a window's own font selected into its device context and its client width.
template <class Fn>
int WithWindowFont(HWND window, Fn fn)
{
    RECT client;
    if (!window || !GetClientRect(window, &client)) return 0;
    HDC dc = GetDC(window);
    if (!dc) return 0;
    HFONT font = reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0));
    HGDIOBJ previous = font ? SelectObject(dc, font) : nullptr;
    const int length = fn(dc, static_cast<int>(client.right - client.left));
    if (previous) SelectObject(dc, previous);
    ReleaseDC(window, dc);
    return length;
}

} // namespace
} // namespace tq::path

using namespace tq::path;

TQKERNEL_API int TqGetByteSizeText(LONGLONG size, wchar_t* buffer, int capacity)
{
    return TqFormatFileSize(size, buffer, capacity, FALSE);
}

TQKERNEL_API int TqGetByteSizeText2(LONGLONG size, wchar_t* buffer, int capacity)
{
    return TqFormatFileSize(size, buffer, capacity, TRUE);
}

TQKERNEL_API int TqCalcStringEllipsis(HDC dc, const wchar_t* text, wchar_t* result, int capacity,
                                      int width)
{
    if (!dc) return 0;
    return StringEllipsis(Measure(dc), text, result, capacity, width, false);
}

TQKERNEL_API int TqCalcStringEllipsisFromEnd(HDC dc, const wchar_t* text, wchar_t* result,
                                             int capacity, int width)
{
    if (!dc) return 0;
    return StringEllipsis(Measure(dc), text, result, capacity, width, true);
}

TQKERNEL_API int TqCalcPathEllipsisEx(HDC dc, const wchar_t* path, wchar_t* result, int capacity,
                                      int width)
{
    if (!dc) return 0;
    return PathEllipsis(Measure(dc), path, result, capacity, width);
}

TQKERNEL_API int TqCalcPathEllipsis(HDC dc, wchar_t* path, int capacity, int width)
{
    if (!dc || !path) return 0;
    const std::wstring copy(path, wcsnlen(path, kEllipsisCopy));
    return PathEllipsis(Measure(dc), copy.c_str(), path, capacity, width);
}

TQKERNEL_API int TqCalcPathEllipsisExCtl(HWND window, const wchar_t* path, wchar_t* result,
                                         int capacity)
{
    return WithWindowFont(window, [&](HDC dc, int width) {
        return PathEllipsis(Measure(dc), path, result, capacity, width);
    });
}

TQKERNEL_API int TqFilenameFormat(const wchar_t* path, wchar_t* result, int capacity, int maxChars)
{
    return PathEllipsis(Measure(nullptr), path, result, capacity, maxChars);
}

TQKERNEL_API int TqFilenameFormatForCtl(HWND window, const wchar_t* path, wchar_t* result,
                                        int capacity)
{
    return TqCalcPathEllipsisExCtl(window, path, result, capacity);
}

TQKERNEL_API int TqFilenameFormatForWidth(HDC dc, const wchar_t* path, wchar_t* result,
                                          int capacity, int width)
{
    return TqCalcPathEllipsisEx(dc, path, result, capacity, width);
}
