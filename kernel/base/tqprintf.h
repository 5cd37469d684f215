// The kernel's wide-character printf family, its named-token table and the text helpers built on
// it.
#pragma once

#include <stdarg.h>
#include <stddef.h>

#include "tqkernelapi.h"

// Creates the process-wide token table; a second call keeps the existing one. Called from kernel
// start-up before anything defines tokens. Returns S_OK, or E_OUTOFMEMORY.
TQKERNEL_API HRESULT TqPrintF_Initialize(void);
// Destroys the token table and every token in it; safe when it was never created.
TQKERNEL_API void TqPrintF_Terminate(void);

// Defines or replaces a token expanded by "$(name)". Names compare without regard to case.
// Returns FALSE when the table is missing, a name is empty or too long, or memory runs out.
TQKERNEL_API BOOL TqPrintF_AddToken(const wchar_t* name, const wchar_t* value);
// Removes a token; TRUE if it existed.
TQKERNEL_API BOOL TqPrintF_DeleteToken(const wchar_t* name);

// Unbounded forms: the destination must hold whatever the format gives. Return the length of the
// result in characters.
TQKERNEL_API int TqPrintF(wchar_t* dest, const wchar_t* format, ...);
TQKERNEL_API int TqVPrintF(wchar_t* dest, const wchar_t* format, va_list args);

// Bounded forms: capacity counts characters including the terminator, and the result is always
// terminated. S_OK, TQ_E_BUFFERTOOSMALL or HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER) for a
// conversion that did not fit, E_INVALIDARG for bad arguments. outLength, when given, receives
// the final length.
TQKERNEL_API HRESULT TqCchPrintF(wchar_t* dest, size_t capacity, size_t* outLength,
                                 const wchar_t* format, ...);
TQKERNEL_API HRESULT TqNVPrintF(wchar_t* dest, size_t capacity, size_t* outLength,
                                const wchar_t* format, va_list args);

// FormatMessage-style composition: inserts are %1, %2 ..., each a string unless the insert says
// otherwise ("%1!d!"). No "$" processing. Returns the characters written, 0 on failure.
TQKERNEL_API int TqComposeStr(wchar_t* buffer, int capacity, const wchar_t* format, ...);

// A byte count as the user reads it: "998 B", "0.97 KB", "1.5 GB". longBytes asks for the long
// word below one kilobyte ("998 bytes"). Returns the characters written, 0 when it does not fit.
TQKERNEL_API int TqFormatFileSize(LONGLONG size, wchar_t* buffer, int capacity, BOOL longBytes);

// Format into a local buffer and set a window's or dialog control's text. The NoFlash forms leave
// a control alone whose text is already the same, so it does not repaint. TqMEditPrintF is for
// multi-line edit controls: line breaks become the CR LF pairs they need.
TQKERNEL_API BOOL TqSetWindowTextF(HWND window, const wchar_t* format, ...);
TQKERNEL_API BOOL TqSetDlgItemTextF(HWND dialog, int control, const wchar_t* format, ...);
TQKERNEL_API BOOL TqSetDlgItemTextNoFlashF(HWND dialog, int control, const wchar_t* format, ...);
TQKERNEL_API BOOL TqMEditPrintF(HWND edit, const wchar_t* format, ...);
// The same with plain text.
TQKERNEL_API BOOL TqSetWindowTextNoF(HWND window, const wchar_t* text);
TQKERNEL_API BOOL TqSetDlgItemTextNoF(HWND dialog, int control, const wchar_t* text);
TQKERNEL_API BOOL TqSetDlgItemTextNoFlashNoF(HWND dialog, int control, const wchar_t* text);
