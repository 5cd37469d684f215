// Keeps the server's interfaces registered with the platform's call runtime for the server's
// whole life.
#pragma once

#include <windows.h>

namespace tqvst {

// The platform registers an interface for calls with its first stub and unregisters it, waiting
// for the calls on it to end, with its last. Under Wine that wait can miss its wake-up when an
// effect is let go right after a call, and the server's main thread then hangs in the release
// for ever. A stub that stays for the server's life keeps the effect's, the channel's and the
// factory's interfaces registered, so no release waits. Call on the main thread after COM is
// initialised.
void AnchorInterfaces();
void ReleaseInterfaceAnchors();

} // namespace tqvst
