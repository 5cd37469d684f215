// Tests of temporary files, file queries and folder operations in a folder of the test's own.
#include "tqpath.h"

#include "support/testpaths.h"
#include "uniquehandle.h"

#include <gtest/gtest.h>

#include <string>

namespace {

void WriteFile(const std::wstring& path, DWORD bytes)
{
    tq::UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(file);
    std::string data(bytes, 'x');
    DWORD written = 0;
    ::WriteFile(file.Get(), data.data(), bytes, &written, nullptr);
}

TEST(TempFiles, RunningNumberSkipsFilesThatExist)
{
    tqtest::TempFolder folder;
    WriteFile(folder.File(L"tmp1.dat"), 1);
    wchar_t name[MAX_PATH];
    ASSERT_EQ(
        TqCreateTempFileAndNameEx(folder.Path().c_str(), L"tmp", L".dat", nullptr, name, MAX_PATH),
        S_OK);
    EXPECT_EQ(std::wstring(name), folder.File(L"tmp2.dat"));
    EXPECT_EQ(TqGetFileSizeByName(name), 0); // created empty

    // A folder given with its '\', and a number format of the caller's.
    ASSERT_EQ(TqCreateTempFileAndNameEx((folder.Path() + L"\\").c_str(), L"t", nullptr, L"%03d",
                                        name, MAX_PATH),
              S_OK);
    EXPECT_EQ(std::wstring(name), folder.File(L"t001"));
    ASSERT_EQ(
        TqCreateTempFileAndNameEx(folder.Path().c_str(), L"t", nullptr, L"%03d", name, MAX_PATH),
        S_OK);
    EXPECT_EQ(std::wstring(name), folder.File(L"t002"));
}

TEST(TempFiles, ArgumentAndCapacityFailures)
{
    tqtest::TempFolder folder;
    wchar_t name[MAX_PATH] = L"untouched";
    EXPECT_EQ(TqCreateTempFileAndNameEx(nullptr, L"", nullptr, nullptr, name, MAX_PATH),
              E_INVALIDARG);
    EXPECT_EQ(TqCreateTempFileAndNameEx(folder.Path().c_str(), L"t", L".x", nullptr, nullptr, 9),
              E_INVALIDARG);
    // Room for the folder but not for the name: the buffer comes back empty.
    const int capacity = static_cast<int>(folder.Path().size()) + 4;
    EXPECT_EQ(
        TqCreateTempFileAndNameEx(folder.Path().c_str(), L"tmp", L".dat", nullptr, name, capacity),
        E_INVALIDARG);
    EXPECT_STREQ(name, L"");
    // A number format without a number cannot move on from an existing name.
    ASSERT_EQ(
        TqCreateTempFileAndNameEx(folder.Path().c_str(), L"same", nullptr, L"x", name, MAX_PATH),
        S_OK);
    EXPECT_TRUE(FAILED(
        TqCreateTempFileAndNameEx(folder.Path().c_str(), L"same", nullptr, L"x", name, MAX_PATH)));
    // A folder that does not exist is the system's error, not a loop.
    EXPECT_TRUE(FAILED(TqCreateTempFileAndNameEx(folder.File(L"missing").c_str(), L"t", nullptr,
                                                 nullptr, name, MAX_PATH)));
}

TEST(FileQueries, ExistenceSizeWritabilityAndTime)
{
    tqtest::TempFolder folder;
    const std::wstring file = folder.File(L"data.bin");
    EXPECT_FALSE(TqDoesFileExist(file.c_str()));
    EXPECT_EQ(TqGetFileSizeByName(file.c_str()), -1);
    WriteFile(file, 1234);
    EXPECT_TRUE(TqDoesFileExist(file.c_str()));
    EXPECT_FALSE(TqDoesFileExist(folder.Path().c_str())); // a folder is no file
    EXPECT_EQ(TqGetFileSizeByName(file.c_str()), 1234);
    EXPECT_TRUE(TqIsFileWritable(file.c_str()));
    SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(TqIsFileWritable(file.c_str()));
    SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);

    // The file was just written: its time and now share a day.
    WORD fileDate = 0, fileTime = 0, nowDate = 0, nowTime = 0;
    ASSERT_EQ(TqDosGetDateTime(file.c_str(), &fileDate, &fileTime), S_OK);
    ASSERT_EQ(TqDosGetDateTime(nullptr, &nowDate, &nowTime), S_OK);
    EXPECT_EQ(fileDate, nowDate);
    SYSTEMTIME when;
    ASSERT_EQ(TqGetDateTime(file.c_str(), &when), S_OK);
    EXPECT_EQ((when.wYear - 1980) << 9 | when.wMonth << 5 | when.wDay, fileDate);
    EXPECT_TRUE(FAILED(TqDosGetDateTimeUTC(folder.File(L"none").c_str(), &fileDate, &fileTime)));
}

TEST(FileQueries, ExecutablesAndDisks)
{
    wchar_t self[MAX_PATH];
    ASSERT_GT(TqGetModuleFileName(nullptr, self), 0);
    EXPECT_TRUE(TqIsFileExecutable(self));
    EXPECT_EQ(LOWORD(TqGetFileExecutableInfo(self)), 0x4550); // "PE"
    tqtest::TempFolder folder;
    WriteFile(folder.File(L"plain.txt"), 10);
    EXPECT_FALSE(TqIsFileExecutable(folder.File(L"plain.txt").c_str()));

    const LONGLONG total = TqGetDiskTotalSpace(folder.Path().c_str());
    const LONGLONG free = TqGetDiskFreeSpace(folder.File(L"plain.txt").c_str());
    EXPECT_GT(total, 0);
    EXPECT_GE(free, 0);
    EXPECT_LE(free, total);
    wchar_t text[32];
    EXPECT_GT(TqFormatDiskFreeSpace(folder.Path().c_str(), text, 32), 0);
}

