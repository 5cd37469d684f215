// Folder operations: creating a path, deleting trees and files, sizes, moves, emptiness.
#include "tqpath.h"

#include "tqerrorhandler.h"

#include <algorithm>
#include <functional>
#include <string>

namespace tq::path {
namespace {

using Visit = std::function<bool(const std::wstring& path, const WIN32_FIND_DATAW& found)>;

// Calls visit for every entry of folder but "." and ".."; stops early when visit returns false.
// False when the folder cannot be listed or visit stopped.
bool ForEachEntry(const std::wstring& folder, const Visit& visit)
{
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return false;
    bool completed = true;
    do
    {
        if (!lstrcmpW(found.cFileName, L".") || !lstrcmpW(found.cFileName, L"..")) continue;
        if (!visit(folder + L"\\" + found.cFileName, found))
        {
            completed = false;
            break;
        }
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return completed;
}

bool IsFolder(const WIN32_FIND_DATAW& found)
{
    return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::wstring WithoutSlash(const wchar_t* folder)
{
    std::wstring text = folder;
    while (text.size() > 1 && text.back() == L'\\')
        text.pop_back();
    return text;
}

HRESULT LastError()
{
    const HRESULT hr = TqErrorHandler_TranslateWin32Error(GetLastError());
    return FAILED(hr) ? hr : E_FAIL;
}

bool DeleteTree(const std::wstring& folder)
{
    ForEachEntry(folder, [](const std::wstring& path, const WIN32_FIND_DATAW& found) {
        if (found.dwFileAttributes & FILE_ATTRIBUTE_READONLY)
            SetFileAttributesW(path.c_str(), found.dwFileAttributes & ~FILE_ATTRIBUTE_READONLY);
        if (IsFolder(found))
            DeleteTree(path);
        else
            DeleteFileW(path.c_str());
        return true;
    });
    return RemoveDirectoryW(folder.c_str()) != FALSE;
}

LONGLONG TreeSize(const std::wstring& folder)
{
    LONGLONG size = 0;
    ForEachEntry(folder, [&size](const std::wstring& path, const WIN32_FIND_DATAW& found) {
        if (IsFolder(found))
            size += TreeSize(path);
        else
            size += (static_cast<LONGLONG>(found.nFileSizeHigh) << 32) | found.nFileSizeLow;
        return true;
    });
    return size;
}

bool EmptyTree(const std::wstring& folder)
{
    return ForEachEntry(folder, [](const std::wstring& path, const WIN32_FIND_DATAW& found) {
        return IsFolder(found) && EmptyTree(path);
    });
}

bool FullPath(const wchar_t* path, wchar_t* buffer)
{
    return path && TqGetFullPathName(WithoutSlash(path).c_str(), buffer) != 0;
}

} // namespace
} // namespace tq::path

using namespace tq::path;

TQKERNEL_API HRESULT TqCreateDirectory(const wchar_t* path)
{
    if (!path || !*path) return E_INVALIDARG;
    std::wstring level = path;
    // Every prefix ending before a '\' is tried; the root and existing levels simply fail.
    for (size_t at = level.find(L'\\', 1); at != std::wstring::npos; at = level.find(L'\\', at + 1))
        CreateDirectoryW(level.substr(0, at).c_str(), nullptr);
    if (!CreateDirectoryW(level.c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
        return LastError();
    const DWORD attributes = GetFileAttributesW(level.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return LastError();
    return attributes & FILE_ATTRIBUTE_DIRECTORY ? S_OK : HRESULT_FROM_WIN32(ERROR_FILE_EXISTS);
}

TQKERNEL_API int TqDeleteFiles(const wchar_t* folder, const wchar_t* pattern)
{
    if (!folder || !pattern) return 0;
    int deleted = 0;
    ForEachEntry(WithoutSlash(folder),
                 [&](const std::wstring& path, const WIN32_FIND_DATAW& found) {
                     if (!IsFolder(found) && TqIsMatchWildCard(pattern, found.cFileName) &&
                         DeleteFileW(path.c_str()))
                         ++deleted;
                     return true;
                 });
    return deleted;
}

TQKERNEL_API HRESULT TqDeleteDirectoryTree(const wchar_t* folder)
{
    if (!folder || !*folder) return E_INVALIDARG;
    return DeleteTree(WithoutSlash(folder)) ? S_OK : LastError();
}

TQKERNEL_API BOOL TqCanMoveFolder(const wchar_t* from, const wchar_t* to)
{
    wchar_t source[MAX_PATH], target[MAX_PATH];
    if (!FullPath(from, source) || !FullPath(to, target)) return FALSE;
    const DWORD attributes = GetFileAttributesW(source);
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
        return FALSE;
    if (GetFileAttributesW(target) != INVALID_FILE_ATTRIBUTES) return FALSE;
    wchar_t sourceRoot[MAX_PATH], targetRoot[MAX_PATH];
    if (!TqGetRootPathFromFilePath(source, sourceRoot, MAX_PATH) ||
        !TqGetRootPathFromFilePath(target, targetRoot, MAX_PATH) ||
        lstrcmpiW(sourceRoot, targetRoot) != 0)
        return FALSE;
    // Never into itself or below itself.
    const int length = lstrlenW(source);
    if (CompareStringOrdinal(source, length, target, std::min(length, lstrlenW(target)), TRUE) ==
            CSTR_EQUAL &&
        (target[length] == 0 || target[length] == L'\\'))
        return FALSE;
    return TRUE;
}

TQKERNEL_API HRESULT TqMoveFolder(const wchar_t* from, const wchar_t* to)
{
    if (!TqCanMoveFolder(from, to)) return E_FAIL;
    return MoveFileExW(WithoutSlash(from).c_str(), WithoutSlash(to).c_str(), 0) ? S_OK
                                                                                : LastError();
}

TQKERNEL_API LONGLONG TqGetDirectorySize(const wchar_t* folder)
{
    if (!folder || !*folder) return 0;
    return TreeSize(WithoutSlash(folder));
}

TQKERNEL_API BOOL TqIsDirectoryWritable(const wchar_t* folder)
{
    wchar_t probe[MAX_PATH];
    if (FAILED(TqCreateTempFileAndNameEx(folder, L"~tqwrite", L".tmp", nullptr, probe, MAX_PATH)))
        return FALSE;
    DeleteFileW(probe);
    return TRUE;
}

TQKERNEL_API BOOL TqIsDirectoryEmpty(const wchar_t* folder)
{
    if (!folder || !*folder) return FALSE;
    return ForEachEntry(WithoutSlash(folder),
                        [](const std::wstring&, const WIN32_FIND_DATAW&) { return false; });
}

TQKERNEL_API BOOL TqIsDirectoryEmptyRecursive(const wchar_t* folder)
{
    if (!folder || !*folder) return FALSE;
    return EmptyTree(WithoutSlash(folder));
}

TQKERNEL_API int TqDirectoryUpOneLevel(wchar_t* path)
{
    if (!path) return 0;
    wchar_t root[MAX_PATH];
    const int rootLength = TqGetRootPathFromFilePath(path, root, MAX_PATH);
    int length = lstrlenW(path);
    if (length && path[length - 1] == L'\\') --length;
    if (length <= rootLength) return 0;
    while (length > 0 && path[length - 1] != L'\\')
        --length;
    if (length < rootLength) length = rootLength;
    path[length] = 0;
    return length;
}

TQKERNEL_API HRESULT TqGetUniqueSubFolder(const wchar_t* parent, const wchar_t* name,
                                          wchar_t* buffer, int capacity)
{
    if (!parent || !name || !*name || !buffer || capacity < 1) return E_INVALIDARG;
    for (int n = 1; n < 10000; ++n)
    {
        std::wstring candidate = WithoutSlash(parent) + L"\\" + name;
        if (n > 1) candidate += L" " + std::to_wstring(n);
        if (candidate.size() >= static_cast<size_t>(capacity)) break;
        if (CreateDirectoryW(candidate.c_str(), nullptr))
        {
            lstrcpyW(buffer, candidate.c_str());
            return S_OK;
        }
        if (GetLastError() != ERROR_ALREADY_EXISTS) return LastError();
    }
    buffer[0] = 0;
    return E_FAIL;
}
