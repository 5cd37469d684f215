// What the memory-token test and its peer process agree on: the data patterns, the token as
// text on a command line, and the peer's exit codes.
#pragma once

#include "support/testpaths.h"
#include "tqmemorytoken.h"

#include <stdio.h>
#include <string>

namespace tqtest {

// What the owner puts in a block, and what a peer that may write leaves there.
inline BYTE OwnerByte(size_t i)
{
    return static_cast<BYTE>(i * 13 + 1);
}
inline BYTE PeerByte(size_t i)
{
    return static_cast<BYTE>(i * 7 + 0x55);
}

enum PeerExit : DWORD
{
    kPeerOk = 0,
    kPeerBadArguments = 10,
    kPeerMapFailed = 11,
    kPeerWrongContent = 12,
    kPeerDuplicateFailed = 13,
};

inline std::wstring TokenToText(const _tqmemorytoken& token)
{
    std::wstring text;
    const auto* bytes = reinterpret_cast<const BYTE*>(&token);
    for (size_t i = 0; i < sizeof token; ++i)
    {
        wchar_t pair[3];
        swprintf(pair, 3, L"%02x", bytes[i]);
        text += pair;
    }
    return text;
}

inline bool TextToToken(const wchar_t* text, _tqmemorytoken* token)
{
    auto* bytes = reinterpret_cast<BYTE*>(token);
    for (size_t i = 0; i < sizeof *token; ++i)
    {
        unsigned value = 0;
        if (!text[2 * i] || !text[2 * i + 1] || swscanf(text + 2 * i, L"%2x", &value) != 1)
            return false;
        bytes[i] = static_cast<BYTE>(value);
    }
    return text[2 * sizeof *token] == 0;
}

// A running peer; ended at the end of its scope if it has not ended by itself.
class Peer
{
public:
    explicit Peer(const std::wstring& arguments)
    {
        std::wstring command = L"\"" + ProgramFolder() + L"\\memorytokenpeer.exe\" " + arguments;
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION info = {};
        if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                            &startup, &info))
            return;
        m_process.Reset(info.hProcess);
        tq::UniqueHandle thread(info.hThread);
        m_id = info.dwProcessId;
    }
    ~Peer()
    {
        if (m_process && WaitForSingleObject(m_process.Get(), 0) == WAIT_TIMEOUT)
        {
            TerminateProcess(m_process.Get(), 1);
            WaitForSingleObject(m_process.Get(), 30000);
        }
    }
    bool Started() const { return static_cast<bool>(m_process); }
    DWORD Id() const { return m_id; }
    // The exit code, or STILL_ACTIVE when the peer has not ended within 30 s (a hang guard).
    DWORD Wait()
    {
        DWORD code = STILL_ACTIVE;
        if (WaitForSingleObject(m_process.Get(), 30000) == WAIT_OBJECT_0)
            GetExitCodeProcess(m_process.Get(), &code);
        return code;
    }

private:
    tq::UniqueHandle m_process;
    DWORD m_id = 0;
};

// Runs the peer to its end and gives its exit code.
inline DWORD RunPeer(const std::wstring& arguments)
{
    Peer peer(arguments);
    return peer.Started() ? peer.Wait() : STILL_ACTIVE;
}

} // namespace tqtest
