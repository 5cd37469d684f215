// Switches are found with wcstok, which writes into the arguments: a value with - or / in its
// middle is cut there. Starters depend on the exact rule, so it is kept as it is.
#include "serverargs.h"

#include <shellapi.h>

#include <cwchar>

namespace {
constexpr wchar_t kDelimiters[] = L"-/";
}

ServerArgs::ServerArgs() : ServerArgs(GetCommandLineW())
{
}

ServerArgs::ServerArgs(const wchar_t* commandLine)
{
    m_argv = CommandLineToArgvW(commandLine, &m_argc);
    if (!m_argv) m_argc = 0;
}

ServerArgs::~ServerArgs()
{
    if (m_argv) LocalFree(m_argv);
}

int ServerArgs::FindSwitch(const wchar_t* name) const
{
    if (m_argc < 2) return 0;
    for (int i = 1; i < m_argc; ++i)
    {
        const wchar_t* token = wcstok(m_argv[i], kDelimiters);
        // Only an argument whose first token lies behind a skipped delimiter is a switch.
        if (token && token != m_argv[i] && lstrcmpiW(token, name) == 0) return i;
    }
    return 0;
}

const wchar_t* ServerArgs::GetSwitchValue(const wchar_t* name) const
{
    if (!m_argv) return nullptr;
    if (!name) return m_argv[0];
    const int i = FindSwitch(name) + 1;
    if (i < 2 || i >= m_argc) return nullptr;
    const wchar_t* token = wcstok(m_argv[i], kDelimiters);
    return token == m_argv[i] ? m_argv[i] : nullptr;
}
