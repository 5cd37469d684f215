// A growing wide-text buffer for the parser's runs that come in pieces.
#pragma once

#include <windows.h>

namespace tq::xml {

class TextBuilder
{
public:
    TextBuilder() noexcept = default;
    TextBuilder(const TextBuilder&) = delete;
    TextBuilder& operator=(const TextBuilder&) = delete;
    ~TextBuilder();

    // False when there is no memory; the text is kept as it was.
    bool Append(const WCHAR* text, SIZE_T length) noexcept;
    bool EndsWith(const WCHAR* suffix) const noexcept;
    // Drops count characters from the end (all of them when there are fewer).
    void DropLast(SIZE_T count) noexcept;
    // The text as a GlobalAlloc block the caller frees; the builder is empty afterwards. Null
    // for no memory.
    WCHAR* Detach() noexcept;

private:
    WCHAR* m_text = nullptr;
    SIZE_T m_length = 0;
    SIZE_T m_capacity = 0; // characters, without the terminator
};

} // namespace tq::xml
