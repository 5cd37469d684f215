// Exceptions as text: the record dump with the exception-name table, and the last-resort filter
// that shows it.
#include "tqerrorhandler.h"

#include <string.h>

#include "errorreport.h"
#include "tqerrordumpwriter.h"
#include "tqerrorstate.h"
#include "tqstrings.h"

namespace tq::errorhandler {
namespace {

struct ExceptionName
{
    DWORD code;
    const char* name;
};

const ExceptionName kExceptionNames[] = {
    {0x80000001, "guard page violation"},
    {0x80000002, "datatype misalignment"},
    {0x80000003, "breakpoint"},
    {0x80000004, "single step"},
    {0xC0000005, "access violation"},
    {0xC0000006, "in page error"},
    {0xC0000008, "invalid handle"},
    {0xC0000017, "no memory"},
    {0xC000001D, "illegal instruction"},
    {0xC0000025, "noncontinuable exception"},
    {0xC0000026, "invalid disposition"},
    {0xC000008C, "array bounds exceeded"},
    {0xC000008D, "float denormal operand"},
    {0xC000008E, "float divide by zero"},
    {0xC000008F, "float inexact result"},
    {0xC0000090, "float invalid operation"},
    {0xC0000091, "float overflow"},
    {0xC0000092, "float stack check"},
    {0xC0000093, "float underflow"},
    {0xC0000094, "integer divide by zero"},
    {0xC0000095, "integer overflow"},
    {0xC0000096, "privileged instruction"},
    {0xC00000FD, "stack overflow"},
    {0xC000013A, "control+c exit"},
};

const char* NameOf(DWORD code)
{
    for (const ExceptionName& row : kExceptionNames)
        if (row.code == code) return row.name;
    return "Unknown Type";
}

constexpr size_t kDumpBytes = 4096;
constexpr size_t kDumpChars = kDumpBytes - 1;

// The file part of the module whose image holds address; false for code outside any module.
bool ModuleOf(const void* address, uintptr_t* base, char (&name)[MAX_PATH])
{
    MEMORY_BASIC_INFORMATION info;
    if (!VirtualQuery(address, &info, sizeof info) || info.State != MEM_COMMIT) return false;
    char path[MAX_PATH];
    const DWORD length =
        GetModuleFileNameA(static_cast<HMODULE>(info.AllocationBase), path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return false;
    const char* file = strrchr(path, '\\');
    strcpy_s(name, MAX_PATH, file ? file + 1 : path);
    *base = reinterpret_cast<uintptr_t>(info.AllocationBase);
    return true;
}

void WriteExceptionLine(DumpWriter& out, const EXCEPTION_RECORD& record)
{
    char access[8 + sizeof(void*) * 2 + 8] = "";
    if (record.NumberParameters == 2)
    {
        const char* kind = record.ExceptionInformation[0] ? "WRITE" : "READ";
        snprintf(access, sizeof access, " %s:0x%s", kind,
                 PointerText(record.ExceptionInformation[1]).text);
    }
    out.Line("Exception 0x%X (%s)%s IP:0x%s\r\n", static_cast<unsigned>(record.ExceptionCode),
             NameOf(record.ExceptionCode), access, PointerText(record.ExceptionAddress).text);
}

void WriteModuleLine(DumpWriter& out, const void* address)
{
    uintptr_t base = 0;
    char name[MAX_PATH];
    if (!ModuleOf(address, &base, name)) return;
    out.Line("In Module '%s' at Address 0x%s + 0x%s\r\n", name, PointerText(base).text,
             PointerText(reinterpret_cast<uintptr_t>(address) - base).text);
}

void WriteThreadLine(DumpWriter& out, const wchar_t* threadName)
{
    char name[MAX_PATH] = "";
    if (threadName &&
        !WideCharToMultiByte(CP_ACP, 0, threadName, -1, name, MAX_PATH, nullptr, nullptr))
        name[0] = '\0';
    out.Line("Thread: %s ID=0x%X Stack=%s\r\n", name, static_cast<unsigned>(GetCurrentThreadId()),
             "");
}

// Reporting an exception must not wait for itself: a fault on the thread that is reporting one
// goes on searching, while other threads wait their turn. The filter's buffers are static, since
// after a stack overflow little stack is left.
SRWLOCK g_filterLock = SRWLOCK_INIT;
volatile DWORD g_filterThread;
char g_dump[kDumpBytes];
wchar_t g_wideDump[kDumpChars + 1];

class FilterTurn
{
public:
    FilterTurn() noexcept : m_held(g_filterThread != GetCurrentThreadId())
    {
        if (!m_held) return;
        AcquireSRWLockExclusive(&g_filterLock);
        g_filterThread = GetCurrentThreadId();
    }
    ~FilterTurn() { Release(); }
    FilterTurn(const FilterTurn&) = delete;
    FilterTurn& operator=(const FilterTurn&) = delete;
    bool Held() const noexcept { return m_held; }
    void Release() noexcept
    {
        if (!m_held) return;
        g_filterThread = 0;
        ReleaseSRWLockExclusive(&g_filterLock);
        m_held = false;
    }

private:
    bool m_held;
};

} // namespace

// Runs in the filter's turn, which its static buffer needs.
void RecordExceptionDetails(const char* dump)
{
    const int bytes = static_cast<int>(strnlen(dump, kDumpChars));
    const int length = MultiByteToWideChar(CP_ACP, 0, dump, bytes, g_wideDump, kDumpChars);
    g_wideDump[length] = L'\0';
    TqErrorHandler_DetailsInit();
    TqErrorHandler_DetailsAddString(TQ_E_EXCEPTION, TqGetString(TQS(ErrUnhandledException)));
    // The dump is finished text: it must not meet the formatter.
    AppendDetailLine(TQ_E_EXCEPTION, g_wideDump);
}

} // namespace tq::errorhandler

using namespace tq::errorhandler;

TQKERNEL_API int TqErrorHandler_DumpExceptionRecord(char* buffer, size_t size,
                                                    const wchar_t* threadName,
                                                    EXCEPTION_POINTERS* pointers, DWORD flags)
{
    DumpWriter out(buffer, size);
    if (!pointers || !pointers->ExceptionRecord) return 0;
    ErrorReport_UnmanagedException(pointers);
    if (flags == 0) flags = TQ_DUMP_EXCEPTION | TQ_DUMP_MODULE | TQ_DUMP_THREAD;
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (flags & TQ_DUMP_EXCEPTION) WriteExceptionLine(out, record);
    if (flags & TQ_DUMP_MODULE) WriteModuleLine(out, record.ExceptionAddress);
    if (flags & TQ_DUMP_THREAD) WriteThreadLine(out, threadName);
    return out.Length();
}

TQKERNEL_API LONG TqErrorHandler_ExceptionFilter(EXCEPTION_POINTERS* pointers,
                                                 const wchar_t* threadName)
{
    if (!pointers || !pointers->ExceptionRecord) return EXCEPTION_CONTINUE_SEARCH;
    // Misalignment is left to handlers further out, which may fix the access up and go on.
    if (pointers->ExceptionRecord->ExceptionCode == STATUS_DATATYPE_MISALIGNMENT)
        return EXCEPTION_CONTINUE_SEARCH;
    FilterTurn turn;
    if (!turn.Held()) return EXCEPTION_CONTINUE_SEARCH;
    TqErrorHandler_DumpExceptionRecord(g_dump, sizeof g_dump, threadName, pointers, 0);
    // A debugger gets to see the exception where it happened.
    if (IsDebuggerPresent()) return EXCEPTION_CONTINUE_SEARCH;
    RecordExceptionDetails(g_dump);
    turn.Release();
    TqErrorHandler_MsgBox(nullptr, MB_ICONEXCLAMATION, 0, TQ_E_EXCEPTION, nullptr);
    return EXCEPTION_EXECUTE_HANDLER;
}
