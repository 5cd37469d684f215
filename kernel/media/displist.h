// A display list: clipboard-like payloads (text, a picture) attached to a media file, stored as
// "DISP" chunks of a format id and the payload.
#pragma once

#include "riff.h"

#include <objidl.h>

#define RIFF_ID_DISP RIFF_ID('D', 'I', 'S', 'P')

// An item: a clipboard format id and its payload, a locked block of the movable global heap owned
// by the list (null with size 0 while empty).
typedef struct tDISPITEM
{
    DWORD format;
    DWORD size;
    void* data;
} tDISPITEM;

// count items in an array owned by the list (a locked global-heap block).
typedef struct tDISPLIST
{
    INT32 count;
    tDISPITEM* items;
} tDISPLIST;

// What displist_SetItem answers for a format the list does not hold.
#define DISPLIST_E_UNKNOWNFORMAT ((HRESULT)0xFFFFFFFFL)

// Makes list (destroyed first) hold exactly two empty items: text (CF_TEXT) and a picture
// (CF_DIB). Only formats a list holds are loaded and set.
TQKERNEL_API HRESULT displist_Create(tDISPLIST* list);
// Frees every payload; the items stay, empty.
TQKERNEL_API void displist_Free(tDISPLIST* list);
// Frees every payload and the items; the list is empty.
TQKERNEL_API void displist_Destroy(tDISPLIST* list);
// The item of that format, or null.
TQKERNEL_API tDISPITEM* displist_GetItem(const tDISPLIST* list, DWORD format);
// Stores a copy of size bytes of data; no data or size 0 empties the item. A format the list
// does not hold gives DISPLIST_E_UNKNOWNFORMAT; E_OUTOFMEMORY leaves the item as it was.
TQKERNEL_API HRESULT displist_SetItem(tDISPLIST* list, DWORD format, DWORD size, const void* data);
// Walks the chunks from the cursor within *remaining bytes (decreased as they are consumed) and
// loads every "DISP" chunk of a format the list holds; other chunks and formats are stepped
// over. A bound below a chunk header ends the walk with the cursor back where it started. A
// failed read is returned and keeps the items loaded before it.
TQKERNEL_API HRESULT displist_Load(HANDLE file, tDISPLIST* list, DWORD* remaining);
// Writes one "DISP" chunk for every item that holds a payload; written (optional) gets the bytes.
TQKERNEL_API HRESULT displist_Save(HANDLE file, const tDISPLIST* list, DWORD* written);

// The same on Wave64 files ("DISP" is a GUID of the family that spells a RIFF id in its first
// field; chunks are aligned to 8) and on RF64 files (RIFF chunks with 64-bit bounds).
TQKERNEL_API HRESULT displist64_Load(HANDLE file, tDISPLIST* list, ULONGLONG* remaining);
TQKERNEL_API HRESULT displist64_Save(HANDLE file, const tDISPLIST* list, ULONGLONG* written);
TQKERNEL_API HRESULT displistRF64_Load(HANDLE file, tDISPLIST* list, ULONGLONG* remaining);
TQKERNEL_API HRESULT displistRF64_Save(HANDLE file, const tDISPLIST* list, ULONGLONG* written);

// Loads the "DISP" chunks of a stream of RIFF chunks (as displist_Save writes them) from its
// position within *remaining bytes, as displist_Load does from a file.
TQKERNEL_API HRESULT displist_LoadFromStream(IStream* stream, tDISPLIST* list, DWORD* remaining);
// The picture (CF_DIB) of the display list at the top level of a RIFF, RF64 or Wave64 file, as a
// DIB section the caller deletes; null when the file has none or it is no well-formed bitmap.
TQKERNEL_API HBITMAP displist_CreateBitmapFromFile(const WCHAR* path);
