// Hex dumps of memory that may not be readable: bytes with their characters, and 32-bit values.
#include "tqerrorhandler.h"

#include <stdint.h>
#include <string.h>

#include "tqerrordumpwriter.h"

namespace {

using namespace tq::errorhandler;

// Tells from the protection of its region whether memory can be read, so that a dump never
// faults nor touches a guard page. Dumps walk memory upwards, so the last region is kept.
class ReadableMemory
{
public:
    bool CanRead(uintptr_t address) noexcept
    {
        if (address < m_begin || address - m_begin >= m_size) Query(address);
        return m_readable;
    }
    bool CanRead(uintptr_t address, size_t bytes) noexcept
    {
        return CanRead(address) && CanRead(address + bytes - 1);
    }

private:
    void Query(uintptr_t address) noexcept
    {
        static constexpr DWORD kReadable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY |
                                           PAGE_EXECUTE_READ | PAGE_EXECUTE_READWRITE |
                                           PAGE_EXECUTE_WRITECOPY;
        MEMORY_BASIC_INFORMATION info;
        if (!VirtualQuery(reinterpret_cast<const void*>(address), &info, sizeof info))
        {
            m_begin = address;
            m_size = 1;
            m_readable = false;
            return;
        }
        m_begin = reinterpret_cast<uintptr_t>(info.BaseAddress);
        m_size = info.RegionSize;
        m_readable = info.State == MEM_COMMIT && (info.Protect & kReadable) &&
                     !(info.Protect & (PAGE_GUARD | PAGE_NOACCESS));
    }

    uintptr_t m_begin = 0;
    size_t m_size = 0;
    bool m_readable = false;
};

constexpr size_t kBytesPerLine = 8;
constexpr size_t kDWordsPerLine = 4;

} // namespace

TQKERNEL_API int TqErrorHandler_DumpHex(char* buffer, size_t size, const void* address,
                                        size_t bytes)
{
    DumpWriter out(buffer, size);
    ReadableMemory memory;
    const uintptr_t start = reinterpret_cast<uintptr_t>(address);
    for (size_t offset = 0; offset < bytes; offset += kBytesPerLine)
    {
        const uintptr_t line = start + offset;
        const size_t count = bytes - offset < kBytesPerLine ? bytes - offset : kBytesPerLine;
        char hex[kBytesPerLine * 3 + 1];
        char chars[kBytesPerLine + 1];
        char* at = hex;
        for (size_t i = 0; i < kBytesPerLine; ++i, at += 3)
        {
            if (i >= count)
            {
                memcpy(at, "   ", 4); // a short last line keeps the characters in their column
                continue;
            }
            if (!memory.CanRead(line + i))
            {
                memcpy(at, ".. ", 4);
                chars[i] = '.';
                continue;
            }
            const unsigned char byte = *reinterpret_cast<const volatile unsigned char*>(line + i);
            snprintf(at, 4, "%02X ", byte);
            chars[i] = byte >= 32 && byte <= 126 ? static_cast<char>(byte) : '.';
        }
        chars[count] = '\0';
        if (!out.Line(" %s: %s%s\r\n", PointerText(line).text, hex, chars)) break;
    }
    return out.Length();
}

TQKERNEL_API int TqErrorHandler_DumpHexDWords(char* buffer, size_t size, const void* address,
                                              size_t count)
{
    DumpWriter out(buffer, size);
    ReadableMemory memory;
    const uintptr_t start = reinterpret_cast<uintptr_t>(address);
    for (size_t index = 0; index < count; index += kDWordsPerLine)
    {
        const uintptr_t line = start + index * sizeof(UINT32);
        const size_t values = count - index < kDWordsPerLine ? count - index : kDWordsPerLine;
        char text[kDWordsPerLine * 9 + 1] = "";
        char* at = text;
        for (size_t i = 0; i < values; ++i, at += 9)
        {
            const uintptr_t value = line + i * sizeof(UINT32);
            if (!memory.CanRead(value, sizeof(UINT32)))
            {
                memcpy(at, "........ ", 10);
                continue;
            }
            UINT32 word;
            memcpy(&word, reinterpret_cast<const void*>(value), sizeof word);
            snprintf(at, 10, "%08X ", static_cast<unsigned>(word));
        }
        if (!out.Line(" %s: %s\r\n", PointerText(line).text, text)) break;
    }
    return out.Length();
}
