// VST3 plug-ins come as a single .vst3 file or as a .vst3 bundle folder that holds one such file
// per architecture. The server takes files only; the command-line host finds the file inside.
#pragma once

#include <string>

namespace tqhost {

// True for a path ending in ".vst3", in any case: a VST3 plug-in, file or bundle.
bool IsVst3Path(const std::wstring& path);

// The architecture folder of a bundle for the process that will load the plug-in: "x86-win"
// for the 32-bit server and for every place a 32-bit host loads in, "x86_64-win" otherwise.
const wchar_t* BundleArchitecture(int location);

// For a .vst3 bundle folder X.vst3, the file X.vst3\Contents\<architecture>\X.vst3 inside it,
// whether that exists or not, so a bundle without the architecture fails to load by the usual
// "file not found"; every other path comes back as it is. A trailing backslash is ignored.
std::wstring ResolveVst3Bundle(const std::wstring& path, int location);

} // namespace tqhost
