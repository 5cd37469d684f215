// Heap text for the error handler, and caller texts formatted only when they carry conversions.
#include "tqerrorstate.h"

#include <new>

#include "tqprintf.h"

namespace tq::errorhandler {

OwnedText AllocateText(size_t chars)
{
    return OwnedText(new (std::nothrow) wchar_t[chars]);
}

FormattedText::FormattedText(const wchar_t* format, va_list args, size_t capacity) : m_text(format)
{
    if (!format || !wcspbrk(format, L"$%")) return;
    m_buffer = AllocateText(capacity);
    if (!m_buffer) return;
    // A text cut at the capacity is still the best there is to show.
    TqNVPrintF(m_buffer.get(), capacity, nullptr, format, args);
    m_text = m_buffer.get();
}

} // namespace tq::errorhandler
