#include "tests/win32/DesktopRig.h"

#include <gtest/gtest.h>

#include "os/win32/DialogMessages.h"

namespace {

constexpr DWORD kPatienceMs = 10'000;

std::string TestProgram() {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, sizeof path);
    return path;
}

}  // namespace

void Pump() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (os::TakeDialogMessage(message)) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

bool Eventually(const std::function<bool()>& answer) {
    const auto end = GetTickCount() + kPatienceMs;
    while (!answer()) {
        if (static_cast<LONG>(GetTickCount() - end) > 0) return false;
        Sleep(5);
        Pump();
    }
    return true;
}

void PressKeys(std::initializer_list<BYTE> keys) {
    for (const BYTE key : keys) keybd_event(key, 0, 0, 0);
    for (auto key = std::rbegin(keys); key != std::rend(keys); ++key)
        keybd_event(*key, 0, KEYEVENTF_KEYUP, 0);
}

void ForgetSettings() {
    RegDeleteKeyA(HKEY_CURRENT_USER, "software\\Wrenlow\\hotkeys");
    RegDeleteKeyA(HKEY_CURRENT_USER, "software\\Wrenlow");
}

HWND MakeWindow(const char* title) {
    return CreateWindowExA(0, "STATIC", title, WS_OVERLAPPED | WS_VISIBLE, 20, 20, 150, 80, nullptr, nullptr,
                           nullptr, nullptr);
}

int AlphaOf(HWND window) {
    if ((GetWindowLongA(window, GWL_EXSTYLE) & WS_EX_LAYERED) == 0) return -1;
    BYTE alpha = 0;
    DWORD flags = 0;
    if (!GetLayeredWindowAttributes(window, nullptr, &alpha, &flags) || flags != LWA_ALPHA) return -2;
    return alpha;
}

OtherProcess::OtherProcess(const std::string& word, const std::string& path) : copy_(path) {
    if (!copy_.empty()) CopyFileA(TestProgram().c_str(), copy_.c_str(), FALSE);
    auto command = "\"" + (copy_.empty() ? TestProgram() : copy_) + "\" " + word;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    started_ = CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                              &process_) != FALSE;
}

OtherProcess::~OtherProcess() {
    if (started_) {
        TerminateProcess(process_.hProcess, 0);
        WaitForSingleObject(process_.hProcess, kPatienceMs);
        CloseHandle(process_.hProcess);
        CloseHandle(process_.hThread);
    }
    if (!copy_.empty()) DeleteFileA(copy_.c_str());
}

bool OtherProcess::HasEnded() const {
    return WaitForSingleObject(process_.hProcess, 0) == WAIT_OBJECT_0;
}

HWND OtherProcess::Window(const char* title) {
    HWND window = nullptr;
    EXPECT_TRUE(Eventually([&] { return (window = FindWindowA(nullptr, title)) != nullptr; })) << title;
    return window;
}

int ActAsOtherProcess(const std::string& word) {
    if (word == "windows") {
        for (const char* title : {kImTitle, kChatTitle, kOtherTitle}) MakeWindow(title);
    } else {
        if (!RegisterHotKey(nullptr, 1, MOD_CONTROL | MOD_SHIFT, VK_F7)) return 1;
        MakeWindow(kHolding);
    }
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
    return 0;
}

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    if (count == 2) return ActAsOtherProcess(arguments[1]);
    return RUN_ALL_TESTS();
}
