// hand.exe: the user's hand for scripts. A command per line of standard input, or one on the command line; a
// line of answer for each:
//
// clang-format off
//   boxes                   the open message boxes: title, text, buttons by number, between tabs
//   press N                 presses the button with the number N (1 OK, 2 Cancel) of the only box
//   windows                 the titles of all visible windows, between tabs; a minimized one after "_"
//   close TITLE             closes the window with the title, as its own button would
//   read TITLE              the texts that are seen in the window, between tabs
//   alpha TITLE             how opaque the window is, 0 to 255; "no layer" when nobody has said
//   tray X                  opens the tray icon's menu with the right button and chooses the entry X
//   menu KEYS               the same with keys: D down, U up, R right (into a sub-menu), E Enter, without which the
//                           menu stays open
//   open                    double-clicks the tray icon and waits for the Wrenlow window
//   keys CODES              presses the keys of these virtual-key codes together
//   fill TITLE, N, TEXT     between tabs: puts the text into the window's Nth text box, from 0
//   select TITLE, N, ENTRY  between tabs: chooses an entry, from 0, in the window's Nth drop-down list
//   push TITLE, CAPTION     between tabs: pushes the window's button or check box
//   end session             tells Wrenlow's main window that the Windows session ends, and waits for it
//   new taskbar             tells Wrenlow's icon, as a taskbar does at its start, and waits until it has heard
//   lock PATH               opens the file so that nobody else can, until "unlock"
//   holdings                what Wrenlow holds of the system, as "handles N gdi N windows N"
// clang-format on
//
// An answer that begins with "no" says what was not there. Texts are UTF-8; line ends in them are written as
// "|".
#include "sandbox/hand/DesktopUser.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <sstream>

#include "sandbox/hand/Holdings.h"

