// The client library a host links to reach plug-ins: in process, or in a server process of its
// own bitness or of 32 bits.
#pragma once

#include "tqvst.h"

enum TqVstLocation : int
{
    kTqVstInProcess = 0,
    kTqVstServer = 1,   // tqvstserver.exe beside the client module
    kTqVstServer32 = 2, // x86\tqvstserver.exe below the client module's folder
};

extern "C" {

// Gives a factory for the location, starting that location's server if none runs. The server's
// process id and the location's use count are reported when asked for (0 in process).
HRESULT GetVstFactory(int location, REFIID riid, void** object, const wchar_t* vendor,
                      const wchar_t* product, DWORD* serverProcessId, DWORD* useCount);
// Gives back a factory from GetVstFactory; the last one of a location retires its server.
HRESULT ReleaseVstFactory(int location, IUnknown* factory);
// Creates an effect where the file's machine type fits: a 64-bit plug-in in process, any other
// in the 32-bit server.
HRESULT CreateEffectForFile(const wchar_t* path, UINT32 uniqueId, REFIID riid, void** object);
// Makes the proxy/stub DLL's marshalling known to this process and apartment without any
// machine-wide registration.
HRESULT RegisterVstProxyStub(const wchar_t* path, DWORD* cookie);

// The class id that the location's current server registered under (all zero when none).
CLSID GetVstServerClassId(int location);
}
