// FakeMessageBox: the boxes that the program under test shows, and the answers they get.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "os/desktop/MessageBox.h"
#include "os/fake/FakeWorld.h"

namespace os::fake {

struct MessageBoxes {
    struct Shown {
        std::string text;
        std::string title;
        BoxIcon icon;
        BoxButtons buttons;
        WindowHandle owner;  // the dialog that it is shown before; 0 for the main window
    };
    std::vector<Shown> shown;  // oldest first
    // Of the next boxes. One without an answer here is answered by its default button, Ok or Yes. An answer
    // that the box has no button for throws std::logic_error from ShowMessageBox.
    std::deque<BoxResult> answers;
    std::function<void()> during;   // runs inside every box while it is "open"
    std::vector<std::string> open;  // titles and texts
};
inline MessageBoxes& boxes = Fresh<MessageBoxes>();

}  // namespace os::fake
