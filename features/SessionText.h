// SessionText: how long a text may be that goes to the server in one frame, and how the user is told. Nothing
// is cut silently.
#pragma once

#include <cstddef>
#include <string>

#include "os/Dialog.h"

// In bytes; leaves room for what stands around a text in its frame.
inline constexpr std::size_t kLongestText = 65'000;

// Lets the text box take so much, and tells the user when more was pasted.
void LimitToSessionText(os::Dialog& dialog, os::ControlId textBox);

// Whether the text can be sent; the user has been told if not. For texts that came out of a file.
bool CheckSessionText(const std::string& text);
