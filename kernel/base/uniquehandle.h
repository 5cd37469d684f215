// Owning wrappers for Win32 handles, so no failure path can leak one.
#pragma once

#include <windows.h>

#include <utility>

namespace tq {

// Traits give the handle type, its "none" value and how to close it.
template <class Traits>
class UniqueResource
{
    using H = typename Traits::Type;

public:
    UniqueResource() noexcept = default;
    explicit UniqueResource(H h) noexcept : m_h(h) {}
    UniqueResource(UniqueResource&& other) noexcept
        : m_h(std::exchange(other.m_h, Traits::Invalid()))
    {
    }
    UniqueResource& operator=(UniqueResource&& other) noexcept
    {
        if (this != &other) Reset(std::exchange(other.m_h, Traits::Invalid()));
        return *this;
    }
    UniqueResource(const UniqueResource&) = delete;
    UniqueResource& operator=(const UniqueResource&) = delete;
    ~UniqueResource() { Reset(); }

    void Reset(H h = Traits::Invalid()) noexcept
    {
        if (m_h != Traits::Invalid()) Traits::Close(m_h);
        m_h = h;
    }
    H Release() noexcept { return std::exchange(m_h, Traits::Invalid()); }
    H Get() const noexcept { return m_h; }
    explicit operator bool() const noexcept { return m_h != Traits::Invalid(); }

private:
    H m_h = Traits::Invalid();
};

namespace detail {
struct KernelHandleTraits
{
    using Type = HANDLE;
    static HANDLE Invalid() noexcept { return nullptr; }
    static void Close(HANDLE h) noexcept { ::CloseHandle(h); }
};
struct FileHandleTraits : KernelHandleTraits
{
    static HANDLE Invalid() noexcept { return INVALID_HANDLE_VALUE; }
};
struct ModuleTraits
{
    using Type = HMODULE;
    static HMODULE Invalid() noexcept { return nullptr; }
    static void Close(HMODULE h) noexcept { ::FreeLibrary(h); }
};
struct RegKeyTraits
{
    using Type = HKEY;
    static HKEY Invalid() noexcept { return nullptr; }
    static void Close(HKEY h) noexcept { ::RegCloseKey(h); }
};
} // namespace detail

// A handle for which null means none (events, processes, threads).
using UniqueHandle = UniqueResource<detail::KernelHandleTraits>;
// A file handle, for which INVALID_HANDLE_VALUE means none.
using UniqueFile = UniqueResource<detail::FileHandleTraits>;
using UniqueModule = UniqueResource<detail::ModuleTraits>;
using UniqueRegKey = UniqueResource<detail::RegKeyTraits>;

} // namespace tq
