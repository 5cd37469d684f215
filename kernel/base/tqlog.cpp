// CLog: lines with level tag, time stamp and source, flushed one by one, rotated at a size.
#include "clog.h"

#include "tqprintf.h"

#include <io.h>
#include <share.h>
#include <stdarg.h>
#include <wchar.h>

namespace tq::log {
namespace {

constexpr int kMessageChars = 1024;
// Tag, time stamp and source come to well under 100 characters.
constexpr int kLineChars = kMessageChars + 128;
constexpr wchar_t kPreviousSuffix[] = L".previous";

class Locked
{
public:
    explicit Locked(CRITICAL_SECTION* lock) : m_lock(lock) { EnterCriticalSection(m_lock); }
    ~Locked() { LeaveCriticalSection(m_lock); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

private:
    CRITICAL_SECTION* m_lock;
};

const wchar_t* Tag(LOGFLAGS level)
{
    switch (level)
    {
    case TQLOG_ERROR:
        return L"ERR ";
    case TQLOG_WARNING:
        return L"WARN";
    case TQLOG_INFO:
        return L"INFO";
    case TQLOG_DEBUG:
        return L"DBG ";
    case TQLOG_MESSAGE:
        return L"";
    default:
        return L"????";
    }
}

// A line built piece by piece; a piece that does not fit fills the rest, and the line stays
// terminated.
class LineText
{
public:
    void Add(const wchar_t* format, ...)
    {
        va_list args;
        va_start(args, format);
        const int room = kLineChars - 1 - m_used;
        const int written = room > 0 ? _vsnwprintf(m_text + m_used, room, format, args) : 0;
        va_end(args);
        m_used = written < 0 ? kLineChars - 1 : m_used + written;
        m_text[m_used] = 0;
    }
    const wchar_t* Text() const { return m_text; }

private:
    wchar_t m_text[kLineChars];
    int m_used = 0;
};

// Compilers give source paths with either separator.
const char* SourceName(const char* path)
{
    const char* name = path;
    for (const char* p = path; *p; ++p)
        if (*p == '\\' || *p == '/' || *p == ':') name = p + 1;
    return name;
}

} // namespace
} // namespace tq::log

using namespace tq::log;

CLog::CLog()
{
    InitializeCriticalSection(&m_lock);
}

CLog::~CLog()
{
    Close();
    DeleteCriticalSection(&m_lock);
}

void CLog::Close()
{
    if (m_file) fclose(m_file);
    m_file = nullptr;
}

HRESULT CLog::Open()
{
    m_file = _wfsopen(m_fileName, L"a+t", m_shareMode ? m_shareMode : _SH_DENYWR);
    return m_file ? S_OK : TQLOG_E_OPEN;
}

HRESULT CLog::Init(const wchar_t* fileName, LOGFLAGS flags, int maxSize, int shareMode)
{
    Locked lock(&m_lock);
    if (!fileName || !flags) return E_INVALIDARG;
    const size_t length = wcslen(fileName);
    if (length + wcslen(kPreviousSuffix) >= MAX_PATH) return E_INVALIDARG;
    m_initialized = FALSE;
    Close();
    m_flags = flags;
    m_maxSize = maxSize;
    m_shareMode = shareMode;
    wcscpy(m_fileName, fileName);
    wcscpy(m_previousName, fileName);
    wcscat(m_previousName, kPreviousSuffix);
    const HRESULT hr = Open();
    if (SUCCEEDED(hr)) m_initialized = TRUE;
    return hr;
}

// Taken under the lock as well, so that a line being written on another thread is never cut off
// by the file closing under it.
void CLog::Shutdown()
{
    Locked lock(&m_lock);
    m_initialized = FALSE;
    Close();
}

HRESULT CLog::Write(LOGFLAGS level, const char* sourceFile, int line, const wchar_t* format, ...)
{
    Locked lock(&m_lock);
    if (!m_initialized || !m_file) return TQLOG_E_NOTINIT;
    if (!(level & m_flags & TQLOG_LEVELS)) return S_OK;

    // Checked before the line, so a line may take the file past the limit.
    if (m_maxSize > 0 && _filelengthi64(_fileno(m_file)) >= m_maxSize)
    {
        Close();
        _wremove(m_previousName);
        _wrename(m_fileName, m_previousName);
        const HRESULT hr = Open();
        if (FAILED(hr))
        {
            m_initialized = FALSE;
            return hr;
        }
    }

    LineText text;
    text.Add(L"%ls", Tag(level & TQLOG_LEVELS));
    if (m_flags & TQLOG_TIMESTAMP)
    {
        SYSTEMTIME now;
        GetLocalTime(&now);
        text.Add(L" %02d-%02d-%02d %02d:%02d:%02d ", now.wYear, now.wMonth, now.wDay, now.wHour,
                 now.wMinute, now.wSecond);
    }
    if (m_flags & TQLOG_SOURCE)
        text.Add(L"%15.64hs(%4d): ", SourceName(sourceFile ? sourceFile : ""), line);

    wchar_t message[kMessageChars];
    message[0] = 0;
    if (format)
    {
        va_list args;
        va_start(args, format);
        TqNVPrintF(message, kMessageChars, nullptr, format, args);
        va_end(args);
    }
    message[kMessageChars - 1] = 0;
    text.Add(L"%ls\n", message);

    // UTF-8, so that any name a user sends with a bug report survives.
    char bytes[kLineChars * 3];
    if (WideCharToMultiByte(CP_UTF8, 0, text.Text(), -1, bytes, sizeof(bytes), nullptr, nullptr))
        fputs(bytes, m_file);
    fflush(m_file);
    return S_OK;
}
