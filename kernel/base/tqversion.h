// Strings of a file's version record, such as its "FileVersion" or "ProductName".
#pragma once

#include "tqkernelapi.h"

// Reads the string key of the file's version record in the record's first translation. S_OK;
// TQ_E_NOTFOUND when the file, its record or the key is missing; TQ_E_BUFFERTOOSMALL with the
// text cut to fit; E_INVALIDARG without a file, key or buffer.
TQKERNEL_API HRESULT TqVersion_GetString(const wchar_t* file, const wchar_t* key, wchar_t* buffer,
                                         int capacity);
