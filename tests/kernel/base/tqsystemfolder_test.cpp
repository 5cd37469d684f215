// Tests of special, shared and preset folders inside the test's own Wine prefix; every folder,
// value and key a test makes is removed again.
#include "tqpath.h"

#include "uniquehandle.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <string>

namespace {

// A product name no real program uses, so the folders and keys made are the test's own.
std::wstring TestProduct()
{
    return L"TqPathTest" + std::to_wstring(GetCurrentProcessId());
}

std::wstring SystemFolder(int csidl)
{
    wchar_t path[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, csidl | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT, path);
    return path;
}

bool IsFolder(const std::wstring& path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

TEST(SpecialFolders, HiddenByDefaultTable)
{
    const int visible[] = {5, 12, 16, 25, 40, 46, 53, 54, 55};
    for (int csidl : visible)
    {
        EXPECT_FALSE(TqIsHiddenFolderByDefault(csidl)) << csidl;
        EXPECT_FALSE(TqIsHiddenFolderByDefault(csidl | CSIDL_FLAG_CREATE)) << csidl;
    }
    for (int csidl : {CSIDL_APPDATA, CSIDL_LOCAL_APPDATA, CSIDL_COMMON_APPDATA, 13, 0, 56})
        EXPECT_TRUE(TqIsHiddenFolderByDefault(csidl)) << csidl;
}

TEST(SpecialFolders, HiddenFoldersCarryTheCompanyAndAreCreated)
{
    const std::wstring product = TestProduct();
    wchar_t folder[MAX_PATH];
    ASSERT_EQ(TqGetSpecialFolderVer(folder, MAX_PATH, CSIDL_APPDATA, product.c_str(), 2, 5), S_OK);
    const std::wstring company = SystemFolder(CSIDL_APPDATA) + L"\\Ostrel\\" + product;
    EXPECT_EQ(std::wstring(folder), company + L"\\2.5\\");
    EXPECT_TRUE(IsFolder(folder));
    ASSERT_EQ(TqGetSpecialFolderNoVer(folder, MAX_PATH, CSIDL_APPDATA, product.c_str()), S_OK);
    EXPECT_EQ(std::wstring(folder), company + L"\\");
    EXPECT_EQ(TqDeleteDirectoryTree(company.c_str()), S_OK);
    RemoveDirectoryW((SystemFolder(CSIDL_APPDATA) + L"\\Ostrel").c_str()); // only if empty
}

TEST(SpecialFolders, VisibleFoldersGetNoCompany)
{
    const std::wstring product = TestProduct();
    wchar_t folder[MAX_PATH];
    ASSERT_EQ(TqGetSpecialFolderVer(folder, MAX_PATH, CSIDL_PERSONAL, product.c_str(), 1, 0), S_OK);
    const std::wstring own = SystemFolder(CSIDL_PERSONAL) + L"\\" + product;
    EXPECT_EQ(std::wstring(folder), own + L"\\1.0\\");
    EXPECT_TRUE(IsFolder(folder));
    ASSERT_EQ(TqGetSpecialFolderNoVerNoCompany(folder, MAX_PATH, CSIDL_APPDATA, product.c_str()),
              S_OK);
    EXPECT_EQ(std::wstring(folder), SystemFolder(CSIDL_APPDATA) + L"\\" + product + L"\\");
    EXPECT_EQ(TqDeleteDirectoryTree(own.c_str()), S_OK);
    EXPECT_EQ(TqDeleteDirectoryTree(folder), S_OK);
    EXPECT_EQ(TqGetSpecialFolderVer(folder, MAX_PATH - 1, CSIDL_PERSONAL, product.c_str(), 1, 0),
              E_INVALIDARG);
}

// The shared folder lives under the machine's settings; the prefix's earlier value is put back.
TEST(SharedFolders, WrittenValueReadsBackWithASlash)
{
    const wchar_t* key = L"Software\\Ostrel\\Shared Information";
    wchar_t saved[MAX_PATH] = {};
    DWORD size = sizeof(saved);
    const bool hadValue = RegGetValueW(HKEY_LOCAL_MACHINE, key, L"SharedComponentsFolder",
                                       RRF_RT_REG_SZ, nullptr, saved, &size) == ERROR_SUCCESS;
    HKEY probe = nullptr;
    const bool hadKey = RegOpenKeyExW(HKEY_LOCAL_MACHINE, key, 0, KEY_READ, &probe) == 0;
    tq::UniqueRegKey closeProbe(probe);

    ASSERT_EQ(TqSetSharedComponentsFolder(L"C:\\Shared\\Ostrel"), S_OK);
    wchar_t folder[MAX_PATH];
    ASSERT_EQ(TqGetSharedComponentsFolder(folder, MAX_PATH), S_OK);
    EXPECT_STREQ(folder, L"C:\\Shared\\Ostrel\\");
    EXPECT_EQ(TqGetSharedComponentsFolder(folder, 10), E_FAIL); // does not fit
    ASSERT_EQ(TqSetSharedComponentsFolder(L""), S_OK);
    EXPECT_EQ(TqGetSharedComponentsFolder(folder, MAX_PATH), E_FAIL); // empty

    if (hadValue)
        TqSetSharedComponentsFolder(saved);
    else if (hadKey)
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, key, L"SharedComponentsFolder");
    else
    {
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, key);
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, L"Software\\Ostrel"); // only if empty
    }
}

TEST(PresetFolder, StoredFolderElseDocuments)
{
    const std::wstring product = TestProduct();
    const DWORD version = 0x03020000; // 3.2
    wchar_t folder[MAX_PATH];
    EXPECT_EQ(TqGetPresetFolder(folder, MAX_PATH, version, product.c_str()), S_OK);
    EXPECT_EQ(std::wstring(folder), SystemFolder(CSIDL_PERSONAL));
    ASSERT_EQ(TqSetPresetFolder(L"D:\\Presets", version, product.c_str()), S_OK);
    EXPECT_EQ(TqGetPresetFolder(folder, MAX_PATH, version, product.c_str()), S_OK);
    EXPECT_STREQ(folder, L"D:\\Presets");

    const std::wstring keyPath = L"Software\\Ostrel\\" + product;
    wchar_t stored[MAX_PATH];
    DWORD size = sizeof(stored);
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, (keyPath + L"\\3.2\\Metrics").c_str(),
                           L"VSTPresetPath", RRF_RT_REG_SZ, nullptr, stored, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, keyPath.c_str()), ERROR_SUCCESS);
    RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\Ostrel"); // only if empty
}

} // namespace
