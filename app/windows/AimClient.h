// AimClient: the part of modSystem that sets the AIM client up, restarts it, and asks the user about both.
#pragma once

#include "base/Event.h"
#include "features/connections/SignOnVerdict.h"

namespace modSystem {

// Points the AIM client's proxy settings at us, if the setting "setupaim" is "1" or bForce is set and they
// are not already; a running client is restarted after asking. The values from before are kept, unless they
// led to us themselves.
void SetupAim(bool bForce);

// Looks whether the client runs and is set up. Asks the system for its processes: not for every frame.
void LookAtClient(ClientFacts& facts);

// Gives the client the proxy values back that were kept, or switches its proxy off when there are none, if
// "revertsettings" is "1" or bForce is set, and restarts it. With bWriteOnly the client is left alone and
// nothing is asked: for the end of a Windows session and for "Panic!".
void RevertSettings(bool bForce, bool bWriteOnly = false);

// The program ends: whatever has begun above and waits in a box or for the clock does nothing more to the
// client when it goes on. What begins later is not meant.
void CallOffWork();

// The program is to end, because the menu or "Panic!" says so; false: without asking the user anything. The
// main form listens.
extern Event<bool> EndRequest;

// Closes all connections, ends the AIM client and, unless bNoRestart, opens it again. Asks and tells the user
// at each step unless bSilent.
void RestartAIM(bool bNoRestart, bool bSilent);

// The message that explains a missing sign-on; without its text if bNoText.
void doErr(bool bNoText);

}  // namespace modSystem
