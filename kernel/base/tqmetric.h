// Metrics: the settings store. Small values addressed by number under one registry key per
// product and version; the value name's letter tells the type ("%d" DWORD, "S%d" text, "B%d"
// bytes, "Z%d" multi-text), so code deals in numbers and the store stays readable.
#pragma once

#include "tqkernelapi.h"

#include <objidl.h>

struct _tqmetric
{
    wchar_t firstPath[MAX_PATH]; // unused by the open calls
    HKEY firstKey;               // closed by TqMetric_Close when set
    wchar_t keyPath[MAX_PATH];   // the path that was opened, below HKEY_CURRENT_USER
    HKEY key;
};
typedef struct _tqmetric* HTQMETRIC;

// Selects the process default store, which nothing sets: readers see no store, writers fail.
#define TQMETRIC_DEFAULT ((HTQMETRIC)(LONG_PTR)-1)

// Value types, the registry's own codes; any other type names a multi-text value.
#define TQMETRIC_STRING 1
#define TQMETRIC_BINARY 3
#define TQMETRIC_DWORD 4
#define TQMETRIC_MULTISTRING 7

// Opens (creating) "Software\<company>\<product>\<major>.<minor>\Metrics[\<subKey>]" below
// HKEY_CURRENT_USER, major = version >> 24 and minor = (version >> 16) & 255; a version whose
// upper word is 255 or less leaves out the version level. The plain form uses the company
// "Ostrel". *out is set even when the open fails, and must be closed then too.
TQKERNEL_API HRESULT TqMetric_Open(HTQMETRIC* out, const wchar_t* product, DWORD version,
                                   const wchar_t* subKey);
TQKERNEL_API HRESULT TqMetric_OpenRegHiveAndVersion(HTQMETRIC* out, const wchar_t* product,
                                                    DWORD version, const wchar_t* company,
                                                    const wchar_t* subKey);
TQKERNEL_API HRESULT TqMetric_OpenAppVersion(HTQMETRIC* out, const wchar_t* path,
                                             const wchar_t* subKey);
// A sibling of the parent's own sub key: another key below the same "Metrics".
TQKERNEL_API HRESULT TqMetric_OpenSubKey(HTQMETRIC* out, HTQMETRIC parent, const wchar_t* subKey);
TQKERNEL_API void TqMetric_Close(HTQMETRIC handle);

// Delete a product's whole version key (from the machine's and then the user's settings), or the
// user's alone.
TQKERNEL_API HRESULT TqMetric_DeleteAll(const wchar_t* product, DWORD version);
TQKERNEL_API HRESULT TqMetric_DeleteAllHiveAndVersion(const wchar_t* product, DWORD version,
                                                      const wchar_t* company);
TQKERNEL_API HRESULT TqMetric_DeleteUserMetrics(const wchar_t* product, DWORD version);
// Delete one sub key of the Metrics key; the last closes the handle and deletes its key.
TQKERNEL_API HRESULT TqMetric_DeleteKey(const wchar_t* product, DWORD version,
                                        const wchar_t* subKey);
TQKERNEL_API HRESULT TqMetric_DeleteKeyHiveAndVersion(const wchar_t* product, DWORD version,
                                                      const wchar_t* company,
                                                      const wchar_t* subKey);
TQKERNEL_API HRESULT TqMetric_CloseAndDeleteKey(HTQMETRIC handle);

// The value name of a number and type, from the number's absolute value, into at least 16
// characters. A DWORD is named "D%d" here although the store names it by the bare number.
TQKERNEL_API wchar_t* TqMetricGetName(int number, int type, wchar_t* buffer);

// Every reader accepts a null or default handle and answers as for a missing value.
// DWORD values: the value or 0; clamped to min..max as signed numbers unless min equals max.
TQKERNEL_API DWORD TqGetMetric(HTQMETRIC handle, int number);
TQKERNEL_API int TqGetMetricEx(HTQMETRIC handle, int number, int min, int max, int defaultValue);
TQKERNEL_API BOOL TqGetMetricBool(HTQMETRIC handle, int number, BOOL defaultValue);
TQKERNEL_API HRESULT TqSetMetric(HTQMETRIC handle, int number, DWORD value);
TQKERNEL_API DWORD TqGetMetricUsingName(HTQMETRIC handle, const wchar_t* name, DWORD defaultValue);
// Reports the registry's own error as 0x8007xxxx.
TQKERNEL_API HRESULT TqSetMetricUsingName(HTQMETRIC handle, const wchar_t* name, DWORD value);

// Bytes: the count read, the rest of the buffer zero; 0 and an all-zero buffer on failure.
TQKERNEL_API DWORD TqGetMetricBinary(HTQMETRIC handle, int number, void* buffer, DWORD size);
// S_OK; TQ_E_BUFFERTOOSMALL with the size needed in *outSize (also for a null buffer); S_FALSE
// for a value that is missing or of another type; E_INVALIDARG without outSize; TQ_E_NOTFOUND
// without a store.
TQKERNEL_API HRESULT TqGetMetricBinaryEx(HTQMETRIC handle, int number, void* buffer, DWORD size,
                                         DWORD* outSize);
TQKERNEL_API HRESULT TqSetMetricBinary(HTQMETRIC handle, int number, const void* data, DWORD size);
// A stream's whole contents as bytes, at most 2048 of them; the writer needs a memory stream.
TQKERNEL_API HRESULT TqGetMetricStream(HTQMETRIC handle, int number, IStream* stream);
TQKERNEL_API HRESULT TqSetMetricStream(HTQMETRIC handle, int number, IStream* stream);

// Text into capacity characters, zero behind it: the stored text's length; for a missing value
// the default's length (0 without one). A stored empty text counts as absent unless
// onlyIfAbsent is set: then it gives 0 and an empty string, beating the default.
TQKERNEL_API int TqGetMetricStringEx(HTQMETRIC handle, int number, wchar_t* buffer, int capacity,
                                     const wchar_t* defaultText, BOOL onlyIfAbsent);
// Writes the text with its terminator; null writes an empty text.
TQKERNEL_API HRESULT TqSetMetricString(HTQMETRIC handle, int number, const wchar_t* text);
// The same for multi-text: texts each ended by a terminator and one more at the end. The
// default is such a list; chars counts every terminator.
TQKERNEL_API int TqGetMetricMultiStringEx(HTQMETRIC handle, int number, wchar_t* buffer,
                                          int capacity, const wchar_t* defaultList,
                                          BOOL onlyIfAbsent);
TQKERNEL_API HRESULT TqSetMetricMultiString(HTQMETRIC handle, int number, const wchar_t* data,
                                            int chars);

// 0 when the value exists with that type, 1 when not: the result is a failure flag.
TQKERNEL_API int TqDoesMetricExist(HTQMETRIC handle, int number, int type);
// S_OK, E_FAIL, or S_FALSE without a store. The named form deletes only a value of that type.
TQKERNEL_API HRESULT TqDeleteMetric(HTQMETRIC handle, int number, int type);
TQKERNEL_API HRESULT TqDeleteMetricUsingName(HTQMETRIC handle, const wchar_t* name, int type);
// Reads the value named by the bare number whatever the type. The order of its answers is one
// callers depend on: TQ_E_BUFFERTOOSMALL with the size needed; TQ_E_NOTFOUND for a value read
// with the expected type; otherwise the size read, and for text of another type a terminated
// string (TQ_E_BUFFERTOOSMALL with a forced terminator when there was no room), S_OK.
TQKERNEL_API HRESULT TqGetMetricAny(HTQMETRIC handle, int number, int type, void* buffer,
                                    DWORD size, DWORD* outSize);
