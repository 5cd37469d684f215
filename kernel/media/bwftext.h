// A growing wide text for building documents, without exceptions: a failed allocation is
// remembered and reported once at the end.
#pragma once

#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace tq::bwf {

class TextBuilder
{
public:
    TextBuilder() = default;
    TextBuilder(const TextBuilder&) = delete;
    TextBuilder& operator=(const TextBuilder&) = delete;
    ~TextBuilder() { std::free(m_text); }

    void Append(const WCHAR* text, size_t length) noexcept
    {
        if (m_failed || length == 0) return;
        if (m_length + length + 1 > m_capacity)
        {
            size_t capacity = m_capacity ? m_capacity * 2 : 256;
            while (capacity < m_length + length + 1)
                capacity *= 2;
            auto* grown = static_cast<WCHAR*>(std::realloc(m_text, capacity * sizeof(WCHAR)));
            if (!grown)
            {
                m_failed = true;
                return;
            }
            m_text = grown;
            m_capacity = capacity;
        }
        std::memcpy(m_text + m_length, text, length * sizeof(WCHAR));
        m_length += length;
        m_text[m_length] = 0;
    }
    void Append(const WCHAR* text) noexcept { Append(text, text ? std::wcslen(text) : 0); }
    void Repeat(WCHAR c, int count) noexcept
    {
        for (int i = 0; i < count; ++i)
            Append(&c, 1);
    }

    // Marks the text as incomplete, as a failed allocation does.
    void Fail() noexcept { m_failed = true; }
    bool Failed() const noexcept { return m_failed; }
    bool Empty() const noexcept { return m_length == 0; }
    const WCHAR* Text() const noexcept { return m_text ? m_text : L""; }
    size_t Length() const noexcept { return m_length; }

private:
    WCHAR* m_text = nullptr;
    size_t m_length = 0;
    size_t m_capacity = 0;
    bool m_failed = false;
};

} // namespace tq::bwf
