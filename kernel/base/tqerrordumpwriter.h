// Inside the error handler's dumps: whole lines into a caller's byte buffer, and pointer text.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

namespace tq::errorhandler {

// A line goes in only while 50 bytes are left and when it fits with the terminator, so a dump
// ends after a whole line and never runs into the buffer's last bytes. The text is always
// terminated, when the buffer has room for anything at all.
class DumpWriter
{
public:
    DumpWriter(char* buffer, size_t size) noexcept;
    // False when the line was not written: the dump has stopped, and later lines are dropped too.
    bool Line(const char* format, ...) noexcept
        __attribute__((format(__MINGW_PRINTF_FORMAT, 2, 3)));
    int Length() const noexcept { return static_cast<int>(m_length); }

private:
    char* m_buffer;
    size_t m_size;
    size_t m_length = 0;
    bool m_stopped;
};

// A pointer as upper-case hex digits of the pointer's full width, the way the system's "%p"
// prints it, whatever the C library in use makes of "%p".
struct PointerText
{
    explicit PointerText(uintptr_t value) noexcept;
    explicit PointerText(const void* pointer) noexcept
        : PointerText(reinterpret_cast<uintptr_t>(pointer))
    {
    }
    char text[sizeof(void*) * 2 + 1];
};

} // namespace tq::errorhandler
