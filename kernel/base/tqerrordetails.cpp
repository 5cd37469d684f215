// The error handler's process-wide state: details lines with their one-writer rule, the link,
// the last code and the message buffer, all cleared together.
#include "tqerrorhandler.h"

#include "tqerrorstate.h"

namespace tq::errorhandler {
namespace {

struct State
{
    HRESULT lastCode;
    DWORD detailsThread; // the first writer since the last clear; 0 when there are no lines
    int detailsCount;
    size_t detailsLength; // characters
    wchar_t details[kDetailsChars];
    wchar_t linkAddress[kLinkAddressChars];
    wchar_t linkText[kLinkTextChars];
    wchar_t message[kMessageChars];
};

State g_state;
// Guards everything in g_state but the message buffer. Nothing that can fault runs under it
// (callers' texts are formatted before it is taken), so an exception filter that clears the
// state can never find it held by its own thread.
SRWLOCK g_lock = SRWLOCK_INIT;

class StateLock
{
public:
    StateLock() noexcept { AcquireSRWLockExclusive(&g_lock); }
    ~StateLock() { ReleaseSRWLockExclusive(&g_lock); }
    StateLock(const StateLock&) = delete;
    StateLock& operator=(const StateLock&) = delete;
};

void ClearLocked()
{
    ZeroMemory(&g_state, sizeof g_state);
}

OwnedText CopyText(const wchar_t* text, size_t length)
{
    OwnedText copy = AllocateText(length + 1);
    if (copy) wmemcpy(copy.get(), text, length + 1);
    return copy;
}

} // namespace

wchar_t* MessageBuffer()
{
    return g_state.message;
}

HRESULT AppendDetailLine(HRESULT code, const wchar_t* line)
{
    const size_t length = wcslen(line);
    StateLock lock;
    const DWORD thread = GetCurrentThreadId();
    if (g_state.detailsCount > 0 && thread != g_state.detailsThread && code != g_state.lastCode)
        return E_FAIL;
    // The line, its "\r\n" and the terminator must stay within the block.
    if ((g_state.detailsLength + length + 2 + 1) * sizeof(wchar_t) > kDetailsBytes) return E_FAIL;
    wchar_t* end = g_state.details + g_state.detailsLength;
    wmemcpy(end, line, length);
    wmemcpy(end + length, L"\r\n", 3);
    g_state.detailsLength += length + 2;
    if (g_state.detailsCount++ == 0) g_state.detailsThread = thread;
    g_state.lastCode = code;
    return S_OK;
}

OwnedText CopyDetails(size_t* length)
{
    StateLock lock;
    *length = g_state.detailsLength;
    if (g_state.detailsCount == 0) return nullptr;
    return CopyText(g_state.details, g_state.detailsLength);
}

PendingBox TakePendingBox(UINT flags)
{
    PendingBox box;
    box.flags = flags & ~kDetailsFlags;
    StateLock lock;
    if (g_state.detailsCount > 0)
    {
        box.details = CopyText(g_state.details, g_state.detailsLength);
        if (box.details) box.flags |= kDetailsFlags;
    }
    if (g_state.linkAddress[0])
    {
        box.linkAddress = CopyText(g_state.linkAddress, wcslen(g_state.linkAddress));
        box.linkText = CopyText(g_state.linkText, wcslen(g_state.linkText));
        if (!box.linkAddress || !box.linkText)
        {
            box.linkAddress.reset();
            box.linkText.reset();
        }
    }
    ClearLocked();
    return box;
}

} // namespace tq::errorhandler

using namespace tq::errorhandler;

TQKERNEL_API void TqErrorHandler_DetailsInit(void)
{
    StateLock lock;
    ClearLocked();
}

TQKERNEL_API HRESULT TqErrorHandler_DetailsAddString(HRESULT code, const wchar_t* format, ...)
{
    if (!format) return E_POINTER;
    va_list args;
    va_start(args, format);
    const FormattedText line(format, args, kDetailsChars);
    va_end(args);
    return AppendDetailLine(code, line.Get());
}

TQKERNEL_API const wchar_t* TqErrorHandler_DetailsInfo(HRESULT* code, int* lines, DWORD* thread)
{
    StateLock lock;
    if (code) *code = g_state.lastCode;
    if (lines) *lines = g_state.detailsCount;
    if (thread) *thread = g_state.detailsThread;
    return g_state.detailsCount > 0 ? g_state.details : nullptr;
}

TQKERNEL_API HRESULT TqErrorHandler_DetailsSetHyperlink(const wchar_t* address, const wchar_t* text)
{
    if (!address || !text) return E_POINTER;
    const size_t addressLength = wcslen(address);
    const size_t textLength = wcslen(text);
    // A cut address would lead somewhere else, so nothing is stored rather than part of it.
    if (addressLength >= kLinkAddressChars || textLength >= kLinkTextChars)
        return TQ_E_BUFFERTOOSMALL;
    StateLock lock;
    wmemcpy(g_state.linkAddress, address, addressLength + 1);
    wmemcpy(g_state.linkText, text, textLength + 1);
    return S_OK;
}

TQKERNEL_API HRESULT TqErrorHandler_GetLastError(void)
{
    StateLock lock;
    return g_state.lastCode;
}
