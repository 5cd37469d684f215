// Finding the plug-in file inside a VST3 bundle folder.
#include "vst3bundle.h"

#include <windows.h>

#include <cwchar>

namespace tqhost {

bool IsVst3Path(const std::wstring& path)
{
    std::wstring name = path;
    while (!name.empty() && name.back() == L'\\')
        name.pop_back();
    return name.size() >= 5 && _wcsicmp(name.c_str() + name.size() - 5, L".vst3") == 0;
}

const wchar_t* BundleArchitecture(int location)
{
    // A 32-bit host loads 32-bit plug-ins wherever it loads them.
    const bool thirtyTwoBit = location == 2 || sizeof(void*) == 4;
    return thirtyTwoBit ? L"x86-win" : L"x86_64-win";
}

std::wstring ResolveVst3Bundle(const std::wstring& path, int location)
{
    if (!IsVst3Path(path)) return path;
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
        return path;
    std::wstring folder = path;
    while (folder.size() > 1 && folder.back() == L'\\')
        folder.pop_back();
    const size_t slash = folder.find_last_of(L"\\/:");
    const std::wstring name = slash == std::wstring::npos ? folder : folder.substr(slash + 1);
    return folder + L"\\Contents\\" + BundleArchitecture(location) + L"\\" + name;
}

} // namespace tqhost
