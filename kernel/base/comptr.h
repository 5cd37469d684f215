// Owning COM interface pointer: the one place where Release is called for a held reference.
#pragma once

#include <unknwn.h>

#include <utility>

namespace tq {

template <class T>
class ComPtr
{
public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}
    // Takes a new reference on p.
    explicit ComPtr(T* p) noexcept : m_ptr(p)
    {
        if (m_ptr) m_ptr->AddRef();
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.m_ptr) {}
    ComPtr(ComPtr&& other) noexcept : m_ptr(std::exchange(other.m_ptr, nullptr)) {}
    ~ComPtr() { Reset(); }

    ComPtr& operator=(ComPtr other) noexcept
    {
        std::swap(m_ptr, other.m_ptr);
        return *this;
    }

    // Adopts a reference the caller already owns.
    static ComPtr Attach(T* p) noexcept
    {
        ComPtr result;
        result.m_ptr = p;
        return result;
    }
    T* Detach() noexcept { return std::exchange(m_ptr, nullptr); }

    void Reset() noexcept
    {
        if (T* p = std::exchange(m_ptr, nullptr)) p->Release();
    }

    // For out parameters: releases what is held and hands out the slot.
    T** Put() noexcept
    {
        Reset();
        return &m_ptr;
    }
    void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

    T* Get() const noexcept { return m_ptr; }
    T* operator->() const noexcept { return m_ptr; }
    explicit operator bool() const noexcept { return m_ptr != nullptr; }

    template <class U>
    HRESULT As(ComPtr<U>& out) const noexcept
    {
        return m_ptr ? m_ptr->QueryInterface(__uuidof(U), out.PutVoid()) : E_POINTER;
    }

private:
    T* m_ptr = nullptr;
};

} // namespace tq
