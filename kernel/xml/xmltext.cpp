// A growing wide-text buffer.
#include "xmltext.h"

#include "xmlencoding.h"

#include <cwchar>
#include <utility>

namespace tq::xml {

TextBuilder::~TextBuilder()
{
    if (m_text) GlobalFree(m_text);
}

bool TextBuilder::Append(const WCHAR* text, SIZE_T length) noexcept
{
    if (length == 0) return true;
    if (length > m_capacity - m_length)
    {
        if (length > (static_cast<SIZE_T>(-1) / 4) - m_length) return false;
        SIZE_T capacity = m_capacity ? m_capacity * 2 : 64;
        if (capacity < m_length + length) capacity = m_length + length;
        WCHAR* grown = AllocText(capacity);
        if (!grown) return false;
        if (m_text)
        {
            wmemcpy(grown, m_text, m_length);
            GlobalFree(m_text);
        }
        m_text = grown;
        m_capacity = capacity;
    }
    wmemcpy(m_text + m_length, text, length);
    m_length += length;
    m_text[m_length] = L'\0';
    return true;
}

bool TextBuilder::EndsWith(const WCHAR* suffix) const noexcept
{
    const SIZE_T count = wcslen(suffix);
    return count <= m_length && wmemcmp(m_text + m_length - count, suffix, count) == 0;
}

void TextBuilder::DropLast(SIZE_T count) noexcept
{
    m_length -= count < m_length ? count : m_length;
    if (m_text) m_text[m_length] = L'\0';
}

WCHAR* TextBuilder::Detach() noexcept
{
    WCHAR* text = m_text ? std::exchange(m_text, nullptr) : AllocText(0);
    m_length = m_capacity = 0;
    return text;
}

} // namespace tq::xml
