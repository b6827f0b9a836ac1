#include "app/shell/modMenu.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "app/shell/resources.h"
#include "app/windows/AimClient.h"
#include "app/windows/SharedForm.h"
#include "base/Maker.h"
#include "base/Trap.h"
#include "base/Version.h"
#include "core/modSocket.h"
#include "core/modTools.h"
#include "desktop/frmBug.h"
#include "desktop/frmSettings.h"
#include "desktop/frmWrenlow.h"
#include "features/Overview.h"
#include "features/dialogs/RemoveForm.h"
#include "features/dialogs/frmAway.h"
#include "features/dialogs/frmIdle.h"
#include "features/dialogs/frmProfile.h"
#include "features/dialogs/frmSNReplacer.h"
#include "os/desktop/MessageBox.h"
#include "os/desktop/Shell.h"

namespace modMenu {
namespace {

constexpr std::int32_t kNoIcon = cPopupMenu::kNoIcon;

struct MenuIcon {
    std::int32_t index;
    int resource;
};

constexpr MenuIcon kMenuIcons[] = {
    {0, IDI_WREN}, {1, IDI_AWAY}, {2, IDI_IDLE}, {3, IDI_CLOSE}, {8, IDI_REPLACER}, {9, IDI_PROFILE},
};

// An entry with a parent stands in the sub-menu of the entry that has the parent's key.
struct MenuRow {
    const char* caption;
    const char* key = "";
    const char* parent = "";
    std::int32_t icon = kNoIcon;
};

// clang-format off
constexpr MenuRow kTrayMenu[] = {
    {"Open Wrenlow",           kOpenKey},
    {"-"},
    {"Screenname Replacer...", "snreplace",   "",          8},
    {"-"},
    {"Edit Profile...",        "editprofile", "",          9},
    {"Away Message",           "amPopup",     "",          1},
    {"Set Away...",            "setaway",     "amPopup",   1},
    {"Back",                   "setback",     "amPopup"},
    {"Idle Control",           "idlePopup",   "",          2},
    {"Set Idle...",            "setidle",     "idlePopup", 2},
    {"Remove Idle",            "noidle",      "idlePopup"},
    {"-"},
    {"Settings...",            "settings"},
    {"Links...",               "newsPopup"},
    {"Wrenlow Homepage",       "news",        "newsPopup"},
    {"Wrenlow Forum",          "forum",       "newsPopup"},
    {"About Wrenlow...",       "about",       "",          0},
    {"Close",                  "close",       "",          3},
};
// clang-format on

constexpr std::size_t kMaxTipBytes = os::kTrayTipLength - 1;

os::WindowHandle mainWindow = 0;

void ShowAbout() {
    os::ShowMessageBox(AboutText(Maker::kAuthor, Maker::kHomePage), "About Wrenlow",
                       os::BoxIcon::Information);
}

struct Command {
    std::string_view key;
    void (*run)();
};

// The keys "trans" and "hotkey" are known to do nothing, like any that is not listed.
constexpr Command kCommands[] = {
    {kOpenKey, [] { SharedForm<frmWrenlow>().Start(); }},
    {"snreplace", [] { SharedForm<frmSNReplacer>().Start(); }},
    {"editprofile", [] { SharedForm<frmProfile>().Start(); }},
    {"setaway", [] { SharedForm<frmAway>().Start(); }},
    {"setback", [] { SharedForm<frmUnAway>().Start(); }},
    {"setidle", [] { SharedForm<frmIdle>().Start(); }},
    {"noidle", [] { SharedForm<frmUnIdle>().Start(); }},
    {"settings", [] { SharedForm<frmSettings>().Start(); }},
    {"bug", [] { SharedForm<frmBug>().Start(); }},  // by key only: no entry of the menu has it
    {"news", [] { OpenMakerPage(Maker::kHomePage, "home page"); }},
    {"forum", [] { OpenMakerPage(Maker::kForumPage, "forum"); }},
    {"about", ShowAbout},
    {"close", [] { modSystem::EndRequest(true); }},
};

}  // namespace

void LoadMenuIcons(ImageList& images) {
    for (const auto& icon : kMenuIcons) images.Add(icon.index, icon.resource);
}

std::unique_ptr<fSysTrayIconMenu> BuildTrayMenu(os::WindowHandle hWnd, ImageList& images) {
    mainWindow = hWnd;
    auto host = std::make_unique<fSysTrayIconMenu>();
    host->Initialise(hWnd);
    host->ImageList(&images);
    for (const auto& row : kTrayMenu) {
        const auto parent = *row.parent != '\0' ? host->PopupMenuObject().IndexForKey(row.parent) : 0;
        host->AddMenuItem(row.caption, row.key, std::string_view(row.key) == kOpenKey, 0, parent, row.icon);
    }
    host->ToolTip(os::kApplicationTitle);
    return host;
}

std::string TipText() {
    std::string text = os::kApplicationTitle;
    if (const auto* const overview = Overview::Current()) {
        const auto verdict = overview->Verdict();
        if (verdict.isTrouble) return text.append(" - ").append(verdict.tip).substr(0, kMaxTipBytes);
    }
    std::set<std::string> listed;
    for (std::size_t slot = 0; slot < modSocket::SlotCount() && text.size() < kMaxTipBytes; ++slot) {
        const auto* const connection = modSocket::Connection(slot);
        const auto name = connection != nullptr ? connection->hasScreenName() : std::string();
        if (name.empty() || !listed.insert(NormalizeScreenName(name)).second) continue;
        text += (listed.size() == 1 ? " - " : ", ") + name;
    }
    text.resize(std::min(text.size(), kMaxTipBytes));
    return text;
}

void DoMenuCommand(const std::string& sKey) {
    const auto* const command = std::find_if(std::begin(kCommands), std::end(kCommands),
                                             [&](const Command& row) { return row.key == sKey; });
    if (command == std::end(kCommands)) return;
    const os::BoxesBefore cause(mainWindow);
    Trap("modMenu:DoMenuCommand", [&] { command->run(); });
}

std::string AboutText(std::string_view author, std::string_view homePage) {
    std::string text = "Wrenlow " WRENLOW_VERSION_TEXT "\r\nby ";
    text += author.empty() ? "the Wrenlow authors" : author;
    if (!homePage.empty()) text.append("\r\n").append(homePage);
    return text;
}

void OpenMakerPage(const std::string& address, const std::string& what) {
    if (address.empty()) {
        os::ShowMessageBox("This build of Wrenlow names no " + what + ".", os::kApplicationTitle,
                           os::BoxIcon::Information);
        return;
    }
    if (os::OpenWebPage(mainWindow, address)) return;
    os::ShowMessageBox("The " + what + " cannot be opened:\r\n" + address, os::kApplicationTitle,
                       os::BoxIcon::Warning);
}

}  // namespace modMenu
