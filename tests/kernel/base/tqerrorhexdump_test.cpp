// Tests of the hex dumps: line layout, short last lines, memory that cannot be read (including a
// guard page, which must stay armed), and the buffer limits.
#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <string>

#include "tqerrorhandler.h"

namespace {

std::string Hex(uintptr_t value)
{
    char text[32];
    snprintf(text, sizeof text, "%0*llX", static_cast<int>(sizeof(void*) * 2),
             static_cast<unsigned long long>(value));
    return text;
}

std::string Address(const void* pointer, size_t offset = 0)
{
    return " " + Hex(reinterpret_cast<uintptr_t>(pointer) + offset) + ": ";
}

std::string DumpHex(const void* address, size_t bytes, size_t size = 4096)
{
    std::string buffer(size, '#');
    const int length = TqErrorHandler_DumpHex(buffer.data(), size, address, bytes);
    const std::string text = buffer.c_str();
    EXPECT_EQ(text.size(), static_cast<size_t>(length));
    return text;
}

std::string DumpDWords(const void* address, size_t count)
{
    char buffer[4096];
    const int length = TqErrorHandler_DumpHexDWords(buffer, sizeof buffer, address, count);
    EXPECT_EQ(strlen(buffer), static_cast<size_t>(length));
    return buffer;
}

// Two pages: the first readable and filled with 0x5A, the second with the protection given.
class PagePair
{
public:
    explicit PagePair(DWORD secondProtection)
    {
        SYSTEM_INFO info;
        GetSystemInfo(&info);
        m_pageSize = info.dwPageSize;
        m_base = static_cast<BYTE*>(
            VirtualAlloc(nullptr, m_pageSize * 2, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        if (!m_base) return;
        memset(m_base, 0x5A, m_pageSize * 2);
        DWORD old = 0;
        VirtualProtect(m_base + m_pageSize, m_pageSize, secondProtection, &old);
    }
    ~PagePair()
    {
        if (m_base) VirtualFree(m_base, 0, MEM_RELEASE);
    }
    PagePair(const PagePair&) = delete;
    PagePair& operator=(const PagePair&) = delete;
    const BYTE* Boundary() const { return m_base + m_pageSize; }
    DWORD SecondProtection() const
    {
        MEMORY_BASIC_INFORMATION info{};
        VirtualQuery(Boundary(), &info, sizeof info);
        return info.Protect;
    }
    explicit operator bool() const { return m_base != nullptr; }

private:
    BYTE* m_base = nullptr;
    size_t m_pageSize = 0;
};

TEST(HexDump, EightBytesALineWithTheirCharacters)
{
    const unsigned char bytes[] = {'A', 'B', 'C', ' ', '~', 0x1F, 0x7F, 0x80, 'z', 0};
    EXPECT_EQ(Address(bytes) + "41 42 43 20 7E 1F 7F 80 ABC ~...\r\n" + Address(bytes, 8) +
                  "7A 00 " + std::string(6 * 3, ' ') + "z.\r\n",
              DumpHex(bytes, sizeof bytes));
}

TEST(HexDump, UnreadableBytesShowAsDots)
{
    PagePair pages(PAGE_NOACCESS);
    ASSERT_TRUE(pages);
    EXPECT_EQ(Address(pages.Boundary() - 4) + "5A 5A 5A 5A .. .. .. .. ZZZZ....\r\n",
              DumpHex(pages.Boundary() - 4, 8));
    EXPECT_EQ(Address(nullptr) + ".. .. .. " + std::string(5 * 3, ' ') + "...\r\n",
              DumpHex(nullptr, 3));
}

TEST(HexDump, GuardPageIsNotTouched)
{
    PagePair pages(PAGE_READWRITE | PAGE_GUARD);
    ASSERT_TRUE(pages);
    EXPECT_EQ(Address(pages.Boundary()) + ".. .. .. .. .. .. .. .. ........\r\n",
              DumpHex(pages.Boundary(), 8));
    EXPECT_TRUE(pages.SecondProtection() & PAGE_GUARD);
}

TEST(HexDump, DWordsFourALine)
{
    const UINT32 values[] = {0x12345678, 0, 0xFFFFFFFF, 0xA5, 0xDEADBEEF};
    EXPECT_EQ(Address(values) + "12345678 00000000 FFFFFFFF 000000A5 \r\n" + Address(values, 16) +
                  "DEADBEEF \r\n",
              DumpDWords(values, 5));
}

TEST(HexDump, DWordsReachingUnreadableMemoryShowAsDots)
{
    PagePair pages(PAGE_NOACCESS);
    ASSERT_TRUE(pages);
    // The second value straddles the boundary: one unreadable byte spoils it.
    EXPECT_EQ(Address(pages.Boundary() - 6) + "5A5A5A5A ........ ........ \r\n",
              DumpDWords(pages.Boundary() - 6, 3));
}

TEST(HexDump, StopsAfterWholeLinesBeforeTheLast50Bytes)
{
    unsigned char bytes[64] = {};
    const std::string all = DumpHex(bytes, sizeof bytes);
    const size_t line = all.find("\r\n") + 2;
    // Room for two lines and 49 bytes: a third line is never begun.
    EXPECT_EQ(all.substr(0, 2 * line), DumpHex(bytes, sizeof bytes, 2 * line + 49));
    // With 50 bytes left a third line follows when it fits whole with its terminator.
    const size_t lines = line + 1 <= 50 ? 3 : 2;
    EXPECT_EQ(all.substr(0, lines * line), DumpHex(bytes, sizeof bytes, 2 * line + 50));
    EXPECT_EQ("", DumpHex(bytes, sizeof bytes, 49));
    EXPECT_EQ(0, TqErrorHandler_DumpHex(nullptr, 4096, bytes, sizeof bytes));
    EXPECT_EQ(0, TqErrorHandler_DumpHexDWords(nullptr, 0, bytes, 4));
}

TEST(HexDump, NothingToDumpGivesAnEmptyText)
{
    const unsigned char byte = 1;
    EXPECT_EQ("", DumpHex(&byte, 0));
    EXPECT_EQ("", DumpDWords(&byte, 0));
}

} // namespace
