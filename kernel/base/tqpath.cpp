// Names inside a path: file name and extension, editing helpers, validation, wild cards, tails.
#include "tqpath.h"

#include <shlwapi.h>
#include <wctype.h>

namespace tq::path {
namespace {

bool IsSlash(wchar_t c)
{
    return c == L'\\';
}

// Copies length characters of text and a terminator; false when they do not fit.
bool CopyPart(const wchar_t* text, int length, wchar_t* buffer, int capacity)
{
    if (!buffer || capacity <= length) return false;
    CopyMemory(buffer, text, length * sizeof(wchar_t));
    buffer[length] = 0;
    return true;
}

int CopyLength(const wchar_t* text, int length, wchar_t* buffer, int capacity)
{
    return CopyPart(text, length, buffer, capacity) ? length : 0;
}

int ChangeExtension(wchar_t* path, int capacity, const wchar_t* extension, bool keepSame)
{
    if (!path) return 0;
    if (!extension) extension = L"";
    if (*extension == L'.') ++extension;
    wchar_t* dot = TqGetFileNameExtensionPtrW(TqGetFileNamePtrW(path));
    const int length = lstrlenW(path);
    if (*dot == L'.' && keepSame && lstrcmpiW(dot + 1, extension) == 0) return length;
    // Adding nothing keeps the path; replacing by nothing keeps the dot, so that callers can
    // tell a name that had no extension from one that ended in a dot.
    if (!*extension && keepSame) return length;
    const int front = static_cast<int>(dot - path);
    const int newLength = front + 1 + lstrlenW(extension);
    if (newLength >= capacity) return 0;
    dot[0] = L'.';
    lstrcpyW(dot + 1, extension);
    return newLength;
}

} // namespace
} // namespace tq::path

using namespace tq::path;

TQKERNEL_API char* TqGetFileNamePtrA(const char* path)
{
    if (!path) return nullptr;
    const char* name = path;
    for (const char* p = path; *p; p = CharNextA(p))
        if (*p == '\\' || *p == ':') name = p + 1;
    return const_cast<char*>(name);
}

TQKERNEL_API wchar_t* TqGetFileNamePtrW(const wchar_t* path)
{
    if (!path) return nullptr;
    const wchar_t* name = path;
    for (const wchar_t* p = path; *p; ++p)
        if (*p == L'\\' || *p == L':') name = p + 1;
    return const_cast<wchar_t*>(name);
}

// Only the file name is searched, so a dotted folder name is never taken for an extension.
TQKERNEL_API char* TqGetFileNameExtensionPtrA(const char* path)
{
    if (!path) return nullptr;
    const char* dot = nullptr;
    const char* p = TqGetFileNamePtrA(path);
    for (; *p; p = CharNextA(p))
    {
        if (*p == '.')
            dot = p;
        else if (dot && (*p == ' ' || *p == '\t'))
            dot = nullptr;
    }
    return const_cast<char*>(dot ? dot : p);
}

TQKERNEL_API wchar_t* TqGetFileNameExtensionPtrW(const wchar_t* path)
{
    if (!path) return nullptr;
    const wchar_t* dot = nullptr;
    const wchar_t* p = TqGetFileNamePtrW(path);
    for (; *p; ++p)
    {
        if (*p == L'.')
            dot = p;
        else if (dot && iswspace(*p))
            dot = nullptr;
    }
    return const_cast<wchar_t*>(dot ? dot : p);
}

TQKERNEL_API int TqAddSlashToPathName(wchar_t* path, int capacity)
{
    if (!path || !*path) return 0;
    const int length = lstrlenW(path);
    if (IsSlash(path[length - 1])) return length;
    if (length + 2 > capacity) return 0;
    path[length] = L'\\';
    path[length + 1] = 0;
    return length + 1;
}

TQKERNEL_API int TqRemoveSlashFromPathNameEnd(wchar_t* path)
{
    if (!path) return 0;
    int length = lstrlenW(path);
    if (length && IsSlash(path[length - 1])) path[--length] = 0;
    return length;
}

TQKERNEL_API int TqAddExtensionToPathName(wchar_t* path, int capacity, const wchar_t* extension)
{
    return ChangeExtension(path, capacity, extension, true);
}

TQKERNEL_API int TqReplaceExtensionOnPathName(wchar_t* path, int capacity, const wchar_t* extension)
{
    return ChangeExtension(path, capacity, extension, false);
}

TQKERNEL_API int TqAppendToPathName(wchar_t* path, int capacity, const wchar_t* more)
{
    if (!path || !more) return 0;
    while (IsSlash(*more))
        ++more;
    const int length = lstrlenW(path);
    const bool slash = length && !IsSlash(path[length - 1]);
    const int newLength = length + (slash ? 1 : 0) + lstrlenW(more);
    if (newLength >= capacity) return 0;
    if (slash) path[length] = L'\\';
    lstrcpyW(path + length + (slash ? 1 : 0), more);
    return newLength;
}

