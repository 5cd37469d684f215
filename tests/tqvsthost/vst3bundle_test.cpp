// VST3 bundle folders as the command-line host meets them: the file inside for each place a
// plug-in loads in, and a scan that finds bundles and single files alike without entering them.
#include "scancommand.h"
#include "support/testpaths.h"
#include "vst3bundle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

// A tree of folders and empty files under a fresh temporary folder, removed again at the end.
class Tree
{
public:
    ~Tree() { Remove(m_root.Path()); }

    std::wstring Folder(const std::wstring& relative)
    {
        std::wstring path = m_root.Path();
        for (size_t at = 0; at <= relative.size();)
        {
            const size_t end = std::min(relative.find(L'\\', at), relative.size());
            path += L"\\" + relative.substr(at, end - at);
            CreateDirectoryW(path.c_str(), nullptr);
            at = end + 1;
        }
        return path;
    }
    std::wstring File(const std::wstring& relative)
    {
        const size_t slash = relative.rfind(L'\\');
        const std::wstring folder =
            slash == std::wstring::npos ? m_root.Path() : Folder(relative.substr(0, slash));
        const std::wstring path =
            folder + L"\\" + (slash == std::wstring::npos ? relative : relative.substr(slash + 1));
        CloseHandle(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
        return path;
    }
    std::wstring Path(const std::wstring& relative) const
    {
        return m_root.Path() + L"\\" + relative;
    }
    const std::wstring& Root() const { return m_root.Path(); }

private:
    static void Remove(const std::wstring& folder)
    {
        WIN32_FIND_DATAW found;
        HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
        if (search == INVALID_HANDLE_VALUE) return;
        do
        {
            const std::wstring name = found.cFileName;
            if (name == L"." || name == L"..") continue;
            const std::wstring item = folder + L"\\" + name;
            if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
            {
                Remove(item);
                RemoveDirectoryW(item.c_str());
            }
            else
                DeleteFileW(item.c_str());
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }

    tqtest::TempFolder m_root;
};

constexpr int kInProcess = 0, kServer = 1, kServer32 = 2;

TEST(Vst3Bundle, TheFileInsideIsChosenForWhereThePluginLoads)
{
    Tree tree;
    const std::wstring bundle = tree.Folder(L"Gain.vst3");
    const std::wstring host = sizeof(void*) == 8 ? L"x86_64-win" : L"x86-win";
    EXPECT_EQ(tqhost::ResolveVst3Bundle(bundle, kServer),
              bundle + L"\\Contents\\" + host + L"\\Gain.vst3");
    EXPECT_EQ(tqhost::ResolveVst3Bundle(bundle, kInProcess),
              bundle + L"\\Contents\\" + host + L"\\Gain.vst3");
    EXPECT_EQ(tqhost::ResolveVst3Bundle(bundle, kServer32),
              bundle + L"\\Contents\\x86-win\\Gain.vst3");
    EXPECT_EQ(tqhost::ResolveVst3Bundle(bundle + L"\\", kServer32),
              bundle + L"\\Contents\\x86-win\\Gain.vst3")
        << "a trailing backslash is no part of the name";
    const std::wstring upper = tree.Folder(L"LOUD.VST3");
    EXPECT_EQ(tqhost::ResolveVst3Bundle(upper, kServer32),
              upper + L"\\Contents\\x86-win\\LOUD.VST3");
}

TEST(Vst3Bundle, EverythingElseIsServedAsItStands)
{
    Tree tree;
    for (const std::wstring& path :
         {tree.File(L"single.vst3"), tree.Path(L"missing.vst3"), tree.Folder(L"plain"),
          tree.File(L"gain.dll"), tree.Folder(L"notvst3.vst3x")})
        EXPECT_EQ(tqhost::ResolveVst3Bundle(path, kServer), path);
    EXPECT_TRUE(tqhost::IsVst3Path(L"C:\\a\\B.VsT3"));
    EXPECT_TRUE(tqhost::IsVst3Path(L"C:\\a\\B.vst3\\"));
    EXPECT_FALSE(tqhost::IsVst3Path(L"C:\\a\\vst3"));
    EXPECT_FALSE(tqhost::IsVst3Path(L".vst"));
}

TEST(Vst3Bundle, ScanFindsFilesAndBundlesButDoesNotEnterBundles)
{
    Tree tree;
    tree.File(L"b.dll");
    tree.File(L"readme.txt");
    tree.File(L"c.vst3");
    // A bundle with both architectures and a helper library of its own that is no plug-in.
    tree.File(L"A.vst3\\Contents\\x86_64-win\\A.vst3");
    tree.File(L"A.vst3\\Contents\\x86-win\\A.vst3");
    tree.File(L"A.vst3\\Contents\\Resources\\helper.dll");
    tree.File(L"sub\\d.vst3");
    tree.File(L"sub\\E.vst3\\Contents\\x86-win\\E.vst3");

    const std::vector<std::wstring> found = tqhost::FindPluginFiles(tree.Root(), kServer32);
    const std::vector<std::wstring> expected = {
        tree.Path(L"A.vst3\\Contents\\x86-win\\A.vst3"),
        tree.Path(L"b.dll"),
        tree.Path(L"c.vst3"),
        tree.Path(L"sub\\d.vst3"),
        tree.Path(L"sub\\E.vst3\\Contents\\x86-win\\E.vst3"),
    };
    EXPECT_EQ(found, expected);

    // The 64-bit file of a bundle that has none is listed all the same: loading it fails as a
    // missing file, and the user sees which bundle lacks it.
    if (sizeof(void*) == 8)
    {
        EXPECT_EQ(tqhost::FindPluginFiles(tree.Folder(L"sub"), kServer).back(),
                  tree.Path(L"sub\\E.vst3\\Contents\\x86_64-win\\E.vst3"));
    }
}

} // namespace
