// SessionText: the text box of a dialog whose text goes to the server in one frame. It takes as much as the
// server does, and the user is told what is too long: nothing is cut silently.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "os/desktop/Dialog.h"

class SessionText {
 public:
    // The box of that name, for as long as the dialog lives.
    SessionText(os::Dialog& dialog, std::string_view textBox);

    // From now on the text is meant for these screen names. What stands in the box stays.
    void IsFor(const std::vector<std::string>& screenNames);

    // Puts a stored text into the box. One that is too long stays where it is stored: the user is told, in a
    // sentence that begins with `what`, and false comes back.
    bool Open(const std::string& text, const std::string& what);

    // Whether the text can be sent; the user has been told if not. It may have been typed for another name.
    bool CanBeSent() const;

 private:
    os::Dialog& dialog_;
    std::string_view textBox_;
    std::size_t limit_;
};
