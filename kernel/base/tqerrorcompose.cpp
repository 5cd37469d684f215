// Composition of an error message from a context and a code, alone or with the details.
#include "tqerrorhandler.h"

#include "tqerrorstate.h"
#include "tqprintf.h"
#include "tqstrings.h"

using namespace tq::errorhandler;

TQKERNEL_API const wchar_t* TqErrorHandler_GetErrorMessage(UINT_PTR context, HRESULT code,
                                                           const wchar_t* argument)
{
    wchar_t* message = MessageBuffer();
    const wchar_t* insert = argument ? argument : L"";
    // Both texts go through the formatter, so "$" conversions and tokens work in either.
    TqCchPrintF(message, kMessageChars, nullptr, TqErrorHandler_GetContextString(context), insert);
    const size_t length = wcslen(message);
    if (length >= kContextLimit) return message;
    wchar_t* reasonAt = message + length;
    const size_t room = kMessageChars - length;
    if (const wchar_t* reason = TqErrorHandler_GetHresultString(code))
        TqCchPrintF(reasonAt, room, nullptr, reason, insert);
    else
        TqCchPrintF(reasonAt, room, nullptr, TqGetString(TQS(ErrMessageMissing)),
                    static_cast<unsigned>(code));
    return message;
}

TQKERNEL_API BSTR TqErrorHandler_ComposeErrorText(UINT_PTR context, HRESULT code,
                                                  const wchar_t* argument)
{
    static constexpr wchar_t kOpen[] = L"\r\n<Details>\r\n";
    static constexpr wchar_t kClose[] = L"\r\n</Details>";
    const wchar_t* message = TqErrorHandler_GetErrorMessage(context, code, argument);
    const size_t messageLength = wcslen(message);
    size_t detailsLength = 0;
    const OwnedText details = CopyDetails(&detailsLength);
    if (!details) return messageLength ? SysAllocStringLen(message, messageLength) : nullptr;

    const size_t openLength = ARRAYSIZE(kOpen) - 1;
    const size_t closeLength = ARRAYSIZE(kClose) - 1;
    const size_t total = messageLength + openLength + detailsLength + closeLength;
    BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(total));
    if (!text) return nullptr;
    wchar_t* at = text;
    at = wmemcpy(at, message, messageLength) + messageLength;
    at = wmemcpy(at, kOpen, openLength) + openLength;
    at = wmemcpy(at, details.get(), detailsLength) + detailsLength;
    wmemcpy(at, kClose, closeLength);
    return text;
}
