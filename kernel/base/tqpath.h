// Path helpers over callers' buffers, file and folder queries, special folders, display forms.
// The separator is '\' throughout; 260 characters is the working limit of a path.
#pragma once

#include "tqkernelapi.h"

// --- Names inside a path (tqpath.cpp) ---

// Behind the last '\' or ':'; the whole string if neither occurs. The A form steps with CharNextA
// so that a trail byte of a double-byte character is never taken for a separator.
TQKERNEL_API char* TqGetFileNamePtrA(const char* path);
TQKERNEL_API wchar_t* TqGetFileNamePtrW(const wchar_t* path);
// The last '.', unless white space follows it anywhere behind it ("My file.v2 final" has no
// extension); then, and with no '.', the terminator. A '.' at the very end is returned itself.
TQKERNEL_API char* TqGetFileNameExtensionPtrA(const char* path);
TQKERNEL_API wchar_t* TqGetFileNameExtensionPtrW(const wchar_t* path);

// The editing helpers take the capacity of path in characters and return the new length, or 0
// when the result would not fit (the path is then unchanged).
// Appends '\' if missing; 0 also for an empty path.
TQKERNEL_API int TqAddSlashToPathName(wchar_t* path, int capacity);
// Removes one trailing '\'; returns the length.
TQKERNEL_API int TqRemoveSlashFromPathNameEnd(wchar_t* path);
// Makes the path end in the extension (a leading '.' on it is ignored). The file name's current
// extension is replaced unless it already equals the new one without regard to case.
TQKERNEL_API int TqAddExtensionToPathName(wchar_t* path, int capacity, const wchar_t* extension);
// Replaces the text after the extension's dot, or adds a dot and the extension: a null or
// empty extension leaves the name ending in its dot ("x.aif" gives "x.").
TQKERNEL_API int TqReplaceExtensionOnPathName(wchar_t* path, int capacity,
                                              const wchar_t* extension);
// Appends a name or relative path with one '\' between.
TQKERNEL_API int TqAppendToPathName(wchar_t* path, int capacity, const wchar_t* more);
// Copies into buffer; return the length, 0 when it does not fit.
TQKERNEL_API int TqGetFileNameWithoutPathOrExtension(const wchar_t* path, wchar_t* buffer,
                                                     int capacity);
// The folder part in front of the file name, with its '\'.
TQKERNEL_API int TqGetPathNameFromFilePath(const wchar_t* path, wchar_t* buffer, int capacity);
// "C:\" or "\\server\share\".
TQKERNEL_API int TqGetRootPathFromFilePath(const wchar_t* path, wchar_t* buffer, int capacity);

// 1 for an empty or good name. Bad: control characters CR and LF, " * / : < > ? \ | and a blank
// or '.' as the last character. Without repair the first bad character returns 0 and the name is
// untouched; with repair every bad character becomes '_' and the result is 0 if any did.
TQKERNEL_API int TqValidateFileName(wchar_t* name, BOOL repair);
// Case-sensitive match; '*' runs to the next '.' or to the next occurrence of the character after
// it, whichever comes first, and never backs up. TRUE on a match.
TQKERNEL_API BOOL TqIsMatchWildCard(const wchar_t* pattern, const wchar_t* name);
// Digits compare as numbers.
TQKERNEL_API int TqFilenameLogicalCompare(const wchar_t* first, const wchar_t* second);

// The tail of path that base ends in too (compared without regard to case), starting at a whole
// folder or file name. Finds a moved file beneath a new root.
TQKERNEL_API const wchar_t* TqGetFileNamePtrRelative(const wchar_t* base, const wchar_t* path);
// The part of path in front of that tail, ending in '\'. E_FAIL if it does not fit.
TQKERNEL_API HRESULT TqGetBasePathRelative(const wchar_t* base, const wchar_t* path,
                                           wchar_t* buffer, int capacity);
// newBase followed by that tail: path moved beneath newBase. E_FAIL if it does not fit.
TQKERNEL_API HRESULT TqReplaceBasePathRelative(const wchar_t* base, const wchar_t* path,
                                               const wchar_t* newBase, wchar_t* buffer,
                                               int capacity);

