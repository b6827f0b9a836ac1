// StartUp: the order in which the tray program starts and ends; the part of modSystem that stands above
// everything else.
#pragma once

#include <cstdint>
#include <string>

class frmMain;

namespace modSystem {

// Whether the program runs already in this session; then that is told, unless the command line is "d", and
// the caller ends.
bool IsSecondStart();

// The system's numbers for a port that cannot be listened on: WSAEADDRINUSE and WSAEACCES.
namespace ListenError {
inline constexpr std::int32_t kInUse = 10048;
inline constexpr std::int32_t kRefused = 10013;
}  // namespace ListenError

// What is told when the port cannot be listened on, by the system's error number: that somebody has it, or
// that the system itself keeps it.
std::string WhyPortIsRefused(std::int32_t number, std::uint16_t port);

// Starts everything, on behalf of the loaded main form. A failure is reported under "modSystem:StartWrenlow"
// and leaves the remaining steps undone; what has been started goes on.
void StartWrenlow(frmMain& form);

// How long the end waits for what is queued for the peers of closed connections. With all that has to be done
// besides, a Windows session is not held up for more than 2 s.
inline constexpr int kMaxEndMilliseconds = 1'500;

// Gives the AIM client its settings back, closes all connections and releases the hotkeys. With bAsk false
// nothing is asked and the AIM client is left running: the end of a Windows session does not wait for users.
// The settings come first, because a system that is in a hurry may end us before the rest is done.
void ShutDown(bool bAsk);

}  // namespace modSystem
