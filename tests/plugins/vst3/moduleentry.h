// InitDll and ExitDll that both succeed, for a test plug-in that exports them as most modules do.
#pragma once

extern "C" __declspec(dllexport) bool InitDll()
{
    return true;
}

extern "C" __declspec(dllexport) bool ExitDll()
{
    return true;
}
