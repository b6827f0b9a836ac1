// FakeFileDialogs: the save dialogs that the program under test opens, and what the user does in them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "os/FileDialogs.h"

namespace os::fake {

struct AskedSaveFile {
    WindowHandle owner;
    std::string title;
    std::string proposedName;
};

// All save dialogs since the last reset, oldest first.
const std::vector<AskedSaveFile>& AskedSaveFiles();

// The path that save dialogs answer from now on; nothing, as in the beginning, is Cancel.
void AnswerSaveFile(std::optional<std::string> path);

// Runs inside every save dialog while it is "open".
void SetDuringSaveFile(std::function<void()> action);

void ResetFileDialogs();

}  // namespace os::fake
