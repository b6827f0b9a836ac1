// MessageBox: a question or a piece of news in a box of the system, which waits for the answer.
//
// The box pumps messages: sockets, timers and other windows go on while it is open. So a caller keeps no
// half-done frame, no iterator and no reference across it, and looks again at what it knew before.
#pragma once

#include <string>

namespace os {

inline constexpr const char* kApplicationTitle = "Wrenlow";

enum class BoxIcon { None, Information, Question, Warning, Error };
enum class BoxButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class BoxResult { Ok, Cancel, Yes, No };

// Shows the box before the program's active window, or alone in the foreground when there is none. Lines are
// separated by CR LF. Esc and the close mark answer Cancel (Ok when that is the only button; nothing where
// there are Yes and No alone). A box that cannot be shown answers as if it had been closed.
BoxResult ShowMessageBox(const std::string& text, const std::string& title = kApplicationTitle,
                         BoxIcon icon = BoxIcon::None, BoxButtons buttons = BoxButtons::Ok);

}  // namespace os
