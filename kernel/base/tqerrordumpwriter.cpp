// Line writer and pointer text of the error handler's dumps.
#include "tqerrordumpwriter.h"

#include <stdarg.h>

namespace tq::errorhandler {

namespace {
// Below this many bytes left a dump ends.
constexpr size_t kReserve = 50;
} // namespace

DumpWriter::DumpWriter(char* buffer, size_t size) noexcept
    : m_buffer(buffer), m_size(buffer ? size : 0), m_stopped(m_size < kReserve)
{
    if (m_size > 0) m_buffer[0] = '\0';
}

bool DumpWriter::Line(const char* format, ...) noexcept
{
    if (m_stopped) return false;
    const size_t room = m_size - m_length;
    va_list args;
    va_start(args, format);
    const int written = vsnprintf(m_buffer + m_length, room, format, args);
    va_end(args);
    if (written < 0 || static_cast<size_t>(written) >= room)
    {
        m_buffer[m_length] = '\0'; // drop the part of the line that did fit
        m_stopped = true;
        return false;
    }
    m_length += static_cast<size_t>(written);
    m_stopped = m_size - m_length < kReserve;
    return true;
}

PointerText::PointerText(uintptr_t value) noexcept
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    constexpr int kDigitCount = sizeof(void*) * 2;
    for (int i = kDigitCount - 1; i >= 0; --i, value >>= 4)
        text[i] = kDigits[value & 15];
    text[kDigitCount] = '\0';
}

} // namespace tq::errorhandler