namespace {

constexpr int kBoxText = 0xFFFF;  // the number of a message box's text
constexpr DWORD kPatienceMs = 10'000;

std::string OneLine(std::string text) {
    for (std::size_t at = 0; (at = text.find_first_of("\r\n\t", at)) != std::string::npos; ++at) {
        if (text[at] == '\r') {
            text.erase(at--, 1);
        } else {
            text[at] = text[at] == '\n' ? '|' : ' ';
        }
    }
    return text;
}

// Of a window of any process; bounded, because its owner may be busy.
std::string TextOf(HWND window) {
    wchar_t wide[512] = L"";
    DWORD_PTR length = 0;
    SendMessageTimeoutW(window, WM_GETTEXT, 511, reinterpret_cast<LPARAM>(wide), SMTO_ABORTIFHUNG,
                        kPatienceMs, &length);
    char text[2048] = "";
    WideCharToMultiByte(CP_UTF8, 0, wide, -1, text, sizeof text - 1, nullptr, nullptr);
    return OneLine(text);
}

BOOL CALLBACK AddWindow(HWND window, LPARAM list) {
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
}

std::vector<HWND> VisibleWindows() {
    std::vector<HWND> windows;
    EnumWindows(AddWindow, reinterpret_cast<LPARAM>(&windows));
    std::erase_if(windows, [](HWND window) { return !IsWindowVisible(window); });
    return windows;
}

// The controls of a window, in the order in which they were made; those of its pages too.
std::vector<HWND> ControlsIn(HWND window) {
    std::vector<HWND> controls;
    if (window != nullptr) EnumChildWindows(window, AddWindow, reinterpret_cast<LPARAM>(&controls));
    return controls;
}

std::vector<HWND> ControlsIn(HWND window, const std::string& className) {
    auto controls = ControlsIn(window);
    std::erase_if(controls, [&](HWND control) {
        char name[64] = "";
        GetClassNameA(control, name, sizeof name);
        return name != className;
    });
    return controls;
}

// With tabs between.
void Append(std::string& answer, const std::string& field) {
    if (!answer.empty()) answer += '\t';
    answer += field;
}

std::vector<HWND> Boxes() {
    std::vector<HWND> boxes;
    for (const HWND window : VisibleWindows()) {
        if (GetDlgItem(window, kBoxText) != nullptr) boxes.push_back(window);
    }
    return boxes;
}

std::string DescribeBoxes() {
    std::string answer;
    for (const HWND box : Boxes()) {
        Append(answer, TextOf(box) + '\t' + TextOf(GetDlgItem(box, kBoxText)) + '\t');
        for (int button = IDOK; button <= IDNO; ++button) {
            if (GetDlgItem(box, button) != nullptr) answer += std::to_string(button);
        }
    }
    return answer;
}

std::string Press(const std::string& number) {
    const auto boxes = Boxes();
    if (boxes.size() != 1) return "no single box";
    const HWND button = GetDlgItem(boxes.front(), std::atoi(number.c_str()));
    if (button == nullptr) return "no such button";
    PostMessageA(button, BM_CLICK, 0, 0);
    return Eventually([&] { return !IsWindow(boxes.front()); }) ? "pressed" : "no effect";
}

std::string Titles() {
    std::string answer;
    for (const HWND window : VisibleWindows()) {
        const auto title = TextOf(window);
        if (!title.empty()) Append(answer, (IsIconic(window) ? "_" : "") + title);
    }
    return answer;
}

HWND VisibleWindow(const std::string& title) {
    for (const HWND window : VisibleWindows()) {
        if (TextOf(window) == title) return window;
    }
    return nullptr;
}

std::string Close(const std::string& title) {
    const HWND window = VisibleWindow(title);
    if (window == nullptr) return "no such window";
    PostMessageA(window, WM_CLOSE, 0, 0);
    return Eventually([&] { return !IsWindow(window); }) ? "closed" : "no effect";
}

std::string Read(const std::string& title) {
    std::string texts;
    for (const HWND control : ControlsIn(VisibleWindow(title)))
        if (IsWindowVisible(control)) Append(texts, TextOf(control));
    return texts.empty() ? "no such window" : texts;
}

std::string Alpha(const std::string& title) {
    const HWND window = VisibleWindow(title);
    BYTE alpha = 0;
    DWORD flags = 0;
    if (window == nullptr) return "no such window";
    if (!GetLayeredWindowAttributes(window, nullptr, &alpha, &flags) || flags != LWA_ALPHA) return "no layer";
    return std::to_string(alpha);
}

std::string OpenTrayMenu() {
    const HWND tray = TrayWindowHandle();
    if (tray == nullptr) return "no tray icon";
    SetCursorPos(100, 100);
    PostMessageA(tray, WM_MOUSEMOVE, 0, WM_RBUTTONDOWN);
    return MenusOpen(1) ? "" : "no menu";
}

std::string ChooseInTray(char letter) {
    const auto failure = OpenTrayMenu();
    if (!failure.empty()) return failure;
    PressKey(static_cast<BYTE>(letter));
    return MenusOpen(0) ? "chosen" : "no effect";
}

std::string WalkTrayMenu(const std::string& keys) {
    const auto failure = OpenTrayMenu();
    if (!failure.empty()) return failure;
    std::size_t menus = 1;
    for (const char key : keys) {
        PressKey(key == 'D' ? VK_DOWN : key == 'U' ? VK_UP : key == 'R' ? VK_RIGHT : VK_RETURN);
        if (key == 'R' && !MenusOpen(++menus)) return "no sub-menu";
    }
    if (!keys.ends_with('E')) return "open";
    return MenusOpen(0) ? "chosen" : "no effect";
}

std::string OpenByDoubleClick() {
    const HWND tray = TrayWindowHandle();
    if (tray == nullptr) return "no tray icon";
    PostMessageA(tray, WM_MOUSEMOVE, 0, WM_LBUTTONDBLCLK);
    return Eventually([] {
        const HWND window = VisibleWindow("Wrenlow");
        return window != nullptr && GetForegroundWindow() == window;  // keys go there
    })
               ? "open"
               : "no window";
}

std::string PressTogether(const std::string& codes) {
    std::vector<BYTE> keys;
    std::istringstream numbers(codes);
    for (int code = 0; numbers >> code;) keys.push_back(static_cast<BYTE>(code));
    PressKeys(keys);
    return "pressed";
}

std::wstring Wide(const std::string& text) {
    wchar_t wide[512] = L"";
    MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, wide, 511);
    return wide;
}

// Takes the text up to the first tab off the front.
std::string TakeField(std::string& fields) {
    const auto end = std::min(fields.find('\t'), fields.size());
    auto field = fields.substr(0, end);
    fields.erase(0, end + 1);
    return field;
}

std::string Fill(std::string fields) {
    const HWND window = VisibleWindow(TakeField(fields));
    const auto boxes = ControlsIn(window, "Edit");
    const auto number = static_cast<std::size_t>(std::atoi(TakeField(fields).c_str()));
    if (number >= boxes.size()) return "no such text box";
    SendMessageW(boxes[number], WM_SETTEXT, 0, reinterpret_cast<LPARAM>(Wide(fields).c_str()));
    return "filled";
}

