// ApplySettings: puts the stored settings in force: the start with Windows, the hotkeys, the translucency.
#pragma once

#include <optional>

#include "base/RuntimeError.h"

// What comes back names the hotkeys that could not be registered; everything else is in force all the same.
std::optional<RuntimeError> ApplySettings();

// At the start of the program: stores the defaults that are missing and puts all in force. A failure is
// reported under "frmSettings:Apply".
void StartSettings();
