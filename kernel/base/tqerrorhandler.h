// Error handler: turns a context and a code into one message, collects technical details for it,
// raises the one error box, and turns exceptions into text.
#pragma once

#include <stddef.h>

#include "tqkernelapi.h"

#include <oleauto.h>

#include "tqlang.h"

// Kernel codes that Win32 and common dialog errors translate to; every kernel code has its text
// in the handler's table.
#define TQ_E_DISKFULL ((HRESULT)0x8004E002L)         // the disk is full
#define TQ_E_BUSY ((HRESULT)0x8004E005L)             // the system is busy
#define TQ_E_OPENFAILED ((HRESULT)0x8004E007L)       // the file could not be opened
#define TQ_E_BADFILENAME ((HRESULT)0x8004E00DL)      // the file name is not valid
#define TQ_E_RESOURCEMISSING ((HRESULT)0x8004E00EL)  // a necessary resource is missing
#define TQ_E_EXCEPTION ((HRESULT)0x8004E017L)        // an exception has occurred
#define TQ_E_TOOMANYFILES ((HRESULT)0x8004E026L)     // too many files are open
#define TQ_E_FILEEXISTS ((HRESULT)0x8004E032L)       // not created: a file of that name exists
#define TQ_E_SHARINGVIOLATION ((HRESULT)0x8004E05AL) // another application has the file open
#define TQ_E_ALREADYEXISTS ((HRESULT)0x8004E170L)    // the file already exists

// A row of an error table: a code and its text, as anything TqGetStringSmart accepts (plain
// text, a numeric string id by MAKEINTRESOURCEW, or TQS(Name)). Reasons start with "\n\n",
// because they are appended straight behind the context sentence.
typedef struct _tqerror_table
{
    HRESULT code;
    const wchar_t* text;
} _tqerror_table;
// Tables whose texts are string ids have the same rows.
typedef _tqerror_table _tqerror_table_rcid;

// Composition. context below 0x10000 is an id of the built-in context table (an unknown id gives
// context 0); anything else is the context text itself. The context is formatted with the
// kernel's printf, argument (null: "") filling its "%s", and the reason for code follows it,
// formatted the same way, unless the context alone is 1948 characters or longer. The result
// lives in one process-wide buffer until the next composition: keep a copy.
TQKERNEL_API const wchar_t* TqErrorHandler_GetErrorMessage(UINT_PTR context, HRESULT code,
                                                           const wchar_t* argument);
// The composed message, then the pending details between "<Details>" and "</Details>" lines.
// The caller frees the string with SysFreeString. Null when there is no text or no memory.
TQKERNEL_API BSTR TqErrorHandler_ComposeErrorText(UINT_PTR context, HRESULT code,
                                                  const wchar_t* argument);
// The reason text of code, unformatted, from the registered tables and then the built-in one;
// null when no table knows the code.
TQKERNEL_API const wchar_t* TqErrorHandler_GetHresultString(HRESULT code);
// The context text, unformatted: the table's text for an id, else context itself as text.
TQKERNEL_API const wchar_t* TqErrorHandler_GetContextString(UINT_PTR context);

// Registers a table of reasons searched before the built-in one, in the order of registration,
// with texts in the kernel language. The table must outlive the process's use of the handler.
// S_OK; S_FALSE when 32 tables are registered already (nothing changes); E_INVALIDARG.
TQKERNEL_API HRESULT TqErrorHandler_AddErrorTable(const _tqerror_table* table, int count);
// The same with the language that resolves the table's texts.
TQKERNEL_API HRESULT TqErrorHandler_AddErrorTableLang(HTQLANG lang, const _tqerror_table* table,
                                                      int count);

// Details: lines of technical text that a lower layer collects for the next message, up to
// 16384 bytes in all. One thread writes them: the first writer after a clear owns the block, and
// another thread may add only with the code of the last line.

