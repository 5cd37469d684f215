// The summary and display lists on Wave64 and RF64 files. Wave64 frames a list, its type and
// its entries with GUIDs of the RIFF-id family, 64-bit sizes and 8-byte alignment; RF64 keeps
// the RIFF chunks and takes only its bounds in 64 bits, so a plain RIFF file reads the same.
#include "summaryframing.h"

using tq::media::Rf64Framing;
using tq::media::Wave64Framing;
using namespace tq::summary;

TQKERNEL_API HRESULT TqSummary_Load64(HANDLE file, tSUMMARYLIST* list, ULONGLONG* listSize)
{
    Wave64Framing framing(file);
    return LoadList(framing, list, listSize, false);
}

TQKERNEL_API HRESULT TqSummary_LoadUNFO64(HANDLE file, tSUMMARYLIST* list, ULONGLONG* listSize)
{
    Wave64Framing framing(file);
    return LoadList(framing, list, listSize, true);
}

TQKERNEL_API HRESULT TqSummary64_Save(HANDLE file, const tSUMMARYLIST* list, ULONGLONG* written)
{
    Wave64Framing framing(file);
    return SaveList(framing, list, written, false);
}

TQKERNEL_API HRESULT TqSummary64_SaveUNFO(HANDLE file, const tSUMMARYLIST* list, ULONGLONG* written)
{
    Wave64Framing framing(file);
    return SaveList(framing, list, written, true);
}

TQKERNEL_API HRESULT TqSummary64_GetStringFromFile(HANDLE file, DWORD id, WCHAR* buffer,
                                                   DWORD bufferChars, ULONGLONG* remaining)
{
    Wave64Framing framing(file);
    return GetString(framing, id, buffer, bufferChars, remaining);
}

TQKERNEL_API HRESULT TqSummary_LoadRF64(HANDLE file, tSUMMARYLIST* list, ULONGLONG* listSize)
{
    Rf64Framing framing(file);
    return LoadList(framing, list, listSize, false);
}

TQKERNEL_API HRESULT TqSummary_LoadUNFORF64(HANDLE file, tSUMMARYLIST* list, ULONGLONG* listSize)
{
    Rf64Framing framing(file);
    return LoadList(framing, list, listSize, true);
}

TQKERNEL_API HRESULT TqSummaryRF64_Save(HANDLE file, const tSUMMARYLIST* list, ULONGLONG* written)
{
    Rf64Framing framing(file);
    return SaveList(framing, list, written, false);
}

TQKERNEL_API HRESULT TqSummaryRF64_SaveUNFO(HANDLE file, const tSUMMARYLIST* list,
                                            ULONGLONG* written)
{
    Rf64Framing framing(file);
    return SaveList(framing, list, written, true);
}

TQKERNEL_API HRESULT TqSummaryRF64_GetStringFromFile(HANDLE file, DWORD id, WCHAR* buffer,
                                                     DWORD bufferChars, ULONGLONG* remaining)
{
    Rf64Framing framing(file);
    return GetString(framing, id, buffer, bufferChars, remaining);
}

TQKERNEL_API HRESULT displist64_Load(HANDLE file, tDISPLIST* list, ULONGLONG* remaining)
{
    Wave64Framing framing(file);
    return LoadDisplay(framing, list, remaining);
}

TQKERNEL_API HRESULT displist64_Save(HANDLE file, const tDISPLIST* list, ULONGLONG* written)
{
    Wave64Framing framing(file);
    return SaveDisplay(framing, list, written);
}

TQKERNEL_API HRESULT displistRF64_Load(HANDLE file, tDISPLIST* list, ULONGLONG* remaining)
{
    Rf64Framing framing(file);
    return LoadDisplay(framing, list, remaining);
}

TQKERNEL_API HRESULT displistRF64_Save(HANDLE file, const tDISPLIST* list, ULONGLONG* written)
{
    Rf64Framing framing(file);
    return SaveDisplay(framing, list, written);
}
