#include "desktop/cRegHotKey.h"

#include <algorithm>
#include <random>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "os/Files.h"
#include "os/desktop/Foreground.h"
#include "os/desktop/TopWindows.h"

namespace {

constexpr std::size_t kMaxName = 32;
constexpr std::size_t kMaxAtom = 254;

// Identifiers that the system itself uses for its snapshot keys (IDHOT_SNAPDESKTOP, IDHOT_SNAPWINDOW).
constexpr std::int32_t kDesktopSnapshot = -2;
constexpr std::int32_t kWindowSnapshot = -1;
constexpr std::uint32_t kSnapshotKey = 44;
// What is reported for a window snapshot; the key that makes one is Alt, but 4 is what listeners know.
constexpr std::uint32_t kWindowSnapshotModifiers = 4;

constexpr std::uint32_t kDestroyMessage = 2;  // WM_DESTROY

[[noreturn]] void Raise(std::int32_t number, const std::string& text) {
    throw RuntimeError(number, text, os::ProgramBaseName() + ".cRegHotKey");
}

[[noreturn]] void RaiseSystemFailure(std::int32_t number, const std::string& text,
                                     const std::string& systemText) {
    Raise(number, systemText.empty() ? text : text + " [" + systemText + "]");
}

// Atoms are shared by all programs, so the text must not be used by anybody else.
std::string AtomText(const std::string& sName) {
    static std::minstd_rand generator(os::SystemTicks());
    const int random = std::uniform_int_distribution(0, 9'999'999)(generator);
    auto text = sName + "_" + os::ProgramBaseName() + "_" + std::to_string(os::SystemTicks()) + "_" +
                std::to_string(random);
    text.resize(std::min(text.size(), kMaxAtom));
    return text;
}

}  // namespace

cRegHotKey::~cRegHotKey() {
    Trap("cRegHotKey:Class_Terminate", [this] { Clear(); });
}

void cRegHotKey::Attach(os::WindowHandle hwndA) {
    Clear();
    if (hwndA == 0) return;
    hook_ = std::make_unique<os::WindowHook>(hwndA);
    hook_->Message.Bind<&cRegHotKey::hook_Message>(*this);
    window_ = hwndA;
}

void cRegHotKey::Clear(bool bDontStop) {
    while (!keys_.empty()) UnregisterKey(keys_.back().sName);
    if (bDontStop || window_ == 0) return;
    hook_.reset();
    window_ = 0;
}

void cRegHotKey::RegisterKey(const std::string& sName, std::uint32_t eKey, std::uint32_t eModifiers,
                             const std::string& sText) {
    if (sName.size() > kMaxName) Raise(kNotRegistered, "Key Name too long (max 32 characters).");
    if (Find(sName) != keys_.end()) Raise(kWrongName, "The Key Name '" + sName + "' is already registered.");

    Entry entry{sName, AtomText(sName), 0, eKey, eModifiers, sText};
    keys_.reserve(keys_.size() + 1);  // so that nothing can fail once the system has taken the key
    std::uint16_t atom = 0;
    try {
        atom = os::AddGlobalAtom(entry.atomText);
    } catch (const RuntimeError& error) {
        RaiseSystemFailure(kAtomFailed, "Failed to add GlobalAtom", error.what());
    }
    entry.id = static_cast<std::int16_t>(atom);
    try {
        os::RegisterHotkey(window_, entry.id, eModifiers, eKey);
    } catch (const RuntimeError& error) {
        os::DeleteGlobalAtom(atom);
        RaiseSystemFailure(kNotRegistered, "Failed to Register Hot Key", error.what());
    }
    keys_.push_back(std::move(entry));
}

void cRegHotKey::UnregisterKey(const std::string& sName) {
    const auto key = Find(sName);
    if (key == keys_.end()) Raise(kWrongName, "No hot key registered under the name '" + sName + "'");
    os::UnregisterHotkey(window_, key->id);
    os::DeleteGlobalAtom(static_cast<std::uint16_t>(key->id));
    keys_.erase(key);
}

void cRegHotKey::RestoreAndActivate(os::WindowHandle hwnd) {
    if (!os::WindowIsVisible(hwnd)) os::ShowHiddenWindow(hwnd);
    if (os::WindowIsMinimized(hwnd)) os::RestoreMinimizedWindow(hwnd);
    os::BringToForeground(hwnd);
}

void cRegHotKey::hook_Message(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) {
    if (message == kDestroyMessage) Clear();
    if (message == os::kHotkeyMessage) {
        RaisePress(static_cast<std::int32_t>(wParam), static_cast<std::uintptr_t>(lParam));
    }
}

void cRegHotKey::RaisePress(std::int32_t id, std::uintptr_t lParam) const {
    if (id == kDesktopSnapshot) return HotKeyPress("Desktop Snapshot", 0, kSnapshotKey, "");
    if (id == kWindowSnapshot) {
        return HotKeyPress("Window Snapshot", kWindowSnapshotModifiers, kSnapshotKey, "");
    }
    const auto key =
        std::find_if(keys_.begin(), keys_.end(), [&](const auto& entry) { return entry.id == id; });
    if (key == keys_.end()) {
        return HotKeyPress("Unknown HotKey", lParam & 0xFFFF, (lParam >> 16) & 0xFFFF, "");
    }
    const Entry pressed = *key;  // the listener may drop the key
    HotKeyPress(pressed.sName, pressed.modifiers, pressed.key, pressed.sText);
}

std::vector<cRegHotKey::Entry>::iterator cRegHotKey::Find(const std::string& sName) {
    return std::find_if(keys_.begin(), keys_.end(), [&](const auto& entry) { return entry.sName == sName; });
}
