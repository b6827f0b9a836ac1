// Messages: the message queue of the test's own thread, for tests that stand where the program's loop would.
#pragma once

#include <functional>

// Handles the window messages that wait, those of dialogs too.
void HandleMessages();

// Handles messages until the answer is yes; false when patience (10 s) is over.
bool HandleMessagesUntil(const std::function<bool()>& answer);
