// The menu of the system with entries that we measure and draw ourselves. It belongs to a hidden window of
// its own, which lives as long as the menu: so no other window's messages have to be looked into.

#include "os/desktop/PopupMenu.h"

#include <windows.h>

#include <oleacc.h>

#include <map>

#include "os/desktop/MenuLetters.h"
#include "os/win32/HiddenWindow.h"
#include "os/win32/MenuPainter.h"
#include "os/win32/ModalLoop.h"
#include "os/win32/WideText.h"

namespace os {
namespace {

// What an owner-drawn entry carries. Screen readers look for the text of such an entry in this record, by its
// signature (MSAAMENUINFO must come first).
struct EntryData {
    MSAAMENUINFO spoken;
    const MenuEntry* entry;
    HMENU subMenu;  // null for none
    std::wstring text;
};

struct MenuDeleter {
    void operator()(HMENU menu) const { DestroyMenu(menu); }
};
using UniqueMenu = std::unique_ptr<std::remove_pointer_t<HMENU>, MenuDeleter>;

class MenuWindow final : public HiddenWindow {
 public:
    explicit MenuWindow(const MenuRequest& request)
        : HiddenWindow("Wrenlow menu", reinterpret_cast<HWND>(request.owner)),
          painter_(request.colours, {request.x, request.y}) {
        Build(request.entries);
    }

    std::int32_t Track(int x, int y) {
        SetForegroundWindow(Handle());
        EnterModalLoop();
        const auto chosen =
            TrackPopupMenu(menu_.get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, x, y, 0, Handle(), nullptr);
        // Without a message of its own behind it, the next menu would close at once (a known property of
        // menus over the notification area, described with TrackPopupMenu).
        PostMessageA(Handle(), WM_NULL, 0, 0);
        // The numbers of the commands are positions, counted from 1.
        return chosen > 0 ? data_[static_cast<std::size_t>(chosen - 1)].entry->id : 0;
    }

 protected:
    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        switch (message) {
            case WM_MEASUREITEM: {
                auto& measure = *reinterpret_cast<MEASUREITEMSTRUCT*>(lParam);
                const auto size = painter_.Measure(*DataOf(measure.itemData).entry);
                measure.itemWidth = static_cast<UINT>(size.cx);
                measure.itemHeight = static_cast<UINT>(size.cy);
                return TRUE;
            }
            case WM_DRAWITEM: {
                const auto& draw = *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
                const auto& data = DataOf(draw.itemData);
                painter_.Draw(*data.entry, data.subMenu != nullptr, draw);
                return TRUE;
            }
            case WM_MENUCHAR:
                return OnMenuChar(static_cast<char>(LOWORD(wParam)), reinterpret_cast<HMENU>(lParam));
            default:
                return std::nullopt;
        }
    }

 private:
    static const EntryData& DataOf(ULONG_PTR itemData) {
        return *reinterpret_cast<const EntryData*>(itemData);
    }

    // A sub-menu belongs to the menu that it hangs in as soon as it hangs there; all go with the first.
    void Build(const std::vector<MenuEntry>& entries) {
        std::map<std::int32_t, HMENU> menus;
        for (const auto& entry : entries) {
            if (entry.parent != 0) menus.emplace(entry.parent, nullptr);
        }
        menu_.reset(NewMenu());
        menus[0] = menu_.get();
        data_.reserve(entries.size());  // the entries point into it
        for (const auto& entry : entries) {
            const auto own = menus.find(entry.id);
            if (own != menus.end()) own->second = NewMenu();
            data_.push_back({.spoken = {},
                             .entry = &entry,
                             .subMenu = own != menus.end() ? own->second : nullptr,
                             .text = WideOf(CP_ACP, entry.caption)});
            Append(menus.at(entry.parent), data_.back());
        }
    }

    HMENU NewMenu() const {
        const HMENU menu = CreatePopupMenu();
        MENUINFO info{};
        info.cbSize = sizeof info;
        info.fMask = MIM_BACKGROUND;
        info.hbrBack = painter_.Background();
        SetMenuInfo(menu, &info);
        return menu;
    }

    void Append(HMENU menu, EntryData& data) {
        const auto& entry = *data.entry;
        data.spoken.dwMSAASignature = MSAA_MENU_SIG;
        data.spoken.cchWText = static_cast<DWORD>(data.text.size());
        data.spoken.pszWText = data.text.data();

        const bool canBeChosen = entry.kind == MenuEntryKind::Item && entry.enabled;
        MENUITEMINFOA info{};
        info.cbSize = sizeof info;
        info.fMask = MIIM_FTYPE | MIIM_STATE | MIIM_ID | MIIM_DATA | MIIM_SUBMENU;
        info.fType = MFT_OWNERDRAW;
        if (entry.kind == MenuEntryKind::Separator) info.fType |= MFT_SEPARATOR;
        info.fState = canBeChosen ? MFS_ENABLED : MFS_DISABLED;
        if (entry.checked) info.fState |= MFS_CHECKED;
        if (entry.isDefault) info.fState |= MFS_DEFAULT;
        info.wID = static_cast<UINT>(data_.size());
        info.dwItemData = reinterpret_cast<ULONG_PTR>(&data);
        info.hSubMenu = data.subMenu;
        InsertMenuItemA(menu, static_cast<UINT>(GetMenuItemCount(menu)), TRUE, &info);
    }

    std::optional<LRESULT> OnMenuChar(char letter, HMENU menu) const {
        std::vector<const MenuEntry*> entries;
        auto selected = LetterHit::npos;
        for (int position = 0; position < GetMenuItemCount(menu); ++position) {
            MENUITEMINFOA info{};
            info.cbSize = sizeof info;
            info.fMask = MIIM_DATA | MIIM_STATE;
            GetMenuItemInfoA(menu, static_cast<UINT>(position), TRUE, &info);
            if ((info.fState & MFS_HILITE) != 0) selected = entries.size();
            entries.push_back(DataOf(info.dwItemData).entry);
        }
        const auto hit = FindMenuLetter(entries, selected, letter);
        if (hit.position == LetterHit::npos) return std::nullopt;
        return MAKELRESULT(hit.position, hit.choose ? MNC_EXECUTE : MNC_SELECT);
    }

    MenuPainter painter_;
    UniqueMenu menu_;
    std::vector<EntryData> data_;
};

bool menuIsOpen = false;

}  // namespace

std::int32_t PopUpMenu(const MenuRequest& request) {
    if (menuIsOpen) return 0;
    struct OpenMark {
        OpenMark() { menuIsOpen = true; }
        ~OpenMark() { menuIsOpen = false; }
    } const mark;
    return MenuWindow(request).Track(request.x, request.y);
}

ScreenPoint CursorPosition() {
    POINT position{};
    GetCursorPos(&position);
    return {static_cast<int>(position.x), static_cast<int>(position.y)};
}

}  // namespace os