TEST(SystemPaths, ModuleAndTempFoldersEndInASlash)
{
    wchar_t folder[MAX_PATH], file[MAX_PATH], full[MAX_PATH];
    const int length = TqGetModulePath(nullptr, folder);
    ASSERT_GT(length, 0);
    EXPECT_EQ(folder[length - 1], L'\\');
    TqGetModuleFileName(nullptr, file);
    EXPECT_EQ(std::wstring(file).rfind(folder, 0), 0u);
    ASSERT_GT(TqGetTempPath(folder), 0);
    EXPECT_EQ(folder[lstrlenW(folder) - 1], L'\\');
    ASSERT_GT(TqGetFullPathName(L"C:\\a\\..\\b\\.\\c.txt", full), 0);
    EXPECT_STREQ(full, L"C:\\b\\c.txt");
}

TEST(Folders, CreateMeasureEmptyAndDelete)
{
    tqtest::TempFolder folder;
    const std::wstring deep = folder.File(L"a\\b\\c");
    ASSERT_EQ(TqCreateDirectory((deep + L"\\").c_str()), S_OK);
    EXPECT_EQ(TqCreateDirectory(deep.c_str()), S_OK); // existing is fine
    EXPECT_TRUE(TqIsDirectoryEmpty(deep.c_str()));
    EXPECT_FALSE(TqIsDirectoryEmpty(folder.File(L"a").c_str()));
    EXPECT_TRUE(TqIsDirectoryEmptyRecursive(folder.File(L"a").c_str()));
    EXPECT_TRUE(TqIsDirectoryWritable(deep.c_str()));
    EXPECT_TRUE(TqIsDirectoryEmpty(deep.c_str())); // the probe left nothing behind

    WriteFile(deep + L"\\one.wav", 100);
    WriteFile(folder.File(L"a\\b\\two.wav"), 20);
    WriteFile(folder.File(L"a\\b\\two.txt"), 3);
    EXPECT_FALSE(TqIsDirectoryEmptyRecursive(folder.File(L"a").c_str()));
    EXPECT_EQ(TqGetDirectorySize(folder.File(L"a").c_str()), 123);

    EXPECT_EQ(TqDeleteFiles(folder.File(L"a\\b").c_str(), L"*.wav"), 1);
    EXPECT_TRUE(TqDoesFileExist(folder.File(L"a\\b\\two.txt").c_str()));
    SetFileAttributesW((deep + L"\\one.wav").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(TqDeleteDirectoryTree(folder.File(L"a").c_str()), S_OK);
    EXPECT_EQ(GetFileAttributesW(folder.File(L"a").c_str()), INVALID_FILE_ATTRIBUTES);
    // A file in the way of a level is reported.
    WriteFile(folder.File(L"f"), 1);
    EXPECT_TRUE(FAILED(TqCreateDirectory(folder.File(L"f\\g").c_str())));
}

TEST(Folders, MovesStayOnTheVolumeAndNeverGoIntoThemselves)
{
    tqtest::TempFolder folder;
    const std::wstring from = folder.File(L"from");
    ASSERT_EQ(TqCreateDirectory((from + L"\\inner").c_str()), S_OK);
    EXPECT_FALSE(TqCanMoveFolder(from.c_str(), (from + L"\\inner\\x").c_str()));
    EXPECT_FALSE(TqCanMoveFolder(from.c_str(), (from + L"\\inner").c_str())); // exists
    EXPECT_FALSE(TqCanMoveFolder(folder.File(L"none").c_str(), folder.File(L"to").c_str()));
    EXPECT_TRUE(TqCanMoveFolder(from.c_str(), folder.File(L"from2").c_str())); // a prefix only
    ASSERT_EQ(TqMoveFolder(from.c_str(), folder.File(L"to").c_str()), S_OK);
    EXPECT_TRUE(TqIsDirectoryEmpty(folder.File(L"to\\inner").c_str()));
    EXPECT_EQ(TqMoveFolder(from.c_str(), folder.File(L"again").c_str()), E_FAIL);
    TqDeleteDirectoryTree(folder.File(L"to").c_str());
}

TEST(Folders, UniqueSubFoldersAndGoingUp)
{
    tqtest::TempFolder folder;
    wchar_t made[MAX_PATH];
    ASSERT_EQ(TqGetUniqueSubFolder(folder.Path().c_str(), L"Take", made, MAX_PATH), S_OK);
    EXPECT_EQ(std::wstring(made), folder.File(L"Take"));
    ASSERT_EQ(TqGetUniqueSubFolder(folder.Path().c_str(), L"Take", made, MAX_PATH), S_OK);
    EXPECT_EQ(std::wstring(made), folder.File(L"Take 2"));
    RemoveDirectoryW(folder.File(L"Take").c_str());
    RemoveDirectoryW(folder.File(L"Take 2").c_str());

    struct UpCase
    {
        const wchar_t* path;
        const wchar_t* up;
        int length;
    };
    const UpCase cases[] = {
        {L"C:\\a\\b\\", L"C:\\a\\", 5},
        {L"C:\\a\\b", L"C:\\a\\", 5},
        {L"C:\\a", L"C:\\", 3},
        {L"C:\\", L"C:\\", 0},
        {L"\\\\srv\\share\\x", L"\\\\srv\\share\\", 12},
        {L"\\\\srv\\share\\", L"\\\\srv\\share\\", 0},
    };
    for (const UpCase& c : cases)
    {
        wchar_t path[MAX_PATH];
        lstrcpyW(path, c.path);
        EXPECT_EQ(TqDirectoryUpOneLevel(path), c.length) << c.path;
        EXPECT_STREQ(path, c.up);
    }
}

} // namespace
