// modError: the reporter of every trapped failure (base/Trap.h). Each report opens a window of its own
// (frmError); nothing is written to a file, and the program goes on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace modError {

// While so many windows are open further reports are dropped: a failure that comes back with every frame
// must not bury the user's screen.
inline constexpr std::size_t kMaxWindows = 20;

// An ErrorReporter. The window takes the keyboard only when a person has caused the failure, in a dialog or
// by a command (os::BoxesBefore): whoever types elsewhere when a frame fails would close it unread. Throws
// when the window cannot be made.
void ReportError(const std::string& description, std::int32_t number, const std::string& where,
                 std::int16_t line);

std::size_t OpenWindowCount();

// Discards every window. For the end of the program and of each test.
void DiscardWindows();

}  // namespace modError
