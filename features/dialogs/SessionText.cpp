#include "features/dialogs/SessionText.h"

#include "features/TextLimits.h"
#include "os/desktop/MessageBox.h"

namespace {

// With a comma before each three digits.
std::string Grouped(std::size_t number) {
    auto digits = std::to_string(number);
    for (auto end = digits.size(); end > 3; end -= 3) digits.insert(end - 3, ",");
    return digits;
}

void Warn(const std::string& text) {
    os::ShowMessageBox(text, os::kApplicationTitle, os::BoxIcon::Warning);
}

}  // namespace

SessionText::SessionText(os::Dialog& dialog, std::string_view textBox)
    : dialog_(dialog), textBox_(textBox), limit_(TextLimits::kUnsaid) {
    dialog_.OnFull(textBox_, [this] {
        Warn("The text can be at most " + Grouped(limit_) +
             " characters long. What goes beyond was left out.");
    });
}

void SessionText::IsFor(const std::vector<std::string>& screenNames) {
    limit_ = TextLimits::For(screenNames);
    dialog_.LimitText(textBox_, limit_);
}

bool SessionText::Open(const std::string& text, const std::string& what) {
    if (text.size() <= limit_) {
        dialog_.SetText(textBox_, text);
        return true;
    }
    Warn(what + " is longer than the " + Grouped(limit_) +
         " characters that the server takes. It is not opened here and stays as it is.");
    return false;
}

bool SessionText::CanBeSent() const {
    if (dialog_.Text(textBox_).size() <= limit_) return true;
    Warn("The text can be at most " + Grouped(limit_) + " characters long. Please shorten it.");
    return false;
}
