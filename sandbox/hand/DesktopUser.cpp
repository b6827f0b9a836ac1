#include "sandbox/hand/DesktopUser.h"

// after windows.h
#include <oleacc.h>

#include <iterator>

namespace {

constexpr DWORD kPatienceMs = 10'000;

BOOL CALLBACK CollectMenu(HWND window, LPARAM parameter) {
    char name[16] = "";
    GetClassNameA(window, name, sizeof name);
    if (std::string(name) == "#32768" && IsWindowVisible(window))
        reinterpret_cast<std::vector<HWND>*>(parameter)->push_back(window);
    return TRUE;
}

struct TipSearch {
    std::wstring text;
    bool found;
};

BOOL CALLBACK FindTip(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<TipSearch*>(parameter);
    char name[32] = "";
    GetClassNameA(window, name, sizeof name);
    if (std::string(name) != "tooltips_class32" || !IsWindowVisible(window)) return TRUE;
    wchar_t text[64] = L"";  // of another process: the wide form comes over whole
    SendMessageW(window, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
    search.found = search.text == text;
    return !search.found;
}

// Whether the menu's loop has taken over mouse and keyboard.
bool MenuListens() {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(TrayWindowHandle(), nullptr), &info);
    return (info.flags & GUI_INMENUMODE) != 0 && info.hwndCapture != nullptr;
}

}  // namespace

bool Eventually(const std::function<bool()>& answer) {
    const auto end = GetTickCount() + kPatienceMs;
    while (!answer()) {
        if (static_cast<LONG>(GetTickCount() - end) > 0) return false;
        Sleep(5);
    }
    return true;
}

void PressKeys(const std::vector<BYTE>& keys) {
    for (const BYTE key : keys) keybd_event(key, 0, 0, 0);
    for (auto key = std::rbegin(keys); key != std::rend(keys); ++key)
        keybd_event(*key, 0, KEYEVENTF_KEYUP, 0);
}

void TypeText(const std::wstring& text) {
    for (const wchar_t unit : text) {
        INPUT keys[2]{};
        for (auto& key : keys) {
            key.type = INPUT_KEYBOARD;
            key.ki.wScan = unit;
            key.ki.dwFlags = KEYEVENTF_UNICODE;
        }
        keys[1].ki.dwFlags |= KEYEVENTF_KEYUP;
        SendInput(2, keys, sizeof keys[0]);
    }
}

// Movement and press in one piece: between two calls the display's own pointer can move back.
void ClickAt(LONG x, LONG y, DWORD button) {
    const auto part = [](LONG pixel, int metric) {
        const int size = GetSystemMetrics(metric);
        return static_cast<DWORD>((pixel * 65536 + size - 1) / size);
    };
    mouse_event(MOUSEEVENTF_ABSOLUTE | MOUSEEVENTF_MOVE | button, part(x, SM_CXSCREEN), part(y, SM_CYSCREEN),
                0, 0);
}

HWND TrayWindowHandle() {
    return FindWindowA("WrenlowHidden", "Wrenlow tray");
}

POINT IconPlace() {
    return {GetSystemMetrics(SM_CXSCREEN) - 11, GetSystemMetrics(SM_CYSCREEN) - 10};
}

bool TooltipSays(const std::wstring& text) {
    TipSearch search{text, false};
    EnumWindows(FindTip, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

std::vector<HWND> OpenMenus() {
    std::vector<HWND> menus;
    EnumWindows(CollectMenu, reinterpret_cast<LPARAM>(&menus));
    return menus;
}

bool MenusOpen(std::size_t count) {
    return Eventually([=] { return OpenMenus().size() == count && MenuListens() == (count > 0); });
}

std::wstring SelectedEntry() {
    constexpr UINT kGetMenuHandle = 0x01E1;  // MN_GETHMENU
    std::wstring selected;
    const auto menus = OpenMenus();
    if (menus.empty()) return selected;
    // The window opened last lies above the others.
    const auto menu = reinterpret_cast<HMENU>(SendMessageA(menus.front(), kGetMenuHandle, 0, 0));
    for (int position = 0; position < GetMenuItemCount(menu); ++position) {
        MENUITEMINFOA info{};
        info.cbSize = sizeof info;
        info.fMask = MIIM_DATA | MIIM_STATE;
        GetMenuItemInfoA(menu, static_cast<UINT>(position), TRUE, &info);
        if ((info.fState & MFS_HILITE) == 0) continue;
        const auto* const spoken = reinterpret_cast<const MSAAMENUINFO*>(info.dwItemData);
        if (spoken->dwMSAASignature == MSAA_MENU_SIG) selected.assign(spoken->pszWText, spoken->cchWText);
    }
    return selected;
}

bool GoDownTo(const std::wstring& entry) {
    return Eventually([&] {
        const auto before = SelectedEntry();
        if (before == entry) return true;
        PressKey(VK_DOWN);
        const auto end = GetTickCount() + kPatienceMs / 4;  // then the press was lost
        while (SelectedEntry() == before && static_cast<LONG>(GetTickCount() - end) < 0) Sleep(5);
        return false;
    });
}