// --- The system's path calls with a buffer of MAX_PATH characters (tqpathfile.cpp) ---
// Each returns the length of the result, 0 on failure.
TQKERNEL_API int TqGetLongPathName(const wchar_t* path, wchar_t* buffer);
TQKERNEL_API int TqGetFullPathName(const wchar_t* path, wchar_t* buffer);
// Both folders end in '\'.
TQKERNEL_API int TqGetTempPath(wchar_t* buffer);
TQKERNEL_API int TqGetModulePath(HMODULE module, wchar_t* buffer);
TQKERNEL_API int TqGetModuleFileName(HMODULE module, wchar_t* buffer);
// A full path for a name, found on the search path where it has no folder.
TQKERNEL_API int TqQualifyPath(const wchar_t* path, wchar_t* buffer);

// --- Files (tqpathfile.cpp) ---
TQKERNEL_API BOOL TqDoesFileExist(const wchar_t* path);
// Exists and opens for writing now.
TQKERNEL_API BOOL TqIsFileWritable(const wchar_t* path);
// The executable type word of the system's shell (0 for none): "MZ" or "PE" in the low word and
// the subsystem version in the high word.
TQKERNEL_API DWORD TqGetFileExecutableInfo(const wchar_t* path);
TQKERNEL_API BOOL TqIsFileExecutable(const wchar_t* path);
// -1 when the file cannot be queried.
TQKERNEL_API LONGLONG TqGetFileSizeByName(const wchar_t* path);
// Bytes free to the caller and bytes in all on the volume of path; -1 when it cannot be queried.
TQKERNEL_API LONGLONG TqGetDiskFreeSpace(const wchar_t* path);
TQKERNEL_API LONGLONG TqGetDiskTotalSpace(const wchar_t* path);
// The free space as a byte count text; returns its length, 0 on failure.
TQKERNEL_API int TqFormatDiskFreeSpace(const wchar_t* path, wchar_t* buffer, int capacity);
// The last write time of a file as a DOS date and time word, local or universal; with a null
// path the current time.
TQKERNEL_API HRESULT TqDosGetDateTime(const wchar_t* path, WORD* date, WORD* time);
TQKERNEL_API HRESULT TqDosGetDateTimeUTC(const wchar_t* path, WORD* date, WORD* time);
// The same as a local SYSTEMTIME.
TQKERNEL_API HRESULT TqGetDateTime(const wchar_t* path, SYSTEMTIME* time);

// Temporary files: folder (a '\' added where missing), prefix, a running number from 1 formatted
// by numberFormat ("%d" when null) and suffix. The file is created new and closed; a name that
// exists or is in use moves on to the next number. E_INVALIDARG for a null buffer, for none of
// folder, prefix and suffix, or when the name outgrows the capacity (buffer emptied).
TQKERNEL_API HRESULT TqCreateTempFileAndNameEx(const wchar_t* folder, const wchar_t* prefix,
                                               const wchar_t* suffix, const wchar_t* numberFormat,
                                               wchar_t* buffer, int capacity);
TQKERNEL_API HRESULT TqCreateTempFileAndName(const wchar_t* prefix, const wchar_t* suffix,
                                             wchar_t* buffer, int capacity);

// --- Folders (tqpathfolder.cpp) ---
// Creates every missing folder of path, one level after the other. A trailing '\' is allowed.
TQKERNEL_API HRESULT TqCreateDirectory(const wchar_t* path);
// Deletes the files in folder that match a wild-card pattern (TqIsMatchWildCard); returns how
// many were deleted.
TQKERNEL_API int TqDeleteFiles(const wchar_t* folder, const wchar_t* pattern);
// Deletes a folder with everything below it.
TQKERNEL_API HRESULT TqDeleteDirectoryTree(const wchar_t* folder);
// Only a move within one volume to a name that does not exist yet, and never into itself.
TQKERNEL_API BOOL TqCanMoveFolder(const wchar_t* from, const wchar_t* to);
TQKERNEL_API HRESULT TqMoveFolder(const wchar_t* from, const wchar_t* to);
// The bytes of all files below the folder.
TQKERNEL_API LONGLONG TqGetDirectorySize(const wchar_t* folder);
// A file can be created in it now.
TQKERNEL_API BOOL TqIsDirectoryWritable(const wchar_t* folder);
// No files or folders in it; the recursive form allows empty folders below.
TQKERNEL_API BOOL TqIsDirectoryEmpty(const wchar_t* folder);
TQKERNEL_API BOOL TqIsDirectoryEmptyRecursive(const wchar_t* folder);
// Cuts the last folder name (and a trailing '\'); returns the new length, 0 at the root.
TQKERNEL_API int TqDirectoryUpOneLevel(wchar_t* path);
// Creates parent\name, or "name 2", "name 3" ... if taken, and returns its path.
TQKERNEL_API HRESULT TqGetUniqueSubFolder(const wchar_t* parent, const wchar_t* name,
                                          wchar_t* buffer, int capacity);

