// Keeps the interfaces a host hands to its servers registered with the platform's call runtime
// for the host's whole life.
#pragma once

#include <windows.h>

namespace tqvst {

// The platform registers an interface for calls with its first stub in a process and, with its
// last, unregisters it and waits for the calls on it to end. Under Wine that wait misses its
// wake-up when the call it waits for has just been answered: the runtime sends the answer before
// it counts the call as ended. A host meets this when a server lets go of the host's master (or of
// a preset stream) right after calling it, as when a plug-in's own thread calls back while its
// effect closes, and again when the host's apartment ends right after such a release; the host
// then hangs in the release for ever, and the server with it. Stubs of these interfaces kept for
// the process's life in its multithreaded apartment, which they keep alive, take every such wait
// away. Once per process; proxyStub is the proxy/stub DLL, which that apartment must know too.
void AnchorHostInterfaces(const wchar_t* proxyStub);

} // namespace tqvst
