// The other process of the memory-token test. Its first argument names its part:
//   map <access> <owner|zero> <token>  maps the token, checks the block holds the owner's pattern
//                                      (or zeros), writes its own pattern when it may write,
//                                      and releases the mapping
//   signal <processId> <handle>        takes an event of that process and sets it
//   idle                               waits to be ended, as a target for handles
#include "memorytokenpeer.h"

#include <shellapi.h>
#include <wchar.h>

namespace {

DWORD MapToken(DWORD access, bool expectOwner, const wchar_t* text)
{
    _tqmemorytoken token = {};
    if (!tqtest::TextToToken(text, &token)) return tqtest::kPeerBadArguments;
    CMappingOfTqMemoryToken mapping(token, access);
    auto* block = static_cast<BYTE*>(mapping.Pointer());
    if (!block || mapping.DataSize() != static_cast<int>(token.size)) return tqtest::kPeerMapFailed;
    for (size_t i = 0; i < token.size; ++i)
        if (block[i] != (expectOwner ? tqtest::OwnerByte(i) : 0)) return tqtest::kPeerWrongContent;
    // Access 0 means reading and writing.
    if ((access & FILE_MAP_WRITE) || !(access & (FILE_MAP_READ | FILE_MAP_WRITE)))
        for (size_t i = 0; i < token.size; ++i)
            block[i] = tqtest::PeerByte(i);
    mapping.Dispose();
    return tqtest::kPeerOk;
}

DWORD SignalEvent(DWORD processId, HANDLE handle)
{
    HANDLE local = nullptr;
    if (FAILED(DuplicateHandleFromProcessId(handle, processId, &local)))
        return tqtest::kPeerDuplicateFailed;
    tq::UniqueHandle event(local);
    return SetEvent(event.Get()) ? tqtest::kPeerOk : tqtest::kPeerDuplicateFailed;
}

DWORD Run(int argc, wchar_t** argv)
{
    if (argc == 5 && !wcscmp(argv[1], L"map"))
        return MapToken(wcstoul(argv[2], nullptr, 0), !wcscmp(argv[3], L"owner"), argv[4]);
    if (argc == 4 && !wcscmp(argv[1], L"signal"))
        return SignalEvent(wcstoul(argv[2], nullptr, 0),
                           reinterpret_cast<HANDLE>(wcstoull(argv[3], nullptr, 0)));
    if (argc == 2 && !wcscmp(argv[1], L"idle"))
    {
        // A hang guard: the test ends this process long before.
        Sleep(60000);
        return tqtest::kPeerOk;
    }
    return tqtest::kPeerBadArguments;
}

} // namespace

int main()
{
    int argc = 0;
    wchar_t** argv = CommandLineToArgvW(GetCommandLineW(), &argc);
    const DWORD code = argv ? Run(argc, argv) : tqtest::kPeerBadArguments;
    LocalFree(argv);
    return static_cast<int>(code);
}