// --- Special and shared folders (tqsystemfolder.cpp) ---
// A system folder with the product and version below it, created if needed, ending in '\'.
// Folders hidden by default get "Ostrel\<product>\<major>.<minor>\", the user's own visible ones
// only "<product>\<major>.<minor>\". capacity must be at least MAX_PATH.
TQKERNEL_API HRESULT TqGetSpecialFolderVer(wchar_t* buffer, int capacity, int csidl,
                                           const wchar_t* product, int major, int minor);
// The same without the version; the Company form leaves out the company's folder everywhere.
TQKERNEL_API HRESULT TqGetSpecialFolderNoVer(wchar_t* buffer, int capacity, int csidl,
                                             const wchar_t* product);
TQKERNEL_API HRESULT TqGetSpecialFolderNoVerNoCompany(wchar_t* buffer, int capacity, int csidl,
                                                      const wchar_t* product);
// False for the user's visible folders (documents, music, pictures, video, desktop, ...).
TQKERNEL_API BOOL TqIsHiddenFolderByDefault(int csidl);
// The folder shared by the company's programs, from the machine's settings, ending in '\'.
TQKERNEL_API HRESULT TqGetSharedComponentsFolder(wchar_t* buffer, int capacity);
// Needs administrator rights: 0x8004E142 when the key cannot be written.
TQKERNEL_API HRESULT TqSetSharedComponentsFolder(const wchar_t* folder);
// The user's preset folder of a product: the stored one, else the documents folder. Always S_OK.
TQKERNEL_API HRESULT TqGetPresetFolder(wchar_t* buffer, int capacity, DWORD version,
                                       const wchar_t* product);
TQKERNEL_API HRESULT TqSetPresetFolder(const wchar_t* folder, DWORD version,
                                       const wchar_t* product);

// --- Display forms (tqpathdisplay.cpp) ---
// Byte counts through TqFormatFileSize: the short form, and the one with the long word below a
// kilobyte. Return the length, 0 when it does not fit.
TQKERNEL_API int TqGetByteSizeText(LONGLONG size, wchar_t* buffer, int capacity);
TQKERNEL_API int TqGetByteSizeText2(LONGLONG size, wchar_t* buffer, int capacity);
// Cut text to a pixel width with "..." at the end, or at the front keeping the end.
TQKERNEL_API int TqCalcStringEllipsis(HDC dc, const wchar_t* text, wchar_t* result, int capacity,
                                      int width);
TQKERNEL_API int TqCalcStringEllipsisFromEnd(HDC dc, const wchar_t* text, wchar_t* result,
                                             int capacity, int width);
// Shortens the folders in front of the file name to fit width, as front + "..." + '\' + name.
// The file name is never cut: a path whose name alone does not fit comes back unchanged.
TQKERNEL_API int TqCalcPathEllipsisEx(HDC dc, const wchar_t* path, wchar_t* result, int capacity,
                                      int width);
// In place, on a path of up to 1300 characters in a buffer of capacity characters.
TQKERNEL_API int TqCalcPathEllipsis(HDC dc, wchar_t* path, int capacity, int width);
// With a window's font and client width.
TQKERNEL_API int TqCalcPathEllipsisExCtl(HWND window, const wchar_t* path, wchar_t* result,
                                         int capacity);
// Shorten a path for display: to a character count, to a control, to a pixel width.
TQKERNEL_API int TqFilenameFormat(const wchar_t* path, wchar_t* result, int capacity, int maxChars);
TQKERNEL_API int TqFilenameFormatForCtl(HWND window, const wchar_t* path, wchar_t* result,
                                        int capacity);
TQKERNEL_API int TqFilenameFormatForWidth(HDC dc, const wchar_t* path, wchar_t* result,
                                          int capacity, int width);
