// Memory tokens: mapping a token on the receiving side and preparing one on the owning side.
#include "tqmemorytoken.h"

#include <string.h>

namespace {

// Reading and writing another process's memory, and the operations that need.
constexpr DWORD kProcessCopyAccess = PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE;

DWORD NormalizedAccess(DWORD access)
{
    access &= FILE_MAP_READ | FILE_MAP_WRITE;
    return access ? access : FILE_MAP_READ | FILE_MAP_WRITE;
}

// The token carries addresses and handles as 64 bits in every process; a 32-bit handle is
// sign-extended so that INVALID_HANDLE_VALUE stays all ones.
UINT64 HandleToToken(HANDLE handle)
{
    return static_cast<UINT64>(static_cast<INT64>(reinterpret_cast<LONG_PTR>(handle)));
}

HANDLE TokenToHandle(UINT64 handle)
{
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(static_cast<INT64>(handle)));
}

UINT64 DataAddress(const _tqmemorytoken& token)
{
    return token.address + static_cast<UINT64>(static_cast<INT64>(token.offset));
}

} // namespace

CMappingOfTqMemoryToken::CMappingOfTqMemoryToken(const _tqmemorytoken& token, DWORD access)
    : m_token(token)
{
    access = NormalizedAccess(access);
    if (m_token.kind != TQMEMORYTOKEN_PLAIN && m_token.kind != TQMEMORYTOKEN_MAPPING) return;
    if (m_token.ownerProcessId == GetCurrentProcessId())
    {
        m_pointer = reinterpret_cast<void*>(static_cast<ULONG_PTR>(DataAddress(m_token)));
        m_failed = 0;
        return;
    }
    if (m_token.kind == TQMEMORYTOKEN_MAPPING)
        MapView(access);
    else
        CopyIn(access);
}

CMappingOfTqMemoryToken::~CMappingOfTqMemoryToken()
{
    Close();
}

void CMappingOfTqMemoryToken::MapView(DWORD access)
{
    // The view starts at the mapping's start, so the data must lie after it.
    if (m_token.offset < 0) return;
    const UINT64 length = static_cast<UINT64>(m_token.size) + static_cast<UINT64>(m_token.offset);
    if (length > static_cast<SIZE_T>(-1)) return;
    {
        tq::UniqueHandle owner(OpenProcess(PROCESS_DUP_HANDLE, FALSE, m_token.ownerProcessId));
        if (!owner) return;
        HANDLE local = nullptr;
        if (!DuplicateHandle(owner.Get(), TokenToHandle(m_token.handle), GetCurrentProcess(),
                             &local, 0, FALSE, DUPLICATE_SAME_ACCESS))
            return;
        m_handle.Reset(local);
    }
    m_view.Reset(MapViewOfFile(m_handle.Get(), access, 0, 0, static_cast<SIZE_T>(length)));
    if (!m_view)
    {
        m_handle.Reset();
        return;
    }
    m_pointer = static_cast<BYTE*>(m_view.Get()) + m_token.offset;
    m_isMapped = 1;
    m_failed = 0;
}

void CMappingOfTqMemoryToken::CopyIn(DWORD access)
{
    tq::UniqueHeapBlock block(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, m_token.size));
    if (!block) return;
    if (access & FILE_MAP_READ)
    {
        tq::UniqueHandle owner(OpenProcess(kProcessCopyAccess, FALSE, m_token.ownerProcessId));
        if (!owner) return;
        SIZE_T read = 0;
        const auto* from =
            reinterpret_cast<const void*>(static_cast<ULONG_PTR>(DataAddress(m_token)));
        if (!ReadProcessMemory(owner.Get(), from, block.Get(), m_token.size, &read) ||
            read != m_token.size)
            return;
    }
    m_pointer = block.Get();
    m_copy = std::move(block);
    m_isCopied = 1;
    m_writeBack = (access & FILE_MAP_WRITE) ? 1 : 0;
    m_failed = 0;
}

void CMappingOfTqMemoryToken::Close()
{
    if (m_isCopied && m_writeBack && m_copy)
    {
        // Best effort: the owner may have ended, and then nobody is left to see the data.
        tq::UniqueHandle owner(OpenProcess(kProcessCopyAccess, FALSE, m_token.ownerProcessId));
        if (owner)
        {
            SIZE_T written = 0;
            auto* to = reinterpret_cast<void*>(static_cast<ULONG_PTR>(DataAddress(m_token)));
            WriteProcessMemory(owner.Get(), to, m_copy.Get(), m_token.size, &written);
        }
    }
    m_copy.Reset();
    m_view.Reset();
    m_handle.Reset();
    m_isMapped = 0;
    m_isCopied = 0;
    m_writeBack = 0;
    m_pointer = nullptr;
}

HRESULT CMappingOfTqMemoryToken::GetPointer(void** out) const
{
    if (!out) return E_POINTER;
    *out = m_pointer;
    return m_pointer ? S_OK : E_FAIL;
}

COutOfProcessMemoryToken::COutOfProcessMemoryToken(const _tqmemorytoken& token, DWORD access,
                                                   int passThrough)
    : m_source(token), m_access(NormalizedAccess(access))
{
    const bool reachable = m_source.kind == TQMEMORYTOKEN_MAPPING ||
                           (m_source.kind == TQMEMORYTOKEN_PLAIN &&
                            (passThrough || DataAddress(m_source) <= 0xFFFFFFFFull));
    if (reachable)
    {
        m_needsTransfer = 0;
        m_proxy = m_source;
        m_failed = 0;
        return;
    }
    // A 32-bit peer cannot address this block, so it gets a mapping it can view anywhere.
    m_mapping.Reset(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                       m_source.size, nullptr));
    if (m_mapping) m_view.Reset(MapViewOfFile(m_mapping.Get(), FILE_MAP_ALL_ACCESS, 0, 0, 0));
    if (m_view)
    {
        m_proxy.handle = HandleToToken(m_mapping.Get());
        m_proxy.address = reinterpret_cast<ULONG_PTR>(m_view.Get());
        m_proxy.size = m_source.size;
        m_proxy.capacity = m_source.size;
        m_proxy.kind = TQMEMORYTOKEN_MAPPING;
        m_proxy.ownerProcessId = GetCurrentProcessId();
        m_failed = (m_access & FILE_MAP_READ) ? !CopyBetween(m_source, m_proxy) : 0;
    }
    if (m_failed) ReleaseProxy();
}

COutOfProcessMemoryToken::~COutOfProcessMemoryToken()
{
    if (!m_needsTransfer || m_failed) return;
    if ((m_access & FILE_MAP_WRITE) && !CopyBetween(m_proxy, m_source)) m_failed = 1;
    ReleaseProxy();
}

bool COutOfProcessMemoryToken::CopyBetween(const _tqmemorytoken& from,
                                           const _tqmemorytoken& to) const
{
    CMappingOfTqMemoryToken source(from, FILE_MAP_READ);
    CMappingOfTqMemoryToken target(to, FILE_MAP_WRITE);
    if (!source.Pointer() || !target.Pointer() || source.DataSize() != target.DataSize())
        return false;
    memcpy(target.Pointer(), source.Pointer(), from.size);
    return true;
}

void COutOfProcessMemoryToken::ReleaseProxy()
{
    m_view.Reset();
    m_mapping.Reset();
    m_proxy = {};
}

HRESULT COutOfProcessMemoryToken::GetMemoryToken(_tqmemorytoken* out) const
{
    if (!out) return E_POINTER;
    if (m_failed) return E_FAIL;
    *out = m_proxy;
    return S_OK;
}
