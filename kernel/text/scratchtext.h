// A text buffer on the stack for the everyday case that moves to the heap for longer texts.
#pragma once

#include <stddef.h>

#include <memory>
#include <new>

namespace tq::text {

// Number texts are short, but nothing bounds a format's width or a caller's digits: those take
// the heap instead of being cut.
template <size_t LocalChars>
class ScratchText
{
public:
    ScratchText() = default;
    explicit ScratchText(size_t chars) { Reserve(chars); }
    ScratchText(const ScratchText&) = delete;
    ScratchText& operator=(const ScratchText&) = delete;

    // Room for at least chars characters; what was held before is not kept. Null when the memory
    // cannot be had.
    wchar_t* Reserve(size_t chars)
    {
        if (chars <= Capacity()) return m_text;
        m_heap.reset(new (std::nothrow) wchar_t[chars]);
        m_text = m_heap.get();
        m_capacity = m_text ? chars : 0;
        return m_text;
    }

    wchar_t* Get() const { return m_text; }
    size_t Capacity() const { return m_capacity; }

private:
    wchar_t m_local[LocalChars];
    std::unique_ptr<wchar_t[]> m_heap;
    wchar_t* m_text = m_local;
    size_t m_capacity = LocalChars;
};

} // namespace tq::text