TQKERNEL_API int TqGetFileNameWithoutPathOrExtension(const wchar_t* path, wchar_t* buffer,
                                                     int capacity)
{
    if (!path) return 0;
    const wchar_t* name = TqGetFileNamePtrW(path);
    return CopyLength(name, static_cast<int>(TqGetFileNameExtensionPtrW(name) - name), buffer,
                      capacity);
}

TQKERNEL_API int TqGetPathNameFromFilePath(const wchar_t* path, wchar_t* buffer, int capacity)
{
    if (!path) return 0;
    return CopyLength(path, static_cast<int>(TqGetFileNamePtrW(path) - path), buffer, capacity);
}

TQKERNEL_API int TqGetRootPathFromFilePath(const wchar_t* path, wchar_t* buffer, int capacity)
{
    if (!path || !buffer || capacity < 1) return 0;
    buffer[0] = 0;
    int length = 0;
    if (IsSlash(path[0]) && IsSlash(path[1]))
    {
        // \\server\share: the root runs to the end of the share name.
        const wchar_t* p = path + 2;
        for (int separators = 0; *p && separators < 2; ++p)
            if (IsSlash(*p)) ++separators;
        length = static_cast<int>(p - path);
    }
    else if (path[0] && path[1] == L':')
        length = 2;
    else if (IsSlash(path[0]))
        length = 1;
    else
        return 0;
    if (!CopyPart(path, length, buffer, capacity)) return 0;
    if (buffer[length - 1] == L'\\') return length;
    return TqAddSlashToPathName(buffer, capacity);
}

TQKERNEL_API int TqValidateFileName(wchar_t* name, BOOL repair)
{
    if (!name) return 1;
    int good = 1;
    for (wchar_t* p = name; *p; ++p)
    {
        const bool last = p[1] == 0;
        const bool bad = wcschr(L"\r\n\"*/:<>?\\|", *p) || (last && (*p == L' ' || *p == L'.'));
        if (!bad) continue;
        if (!repair) return 0;
        *p = L'_';
        good = 0;
    }
    return good;
}

// No back-tracking: a '*' commits to the first place it can stop, which is how '.' divides name
// and extension here ("*.wav" does not match "a.b.wav").
TQKERNEL_API BOOL TqIsMatchWildCard(const wchar_t* pattern, const wchar_t* name)
{
    if (!pattern || !name) return FALSE;
    if (pattern[0] == L'*' && pattern[1] == 0) return TRUE;
    const wchar_t* p = pattern;
    const wchar_t* n = name;
    for (;;)
    {
        if (!*n) return !*p || *p == L'*' || (*p == L'.' && !p[1]);
        if (!*p) return *n == L'.' && !n[1];
        if (*p == L'?')
        {
            ++p;
            ++n;
        }
        else if (*p == L'*')
        {
            const wchar_t stop = p[1];
            while (*n && *n != L'.' && (!stop || *n != stop))
                ++n;
            ++p;
        }
        else
        {
            if (static_cast<BYTE>(*p) != static_cast<BYTE>(*n)) return FALSE;
            ++p;
            ++n;
        }
    }
}

TQKERNEL_API int TqFilenameLogicalCompare(const wchar_t* first, const wchar_t* second)
{
    return StrCmpLogicalW(first ? first : L"", second ? second : L"");
}

TQKERNEL_API const wchar_t* TqGetFileNamePtrRelative(const wchar_t* base, const wchar_t* path)
{
    if (!path) return nullptr;
    if (!base) return path + lstrlenW(path);
    const wchar_t* b = base + lstrlenW(base);
    const wchar_t* p = path + lstrlenW(path);
    while (b > base && p > path && towlower(b[-1]) == towlower(p[-1]))
    {
        --b;
        --p;
    }
    // The equal tail may start inside a name; only whole names count.
    while (*p && !IsSlash(*p))
        ++p;
    while (IsSlash(*p))
        ++p;
    return p;
}

TQKERNEL_API HRESULT TqGetBasePathRelative(const wchar_t* base, const wchar_t* path,
                                           wchar_t* buffer, int capacity)
{
    if (!path || !buffer) return E_INVALIDARG;
    const wchar_t* tail = TqGetFileNamePtrRelative(base, path);
    if (!CopyPart(path, static_cast<int>(tail - path), buffer, capacity)) return E_FAIL;
    if (!buffer[0]) return S_OK;
    return TqAddSlashToPathName(buffer, capacity) ? S_OK : E_FAIL;
}

TQKERNEL_API HRESULT TqReplaceBasePathRelative(const wchar_t* base, const wchar_t* path,
                                               const wchar_t* newBase, wchar_t* buffer,
                                               int capacity)
{
    if (!path || !newBase || !buffer || capacity < 1) return E_INVALIDARG;
    const wchar_t* tail = TqGetFileNamePtrRelative(base, path);
    buffer[0] = 0;
    if (!CopyPart(newBase, lstrlenW(newBase), buffer, capacity)) return E_FAIL;
    if (!*tail) return S_OK;
    if (!TqAppendToPathName(buffer, capacity, tail))
    {
        buffer[0] = 0;
        return E_FAIL;
    }
    return S_OK;
}
