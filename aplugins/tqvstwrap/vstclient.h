// The client library a host links to reach plug-ins: in process, or in a server process of its
// own bitness or of 32 bits.
#pragma once

#include "tqvst.h"

enum TqVstLocation : int
{
    kTqVstInProcess = 0,
    kTqVstServer = 1,   // tqvstserver.exe beside the client module
    kTqVstServer32 = 2, // x86\tqvstserver.exe below the client module's folder
    // Added to a server location: the factory and its effects are the server's plain COM proxies,
    // and every Process block is a call of its own (see GetVstFactory).
    kTqVstPlainProxy = 0x100,
};

extern "C" {

// Gives a factory for the location, starting that location's server if none runs. The server's
// process id and the location's use count are reported when asked for (0 in process).
//
// A server location's effects are objects of the host's process: they answer every call through
// the server's proxy but Process, whose blocks travel through memory shared with the server; the
// server runs them on an audio thread of its own, with no call across processes per block. Results
// are the same as in process and as over plain calls. The host's master gets the time and tempo
// asked for before each block, on the thread that calls Process, and the callbacks an effect makes
// during a block (automation, edits, display updates) on that thread after the block, in order. A
// server that does not hand a block back within the process timeout (SetVstProcessTimeout) is
// ended: Process gives TQVST_E_TIMEOUT, as does every later call on that effect. Any other call on
// such an effect that takes five times as long ends the server the same way. A server that ends
// during a block gives 0x800706BE. With kTqVstPlainProxy added to the location, the factory and its
// effects are the server's plain COM proxies instead, and every block is a call of its own.
HRESULT GetVstFactory(int location, REFIID riid, void** object, const wchar_t* vendor,
                      const wchar_t* product, DWORD* serverProcessId, DWORD* useCount);
// Gives back a factory from GetVstFactory; the last one of a location retires its server.
HRESULT ReleaseVstFactory(int location, IUnknown* factory);
// Creates an effect where the file's machine type fits: a 64-bit plug-in in process, any other
// in the 32-bit server, whose effect takes its blocks through shared memory.
HRESULT CreateEffectForFile(const wchar_t* path, UINT32 uniqueId, REFIID riid, void** object);
// Makes the proxy/stub DLL's marshalling known to this process and apartment without any
// machine-wide registration.
HRESULT RegisterVstProxyStub(const wchar_t* path, DWORD* cookie);

// How long Process on a server's effect waits for the block to come back, for all effects of this
// process; 0 restores the default of 2000 ms.
void SetVstProcessTimeout(DWORD milliseconds);

// The class id that the location's current server registered under (all zero when none).
CLSID GetVstServerClassId(int location);
}
