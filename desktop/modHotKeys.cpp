#include "desktop/modHotKeys.h"

#include <algorithm>
#include <map>

#include "app/services/modRegistry.h"
#include "app/windows/AimClient.h"
#include "app/windows/SharedForm.h"
#include "base/Text.h"
#include "features/dialogs/RemoveForm.h"
#include "features/dialogs/frmAway.h"
#include "os/Clock.h"
#include "os/desktop/MessageBox.h"

namespace modHotKeys {
namespace {

constexpr const char* kHotkeysKey = "software\\Wrenlow\\hotkeys\\";

struct KeyName {
    std::string name;
    KeyKind kind;
    std::uint32_t code;
};

struct Action {
    std::string_view description;
    std::string_view name;
    bool needsText;
};

constexpr Action kActions[] = {
    {"Set away message", "Set Away", true},
    {"Clear away message", "Clear Away", false},
    {"Panic! (Shut down AIM and Wrenlow)", "Panic!", false},
};

cRegHotKey* programHotKeys = nullptr;
os::WindowHandle mainWindowHandle = 0;

// Codes are virtual-key codes. Print Screen is bound to 42 (VK_PRINT) and not to the snapshot key 44, so
// stored hotkeys keep their meaning.
std::vector<KeyName> BuildKeyTable() {
    std::vector<KeyName> table = {
        {"Backspace", KeyKind::Key, 8},     {"Tab", KeyKind::Key, 9},
        {"Enter", KeyKind::Key, 13},        {"Caps Lock", KeyKind::Key, 20},
        {"Esc", KeyKind::Key, 27},          {"Spacebar", KeyKind::Key, 32},
        {"Page Up", KeyKind::Key, 33},      {"Page Down", KeyKind::Key, 34},
        {"End", KeyKind::Key, 35},          {"Home", KeyKind::Key, 36},
        {"Left Arrow", KeyKind::Key, 37},   {"Up Arrow", KeyKind::Key, 38},
        {"Right Arrow", KeyKind::Key, 39},  {"Down Arrow", KeyKind::Key, 40},
        {"Print Screen", KeyKind::Key, 42}, {"Ins", KeyKind::Key, 45},
        {"Del", KeyKind::Key, 46},          {"Num Lock", KeyKind::Key, 144},
    };
    const auto addCharacters = [&](char first, char last) {
        for (char c = first; c <= last; ++c) {
            table.push_back({std::string(1, c), KeyKind::Key, static_cast<std::uint32_t>(c)});
        }
    };
    addCharacters('A', 'Z');
    addCharacters('0', '9');
    for (std::uint32_t code = 112; code <= 123; ++code) {
        table.push_back({"F" + std::to_string(code - 111), KeyKind::Key, code});
    }
    table.push_back({"Alt", KeyKind::Modifier, os::HotkeyModifier::Alt});
    table.push_back({"Ctrl", KeyKind::Modifier, os::HotkeyModifier::Ctrl});
    table.push_back({"Shift", KeyKind::Modifier, os::HotkeyModifier::Shift});
    table.push_back({"Win", KeyKind::Modifier, os::HotkeyModifier::Win});
    return table;
}

const std::vector<KeyName>& KeyTable() {
    static const auto table = BuildKeyTable();
    return table;
}

const Action* FindAction(std::string_view description) {
    const auto found = std::find_if(std::begin(kActions), std::end(kActions),
                                    [&](const Action& action) { return action.description == description; });
    return found == std::end(kActions) ? nullptr : found;
}

std::string ReadHotkeyValue(const std::string& name) {
    return modRegistry::QueryValue(os::RegistryHive::CurrentUser, kHotkeysKey, name);
}

void WriteHotkeyValue(const std::string& name, const std::string& data) {
    modRegistry::SetValue(os::RegistryHive::CurrentUser, kHotkeysKey, name, data, os::RegistryType::String);
}

// A key that is held down repeats where the system cannot be asked not to: a press counts when the last one
// of the same action is a second ago, and what that has set off, a box perhaps, is over.
class Press {
 public:
    explicit Press(const std::string& action) : action_(pressed[action]) {
        const auto now = os::MonotonicMilliseconds();
        const bool isRepeated = action_.last && now - *action_.last < kRepeatMs;
        counts_ = !isRepeated && !action_.isRunning;
        action_.last = now;
        if (counts_) action_.isRunning = true;
    }
    ~Press() {
        if (counts_) action_.isRunning = false;
    }
    Press(const Press&) = delete;
    Press& operator=(const Press&) = delete;

    bool Counts() const { return counts_; }

    struct Action {
        std::optional<std::int64_t> last;  // also of a press that did not count
        bool isRunning = false;
    };
    static inline std::map<std::string, Action> pressed;

 private:
    static constexpr std::int64_t kRepeatMs = 1000;

