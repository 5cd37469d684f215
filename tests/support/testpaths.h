// Where the test programs find the test plug-ins and the 32-bit build, relative to themselves.
#pragma once

#include <windows.h>

#include <shlwapi.h>

#include <cstdlib>
#include <string>

namespace tqtest {

inline std::wstring ProgramFolder()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    PathRemoveFileSpecW(path);
    return path;
}

// A test plug-in of this build's bitness.
inline std::wstring PluginPath(const std::wstring& file)
{
    return ProgramFolder() + L"\\testplugins\\" + file;
}

// A 32-bit test plug-in, as the 64-bit tree carries them.
inline std::wstring Plugin32Path(const std::wstring& file)
{
    return ProgramFolder() + L"\\x86\\testplugins\\" + file;
}

inline bool FileExists(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// True where the 32-bit server can run: 32-bit Wine present and the 32-bit build copied in.
inline bool Have32BitServer()
{
    const char* wine32 = std::getenv("TQ_WINE32");
    return wine32 && wine32[0] == '1' && FileExists(ProgramFolder() + L"\\x86\\tqvstserver.exe");
}

// A fresh folder under the temporary folder, removed with its files at destruction.
class TempFolder
{
public:
    TempFolder()
    {
        wchar_t base[MAX_PATH] = {};
        GetTempPathW(MAX_PATH, base);
        m_path = std::wstring(base) + L"tqvst-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                 std::to_wstring(GetTickCount());
        CreateDirectoryW(m_path.c_str(), nullptr);
    }
    ~TempFolder()
    {
        WIN32_FIND_DATAW found;
        HANDLE search = FindFirstFileW((m_path + L"\\*").c_str(), &found);
        if (search != INVALID_HANDLE_VALUE)
        {
            do
            {
                const std::wstring item = m_path + L"\\" + found.cFileName;
                if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                {
                    if (found.cFileName[0] != L'.') RemoveDirectoryW(item.c_str());
                }
                else
                    DeleteFileW(item.c_str());
            } while (FindNextFileW(search, &found));
            FindClose(search);
        }
        RemoveDirectoryW(m_path.c_str());
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::wstring File(const std::wstring& name) const { return m_path + L"\\" + name; }
    const std::wstring& Path() const { return m_path; }

private:
    std::wstring m_path;
};

} // namespace tqtest
