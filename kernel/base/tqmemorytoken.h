// Memory tokens: blocks of one process described as plain data, and made usable in another.
#pragma once

#include "tqkernelapi.h"
#include "uniquehandle.h"

#include <stddef.h>

// A block of memory in a named process. The layout is the same in 32- and 64-bit processes,
// since the token travels between them as plain bytes.
#pragma pack(push, 4)
struct _tqmemorytoken
{
    UINT64 handle;        // file mapping in the owner; all ones when there is none
    UINT64 address;       // the block, or the owner's view of the mapping, in the owner
    DWORD size;           // bytes of data
    DWORD capacity;       // bytes of the mapping
    LONG offset;          // of the data from address, or from the start of the mapping
    DWORD padding;        // zero
    DWORD kind;           // TQMEMORYTOKEN_PLAIN or TQMEMORYTOKEN_MAPPING
    DWORD ownerProcessId; // the process that owns the block
};
#pragma pack(pop)

static_assert(sizeof(_tqmemorytoken) == 40);
static_assert(offsetof(_tqmemorytoken, handle) == 0);
static_assert(offsetof(_tqmemorytoken, address) == 8);
static_assert(offsetof(_tqmemorytoken, size) == 16);
static_assert(offsetof(_tqmemorytoken, capacity) == 20);
static_assert(offsetof(_tqmemorytoken, offset) == 24);
static_assert(offsetof(_tqmemorytoken, padding) == 28);
static_assert(offsetof(_tqmemorytoken, kind) == 32);
static_assert(offsetof(_tqmemorytoken, ownerProcessId) == 36);

namespace tq {
namespace detail {
struct ViewTraits
{
    using Type = void*;
    static void* Invalid() noexcept { return nullptr; }
    static void Close(void* view) noexcept { ::UnmapViewOfFile(view); }
};
struct ProcessHeapTraits
{
    using Type = void*;
    static void* Invalid() noexcept { return nullptr; }
    static void Close(void* block) noexcept { ::HeapFree(::GetProcessHeap(), 0, block); }
};
} // namespace detail
// A mapped view of a file mapping.
using UniqueView = UniqueResource<detail::ViewTraits>;
// A block of the process heap.
using UniqueHeapBlock = UniqueResource<detail::ProcessHeapTraits>;
} // namespace tq

#define TQMEMORYTOKEN_PLAIN 0u   // plain memory in the owner, reached by copying
#define TQMEMORYTOKEN_MAPPING 1u // a file mapping, reached by mapping a view

// A token's block made usable here: the owner's own pointer, a view of the mapping, or a copy
// of the owner's memory that goes back to the owner on release when writing was asked for.
// access: FILE_MAP_READ and/or FILE_MAP_WRITE; other bits are dropped, none means both.
class TQKERNEL_CLASS CMappingOfTqMemoryToken
{
public:
    CMappingOfTqMemoryToken(const _tqmemorytoken& token, DWORD access);
    ~CMappingOfTqMemoryToken();
    CMappingOfTqMemoryToken(const CMappingOfTqMemoryToken&) = delete;
    CMappingOfTqMemoryToken& operator=(const CMappingOfTqMemoryToken&) = delete;

    // Releases the block, writing a copy back first; the pointer is null afterwards.
    void Close();
    void Dispose() { Close(); }

    void* Pointer() const { return m_pointer; }
    // E_FAIL (and null) when the token could not be mapped.
    HRESULT GetPointer(void** out) const;
    // The token's size, or -1 when the token could not be mapped.
    int DataSize() const { return m_failed ? -1 : static_cast<int>(m_token.size); }

private:
    void MapView(DWORD access);
    void CopyIn(DWORD access);

    _tqmemorytoken m_token;
    void* m_pointer = nullptr;
    tq::UniqueView m_view;
    tq::UniqueFile m_handle; // INVALID_HANDLE_VALUE when none
    tq::UniqueHeapBlock m_copy;
    BYTE m_isMapped = 0;
    BYTE m_isCopied = 0;
    BYTE m_failed = 1;
    BYTE m_writeBack = 0;
};

// The owner's side: a token for a block of this process that the other side can reach. Kind 1
// tokens, and plain blocks the other side can address, pass unchanged; any other block is moved
// into a fresh mapping for the life of this object, and copied back at its end when writing
// was asked for. The object must outlive the other side's use of the token.
class TQKERNEL_CLASS COutOfProcessMemoryToken
{
public:
    // passThrough non-zero hands out a plain block as it is, wherever its address lies.
    COutOfProcessMemoryToken(const _tqmemorytoken& token, DWORD access, int passThrough);
    ~COutOfProcessMemoryToken();
    COutOfProcessMemoryToken(const COutOfProcessMemoryToken&) = delete;
    COutOfProcessMemoryToken& operator=(const COutOfProcessMemoryToken&) = delete;

    // E_FAIL, writing nothing, when the token could not be prepared.
    HRESULT GetMemoryToken(_tqmemorytoken* out) const;

private:
    bool CopyBetween(const _tqmemorytoken& from, const _tqmemorytoken& to) const;
    void ReleaseProxy();

    _tqmemorytoken m_source;
    _tqmemorytoken m_proxy = {};
    tq::UniqueView m_view;
    tq::UniqueHandle m_mapping;
    BYTE m_needsTransfer = 1;
    BYTE m_failed = 1;
    DWORD m_access;
};

// A handle of another process duplicated into this one, and one of this process duplicated into
// another (the caller passes the value on). Same access; Win32 errors as 0x8007xxxx.
TQKERNEL_API HRESULT DuplicateHandleFromProcessId(HANDLE handle, DWORD processId, HANDLE* out);
TQKERNEL_API HRESULT DuplicateHandleToProcessId(HANDLE handle, DWORD processId, HANDLE* out);
