// The optional text log with one previous generation. There is no global log: whoever wants
// logging owns a CLog or holds a pointer to one, and logs nothing while that pointer is null.
#pragma once

#include "tqkernelapi.h"

#include <stdio.h>

// Levels, one bit each, and line options. A write whose level shares no bit with the log's
// flags is dropped.
typedef DWORD LOGFLAGS;
#define TQLOG_ERROR 0x00001u
#define TQLOG_WARNING 0x00002u
#define TQLOG_INFO 0x00004u
#define TQLOG_DEBUG 0x00008u
#define TQLOG_MESSAGE 0x00010u // a plain line without a level tag
#define TQLOG_LEVELS 0x0FFFFu
#define TQLOG_TIMESTAMP 0x10000u // local date and time on every line
#define TQLOG_SOURCE 0x20000u    // source file name and line on every line

#define TQLOG_E_OPEN ((HRESULT)0x8004E007L)    // the log file could not be opened
#define TQLOG_E_NOTINIT ((HRESULT)0x8004E01BL) // Write before Init, or after a failed rotation

class TQKERNEL_CLASS CLog
{
public:
    CLog();
    virtual ~CLog();
    CLog(const CLog&) = delete;
    CLog& operator=(const CLog&) = delete;

    // maxSize: bytes at which the file moves to "<fileName>.previous" before the next line; 0
    // or less never rotates. shareMode 0 opens the file for this writer alone (others may read
    // it), otherwise it is the share flag of the open (_SH_DENYNO ...). E_INVALIDARG for a null
    // name or no flags, TQLOG_E_OPEN when the file does not open.
    HRESULT Init(const wchar_t* fileName, LOGFLAGS flags, int maxSize, int shareMode);
    void Shutdown();
    // One line: tag, options, then the message formatted by the kernel's printf and cut at 1023
    // characters. Each line is flushed, so the file is whole after a crash. Safe from any thread.
    HRESULT Write(LOGFLAGS level, const char* sourceFile, int line, const wchar_t* format, ...);
    const wchar_t* GetLogFileName() const { return m_fileName; }

private:
    HRESULT Open();
    void Close();

    BOOL m_initialized = FALSE;
    FILE* m_file = nullptr;
    LOGFLAGS m_flags = 0;
    int m_maxSize = -1;
    wchar_t m_fileName[MAX_PATH] = {};
    wchar_t m_previousName[MAX_PATH] = {};
    CRITICAL_SECTION m_lock;
    int m_shareMode = 0;
};