std::string Select(std::string fields) {
    const HWND window = VisibleWindow(TakeField(fields));
    const auto lists = ControlsIn(window, "ComboBox");
    const auto number = static_cast<std::size_t>(std::atoi(TakeField(fields).c_str()));
    if (number >= lists.size()) return "no such list";
    if (SendMessageA(lists[number], CB_SETCURSEL, static_cast<WPARAM>(std::atoi(fields.c_str())), 0) ==
        CB_ERR) {
        return "no such entry";
    }
    const auto notification = MAKEWPARAM(static_cast<WORD>(GetDlgCtrlID(lists[number])), CBN_SELCHANGE);
    SendMessageA(window, WM_COMMAND, notification, reinterpret_cast<LPARAM>(lists[number]));
    return "selected";
}

std::string Push(std::string fields) {
    const HWND window = VisibleWindow(TakeField(fields));
    for (const HWND button : ControlsIn(window, "Button")) {
        if (TextOf(button) != fields || !IsWindowEnabled(button)) continue;
        PostMessageA(button, BM_CLICK, 0, 0);
        const auto style = GetWindowLongA(button, GWL_STYLE) & BS_TYPEMASK;
        if (style == BS_CHECKBOX || style == BS_AUTOCHECKBOX) return "checked";
        // A window that asks something is disabled meanwhile; one of several pages changes its button.
        Eventually([&] {
            return !IsWindowVisible(window) || !IsWindowEnabled(window) || !IsWindowEnabled(button) ||
                   TextOf(button) != fields;
        });
        return IsWindowVisible(window) ? "open" : "closed";
    }
    return "no such button";
}

HWND MainWindow() {
    return FindWindowA("WrenlowHidden", "Wrenlow");
}

std::string EndSession() {
    const HWND window = MainWindow();
    if (window == nullptr) return "no program";
    DWORD_PTR agreed = 0, done = 0;
    SendMessageTimeoutA(window, WM_QUERYENDSESSION, 0, 0, SMTO_NORMAL, kPatienceMs, &agreed);
    if (agreed == 0) return "no agreement";
    if (SendMessageTimeoutA(window, WM_ENDSESSION, TRUE, 0, SMTO_NORMAL, kPatienceMs, &done) == 0)
        return "no answer";
    return "ended";
}

std::string NewTaskbar() {
    DWORD_PTR heard = 0;
    const UINT created = RegisterWindowMessageA("TaskbarCreated");
    return SendMessageTimeoutA(TrayWindowHandle(), created, 0, 0, SMTO_NORMAL, kPatienceMs, &heard) == 0
               ? "no answer"
               : "heard";
}

HANDLE lockedFile = INVALID_HANDLE_VALUE;

std::string Lock(const std::string& path) {
    lockedFile = CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    return lockedFile == INVALID_HANDLE_VALUE ? "no such file" : "locked";
}

std::string Unlock() {
    return CloseHandle(lockedFile) ? "unlocked" : "no lock";
}

std::string HoldingsOfWrenlow() {
    DWORD process = 0;
    GetWindowThreadProcessId(MainWindow(), &process);
    return Holdings(process);
}

std::string Obey(const std::string& line) {
    const auto blank = line.find(' ');
    const auto word = line.substr(0, blank);
    const auto rest = blank == std::string::npos ? std::string() : line.substr(blank + 1);
    if (word == "boxes") return DescribeBoxes();
    if (word == "press") return Press(rest);
    if (word == "windows") return Titles();
    if (word == "close") return Close(rest);
    if (word == "read") return Read(rest);
    if (word == "alpha") return Alpha(rest);
    if (word == "tray") return rest.size() == 1 ? ChooseInTray(rest[0]) : "no letter";
    if (word == "menu") return WalkTrayMenu(rest);
    if (line == "open") return OpenByDoubleClick();
    if (word == "keys") return PressTogether(rest);
    if (word == "fill") return Fill(rest);
    if (word == "select") return Select(rest);
    if (word == "push") return Push(rest);
    if (line == "end session") return EndSession();
    if (line == "new taskbar") return NewTaskbar();
    if (word == "lock") return Lock(rest);
    if (line == "unlock") return Unlock();
    if (line == "holdings") return HoldingsOfWrenlow();
    return "no such command";
}

}  // namespace

int main(int count, char** arguments) {
    std::string line;
    for (int i = 1; i < count; ++i) line += (i > 1 ? " " : "") + std::string(arguments[i]);
    if (!line.empty()) {
        std::cout << Obey(line) << std::endl;
        return 0;
    }
    while (std::getline(std::cin, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        std::cout << Obey(line) << std::endl;
    }
}
