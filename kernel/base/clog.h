// The optional text log that callers hold by a possibly null pointer.
#pragma once

#include <windows.h>

// Levels: 1 error, 2 warning, 3 information, 4 debug.
class CLog
{
public:
    virtual void Write(int level, const char* sourceFile, int sourceLine, const wchar_t* text) = 0;

protected:
    ~CLog() = default;
};
