// The system's path calls with a working-size buffer, file queries, file times, temporary files.
#include "tqpath.h"

#include "tqerrorhandler.h"
#include "tqprintf.h"
#include "uniquehandle.h"

#include <shellapi.h>
#include <shlwapi.h>

#include <climits>

namespace tq::path {
namespace {

int Checked(DWORD length)
{
    return length && length < MAX_PATH ? static_cast<int>(length) : 0;
}

bool LastWriteTime(const wchar_t* path, FILETIME* time)
{
    if (!path)
    {
        GetSystemTimeAsFileTime(time);
        return true;
    }
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExW(path, GetFileExInfoStandard, &data)) return false;
    *time = data.ftLastWriteTime;
    return true;
}

HRESULT DosTime(const wchar_t* path, WORD* date, WORD* time, bool local)
{
    if (!date || !time) return E_INVALIDARG;
    FILETIME when;
    if (!LastWriteTime(path, &when)) return HRESULT_FROM_WIN32(GetLastError());
    FILETIME shown = when;
    if (local && !FileTimeToLocalFileTime(&when, &shown)) return E_FAIL;
    return FileTimeToDosDateTime(&shown, date, time) ? S_OK : E_FAIL;
}

// The disk queries want a folder; a file's own folder stands in for it.
bool DiskSpace(const wchar_t* path, ULARGE_INTEGER* free, ULARGE_INTEGER* total)
{
    if (!path) return false;
    wchar_t folder[MAX_PATH];
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY))
    {
        if (!TqGetPathNameFromFilePath(path, folder, MAX_PATH)) return false;
        path = folder;
    }
    return GetDiskFreeSpaceExW(path, free, total, nullptr);
}

bool Empty(const wchar_t* text)
{
    return !text || !*text;
}

} // namespace
} // namespace tq::path

using namespace tq::path;

TQKERNEL_API int TqGetLongPathName(const wchar_t* path, wchar_t* buffer)
{
    if (!path || !buffer) return 0;
    return Checked(GetLongPathNameW(path, buffer, MAX_PATH));
}

TQKERNEL_API int TqGetFullPathName(const wchar_t* path, wchar_t* buffer)
{
    if (!path || !buffer) return 0;
    return Checked(GetFullPathNameW(path, MAX_PATH, buffer, nullptr));
}

TQKERNEL_API int TqGetTempPath(wchar_t* buffer)
{
    if (!buffer) return 0;
    if (!Checked(GetTempPathW(MAX_PATH, buffer))) return 0;
    return TqAddSlashToPathName(buffer, MAX_PATH);
}

TQKERNEL_API int TqGetModuleFileName(HMODULE module, wchar_t* buffer)
{
    if (!buffer) return 0;
    return Checked(GetModuleFileNameW(module, buffer, MAX_PATH));
}

TQKERNEL_API int TqGetModulePath(HMODULE module, wchar_t* buffer)
{
    if (!TqGetModuleFileName(module, buffer)) return 0;
    *TqGetFileNamePtrW(buffer) = 0;
    return lstrlenW(buffer);
}

TQKERNEL_API int TqQualifyPath(const wchar_t* path, wchar_t* buffer)
{
    if (!path || !buffer) return 0;
    if (!PathSearchAndQualifyW(path, buffer, MAX_PATH)) return 0;
    return lstrlenW(buffer);
}

TQKERNEL_API BOOL TqDoesFileExist(const wchar_t* path)
{
    if (Empty(path)) return FALSE;
    const DWORD attributes = GetFileAttributesW(path);
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// The read-only attribute is tested by itself: an administrator's open for writing can succeed
// in spite of it.
TQKERNEL_API BOOL TqIsFileWritable(const wchar_t* path)
{
    if (Empty(path)) return FALSE;
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes == INVALID_FILE_ATTRIBUTES ||
        (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)))
        return FALSE;
    tq::UniqueFile file(CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return file ? TRUE : FALSE;
}

TQKERNEL_API DWORD TqGetFileExecutableInfo(const wchar_t* path)
{
    if (Empty(path)) return 0;
    return static_cast<DWORD>(SHGetFileInfoW(path, 0, nullptr, 0, SHGFI_EXETYPE));
}

TQKERNEL_API BOOL TqIsFileExecutable(const wchar_t* path)
{
    return TqGetFileExecutableInfo(path) != 0;
}