// Clears the whole state: details, last code, message buffer and hyperlink.
TQKERNEL_API void TqErrorHandler_DetailsInit(void);
// Appends a line. format is taken as it stands unless it holds "$" or "%", then it is formatted
// with the arguments. S_OK; E_POINTER for a null format; E_FAIL for another thread with another
// code, or when the line would fill the block (the earlier lines stay).
TQKERNEL_API HRESULT TqErrorHandler_DetailsAddString(HRESULT code, const wchar_t* format, ...);
// The details text (lines ended by "\r\n"), or null when there are none; it changes with the
// details, so keep a copy. Any out-pointer may be null: last code, number of lines, thread that
// wrote the first line.
TQKERNEL_API const wchar_t* TqErrorHandler_DetailsInfo(HRESULT* code, int* lines, DWORD* thread);
// A link the next box offers. S_OK; E_POINTER when either is null; TQ_E_BUFFERTOOSMALL when the
// address exceeds 2082 or the text 2047 characters (nothing is stored).
TQKERNEL_API HRESULT TqErrorHandler_DetailsSetHyperlink(const wchar_t* address,
                                                        const wchar_t* text);
// The code of the latest detail line; S_OK after a clear.
TQKERNEL_API HRESULT TqErrorHandler_GetLastError(void);

// The error box. flags are MessageBoxW flags; bits 0xC000 belong to the handler. Both show the
// pending details and link and clear the whole state before the box appears, so errors raised
// while it is open start afresh. They return the box's answer.
//
// A cancelled operation (TQ_E_CANCELLED) raises no box and returns 1. argument is formatted with
// the further arguments when it holds "$" or "%": pass "%s" and a name that may contain either.
TQKERNEL_API int TqErrorHandler_MsgBox(HWND window, UINT flags, UINT_PTR context, HRESULT code,
                                       const wchar_t* argument, ...);
// text is formatted with the further arguments when it holds "$" or "%".
TQKERNEL_API int TqErrorHandler_MsgBoxText(HWND window, UINT flags, const wchar_t* text, ...);

// The process's last resort, for an exception filter expression (threadName may be null). It
// lets misalignment faults and, when a debugger is attached, everything else go on searching;
// otherwise it shows the exception's text as details of a box and answers
// EXCEPTION_EXECUTE_HANDLER.
TQKERNEL_API LONG TqErrorHandler_ExceptionFilter(EXCEPTION_POINTERS* pointers,
                                                 const wchar_t* threadName);

// Lines of TqErrorHandler_DumpExceptionRecord; 0 asks for all of them.
#define TQ_DUMP_EXCEPTION 0x01u // code, name, access and instruction address
#define TQ_DUMP_MODULE 0x02u    // module that holds the instruction, and the offset into it
#define TQ_DUMP_THREAD 0x20u    // thread name and id

// Dumps write lines of ANSI text ended by "\r\n" into buffer (size in bytes, always terminated).
// A line is written only while 50 bytes are left and it fits whole. They return the bytes
// written, without the terminator. Memory that cannot be read shows as dots, never as a fault.
TQKERNEL_API int TqErrorHandler_DumpExceptionRecord(char* buffer, size_t size,
                                                    const wchar_t* threadName,
                                                    EXCEPTION_POINTERS* pointers, DWORD flags);
// 8 bytes a line: address, hex bytes, then the bytes as characters.
TQKERNEL_API int TqErrorHandler_DumpHex(char* buffer, size_t size, const void* address,
                                        size_t bytes);
// 4 32-bit values a line.
TQKERNEL_API int TqErrorHandler_DumpHexDWords(char* buffer, size_t size, const void* address,
                                              size_t count);

// The kernel's code for a Win32 error (GetLastError); E_FAIL for errors it has no code for.
TQKERNEL_API HRESULT TqErrorHandler_TranslateWin32Error(DWORD error);
// The kernel's code for a common dialog error (CommDlgExtendedError).
TQKERNEL_API HRESULT TqErrorHandler_TranslateCommDlgError(DWORD error);

#ifdef __cplusplus
inline HRESULT TqErrorHandler_AddErrorTable(HTQLANG lang, const _tqerror_table* table, int count)
{
    return TqErrorHandler_AddErrorTableLang(lang, table, count);
}
#endif
