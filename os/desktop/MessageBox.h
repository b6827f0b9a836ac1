// MessageBox: a question or a piece of news in a box of the system, which waits for the answer.
//
// The box pumps messages: sockets, timers and other windows go on while it is open. So a caller keeps no
// half-done frame, no iterator and no reference across it, and looks again at what it knew before.
#pragma once

#include <string>
#include <utility>

#include "os/desktop/WindowHandle.h"

namespace os {

inline constexpr const char* kApplicationTitle = "Wrenlow";

enum class BoxIcon { None, Information, Question, Warning, Error };
enum class BoxButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class BoxResult { Ok, Cancel, Yes, No };

// Shows the box in the foreground, before the window that caused it (see BoxesBefore), which cannot be used
// meanwhile; keys go on working in all others. Lines are separated by CR LF. Esc and the close mark answer
// Cancel (Ok when that is the only button; nothing where there are Yes and No alone). A box that cannot be
// shown answers as if it had been closed. News (a box with Ok alone) that is on the screen already is brought
// to the front and not shown twice; Ok comes back at once then.
BoxResult ShowMessageBox(const std::string& text, const std::string& title = kApplicationTitle,
                         BoxIcon icon = BoxIcon::None, BoxButtons buttons = BoxButtons::Ok);

// While it exists boxes belong to this window, as those do that a dialog's handler shows without it (a box of
// a closed dialog, or without any, belongs to the main window). What comes in through a box's own loop is
// caused by nobody until it says otherwise. One lies within the other, as scopes do.
class BoxesBefore {
 public:
    explicit BoxesBefore(WindowHandle window) : outer_(std::exchange(current_, window)) {}
    ~BoxesBefore() { current_ = outer_; }
    BoxesBefore(const BoxesBefore&) = delete;
    BoxesBefore& operator=(const BoxesBefore&) = delete;

    static WindowHandle Current() { return current_; }

 private:
    static inline WindowHandle current_ = 0;
    WindowHandle outer_;
};

}  // namespace os
