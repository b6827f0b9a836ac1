// StartUp: the order in which the tray program starts and ends; the part of modSystem that stands above
// everything else.
#pragma once

class frmMain;

namespace modSystem {

// Starts everything, on behalf of the loaded main form. A failure is reported under "modSystem:StartWrenlow"
// and leaves the remaining steps undone; what has been started goes on.
void StartWrenlow(frmMain& form);

// How long the end waits for what is queued for the peers of closed connections.
inline constexpr int kMostEndMilliseconds = 2'000;

// Closes all connections, gives the AIM client its settings back and releases the hotkeys. With bAsk false
// nothing is asked and the AIM client is left running: the end of a Windows session does not wait for users.
void ShutDown(bool bAsk);

}  // namespace modSystem