TQKERNEL_API LONGLONG TqGetFileSizeByName(const wchar_t* path)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (Empty(path) || !GetFileAttributesExW(path, GetFileExInfoStandard, &data)) return -1;
    if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return -1;
    return (static_cast<LONGLONG>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
}

TQKERNEL_API LONGLONG TqGetDiskFreeSpace(const wchar_t* path)
{
    ULARGE_INTEGER free, total;
    return DiskSpace(path, &free, &total) ? static_cast<LONGLONG>(free.QuadPart) : -1;
}

TQKERNEL_API LONGLONG TqGetDiskTotalSpace(const wchar_t* path)
{
    ULARGE_INTEGER free, total;
    return DiskSpace(path, &free, &total) ? static_cast<LONGLONG>(total.QuadPart) : -1;
}

TQKERNEL_API int TqFormatDiskFreeSpace(const wchar_t* path, wchar_t* buffer, int capacity)
{
    const LONGLONG free = TqGetDiskFreeSpace(path);
    if (free < 0) return 0;
    return TqFormatFileSize(free, buffer, capacity, FALSE);
}

TQKERNEL_API HRESULT TqDosGetDateTime(const wchar_t* path, WORD* date, WORD* time)
{
    return DosTime(path, date, time, true);
}

TQKERNEL_API HRESULT TqDosGetDateTimeUTC(const wchar_t* path, WORD* date, WORD* time)
{
    return DosTime(path, date, time, false);
}

TQKERNEL_API HRESULT TqGetDateTime(const wchar_t* path, SYSTEMTIME* time)
{
    if (!time) return E_INVALIDARG;
    FILETIME when, local;
    if (!LastWriteTime(path, &when)) return HRESULT_FROM_WIN32(GetLastError());
    if (!FileTimeToLocalFileTime(&when, &local) || !FileTimeToSystemTime(&local, time))
        return E_FAIL;
    return S_OK;
}

TQKERNEL_API HRESULT TqCreateTempFileAndNameEx(const wchar_t* folder, const wchar_t* prefix,
                                               const wchar_t* suffix, const wchar_t* numberFormat,
                                               wchar_t* buffer, int capacity)
{
    if (!buffer || capacity < 1) return E_INVALIDARG;
    buffer[0] = 0;
    if (Empty(folder) && Empty(prefix) && Empty(suffix)) return E_INVALIDARG;
    if (!numberFormat) numberFormat = L"%d";
    wchar_t previousNumber[40] = {};
    for (int n = 1; n < INT_MAX; ++n)
    {
        wchar_t number[40];
        TqCchPrintF(number, 40, nullptr, numberFormat, n);
        buffer[0] = 0;
        if (!Empty(folder))
        {
            if (lstrlenW(folder) >= capacity) break;
            lstrcpyW(buffer, folder);
            if (!TqAddSlashToPathName(buffer, capacity)) break;
        }
        size_t used = lstrlenW(buffer);
        for (const wchar_t* part : {prefix, static_cast<const wchar_t*>(number), suffix})
        {
            if (!part) continue;
            const size_t length = lstrlenW(part);
            if (used + length >= static_cast<size_t>(capacity))
            {
                used = capacity;
                break;
            }
            lstrcpyW(buffer + used, part);
            used += length;
        }
        if (used >= static_cast<size_t>(capacity)) break;

        tq::UniqueFile file(CreateFileW(buffer, GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
        if (file) return S_OK;
        const DWORD error = GetLastError();
        // A format without a number would try the same name for ever.
        const bool sameName = n > 1 && lstrcmpW(number, previousNumber) == 0;
        if ((error != ERROR_FILE_EXISTS && error != ERROR_SHARING_VIOLATION) || sameName)
        {
            buffer[0] = 0;
            const HRESULT hr = TqErrorHandler_TranslateWin32Error(error);
            return FAILED(hr) ? hr : E_FAIL;
        }
        lstrcpyW(previousNumber, number);
    }
    buffer[0] = 0;
    return E_INVALIDARG;
}

TQKERNEL_API HRESULT TqCreateTempFileAndName(const wchar_t* prefix, const wchar_t* suffix,
                                             wchar_t* buffer, int capacity)
{
    return TqCreateTempFileAndNameEx(nullptr, prefix, suffix, nullptr, buffer, capacity);
}
