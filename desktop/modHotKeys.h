// modHotKeys: the words of the hotkey feature (names of keys and modifiers, actions that a hotkey can set
// off), the stored list of hotkeys, and what a press does.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/RuntimeError.h"
#include "desktop/cRegHotKey.h"
#include "os/desktop/Dialog.h"
#include "os/desktop/WindowHandle.h"

namespace modHotKeys {

enum class KeyKind { Key = 0, Modifier = 1 };

// Makes `hotKeys`, which the main window owns, the program's hotkeys and attaches them to that window.
void InitHotKeys(cRegHotKey& hotKeys, os::WindowHandle mainWindow);

// Drops every registered key and forgets the instance. Idempotent.
void ReleaseHotKeys();

// Fills a drop-down list with the names of one kind, after "(none)" if asked for, and chooses the first.
void FillKeyCombo(os::Dialog& dialog, os::ControlId combo, KeyKind kind, bool addNone);

// Fills a drop-down list with the descriptions of the actions and chooses the first.
void FillActionCombo(os::Dialog& dialog, os::ControlId combo);

// Of the action with that description; false and empty when there is none.
bool ActionNeedsText(std::string_view description);
std::string ActionNameOf(std::string_view description);

// The virtual-key code or modifier bit of a name; 0 for "(none)" and for an unknown name.
std::uint32_t KeyCodeOf(std::string_view name, KeyKind kind);

struct Combination {
    std::uint32_t modifiers = 0;
    std::uint32_t key = 0;
};

// "Ctrl+Alt+Page Down" taken apart: the last piece is the key, the others are modifiers.
Combination ParseCombination(std::string_view text);

struct StoredHotkey {
    std::string combination;
    std::string action;
    std::string text;
};

// The stored hotkeys; writes their number as "0" when it is missing. A list that ends early is taken as far
// as it goes.
std::vector<StoredHotkey> LoadHotkeys();
void SaveHotkeys(const std::vector<StoredHotkey>& hotkeys);

// Registers the hotkeys in place of all that were registered; none when `enabled` is false. Every one is
// tried. What comes back, if some could not be registered, names each with the reason; its number is that of
// the first. Throws RuntimeError (ObjectNotSet) before InitHotKeys.
std::optional<RuntimeError> RegisterHotkeys(const std::vector<StoredHotkey>& hotkeys, bool enabled);

// Carries out the action of a pressed hotkey; `text` is the away message of "Set Away". Any unknown name
// does nothing, and so does a press within a second of the last one of the same action, or while what that
// one has set off waits in a box.
void RunHotKeyAction(const std::string& actionName, const std::string& text);

}  // namespace modHotKeys