    Action& action_;
    bool counts_ = false;
};

// The system's texts end in a line break, which would tear our sentence apart.
std::string WithoutLineBreaks(std::string text) {
    std::erase_if(text, [](char c) { return c == '\r' || c == '\n'; });
    return text;
}

}  // namespace

void InitHotKeys(cRegHotKey& hotKeys, os::WindowHandle mainWindow) {
    programHotKeys = &hotKeys;
    mainWindowHandle = mainWindow;
    Press::pressed.clear();
    hotKeys.Clear();
    hotKeys.Attach(mainWindow);
}

void ReleaseHotKeys() {
    if (programHotKeys != nullptr) programHotKeys->Clear();
    programHotKeys = nullptr;
}

void FillKeyCombo(os::Dialog& dialog, os::ControlId combo, KeyKind kind, bool addNone) {
    dialog.ClearEntries(combo);
    if (addNone) dialog.AddEntry(combo, "(none)");
    for (const auto& key : KeyTable()) {
        if (key.kind == kind) dialog.AddEntry(combo, key.name);
    }
    dialog.SetValue(combo, 0);
}

void FillActionCombo(os::Dialog& dialog, os::ControlId combo) {
    dialog.ClearEntries(combo);
    for (const auto& action : kActions) dialog.AddEntry(combo, std::string(action.description));
    dialog.SetValue(combo, 0);
}

bool ActionNeedsText(std::string_view description) {
    const auto* action = FindAction(description);
    return action != nullptr && action->needsText;
}

std::string ActionNameOf(std::string_view description) {
    const auto* action = FindAction(description);
    return action == nullptr ? std::string() : std::string(action->name);
}

std::uint32_t KeyCodeOf(std::string_view name, KeyKind kind) {
    const auto& table = KeyTable();
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&](const KeyName& key) { return key.name == name && key.kind == kind; });
    return found == table.end() ? 0 : found->code;
}

Combination ParseCombination(std::string_view text) {
    Combination combination;
    for (auto plus = text.find('+'); plus != text.npos; plus = text.find('+')) {
        combination.modifiers |= KeyCodeOf(text.substr(0, plus), KeyKind::Modifier);
        text.remove_prefix(plus + 1);
    }
    combination.key = KeyCodeOf(text, KeyKind::Key);
    return combination;
}

std::vector<StoredHotkey> LoadHotkeys() {
    const auto countText = ReadHotkeyValue("n");
    if (countText.empty()) WriteHotkeyValue("n", "0");
    const int count = ParseNumber<int>(countText).value_or(0);

    std::vector<StoredHotkey> hotkeys;
    for (int i = 1; i <= count; ++i) {
        const auto prefix = std::to_string(i);
        const auto combination = ReadHotkeyValue(prefix + "n");
        if (combination.empty()) break;
        hotkeys.push_back({combination, ReadHotkeyValue(prefix + "nt"), ReadHotkeyValue(prefix + "na")});
    }
    return hotkeys;
}

void SaveHotkeys(const std::vector<StoredHotkey>& hotkeys) {
    WriteHotkeyValue("n", std::to_string(hotkeys.size()));
    for (std::size_t i = 0; i < hotkeys.size(); ++i) {
        const auto prefix = std::to_string(i + 1);
        WriteHotkeyValue(prefix + "n", hotkeys[i].combination);
        WriteHotkeyValue(prefix + "nt", hotkeys[i].action);
        WriteHotkeyValue(prefix + "na", hotkeys[i].text);
    }
}

std::optional<RuntimeError> RegisterHotkeys(const std::vector<StoredHotkey>& hotkeys, bool enabled) {
    if (programHotKeys == nullptr) ThrowObjectNotSet();
    programHotKeys->Clear();
    if (!enabled) return std::nullopt;
    programHotKeys->Attach(mainWindowHandle);

    constexpr std::size_t kMaxNamed = 5;
    std::size_t count = 0;
    std::string failures;
    std::int32_t firstNumber = 0;
    for (const auto& hotkey : hotkeys) {
        const auto [modifiers, key] = ParseCombination(hotkey.combination);
        try {
            programHotKeys->RegisterKey(hotkey.action, key, modifiers, hotkey.text);
        } catch (const RuntimeError& error) {
            if (failures.empty()) firstNumber = error.Number();
            if (++count <= kMaxNamed)
                failures += "\r\n" + hotkey.combination + ": " + WithoutLineBreaks(error.what());
        }
    }
    if (count == 0) return std::nullopt;
    if (count > kMaxNamed) failures += "\r\nand " + std::to_string(count - kMaxNamed) + " more";
    return RuntimeError(firstNumber, "These hotkeys could not be registered:" + failures);
}

void RunHotKeyAction(const std::string& actionName, const std::string& text) {
    const Press press(actionName);
    if (!press.Counts()) return;
    const os::BoxesBefore cause(mainWindowHandle);
    if (actionName == "Set Away") SharedForm<frmAway>().Start(text);
    if (actionName == "Clear Away") SharedForm<frmUnAway>().Start(true);
    if (actionName == "Panic!") {
        modSystem::RestartAIM(true, true);
        modSystem::EndRequest(false);
    }
    // "Close IMs" of earlier versions may be stored; like any other name it does nothing.
}

}  // namespace modHotKeys
