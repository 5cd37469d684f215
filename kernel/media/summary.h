// A media file's textual properties (title, artist, comment, ...) as a summary list, and their
// RIFF form: a "LIST" of type "INFO" (8-bit text) or "UNFO" (16-bit text).
#pragma once

#include "riff.h"

#define RIFF_ID_UNFO RIFF_ID('U', 'N', 'F', 'O')

// An item: the chunk id it is stored under and its zero-terminated text. The text is a locked
// block of the movable global heap owned by the list; null only while an item is being set.
typedef struct tSUMMARYITEM
{
    DWORD id;
    WCHAR* text;
} tSUMMARYITEM;

// The list: count items in an array that is also a locked global-heap block owned by the list.
// A zero-filled record is an empty list.
typedef struct tSUMMARYLIST
{
    INT32 count;
    tSUMMARYITEM* items;
} tSUMMARYLIST;

// --- In memory ---

// The index of the item with that id, or 0x8004E00A.
TQKERNEL_API LONG TqSummary_GetItemIndex(const tSUMMARYLIST* list, DWORD id);
// The text of the item with that id, or null; the list keeps it.
TQKERNEL_API const WCHAR* TqSummary_GetItemText(const tSUMMARYLIST* list, DWORD id);
// Sets, adds or removes an item. A null text removes the item (and frees the list with its last
// item); an empty text is stored as such. Id 0 gives E_INVALIDARG; E_OUTOFMEMORY leaves the item
// as it was.
TQKERNEL_API HRESULT TqSummary_SetItem(tSUMMARYLIST* list, DWORD id, const WCHAR* text);
// Makes dst (freed first) a copy of src.
TQKERNEL_API HRESULT TqSummary_Copy(tSUMMARYLIST* dst, const tSUMMARYLIST* src);
// True when both hold as many items and the texts at each position are equal (ids are not
// compared, order matters). A null list is never equal.
TQKERNEL_API BOOL TqSummary_Compare(const tSUMMARYLIST* a, const tSUMMARYLIST* b);
// Three-way merge: dst becomes a copy of src, then every edit that turns `before` into `after`
// (an id added, changed or removed) is made on dst too. Either of before and after may be null,
// standing for an empty list.
TQKERNEL_API HRESULT TqSummary_Merge(tSUMMARYLIST* dst, const tSUMMARYLIST* src,
                                     const tSUMMARYLIST* before, const tSUMMARYLIST* after);
// Frees every text and the array; the list is empty afterwards.
TQKERNEL_API void TqSummary_Free(tSUMMARYLIST* list);

// --- On file (the cursor of `file` is used as the riff_ functions use it) ---

// Loads the entries of a "LIST" "INFO" whose first entry is at the cursor; *listSize is the
// list's size without its type. The list is freed first; a failure leaves it empty.
TQKERNEL_API HRESULT TqSummary_Load(HANDLE file, tSUMMARYLIST* list, DWORD* listSize);
// The same for "UNFO" (16-bit text).
TQKERNEL_API HRESULT TqSummary_LoadUNFO(HANDLE file, tSUMMARYLIST* list, DWORD* listSize);
// Writes the list as a "LIST" "INFO" at the cursor (items with a null text are skipped); an
// empty list writes nothing. written (optional) gets the bytes written.
TQKERNEL_API HRESULT TqSummary_Save(HANDLE file, const tSUMMARYLIST* list, DWORD* written);
// The same as "UNFO".
TQKERNEL_API HRESULT TqSummary_SaveUNFO(HANDLE file, const tSUMMARYLIST* list, DWORD* written);
// Reads one text of the "INFO" list found from the cursor within *remaining bytes, without
// loading the list. buffer gets at most bufferChars - 1 characters and a terminator. The cursor
// is restored.
TQKERNEL_API HRESULT TqSummary_GetStringFromFile(HANDLE file, DWORD id, WCHAR* buffer,
                                                 DWORD bufferChars, DWORD* remaining);

// --- The same on Wave64 files: the list, its type and its entries are chunks named by GUIDs of
// the family that spells a RIFF id in their first field, with 64-bit sizes and 8-byte alignment;
// bounds and counts are 64-bit ---

TQKERNEL_API HRESULT TqSummary_Load64(HANDLE file, tSUMMARYLIST* list, ULONGLONG* listSize);
TQKERNEL_API HRESULT TqSummary_LoadUNFO64(HANDLE file, tSUMMARYLIST* list, ULONGLONG* listSize);
TQKERNEL_API HRESULT TqSummary64_Save(HANDLE file, const tSUMMARYLIST* list, ULONGLONG* written);
TQKERNEL_API HRESULT TqSummary64_SaveUNFO(HANDLE file, const tSUMMARYLIST* list,
                                          ULONGLONG* written);
TQKERNEL_API HRESULT TqSummary64_GetStringFromFile(HANDLE file, DWORD id, WCHAR* buffer,
                                                   DWORD bufferChars, ULONGLONG* remaining);

// --- And on RF64 files, whose lists are those of RIFF with 64-bit bounds, for the chunks
// behind "data" (see SeekToRF64End); plain RIFF files read the same ---

TQKERNEL_API HRESULT TqSummary_LoadRF64(HANDLE file, tSUMMARYLIST* list, ULONGLONG* listSize);
TQKERNEL_API HRESULT TqSummary_LoadUNFORF64(HANDLE file, tSUMMARYLIST* list, ULONGLONG* listSize);
TQKERNEL_API HRESULT TqSummaryRF64_Save(HANDLE file, const tSUMMARYLIST* list, ULONGLONG* written);
TQKERNEL_API HRESULT TqSummaryRF64_SaveUNFO(HANDLE file, const tSUMMARYLIST* list,
                                            ULONGLONG* written);
TQKERNEL_API HRESULT TqSummaryRF64_GetStringFromFile(HANDLE file, DWORD id, WCHAR* buffer,
                                                     DWORD bufferChars, ULONGLONG* remaining);
