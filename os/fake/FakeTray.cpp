#include "os/fake/FakeTray.h"

#include <algorithm>
#include <stdexcept>

#include "os/desktop/CommandLine.h"
#include "os/desktop/OnlyInstance.h"

namespace os {
namespace {

constexpr WindowHandle kMainWindow = 0x4D57;

TrayWindow* trayWindow = nullptr;

bool CanBeChosen(const MenuRequest& request, std::int32_t id) {
    const auto& entries = request.entries;
    const bool isItem = std::any_of(entries.begin(), entries.end(), [=](const MenuEntry& entry) {
        return entry.id == id && entry.kind == MenuEntryKind::Item && entry.enabled;
    });
    return isItem && std::none_of(entries.begin(), entries.end(),
                                  [=](const MenuEntry& entry) { return entry.parent == id; });
}

}  // namespace

struct TrayWindow::Impl {};

TrayWindow::TrayWindow() {
    if (trayWindow != nullptr) throw std::logic_error("the fake has room for one tray window");
    trayWindow = this;
}

TrayWindow::~TrayWindow() {
    Remove();
    trayWindow = nullptr;
}

IconHandle TrayWindow::OwnIcon() {
    return static_cast<IconHandle>(SmallIconSize({}));
}

bool TrayWindow::Add(const TrayRecord& record) {
    auto& tray = fake::tray;
    ++tray.adds;
    if (!tray.hasTaskbar || tray.shown) return false;  // as the system: one icon per window and id
    tray.shown = record;
    return true;
}

bool TrayWindow::Modify(const TrayRecord& record) {
    auto& tray = fake::tray;
    if (!tray.hasTaskbar || !tray.shown || tray.shown->id != record.id) return false;
    tray.shown = record;
    return true;
}

void TrayWindow::Remove() {
    fake::tray.shown.reset();
}

std::int32_t PopUpMenu(const MenuRequest& request) {
    const auto chooser = fake::menus.chooser;
    const auto id = chooser ? chooser(request) : 0;
    if (id != 0 && !CanBeChosen(request, id)) throw std::logic_error("nobody could choose this entry");
    return id;
}

ScreenPoint CursorPosition() {
    return {};
}

int SmallIconSize(ScreenPoint) {
    return fake::menus.iconSize;
}

Icon::Icon(int resourceId, int pixels) {
    if (resourceId == 0) return;
    ++fake::menus.icons;
    handle_ = static_cast<IconHandle>(pixels * 1000 + resourceId);
}

Icon::~Icon() {
    if (handle_ != 0) --fake::menus.icons;
}

void BringToForeground(WindowHandle window) {
    fake::tray.foreground = window;
}

struct MainWindow::Impl {};

MainWindow::MainWindow(const std::string&) {
    fake::mainWindow = this;
}
MainWindow::~MainWindow() {
    fake::mainWindow = nullptr;
}
WindowHandle MainWindow::Handle() const {
    return kMainWindow;
}

std::string CommandLineArguments() {
    return fake::commandLineArguments;
}

bool ClaimOnlyInstance() {
    return true;
}
void ReleaseOnlyInstance() {}

namespace fake {

std::string ShownTip() {
    return tray.shown ? std::string(tray.shown->tip.data()) : std::string();
}

void RestartTaskbar() {
    tray.shown.reset();
    tray.hasTaskbar = true;
    if (trayWindow != nullptr) trayWindow->TaskbarCreated();
}

void SendTrayCallback(std::uint32_t message) {
    if (trayWindow != nullptr) trayWindow->Callback(message);
}

}  // namespace fake
}  // namespace os
