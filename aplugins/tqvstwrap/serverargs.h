// The server's command line in split form, with its switch and value rules.
#pragma once

#include <windows.h>

class ServerArgs
{
public:
    // Splits GetCommandLineW().
    ServerArgs();
    // Splits the given line (tests).
    explicit ServerArgs(const wchar_t* commandLine);
    ~ServerArgs();
    ServerArgs(const ServerArgs&) = delete;
    ServerArgs& operator=(const ServerArgs&) = delete;

    // Index of the switch -name or /name (any case), or 0.
    int FindSwitch(const wchar_t* name) const;
    // The argument after the switch, or null when it is absent or itself starts with - or /.
    // A null name gives the program's name. Tokenising cuts a value at its first - or /.
    const wchar_t* GetSwitchValue(const wchar_t* name) const;

    int Count() const { return m_argc; }

private:
    wchar_t** m_argv = nullptr;
    int m_argc = 0;
};
