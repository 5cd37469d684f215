// Tests of the exception dump (its lines, names, flags and limits), of what the last-resort
// filter records as details, and of the exceptions it leaves alone.
#include "support/kernelenvironment.h"
#include <gtest/gtest.h>

#include <stdio.h>

#include <string>

#include "tqerrorhandler.h"
#include "tqerrorstate.h"
#include "tqkernel.h"
#include "tqprintf.h"

namespace {

// Hex of a pointer's full width, as the dump writes addresses.
std::string Hex(uintptr_t value)
{
    char text[32];
    snprintf(text, sizeof text, "%0*llX", static_cast<int>(sizeof(void*) * 2),
             static_cast<unsigned long long>(value));
    return text;
}

std::string Hex(const void* pointer)
{
    return Hex(reinterpret_cast<uintptr_t>(pointer));
}

// Somewhere inside this program's image, for the module line.
void PlaceInThisImage()
{
}

// An exception record as a fault would leave it.
class Fault
{
public:
    Fault(DWORD code, const void* address)
    {
        m_record.ExceptionCode = code;
        m_record.ExceptionAddress = const_cast<void*>(address);
        m_pointers.ExceptionRecord = &m_record;
        m_pointers.ContextRecord = &m_context;
    }
    Fault& Access(ULONG_PTR kind, ULONG_PTR address)
    {
        m_record.NumberParameters = 2;
        m_record.ExceptionInformation[0] = kind;
        m_record.ExceptionInformation[1] = address;
        return *this;
    }
    EXCEPTION_POINTERS* Pointers() { return &m_pointers; }

