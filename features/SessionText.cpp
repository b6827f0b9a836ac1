#include "features/SessionText.h"

#include "os/MessageBox.h"

void LimitToSessionText(os::Dialog& dialog, os::ControlId textBox) {
    dialog.LimitText(textBox, kLongestText);
    dialog.OnFull(textBox, [] {
        os::ShowMessageBox("The text can be at most 65,000 characters long. What goes beyond was left out.",
                           os::kApplicationTitle, os::BoxIcon::Warning);
    });
}

bool CheckSessionText(const std::string& text) {
    if (text.size() <= kLongestText) return true;
    os::ShowMessageBox("The text can be at most 65,000 characters long. Please shorten it.",
                       os::kApplicationTitle, os::BoxIcon::Warning);
    return false;
}
