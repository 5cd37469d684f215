// The error box: the composed or given text, with the pending details and link, shown once the
// state has been cleared.
#include "tqerrorhandler.h"

#include <stdarg.h>

#include "tqerrorstate.h"
#include "tqmsgbox.h"

namespace {

using namespace tq::errorhandler;

int ShowErrorBox(HWND window, UINT flags, const wchar_t* text)
{
    // The text may be the message buffer, which taking the pending state clears.
    const size_t length = wcslen(text);
    const OwnedText copy = AllocateText(length + 1);
    if (!copy) return 0;
    wmemcpy(copy.get(), text, length + 1);
    const PendingBox box = TakePendingBox(flags);
    // The details pane belongs to the link box, so details take that way even without a link.
    if (box.details || box.linkAddress)
        return TqMsgBox_CustomExLinkF(window, box.flags, box.details.get(), box.linkAddress.get(),
                                      box.linkText.get(), L"%s", copy.get());
    return TqMsgBox_CustomF(window, box.flags, L"%s", copy.get());
}

} // namespace

TQKERNEL_API int TqErrorHandler_MsgBox(HWND window, UINT flags, UINT_PTR context, HRESULT code,
                                       const wchar_t* argument, ...)
{
    // The user knows what they cancelled.
    if (code == TQ_E_CANCELLED) return 1;
    va_list args;
    va_start(args, argument);
    const FormattedText insert(argument, args, kMessageChars);
    va_end(args);
    return ShowErrorBox(window, flags, TqErrorHandler_GetErrorMessage(context, code, insert.Get()));
}

TQKERNEL_API int TqErrorHandler_MsgBoxText(HWND window, UINT flags, const wchar_t* text, ...)
{
    if (!text) return 0;
    va_list args;
    va_start(args, text);
    const FormattedText shown(text, args, kDetailsChars);
    va_end(args);
    return ShowErrorBox(window, flags, shown.Get());
}