    std::string Dump(DWORD flags, const wchar_t* threadName = nullptr, size_t size = 4096)
    {
        std::string buffer(size, '#');
        const int length =
            TqErrorHandler_DumpExceptionRecord(buffer.data(), size, threadName, &m_pointers, flags);
        const std::string text = buffer.c_str();
        EXPECT_EQ(text.size(), static_cast<size_t>(length));
        return text;
    }

private:
    EXCEPTION_RECORD m_record{};
    CONTEXT m_context{};
    EXCEPTION_POINTERS m_pointers{};
};

const void* const kNowhere = reinterpret_cast<const void*>(0x1230);

TEST(ExceptionDump, ExceptionLineNamesCodeAccessAndAddress)
{
    EXPECT_EQ("Exception 0xC0000005 (access violation) WRITE:0x" + Hex(0x10) + " IP:0x" +
                  Hex(kNowhere) + "\r\n",
              Fault(0xC0000005, kNowhere).Access(1, 0x10).Dump(TQ_DUMP_EXCEPTION));
    EXPECT_EQ("Exception 0xC0000005 (access violation) READ:0x" + Hex(0xFFFF) + " IP:0x" +
                  Hex(kNowhere) + "\r\n",
              Fault(0xC0000005, kNowhere).Access(0, 0xFFFF).Dump(TQ_DUMP_EXCEPTION));
    // Without the two parameters there is no access to tell of.
    EXPECT_EQ("Exception 0xC0000094 (integer divide by zero) IP:0x" + Hex(kNowhere) + "\r\n",
              Fault(0xC0000094, kNowhere).Dump(TQ_DUMP_EXCEPTION));
}

TEST(ExceptionDump, NamesComeFromTheTableAndOthersAreUnknown)
{
    const struct
    {
        DWORD code;
        const char* name;
    } cases[] = {
        {0x80000001, "guard page violation"}, {0x80000003, "breakpoint"},
        {0xC000001D, "illegal instruction"},  {0xC000008E, "float divide by zero"},
        {0xC0000093, "float underflow"},      {0xC00000FD, "stack overflow"},
        {0xC000013A, "control+c exit"},       {0xE06D7363, "Unknown Type"},
        {0xC00002B5, "Unknown Type"},
    };
    for (const auto& c : cases)
    {
        const std::string line = Fault(c.code, kNowhere).Dump(TQ_DUMP_EXCEPTION);
        EXPECT_NE(std::string::npos, line.find(std::string("(") + c.name + ")")) << line;
    }
}

TEST(ExceptionDump, ModuleLineGivesFileBaseAndOffset)
{
    const void* address = reinterpret_cast<const void*>(&PlaceInThisImage);
    const auto base = reinterpret_cast<uintptr_t>(GetModuleHandleW(nullptr));
    EXPECT_EQ("In Module 'tqerrorexception_test.exe' at Address 0x" + Hex(base) + " + 0x" +
                  Hex(reinterpret_cast<uintptr_t>(address) - base) + "\r\n",
              Fault(0xC0000005, address).Dump(TQ_DUMP_MODULE));
    // Code outside any module has no line to write.
    EXPECT_EQ("", Fault(0xC0000005, kNowhere).Dump(TQ_DUMP_MODULE));
}

TEST(ExceptionDump, ThreadLineGivesNameAndId)
{
    char expected[64];
    snprintf(expected, sizeof expected, "Thread: worker ID=0x%X Stack=\r\n",
             static_cast<unsigned>(GetCurrentThreadId()));
    EXPECT_EQ(expected, Fault(0xC0000005, kNowhere).Dump(TQ_DUMP_THREAD, L"worker"));
    snprintf(expected, sizeof expected, "Thread:  ID=0x%X Stack=\r\n",
             static_cast<unsigned>(GetCurrentThreadId()));
    EXPECT_EQ(expected, Fault(0xC0000005, kNowhere).Dump(TQ_DUMP_THREAD, nullptr));
}

TEST(ExceptionDump, NoFlagsMeansEveryLineInOrder)
{
    Fault fault(0xC0000005, reinterpret_cast<const void*>(&PlaceInThisImage));
    fault.Access(0, 0);
    const std::string all = fault.Dump(0, L"main");
    EXPECT_EQ(fault.Dump(TQ_DUMP_EXCEPTION) + fault.Dump(TQ_DUMP_MODULE) +
                  fault.Dump(TQ_DUMP_THREAD, L"main"),
              all);
    EXPECT_EQ(all, fault.Dump(TQ_DUMP_EXCEPTION | TQ_DUMP_MODULE | TQ_DUMP_THREAD, L"main"));
}

TEST(ExceptionDump, StopsAfterAWholeLineBeforeTheLast50Bytes)
{
    Fault fault(0xC0000005, kNowhere);
    const std::string first = fault.Dump(TQ_DUMP_EXCEPTION);
    const std::string both = fault.Dump(TQ_DUMP_EXCEPTION | TQ_DUMP_THREAD, L"t");
    // Room for the first line and 49 bytes more: the second line would fit, but the dump stops.
    EXPECT_EQ(first, fault.Dump(TQ_DUMP_EXCEPTION | TQ_DUMP_THREAD, L"t", first.size() + 49));
    EXPECT_EQ(both, fault.Dump(TQ_DUMP_EXCEPTION | TQ_DUMP_THREAD, L"t", both.size() + 50));
    // A line that does not fit whole is left out.
    EXPECT_EQ("", fault.Dump(TQ_DUMP_EXCEPTION, nullptr, first.size()));
    EXPECT_EQ("", fault.Dump(TQ_DUMP_EXCEPTION, nullptr, 49));
}

TEST(ExceptionDump, MissingRecordOrBufferGivesNothing)
{
    char buffer[100] = "old";
    EXPECT_EQ(0, TqErrorHandler_DumpExceptionRecord(buffer, sizeof buffer, nullptr, nullptr, 0));
    EXPECT_STREQ("", buffer);
    EXCEPTION_POINTERS empty{};
    EXPECT_EQ(0, TqErrorHandler_DumpExceptionRecord(buffer, sizeof buffer, nullptr, &empty, 0));
    Fault fault(0xC0000005, kNowhere);
    EXPECT_EQ(0, TqErrorHandler_DumpExceptionRecord(nullptr, 4096, nullptr, fault.Pointers(), 0));
}

TEST(ExceptionFilter, LeavesMisalignmentAndMissingRecordsToOthers)
{
    TqErrorHandler_DetailsInit();
    Fault misaligned(0x80000002, kNowhere);
    EXPECT_EQ(EXCEPTION_CONTINUE_SEARCH,
              TqErrorHandler_ExceptionFilter(misaligned.Pointers(), L"main"));
    EXPECT_EQ(EXCEPTION_CONTINUE_SEARCH, TqErrorHandler_ExceptionFilter(nullptr, L"main"));
    EXPECT_EQ(nullptr, TqErrorHandler_DetailsInfo(nullptr, nullptr, nullptr));
}

TEST(ExceptionFilter, RecordsTheStandingLineAndTheDumpAsDetails)
{
    ASSERT_EQ(S_OK, TqErrorHandler_DetailsAddString(E_FAIL, L"stale"));
    // The dump is finished text: a "%s" in a thread name must come through as it is.
    tq::errorhandler::RecordExceptionDetails("Exception 0xC0000005\r\nThread: 50%s\r\n");
    HRESULT code = S_OK;
    int lines = 0;
    EXPECT_EQ(L"An unhandled exception occurred in TestApp.\r\n"
              L"Exception 0xC0000005\r\nThread: 50%s\r\n\r\n",
              std::wstring(TqErrorHandler_DetailsInfo(&code, &lines, nullptr)));
    EXPECT_EQ(TQ_E_EXCEPTION, code);
    EXPECT_EQ(2, lines);
    TqErrorHandler_DetailsInit();
}

TEST(ExceptionFilter, DumpIsCutTo4095Characters)
{
    const std::string dump(5000, 'd');
    tq::errorhandler::RecordExceptionDetails(dump.c_str());
    const std::wstring details = TqErrorHandler_DetailsInfo(nullptr, nullptr, nullptr);
    const size_t start = details.find(L"\r\n") + 2;
    EXPECT_EQ(std::wstring(4095, L'd') + L"\r\n", details.substr(start));
    TqErrorHandler_DetailsInit();
}

} // namespace
